#include "tools/catalogue/checks.h"

#include "tools/catalogue/finding_kinds.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <map>

namespace talvik::ctl {

namespace {

/// What stands before "alarmOid" in the trap OID; the host's number follows it.
constexpr const char* kTrapOidStart = "1.3.6.1.4.1.99999.2.251.20.1.2.2";
constexpr std::size_t kTrapOidStartLength = 13;
constexpr std::size_t kLongestOid = 128;
constexpr std::size_t kLongestAlarmOid = kLongestOid - kTrapOidStartLength - 1;
/// Every OID of a management system starts so.
constexpr const char* kWholeOidStart = "1.3.6.1.";

/// How many sub-identifiers `text` has; 0 when it is no OID.
std::size_t subIdentifiers(const std::string& text)
{
    std::size_t count = 0;
    const auto* at = text.data();
    const auto* end = at + text.size();
    while (true) {
        std::uint32_t number = 0;
        const auto read = std::from_chars(at, end, number);
        if (read.ec != std::errc()) {
            return 0;
        }
        ++count;
        if (read.ptr == end) {
            return count;
        }
        if (*read.ptr != '.') {
            return 0;
        }
        at = read.ptr + 1;
    }
}

void addMissing(const JsonDocument& file, const Definition& definition, Findings& findings)
{
    findings.add(kind::kMissingOid, file.placeOf(*definition.element),
                 definition.subject() +
                     " has no \"alarmOid\": the module takes the text None for it, and the trap "
                     "OID becomes " +
                     kTrapOidStart + ".None, which is none",
                 "add \"alarmOid\", empty (\"\") for an alarm without an OID of its own");
}

}  // namespace

void checkOids(const JsonDocument& file, const std::vector<Definition>& definitions,
               Findings& findings)
{
    std::map<std::string, std::string> users;
    for (const auto& definition : definitions) {
        const auto& oid = definition.of(Member::AlarmOid);
        if (definition.isIgnored || oid.isWrong || (oid.value != nullptr && oid.text.empty())) {
            continue;  // without an OID of its own
        }
        if (oid.value == nullptr) {
            addMissing(file, definition, findings);
            continue;
        }
        const auto place = file.placeOf(*oid.value);
        const auto length = subIdentifiers(oid.text);
        if (length == 0 || length > kLongestAlarmOid) {
            findings.add(kind::kInvalidOid, place,
                         "\"" + oid.text + "\" cannot be part of an OID: the trap OID is " +
                             kTrapOidStart + ", this text and the host's number",
                         "use at most " + std::to_string(kLongestAlarmOid) +
                             " decimal numbers up to 4294967295 with single dots between them");
        } else if (oid.text.compare(0, 8, kWholeOidStart) == 0) {
            findings.add(kind::kWholeOid, place,
                         "this looks like a whole OID, but the module puts " +
                             std::string(kTrapOidStart) + " before it",
                         "write only what comes behind that, for example 1.7");
        } else {
            const auto [first, fresh] = users.try_emplace(oid.text, definition.subject());
            if (!fresh) {
                findings.add(kind::kSharedOid, place,
                             definition.subject() + " has the trap OID of " + first->second,
                             "choose another unless managers need not tell the two apart by OID");
            }
        }
    }
}

}  // namespace talvik::ctl
