#include "framework/kel_exception.h"
#include "tests/contract/modules/faulty_module.h"

namespace {

struct Answer {
    int operator()(CTLVPackageV3<TLVMsgHeadV3>&) const
    {
        throw CKEL_Exception("the handler gives up");
    }
};

}  // namespace

TALVIK_TEST_FACTORY CSNMP_Svc_Module* SNMP_SvcModuleCreator()
{
    return new talvik::test::OneTableModule<talvik::test::AnsweringHandler<Answer>>;
}
