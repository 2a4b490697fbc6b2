#pragma once

#include "framework/snmp_leaf_handler.h"
#include "host/snmp/mib_description.h"
#include "tests/support/built_tree.h"
#include "tests/unit/host_snmp/table_kit.h"

#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace talvik::test {

/// The clear-alarm leaf as the product describes it.
inline MibScalar clearAlarm()
{
    const auto mib = MibDescription::load(sourceFile("mibs/KEL-TALVIK-MIB.json"));
    return *mib.scalar({1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 1, 2});
}

/// A leaf in memory behind a handler's interface. Notes each write as a text: header word, then
/// tag, type and bytes of each cell of the first record, "- 0:3:4=7".
class FakeLeafHandler : public CSnmpLeafHandler {
public:
    using Package = CTLVPackageV3<TLVMsgHeadV3>;

    /// What the tests look at; outlives the handler.
    struct State {
        std::vector<std::string> writes;
        int queries = 0;
        std::function<std::unique_ptr<CTLVCell>()> value = [] {
            return cell(CTLVCell::TLV_UINT, 7, bytesOf(4711U));
        };
        std::function<int()> result = [] { return 0; };
    };

    explicit FakeLeafHandler(State& state) : state_(state) {}

    int OnSetLeaf(const CKEL_SnmpContext&, const Package& req, Package&) override
    {
        std::string note = req.oHead.uiWord3 == ~0U ? "-" : std::to_string(req.oHead.uiWord3);
        for (const auto* cell : *req[0]->pCells) {
            note += " " + std::to_string(cell->usTagWord >> 4U) + ":" +
                    std::to_string(cell->usTagWord & 0xFU) + ":" + std::to_string(cell->sDataLen) +
                    "=" + cell->toString();
        }
        state_.writes.push_back(note);
        return state_.result();
    }

    int queryLeaf(const CKEL_SnmpContext&, CTLVCell*& pCell) override
    {
        ++state_.queries;
        pCell = state_.value().release();
        return 0;
    }

private:
    State& state_;
};

}  // namespace talvik::test
