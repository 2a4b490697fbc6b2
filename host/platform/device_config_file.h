#pragma once

#include <map>
#include <string>

namespace talvik {

/// The device configuration file: `<device><section name="..."><item name="..."
/// value="..."/></section></device>`.
class DeviceConfigFile {
public:
    /// No sections: every look-up fails.
    DeviceConfigFile() = default;

    /// Reads `path`. Throws `StartupError` when the file is missing, is no XML, or has an element,
    /// a missing attribute or a repeated section or item that does not belong there; the message
    /// names file, line and reason.
    static DeviceConfigFile load(const std::string& path);

    /// The value of `item` in `section`, or null when there is none. Valid as long as this object.
    const std::string* find(const std::string& section, const std::string& item) const;

    /// The value. Throws `StartupError` when it is missing.
    const std::string& text(const std::string& section, const std::string& item) const;

    /// The value as an unsigned decimal number of at most `limit`. Throws `StartupError` when it is
    /// missing or no such number.
    unsigned long long number(const std::string& section, const std::string& item,
                              unsigned long long limit = ~0ULL) const;

    /// Makes `value` the value of `item` in `section`: for programs that need no file for it.
    void set(const std::string& section, const std::string& item, std::string value);

    /// The path that it was read from.
    const std::string& path() const { return path_; }

private:
    std::string path_;
    std::map<std::string, std::map<std::string, std::string>> sections_;
};

/// Makes `file` what `CKELXmlConfig::getDeviceItem` and `CSNMPBasicImpl` answer from, and checks
/// the items that the host itself needs first. Call it before the module is loaded and before the
/// first thread starts. Throws `StartupError`, with the former configuration in place, when such an
/// item is missing or malformed.
void installDeviceConfig(DeviceConfigFile file);

}  // namespace talvik
