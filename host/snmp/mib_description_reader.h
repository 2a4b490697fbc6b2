#pragma once

#include "host/snmp/mib_description.h"

#include <string>

namespace talvik {

/// One reading of one MIB description file.
class MibDescriptionReader {
public:
    explicit MibDescriptionReader(const std::string& path) : path_(path) {}

    /// The description, checked as `MibDescription::load` says.
    MibDescription read() const;

private:
    std::string path_;
};

}  // namespace talvik
