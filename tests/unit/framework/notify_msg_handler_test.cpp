#include "framework/notify_msg_handler.h"

#include "agent_pp/snmp_pp_ext.h"
#include "snmp_pp/snmp_pp.h"

#include <gtest/gtest.h>

namespace {

class Handler : public INotifyMsgHandler {
public:
    int constructAlarmTrapVb(const CTLVRecordV3&, Agentpp::Vbx*&) override { return 0; }
    Agentpp::Oidx& getTrapOid(unsigned long long, unsigned short) override { return oid_; }
    Agentpp::Oidx& getBaseOid() override { return oid_; }
    int getTrapVbLen() override { return 0; }
    void filterTrapMap(const std::map<std::string, tTrapDestInfo>&,
                       std::list<tTrapDestInfo>&) override
    {
    }

private:
    Agentpp::Oidx oid_;
};

TEST(NotifyMsgHandler, SendsTimesAsDateAndTimeByDefault)
{
    EXPECT_TRUE(Handler().useDateAndTime());
}

}  // namespace
