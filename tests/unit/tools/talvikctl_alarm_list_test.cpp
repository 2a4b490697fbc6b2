#include "backend/record_builder.h"
#include "backend/server_thread.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/backend/program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <ostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using namespace talvik::test;
using talvik::backend::CommandServer;
using talvik::backend::Package;
using talvik::backend::RecordBuilder;
using talvik::backend::ServerThread;
using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;
using testing::Pair;
using testing::StartsWith;

constexpr std::uint64_t kShow = 4002;
constexpr std::uint64_t kRecord = 0xD00C900B6;

void addAlarm(Package& reply, std::uint32_t serial)
{
    RecordBuilder(reply, kRecord)
        .u8(0, 1)
        .u64(1, 501010001)
        .u32(2, 5)
        .u32(3, serial)
        .u64(4, 1700000000)
        .text(8, "x");
}

void addEndMark(Package& reply)
{
    RecordBuilder(reply, kRecord).u32(4095, 0);
}

/// Stands in for a back end whose active alarms are 1 to 5.
class TalvikctlAlarmList : public testing::Test {
protected:
    static constexpr std::uint32_t kActive = 5;

    int run(std::vector<std::string> words)
    {
        words.insert(words.begin(), {"alarm", "list"});
        words.insert(words.end(), {"--socket", path(), "--device", sampleDeviceFile()});
        const ServerThread server(backEnd_, path());
        Program program("talvikctl", words);
        const int status = program.wait();
        output_ = program.output();
        return status;
    }

    void answerWith(CommandServer::Command command)
    {
        backEnd_.add(kShow, "GET_CURRENT_ALARM", std::move(command));
    }

    /// Answers with at most `most` alarms, however many are asked for.
    void answerInPagesOf(std::uint32_t most)
    {
        answerWith([this, most](const Package& request, Package& reply) {
            const std::uint64_t after = CTLVCell::ValueCast<unsigned int>()((*request[0])[3]);
            const auto count = CTLVCell::ValueCast<unsigned int>()((*request[0])[9]);
            asked_.emplace_back(after, count);
            std::uint32_t given = 0;
            for (auto serial = after + 1; serial <= kActive && given < std::min(most, count);
                 ++serial, ++given) {
                addAlarm(reply, static_cast<std::uint32_t>(serial));
            }
            if (after + given >= kActive) {
                addEndMark(reply);
            }
            return 0U;
        });
    }

    /// The first column of the table.
    std::vector<std::string> serials() const
    {
        std::vector<std::string> found;
        std::istringstream lines(output_);
        for (std::string line; std::getline(lines, line);) {
            found.push_back(line.substr(0, line.find(' ')));
        }
        return found;
    }

    std::string path() const { return dir_.path("backend.sock"); }

    TempDir dir_;
    CommandServer backEnd_;
    std::vector<std::pair<std::uint32_t, std::uint32_t>> asked_;  // while no server runs
    std::string output_;
};

TEST_F(TalvikctlAlarmList, AsksForThePageBehindTheLastAlarmUntilTheEndMark)
{
    answerInPagesOf(2);

    EXPECT_EQ(run({}), 0);

    EXPECT_THAT(serials(), ElementsAre("SERIAL", "1", "2", "3", "4", "5"));
    EXPECT_THAT(asked_, ElementsAre(Pair(0, 1000), Pair(2, 1000), Pair(4, 1000)));
}

TEST_F(TalvikctlAlarmList, AsksForNoMoreThanItsLimit)
{
    answerInPagesOf(2);

    EXPECT_EQ(run({"--after", "1", "--limit", "3"}), 0);

    EXPECT_THAT(serials(), ElementsAre("SERIAL", "2", "3", "4"));
    EXPECT_THAT(asked_, ElementsAre(Pair(1, 3), Pair(3, 1)));
}

TEST_F(TalvikctlAlarmList, IsEmptyBehindTheLastAlarm)
{
    answerInPagesOf(1000);

    EXPECT_EQ(run({"--after", "4294967295"}), 0);
    EXPECT_EQ(output_, "no active alarms\n");

    EXPECT_EQ(run({"--after", "5", "--json"}), 0);
    EXPECT_EQ(output_, "[]\n");
}

