#include "tests/contract/modules/faulty_module.h"

namespace {

struct Answer {
    int operator()(CTLVPackageV3<TLVMsgHeadV3>&) const { return 0; }
};

class WithoutSubtrees
    : public talvik::test::OneTableModule<talvik::test::AnsweringHandler<Answer>> {
public:
    void getSvcHandler(std::list<std::pair<const std::string, CSnmpHandler*>>&) override {}
};

}  // namespace

TALVIK_TEST_FACTORY CSNMP_Svc_Module* SNMP_SvcModuleCreator()
{
    return new WithoutSubtrees;
}
