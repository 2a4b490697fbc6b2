#include "host/snmp/configuration_words.h"

#include "host/snmp/library_log.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host_snmp/configuration_kit.h"

#include <gmock/gmock.h>

#include <string>
#include <vector>

namespace {

using talvik::ConfigurationLine;
using talvik::SecretText;
using talvik::test::FakeWords;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testing::SizeIs;

class ConfigurationWordsOf : public testing::Test {
protected:
    std::vector<ConfigurationLine> collect(const std::string& text)
    {
        std::vector<ConfigurationLine> lines;
        EXPECT_TRUE(talvik::collectLines(folder.write("file", text), lines));
        return lines;
    }

    const talvik::test::TempDir folder;
    FakeWords words{{"rocommunity", "view", "sysLocation"}};
    talvik::LibraryLog log;
};

TEST_F(ConfigurationWordsOf, AreCollectedAndNotTakenOver)
{
    EXPECT_THAT(collect("# a comment\nroCommunity a b\n\nsysLocation \"x y\"  \nview\n"),
                ElementsAre(Pair("rocommunity", "a b"), Pair("syslocation", "\"x y\"")));
    EXPECT_THAT(words.taken(), IsEmpty());
}

TEST_F(ConfigurationWordsOf, IncludedFilesAreCollectedInTheirPlace)
{
    const auto other = folder.write("other", "rocommunity b\n");

    EXPECT_THAT(
        collect("rocommunity a\nincludeFile " + other + "\nrocommunity c\n"),
        ElementsAre(Pair("rocommunity", "a"), Pair("rocommunity", "b"), Pair("rocommunity", "c")));
}

TEST_F(ConfigurationWordsOf, ASectionOfTheAgentIsNotTakenOverEither)
{
    EXPECT_THAT(collect("[talvik-agentd]\nrocommunity a\n"), ElementsAre(Pair("rocommunity", "a")));
    EXPECT_THAT(collect("[talvik-agentd] rocommunity b\n"), ElementsAre(Pair("rocommunity", "b")));

    EXPECT_THAT(words.taken(), IsEmpty());
}

TEST_F(ConfigurationWordsOf, ASectionOfTheLibraryIsNotTakenOverEither)
{
    const auto* const name = "unit-test";
    netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_SECNAME, name);
    const auto text = std::string("[snmp]\ndefSecurityName other\n");

    EXPECT_THAT(collect(text), ElementsAre(Pair("defsecurityname", "other")));
    EXPECT_TRUE(talvik::takeWords({"view"}, folder.path("file")));

    EXPECT_STREQ(netsnmp_ds_get_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_SECNAME), name);
    netsnmp_ds_set_string(NETSNMP_DS_LIBRARY_ID, NETSNMP_DS_LIB_SECNAME, nullptr);
}

TEST_F(ConfigurationWordsOf, AFileThatIsNotThereCannotBeRead)
{
    std::vector<ConfigurationLine> lines;

    EXPECT_FALSE(talvik::collectLines(folder.path("none"), lines));
    EXPECT_FALSE(talvik::takeWords({"view"}, folder.path("none")));
}

TEST_F(ConfigurationWordsOf, OfAListAreTakenAndOthersPassedOver)
{
    const auto file = folder.write("file", "rocommunity a\nview v\nsysLocation c\n"
                                           "[talvik-agentd]\nview w\nsysLocation d\n");

    EXPECT_TRUE(talvik::takeWords({"view", "syslocation"}, file));

    EXPECT_THAT(words.taken(), ElementsAre("view v", "sysLocation c", "view w", "sysLocation d"));
}

TEST_F(ConfigurationWordsOf, OneLineIsTakenWhateverItsWordLooksLike)
{
    talvik::takeLine("syslocation", SecretText{"the cellar"});
    talvik::takeLine("nonsense", SecretText{"x"});

    EXPECT_THAT(words.taken(), ElementsAre("sysLocation the cellar"));
}

TEST_F(ConfigurationWordsOf, ThatShareWhatDropsThemAreDroppedOnce)
{
    talvik::dropWords({"view", "rocommunity"});

    EXPECT_EQ(words.drops(), 1);
    talvik::dropWords({"nonsense"});
    EXPECT_EQ(words.drops(), 1);
}

TEST_F(ConfigurationWordsOf, AreTheLibrarysOwnAgainAfterwards)
{
    collect("rocommunity a\n");
    talvik::takeWords({"view"}, folder.path("file"));

    talvik::takeLine("rocommunity", SecretText{"a"});

    EXPECT_THAT(words.taken(), SizeIs(1));
}

}  // namespace
