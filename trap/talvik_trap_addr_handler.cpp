#include "trap/talvik_trap_addr_handler.h"

#include "framework/debug_kit_guard.h"
#include "framework/log_codes.h"
#include "framework/result_codes.h"
#include "platform/snmp_util.h"
#include "platform/trap_api.h"
#include "trap/trap_cells.h"
#include "trap/trap_dest_info.h"
#include "trap/trap_dest_tags.h"

#include <algorithm>
#include <cstdint>
#include <list>
#include <memory>
#include <string>
#include <utility>

namespace {

namespace tag = talvik::trap_tag;

using Destinations = std::list<tTrapDestInfo>;

constexpr unsigned kVersionOfNewRow = 2;
// Contract: 1, not the record's own default of 3; deployed managers create rows without a type.
constexpr unsigned kTypeOfNewRow = 1;
constexpr const char* kNoUser = "--";

// Contract: what column 1 shows of a name that cannot be reached, while column 6 keeps the name;
// deployed managers tell usable from configured addresses by it.
constexpr const char* kNoUsableAddress = "0.0.0.0";
// Contract: column 3 of every row, never read back; managers see each row as active.
constexpr std::uint32_t kRowStatus = 1;

using talvik::cellIn;
using talvik::numberOf;
using talvik::textOf;

/// A numeric column that a request may leave out, and the host's word on it.
struct NumberColumn {
    unsigned short tag;
    unsigned tTrapDestInfo::*field;
    bool (*isOK)(tTrapDestInfo& destination);

    /// Every check sees default values but for the field that it is about.
    bool accepts(unsigned value) const
    {
        tTrapDestInfo probe;
        probe.*field = value;
        return isOK(probe);
    }

    bool isMissingOrAcceptable(const CTLVRecordV3& columns) const
    {
        const auto* cell = cellIn(columns, tag);
        return cell == nullptr || accepts(numberOf(*cell));
    }

    void takeInto(tTrapDestInfo& row, const CTLVRecordV3& columns) const
    {
        if (const auto* cell = cellIn(columns, tag)) {
            const unsigned value = numberOf(*cell);
            if (accepts(value)) {
                row.*field = value;
            }
        }
    }
};

constexpr NumberColumn kVersionColumn{tag::kVersion, &tTrapDestInfo::version,
                                      SnmpUtil::CheckTrapVerOK};
constexpr NumberColumn kTypeColumn{tag::kType, &tTrapDestInfo::type, SnmpUtil::CheckTrapTypeOK};

bool acceptsUser(const std::string& user)
{
    tTrapDestInfo probe;
    probe.user = user;
    return SnmpUtil::CheckTrapUserOK(probe);
}

/// Port and create-time values. Fails with the record's look-up when the request has no port.
void startRow(const CTLVRecordV3& columns, tTrapDestInfo& row)
{
    // Contract: the port is read without a presence test; hosts report the exception of its
    // absence.
    row.port = numberOf(*columns[tag::kPort]);
    row.version = kVersionOfNewRow;
    row.type = kTypeOfNewRow;
    row.user = kNoUser;
}

/// Takes the request's columns over into `row`; false when the request is refused as a whole.
bool takeColumns(CTalvikTrapAddrHandler& handler, const CTLVPackageV3<TLVMsgHeadV3>& req,
                 tTrapDestInfo& row)
{
    if (!handler.CheckParam(req)) {
        return false;
    }
    if (const auto* cell = cellIn(*req[0], tag::kUsableAddress)) {
        row.address = textOf(*cell);
    }
    handler.CommonOperation(req, row);
    return true;
}

/// The checks of a whole row that create and modify share, in their order.
bool isAcceptable(tTrapDestInfo& row)
{
    return SnmpUtil::CheckIPAddrOK(row.address) && SnmpUtil::CheckTrapPortOK(row) &&
           SnmpUtil::CheckTrapVerOK(row) && SnmpUtil::CheckTrapTypeOK(row);
}

/// Names the destination that the request means by address and port; false when it does not give
/// both or there is none. What it gives is in `row` either way.
bool nameByAddress(const CTLVRecordV3& columns, const Destinations& destinations,
                   tTrapDestInfo& row)
{
    const auto* address = cellIn(columns, tag::kUsableAddress);
    const auto* port = cellIn(columns, tag::kPort);
    if (address == nullptr || port == nullptr) {
        return false;
    }
    row.address = textOf(*address);
    row.port = numberOf(*port);
    const auto match =
        std::find_if(destinations.begin(), destinations.end(), [&row](const auto& destination) {
            return destination.port == row.port && destination.address == row.address;
        });
    if (match == destinations.end()) {
        return false;
    }
    row.index = match->index;
    return true;
}

}  // namespace

