#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace talvik {

/// Where a program looks for its files when the user names none. All follows from where the program
/// itself lies, so an installation can be moved and a build tree works as it is:
///
/// | | installed in PREFIX/bin | built in SOURCE/build/PRESET/bin |
/// |---|---|---|
/// | module | PREFIX/lib | SOURCE/build/PRESET/lib |
/// | configuration | PREFIX/etc/talvik, PREFIX/share/talvik/etc (PREFIX /usr: /etc/talvik first) |
/// SOURCE/etc | | MIB descriptions | PREFIX/share/talvik/mibs | SOURCE/mibs | | state |
/// PREFIX/var/lib/talvik (PREFIX /usr: /var/lib/talvik) | SOURCE/build/PRESET/var/lib/talvik |
///
/// Of several places the first one that exists counts; if none does, the first, which a message can
/// then name.
class InstallationPaths {
public:
    /// For a program that lies in `programDirectory`.
    explicit InstallationPaths(const std::filesystem::path& programDirectory);

    /// For the running program.
    static InstallationPaths ofThisProgram();

    std::string configFile(const std::string& name) const;
    std::string moduleFile(const std::string& name) const;
    std::string mibDirectory() const;
    std::string stateDirectory() const;

    /// What file locations in the device configuration are relative to: PREFIX/share/talvik if it
    /// is there, else SOURCE. Either has a folder etc/ with the files of the delivery.
    std::string installationRoot() const;

private:
    bool isSystemPrefix() const { return prefix_ == "/usr"; }

    std::filesystem::path prefix_;
    std::filesystem::path sourceRoot_;  ///< if the program lies in a build tree
};

}  // namespace talvik
