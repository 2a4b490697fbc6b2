#include "host/link/backend_choice.h"

#include "host/startup_error.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace talvik;
using testing::HasSubstr;

std::string refusalOf(const std::string& name)
{
    try {
        parseBackendName(name);
    } catch (const StartupError& error) {
        return error.what();
    }
    return "not refused";
}

TEST(BackendChoice, TakesTheEmbeddedBackEnd)
{
    EXPECT_TRUE(parseBackendName("embedded").embedded);
}

TEST(BackendChoice, TakesASocketsPath)
{
    const auto choice = parseBackendName("unix:/run/talvik/a:b.sock");

    EXPECT_FALSE(choice.embedded);
    EXPECT_EQ(choice.socketPath, "/run/talvik/a:b.sock");
}

TEST(BackendChoice, RefusesAnythingElseByName)
{
    for (const std::string name : {"", "Embedded", "embedded ", "tcp:127.0.0.1:1", "/run/x.sock"}) {
        EXPECT_EQ(refusalOf(name), "unknown back end \"" + name + "\": use embedded or unix:PATH");
    }
}

TEST(BackendChoice, RefusesASocketPathThatCannotBe)
{
    EXPECT_THAT(refusalOf("unix:"), HasSubstr("empty"));
    EXPECT_THAT(refusalOf("unix:/" + std::string(107, 'x')), HasSubstr("108 bytes"));
    EXPECT_EQ(refusalOf("unix:/" + std::string(106, 'x')), "not refused");
}

TEST(BackendChoice, MakesTheLinkThatWasChosen)
{
    const test::TempDir dir;
    const auto config = DeviceConfigFile::load(dir.write(
        "device.xml", "<device><section name='COMMAND'><item name='GET_SYSTEM_WWN' value='4001'/>"
                      "</section><section name='SYSTEM'><item name='WWN' "
                      "value='2100a1b2c3d4e5f6'/></section></device>"));

    EXPECT_EQ(makeBackendLink(parseBackendName("embedded"), config)->name(), "embedded");
    EXPECT_EQ(makeBackendLink(parseBackendName("unix:/a/b"), config)->name(), "unix:/a/b");
}

TEST(BackendChoice, NeedsTheCommandsInTheConfigurationForTheEmbeddedBackEndOnly)
{
    const DeviceConfigFile empty;

    EXPECT_THROW(makeBackendLink(parseBackendName("embedded"), empty), StartupError);
    EXPECT_NO_THROW(makeBackendLink(parseBackendName("unix:/a/b"), empty));
}

}  // namespace
