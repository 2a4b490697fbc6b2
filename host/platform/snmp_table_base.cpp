#include "platform/snmp_table_base.h"

#include "framework/kel_exception.h"
#include "framework/result_codes.h"
#include "host/platform/host_log.h"
#include "host/platform/log_text.h"
#include "host/platform/table_batch.h"
#include "host/snmp/request_context.h"
#include "platform/configuration_channel.h"

#include <agent_pp/snmp_pp_ext.h>

#include <charconv>
#include <cstdint>
#include <limits>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

namespace {

using Package = CTLVPackageV3<TLVMsgHeadV3>;
using talvik::BatchClock;
using talvik::result_code::kFailed;
using talvik::result_code::kSuccess;

constexpr int kGet = 160;
constexpr int kGetBulk = 165;
constexpr unsigned int kRowsOfBulk = 50;
constexpr unsigned int kHasMadeRows = 1;  ///< what the engine keeps in `m_uiBatch`

struct QueryLimit {
    std::chrono::milliseconds limit{2000};
    BatchClock clock = &std::chrono::steady_clock::now;
};

QueryLimit& queryLimit()
{
    static QueryLimit limit;
    return limit;
}

std::uint64_t numberOf(const std::string& key)
{
    std::uint64_t number = 0;
    const auto* const end = key.data() + key.size();
    const auto parsed = std::from_chars(key.data(), end, number);
    if (parsed.ec != std::errc() || parsed.ptr != end) {
        throw CKEL_Exception("the back end's record has the key \"" + key +
                             "\", which is no number");
    }
    return number;
}

/// The key that all records of a batch must lie behind; nothing when it begins at the front.
std::optional<std::uint64_t> startOf(int requestKind, const std::string& key)
{
    if (key == CSnmpTableBase::INVALID_KEY) {
        return std::nullopt;
    }
    const auto number = numberOf(key);
    if (requestKind != kGet) {
        return number;
    }
    return number == 0 ? std::nullopt : std::optional(number - 1);
}

/// Makes sure that a query comes to an end whatever the back end answers.
std::uint64_t checkedNext(const std::optional<std::uint64_t>& former, const std::string& key)
{
    const auto number = numberOf(key);
    if (former && number <= *former) {
        throw CKEL_Exception("the back end's records do not ascend: " + key + " behind " +
                             std::to_string(*former));
    }
    return number;
}

void addTo(Package& package, std::unique_ptr<CTLVRecordV3> record)
{
    package.oRecords.push_back(record.get());
    record.release();
}

/// The records of the query under way that no row could be made of. One thread asks, one query at a
/// time.
struct LeftOut {
    unsigned count = 0;
    std::string key;     ///< of the last one
    std::string reason;  ///< of the last one
};

LeftOut& leftOut()
{
    static LeftOut records;
    return records;
}

/// The keys of the records that were reported.
std::set<std::string>& reported()
{
    static std::set<std::string> keys;
    return keys;
}

/// What `error` says, without what every `CKEL_Exception` begins with.
std::string reasonOf(const CKEL_Exception& error)
{
    static const std::string kPrefix = "CKEL_Exception: ";
    const std::string text = error.what();
    return text.compare(0, kPrefix.size(), kPrefix) == 0 ? text.substr(kPrefix.size()) : text;
}

/// Logs how many records the query has left out, and why the last of them; not twice for the same
/// last record, and no more than a hundred lines in all.
void reportLeftOut()
{
    constexpr std::size_t kMost = 100;
    if (leftOut().count == 0 || reported().size() >= kMost ||
        !reported().insert(leftOut().key).second) {
        return;
    }
    talvik::hostLog()->warn(
        "{} of the back end's records cannot be shown and are left out of their table, the last "
        "one is {}: {}{}",
        leftOut().count, talvik::oneLine(leftOut().key), talvik::oneLine(leftOut().reason),
        reported().size() == kMost ? " (no more of these lines are written)" : "");
}

/// Appends the row that `record` yields. Returns how many that are, one or none.
unsigned int appendRow(CSnmpTableBase& table, const CTLVRecordV3& record, Package& rows)
{
    if (table.preGetRspCell(record) != kSuccess) {
        throw CKEL_Exception("the handler refuses a record before its cells are asked for");
    }
    auto row = std::make_unique<CTLVRecordV3>();
    table.fillRspRecord(record, row.get());
    if (table.postGetRspCell(record) != kSuccess) {
        throw CKEL_Exception("the handler refuses a record after its cells were asked for");
    }
    if (row->pCells->empty()) {
        return 0;
    }
    addTo(rows, std::move(row));
    return 1;
}

/// As above, but one record that cannot be shown must not keep the others from being shown.
unsigned int appendRowIfPossible(CSnmpTableBase& table, const CTLVRecordV3& record,
                                 const std::string& key, Package& rows)
{
    try {
        return appendRow(table, record, rows);
    } catch (const CKEL_Exception& error) {
        leftOut() = {leftOut().count + 1, key, reasonOf(error)};
        return 0;
    }
}

/// Throws when a handler that has never made a row fails for whatever it gets: then the fault is
/// not the records', but that the catalogue cannot be read, for example.
void checkIsNoneForAll(bool hasMadeRows, bool atEnd)
{
    constexpr unsigned kEnough = 1000;
    if (!hasMadeRows && leftOut().count != 0 && (atEnd || leftOut().count >= kEnough)) {
        throw CKEL_Exception(leftOut().reason);
    }
}

}  // namespace

