#include "tools/request_refusal.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>

namespace {

using namespace talvik::ctl;
using testing::HasSubstr;
using testing::Not;

using Kind = Failure::Kind;

RefusedRequest clearRequest(int code)
{
    return {Peer::BackEnd, "clear alarm 7", "CLEAR_ALARM", 4003, "/run/b.sock", "/etc/d.xml", code,
            true,          "it hung"};
}

RefusedRequest showRequest(int code)
{
    return {Peer::Agent,
            "show the trap receivers",
            "SHOW_RECEIVERS",
            4020,
            "/run/a.sock",
            "/etc/d.xml",
            code,
            false,
            "it hung"};
}

struct Row {
    const char* name;
    RefusedRequest request;
    Kind kind;
    const char* reason;
    const char* advice;

    friend std::ostream& operator<<(std::ostream& os, const Row& row) { return os << row.name; }
};

class RequestRefusal : public testing::TestWithParam<Row> {};

TEST_P(RequestRefusal, SaysWhatFailedAndWhatToDo)
{
    const auto& row = GetParam();

    const auto failure = refusalOf(row.request);

    EXPECT_EQ(failure.kind(), row.kind);
    EXPECT_THAT(failure.what(), HasSubstr("cannot " + row.request.task));
    EXPECT_THAT(failure.what(), HasSubstr(row.reason));
    EXPECT_THAT(failure.advice(), HasSubstr(row.advice));
}

const Row kRows[] = {
    {"Unreachable", clearRequest(0x1000001), Kind::Connection, "at /run/b.sock: it hung",
     "start talvik-agentd, or talvik-backendd"},
    {"UnreachableAgent", showRequest(0x1000001), Kind::Connection, "at /run/a.sock: it hung",
     "agent.sock"},
    {"TimedOut", clearRequest(0x1000002), Kind::NoAnswer,
     "it hung; it may have been done nonetheless", "--timeout"},
    {"ProtocolError", clearRequest(0x1000003), Kind::NoAnswer, "may have been done",
     "same release"},
    {"UnknownCommand", clearRequest(0x1000010), Kind::Refused,
     "does not know the command CLEAR_ALARM (4003)", "socket of talvik-backendd"},
    {"UnknownCommandOfAgent", showRequest(0x1000010), Kind::Refused, "SHOW_RECEIVERS (4020)",
     "not the socket of a back end; otherwise make sure that it reads the same command numbers as "
     "/etc/d.xml"},
    {"NoCommand", clearRequest(0x1000011), Kind::Refused, "malformed (0x1000011)", "same release"},
    {"CommandFailed", clearRequest(0x1000012), Kind::Refused, "CLEAR_ALARM broke off",
     "the back end's log"},
    {"AnswerTooLarge", showRequest(0x1000013), Kind::Refused, "too large", "the agent's log"},
    {"NoSuchAlarm", clearRequest(0x1000014), Kind::UnknownRow,
     "no alarm with that serial number is active", "cleared before, or never raised"},
    {"BadRequest", clearRequest(0x1000015), Kind::Refused, "malformed (0x1000015)", "same release"},
    {"OutboxFull", clearRequest(0x1000016), Kind::Refused, "too many notifications wait",
     "start talvik-agentd"},
    {"AlreadySubscribed", clearRequest(0x1000017), Kind::Refused, "another program takes",
     "end it"},
    {"StoreFailed", clearRequest(0x1000018), Kind::Refused, "cannot write its alarms to disk",
     "the disk that its state directory is on"},
    {"NoSuchReceiver", showRequest(0x1000030), Kind::UnknownRow, "no trap receiver with that index",
     "talvikctl trap status"},
    {"AgentBusy", showRequest(0x1000031), Kind::Refused, "the agent is busy", "try again"},
    {"Unknown", clearRequest(0x77), Kind::Refused, "refuses CLEAR_ALARM with the unknown code 0x77",
     "same release"},
    {"UnknownOfAgent", showRequest(0x77), Kind::Refused,
     "the agent refuses SHOW_RECEIVERS with the unknown code 0x77", "the agent's log"},
};

INSTANTIATE_TEST_SUITE_P(Code, RequestRefusal, testing::ValuesIn(kRows),
                         [](const auto& row) { return row.param.name; });

TEST(RequestRefusalOfAQuestion, DoesNotSayThatItMayHaveBeenDone)
{
    EXPECT_THAT(refusalOf(showRequest(0x1000002)).what(), Not(HasSubstr("nonetheless")));
}

}  // namespace
