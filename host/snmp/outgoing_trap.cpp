#include "host/snmp/outgoing_trap.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace talvik {

namespace {

/// The serial number of an alarm below the objects of either kind of alarm trap.
const ObjectId kSerialNumbers[] = {
    {1, 3, 6, 1, 4, 1, 99999, 2, 91, 10, 3, 1, 1, 9, 0},
    {1, 3, 6, 1, 4, 1, 99999, 2, 251, 20, 1, 3, 9, 0},
};

bool isSerialNumber(const TrapBinding& binding)
{
    return std::find(std::begin(kSerialNumbers), std::end(kSerialNumbers), binding.name) !=
           std::end(kSerialNumbers);
}

std::string serialOf(const TrapContent& content)
{
    const auto found =
        std::find_if(content.bindings.begin(), content.bindings.end(), &isSerialNumber);
    // 0 is that of a test, which has nothing to do with any other.
    return found == content.bindings.end() || found->value.number == 0
               ? ""
               : std::to_string(found->value.number);
}

}  // namespace

OutgoingTrap::OutgoingTrap(TrapContent content)
    : content_(std::move(content)),
      serial_(serialOf(content_))
{
}

const std::string* OutgoingTrap::message(const TrapMessageKind& kind, std::string& problem)
{
    if (turnEnded_) {
        messages_.clear();
    }
    const auto made = messages_.find(kind);
    if (made != messages_.end()) {
        return &made->second;
    }
    auto octets = encodeTrap(content_, kind, problem);
    return octets ? &messages_.emplace(kind, std::move(*octets)).first->second : nullptr;
}

void OutgoingTrap::endTurn()
{
    turnEnded_ = true;
    messages_.clear();
}

}  // namespace talvik
