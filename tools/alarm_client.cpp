#include "tools/alarm_client.h"

#include "backend/alarm_tags.h"
#include "tools/answer_cells.h"

#include <unistd.h>

#include <string>

namespace talvik::ctl {

namespace {

namespace tag = backend::alarm;

/// The number in the answer's only record.
std::uint32_t numberIn(const Package& answer, unsigned tag)
{
    if (answer.oRecords.empty()) {
        throw Failure(Failure::Kind::NoAnswer,
                      "the request was carried out, but the answer is empty",
                      "make sure that talvikctl is of the same release as what answers");
    }
    const auto cell = static_cast<unsigned short>(tag);
    return static_cast<std::uint32_t>(AnswerCells(*answer.oRecords.front()).number(cell));
}

}  // namespace

std::uint32_t AlarmClient::raise(const AlarmReport& report)
{
    return this->report({Peer::BackEnd, "RAISE_ALARM", "raise alarm " + std::to_string(report.id)},
                        report);
}

std::uint32_t AlarmClient::reportEvent(const AlarmReport& report)
{
    return this->report(
        {Peer::BackEnd, "REPORT_EVENT", "report event " + std::to_string(report.id)}, report);
}

std::uint32_t AlarmClient::report(const RequestName& name, const AlarmReport& report)
{
    Package answer;
    client_.ask(
        name,
        [&report](backend::RecordBuilder& record) {
            record.u64(tag::kIdTag, report.id)
                .u32(tag::kLevelTag, report.severity)
                .text(tag::kParametersTag, report.parameters);
            if (report.time) {
                record.u64(tag::kTimeTag, *report.time);
            }
        },
        answer);
    return numberIn(answer, tag::kSerialTag);
}

void AlarmClient::clear(std::uint32_t serial)
{
    Package answer;
    client_.ask(
        {Peer::BackEnd, "CLEAR_ALARM", "clear alarm " + std::to_string(serial)},
        [serial](backend::RecordBuilder& record) {
            record.u32(tag::kSerialTag, serial)
                .text(tag::kRequesterTag, "talvikctl, user id " + std::to_string(::getuid()));
        },
        answer);
}

std::uint32_t AlarmClient::resend()
{
    Package answer;
    client_.ask(
        {Peer::BackEnd, "RESEND_ALARMS", "have the active alarms sent again"},
        [](backend::RecordBuilder&) {}, answer);
    return numberIn(answer, tag::kCountTag);
}

}  // namespace talvik::ctl
