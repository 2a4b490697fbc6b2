#include "host/platform/ace_log_route.h"

#include "framework/tlv_package.h"
#include "host/platform/host_log.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>

#include <string>
#include <thread>

namespace {

using testing::HasSubstr;

TEST(AceLogRoute, PutsWhatTheCodecRefusesIntoTheHostsLog)
{
    const talvik::test::TempDir dir;
    talvik::LogSettings settings;
    settings.file = dir.path("agent.log");
    settings.toStderr = false;
    talvik::configureLog(settings);

    // A thread of its own: the route holds for the rest of a thread's life.
    std::thread([] {
        talvik::routeAceLog();
        CTLVPackageV3<TLVMsgHeadV3> package;
        package.decode(nullptr, 0);
    }).join();
    const auto text = dir.read("agent.log");
    talvik::configureLog({});

    EXPECT_THAT(text, HasSubstr(" error codec "));
    EXPECT_THAT(text, HasSubstr("invalid MSG header!\n"));
}

}  // namespace
