#include "host/snmp/batch_table.h"

#include "framework/result_codes.h"
#include "framework/snmp_handler.h"
#include "host/link/command_result.h"
#include "host/platform/table_batch.h"
#include "host/snmp/bulk_response_limit.h"
#include "host/snmp/handler_boundary.h"
#include "host/startup_error.h"

#include <algorithm>
#include <utility>

namespace talvik {

namespace {

constexpr unsigned long kEntry = 1;
constexpr int kGetBulk = 165;
constexpr unsigned kSingleRows = 2;
constexpr int kGet = 160;  ///< the PDU type for which a handler takes the key as that of the row

std::string describe(const MibTable& table)
{
    return "table " + table.name + " (" + toText(table.id) + ")";
}

KeptRows::Limits keptLimits(const MibTable& table, const BatchTable::Limits& limits)
{
    // A request has to find what it has asked for itself.
    return {std::max(table.answerLifetime, std::chrono::milliseconds(1)), limits.keptSize};
}

}  // namespace

BatchTable::BatchTable(const MibTable& table, ObjectId below, std::unique_ptr<CSnmpHandler> handler,
                       Limits limits, Clock clock)
    : table_(table),
      below_(std::move(below)),
      handler_(std::move(handler)),
      limits_(limits),
      clock_(std::move(clock)),
      failures_(describe(table)),
      kept_(keptLimits(table, limits))
{
    if (table.index.size() != 1 ||
        table.columns[table.index.front()].syntax == Syntax::OctetString) {
        throw StartupError(describe(table) +
                           ": the module's handler answers in batches, which this agent can drive "
                           "only where one number is the index; use a MIB description and a module "
                           "of the same release");
    }
}

BatchTable::~BatchTable() = default;

BatchTable::Request BatchTable::begin()
{
    const auto now = clock_();
    kept_.trim(now);
    return {now, std::nullopt, 0, false};
}

BatchTable::Answer BatchTable::rowAt(Request& request, const ContextSource& context,
                                     unsigned short column, std::uint32_t index)
{
    if (index == 0) {  // rows are asked for by what lies behind an index
        return {Answer::Kind::None, nullptr, 0};
    }
    auto finding = kept_.firstBehind(index - 1, request.now);
    if (finding.kind == KeptRows::Finding::Kind::Unknown && finding.askFrom < index) {
        if (!ask(request, context, column, finding.askFrom)) {
            return {};
        }
        finding = kept_.firstBehind(finding.askFrom, request.now);
    }
    const bool found = finding.kind == KeptRows::Finding::Kind::Row &&
                       finding.batch->indexes()[finding.row] == index;
    return found ? Answer{Answer::Kind::Row, finding.batch, finding.row}
                 : Answer{Answer::Kind::None, nullptr, 0};
}

BatchTable::Answer BatchTable::rowBehind(Request& request, const ContextSource& context,
                                         unsigned short column, std::uint64_t after)
{
    auto finding = kept_.firstBehind(after, request.now);
    while (finding.kind == KeptRows::Finding::Kind::Unknown) {
        if (!ask(request, context, column, finding.askFrom)) {
            return {};
        }
        finding = kept_.firstBehind(finding.askFrom, request.now);
    }
    return finding.kind == KeptRows::Finding::Kind::Row
               ? Answer{Answer::Kind::Row, finding.batch, finding.row}
               : Answer{Answer::Kind::None, nullptr, 0};
}

bool BatchTable::ask(Request& request, const ContextSource& context, unsigned short column,
                     std::uint64_t after)
{
    if (request.failed) {
        return false;
    }
    const auto now = clock_();
    if (now - request.askedFirst.value_or(now) >= limits_.asking) {
        return fail(request, "the rows of one request take longer than " +
                                 std::to_string(limits_.asking.count()) +
                                 " ms (--backend-timeout sets that)");
    }
    request.askedFirst = request.askedFirst.value_or(now);
    auto asking = context();
    asking.oid = wanted(asking, column, after);
    // A request that goes from row to row, because what it finds is not for this manager, must not
    // ask for each of them.
    if (++request.asked > kSingleRows && asking.pduType != kGet) {
        asking.pduType = kGetBulk;
    }
    Package question;
    Package answer;
    int result = result_code::kFailed;
    const auto failure =
        callHandler([&] { result = handler_->OnQueryTable(asking, question, answer); });
    if (failure || result != result_code::kSuccess) {
        return fail(request, failure.value_or(reasonOf(result)));
    }
    return take(answer, after, request);
}

bool BatchTable::fail(Request& request, const std::string& reason)
{
    request.failed = true;
    failures_.failed(reason);
    return false;
}

/// The OID that the handler derives the key from: for a Get the row itself, else the one before.
ObjectId BatchTable::wanted(const CKEL_SnmpContext& context, unsigned short column,
                            std::uint64_t after) const
{
    auto oid = below_;
    oid.push_back(kEntry);
    oid.push_back(column);
    if (context.pduType == kGet) {
        oid.push_back(after + 1);
    } else if (after != 0) {
        oid.push_back(after);
    }
    return oid;
}

bool BatchTable::take(Package& answer, std::uint64_t after, Request& request)
{
    auto records = answer.oRecords;
    const bool ends = !records.empty() && isEndMark(*records.back());
    if (ends) {
        records.pop_back();
    }
    RowBatch rows(table_, records, after, largestShownText(),
                  [this](const std::string& problem) { failures_.once(problem); });
    if (rows.indexes().empty() && !ends) {
        return fail(request, "the handler answered with no row that can be shown");
    }
    const auto end = ends ? KeptRows::kNoMore : rows.indexes().back();
    kept_.trim(request.now);
    kept_.add(after, end, std::move(rows), request.now);
    failures_.succeeded();
    return true;
}

}  // namespace talvik
