#include "platform/configuration_channel.h"

#include "framework/kel_exception.h"
#include "host/link/configuration_link.h"
#include "tests/unit/host_link/link_kit.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <new>
#include <stdexcept>

namespace {

using namespace talvik;
using namespace talvik::test;

/// Does what it is told.
class ScriptedLink : public BackendLink {
public:
    using Script = std::function<int(Package& request, Package& answer)>;

    explicit ScriptedLink(Script script) : script_(std::move(script)) {}

    int exchange(Package& request, Package& answer) override { return script_(request, answer); }
    std::string name() const override { return "scripted"; }

private:
    Script script_;
};

class ConfigurationChannel : public testing::Test {
protected:
    ~ConfigurationChannel() override { installBackendLink(nullptr); }

    static void install(ScriptedLink::Script script)
    {
        installBackendLink(std::make_unique<ScriptedLink>(std::move(script)));
    }

    int configure()
    {
        return CSNMP_Configuration::instance()->configure(request_, answer_, false, false);
    }

    Package request_;
    Package answer_;
};

TEST_F(ConfigurationChannel, IsUnreachableWithoutALink)
{
    EXPECT_EQ(configure(), BackendLink::kUnreachable);
    EXPECT_TRUE(answer_.oRecords.empty());
}

TEST_F(ConfigurationChannel, HandsRequestAndAnswerToTheLink)
{
    const Package* seen = nullptr;
    install([&](Package& request, Package& answer) {
        seen = &request;
        addRecord(answer, 5);
        return 0;
    });

    EXPECT_EQ(configure(), 0);
    EXPECT_EQ(seen, &request_);
    EXPECT_EQ(answer_.oRecords.size(), 1U);
}

TEST_F(ConfigurationChannel, PassesEveryCodeUpUnchanged)
{
    for (const int due : {1, -1, 0x1000010, BackendLink::kTimedOut}) {
        install([due](Package&, Package&) { return due; });

        EXPECT_EQ(configure(), due);
    }
}

TEST_F(ConfigurationChannel, TreatsBothFlagsAlike)
{
    install([](Package&, Package&) { return 0; });

    EXPECT_EQ(CSNMP_Configuration::instance()->configure(request_, answer_, true, true), 0);
}

TEST_F(ConfigurationChannel, LetsAnAllocationFailurePass)
{
    install([](Package&, Package&) -> int { throw std::bad_alloc(); });

    EXPECT_THROW(configure(), std::bad_alloc);
}

TEST_F(ConfigurationChannel, TurnsEveryOtherExceptionIntoACodeAndALogLine)
{
    const LogCapture log;
    install([](Package&, Package&) -> int { throw CKEL_Exception("a cell too many"); });
    EXPECT_EQ(configure(), BackendLink::kProtocolError);
    install([](Package&, Package&) -> int { throw std::runtime_error("a link too weak"); });
    EXPECT_EQ(configure(), BackendLink::kProtocolError);

    EXPECT_EQ(log.linesWith("back end scripted broke off: CKEL_Exception: a cell too many"), 1);
    EXPECT_EQ(log.linesWith("back end scripted broke off: a link too weak"), 1);
}

}  // namespace
