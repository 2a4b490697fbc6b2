#include "tools/strict_json.h"

#include <json/reader.h>

#include <memory>
#include <sstream>

namespace talvik::ctl {

namespace {

/// JsonCpp reports over several lines; a terminal wants one.
std::string onOneLine(const std::string& text)
{
    std::istringstream words(text);
    std::string joined;
    for (std::string word; words >> word;) {
        if (word != "*") {
            joined += (joined.empty() ? "" : " ") + word;
        }
    }
    return joined;
}

}  // namespace

std::optional<Json::Value> strictJson(const std::string& text, std::string& refusal)
{
    Json::CharReaderBuilder builder;
    Json::CharReaderBuilder::strictMode(&builder.settings_);
    const std::unique_ptr<Json::CharReader> reader(builder.newCharReader());
    Json::Value document;
    std::string errors;
    try {
        if (reader->parse(text.data(), text.data() + text.size(), &document, &errors)) {
            return document;
        }
        refusal = onOneLine(errors);
    } catch (const Json::Exception& error) {  // nesting beyond the reader's limit
        refusal = onOneLine(error.what());
    }
    return std::nullopt;
}

}  // namespace talvik::ctl
