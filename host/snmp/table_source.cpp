#include "host/snmp/table_source.h"

#include "framework/result_codes.h"
#include "framework/snmp_handler.h"
#include "host/startup_error.h"

namespace talvik {

namespace {

constexpr std::uint32_t kNoIndex = ~0U;  ///< in the header of a request that names a row by a cell

std::string describe(const MibTable& table)
{
    return "table " + table.name + " (" + toText(table.id) + ")";
}

}  // namespace

TableSource::TableSource(const MibTable& table, std::unique_ptr<CSnmpHandler> handler, Clock clock)
    : table_(table),
      handler_(std::move(handler)),
      failures_(describe(table)),
      clock_(std::move(clock))
{
    bool wholeTable = false;
    const auto failure = callHandler([&] { wholeTable = handler_->isWholeTable(); });
    if (failure) {
        throw StartupError(describe(table) + ": the module's handler failed: " + *failure);
    }
    if (!wholeTable) {
        throw StartupError(describe(table) +
                           ": the module's handler answers in batches from a key, which this agent "
                           "cannot drive; use a module and an agent of the same release");
    }
}

TableSource::~TableSource() = default;

std::shared_ptr<const TableSnapshot> TableSource::query(const CKEL_SnmpContext& context)
{
    const auto now = clock_();
    if (kept_ != nullptr && now < keptUntil_) {
        return kept_;
    }
    auto snapshot = queryAnew(context);
    if (table_.answerLifetime.count() != 0) {
        kept_ = snapshot;
        keptUntil_ = now + table_.answerLifetime;
    }
    return snapshot;
}

std::shared_ptr<const TableSnapshot> TableSource::queryAnew(const CKEL_SnmpContext& context)
{
    Package request;
    Package rows;
    int result = result_code::kFailed;
    const auto failure =
        callHandler([&] { result = handler_->OnQueryTable(context, request, rows); });
    if (failure || result != result_code::kSuccess) {
        failures_.failed(failure.value_or("the handler returned " + std::to_string(result)));
        return nullptr;
    }
    auto snapshot = std::make_shared<const TableSnapshot>(
        table_, rows, [this](const std::string& problem) { failures_.once(problem); });
    failures_.succeeded();
    return snapshot;
}

HandlerAnswer TableSource::createRow(const CKEL_SnmpContext& context, std::uint32_t row,
                                     const std::vector<ColumnValue>& values)
{
    return change(&CSnmpHandler::OnCreateTable, context, row, values);
}

HandlerAnswer TableSource::modifyRow(const CKEL_SnmpContext& context, std::uint32_t row,
                                     const std::vector<ColumnValue>& values)
{
    auto all = values;
    all.push_back(indexValue(row));
    return change(&CSnmpHandler::OnModifyTable, context, kNoIndex, all);
}

HandlerAnswer TableSource::deleteRow(const CKEL_SnmpContext& context, std::uint32_t row)
{
    return change(&CSnmpHandler::OnDeleteTable, context, kNoIndex, {indexValue(row)});
}

HandlerAnswer TableSource::change(Operation operation, const CKEL_SnmpContext& context,
                                  std::uint32_t headerWord, const std::vector<ColumnValue>& values)
{
    kept_.reset();
    Package request;
    Package response;
    request.oHead.uiWord3 = headerWord;
    auto record = std::make_unique<CTLVRecordV3>();
    for (const auto& [column, value] : values) {
        auto cell = toCell(value, *column);
        record->append(cell.get());
        cell.release();
    }
    request.oRecords.push_back(record.get());
    record.release();
    HandlerAnswer answer;
    answer.failure = callHandler(
        [&] { answer.result = (handler_.get()->*operation)(context, request, response); });
    return answer;
}

ColumnValue TableSource::indexValue(std::uint32_t row) const
{
    const auto& column = table_.columns[table_.index.front()];
    return {&column, {column.syntax, row, ""}};
}

}  // namespace talvik