TEST_F(TalvikctlAlarmList, IsAnArrayInJson)
{
    answerInPagesOf(2);

    EXPECT_EQ(run({"--limit", "1", "--json"}), 0);

    EXPECT_THAT(output_, StartsWith("[\n"));
    for (const auto* part : {"\"serial\" : 1", "\"id\" : \"501010001\"", "\"severity\" : \"major\"",
                             "\"level\" : 5", "\"time\" : 1700000000", "\"parameters\" : \"x\""}) {
        EXPECT_THAT(output_, HasSubstr(part));
    }
}

struct BadAnswer {
    const char* name;
    CommandServer::Command answer;
    const char* reason;
    int status = 3;

    friend std::ostream& operator<<(std::ostream& os, const BadAnswer& row)
    {
        return os << row.name;
    }
};

class BadAlarmPage : public TalvikctlAlarmList, public testing::WithParamInterface<BadAnswer> {};

TEST_P(BadAlarmPage, EndsTheListWithItsReason)
{
    answerWith(GetParam().answer);

    EXPECT_EQ(run({}), GetParam().status);

    EXPECT_THAT(output_, AllOf(StartsWith("talvikctl: "), HasSubstr(GetParam().reason)));
    EXPECT_THAT(output_, Not(HasSubstr("SERIAL")));
}

const BadAnswer kBadAnswers[] = {
    {"WithoutRecord", [](const Package&, Package&) { return 0U; },
     "the answer has neither an alarm nor the end mark; make sure that talvikctl is of the same"},
    {"WithoutACell",
     [](const Package&, Package& reply) {
         RecordBuilder(reply, kRecord).u32(3, 7);
         return 0U;
     },
     "cell 1 of the answer is missing; make sure that talvikctl"},
    {"ThatComesAgain",
     [](const Package&, Package& reply) {
         addAlarm(reply, 7);
         return 0U;
     },
     "the answer has an alarm with the serial number 7, none up to 7 was asked for"},
    {"ThatDescends",
     [](const Package&, Package& reply) {
         addAlarm(reply, 9);
         addAlarm(reply, 8);
         addEndMark(reply);
         return 0U;
     },
     "the answer has an alarm with the serial number 8, none up to 9 was asked for"},
    {"OfARefusal", [](const Package&, Package&) { return 0x1000015U; },
     "cannot list the active alarms: the back end takes the request GET_CURRENT_ALARM for "
     "malformed (0x1000015)",
     1},
    {"OfACommandThatBrokeOff", [](const Package&, Package&) { return 0x1000012U; },
     "cannot list the active alarms: GET_CURRENT_ALARM broke off", 1},
};

INSTANTIATE_TEST_SUITE_P(Answers, BadAlarmPage, testing::ValuesIn(kBadAnswers),
                         [](const auto& row) { return row.param.name; });

TEST_F(TalvikctlAlarmList, IsNoChangeThatMayHaveBeenDone)
{
    Program program("talvikctl", {"alarm", "list", "--json", "--socket", dir_.path("nobody.sock"),
                                  "--device", sampleDeviceFile()});

    EXPECT_EQ(program.wait(), 3);

    EXPECT_THAT(program.output(), AllOf(StartsWith("{"), HasSubstr("cannot list the active alarms"),
                                        Not(HasSubstr("nonetheless"))));
}

TEST_F(TalvikctlAlarmList, NeedsACommandNumber)
{
    const auto device = dir_.write(
        "device.xml", "<device><section name='COMMAND'><item name='RAISE_ALARM' value='2'/>"
                      "</section></device>");
    Program program("talvikctl", {"alarm", "list", "--socket", path(), "--device", device});

    EXPECT_EQ(program.wait(), 2);

    EXPECT_THAT(program.output(), AllOf(HasSubstr("GET_CURRENT_ALARM"), HasSubstr(device)));
}

}  // namespace
