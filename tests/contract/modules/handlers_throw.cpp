// Hands over one handler and fails before the second.
#include "framework/kel_exception.h"
#include "tests/contract/modules/faulty_module.h"

namespace {

struct Answer {
    int operator()(CTLVPackageV3<TLVMsgHeadV3>&) const { return 0; }
};

class HalfWay : public talvik::test::OneTableModule<talvik::test::AnsweringHandler<Answer>> {
public:
    void getSvcHandler(std::list<std::pair<const std::string, CSnmpHandler*>>& handlers) override
    {
        OneTableModule::getSvcHandler(handlers);
        throw CKEL_Exception("no second handler");
    }
};

}  // namespace

TALVIK_TEST_FACTORY CSNMP_Svc_Module* SNMP_SvcModuleCreator()
{
    return new HalfWay;
}
