// A hundred rows, each with the number of queries so far as its node type: all variables of one
// answer must show the same number.
#include "framework/tlv_record.h"
#include "tests/contract/modules/faulty_module.h"

#include <cstdint>
#include <memory>

namespace {

constexpr unsigned short kNodeType = 2;
constexpr unsigned short kNodeIndex = 3;

void append(CTLVRecordV3& row, CTLVCell::ETLVType type, unsigned short tag, std::uint32_t value)
{
    auto cell = std::make_unique<CTLVCell>();
    cell->set_i(type, tag, &value, sizeof(value));
    row.append(cell.get());
    cell.release();
}

class CountingHandler : public CSnmpTableHandler {
public:
    int OnQueryTable(const CKEL_SnmpContext&, const CTLVPackageV3<TLVMsgHeadV3>&,
                     CTLVPackageV3<TLVMsgHeadV3>& rsp) override
    {
        ++queries_;
        for (std::uint32_t index = 100; index != 0; --index) {
            auto row = std::make_unique<CTLVRecordV3>();
            append(*row, CTLVCell::TLV_UINT, kNodeType, queries_);
            append(*row, CTLVCell::TLV_INT, kNodeIndex, index);
            rsp.oRecords.push_back(row.get());
            row.release();
        }
        return 0;
    }

private:
    std::uint32_t queries_ = 0;
};

}  // namespace

TALVIK_TEST_FACTORY CSNMP_Svc_Module* SNMP_SvcModuleCreator()
{
    return new talvik::test::OneTableModule<CountingHandler>;
}