namespace talvik {

bool isEndMark(const CTLVRecordV3& record)
{
    return record.find(kEndMarkTag) != record.pCells->end();
}

void appendEndMark(Package& package)
{
    auto record = std::make_unique<CTLVRecordV3>();
    auto cell = std::make_unique<CTLVCell>();
    const std::uint32_t nothing = 0;
    cell->set_i(CTLVCell::TLV_UINT, kEndMarkTag, &nothing, sizeof(nothing));
    record->append(cell.get());
    cell.release();
    addTo(package, std::move(record));
}

void limitTableQueries(std::chrono::milliseconds limit, BatchClock clock)
{
    queryLimit() = {limit, std::move(clock)};
    reported().clear();
}

}  // namespace talvik

const std::string CSnmpTableBase::INVALID_KEY = "INVALID_KEY";

// The context tells what is asked for; the request package has nothing to say about it.
int CSnmpTableBase::OnQueryTable(const CKEL_SnmpContext& ctx, const Package&, Package& rsp)
{
    if (!checkOKBeforeQueryTable(ctx)) {
        return kFailed;
    }
    m_iRequestKind = ctx.pduType;
    const std::vector<Snmp_pp::SmiUINT32> ids(ctx.oid.begin(), ctx.oid.end());
    auto key = getMibKey(Agentpp::Oidx(ids.data(), static_cast<int>(ids.size())));
    if (m_bWholeTable) {
        return GetTableInfo(std::move(key), rsp);
    }
    return GetBatchTableInfo(std::move(key), m_iRequestKind == kGetBulk ? kRowsOfBulk : 1, rsp);
}

int CSnmpTableBase::GetTableInfo(std::string key, Package& pkg)
{
    m_iRequestKind = kGetBulk;
    leftOut() = LeftOut();
    const auto end = queryLimit().clock() + queryLimit().limit;
    do {
        Package request;
        std::string nextKey;
        unsigned long long recordId = 0;
        unsigned int count = std::numeric_limits<unsigned int>::max();
        int result = kSuccess;
        if (GetBatchTableInfo_i(request, key, nextKey, recordId, count, result, pkg) != kSuccess) {
            return result;
        }
        checkIsNoneForAll(m_uiBatch == kHasMadeRows, nextKey == INVALID_KEY);
        if (nextKey == INVALID_KEY) {
            reportLeftOut();
            return kSuccess;
        }
        key = std::move(nextKey);
    } while (queryLimit().clock() < end);
    throw CKEL_Exception(
        "the table is complete only up to " + key +
        ", and the time limit of the query has passed (--backend-timeout sets it)");
}

// One batch with a row is enough: the next query goes on behind it.
int CSnmpTableBase::GetBatchTableInfo(std::string key, unsigned int count, Package& pkg)
{
    leftOut() = LeftOut();
    const auto end = queryLimit().clock() + queryLimit().limit;
    do {
        Package request;
        std::string nextKey;
        unsigned long long recordId = 0;
        unsigned int rows = count;
        int result = kSuccess;
        if (GetBatchTableInfo_i(request, key, nextKey, recordId, rows, result, pkg) != kSuccess) {
            return result;
        }
        checkIsNoneForAll(m_uiBatch == kHasMadeRows, nextKey == INVALID_KEY);
        if (nextKey == INVALID_KEY) {
            talvik::appendEndMark(pkg);
        }
        if (nextKey == INVALID_KEY || rows != 0) {
            reportLeftOut();
            return kSuccess;
        }
        key = std::move(nextKey);
        m_iRequestKind = kGetBulk;  // whatever was asked for lies farther on
    } while (queryLimit().clock() < end);
    throw CKEL_Exception(
        "no row up to " + key +
        ", and the time limit of the query has passed (--backend-timeout sets it)");
}

// `count` comes in as the most rows that are wanted and goes out as how many there are; `nextKey`
// is `INVALID_KEY` when the back end has no more. A record that yields no row, or may not be shown,
// counts as passed.
int CSnmpTableBase::GetBatchTableInfo_i(Package& req, std::string& key, std::string& nextKey,
                                        unsigned long long& recordId, unsigned int& count,
                                        int& result, Package& rsp)
{
    const auto wanted = std::exchange(count, 0U);
    auto former = startOf(m_iRequestKind, key);
    m_sCurrentKey = key;
    auto command = std::make_unique<CTLVRecordV3>();
    fillReqRecord(command.get());
    recordId = command->ullRecordId;
    addTo(req, std::move(command));
    Package answer;
    result = SendBatchPackage(req, answer);
    if (result != kSuccess) {
        return result;
    }
    nextKey = INVALID_KEY;
    for (const auto* record : answer.oRecords) {
        if (talvik::isEndMark(*record)) {
            nextKey = INVALID_KEY;
            break;
        }
        if (record->pCells->empty()) {
            continue;  // it says nothing, not even where it lies
        }
        if (count == wanted) {
            break;
        }
        nextKey = getIndexOfRecord(*record);
        former = checkedNext(former, nextKey);
        if (queryRecordValidation(*record)) {
            count += appendRowIfPossible(*this, *record, nextKey, rsp);
        }
    }
    m_uiBatch = count != 0 ? kHasMadeRows : m_uiBatch;
    return kSuccess;
}

bool CSnmpTableBase::queryRecordValidation(const CTLVRecordV3& record)
{
    return !record.pCells->empty();
}

int CSnmpTableBase::SendBatchPackage(Package& req, Package& rsp)
{
    return CSNMP_Configuration::instance()->configure(req, rsp, false, false);
}
