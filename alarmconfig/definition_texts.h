#pragma once

#include <array>
#include <cstddef>

namespace Json {
class Value;
}

namespace talvik {

/// The members of one alarm definition, all found in one walk, as a look-up for each would compare
/// every name several times. Refers to the definition, which outlives it.
class DefinitionTexts {
public:
    enum class Key { AlarmOid, Detail, EventId, Location, Name, ParamDesc, Reason, Suggestion };

    /// Throws JsonCpp's exception when `definition` is neither object nor null.
    explicit DefinitionTexts(const Json::Value& definition);

    /// The text of the member up to its first NUL, or `missing` when there is none. Throws
    /// JsonCpp's exception when it is no text.
    const char* textOr(Key key, const char* missing) const;

private:
    static constexpr std::size_t kKeys = 8;

    std::array<const Json::Value*, kKeys> members_ = {};  // by `Key`, null where missing
};

}  // namespace talvik
