#include "tests/contract/modules/faulty_module.h"

namespace {

struct Answer {
    int operator()(CTLVPackageV3<TLVMsgHeadV3>&) const { return 0; }
};

using Handler = talvik::test::AnsweringHandler<Answer>;

class OneForBoth : public talvik::test::OneTableModule<Handler> {
public:
    void getSvcHandler(std::list<std::pair<const std::string, CSnmpHandler*>>& handlers) override
    {
        OneTableModule::getSvcHandler(handlers);
        handlers.emplace_back("1.3.6.1.4.1.99999.2.91.10.4.1", handlers.back().second);
    }
};

}  // namespace

TALVIK_TEST_FACTORY CSNMP_Svc_Module* SNMP_SvcModuleCreator()
{
    return new OneForBoth;
}
