#include "tests/contract/modules/faulty_module.h"

namespace {

struct Answer {
    int operator()(CTLVPackageV3<TLVMsgHeadV3>&) const { return 0; }
};

using Handler = talvik::test::AnsweringHandler<Answer>;

class TwiceTheSame : public talvik::test::OneTableModule<Handler> {
public:
    void getSvcHandler(std::list<std::pair<const std::string, CSnmpHandler*>>& handlers) override
    {
        OneTableModule::getSvcHandler(handlers);
        OneTableModule::getSvcHandler(handlers);
    }
};

}  // namespace

TALVIK_TEST_FACTORY CSNMP_Svc_Module* SNMP_SvcModuleCreator()
{
    return new TwiceTheSame;
}
