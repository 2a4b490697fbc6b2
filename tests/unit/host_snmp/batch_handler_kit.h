#pragma once

#include "framework/kel_exception.h"
#include "framework/snmp_handler.h"
#include "host/platform/table_batch.h"
#include "host/snmp/mib_description.h"
#include "host/snmp/request_context.h"
#include "tests/unit/host_snmp/table_kit.h"

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <string>
#include <vector>

namespace talvik::test {

using BatchPackage = CTLVPackageV3<TLVMsgHeadV3>;

/// A table with an index in the middle, a Counter64, a column that nobody may read, and a last one
/// that not every row has.
inline MibTable batchedTable()
{
    MibTable table;
    table.name = "itemTable";
    table.id = {1, 3, 6, 1, 4, 1, 99999, 2, 7, 1, 2, 3};
    table.columns = {{1, "itemText", Syntax::OctetString, Access::ReadOnly, {}},
                     {3, "itemSerial", Syntax::Unsigned32, Access::ReadOnly, {}},
                     {4, "itemWide", Syntax::Counter64, Access::ReadOnly, {}},
                     {6, "itemSecret", Syntax::Integer, Access::NotAccessible, {}},
                     {7, "itemNote", Syntax::OctetString, Access::ReadOnly, {}}};
    table.index = {1};
    table.answerLifetime = std::chrono::milliseconds(1000);
    return table;
}

constexpr std::uint64_t kWide = 0xFEDCBA9876543210;

/// Whether the row with `index` has a note.
inline bool hasNote(std::uint32_t index)
{
    return index % 3 != 0;
}

/// The row with `index` as a handler gives it.
inline RowBuilder itemRow(std::uint32_t index)
{
    RowBuilder row;
    row.text(1, "item " + std::to_string(index));
    row.add(cell(CTLVCell::TLV_UINT, 3, bytesOf(index)));
    row.add(cell(CTLVCell::TLV_UINT, 4, bytesOf(kWide + index)));
    if (hasNote(index)) {
        row.text(7, "note");
    }
    return row;
}

/// What a handler in batches was asked, and what it does.
struct BatchScript {
    std::map<std::uint32_t, bool> rows;  ///< by index
    std::size_t bulk = 50;               ///< rows of one answer to a GETBULK
    std::vector<std::string> asked;      ///< "KIND OID"
    std::function<int(BatchPackage& answer)> instead;
    std::function<void()> before;  ///< called when asked
};

/// Answers as a table engine would: from the row that a Get names, else from behind it.
class FakeBatchHandler : public CSnmpHandler {
public:
    explicit FakeBatchHandler(BatchScript& script) : script_(script) {}

    int OnQueryTable(const CKEL_SnmpContext& context, const BatchPackage&,
                     BatchPackage& answer) override
    {
        script_.asked.push_back(std::to_string(context.pduType) + " " + toText(context.oid));
        if (script_.before) {
            script_.before();
        }
        if (script_.instead) {
            return script_.instead(answer);
        }
        const auto key = context.oid.size() == 7 ? context.oid[6] : 0;
        const auto after = context.pduType == 160 && key != 0 ? key - 1 : key;
        std::size_t left = context.pduType == 165 ? script_.bulk : 1;
        auto next = script_.rows.upper_bound(static_cast<std::uint32_t>(after));
        for (; next != script_.rows.end() && left != 0; ++next, --left) {
            itemRow(next->first).into(answer);
        }
        if (next == script_.rows.end()) {
            appendEndMark(answer);
        }
        return 0;
    }

    bool isWholeTable() override { return false; }

    int OnQueryLeaf(const CKEL_SnmpContext&, const BatchPackage&, BatchPackage&) override
    {
        return -1;
    }
    int OnSetLeaf(const CKEL_SnmpContext&, const BatchPackage&, BatchPackage&) override
    {
        return -1;
    }
    int OnCreateTable(const CKEL_SnmpContext&, const BatchPackage&, BatchPackage&) override
    {
        return -1;
    }
    int OnModifyTable(const CKEL_SnmpContext&, const BatchPackage&, BatchPackage&) override
    {
        return -1;
    }
    int OnDeleteTable(const CKEL_SnmpContext&, const BatchPackage&, BatchPackage&) override
    {
        return -1;
    }

private:
    BatchScript& script_;
};

}  // namespace talvik::test
