#include "tools/snmp_walk.h"

#include "tools/failure.h"
#include "tools/snmp_status.h"

#include <algorithm>
#include <cstddef>
#include <string>
#include <utility>

namespace talvik::ctl {

namespace {

constexpr std::size_t kCellsPerAnswer = 70;  // some 3 KiB: below what any manager must take
constexpr std::size_t kMaxRows = 100000;     // far above any table of this agent

struct Column {
    std::uint32_t number;
    ObjectId root;
    ObjectId at;  ///< the last name that the agent gave
    bool atEnd = false;
};

bool isBelow(const ObjectId& name, const ObjectId& root)
{
    return name.size() > root.size() && std::equal(root.begin(), root.end(), name.begin());
}

class Walk {
public:
    Walk(SnmpRequester& requester, const ObjectId& entry, const std::vector<std::uint32_t>& columns)
        : requester_(requester)
    {
        for (const auto number : columns) {
            Column column{number, entry, {}};
            column.root.push_back(number);
            column.at = column.root;
            columns_.push_back(std::move(column));
        }
    }

    std::map<std::uint32_t, TableRow> run()
    {
        for (auto open = openColumns(); !open.empty(); open = openColumns()) {
            take(ask(open), open);
        }
        return std::move(rows_);
    }

private:
    std::vector<Column*> openColumns()
    {
        std::vector<Column*> open;
        for (auto& column : columns_) {
            if (!column.atEnd) {
                open.push_back(&column);
            }
        }
        return open;
    }

    SnmpAnswer ask(const std::vector<Column*>& open)
    {
        std::vector<ObjectId> names;
        names.reserve(open.size());
        for (const auto* column : open) {
            names.push_back(column->at);
        }
        if (requester_.isV1()) {
            return requester_.getNext(names);
        }
        return requester_.getBulk(names, static_cast<unsigned>(kCellsPerAnswer / names.size()));
    }

    void take(const SnmpAnswer& answer, const std::vector<Column*>& open)
    {
        if (answer.status == kStatusNoSuchName && answer.errorIndex > 0 &&
            answer.errorIndex <= open.size()) {
            open[answer.errorIndex - 1]->atEnd = true;  // how SNMPv1 says that nothing follows
            return;
        }
        if (answer.status != kStatusNoError) {
            throw failure("refused to list the table (" + statusName(answer.status) + ")",
                          "look at the agent's log");
        }
        // A tail that is no whole line of cells is asked for again: a row's cells stay together.
        const auto lines = answer.cells.size() / open.size();
        if (lines == 0) {
            throw failure("answered with fewer variables than it was asked for",
                          "make sure that talvik-agentd answers there");
        }
        for (std::size_t i = 0; i < lines * open.size(); ++i) {
            takeCell(answer.cells[i], *open[i % open.size()]);
        }
    }

    void takeCell(const SnmpCell& cell, Column& column)
    {
        if (column.atEnd) {
            return;
        }
        if (cell.kind == SnmpCell::Kind::EndOfView) {
            column.atEnd = true;
            return;
        }
        if (cell.oid <= column.at) {
            throw failure("does not go forward through the table: it would never end",
                          "make sure that talvik-agentd answers there, and report it");
        }
        if (!isBelow(cell.oid, column.root)) {
            column.atEnd = true;
            return;
        }
        if (cell.oid.size() != column.root.size() + 1) {
            throw failure("has rows whose index is not one number",
                          "use talvikctl of the agent's release");
        }
        column.at = cell.oid;
        rows_[cell.oid.back()][column.number] = cell;
        if (rows_.size() > kMaxRows) {
            throw failure("gives more than " + std::to_string(kMaxRows) + " rows",
                          "make sure that talvik-agentd answers there, and report it");
        }
    }

    Failure failure(const std::string& what, const std::string& advice) const
    {
        return Failure(Failure::Kind::Refused, requester_.agent() + " " + what, advice);
    }

    SnmpRequester& requester_;
    std::vector<Column> columns_;
    std::map<std::uint32_t, TableRow> rows_;
};

}  // namespace

std::map<std::uint32_t, TableRow> walkTable(SnmpRequester& requester, const ObjectId& entry,
                                            const std::vector<std::uint32_t>& columns)
{
    return Walk(requester, entry, columns).run();
}

}  // namespace talvik::ctl
