#include "host/link/command_result.h"

#include "backend/protocol.h"
#include "host/link/backend_link.h"

#include <cstdint>
#include <cstdio>

namespace talvik {

namespace {

namespace result = backend::result;

struct Meaning {
    std::uint32_t result;
    CommandOutcome outcome;
    const char* text;
};

constexpr Meaning kMeanings[] = {
    {result::kSuccess, CommandOutcome::Done, "done"},
    {result::kNoSuchAlarm, CommandOutcome::NoSuchAlarm,
     "no alarm with that serial number is active"},
    {result::kBadRequest, CommandOutcome::BadRequest,
     "the back end refuses the request; its log says why"},
    {result::kOutboxFull, CommandOutcome::Unavailable, "too many notifications wait for the host"},
    {result::kStoreFailed, CommandOutcome::Unavailable, "the file of the alarms cannot be written"},
    {BackendLink::kUnreachable, CommandOutcome::Unavailable, "the back end cannot be reached"},
    {BackendLink::kTimedOut, CommandOutcome::Unavailable,
     "the back end does not answer in time; what was asked for may have been done"},
};

constexpr Meaning kUnknown = {0, CommandOutcome::Failed, "the handler failed"};

const Meaning& meaningOf(int result)
{
    for (const auto& meaning : kMeanings) {
        if (meaning.result == static_cast<std::uint32_t>(result)) {
            return meaning;
        }
    }
    return kUnknown;
}

}  // namespace

CommandOutcome outcomeOf(int result)
{
    return meaningOf(result).outcome;
}

std::string reasonOf(int result)
{
    char number[16];
    std::snprintf(number, sizeof number, "0x%X", static_cast<unsigned>(result));
    return std::string(meaningOf(result).text) + " (" + number + ")";
}

}  // namespace talvik
