#include "backend/record_builder.h"
#include "backend/server_thread.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/backend/program.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <string>
#include <vector>

namespace {

using namespace talvik::test;
using talvik::backend::CommandServer;
using talvik::backend::Package;
using talvik::backend::RecordBuilder;
using talvik::backend::ServerThread;
using testing::HasSubstr;

constexpr std::uint64_t kShowReceivers = 4020;
constexpr std::uint64_t kSendTestTrap = 4021;
constexpr std::uint32_t kNoSuchReceiver = 0x1000030;

void addReceiver(Package& reply, std::uint32_t index, const std::string& address,
                 const std::string& state)
{
    RecordBuilder(reply, kShowReceivers)
        .text(1, address)
        .u32(2, 162)
        .u32(3, index)
        .u32(4, 3)
        .u32(5, 7)
        .text(6, "monitor")
        .u32(7, index % 2)
        .text(8, state)
        .u64(10, 1U + (std::uint64_t{1} << 40U))
        .u64(11, 2)
        .u64(12, 3)
        .u64(13, 4)
        .u64(14, 5);
}

/// Stands in for the agent: answers on a socket of its own.
class TalvikctlReceivers : public testing::Test {
protected:
    std::string path() const { return dir_.path("agent.sock"); }

    int run(std::vector<std::string> words)
    {
        words.insert(words.begin(), "trap");
        words.insert(words.end(), {"--socket", path(), "--device", sampleDeviceFile()});
        const ServerThread server(agent_, path());
        Program program("talvikctl", words);
        const int status = program.wait();
        output_ = program.output();
        return status;
    }

    void show(CommandServer::Command command)
    {
        agent_.add(kShowReceivers, "SHOW_RECEIVERS", std::move(command));
    }

    TempDir dir_;
    CommandServer agent_;
    std::string output_;
};

TEST_F(TalvikctlReceivers, AreShownByIndexInATable)
{
    show([](const Package&, Package& reply) {
        addReceiver(reply, 12, "192.0.2.12", "ok");
        addReceiver(reply, 7, "a\x1B[2J", "does not answer");
        return 0U;
    });

    EXPECT_EQ(run({"status"}), 0);

    EXPECT_EQ(output_,
              "INDEX  ADDRESS     PORT  VERSION  TYPE           USER     SENDS   STATE            "
              "SENT           FAILED  ANSWERED  GIVEN UP  WAITING\n"
              "7      a\\x1B[2J    162   v3       alarm-own-oid  monitor  inform  does not answer  "
              "1099511627777  2       3         4         5\n"
              "12     192.0.2.12  162   v3       alarm-own-oid  monitor  trap    ok               "
              "1099511627777  2       3         4         5\n");
}

TEST_F(TalvikctlReceivers, AreShownAsJson)
{
    show([](const Package&, Package& reply) {
        addReceiver(reply, 7, "192.0.2.7", "ok");
        return 0U;
    });

    EXPECT_EQ(run({"status", "--json"}), 0);

    for (const auto* part :
         {"\"index\" : 7", "\"address\" : \"192.0.2.7\"", "\"port\" : 162", "\"version\" : \"v3\"",
          "\"versionCode\" : 3", "\"type\" : \"alarm-own-oid\"", "\"user\" : \"monitor\"",
          "\"inform\" : true", "\"state\" : \"ok\"", "\"sent\" : 1099511627777", "\"failed\" : 2",
          "\"answered\" : 3", "\"givenUp\" : 4", "\"waiting\" : 5"}) {
        EXPECT_THAT(output_, HasSubstr(part));
    }
}

TEST_F(TalvikctlReceivers, MayBeNone)
{
    show([](const Package&, Package&) { return 0U; });

    EXPECT_EQ(run({"status"}), 0);

    EXPECT_EQ(output_, "no trap receivers\n");
}

TEST_F(TalvikctlReceivers, AreNotGuessedFromAnAnswerThatLacksACell)
{
    show([](const Package&, Package& reply) {
        RecordBuilder(reply, kShowReceivers).u32(3, 7);
        return 0U;
    });

    EXPECT_EQ(run({"status"}), 3);

    EXPECT_THAT(output_, HasSubstr("cell 1 of the answer is missing; make sure that talvikctl"));
}

/// A receiver with the index 7 whose counters are looked at once before the test and then again and
/// again.
class TalvikctlTrapTest : public TalvikctlReceivers {
protected:
    struct Counters {
        std::uint64_t sent = 0;
        std::uint64_t answered = 0;
        std::uint64_t givenUp = 0;
        std::uint64_t waiting = 0;
    };

