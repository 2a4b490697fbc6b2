#include "fuzz/properties/trap_model.h"

#include "framework/tlv_cell.h"

#include <algorithm>

namespace talvik::fuzz {

namespace {

constexpr int kRefused = 0x3000003;
constexpr unsigned long long kHandlerCode = 0x1002E;
constexpr unsigned long long kConditionCode = 0x10014;

/// The exception that a request ends with.
struct Failure {
    std::string text;
};

std::string number(unsigned tag)
{
    return std::to_string(tag);
}

const TrapRow& cellsOf(const TrapRequest& request)
{
    if (!request.cells) {
        throw Failure{"CKEL_Exception: record don't exist, index is 0"};
    }
    return *request.cells;
}

const TrapCell* first(const TrapRow& cells, unsigned tag)
{
    for (const TrapCell& cell : cells) {
        if (cell.tag == tag) {
            return &cell;
        }
    }
    return nullptr;
}

std::string textIn(const TrapCell& cell)
{
    if (cell.type != 2) {
        throw Failure{"CKEL_Exception: CTLVCell isn't string type! tag equal to " +
                      number(cell.tag)};
    }
    return cell.bytes.substr(0, cell.bytes.find('\0'));
}

unsigned numberIn(const TrapCell& cell)
{
    if (cell.type < 3) {
        throw Failure{"CKEL_Exception: CTLVCell isn't numerical type! tag equal to " +
                      number(cell.tag)};
    }
    unsigned value = 0;
    for (std::size_t i = 0; i < cell.bytes.size() && i < 4; ++i) {
        value |= unsigned{static_cast<unsigned char>(cell.bytes[i])} << (8 * i);
    }
    const bool isNegative = cell.bytes.size() == 2 && cell.type == 4 && (value & 0x8000) != 0;
    return isNegative ? value | 0xFFFF0000 : value;
}

/// The text form is the host's.
std::string anyText(const TrapCell& cell)
{
    CTLVCell made;
    made.set_i(static_cast<CTLVCell::ETLVType>(cell.type), static_cast<unsigned short>(cell.tag),
               cell.bytes.data(), cell.bytes.size());
    return made.toString();
}

unsigned portIn(const TrapRow& cells)
{
    const TrapCell* port = first(cells, 2);
    if (port == nullptr) {
        throw Failure{"CKEL_Exception: CTLVRecordV3 has no such cell! tag equal to 2"};
    }
    return numberIn(*port);
}

bool passesPreCheck(const TrapRow& cells)
{
    if (first(cells, 5) != nullptr && !isVersionAccepted(numberIn(*first(cells, 5)))) {
        return false;
    }
    if (first(cells, 7) != nullptr && !isTypeAccepted(numberIn(*first(cells, 7)))) {
        return false;
    }
    if (first(cells, 1) != nullptr) {
        return true;
    }
    return first(cells, 6) != nullptr && isAddressAccepted(textIn(*first(cells, 6)));
}

void overlay(const TrapRow& cells, tTrapDestInfo& row)
{
    if (first(cells, 5) != nullptr && isVersionAccepted(numberIn(*first(cells, 5)))) {
        row.version = numberIn(*first(cells, 5));
    }
    if (first(cells, 6) != nullptr && isAddressAccepted(textIn(*first(cells, 6)))) {
        row.address = textIn(*first(cells, 6));
    }
    if (first(cells, 7) != nullptr && isTypeAccepted(numberIn(*first(cells, 7)))) {
        row.type = numberIn(*first(cells, 7));
    }
    if (first(cells, 8) != nullptr && isUserAccepted(anyText(*first(cells, 8)))) {
        row.user = anyText(*first(cells, 8));
    }
}

/// The row that a create or modify describes; false when it is refused.
bool readRow(const TrapRow& cells, tTrapDestInfo& row)
{
    row.port = portIn(cells);
    row.version = 2;
    row.type = 1;
    row.user = "--";
    if (!passesPreCheck(cells)) {
        return false;
    }
    if (first(cells, 1) != nullptr) {
        row.address = textIn(*first(cells, 1));
    }
    overlay(cells, row);
    return isAddressAccepted(row.address) && isPortAccepted(row.port) &&
           isVersionAccepted(row.version) && isTypeAccepted(row.type);
}

TrapOutcome refusal(unsigned long long code, const char* label, const std::string& text,
                    int result = kRefused)
{
    TrapOutcome outcome;
    outcome.result = result;
    outcome.lines.push_back({code, label, text});
    return outcome;
}

TrapOutcome answer(int result)
{
    TrapOutcome outcome;
    outcome.result = result;
    return outcome;
}

TrapOutcome failure(const Failure& failed)
{
    TrapOutcome outcome;
    outcome.thrown = failed.text;
    return outcome;
}

TrapCell textCell(unsigned tag, const std::string& text)
{
    return {tag, 2, text + '\0'};
}

TrapCell numberCell(unsigned tag, unsigned type, unsigned value)
{
    std::string bytes;
    for (unsigned i = 0; i < 4; ++i) {
        bytes += static_cast<char>(value >> (8 * i));
    }
    return {tag, type, bytes};
}

const tTrapDestInfo* rowAt(const TrapList& list, const std::string& address, unsigned port)
{
    for (const tTrapDestInfo& row : list.rows) {
        if (row.address == address && row.port == port) {
            return &row;
        }
    }
    return nullptr;
}

TrapOutcome removeByIndex(TrapList& list, tTrapDestInfo row, const TrapRequest& request)
{
    const TrapCell* index = first(*request.cells, 4);
    if (index == nullptr) {
        return refusal(kConditionCode, "OnDeleteTable",
                       "failed to delete trap, unresolvable argument.");
    }
    row.index = textIn(*index);
    if (!isIndexAccepted(row.index)) {
        return refusal(kHandlerCode, "OnDeleteTable", "unknown trap index:" + row.index + ".");
    }
    return answer(list.remove(row, request.word3));
}

}  // namespace

TrapOutcome TrapModel::query() const
{
    if (!listReadable) {
        return refusal(kHandlerCode, "OnQueryTable", "failed to get all trap.", -1);
    }
    TrapOutcome outcome;
    for (const tTrapDestInfo& row : list.rows) {
        outcome.rows.push_back({
            textCell(1, isReachable(row.address) ? row.address : "0.0.0.0"),
            numberCell(2, 3, row.port),
            numberCell(3, 4, 1),
            textCell(4, row.index),
            numberCell(5, 3, row.version),
            textCell(6, row.address),
            numberCell(7, 3, row.type),
            textCell(8, row.user),
        });
    }
    return outcome;
}

TrapOutcome TrapModel::create(const TrapRequest& request)
{
    try {
        tTrapDestInfo row;
        if (!readRow(cellsOf(request), row)) {
            return refusal(kHandlerCode, "OnCreateTable",
                           "failed to create trap, unknown parameter.");
        }
        return answer(list.create(row, request.word3));
    } catch (const Failure& failed) {
        return failure(failed);
    }
}

TrapOutcome TrapModel::modify(const TrapRequest& request)
{
    try {
        const TrapCell* index = first(cellsOf(request), 4);
        if (index == nullptr) {
            return refusal(kHandlerCode, "OnModifyTable",
                           "can't find trap index, old method is not supporttd.");
        }
        tTrapDestInfo row;
        row.index = textIn(*index);
        if (!readRow(*request.cells, row) || !isIndexAccepted(row.index)) {
            return refusal(kHandlerCode, "OnModifyTable",
                           "failed to modify trap, unknown parameter.");
        }
        return answer(list.modify(row, request.word3));
    } catch (const Failure& failed) {
        return failure(failed);
    }
}

TrapOutcome TrapModel::remove(const TrapRequest& request)
{
    if (!listReadable) {
        return refusal(kHandlerCode, "OnDeleteTable", "failed to get all trap.", -1);
    }
    try {
        const TrapRow& cells = cellsOf(request);
        tTrapDestInfo row;
        if (first(cells, 1) != nullptr && first(cells, 2) != nullptr) {
            row.address = textIn(*first(cells, 1));
            row.port = numberIn(*first(cells, 2));
            if (const tTrapDestInfo* found = rowAt(list, row.address, row.port)) {
                row.index = found->index;
                return answer(list.remove(row, request.word3));
            }
        }
        return removeByIndex(list, row, request);
    } catch (const Failure& failed) {
        return failure(failed);
    }
}

}  // namespace talvik::fuzz
