#include "fuzz/properties/trap_table_property.h"

#include "framework/kel_exception.h"
#include "fuzz/properties/trap_host.h"
#include "fuzz/properties/trap_model.h"
#include "platform/snmp_context.h"
#include "trap/talvik_trap_addr_handler.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <memory>

/// The handler looks at nothing in a context.
class CKEL_SnmpContext {};

namespace talvik::fuzz {

namespace {

using Package = CTLVPackageV3<TLVMsgHeadV3>;

enum Kind : unsigned { Query, Create, Modify, Delete };

struct Step {
    Kind kind = Query;
    bool listReadable = true;
    TrapRequest request;
};

/// The input, front to back.
class Input {
public:
    Input(const std::uint8_t* data, std::size_t size) : next_(data), left_(size) {}

    /// The next operation; false when there is none, or only part of one.
    bool read(Step& step)
    {
        unsigned what = 0;
        if (!byte(what) || !byte(step.request.word3)) {
            return false;
        }
        step.kind = static_cast<Kind>(what & 3U);
        step.listReadable = (what & 4U) == 0;
        TrapRow cells;
        for (unsigned count = what >> 4U; count != 0; --count) {
            if (!cell(cells)) {
                return false;
            }
        }
        if ((what & 8U) == 0) {
            step.request.cells = std::move(cells);
        }
        return true;
    }

private:
    bool byte(unsigned& value)
    {
        if (left_ == 0) {
            return false;
        }
        value = *next_++;
        --left_;
        return true;
    }

    bool cell(TrapRow& cells)
    {
        unsigned head = 0;
        unsigned length = 0;
        if (!byte(head) || !byte(length) || left_ < length % 64) {
            return false;
        }
        length %= 64;
        cells.push_back({head & 0xFU, (head >> 4U) % 10, {next_, next_ + length}});
        next_ += length;
        left_ -= length;
        return true;
    }

    const std::uint8_t* next_;
    std::size_t left_;
};

void fill(const TrapRequest& request, Package& package)
{
    package.oHead.uiWord3 = request.word3;
    if (!request.cells) {
        return;
    }
    package.oRecords.push_back(new CTLVRecordV3);
    for (const TrapCell& cell : *request.cells) {
        auto made = std::make_unique<CTLVCell>();
        made->set_i(static_cast<CTLVCell::ETLVType>(cell.type),
                    static_cast<unsigned short>(cell.tag), cell.bytes.data(), cell.bytes.size());
        package[0]->append(made.get());
        made.release();
    }
}

std::vector<TrapRow> rowsOf(const Package& package)
{
    std::vector<TrapRow> rows;
    for (const CTLVRecordV3* record : package.oRecords) {
        TrapRow row;
        for (const CTLVCell* cell : *record->pCells) {
            const unsigned tagWord = cell->usTagWord;
            row.push_back(
                {tagWord >> 4U, tagWord & 0xFU, {cell->pData, cell->pData + cell->sDataLen}});
        }
        rows.push_back(std::move(row));
    }
    return rows;
}

int call(Kind kind, const Package& request, Package& response)
{
    CTalvikTrapAddrHandler handler;
    const CKEL_SnmpContext context;
    switch (kind) {
    case Create:
        return handler.OnCreateTable(context, request, response);
    case Modify:
        return handler.OnModifyTable(context, request, response);
    case Delete:
        return handler.OnDeleteTable(context, request, response);
    default:
        return handler.OnQueryTable(context, request, response);
    }
}

TrapOutcome runHandler(const Step& step)
{
    Package request;
    Package response;
    fill(step.request, request);
    trapHost().listReadable = step.listReadable;
    trapHost().lines.clear();
    TrapOutcome outcome;
    try {
        outcome.result = call(step.kind, request, response);
    } catch (const CKEL_Exception& error) {
        outcome.thrown = error.what();
    }
    outcome.lines = trapHost().lines;
    outcome.rows = rowsOf(response);
    return outcome;
}

TrapOutcome runModel(TrapModel& model, const Step& step)
{
    model.listReadable = step.listReadable;
    switch (step.kind) {
    case Create:
        return model.create(step.request);
    case Modify:
        return model.modify(step.request);
    case Delete:
        return model.remove(step.request);
    default:
        return model.query();
    }
}

void say(const char* who, const TrapOutcome& outcome, const TrapList& list)
{
    std::fprintf(stderr, "%s: result 0x%x, exception \"%s\", %zu rows answered, %zu in the list\n",
                 who, static_cast<unsigned>(outcome.result), outcome.thrown.c_str(),
                 outcome.rows.size(), list.rows.size());
    for (const LogLine& line : outcome.lines) {
        std::fprintf(stderr, "  0x%llx [%s] %s\n", line.code, line.label.c_str(),
                     line.text.c_str());
    }
}

}  // namespace

void checkTrapTable(const std::uint8_t* data, std::size_t size)
{
    trapHost() = TrapHost();
    TrapModel model;
    Input input(data, size);
    for (std::size_t number = 1;; ++number) {
        Step step;
        if (!input.read(step)) {
            return;
        }
        const TrapOutcome handled = runHandler(step);
        const TrapOutcome expected = runModel(model, step);
        if (handled == expected && trapHost().list == model.list && trapHost().guards == 0) {
            continue;
        }
        std::fprintf(stderr,
                     "trap table property broken at operation %zu (kind %u), %ld guards open\n",
                     number, static_cast<unsigned>(step.kind), trapHost().guards);
        say("handler", handled, trapHost().list);
        say("model", expected, model.list);
        std::abort();
    }
}

}  // namespace talvik::fuzz
