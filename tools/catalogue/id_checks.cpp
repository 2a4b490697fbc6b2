#include "tools/catalogue/checks.h"

#include "alarmconfig/alarm_config_parser.h"
#include "tools/catalogue/finding_kinds.h"

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <limits>
#include <map>

namespace talvik::ctl {

namespace {

constexpr const char* kUseAnotherId = "give it an id of its own, in decimal digits";

/// Checks the ids in the file's order, because the first of several definitions counts.
class IdChecks {
public:
    IdChecks(const JsonDocument& file, Findings& findings) : file_(file), findings_(findings) {}

    void check(const Definition& definition)
    {
        const auto& text = definition.of(Member::EventId);
        if (text.isWrong) {
            return;
        }
        if (text.value == nullptr) {
            findings_.add(kind::kMissingId, file_.placeOf(*definition.element),
                          "this definition has no \"eventID\": the module takes id 0 for it, "
                          "which no alarm can have",
                          "add \"eventID\" with the alarm's id in decimal digits, as a string");
            return;
        }
        const auto place = file_.placeOf(*text.value);
        if (isNumber(definition, place) && definition.id == 0) {
            findings_.add(kind::kIdZero, place,
                          "id 0 stands for no alarm: the module never finds this definition",
                          kUseAnotherId);
        }
        if (definition.id != 0) {
            compare(definition, place);
        }
    }

private:
    bool isNumber(const Definition& definition, const Place& place)
    {
        const auto& text = definition.of(Member::EventId).text;
        if (text.empty() || text.find_first_not_of("0123456789") != std::string::npos) {
            findings_.add(kind::kIdNotANumber, place,
                          "\"" + text + "\" is no number in decimal digits: the module reads " +
                              std::to_string(definition.id),
                          kUseAnotherId);
            return false;
        }
        errno = 0;
        std::strtoll(text.c_str(), nullptr, 10);
        if (errno == ERANGE) {
            findings_.add(kind::kIdTooLarge, place,
                          text + " is beyond the largest id: the module reads " +
                              std::to_string(definition.id),
                          "use an id of at most " +
                              std::to_string(std::numeric_limits<long long>::max()));
            return false;
        }
        return true;
    }

    void compare(const Definition& definition, const Place& place)
    {
        const auto [first, fresh] = lines_.try_emplace(definition.id, place.line);
        if (!fresh) {
            findings_.add(kind::kRepeatedId, place,
                          "alarm " + std::to_string(definition.id) + " is defined in line " +
                              std::to_string(first->second) +
                              " already: the module ignores this definition",
                          "remove one of the two, or correct the id of one");
            return;
        }
        const auto low = static_cast<std::uint32_t>(definition.id);
        const auto [same, freshLow] = low32_.try_emplace(low, definition.id);
        if (!freshLow) {
            findings_.add(kind::kIdSame32Bits, place,
                          definition.subject() + " and alarm " + std::to_string(same->second) +
                              " have the same low 32 bits (" + std::to_string(low) +
                              "), which is all that traps carry as the alarm id",
                          "choose an id whose low 32 bits differ");
            return;  // and so have the same low 16 bits
        }
        compareReduced(definition, place);
    }

    void compareReduced(const Definition& definition, const Place& place)
    {
        unsigned reduced = 0;
        CAlarmConfigParser::resolveAlarmId(definition.id, reduced);
        if (reduced == 0) {
            findings_.add(kind::kIdLow16BitsZero, place,
                          "the low 16 bits of " + definition.subject() +
                              " are 0: a host that asks for the reduced id gets 0",
                          "choose another id if your host uses reduced ids");
            return;
        }
        const auto [same, fresh] = low16_.try_emplace(reduced, definition.id);
        if (!fresh) {
            findings_.add(kind::kIdSame16Bits, place,
                          definition.subject() + " and alarm " + std::to_string(same->second) +
                              " have the same low 16 bits (" + std::to_string(reduced) +
                              "): a host that asks for the reduced id cannot tell them apart",
                          "choose another id if your host uses reduced ids");
        }
    }

    const JsonDocument& file_;
    Findings& findings_;
    std::map<std::uint64_t, std::size_t> lines_;
    std::map<std::uint32_t, std::uint64_t> low32_;
    std::map<unsigned, std::uint64_t> low16_;
};

}  // namespace

void checkIds(const JsonDocument& file, const std::vector<Definition>& definitions,
              Findings& findings)
{
    IdChecks checks(file, findings);
    for (const auto& definition : definitions) {
        checks.check(definition);
    }
}

}  // namespace talvik::ctl
