#include "tests/support/time_zone.h"
#include "tools/alarm_output.h"
#include "tools/catalogue/finding_kinds.h"
#include "tools/catalogue/finding_report.h"
#include "tools/folded_text.h"
#include "tools/package_output.h"
#include "tools/receiver_output.h"
#include "tools/safe_text.h"
#include "tools/scenario_report.h"
#include "tools/trap_import_output.h"
#include "tools/trap_output.h"
#include "tools/watch_output.h"
#include "tools/watch_picture.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <ostream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace talvik::ctl;
using talvik::test::TimeZone;
using testing::HasSubstr;
using testing::Not;

constexpr auto kMost32 = std::numeric_limits<std::uint32_t>::max();
constexpr auto kMost64 = std::numeric_limits<std::uint64_t>::max();
const std::string kAddress = "2001:db8:1234:5678:9abc:def0:1234:5678";
const std::string kHost = "traps.operations-centre.building-7.example.com";
const std::string kUser = "a-monitor-of-the-other-building";
const std::string kAdvice = "start talvik-agentd, or name agent.sock in its state directory with "
                            "--socket; the user must be its own or root";

/// The last text that a table shows whole where nothing is cut.
const std::string kLast = "\u786C\u76D8 ends here";

ActiveAlarm alarm()
{
    return {kMost32, kMost64, kMost32, 4102444799, "DAE000,7,2102350TLV," + kHost + "," + kLast};
}

ReceiverStatus receiver()
{
    ReceiverStatus status;
    status.index = 2147483647;
    status.address = kAddress;
    status.port = 65535;
    status.version = 3;
    status.type = 7;
    status.user = kUser;
    status.inform = true;
    status.state = kHost + ": cannot be looked up; notifications wait 10 s for it " + kLast;
    status.sent = status.failed = status.answered = status.givenUp = status.waiting = kMost64;
    return status;
}

std::string alarms(const TableStyle& style)
{
    return activeAlarmsText({alarm(), alarm()}, style);
}

std::string receivers(const TableStyle& style)
{
    return receiverTableText({receiver(), receiver()}, style);
}

TrapDestination destination()
{
    TrapDestination row;
    row.index = 2147483647;
    row.address = kHost;
    row.port = 65535;
    row.version = 3;
    row.type = 7;
    row.user = kUser;
    row.usable = kAddress + " " + kLast;
    return row;
}

std::string destinations(const TableStyle& style)
{
    return trapTableText({destination(), destination()}, style);
}

std::string imported(const TableStyle& style)
{
    TrapChangeOutcome outcome;
    outcome.change.kind = TrapChange::Kind::Modify;
    outcome.change.before = destination();
    outcome.change.after = destination();
    outcome.change.after.address = kAddress;
    outcome.change.after.user = "another " + kLast;
    outcome.result = TrapChangeOutcome::Result::NotTried;
    return trapImportTable({outcome, outcome}, style);
}

std::string changes(const TableStyle& style)
{
    Change raised;
    raised.kind = Change::Kind::Raised;
    raised.alarm = alarm();
    Change changed;
    changed.kind = Change::Kind::ReceiverChanged;
    changed.receiver = receiver();
    changed.counted = {kMost64, kMost64, kMost64, kMost64};
    Change away;
    away.kind = Change::Kind::Away;
    away.failure = Failure(Failure::Kind::Connection, kHost + " does not answer", kAdvice);
    std::string text;
    for (const auto& change : {raised, changed, away}) {
        text += changeText(change, 4102444799, style);
    }
    return text + kLast + "\n";
}

std::string pictures(const TableStyle& style)
{
    Look look;
    look.alarms.rows = {alarm(), alarm()};
    look.receivers.rows = {receiver(), receiver()};
    Look away;
    away.alarms.failure = Failure(Failure::Kind::Connection, kHost + " does not answer", kAdvice);
    return watchPicture(look, {}, style, 100) + watchPicture(away, {}, style, 100);
}

std::string packages(const TableStyle& style)
{
    std::ostringstream out;
    const PackageNames names;
    PackageText text(out, names, style);
    CapturedPackage package;
    package.number = 1;
    package.offset = 67000000;
    package.head.uiMagic = kMost32;
    package.head.uiWord3 = 0x1000014;
    package.head.usShort1 = 2;
    package.headBytes = sizeof package.head;
    CapturedRecord record;
    record.number = 1;
    record.offset = 67000000;
    record.id = kMost64;
    record.length = 65535;
    record.fault = PackageFault{67000000, "cell with tag 7: type 15 is unknown, the largest is 9"};
    const auto parameters = alarm().parameters;
    CapturedCell cell;
    cell.offset = 67000000;
    cell.tag = 4095;
    cell.type = 2;
    cell.value.assign(parameters.c_str(), parameters.c_str() + parameters.size() + 1);
    record.cells = {cell};
    text.begin(package);
    text.record(record);
    record.accepted = true;
    text.record(record);
    text.end(package, {67000000, false, {*record.fault}});
    return out.str();
}

std::string scenario(const TableStyle& style)
{
    std::ostringstream out;
    std::ostringstream errors;
    ScenarioText report(out, errors, style);
    ScenarioStep step;
    step.kind = ScenarioStep::Kind::Raise;
    step.place = "steps[123].repeat.steps[4567]";
    step.report.id = kMost64;
    step.name = kHost + " " + kLast;
    report.succeeded({step, "round 123456 of 1000000", 1}, kMost32);
    return out.str();
}

std::string findings(const TableStyle& style)
{
    CheckResult result;
    result.findings.add(kind::kIdSame32Bits, {kHost + ".json", 12345, 67},
                        "the id " + std::to_string(kMost64) +
                            " ends in the same 32 bits as one of " + kHost,
                        kAdvice + " " + kLast);
    std::ostringstream out;
    printFindings(out, {"a.json", "b.json"}, result, style);
    return out.str();
}

std::string named(const TableStyle& style)
{
    return namedValue("socket", "/run/" + std::string(100, 'x'), style) +
           namedValue("to do", kAdvice + " " + kLast, style);
}

struct Table {
    const char* name;
    std::function<std::string(const TableStyle&)> text;

    friend std::ostream& operator<<(std::ostream& os, const Table& row) { return os << row.name; }
};

const Table kTables[] = {
    {"AlarmList", alarms},        {"TrapList", destinations},
    {"TrapStatus", receivers},    {"TrapImport", imported},
    {"WatchLines", changes},      {"WatchPicture", pictures},
    {"PackageDump", packages},    {"AlarmScenario", scenario},
    {"CatalogueCheck", findings}, {"BackendStatusAndExpand", named},
};

class EveryTable : public testing::TestWithParam<Table> {
protected:
    TimeZone zone_{"Asia/Kathmandu"};
};

TEST_P(EveryTable, FitsTheTerminal)
{
    for (const std::size_t columns : {20U, 40U, 80U, 100U, 132U, 200U}) {
        std::istringstream lines(GetParam().text({columns, false}));
        for (std::string line; std::getline(lines, line);) {
            EXPECT_LE(shownLength(line), columns) << line;
        }
    }
}

TEST_P(EveryTable, CutsNothingWithoutATerminal)
{
    const auto text = GetParam().text({});

    EXPECT_THAT(text, Not(HasSubstr("\u2026")));
    EXPECT_THAT(text, HasSubstr(kLast));
}

INSTANTIATE_TEST_SUITE_P(Of, EveryTable, testing::ValuesIn(kTables),
                         [](const auto& row) { return row.param.name; });

}  // namespace
