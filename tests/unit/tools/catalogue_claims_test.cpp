// What the check says of a catalogue, where that is easily said wrongly.

#include "tests/unit/tools/catalogue_findings.h"
#include "tests/unit/tools/small_catalogue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace {

using namespace talvik::test;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

std::string withId(const std::string& id, const Changes& others = {})
{
    Changes changes = others;
    changes.emplace_back("eventID", "\"" + id + "\"");
    return definition(changes);
}

std::string ports(const std::string& name = "Port")
{
    return enumerations("[{\"name\": \"" + name +
                        "\", \"enum_member\": [{\"value\": \"0\", \"name\": \"up\"}]}]");
}

std::string detail(const std::string& text, const std::string& location = "L")
{
    return alarm({{"detail", "\"" + text + "\""}, {"location", "\"" + location + "\""}});
}

/// The messages, one a line.
std::string said(const std::string& definitionFile, const std::string& enumerationFile = "")
{
    return listed(check(definitionFile, enumerationFile).findings);
}

TEST(CatalogueClaims, NothingIsLostToAWrongTypeInADefinitionThatIsIgnored)
{
    const auto file = definitions({withId("5"), withId("5", {{"name", "8"}}), withId("6")});

    EXPECT_THAT(codesOf(check(file, "")), ElementsAre("repeated-id"));
}

TEST(CatalogueClaims, NothingButTheIdIsSaidOfADefinitionThatIsIgnored)
{
    const auto file =
        definitions({withId("5", {{"alarmOid", "\"1.5\""}}),
                     withId("5", {{"alarmOid", "\"1.5\""}, {"name", ""}, {"detail", "\"##1\""}})});

    EXPECT_THAT(codesOf(check(file, "")), ElementsAre("repeated-id"));
}

TEST(CatalogueClaims, AnEnumerationThatOnlyAnIgnoredDefinitionNamesIsUnused)
{
    const auto file = definitions(
        {withId("5"), withId("5", {{"paramDesc", "\"0=Port\""}, {"detail", "\"##00\""}})});

    EXPECT_THAT(codesOf(check(file, ports())), ElementsAre("repeated-id", "unused-enumeration"));
}

TEST(CatalogueClaims, IdsAreComparedAsTheModuleReadsThem)
{
    EXPECT_THAT(codesOf(check(definitions({withId("12x"), withId("12")}), "")),
                ElementsAre("id-not-a-number", "repeated-id"));
    EXPECT_THAT(codesOf(check(definitions({withId("-1"), withId("-1")}), "")),
                ElementsAre("id-not-a-number", "id-not-a-number", "repeated-id"));
    EXPECT_THAT(
        codesOf(check(definitions({withId("9223372036854775807"), withId("99999999999999999999")}),
                      "")),
        ElementsAre("id-too-large", "repeated-id"));
}

TEST(CatalogueClaims, AnItemThatTheModuleUnderstandsUsesItsEnumeration)
{
    for (const auto* item : {" 0=Port", "+0=Port", "x=Port", "00=Port", "=Port"}) {
        const auto file =
            alarm({{"detail", "\"##00\""}, {"paramDesc", std::string("\"") + item + "\""}});
        EXPECT_THAT(codesOf(check(file, ports())), Not(testing::Contains("unused-enumeration")))
            << item;
    }
}

TEST(CatalogueClaims, AnUnusualItemIsToldAsTheModuleReadsIt)
{
    const auto text = said(
        alarm({{"detail", "\"##00 ##01\""}, {"paramDesc", "\"0=Port, 1=Fan,y= Fan\""}}), ports());

    EXPECT_THAT(text, HasSubstr("\" 1=Fan\" is not of the form position=Type: the module reads "
                                "position 1 and enumeration \"Fan\""));
    EXPECT_THAT(text, HasSubstr("\"y= Fan\" is not of the form position=Type: the module reads "
                                "position 0 and enumeration \" Fan\""));
}

TEST(CatalogueClaims, AMapWithoutEffectIsToldItsTrueCause)
{
    EXPECT_THAT(said(detail("##00 now{0:a}")), HasSubstr("more than 7 characters behind"));
    for (const auto* text : {"##00{1:a}{0:b}", "##00}x{0:a}", "##00{}{0:a}"}) {
        EXPECT_THAT(said(detail(text)), HasSubstr("another brace between it and")) << text;
        EXPECT_THAT(said(detail(text)), Not(HasSubstr("more than 7"))) << text;
    }
    for (const auto* text : {"##00{0:0}", "##00{0:0;0:b}"}) {
        EXPECT_THAT(said(detail(text)), HasSubstr("this map changes nothing")) << text;
        EXPECT_THAT(said(detail(text)), Not(HasSubstr("more than 7"))) << text;
    }
    EXPECT_THAT(said(detail("##00{;;}")), HasSubstr("there is nothing in them"));
}

