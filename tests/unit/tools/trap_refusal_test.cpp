#include "tools/trap_refusal.h"

#include "tests/unit/tools/fake_snmp_agent.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <ostream>
#include <string>
#include <vector>

namespace {

using namespace talvik::ctl;
using namespace talvik::test;
using testing::HasSubstr;

constexpr std::uint32_t kColumns[] = {trap_column::kRowStatus, trap_column::kAddress,
                                      trap_column::kPort,      trap_column::kVersion,
                                      trap_column::kType,      trap_column::kUser};

/// The failure of a SET of all columns of row 7.
Failure failureOf(int status, std::size_t index, bool v1 = false)
{
    FakeSnmpAgent agent;
    agent.v1 = v1;
    std::vector<SnmpCell> cells;
    for (const auto column : kColumns) {
        cells.push_back(numberCell(1));
        cells.back().oid = trapCellName(column, 7);
    }
    return refusal(agent, "change", 7, cells, refusedWith(status, index));
}

struct Refusal {
    const char* name;
    int status;
    std::size_t index;
    bool v1;
    const char* reason;  ///< behind what all begin with
    const char* advice;  ///< a part of it

    friend std::ostream& operator<<(std::ostream& os, const Refusal& row) { return os << row.name; }
};

const Refusal kRefusals[] = {
    {"TooBig", kStatusTooBig, 0, false, "tooBig", "give shorter values"},
    {"NoSuchName", kStatusNoSuchName, 1, true, "noSuchName at the row",
     "may write: rwuser or rwcommunity, or an access line with a view for writing, in the agent's "
     "configuration; SNMPv1 says no more, ask with --snmp-version 2c or 3"},
    {"BadValue", kStatusBadValue, 3, true, "badValue at the port", "give a port from 1 to 65535"},
    {"ReadOnly", kStatusReadOnly, 4, true, "readOnly at the version", "of one release"},
    {"GenErr", kStatusGenErr, 2, false, "genErr at the address", "see the agent's log"},
    {"GenErrOverV1", kStatusGenErr, 2, true, "genErr at the address",
     "its list is full or cannot be stored: see the agent's log"},
    {"NoAccess", kStatusNoAccess, 1, false, "noAccess at the row",
     "use a user or community that may write"},
    {"WrongType", kStatusWrongType, 4, false, "wrongType at the version", "give v1, v2c or v3"},
    {"WrongLength", kStatusWrongLength, 6, false, "wrongLength at the user",
     "give a user name of 1 to 32 octets, or -- for none"},
    {"WrongEncoding", kStatusWrongEncoding, 6, false, "wrongEncoding at the user",
     "give a user name"},
    {"WrongValue", kStatusWrongValue, 2, false, "wrongValue at the address",
     "give an IPv4 or IPv6 address, or a host name"},
    {"WrongValueOfTheType", kStatusWrongValue, 5, false, "wrongValue at the type",
     "give alarm, no-alarm, alarm-legacy or alarm-own-oid"},
    {"WrongValueOfNothing", kStatusWrongValue, 0, false, "wrongValue", "check the values"},
    {"WrongValueOfSomethingElse", kStatusWrongValue, 7, false, "wrongValue", "check the values"},
    {"NoCreation", kStatusNoCreation, 1, false, "noCreation at the row", "of one release"},
    {"InconsistentValue", kStatusInconsistentValue, 1, false, "inconsistentValue at the row",
     "list what is there with talvikctl trap list"},
    {"ResourceUnavailable", kStatusResourceUnavailable, 1, false, "resourceUnavailable at the row",
     "its list is full: remove a destination"},
    {"CommitFailed", kStatusCommitFailed, 1, false, "commitFailed at the row",
     "could not store its list: see its log, and the space on its disk"},
    {"UndoFailed", kStatusUndoFailed, 0, false, "undoFailed", "could not store its list"},
    {"AuthorizationError", kStatusAuthorizationError, 1, false, "authorizationError at the row",
     "use a user or community that may write"},
    {"NotWritable", kStatusNotWritable, 2, false, "notWritable at the address", "of one release"},
    {"InconsistentName", kStatusInconsistentName, 2, false, "inconsistentName at the address",
     "of one release"},
    {"Unknown", 77, 0, false, "error 77", "of one release"},
};

class TrapRefusal : public testing::TestWithParam<Refusal> {};

TEST_P(TrapRefusal, NamesTheErrorTheValueAndWhatToDo)
{
    const auto failure = failureOf(GetParam().status, GetParam().index, GetParam().v1);

    EXPECT_EQ(failure.kind(), Failure::Kind::Refused);
    EXPECT_EQ(failure.what(),
              std::string("udp:192.0.2.1:1161 refused to change trap destination 7: ") +
                  GetParam().reason);
    EXPECT_THAT(failure.advice(), HasSubstr(GetParam().advice));
}

INSTANTIATE_TEST_SUITE_P(Statuses, TrapRefusal, testing::ValuesIn(kRefusals),
                         [](const auto& row) { return row.param.name; });

TEST(TrapCellName, IsColumnAndIndexBelowTheEntry)
{
    EXPECT_EQ(trapCellName(trap_column::kUser, 2147483647),
              (ObjectId{1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 4, 1, 1, 8, 2147483647}));
}

}  // namespace
