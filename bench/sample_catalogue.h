#pragma once

#include <cstdint>
#include <string>

namespace talvik::bench {

/// A catalogue of a size that tests scale with, and what a typical alarm of it looks like: three
/// texts, four parameters, one value map.
struct SampleCatalogue {
    /// Writes `definitions.json` with that many definitions and `enumerations.json` with that many
    /// enumeration values into `folder`.
    static void write(const std::string& folder, unsigned definitions, unsigned enumValues);

    static constexpr std::uint64_t kFirstId = 0x100F0000;

    static constexpr const char* kLocation =
        "Enclosure ##01 (code ##00), slot ##02 on the rear side of the rack";
    static constexpr const char* kDetail =
        "The power module (enclosure ##01, slot ##02, code ##00) of the array is "
        "##03{0:not powered;1:faulty;2:overheated} and no longer feeds the enclosure.";
    static constexpr const char* kSuggestion =
        "Step 1: Check the power cable of slot ##02 in enclosure ##01. Step 2: Replace the module.";
    static constexpr const char* kParameters = "0x2F01,CTE0,PSU 1,1";
};

}  // namespace talvik::bench
