#include "tests/support/built_tree.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/backend/program.h"
#include "tests/unit/tools/small_catalogue.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <json/json.h>

#include <sys/stat.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace talvik::test;
using testing::HasSubstr;

const std::string kDefinitions = sourceFile("etc/alarm-definitions.json");
const std::string kEnumerations = sourceFile("etc/alarm-enumerations.json");

class TalvikctlCatalogue : public testing::Test {
protected:
    /// Runs `talvikctl catalogue` with `words`; returns its exit status.
    int run(std::vector<std::string> words)
    {
        words.insert(words.begin(), "catalogue");
        Program program("talvikctl", words);
        const int result = program.wait();
        output_ = program.output();
        return result;
    }

    Json::Value json() const
    {
        Json::CharReaderBuilder strict;
        Json::CharReaderBuilder::strictMode(&strict.settings_);
        std::istringstream in(output_);
        Json::Value root;
        std::string errors;
        EXPECT_TRUE(Json::parseFromStream(strict, in, &root, &errors)) << errors << output_;
        return root;
    }

    TempDir dir_;
    std::string output_;
};

TEST_F(TalvikctlCatalogue, FindsNothingInTheShippedFiles)
{
    EXPECT_EQ(run({"check", kDefinitions, "--enums", kEnumerations, "--fail-on", "note"}), 0);

    EXPECT_EQ(output_, "81 alarms, 11 enumerations: 0 errors, 0 warnings, 0 notes\n");
}

TEST_F(TalvikctlCatalogue, PrintsFindingsAsCompilersDo)
{
    const auto file = dir_.write("a.json", alarm({{"detail", "\"20 °C ##1 x\""}}));

    EXPECT_EQ(run({"check", file}), 1);

    EXPECT_EQ(output_, file +
                           ":7:18: warning: \"##1 \" shows parameter 1, and the character behind "
                           "the digit is lost [placeholder-one-digit]\n"
                           "    to do: write the position with two digits, ##00 to ##99\n"
                           "1 alarm: 0 errors, 1 warning, 0 notes\n");
}

TEST_F(TalvikctlCatalogue, PrintsFindingsAsJson)
{
    const auto file = dir_.write("a.json", alarm({{"eventID", "\"0\""}}));
    const auto enums = dir_.write("e.json", enumerations("[]"));

    EXPECT_EQ(run({"check", file, "--enums", enums, "--json"}), 1);

    const auto root = json();
    EXPECT_EQ(root["definitions"], file);
    EXPECT_EQ(root["enumerationFile"], enums);
    EXPECT_EQ(root["alarms"], 1);
    EXPECT_EQ(root["enumerations"], 0);
    EXPECT_EQ(root["errors"], 1);
    EXPECT_EQ(root["warnings"], 0);
    EXPECT_EQ(root["notes"], 0);
    ASSERT_EQ(root["findings"].size(), 1u);
    const auto& finding = root["findings"][0];
    EXPECT_EQ(finding["code"], "id-zero");
    EXPECT_EQ(finding["severity"], "error");
    EXPECT_EQ(finding["file"], file);
    EXPECT_EQ(finding["line"], 3);
    EXPECT_EQ(finding["column"], 12);
    EXPECT_THAT(finding["message"].asString(), HasSubstr("never finds"));
    EXPECT_THAT(finding["advice"].asString(), HasSubstr("id of its own"));
}

TEST_F(TalvikctlCatalogue, ExitsByTheSeverityThatIsAskedFor)
{
    const auto note = dir_.write("note.json", alarm({{"name", "\"\""}}));
    const auto warning = dir_.write("warning.json", alarm({{"name", ""}}));

    EXPECT_EQ(run({"check", note}), 0);
    EXPECT_EQ(run({"check", note, "--fail-on", "note"}), 1);
    EXPECT_EQ(run({"check", warning}), 1);
    EXPECT_EQ(run({"check", warning, "--fail-on", "error"}), 0);
    EXPECT_EQ(run({"check", warning, "--fail-on", "never"}), 2);
}

