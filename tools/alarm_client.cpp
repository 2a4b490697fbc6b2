#include "tools/alarm_client.h"

#include "backend/alarm_commands.h"
#include "backend/alarm_tags.h"
#include "tools/answer_cells.h"
#include "tools/progress.h"

#include <unistd.h>

#include <algorithm>
#include <string>

namespace talvik::ctl {

namespace {

namespace tag = backend::alarm;

[[noreturn]] void refuseAnswer(const std::string& why)
{
    throw Failure(Failure::Kind::NoAnswer, "the request was carried out, but the answer " + why,
                  "make sure that talvikctl is of the same release as what answers");
}

bool isEndMark(const CTLVRecordV3& record)
{
    return record.find(static_cast<unsigned short>(tag::kEndMarkTag)) != record.pCells->end();
}

ActiveAlarm activeIn(const CTLVRecordV3& record)
{
    const AnswerCells cells(record);
    ActiveAlarm active;
    active.serial = static_cast<std::uint32_t>(cells.number(tag::kSerialTag));
    active.id = cells.number(tag::kIdTag);
    active.severity = static_cast<std::uint32_t>(cells.number(tag::kLevelTag));
    active.time = cells.number(tag::kTimeTag);
    active.parameters = cells.text(tag::kParametersTag);
    return active;
}

/// The number in the answer's only record.
std::uint32_t numberIn(const Package& answer, unsigned tag)
{
    if (answer.oRecords.empty()) {
        refuseAnswer("is empty");
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

std::vector<ActiveAlarm> AlarmClient::active(std::uint32_t after, std::uint32_t limit)
{
    std::vector<ActiveAlarm> alarms;
    const Progress::Span span("list the active alarms: waiting for an answer");
    bool more = true;
    while (more && alarms.size() < limit) {
        const auto left = limit - static_cast<std::uint32_t>(alarms.size());
        more = askForMore(alarms.empty() ? after : alarms.back().serial,
                          std::min(left, backend::kMaxAlarmsInPage), alarms);
        Progress::ofThisProgram().tell("list the active alarms: " + std::to_string(alarms.size()) +
                                       " so far");
    }
    return alarms;
}

bool AlarmClient::askForMore(std::uint32_t after, std::uint32_t count,
                             std::vector<ActiveAlarm>& alarms)
{
    Package answer;
    client_.ask(
        {Peer::BackEnd, "GET_CURRENT_ALARM", "list the active alarms", false},
        [after, count](backend::RecordBuilder& record) {
            record.u32(tag::kSerialTag, after).u32(tag::kCountTag, count);
        },
        answer);
    if (answer.oRecords.empty()) {
        refuseAnswer("has neither an alarm nor the end mark");
    }
    for (const auto* record : answer.oRecords) {
        if (isEndMark(*record)) {
            return false;
        }
        alarms.push_back(activeIn(*record));
        // Otherwise the next request might get the same answer, for ever.
        if (alarms.back().serial <= after) {
            refuseAnswer("has an alarm with the serial number " +
                         std::to_string(alarms.back().serial) + ", none up to " +
                         std::to_string(after) + " was asked for");
        }
        after = alarms.back().serial;
    }
    return true;
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
