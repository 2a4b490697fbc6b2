#pragma once

#include "framework/kel_exception.h"
#include "framework/snmp_table_handler.h"
#include "host/snmp/mib_description.h"
#include "tests/support/built_tree.h"
#include "tests/unit/host_snmp/table_kit.h"

#include <functional>
#include <map>
#include <string>
#include <vector>

namespace talvik::test {

/// The trap destinations as the product describes them.
inline MibTable trapTable()
{
    const auto mib = MibDescription::load(sourceFile("mibs/KEL-TALVIK-MIB.json"));
    return *mib.table({1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 4, 1});
}

/// Trap destinations in memory behind a handler's interface. Notes each change as a text:
/// operation, header word and the cells by tag, "create 5 2=162 6=192.0.2.1".
class FakeTrapHandler : public CSnmpTableHandler {
public:
    using Package = CTLVPackageV3<TLVMsgHeadV3>;

    struct Row {
        std::string address = "192.0.2.1";
        unsigned port = 162;
        unsigned version = 2;
        unsigned type = 1;
        std::string user = "--";
    };

    /// What the tests look at; outlives the handler.
    struct State {
        std::map<unsigned, Row> rows;
        std::vector<std::string> calls;
        int queries = 0;
        std::function<int(const std::string& operation)> result = [](const std::string&) {
            return 0;
        };
    };

    explicit FakeTrapHandler(State& state) : state_(state) {}

    int OnQueryTable(const CKEL_SnmpContext&, const Package&, Package& rsp) override
    {
        ++state_.queries;
        const int result = state_.result("query");
        for (const auto& [index, row] : state_.rows) {
            const auto natural = [](unsigned short tag, unsigned value) {
                return cell(CTLVCell::TLV_UINT, tag, bytesOf(value));
            };
            RowBuilder()
                .text(1, "0.0.0.0")
                .add(natural(2, row.port))
                .number(3, 1)
                .text(4, std::to_string(index))
                .add(natural(5, row.version))
                .text(6, row.address)
                .add(natural(7, row.type))
                .text(8, row.user)
                .into(rsp);
        }
        return result;
    }

    int OnCreateTable(const CKEL_SnmpContext&, const Package& req, Package&) override
    {
        return change("create", req, [&] { state_.rows[req.oHead.uiWord3] = rowOf(*req[0]); });
    }

    int OnModifyTable(const CKEL_SnmpContext&, const Package& req, Package&) override
    {
        return change("modify", req, [&] { state_.rows[indexOf(*req[0])] = rowOf(*req[0]); });
    }

    int OnDeleteTable(const CKEL_SnmpContext&, const Package& req, Package&) override
    {
        return change("delete", req, [&] { state_.rows.erase(indexOf(*req[0])); });
    }

private:
    int change(const std::string& operation, const Package& req, const std::function<void()>& make)
    {
        auto note =
            operation + " " + (req.oHead.uiWord3 == ~0U ? "-" : std::to_string(req.oHead.uiWord3));
        for (const auto* cell : *req[0]->pCells) {
            note += " " + std::to_string(cell->usTagWord >> 4U) + "=" + cell->toString();
        }
        state_.calls.push_back(note);
        const int result = state_.result(operation);
        if (result == 0) {
            make();
        }
        return result;
    }

    static unsigned indexOf(const CTLVRecordV3& record)
    {
        return static_cast<unsigned>(std::stoul(record[4]->toString()));
    }

    static Row rowOf(const CTLVRecordV3& record)
    {
        Row row;
        for (const auto* cell : *record.pCells) {
            const auto number = CTLVCell::ValueCast<unsigned int>()(cell);
            switch (cell->usTagWord >> 4U) {
            case 1:
            case 6:
                row.address = cell->toString();
                break;
            case 2:
                row.port = number;
                break;
            case 5:
                row.version = number;
                break;
            case 7:
                row.type = number;
                break;
            case 8:
                row.user = cell->toString();
                break;
            default:
                break;
            }
        }
        return row;
    }

    State& state_;
};

}  // namespace talvik::test