// Contract: the request's cells are not looked at; hosts' table engines pick what they want from
// the whole table.
int CTalvikTrapAddrHandler::OnQueryTable(const CKEL_SnmpContext&,
                                         const CTLVPackageV3<TLVMsgHeadV3>&,
                                         CTLVPackageV3<TLVMsgHeadV3>& rsp)
{
    CKELDebugKitGuard guard(talvik::kLogModule, __PRETTY_FUNCTION__);
    Destinations destinations;
    if (CSNMP_TrapApi::getAllTrapAddr(destinations) != talvik::result_code::kSuccess) {
        guard.error(talvik::log_code::kHandler, "OnQueryTable", __LINE__,
                    "failed to get all trap.");
        return talvik::result_code::kFailed;
    }
    rsp.oRecords.reserve(rsp.oRecords.size() + destinations.size());
    for (const auto& destination : destinations) {
        auto row = std::make_unique<CTLVRecordV3>();
        makeIntTrapPackage(destination, *row);
        rsp.oRecords.push_back(row.get());
        row.release();
    }
    return talvik::result_code::kSuccess;
}

int CTalvikTrapAddrHandler::OnCreateTable(const CKEL_SnmpContext&,
                                          const CTLVPackageV3<TLVMsgHeadV3>& req,
                                          CTLVPackageV3<TLVMsgHeadV3>&)
{
    CKELDebugKitGuard guard(talvik::kLogModule, __PRETTY_FUNCTION__);
    tTrapDestInfo row;
    startRow(*req[0], row);
    if (!takeColumns(*this, req, row) || !isAcceptable(row)) {
        guard.error(talvik::log_code::kHandler, "OnCreateTable", __LINE__,
                    "failed to create trap, unknown parameter.");
        return talvik::result_code::kTrapRequestRefused;
    }
    // Contract: the index goes out empty; hosts allocate it, by the word from the request's header.
    return CSNMP_TrapApi::createTrapAddr(row, req.oHead.uiWord3);
}

// Contract: a modify replaces the whole row, columns that it leaves out go back to their
// create-time values; deployed managers send whole rows.
int CTalvikTrapAddrHandler::OnModifyTable(const CKEL_SnmpContext&,
                                          const CTLVPackageV3<TLVMsgHeadV3>& req,
                                          CTLVPackageV3<TLVMsgHeadV3>&)
{
    CKELDebugKitGuard guard(talvik::kLogModule, __PRETTY_FUNCTION__);
    const auto* index = cellIn(*req[0], tag::kIndex);
    if (index == nullptr) {
        // Contract: the misspelt word is what log filters of deployed hosts search for.
        guard.error(talvik::log_code::kHandler, "OnModifyTable", __LINE__,
                    "can't find trap index, old method is not supporttd.");
        return talvik::result_code::kTrapRequestRefused;
    }
    tTrapDestInfo row;
    row.index = textOf(*index);
    startRow(*req[0], row);
    if (!takeColumns(*this, req, row) || !SnmpUtil::CheckTrapIndOK(row) || !isAcceptable(row)) {
        guard.error(talvik::log_code::kHandler, "OnModifyTable", __LINE__,
                    "failed to modify trap, unknown parameter.");
        return talvik::result_code::kTrapRequestRefused;
    }
    return CSNMP_TrapApi::modifyTrapAddr(row, req.oHead.uiWord3);
}

