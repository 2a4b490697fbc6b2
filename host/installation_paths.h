#pragma once

#include <filesystem>
#include <string>
#include <vector>

namespace talvik {

/// Where a program looks for its files when the user names none. All follows from where the program
/// itself lies, so an installation can be moved and a build tree works as it is:
///
/// - module: PREFIX/lib/talvik, or the lib/ beside the bin/ of a build tree;
/// - configuration: PREFIX/etc/talvik (/etc/talvik first, if PREFIX is /usr), then the delivery's
///   own in PREFIX/share/talvik/etc, or SOURCE/etc of a build tree;
/// - MIB descriptions: PREFIX/share/talvik/mibs, or SOURCE/mibs of a build tree;
/// - state: PREFIX/var/lib/talvik (/var/lib/talvik, if PREFIX is /usr).
///
/// PREFIX is the folder above that of the program (bin/ or sbin/), and a build tree's PREFIX is
/// SOURCE/build/PRESET.
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
