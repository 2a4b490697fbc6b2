#include "host/snmp/table_source.h"

#include "framework/result_codes.h"
#include "framework/snmp_handler.h"
#include "host/snmp/handler_boundary.h"
#include "host/startup_error.h"

namespace talvik {

namespace {

std::string describe(const MibTable& table)
{
    return "table " + table.name + " (" + toText(table.id) + ")";
}

}  // namespace

TableSource::TableSource(const MibTable& table, std::unique_ptr<CSnmpHandler> handler)
    : table_(table),
      handler_(std::move(handler)),
      failures_(describe(table))
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
    CTLVPackageV3<TLVMsgHeadV3> request;
    CTLVPackageV3<TLVMsgHeadV3> rows;
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

}  // namespace talvik
