// docs/alarm-catalogue.md: its examples are run, and its list of findings is compared with the
// tool's.
#include "tests/support/built_tree.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/backend/program.h"
#include "tools/catalogue/finding_kinds.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

namespace {

using namespace talvik::test;

/// An example command and what it prints.
struct Example {
    std::string command;
    std::string output;
};

/// The page, read once: the files of its examples, written to a folder, and the examples.
class Page {
public:
    Page() : in_(sourceFile("docs/alarm-catalogue.md"))
    {
        std::string line;
        std::string fileName;
        while (std::getline(in_, line)) {
            text_ += line + "\n";
            const auto end = line.rfind("`:");
            if (end != std::string::npos && end + 2 == line.size()) {
                const auto start = line.rfind('`', end - 1) + 1;
                fileName = line.substr(start, end - start);
            } else if (line == "```json") {
                files_.push_back(fileName);
                folder_.write(fileName, block());
            } else if (line == "```console") {
                addExamples(block());
            }
        }
    }

    const std::string& text() const { return text_; }
    const std::vector<Example>& examples() const { return examples_; }

    /// The words of `command` behind the program's name, without quotes, files with their folder.
    std::vector<std::string> words(const std::string& command) const
    {
        std::istringstream in(command);
        std::vector<std::string> words;
        std::string word;
        in >> word;
        while (in >> word) {
            word.erase(std::remove(word.begin(), word.end(), '\''), word.end());
            words.push_back(isFile(word) ? folder_.path(word) : word);
        }
        return words;
    }

    std::string withoutFolder(std::string output) const
    {
        const auto prefix = folder_.path() + "/";
        for (auto at = output.find(prefix); at != std::string::npos; at = output.find(prefix)) {
            output.erase(at, prefix.size());
        }
        return output;
    }

private:
    std::string block()
    {
        std::string text;
        std::string line;
        while (std::getline(in_, line) && line != "```") {
            text += line + "\n";
        }
        return text;
    }

    void addExamples(const std::string& block)
    {
        std::istringstream in(block);
        std::string line;
        while (std::getline(in, line)) {
            if (line.rfind("$ ", 0) == 0) {
                examples_.push_back({line.substr(2), ""});
            } else if (!examples_.empty()) {
                examples_.back().output += line + "\n";
            }
        }
    }

    bool isFile(const std::string& word) const
    {
        return std::find(files_.begin(), files_.end(), word) != files_.end();
    }

    TempDir folder_;
    std::ifstream in_;
    std::string text_;
    std::vector<std::string> files_;
    std::vector<Example> examples_;
};

TEST(CataloguePage, ShowsWhatItsExamplesPrint)
{
    const Page page;
    ASSERT_EQ(page.examples().size(), 4u);

    for (const auto& example : page.examples()) {
        Program program("talvikctl", page.words(example.command));
        program.wait();
        EXPECT_EQ(page.withoutFolder(program.output()), example.output) << example.command;
    }
}

TEST(CataloguePage, ListsEveryFindingWithItsSeverity)
{
    const Page page;

    for (const auto& kind : talvik::ctl::kind::kAll) {
        const auto row = std::string("| `") + kind.code + "` | " + nameOf(kind.severity) + " | ";
        EXPECT_NE(page.text().find(row), std::string::npos) << row;
    }
}

}  // namespace