TEST_F(TalvikctlCatalogue, TellsWhichFileItCannotRead)
{
    const auto missing = dir_.path("missing.json");

    EXPECT_EQ(run({"check", missing}), 2);
    EXPECT_EQ(output_, "talvikctl: cannot read " + missing + ": No such file or directory\n");
    EXPECT_EQ(run({"check", kDefinitions, "--enums", missing}), 2);
    EXPECT_EQ(output_, "talvikctl: cannot read " + missing + ": No such file or directory\n");
    EXPECT_EQ(run({"check", dir_.path()}), 2);
    EXPECT_THAT(output_, HasSubstr("it is no regular file"));
}

TEST_F(TalvikctlCatalogue, ExpandsFromOrdinaryFilesOnly)
{
    const auto pipe = dir_.path("pipe");
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    const auto refusal = "talvikctl: cannot read " + pipe + ": it is no regular file\n";

    EXPECT_EQ(run({"expand", "1", "--definitions", pipe, "--enums", kEnumerations}), 2);
    EXPECT_EQ(output_, refusal);
    EXPECT_EQ(run({"expand", "1", "--definitions", kDefinitions, "--enums", pipe}), 2);
    EXPECT_EQ(output_, refusal);
}

TEST_F(TalvikctlCatalogue, PrintsFindingsSafeForATerminal)
{
    const auto file =
        dir_.write("a.json", alarm({{"eventID", "\"1\\u001b[31mx\\na.json:1:1: error: \xB0\""}}));

    EXPECT_EQ(run({"check", file}), 1);

    EXPECT_EQ(output_.find('\x1B'), std::string::npos) << output_;
    EXPECT_EQ(output_.find("\na.json"), std::string::npos) << output_;
    EXPECT_THAT(output_, HasSubstr("\"1\\x1B[31mx\\x0Aa.json:1:1: error: \\xB0\" is no number"));
}

TEST_F(TalvikctlCatalogue, PrintsTextsSafeForATerminal)
{
    const auto file = dir_.write("a.json", alarm({{"name", "\"N\\u001b[31m\\nx\""},
                                                  {"detail", "\"##00 \\u009b \xB0 °\""},
                                                  {"location", "\"##05\""}}));
    const auto enums = dir_.write("e.json", enumerations("[]"));

    EXPECT_EQ(run({"expand", "1", "a\x1B]b", "--definitions", file, "--enums", enums}), 0);

    EXPECT_THAT(output_, HasSubstr("name        N\\x1B[31m\\x0Ax\n"));
    EXPECT_THAT(output_, HasSubstr("detail      a\\x1B]b \\xC2\\x9B \\xB0 °\n"));
    EXPECT_EQ(output_.find('\x1B'), std::string::npos) << output_;
}

TEST_F(TalvikctlCatalogue, WritesValidJsonWhateverTheFilesHold)
{
    const auto file = dir_.write(
        "a.json",
        alarm({{"eventID", "\"1\xB0\""}, {"name", "\"\xB0\\u001b\""}, {"location", "\"##\""}}));
    const auto enums = dir_.write("e.json", enumerations("[]"));

    EXPECT_EQ(run({"check", file, "--json"}), 1);
    EXPECT_THAT(json()["findings"][0]["message"].asString(), HasSubstr("\"1\\xB0\" is no number"));
    EXPECT_EQ(output_.find('\xB0'), std::string::npos);

    EXPECT_EQ(run({"expand", "1", "\xB0", "--definitions", file, "--enums", enums, "--json"}), 1);
    EXPECT_THAT(json()["log"][1]["text"].asString(), HasSubstr("using parameter \\xB0 failed"));
    EXPECT_EQ(output_.find('\xB0'), std::string::npos);

    dir_.write("a.json", alarm({{"name", "\"\xB0\\u001b\""}}));
    EXPECT_EQ(run({"expand", "1", "a", "--definitions", file, "--enums", enums, "--json"}), 0);
    EXPECT_EQ(json()["name"], "\\xB0\x1B");
    EXPECT_EQ(output_.find('\xB0'), std::string::npos);
}

