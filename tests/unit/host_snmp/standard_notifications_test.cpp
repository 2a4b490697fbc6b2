#include "host/snmp/standard_notifications.h"

#include "platform/basic_info.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host_snmp/log_kit.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <string>

namespace {

using talvik::configurationMayHaveChanged;
using talvik::ObjectId;
using talvik::Syntax;
using talvik::test::LoggerCapture;
using talvik::test::TempDir;
using testing::HasSubstr;
using testing::IsEmpty;

tTrapDestInfo someReceiver()
{
    tTrapDestInfo row;
    row.index = "12";
    row.address = "192.0.2.1";
    row.port = 162;
    return row;
}

TEST(StandardNotifications, NameTheTwoStarts)
{
    EXPECT_EQ(talvik::coldStart({}).id, (ObjectId{1, 3, 6, 1, 6, 3, 1, 1, 5, 1}));
    EXPECT_EQ(talvik::warmStart({}).id, (ObjectId{1, 3, 6, 1, 6, 3, 1, 1, 5, 2}));
    const auto start = talvik::coldStart({someReceiver()});
    EXPECT_THAT(start.bindings, IsEmpty());
    ASSERT_EQ(start.receivers.size(), 1U);
    EXPECT_EQ(start.receivers.front().index, "12");
}

TEST(StandardNotifications, ATestSaysThatItIsOne)
{
    const auto trap = talvik::testTrap(someReceiver());
    EXPECT_EQ(trap.id, (ObjectId{1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 2, 1, 0, 2}));
    ASSERT_EQ(trap.bindings.size(), 14U);
    for (std::size_t at = 0; at < trap.bindings.size(); ++at) {
        EXPECT_EQ(trap.bindings[at].name,
                  (ObjectId{1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 3, 1, 1, at + 1, 0}));
    }
    EXPECT_EQ(trap.bindings[1].value.octets, "receiver 12");
    EXPECT_EQ(trap.bindings[3].value.octets, "Test trap");
    EXPECT_EQ(trap.bindings[4].value.number, 3);
    EXPECT_EQ(trap.bindings[5].value.number, 5) << "info, nothing severe";
    EXPECT_EQ(trap.bindings[6].value.syntax, Syntax::Gauge32);
    EXPECT_EQ(trap.bindings[6].value.number, 0);
    EXPECT_EQ(trap.bindings[7].value.octets.size(), 11U) << "a DateAndTime";
    EXPECT_EQ(trap.bindings[8].value.number, 0);
    EXPECT_EQ(trap.bindings[10].value.number, 3);
    EXPECT_EQ(trap.bindings[11].value.syntax, Syntax::Counter64);
    EXPECT_EQ(trap.bindings[12].value.number, CSNMPBasicImpl::device_type);
    EXPECT_EQ(trap.bindings[13].value.octets, CSNMPBasicImpl::product_sn);
    EXPECT_EQ(trap.receivers.size(), 1U);
}

class StartTest : public testing::Test {
protected:
    bool mayHaveChanged() { return configurationMayHaveChanged(dir_.path(), files_); }

    TempDir dir_;
    std::list<std::string> files_{dir_.write("agent.conf", "a"), dir_.path("missing")};
};

TEST_F(StartTest, TheFirstIsCold)
{
    EXPECT_TRUE(mayHaveChanged());
    EXPECT_FALSE(mayHaveChanged());
    EXPECT_FALSE(mayHaveChanged());
}

TEST_F(StartTest, IsColdAfterAChange)
{
    mayHaveChanged();
    dir_.write("agent.conf", "ab");
    EXPECT_TRUE(mayHaveChanged());
    EXPECT_FALSE(mayHaveChanged());
}

TEST_F(StartTest, IsColdWhenAFileWasTouched)
{
    mayHaveChanged();
    const auto file = files_.front();
    std::filesystem::last_write_time(file, std::filesystem::last_write_time(file) +
                                               std::chrono::seconds(1));
    EXPECT_TRUE(mayHaveChanged());
}

TEST_F(StartTest, IsColdWhenAFileAppears)
{
    mayHaveChanged();
    dir_.write("missing", "");
    EXPECT_TRUE(mayHaveChanged());
}

TEST_F(StartTest, IsColdWhenAnotherFileIsUsed)
{
    mayHaveChanged();
    files_.push_back(dir_.path("other"));
    EXPECT_TRUE(mayHaveChanged());
}

TEST_F(StartTest, IsColdAndSaysSoWhenTheNoteCannotBeKept)
{
    std::filesystem::create_directory(dir_.path("last-start"));
    const LoggerCapture log("host");
    EXPECT_TRUE(mayHaveChanged());
    EXPECT_TRUE(mayHaveChanged());
    ASSERT_EQ(log.lines().size(), 2U);
    EXPECT_THAT(log.lines()[0], HasSubstr("the receivers are told of a cold start"));
}

}  // namespace
