#include "tests/contract/modules/faulty_module.h"

namespace {

struct Answer {
    int operator()(CTLVPackageV3<TLVMsgHeadV3>&) const { return 0; }
};

class WithoutAHandler
    : public talvik::test::OneTableModule<talvik::test::AnsweringHandler<Answer>> {
public:
    void getSvcHandler(std::list<std::pair<const std::string, CSnmpHandler*>>& handlers) override
    {
        handlers.emplace_back(talvik::test::kTopologyTable, nullptr);
    }
};

}  // namespace

TALVIK_TEST_FACTORY CSNMP_Svc_Module* SNMP_SvcModuleCreator()
{
    return new WithoutAHandler;
}
