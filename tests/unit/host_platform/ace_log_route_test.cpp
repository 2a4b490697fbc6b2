#include "host/platform/ace_log_route.h"

#include "framework/tlv_package.h"
#include "host/platform/host_log.h"
#include "tests/support/temp_dir.h"

#include <ace/Log_Msg.h>
#include <gmock/gmock.h>

#include <string>
#include <thread>

namespace {

using testing::HasSubstr;

class AceLogRoute : public testing::Test {
protected:
    AceLogRoute()
    {
        talvik::LogSettings settings;
        settings.file = dir.path("agent.log");
        settings.toStderr = false;
        talvik::configureLog(settings);
        talvik::routeAceLog();
    }

    ~AceLogRoute() override
    {
        ACE_Log_Msg::instance()->clr_flags(ACE_Log_Msg::CUSTOM);
        ACE_Log_Msg::instance()->set_flags(ACE_Log_Msg::STDERR);
        talvik::configureLog({});
    }

    static void decodeNothing()
    {
        CTLVPackageV3<TLVMsgHeadV3> package;
        package.decode(nullptr, 0);
    }

    talvik::test::TempDir dir;
};

TEST_F(AceLogRoute, PutsWhatTheCodecRefusesIntoTheHostsLog)
{
    decodeNothing();

    EXPECT_THAT(dir.read("agent.log"), HasSubstr(" error codec "));
    EXPECT_THAT(dir.read("agent.log"), HasSubstr("invalid MSG header!\n"));
}

TEST_F(AceLogRoute, HoldsForThreadsThatStartLater)
{
    std::thread(decodeNothing).join();

    EXPECT_THAT(dir.read("agent.log"), HasSubstr("invalid MSG header!\n"));
}

}  // namespace