int CTalvikTrapAddrHandler::OnDeleteTable(const CKEL_SnmpContext&,
                                          const CTLVPackageV3<TLVMsgHeadV3>& req,
                                          CTLVPackageV3<TLVMsgHeadV3>&)
{
    CKELDebugKitGuard guard(talvik::kLogModule, __PRETTY_FUNCTION__);
    Destinations destinations;
    if (CSNMP_TrapApi::getAllTrapAddr(destinations) != talvik::result_code::kSuccess) {
        guard.error(talvik::log_code::kHandler, "OnDeleteTable", __LINE__,
                    "failed to get all trap.");
        return talvik::result_code::kFailed;
    }
    tTrapDestInfo row;
    // Contract: address and port win over the index, and the index found is not checked; managers
    // that know no index delete so.
    if (!nameByAddress(*req[0], destinations, row)) {
        const auto* index = cellIn(*req[0], tag::kIndex);
        if (index == nullptr) {
            // Contract: the repository's log code, unlike all others here; log filters go by it.
            guard.error(talvik::log_code::kRepository, "OnDeleteTable", __LINE__,
                        "failed to delete trap, unresolvable argument.");
            return talvik::result_code::kTrapRequestRefused;
        }
        row.index = textOf(*index);
        if (!SnmpUtil::CheckTrapIndOK(row)) {
            guard.error(talvik::log_code::kHandler, "OnDeleteTable", __LINE__,
                        "unknown trap index:%s.", row.index.c_str());
            return talvik::result_code::kTrapRequestRefused;
        }
    }
    return CSNMP_TrapApi::deleteTrapAddr(row, req.oHead.uiWord3);
}

bool CTalvikTrapAddrHandler::CheckParam(const CTLVPackageV3<TLVMsgHeadV3>& req)
{
    const CKELDebugKitGuard guard(talvik::kLogModule, __PRETTY_FUNCTION__);
    const auto& columns = *req[0];
    if (!kVersionColumn.isMissingOrAcceptable(columns) ||
        !kTypeColumn.isMissingOrAcceptable(columns)) {
        return false;
    }
    // Contract: tag 1 ends the checks unread, so that managers may send a bad tag 6 beside it.
    if (cellIn(columns, tag::kUsableAddress) != nullptr) {
        return true;
    }
    const auto* address = cellIn(columns, tag::kAddress);
    return address != nullptr && SnmpUtil::CheckIPAddrOK(textOf(*address));
}

// Contract: an unacceptable column is dropped without a word; managers rely on the rest being
// taken.
void CTalvikTrapAddrHandler::CommonOperation(const CTLVPackageV3<TLVMsgHeadV3>& req,
                                             tTrapDestInfo& info)
{
    const CKELDebugKitGuard guard(talvik::kLogModule, __PRETTY_FUNCTION__);
    const auto& columns = *req[0];
    kVersionColumn.takeInto(info, columns);
    if (const auto* cell = cellIn(columns, tag::kAddress)) {
        std::string address = textOf(*cell);
        if (SnmpUtil::CheckIPAddrOK(address)) {
            // Contract: it replaces the address of tag 1; managers that send both mean tag 6.
            info.address = std::move(address);
        }
    }
    kTypeColumn.takeInto(info, columns);
    if (const auto* cell = cellIn(columns, tag::kUser)) {
        // Contract: any type of cell will do for the user; deployed managers send numbers too.
        std::string user = cell->toString();
        if (acceptsUser(user)) {
            info.user = std::move(user);
        }
    }
}

void CTalvikTrapAddrHandler::makeIntTrapPackage(const tTrapDestInfo& info, CTLVRecordV3& record)
{
    const CKELDebugKitGuard guard(talvik::kLogModule, __PRETTY_FUNCTION__);
    if (SnmpUtil::TestDomainConnectivity(info.address.c_str())) {
        talvik::appendText(record, tag::kUsableAddress, info.address);
    } else {
        talvik::appendText(record, tag::kUsableAddress, kNoUsableAddress);
    }
    talvik::appendNumber(record, CTLVCell::TLV_UINT, tag::kPort, info.port);
    talvik::appendNumber(record, CTLVCell::TLV_INT, tag::kRowStatus, kRowStatus);
    talvik::appendText(record, tag::kIndex, info.index);
    talvik::appendNumber(record, CTLVCell::TLV_UINT, tag::kVersion, info.version);
    talvik::appendText(record, tag::kAddress, info.address);
    talvik::appendNumber(record, CTLVCell::TLV_UINT, tag::kType, info.type);
    talvik::appendText(record, tag::kUser, info.user);
}
