#include "tests/contract/modules/faulty_module.h"

#include <stdexcept>

namespace {

struct Answer {
    int operator()(CTLVPackageV3<TLVMsgHeadV3>&) const
    {
        throw std::runtime_error("the handler is out of order");
    }
};

}  // namespace

TALVIK_TEST_FACTORY CSNMP_Svc_Module* SNMP_SvcModuleCreator()
{
    return new talvik::test::OneTableModule<talvik::test::AnsweringHandler<Answer>>;
}
