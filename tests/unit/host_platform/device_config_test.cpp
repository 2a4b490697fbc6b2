#include "platform/device_config.h"

#include "host/platform/device_config_file.h"
#include "host/startup_error.h"
#include "platform/basic_info.h"
#include "tests/support/temp_dir.h"

#include <gmock/gmock.h>

#include <string>

#include <sys/stat.h>

namespace {

using talvik::DeviceConfigFile;
using talvik::StartupError;
using testing::HasSubstr;

const std::string kComplete = R"(<?xml version="1.0"?>
<device>
  <section name="BASIC_INFO">
    <item name="NODE_CODE" value="N-&amp;-1"/>
    <item name="NODE_TYPE" value="4294967295"/>
    <item name="DEVICE_TYPE" value="812"/>
    <item name="PRODUCT_SN" value="21023"/>
  </section>
  <section name="COMMAND"><item name="GET_SYSTEM_WWN" value="4001"/></section>
</device>
)";

std::string without(std::string text, const std::string& part)
{
    return text.replace(text.find(part), part.size(), "");
}

class DeviceConfig : public testing::Test {
protected:
    DeviceConfigFile load(const std::string& text)
    {
        return DeviceConfigFile::load(dir.write("device.xml", text));
    }

    /// What `text` is refused with; empty when it is not.
    std::string refusalOf(const std::string& text)
    {
        try {
            talvik::installDeviceConfig(load(text));
        } catch (const StartupError& error) {
            return error.what();
        }
        return {};
    }

    talvik::test::TempDir dir;
};

TEST_F(DeviceConfig, AnswersItemsOfTheInstalledFile)
{
    talvik::installDeviceConfig(load(kComplete));
    std::string value = "before";

    EXPECT_EQ(CKELXmlConfig::instance()->getDeviceItem("COMMAND", "GET_SYSTEM_WWN", value), 0);
    EXPECT_EQ(value, "4001");
}

TEST_F(DeviceConfig, AMissingItemIsEmptyText)
{
    talvik::installDeviceConfig(load(kComplete));
    std::string value = "before";

    EXPECT_EQ(CKELXmlConfig::instance()->getDeviceItem("COMMAND", "NO_SUCH", value), -1);
    EXPECT_EQ(value, "");
    value = "before";
    EXPECT_EQ(CKELXmlConfig::instance()->getDeviceItem("NO_SUCH", "GET_SYSTEM_WWN", value), -1);
    EXPECT_EQ(value, "");
}

TEST_F(DeviceConfig, FeedsTheBasicInformation)
{
    talvik::installDeviceConfig(load(kComplete));

    EXPECT_STREQ(CSNMPBasicImpl::getNodeCode(), "N-&-1");
    EXPECT_EQ(CSNMPBasicImpl::getNodeType(), 4294967295U);
    EXPECT_EQ(CSNMPBasicImpl::device_type, 812);
    EXPECT_EQ(CSNMPBasicImpl::product_sn, "21023");
}

TEST_F(DeviceConfig, AMissingFileIsNamed)
{
    try {
        DeviceConfigFile::load(dir.path("none.xml"));
        FAIL() << "accepted";
    } catch (const StartupError& error) {
        EXPECT_EQ(std::string(error.what()), "cannot read the device configuration " +
                                                 dir.path("none.xml") +
                                                 ": No such file or directory");
    }
}

TEST_F(DeviceConfig, AFolderIsNoFile)
{
    EXPECT_THROW(DeviceConfigFile::load(dir.path()), StartupError);
}

TEST_F(DeviceConfig, APipeOrADeviceIsNoFileAndIsNotWaitedFor)
{
    ASSERT_EQ(mkfifo(dir.path("pipe").c_str(), 0600), 0);

    EXPECT_THROW(DeviceConfigFile::load(dir.path("pipe")), StartupError);
    EXPECT_THROW(DeviceConfigFile::load("/dev/zero"), StartupError);
}

TEST_F(DeviceConfig, BrokenXmlIsRefusedWithItsLine)
{
    EXPECT_THAT(refusalOf("<device>\n  <section name=\"A\">\n</device>\n"),
                HasSubstr("device.xml, line 3: "));
    EXPECT_THAT(refusalOf(""), HasSubstr("device.xml, line 1: "));
}

TEST_F(DeviceConfig, AForeignElementIsRefusedWithItsLine)
{
    EXPECT_THAT(refusalOf("<devices/>"), HasSubstr("expected <device>, found <devices>"));
    EXPECT_THAT(refusalOf("<device>\n<item name=\"a\" value=\"b\"/></device>"),
                HasSubstr("line 2: expected <section>, found <item>"));
    EXPECT_THAT(refusalOf("<device>\n<section name=\"A\">\n<itm name=\"a\"/></section></device>"),
                HasSubstr("line 3: expected <item>, found <itm>"));
}

TEST_F(DeviceConfig, AMissingAttributeIsRefused)
{
    EXPECT_THAT(refusalOf("<device><section/></device>"),
                HasSubstr("<section> lacks the attribute name"));
    EXPECT_THAT(refusalOf("<device><section name=\"A\"><item name=\"a\"/></section></device>"),
                HasSubstr("<item> lacks the attribute value"));
}

TEST_F(DeviceConfig, ARepeatedItemIsRefused)
{
    EXPECT_THAT(refusalOf("<device><section name=\"A\"><item name=\"a\" value=\"1\"/>"
                          "<item name=\"a\" value=\"2\"/></section></device>"),
                HasSubstr("item \"a\" stands in section \"A\" twice"));
    EXPECT_THAT(refusalOf("<device><section name=\"A\"/><section name=\"A\"/></device>"),
                HasSubstr("section \"A\" stands here twice"));
}

TEST_F(DeviceConfig, ATextThatNoManagerTakesIsRefused)
{
    const std::string longest(255, 'n');
    for (const char* item : {"N-&amp;-1", "21023"}) {
        auto text = kComplete;
        EXPECT_EQ(refusalOf(text.replace(text.find(item), std::string(item).size(), longest)), "");
        text = kComplete;
        EXPECT_THAT(
            refusalOf(text.replace(text.find(item), std::string(item).size(), longest + "n")),
            HasSubstr("\" has 256 octets; managers take at most 255"));
    }
}

TEST_F(DeviceConfig, AMissingItemOfTheHostIsRefused)
{
    const auto text = without(kComplete, R"(<item name="NODE_CODE" value="N-&amp;-1"/>)");

    EXPECT_THAT(refusalOf(text), HasSubstr("section \"BASIC_INFO\" lacks the item \"NODE_CODE\""));
}

TEST_F(DeviceConfig, ANumberThatIsNoneIsRefused)
{
    for (const std::string bad : {"", "x", "-1", "1 ", "4294967296", "99999999999999999999999"}) {
        auto text = kComplete;
        text.replace(text.find("4294967295"), 10, bad);
        EXPECT_THAT(refusalOf(text), HasSubstr("item \"NODE_TYPE\" is \"" + bad +
                                               "\", not a decimal number of at most 4294967295"));
    }
}

TEST_F(DeviceConfig, ARefusedFileLeavesTheInstalledOneInPlace)
{
    talvik::installDeviceConfig(load(kComplete));

    EXPECT_NE(refusalOf("<device/>"), "");

    EXPECT_STREQ(CSNMPBasicImpl::getNodeCode(), "N-&-1");
    EXPECT_EQ(CSNMPBasicImpl::device_type, 812);
}

}  // namespace
