// What the factory has registered with the dispatcher is code of the module, which is unloaded when
// the factory fails.
#include "framework/kel_exception.h"
#include "framework/notify_msg_handler.h"
#include "platform/notify_handler.h"
#include "tests/contract/modules/faulty_module.h"

#include <map>

namespace {

/// No alarm comes to it: it must be gone before one does.
class NeverAsked : public INotifyMsgHandler {
public:
    int constructAlarmTrapVb(const CTLVRecordV3&, Agentpp::Vbx*&) override { throw 42; }
    Agentpp::Oidx& getTrapOid(unsigned long long, unsigned short) override { throw 42; }
    Agentpp::Oidx& getBaseOid() override { throw 42; }
    bool useDateAndTime() override { throw 42; }
    int getTrapVbLen() override { throw 42; }
    void filterTrapMap(const std::map<std::string, tTrapDestInfo>&,
                       std::list<tTrapDestInfo>&) override
    {
        throw 42;
    }
};

}  // namespace

TALVIK_TEST_FACTORY CSNMP_Svc_Module* SNMP_SvcModuleCreator()
{
    CNotifyHandler::instance()->handlers().push_back(new NeverAsked);
    throw CKEL_Exception("the factory refuses after it has registered");
}
