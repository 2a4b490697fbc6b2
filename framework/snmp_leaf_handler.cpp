#include "framework/snmp_leaf_handler.h"

#include "framework/kel_exception.h"
#include "framework/result_codes.h"

#include <memory>

namespace {

constexpr std::uint16_t kTypeMask = 0xF;

/// Owns whatever `queryLeaf` stored, also when it throws.
struct CellSlot {
    CTLVCell* cell = nullptr;

    CellSlot() = default;
    ~CellSlot() { delete cell; }
    CellSlot(const CellSlot&) = delete;
    CellSlot& operator=(const CellSlot&) = delete;
};

/// A record that owns the slot's cell under tag 0; the type code stays.
std::unique_ptr<CTLVRecordV3> answerOf(CellSlot& slot)
{
    auto record = std::make_unique<CTLVRecordV3>();
    slot.cell->usTagWord = static_cast<std::uint16_t>(slot.cell->usTagWord & kTypeMask);
    record->append(slot.cell);
    slot.cell = nullptr;
    return record;
}

}  // namespace

int CSnmpLeafHandler::OnQueryLeaf(const CKEL_SnmpContext& ctx, const CTLVPackageV3<TLVMsgHeadV3>&,
                                  CTLVPackageV3<TLVMsgHeadV3>& rsp)
{
    CellSlot slot;
    const int result = queryLeaf(ctx, slot.cell);
    if (result != talvik::result_code::kSuccess || slot.cell == nullptr) {
        return talvik::result_code::kFailed;
    }
    auto record = answerOf(slot);
    rsp.oRecords.push_back(record.get());
    record.release();
    return talvik::result_code::kSuccess;
}

// Contract: the word "leaf" stands in the four texts about table operations; hosts' log filters
// match on it.
int CSnmpLeafHandler::OnQueryTable(const CKEL_SnmpContext&, const CTLVPackageV3<TLVMsgHeadV3>&,
                                   CTLVPackageV3<TLVMsgHeadV3>&)
{
    throw CKEL_Exception("CSnmpLeafHandler can't support leaf OnQueryTable!");
}

int CSnmpLeafHandler::OnCreateTable(const CKEL_SnmpContext&, const CTLVPackageV3<TLVMsgHeadV3>&,
                                    CTLVPackageV3<TLVMsgHeadV3>&)
{
    throw CKEL_Exception("CSnmpLeafHandler can't support leaf OnCreateTable!");
}

int CSnmpLeafHandler::OnModifyTable(const CKEL_SnmpContext&, const CTLVPackageV3<TLVMsgHeadV3>&,
                                    CTLVPackageV3<TLVMsgHeadV3>&)
{
    throw CKEL_Exception("CSnmpLeafHandler can't support leaf OnModifyTable!");
}

int CSnmpLeafHandler::OnDeleteTable(const CKEL_SnmpContext&, const CTLVPackageV3<TLVMsgHeadV3>&,
                                    CTLVPackageV3<TLVMsgHeadV3>&)
{
    throw CKEL_Exception("CSnmpLeafHandler can't support leaf OnDeleteTable!");
}
