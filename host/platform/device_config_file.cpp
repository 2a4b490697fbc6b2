#include "host/platform/device_config_file.h"

#include "host/startup_error.h"

#include <pugixml.hpp>

#include <algorithm>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <utility>

namespace talvik {

namespace {

constexpr std::uintmax_t kMaxFileSize = std::uintmax_t{16} << 20U;

/// A pipe would hold the start up until somebody writes to it, a device may have no end.
void requireOrdinaryFile(const std::string& path)
{
    std::error_code error;
    const auto status = std::filesystem::status(path, error);
    const std::string start = "cannot read the device configuration " + path + ": ";
    if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
        throw StartupError(start + "it is no regular file");
    }
    const auto size = std::filesystem::file_size(path, error);
    if (!error && size > kMaxFileSize) {
        throw StartupError(start + "it is larger than 16 MiB");
    }
}

std::string readFile(const std::string& path)
{
    requireOrdinaryFile(path);
    errno = 0;
    std::ifstream in(path, std::ios::binary);
    std::ostringstream text;
    text << in.rdbuf();
    if (!in.is_open() || text.bad()) {
        throw StartupError("cannot read the device configuration " + path + ": " +
                           std::strerror(errno));
    }
    return text.str();
}

/// One parse of one file: knows where it is, so that every refusal names file and line.
class Reader {
public:
    Reader(const std::string& path, std::string text) : path_(path), text_(std::move(text)) {}

    pugi::xml_node root()
    {
        const auto result = document_.load_buffer(text_.data(), text_.size());
        if (!result) {
            refuse(result.offset, result.description());
        }
        const auto device = document_.document_element();
        expect(device, "device");
        return device;
    }

    void expect(const pugi::xml_node& node, const char* name) const
    {
        if (std::strcmp(node.name(), name) != 0) {
            refuse(node.offset_debug(),
                   std::string("expected <") + name + ">, found <" + node.name() + ">");
        }
    }

    std::string attribute(const pugi::xml_node& node, const char* name) const
    {
        const auto found = node.attribute(name);
        if (!found) {
            refuse(node.offset_debug(),
                   std::string("<") + node.name() + "> lacks the attribute " + name);
        }
        return found.value();
    }

    [[noreturn]] void refuse(std::ptrdiff_t offset, const std::string& reason) const
    {
        const auto limit =
            std::clamp<std::ptrdiff_t>(offset, 0, static_cast<std::ptrdiff_t>(text_.size()));
        const auto line = 1 + std::count(text_.begin(), text_.begin() + limit, '\n');
        throw StartupError("device configuration " + path_ + ", line " + std::to_string(line) +
                           ": " + reason);
    }

private:
    const std::string& path_;
    std::string text_;
    pugi::xml_document document_;
};

}  // namespace

DeviceConfigFile DeviceConfigFile::load(const std::string& path)
{
    Reader reader(path, readFile(path));
    DeviceConfigFile file;
    file.path_ = path;
    for (const auto& section : reader.root().children()) {
        reader.expect(section, "section");
        const auto sectionName = reader.attribute(section, "name");
        auto [items, freshSection] = file.sections_.try_emplace(sectionName);
        if (!freshSection) {
            reader.refuse(section.offset_debug(),
                          "section \"" + sectionName + "\" stands here twice");
        }
        for (const auto& item : section.children()) {
            reader.expect(item, "item");
            const auto name = reader.attribute(item, "name");
            if (!items->second.emplace(name, reader.attribute(item, "value")).second) {
                reader.refuse(item.offset_debug(), "item \"" + name + "\" stands in section \"" +
                                                       sectionName + "\" twice");
            }
        }
    }
    return file;
}

void DeviceConfigFile::set(const std::string& section, const std::string& item, std::string value)
{
    sections_[section][item] = std::move(value);
}

const std::string* DeviceConfigFile::find(const std::string& section, const std::string& item) const
{
    const auto items = sections_.find(section);
    if (items == sections_.end()) {
        return nullptr;
    }
    const auto value = items->second.find(item);
    return value == items->second.end() ? nullptr : &value->second;
}

const std::string& DeviceConfigFile::text(const std::string& section, const std::string& item) const
{
    const auto* value = find(section, item);
    if (value == nullptr) {
        throw StartupError("device configuration " + path_ + ": section \"" + section +
                           "\" lacks the item \"" + item + "\"");
    }
    return *value;
}

unsigned long long DeviceConfigFile::number(const std::string& section, const std::string& item,
                                            unsigned long long limit) const
{
    const auto& value = text(section, item);
    unsigned long long number = 0;
    const auto* end = value.data() + value.size();
    const auto result = std::from_chars(value.data(), end, number);
    if (result.ec != std::errc() || result.ptr != end || number > limit) {
        throw StartupError("device configuration " + path_ + ": section \"" + section +
                           "\", item \"" + item + "\" is \"" + value +
                           "\", not a decimal number of at most " + std::to_string(limit));
    }
    return number;
}

}  // namespace talvik
