#include "host/snmp/trap_size.h"

#include "host/snmp/trap_text.h"

#include <algorithm>
#include <utility>

namespace talvik {

namespace {

constexpr std::size_t kMaxVariables = kMaxTrapMessage - kMaxTrapHeader;

const ObjectId kSysUpTime{1, 3, 6, 1, 2, 1, 1, 3, 0};
const ObjectId kSnmpTrapOid{1, 3, 6, 1, 6, 3, 1, 1, 4, 1, 0};

/// Type and length in front of `size` octets of content, and these.
std::size_t elementSize(std::size_t size)
{
    if (size < 0x80) {
        return 2 + size;
    }
    if (size <= 0xFF) {
        return 3 + size;
    }
    return (size <= 0xFFFF ? 4 : 5) + size;
}

std::size_t subIdentifierSize(unsigned long number)
{
    std::size_t size = 1;
    for (; number > 0x7F; number >>= 7U) {
        ++size;
    }
    return size;
}

std::size_t objectIdSize(const ObjectId& id)
{
    std::size_t size = 0;
    for (std::size_t i = 2; i < id.size(); ++i) {
        size += subIdentifierSize(id[i]);
    }
    // The first two share an octet, as long as the second is no more than 39 (or 47 below 2).
    return elementSize(size + subIdentifierSize(id.size() < 2 ? 0 : 40 * id[0] + id[1]));
}

std::size_t numberSize(Syntax syntax)
{
    constexpr std::size_t kLongest64 = 9;
    constexpr std::size_t kLongest32 = 5;
    return elementSize(syntax == Syntax::Counter64 ? kLongest64 : kLongest32);
}

std::size_t bindingSize(const TrapBinding& binding, std::size_t octets)
{
    const auto value = binding.value.syntax == Syntax::OctetString
                           ? elementSize(octets)
                           : numberSize(binding.value.syntax);
    return elementSize(objectIdSize(binding.name) + value);
}

std::size_t fixedSize(const ObjectId& id)
{
    return elementSize(objectIdSize(kSysUpTime) + numberSize(Syntax::TimeTicks)) +
           elementSize(objectIdSize(kSnmpTrapOid) + objectIdSize(id));
}

/// The size with every text of `bindings` cut to `textLimit` octets.
std::size_t sizeAt(std::size_t textLimit, const ObjectId& id,
                   const std::vector<TrapBinding>& bindings)
{
    auto size = fixedSize(id);
    for (const auto& binding : bindings) {
        size +=
            bindingSize(binding, isText(binding) ? shortenedSize(binding.value.octets, textLimit)
                                                 : binding.value.octets.size());
    }
    return size;
}

/// The longest that a text may be; nothing when even 0 is too long.
std::optional<std::size_t> textLimit(const ObjectId& id, const std::vector<TrapBinding>& bindings)
{
    if (sizeAt(0, id, bindings) > kMaxVariables) {
        return std::nullopt;
    }
    std::size_t fits = 0;
    std::size_t tooLong = kMaxVariables;
    while (tooLong - fits > 1) {
        const auto middle = (fits + tooLong) / 2;
        (sizeAt(middle, id, bindings) <= kMaxVariables ? fits : tooLong) = middle;
    }
    return fits;
}

}  // namespace

std::size_t variablesSize(const ObjectId& id, const std::vector<TrapBinding>& bindings)
{
    auto size = fixedSize(id);
    for (const auto& binding : bindings) {
        size += bindingSize(binding, binding.value.octets.size());
    }
    return size;
}

std::optional<std::vector<TextCut>> fitTexts(const ObjectId& id, std::vector<TrapBinding>& bindings)
{
    for (auto& binding : bindings) {
        if (isText(binding)) {
            binding.value.octets = plainText(std::move(binding.value.octets));
        }
    }
    std::vector<TextCut> cuts;
    if (variablesSize(id, bindings) <= kMaxVariables) {
        return cuts;
    }
    const auto limit = textLimit(id, bindings);
    if (!limit) {
        return std::nullopt;
    }
    for (std::size_t i = 0; i < bindings.size(); ++i) {
        auto& octets = bindings[i].value.octets;
        if (isText(bindings[i]) && octets.size() > *limit) {
            auto cut = shortened(octets, *limit);
            cuts.push_back({i, octets.size(), cut.size()});
            octets = std::move(cut);
        }
    }
    return cuts;
}

}  // namespace talvik
