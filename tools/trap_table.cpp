#include "tools/trap_table.h"

#include "tools/failure.h"
#include "tools/snmp_status.h"
#include "tools/snmp_walk.h"
#include "tools/trap_refusal.h"

#include <algorithm>
#include <map>

namespace talvik::ctl {

namespace {

using Kind = SnmpCell::Kind;

constexpr int kCreateAndGo = 4;
constexpr int kDestroy = 6;
constexpr int kMaxCollisions = 64;  // each time somebody else made a row
const std::vector<std::uint32_t> kShownColumns = {trap_column::kUsable,  trap_column::kPort,
                                                  trap_column::kVersion, trap_column::kAddress,
                                                  trap_column::kType,    trap_column::kUser};

std::optional<std::uint32_t> numberIn(const TableRow& row, std::uint32_t column)
{
    const auto cell = row.find(column);
    if (cell == row.end() || !cell->second.isNumber()) {
        return std::nullopt;
    }
    return static_cast<std::uint32_t>(cell->second.number);
}

std::optional<std::string> textIn(const TableRow& row, std::uint32_t column)
{
    const auto cell = row.find(column);
    if (cell == row.end() || cell->second.kind != Kind::Text) {
        return std::nullopt;
    }
    return cell->second.text;
}

TrapDestination destinationOf(std::uint32_t index, const TableRow& row)
{
    TrapDestination destination;
    destination.index = index;
    destination.address = textIn(row, trap_column::kAddress);
    destination.port = numberIn(row, trap_column::kPort);
    destination.version = numberIn(row, trap_column::kVersion);
    destination.type = numberIn(row, trap_column::kType);
    destination.user = textIn(row, trap_column::kUser);
    destination.usable = textIn(row, trap_column::kUsable);
    return destination;
}

SnmpCell numberCell(std::uint32_t column, std::uint32_t index, Kind kind, std::int64_t value)
{
    SnmpCell cell;
    cell.oid = trapCellName(column, index);
    cell.kind = kind;
    cell.number = value;
    return cell;
}

SnmpCell textCell(std::uint32_t column, std::uint32_t index, const std::string& value)
{
    SnmpCell cell;
    cell.oid = trapCellName(column, index);
    cell.kind = Kind::Text;
    cell.text = value;
    return cell;
}

/// What is present, as cells of a SET.
std::vector<SnmpCell> cellsOf(const TrapDestination& values)
{
    const auto index = values.index;
    std::vector<SnmpCell> cells;
    if (values.address) {
        cells.push_back(textCell(trap_column::kAddress, index, *values.address));
    }
    if (values.port) {
        cells.push_back(numberCell(trap_column::kPort, index, Kind::Unsigned, *values.port));
    }
    if (values.version) {
        cells.push_back(numberCell(trap_column::kVersion, index, Kind::Integer, *values.version));
    }
    if (values.type) {
        cells.push_back(numberCell(trap_column::kType, index, Kind::Integer, *values.type));
    }
    if (values.user) {
        cells.push_back(textCell(trap_column::kUser, index, *values.user));
    }
    return cells;
}

bool holds(const TrapDestination& row, const TrapDestination& wanted)
{
    return (!wanted.address || row.address == wanted.address) &&
           (!wanted.port || row.port == wanted.port) &&
           (!wanted.version || row.version == wanted.version) &&
           (!wanted.type || row.type == wanted.type) && (!wanted.user || row.user == wanted.user);
}

bool saysThatItIsTaken(const SnmpAnswer& answer, bool v1)
{
    return answer.errorIndex == 1 &&
           answer.status == (v1 ? kStatusBadValue : kStatusInconsistentValue);
}

}  // namespace

std::vector<TrapDestination> TrapTable::list()
{
    std::vector<TrapDestination> destinations;
    for (const auto& [index, row] : walkTable(requester_, trapEntry(), kShownColumns)) {
        destinations.push_back(destinationOf(index, row));
    }
    if (destinations.empty()) {
        requireTable();
    }
    return destinations;
}

std::uint32_t TrapTable::add(const TrapDestination& wanted)
{
    TrapDestination row = wanted;
    if (wanted.index != 0) {
        if (create(row) == Creation::Taken) {
            throw Failure(Failure::Kind::Refused,
                          "there is a trap destination " + std::to_string(row.index) + " at " +
                              requester_.agent() + " already",
                          "see talvikctl trap list; take a free index, or change that row with "
                          "talvikctl trap modify");
        }
        return row.index;
    }
    for (int collisions = 0; collisions < kMaxCollisions; ++collisions) {
        row.index = lowestFree();
        if (create(row) == Creation::Done) {
            return row.index;
        }
    }
    throw Failure(Failure::Kind::Refused,
                  "others took the free index each of " + std::to_string(kMaxCollisions) +
                      " times at " + requester_.agent(),
                  "try again, or name an index with --index");
}

TrapTable::Creation TrapTable::create(const TrapDestination& wanted)
{
    auto cells = cellsOf(wanted);
    cells.insert(cells.begin(),
                 numberCell(trap_column::kRowStatus, wanted.index, Kind::Integer, kCreateAndGo));
    const auto answer = set(cells);
    if (answer.status == kStatusNoError) {
        return Creation::Done;
    }
    if (saysThatItIsTaken(answer, requester_.isV1())) {
        const auto row = read(wanted.index);
        // When the first answer was lost, the row may be the one that this command made.
        if (row && answer.tries > 1 && holds(*row, wanted)) {
            return Creation::Done;
        }
        if (row) {
            return Creation::Taken;
        }
    }
    throw refusal(requester_, "create", wanted.index, cells, answer);
}

void TrapTable::modify(const TrapDestination& change)
{
    // Without the row status: that could create the row anew when somebody just removed it.
    const auto cells = cellsOf(change);
    const auto answer = set(cells);
    if (answer.status == kStatusNoError) {
        return;
    }
    const bool perhapsUnknown = answer.status == kStatusInconsistentName ||
                                (requester_.isV1() && answer.status == kStatusNoSuchName);
    if (perhapsUnknown && !exists(change.index)) {
        throw unknownRow(requester_.agent(), change.index);
    }
    throw refusal(requester_, "change", change.index, cells, answer);
}

void TrapTable::remove(std::uint32_t index)
{
    if (!exists(index)) {
        throw unknownRow(requester_.agent(), index);
    }
    const std::vector<SnmpCell> cells = {
        numberCell(trap_column::kRowStatus, index, Kind::Integer, kDestroy)};
    const auto answer = set(cells);
    if (answer.status != kStatusNoError) {
        throw refusal(requester_, "remove", index, cells, answer);
    }
}

SnmpAnswer TrapTable::set(const std::vector<SnmpCell>& cells)
{
    try {
        return requester_.set(cells);
    } catch (const Failure& failure) {
        if (failure.kind() != Failure::Kind::NoAnswer) {
            throw;
        }
        throw perhapsDone(failure);
    }
}

bool TrapTable::exists(std::uint32_t index)
{
    const auto answer = requester_.get({trapCellName(trap_column::kIndex, index)});
    if (answer.status == kStatusNoSuchName) {
        if (!anyRowShown()) {
            throw nothingShown(requester_.agent(), index);
        }
        return false;
    }
    if (answer.status != kStatusNoError || answer.cells.size() != 1) {
        throw refusal(requester_, "show", index, {}, answer);
    }
    if (answer.cells.front().kind == Kind::NoObject) {
        throw missingTable(requester_.agent());
    }
    return answer.cells.front().kind != Kind::NoInstance;
}

bool TrapTable::anyRowShown()
{
    auto column = trapEntry();
    column.push_back(trap_column::kIndex);
    const auto answer = requester_.getNext({column});
    if (answer.status != kStatusNoError || answer.cells.size() != 1) {
        return false;
    }
    const auto& next = answer.cells.front().oid;
    return next.size() > column.size() && std::equal(column.begin(), column.end(), next.begin());
}

std::optional<TrapDestination> TrapTable::read(std::uint32_t index)
{
    std::vector<ObjectId> names;
    for (const auto column : kShownColumns) {
        names.push_back(trapCellName(column, index));
    }
    const auto answer = requester_.get(names);
    if (answer.status != kStatusNoError || answer.cells.size() != names.size()) {
        return std::nullopt;
    }
    TableRow row;
    for (std::size_t i = 0; i < names.size(); ++i) {
        row[kShownColumns[i]] = answer.cells[i];
    }
    if (row[trap_column::kPort].kind == Kind::NoInstance) {
        return std::nullopt;
    }
    return destinationOf(index, row);
}

std::uint32_t TrapTable::lowestFree()
{
    const auto rows = walkTable(requester_, trapEntry(), {trap_column::kIndex});
    std::uint32_t free = 1;
    for (const auto& row : rows) {
        if (row.first != free) {
            break;
        }
        ++free;
    }
    return free;
}

void TrapTable::requireTable()
{
    if (!requester_.isV1()) {  // SNMPv1 does not tell an empty table from a hidden one
        exists(1);
    }
}

}  // namespace talvik::ctl