TEST(CatalogueClaims, APlaceholderInABlockCountsAsTheFirst)
{
    const auto text = said(detail("##00{0:##01} ##01{0:##00}"));

    EXPECT_THAT(text, HasSubstr("no effect on parameter 1, which is used before"));
    EXPECT_THAT(text, Not(HasSubstr("more than 7")));
}

TEST(CatalogueClaims, AnEmptyValueMayMatchWhereAnEnumerationGivesIt)
{
    const auto file = alarm({{"detail", "\"##00{:none;1:on}\""}, {"paramDesc", "\"0=Port\""}});
    const auto empty = enumerations(
        "[{\"name\": \"Port\", \"enum_member\": [{\"value\": \"0\", \"name\": \"\"}]}]");

    EXPECT_THAT(codesOf(check(file, "")), IsEmpty());
    EXPECT_THAT(codesOf(check(file, empty)), IsEmpty());
    EXPECT_THAT(codesOf(check(file, ports())), ElementsAre("map-empty-value"));
}

TEST(CatalogueClaims, AParameterOfAMapIsKnownToTheDetail)
{
    EXPECT_EQ(said(detail("##00{0:a} (b)", "##00")), "");
    EXPECT_THAT(codesOf(check(detail("##00{0:a} (b) {##01}", "##01"), "")),
                ElementsAre("map-without-effect"));
}

TEST(CatalogueClaims, AMissingValueIsToldAsItIsShown)
{
    EXPECT_THAT(said(detail("##00", "##01")), HasSubstr("with those before it only shows None"));
    EXPECT_THAT(said(detail("no values", "##00")), HasSubstr("only shows ##00 here"));
    EXPECT_EQ(said(detail("##00 ##05", "##01")), "");  // shows --, as in the detail
}

TEST(CatalogueClaims, AnOpenBraceLosesValuesOnlyWhereAPlaceholderTakesIt)
{
    EXPECT_THAT(said(detail("##01 ##00{a", "##01")),
                HasSubstr("parameters that no placeholder before \"##00\" names are not shown"));
    EXPECT_THAT(said(detail("##00 far away {a", "##01")), HasSubstr("never closed"));
    EXPECT_THAT(said(detail("##00 far away {a", "##01")), Not(HasSubstr("are not shown")));
}

TEST(CatalogueClaims, AFindingOfAFormedMarkHasAPlaceInTheText)
{
    const auto result = check(alarm({{"detail", "\"x#{a}#\""}}), "");

    for (const auto& finding : result.findings.list()) {
        EXPECT_EQ(finding.place.line, kDetail) << finding.message;
    }
    EXPECT_THAT(codesOf(result), testing::Contains("placeholder-at-end"));
}

/// A file as an editor under another system writes it.
TEST(CatalogueClaims, PlacesCountLinesOfTwoCharactersAndCharactersOfSeveralBytes)
{
    std::string file =
        "\xEF\xBB\xBF" + alarm({{"name", "\"°µ\""}, {"detail", "\"20 °C – ##1 x\""}});
    for (auto at = file.find('\n'); at != std::string::npos; at = file.find('\n', at + 2)) {
        file.insert(at, "\r");
    }

    const auto result = check(file, "");

    ASSERT_EQ(result.findings.list().size(), 1u);
    EXPECT_EQ(result.findings.list()[0].place.line, kDetail);
    EXPECT_EQ(result.findings.list()[0].place.column, 20u);
}

TEST(CatalogueClaims, AMarkOfByteOrderCountsOnTheFirstLineOnly)
{
    const auto result =
        check("{\"root\":\n{\"eventDefinition\": {\"param\": [ /* \xEF\xBB\xBF */ 7]}}}", "");

    ASSERT_EQ(result.findings.list().size(), 1u);
    EXPECT_EQ(result.findings.list()[0].place.line, 2u);
    EXPECT_EQ(result.findings.list()[0].place.column, 41u);
}

}  // namespace
