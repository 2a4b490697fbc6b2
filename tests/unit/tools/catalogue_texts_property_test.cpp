// What the check says of the texts of random alarms, compared with what the module makes of them.

#include "tests/unit/tools/catalogue_property_kit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <initializer_list>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace {

using namespace talvik::ctl;
using namespace talvik::test;

/// Where the text of a definition's "detail" begins in its line.
constexpr std::size_t kDetailColumn = 12;

constexpr std::array kDetailPieces = {
    "##00",    "##01",       "##02",     "##00{0:a;1:b}", "##01{0:a;1:c}",
    "{0:a}",   "{1:x;1:y}",  "{0:##01}", "{:n;1:x}",      "{0:0}",
    "{0:a##}", "{}",         " ",        " text behind ", "{",
    "}",       "##0",        "##1{1:d}", "{0=a;1:b}",     "{0:a#}",
    "#",       "##00{0:a##}"};
constexpr std::array kOtherPieces = {"##00", "##01", "##02", "##05", " L ", " ", "#", "##1"};
constexpr std::array kParamDescs = {"",       "0=Port",        " 0=Port", "x=Port",
                                    "1=Fort", "1=Port,0=Port", "+1=Port"};

/// What the back end may send: few values, many, empty ones.
const std::vector<std::string> kParams = {"",
                                          "0",
                                          "1",
                                          "0,1",
                                          "1,0",
                                          ",",
                                          "a,b,c",
                                          "0,0,0,0,0,0,0",
                                          "1,1,1,1,1,1,1",
                                          "a,b,c,d,e,f,g",
                                          ",,,,,,,",
                                          "0,1,0,1,0,1,0"};

struct Alarm {
    std::string detail;
    std::string location;
    std::string paramDesc;

    std::string file() const
    {
        return alarm({{"detail", "\"" + detail + "\""},
                      {"location", "\"" + location + "\""},
                      {"paramDesc", "\"" + paramDesc + "\""}});
    }
};

const std::string kPortLiterals =
    "\", \"enum_member\": [{\"value\": \"0\", \"name\": \"up\"}, {\"value\": \"--\", \"name\": "
    "\"1\"}]}]";

std::string enumerationsNamed(const std::string& name)
{
    return enumerations("[{\"name\": \"" + name + kPortLiterals);
}

class CatalogueTexts : public CatalogueProperty {
protected:
    /// One line for each of `kParams`: what is shown, or that nothing is.
    std::vector<std::string> shown(const Alarm& alarm, const std::string& enumeration = "Port")
    {
        std::vector<std::string> lines;
        for (const auto& params : kParams) {
            lines.push_back(shownFor(alarm, params, enumeration));
        }
        return lines;
    }

    std::string shownFor(const Alarm& alarm, const std::string& params,
                         const std::string& enumeration = "Port")
    {
        const auto made = expand(alarm.file(), enumerationsNamed(enumeration), 1, params);
        return made.shown ? made.location + " | " + made.detail : "refused";
    }

    Alarm make(bool enumerated)
    {
        return {pieces(kDetailPieces, 4), pieces(kOtherPieces, 2),
                enumerated ? pick(kParamDescs) : ""};
    }
};

/// `alarm` with no colon in this part of the detail, so that no item there can be used.
Alarm withoutColons(Alarm alarm, std::size_t from, std::size_t to)
{
    std::replace(alarm.detail.begin() + static_cast<std::ptrdiff_t>(from),
                 alarm.detail.begin() + static_cast<std::ptrdiff_t>(to), ':', '.');
    return alarm;
}

/// Where the finding points to in the detail, if it does.
std::optional<std::size_t> placeInDetail(const Finding& finding)
{
    return finding.place.file == "alarms.json" && finding.place.line == kDetail
               ? std::make_optional(finding.place.column - kDetailColumn)
               : std::nullopt;
}

bool isAnyOf(const Finding& finding, std::initializer_list<const char*> codes)
{
    return std::any_of(codes.begin(), codes.end(),
                       [&finding](const char* code) { return has(finding, code); });
}

TEST_F(CatalogueTexts, MapsAndItemsWithoutEffectHaveNone)
{
    for (int round = 0; round < 400; ++round) {
        const auto alarm = make(false);
        const auto result = check(alarm.file(), enumerationsNamed("Port"));
        const auto& findings = result.findings.list();
        for (const auto& finding : findings) {
            const auto at = placeInDetail(finding);
            const bool isMap = isAnyOf(finding, {"map-without-effect", "map-not-first"});
            const bool isShared =
                std::any_of(findings.begin(), findings.end(), [&finding](const auto& other) {
                    return has(other, "map-shared") && other.place.column == finding.place.column;
                });
            if (at && isMap && !isShared) {
                const auto without = withoutColons(alarm, *at, alarm.detail.find('}', *at));
                ASSERT_EQ(shown(alarm), shown(without)) << alarm.detail << finding.message;
            }
            if (at && isAnyOf(finding, {"map-item", "map-repeated-value", "map-empty-value"})) {
                const auto end = alarm.detail.find_first_of(";}", *at);
                ASSERT_EQ(shown(alarm), shown(withoutColons(alarm, *at, end)))
                    << alarm.detail << finding.message;
            }
        }
    }
}

