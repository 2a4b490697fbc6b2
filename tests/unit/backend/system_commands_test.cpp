#include "backend/system_commands.h"

#include "host/startup_error.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/backend/wire.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using namespace talvik::backend;
using talvik::DeviceConfigFile;
using talvik::test::TempDir;
using talvik::test::Wire;
using testing::HasSubstr;

DeviceConfigFile configWith(const TempDir& dir, const std::string& number, const std::string& wwn)
{
    return DeviceConfigFile::load(dir.write(
        "device.xml", "<device><section name='COMMAND'><item name='GET_SYSTEM_WWN' value='" +
                          number + "'/></section><section name='SYSTEM'><item name='WWN' value='" +
                          wwn + "'/></section></device>"));
}

std::string refusalOf(const std::string& number, const std::string& wwn)
{
    const TempDir dir;
    try {
        makeCommandServer(configWith(dir, number, wwn));
    } catch (const talvik::StartupError& error) {
        EXPECT_THAT(error.what(), HasSubstr(dir.path("device.xml")));
        return error.what();
    }
    return "not refused";
}

TEST(SystemCommands, AnswersTheConfiguredWwnUnderTheConfiguredNumber)
{
    const TempDir dir;
    const auto server = makeCommandServer(configWith(dir, "4001", "2100A1b2c3d4e5f6"));
    auto wire = Wire::request(7, 4001).bytes();

    EXPECT_EQ(server.serve(wire), Wire::reply(7, 4001, "2100A1b2c3d4e5f6").bytes());
}

TEST(SystemCommands, TakesTheLargestNumberThatTheModuleCanSend)
{
    EXPECT_EQ(refusalOf("9223372036854775807", "2100a1b2c3d4e5f6"), "not refused");
    EXPECT_THAT(refusalOf("9223372036854775808", "2100a1b2c3d4e5f6"), HasSubstr("at most"));
}

TEST(SystemCommands, RefusesANumberThatMeansNotConfigured)
{
    EXPECT_THAT(refusalOf("0", "2100a1b2c3d4e5f6"), HasSubstr("start at 1"));
}

TEST(SystemCommands, RefusesANumberThatIsNone)
{
    EXPECT_THAT(refusalOf("4001x", "2100a1b2c3d4e5f6"), HasSubstr("\"4001x\""));
    EXPECT_THAT(refusalOf("-1", "2100a1b2c3d4e5f6"), HasSubstr("\"-1\""));
}

TEST(SystemCommands, RefusesAWwnThatIsNot16HexadecimalDigits)
{
    for (const std::string wwn : {"", "2100a1b2c3d4e5f", "2100a1b2c3d4e5f60", "2100a1b2c3d4e5fg"}) {
        EXPECT_THAT(refusalOf("4001", wwn), HasSubstr("16 hexadecimal digits")) << wwn;
    }
}

TEST(SystemCommands, NamesTheItemThatIsMissing)
{
    const TempDir dir;
    const auto config = DeviceConfigFile::load(dir.write("device.xml", "<device/>"));

    try {
        makeCommandServer(config);
        FAIL() << "not refused";
    } catch (const talvik::StartupError& error) {
        EXPECT_THAT(error.what(), HasSubstr("GET_SYSTEM_WWN"));
    }
}

}  // namespace
