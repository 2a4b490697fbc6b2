// Serves an OID that the agent itself serves.
#include "tests/contract/modules/faulty_module.h"

namespace {

struct Answer {
    int operator()(CTLVPackageV3<TLVMsgHeadV3>&) const { return 0; }
};

}  // namespace

TALVIK_TEST_FACTORY CSNMP_Svc_Module* SNMP_SvcModuleCreator()
{
    using Handler = talvik::test::AnsweringHandler<Answer>;
    return new talvik::test::OneTableModule<Handler>("1.3.6.1.2.1.1.9");
}