/// The other way round: every item of which nothing is said can change a text.
TEST_F(CatalogueTexts, ItemsOfWhichNothingIsSaidHaveAnEffect)
{
    int items = 0;
    for (int round = 0; round < 600; ++round) {
        const auto alarm = make(false);
        const auto result = check(alarm.file(), enumerationsNamed("Port"));
        const bool isSaid = std::any_of(
            result.findings.list().begin(), result.findings.list().end(), [](const auto& finding) {
                return placeInDetail(finding) && finding.kind.severity != Severity::Note;
            });
        for (auto colon = alarm.detail.find(':'); !isSaid && colon != std::string::npos;
             colon = alarm.detail.find(':', colon + 1)) {
            if (alarm.detail[colon - 1] != alarm.detail[colon + 1]) {
                ++items;
                ASSERT_NE(shown(alarm), shown(withoutColons(alarm, colon, colon + 1)))
                    << alarm.detail << " at " << colon;
            }
        }
    }
    EXPECT_GT(items, 20);
}

TEST_F(CatalogueTexts, AlarmsWithoutErrorsAreShown)
{
    int refusals = 0;
    for (int round = 0; round < 400; ++round) {
        const auto alarm = make(true);
        const auto result = check(alarm.file(), enumerationsNamed("Port"));
        const auto& findings = result.findings.list();
        const bool isTold = std::any_of(findings.begin(), findings.end(), [](const auto& finding) {
            return has(finding, "placeholder-at-end") && says(finding, "refuses to show");
        });
        const auto lines = shown(alarm);
        const bool isRefused = std::find(lines.begin(), lines.end(), "refused") != lines.end();
        refusals += isRefused ? 1 : 0;
        ASSERT_EQ(isTold, isRefused) << alarm.file() << listed(result.findings);
    }
    EXPECT_GE(refusals, 5);
}

TEST_F(CatalogueTexts, WhatIsMissingIsShownAsTheCheckTells)
{
    int told = 0;
    for (int round = 0; round < 400; ++round) {
        const auto alarm = make(false);
        const auto result = check(alarm.file(), "");
        for (const auto& finding : result.findings.list()) {
            if (!has(finding, "placeholder-not-in-detail")) {
                continue;
            }
            ++told;
            const auto start = std::string_view("\"detail\" does not use parameter ").size();
            const auto count = std::stoul(finding.message.substr(start));
            std::string params = count > 0 ? "v" : "";
            for (auto i = 1UL; i < count; ++i) {
                params += ",v";
            }
            const auto shows = shownFor(alarm, params);
            const auto text =
                shows.find("None") < shows.find(" | ") ? "shows None here" : "shows ##";
            ASSERT_TRUE(says(finding, text) || shows == "refused") << alarm.file() << shows << "\n"
                                                                   << finding.message;
        }
    }
    EXPECT_GT(told, 50);
}

TEST_F(CatalogueTexts, EnumerationsThatAreUnusedChangeNothing)
{
    int unused = 0;
    for (int round = 0; round < 200; ++round) {
        const auto alarm = make(true);
        const auto result = check(alarm.file(), enumerationsNamed("Port"));
        for (const auto& finding : result.findings.list()) {
            if (has(finding, "unused-enumeration") ||
                (has(finding, "param-desc-unused") &&
                 alarm.paramDesc.find(',') == std::string::npos)) {
                ++unused;
                ASSERT_EQ(shown(alarm), shown(alarm, "Other")) << alarm.file() << finding.message;
            }
        }
    }
    EXPECT_GT(unused, 10);
}

/// An open brace: whether it hides parameters.
TEST_F(CatalogueTexts, AnOpenBraceHidesWhatTheCheckTells)
{
    int hiding = 0;
    int harmless = 0;
    for (int round = 0; round < 400; ++round) {
        Alarm alarm{pieces(std::array{"##00", "##01", " and ", "x"}, 3) + "{a", "##02", ""};
        const auto result = check(alarm.file(), "");
        for (const auto& finding : result.findings.list()) {
            if (!has(finding, "map-not-closed")) {
                continue;
            }
            const bool isHidden = shownFor(alarm, "a,b,c") == shownFor(alarm, "a,b,d");
            ASSERT_EQ(says(finding, "are not shown"), isHidden) << alarm.detail << finding.message;
            (isHidden ? hiding : harmless) += 1;
        }
    }
    EXPECT_GT(hiding, 20);
    EXPECT_GT(harmless, 20);
}

}  // namespace
