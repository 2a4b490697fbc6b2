#include "host/snmp/scalar_source.h"

#include "framework/result_codes.h"
#include "framework/snmp_handler.h"

#include <string>
#include <utility>

namespace talvik {

namespace {

using Package = CTLVPackageV3<TLVMsgHeadV3>;

constexpr std::uint32_t kNoIndex = ~0U;  ///< in the header of a request that names no row

/// The value in the first record of `answer`; nothing, with the reason in `problem`, when there is
/// none.
std::optional<SnmpValue> valueIn(const Package& answer, const MibColumn& cell, std::string& problem)
{
    if (answer.oRecords.empty()) {
        problem = "the handler's answer has no record";
        return std::nullopt;
    }
    const auto& record = *answer.oRecords.front();
    const auto place = record.find(cell.tag);
    if (place == record.pCells->end()) {
        problem = "the handler's answer has no cell of tag " + std::to_string(cell.tag);
        return std::nullopt;
    }
    return toSnmpValue(**place, cell, problem);
}

}  // namespace

ScalarSource::ScalarSource(const MibScalar& scalar, std::unique_ptr<CSnmpHandler> handler)
    : scalar_(scalar),
      handler_(std::move(handler)),
      failures_("scalar " + scalar.name + " (" + toText(scalar.id) + ")")
{
}

ScalarSource::~ScalarSource() = default;

std::optional<SnmpValue> ScalarSource::query(const CKEL_SnmpContext& context)
{
    Package request;
    Package response;
    int result = result_code::kFailed;
    const auto failure =
        callHandler([&] { result = handler_->OnQueryLeaf(context, request, response); });
    if (failure || result != result_code::kSuccess) {
        failures_.failed(failure.value_or("the handler returned " + std::to_string(result)));
        return std::nullopt;
    }
    std::string problem;
    auto value = valueIn(response, scalar_.cell, problem);
    if (value) {
        failures_.succeeded();
    } else {
        failures_.failed(problem);
    }
    return value;
}

HandlerAnswer ScalarSource::write(const CKEL_SnmpContext& context, const SnmpValue& value)
{
    Package request;
    Package response;
    request.oHead.uiWord3 = kNoIndex;
    auto record = std::make_unique<CTLVRecordV3>();
    auto cell = toCell(value, scalar_.cell);
    record->append(cell.get());
    cell.release();
    request.oRecords.push_back(record.get());
    record.release();
    HandlerAnswer answer;
    answer.failure =
        callHandler([&] { answer.result = handler_->OnSetLeaf(context, request, response); });
    return answer;
}

}  // namespace talvik