TEST_F(TalvikctlCatalogue, ExplainsWrongUsage)
{
    const std::vector<std::vector<std::string>> wrong = {{},
                                                         {"check"},
                                                         {"check", "a", "b"},
                                                         {"expand"},
                                                         {"expand", "x"},
                                                         {"expand", "--", "-1"},
                                                         {"expand", "18446744073709551616"},
                                                         {"list"}};
    for (const auto& words : wrong) {
        EXPECT_EQ(run(words), 2) << output_;
        EXPECT_THAT(output_, HasSubstr("--help"));
    }
}

TEST_F(TalvikctlCatalogue, ExpandsAnAlarm)
{
    EXPECT_EQ(run({"expand", "504010006", "CTE0,2,900,3000", "--definitions", kDefinitions,
                   "--enums", kEnumerations}),
              0);

    EXPECT_EQ(output_, "name        Fan failed\n"
                       "location    Enclosure CTE0, fan 2\n"
                       "detail      Fan 2 of enclosure CTE0 turns at 900 rpm instead of at least "
                       "3000 rpm.\n"
                       "suggestion  Replace the fan module within 24 hours; do not leave its bay "
                       "open for longer than a minute.\n");
}

TEST_F(TalvikctlCatalogue, ExpandsAsJson)
{
    EXPECT_EQ(run({"expand", "502010003", "DAE1,0,4,10,42", "--definitions", kDefinitions,
                   "--enums", kEnumerations, "--json"}),
              0);

    const auto root = json();
    EXPECT_EQ(root["id"], "502010003");
    EXPECT_EQ(root["trapAlarmId"], 502010003);
    EXPECT_EQ(root["shown"], true);
    EXPECT_EQ(root["detail"],
              "Sensor 0 of enclosure DAE1 reads 4 °C; the normal range is 10–42 °C.");
    EXPECT_EQ(root["log"].size(), 0u);
}

TEST_F(TalvikctlCatalogue, ShowsWhatTheModuleWarnsOf)
{
    const auto file =
        dir_.write("a.json", definitions({definition({{"location", "\"##05\""}}), definition()}));
    const auto enums = dir_.write("e.json", enumerations("[]"));

    EXPECT_EQ(run({"expand", "1", "a,b", "--definitions", file, "--enums", enums}), 0);

    EXPECT_EQ(output_, "name        N\nlocation    None\ndetail      D\nsuggestion  S\n"
                       "the module logs a warning: repeated alarm 1, so ignore it.\n"
                       "the module logs a warning: alarm parameter pos 5 is out of range[0, 1]\n");
}

TEST_F(TalvikctlCatalogue, TellsThatAnAlarmIsNotShown)
{
    const auto file = dir_.write("a.json", alarm({{"detail", "\"##00 ##\""}}));
    const auto enums = dir_.write("e.json", enumerations("[]"));

    EXPECT_EQ(run({"expand", "1", "a", "--definitions", file, "--enums", enums}), 1);
    EXPECT_THAT(output_, HasSubstr("The module does not show alarm 1.\n"
                                   "the module logs an error: no alarm parameter pos\n"));
    EXPECT_EQ(run({"expand", "2", "a", "--definitions", file, "--enums", enums, "--json"}), 1);
    const auto root = json();
    EXPECT_EQ(root["shown"], false);
    EXPECT_FALSE(root.isMember("detail"));
    EXPECT_EQ(root["log"][0]["level"], "warning");
    EXPECT_EQ(root["log"][0]["text"], "alarm 2 desn't need to be parsed.");
}

TEST_F(TalvikctlCatalogue, TellsThatTheModuleCannotLoadTheFiles)
{
    const auto file = dir_.write("a.json", "{}");

    EXPECT_EQ(run({"expand", "1", "a", "--definitions", file, "--enums", kEnumerations}), 2);

    EXPECT_THAT(output_, HasSubstr("root element is invalid, should be (root)."));
    EXPECT_THAT(output_, HasSubstr("talvikctl catalogue check " + file));
}

}  // namespace
