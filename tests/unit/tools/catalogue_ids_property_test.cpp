// What the check says of ids and lost definitions, compared with what the module finds.

#include "tests/unit/tools/catalogue_property_kit.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <string>
#include <vector>

namespace {

using namespace talvik::ctl;
using namespace talvik::test;

constexpr std::array kIds = {"\"1\"", "\"01\"", "\" 1\"", "\"1x\"", "\"2\"", "\"-1\"",
                             "\"3\"", "\"+3\"", "\"0\"",  "\"\"",   "",      "\"x\""};

struct Element {
    std::string json;
    std::size_t line;
    std::string name;           ///< empty for a null
    unsigned long long id = 0;  ///< as the module reads it
};

class CatalogueIds : public CatalogueProperty {
protected:
    std::vector<Element> makeElements()
    {
        std::vector<Element> elements;
        std::size_t line = kElement;
        for (int i = 0; i < 4; ++i) {
            Element element{"null", line, "", 0};
            if (!oneIn(10)) {
                element = makeDefinition(line, "N" + std::to_string(i));
            }
            line += static_cast<std::size_t>(
                        std::count(element.json.begin(), element.json.end(), '\n')) +
                    1;
            elements.push_back(element);
        }
        return elements;
    }

private:
    Element makeDefinition(std::size_t line, const std::string& name)
    {
        const std::string id = oneIn(20) ? "7" : pick(kIds);
        Changes changes = {{"eventID", id}, {"name", "\"" + name + "\""}};
        if (oneIn(6)) {
            changes.emplace_back(pick(std::array{"reason", "paramDesc", "detail"}),
                                 pick(std::array{"8", "null", "[]", "{}"}));
        }
        const auto text = id.size() > 1 ? id.substr(1) : std::string();
        return {definition(changes), line, name,
                static_cast<unsigned long long>(std::strtoll(text.c_str(), nullptr, 10))};
    }
};

/// The names of the elements that are found by `id`, as the findings tell it.
std::string foundBy(unsigned long long id, const std::vector<Element>& elements,
                    const Findings& findings)
{
    for (std::size_t i = 0; i < elements.size(); ++i) {
        const auto end = i + 1 < elements.size() ? elements[i + 1].line : std::string::npos;
        bool ignored = elements[i].name.empty();
        for (const auto& finding : findings.list()) {
            const bool isHere = finding.place.line >= elements[i].line && finding.place.line < end;
            if (isHere && has(finding, "wrong-type")) {
                return "";  // nothing from here on
            }
            ignored = ignored || (isHere && has(finding, "repeated-id"));
        }
        if (!ignored && elements[i].id == id) {
            return elements[i].name;
        }
    }
    return "";
}

TEST_F(CatalogueIds, AreFoundAsTheCheckTells)
{
    for (int round = 0; round < 300; ++round) {
        const auto elements = makeElements();
        std::vector<std::string> texts;
        for (const auto& element : elements) {
            texts.push_back(element.json);
        }
        const auto file = definitions(texts);
        const auto result = check(file, "");
        for (const auto id : {1ULL, 2ULL, 3ULL, 18446744073709551615ULL}) {
            ASSERT_EQ(expand(file, enumerations("[]"), id, "").name,
                      foundBy(id, elements, result.findings))
                << id << "\n"
                << listed(result.findings) << file;
        }
        for (const auto& finding : result.findings.list()) {
            const auto behind = static_cast<std::size_t>(
                std::count_if(elements.begin(), elements.end(), [&finding](const auto& element) {
                    return element.line > finding.place.line;
                }));
            if (has(finding, "wrong-type")) {
                ASSERT_TRUE(says(finding, "and the " + std::to_string(behind) + " behind it"))
                    << finding.message;
            }
        }
    }
}

}  // namespace