    /// `after` has the counters of each later look; the last ones stay.
    void receive(bool inform, const std::string& state, std::vector<Counters> after)
    {
        agent_.add(kSendTestTrap, "SEND_TEST_TRAP", [this](const Package& request, Package&) {
            asked_ = CTLVCell::ValueCast<unsigned int>()((*request[0])[3]);
            tested_ = tested_ || asked_ == 7;
            return asked_ == 7 ? 0U : kNoSuchReceiver;
        });
        show([this, inform, state, after](const Package&, Package& reply) {
            Counters now;
            if (tested_) {
                now = after[std::min(looks_, after.size() - 1)];
                ++looks_;
            }
            RecordBuilder(reply, kShowReceivers)
                .text(1, "192.0.2.7")
                .u32(2, 162)
                .u32(3, 7)
                .u32(4, 2)
                .u32(5, 1)
                .text(6, "--")
                .u32(7, inform ? 1 : 0)
                .text(8, tested_ ? state : "ok")
                .u64(10, now.sent)
                .u64(11, 0)
                .u64(12, now.answered)
                .u64(13, now.givenUp)
                .u64(14, now.waiting);
            return 0U;
        });
    }

    std::uint64_t asked_ = 0;  // while no server runs
    bool tested_ = false;
    std::size_t looks_ = 0;
};

TEST_F(TalvikctlTrapTest, EndsWhenTheTrapIsSent)
{
    receive(false, "ok", {{0, 0, 0, 1}, {1, 0, 0, 0}});

    EXPECT_EQ(run({"test", "7"}), 0);

    EXPECT_EQ(output_,
              "the test trap to receiver 7 (192.0.2.7 port 162) was handed to the network; "
              "whether it arrived, only the receiver tells\n");
    EXPECT_EQ(looks_, 2u);
}

TEST_F(TalvikctlTrapTest, EndsWhenTheInformIsAcknowledged)
{
    receive(true, "ok", {{1, 0, 0, 1}, {1, 1, 0, 0}});

    EXPECT_EQ(run({"test", "7", "--json"}), 0);

    EXPECT_THAT(output_, HasSubstr("\"outcome\" : \"acknowledged\""));
}

TEST_F(TalvikctlTrapTest, SaysWhyTheInformFailed)
{
    receive(true, "does not answer informs", {{1, 0, 0, 1}, {1, 0, 1, 0}});

    EXPECT_EQ(run({"test", "7"}), 1);

    EXPECT_THAT(output_,
                HasSubstr("talvikctl: receiver 7 (192.0.2.7 port 162) did not get the test "
                          "inform: does not answer informs; "));
}

TEST_F(TalvikctlTrapTest, EndsWithTheWait)
{
    receive(true, "ok", {{1, 0, 0, 1}});

    EXPECT_EQ(run({"test", "7", "--wait", "1", "--json"}), 3);

    EXPECT_THAT(output_, HasSubstr("\"reason\" : \"receiver 7 (192.0.2.7 port 162) did not get the "
                                   "test inform within 1 s\""));
    EXPECT_THAT(output_, HasSubstr("\"advice\" : \"it may still get it"));
}

TEST_F(TalvikctlTrapTest, DoesNotHaveToWait)
{
    receive(false, "ok", {{0, 0, 0, 1}});

    EXPECT_EQ(run({"test", "7", "--wait", "0"}), 0);

    EXPECT_EQ(asked_, 7u);
    EXPECT_EQ(looks_, 0u);
    EXPECT_EQ(output_,
              "a test trap goes to receiver 7; talvikctl trap status shows what becomes of it\n");
}

TEST_F(TalvikctlTrapTest, NeedsAReceiver)
{
    receive(false, "ok", {{}});

    EXPECT_EQ(run({"test", "8"}), 1);

    EXPECT_EQ(output_, "talvikctl: cannot send a test trap to receiver 8: there is no trap "
                       "receiver with that index; take an index that talvikctl trap status "
                       "shows\n");
}

}  // namespace
