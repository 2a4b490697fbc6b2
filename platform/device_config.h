#pragma once

#include <string>

/// The host's device configuration: named sections of key and text.
class CKELXmlConfig {
public:
    /// The configuration of this process, never null. Callable from any thread.
    static CKELXmlConfig* instance();

    /// Fills `value` with the text of `key` in `section` and returns 0; leaves `value` empty and
    /// returns -1 when either is missing. Sections that the module reads: "COMMAND" (back-end
    /// command numbers, decimal text) and "SNMP_CONF" (alarm file locations, relative to the
    /// installation root). Throws nothing but an allocation failure.
    int getDeviceItem(const std::string& section, const std::string& key, std::string& value);

private:
    CKELXmlConfig();
    ~CKELXmlConfig();
    CKELXmlConfig(const CKELXmlConfig&) = delete;
    CKELXmlConfig& operator=(const CKELXmlConfig&) = delete;
};
