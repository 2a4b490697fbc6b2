#pragma once

#include <cstdint>
#include <map>
#include <string>

namespace talvik {
class DeviceConfigFile;
}

namespace talvik::ctl {

/// What the numbers in packages stand for between agent and back end (docs/backend-protocol.md).
/// A number that nobody has named stays one: every function then returns an empty text.
class PackageNames {
public:
    PackageNames() = default;

    /// With the names of the commands that `device` numbers.
    explicit PackageNames(const DeviceConfigFile& device);

    /// The command whose number is the record identifier; "alarm" for alarm records.
    std::string record(std::uint64_t id) const;

    /// A cell of such a record.
    std::string cell(std::uint64_t recordId, unsigned tag) const;

    static std::string kind(unsigned kind);
    static std::string result(std::uint32_t code);
    static std::string type(unsigned type);

private:
    std::map<std::uint64_t, std::string> commands_;
};

}  // namespace talvik::ctl
