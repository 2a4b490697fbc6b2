#include "host/installation_paths.h"

namespace talvik {

namespace {

namespace fs = std::filesystem;

std::string firstThatExists(const std::vector<fs::path>& places)
{
    for (const auto& place : places) {
        std::error_code error;
        if (fs::exists(place, error)) {
            return place.string();
        }
    }
    return places.front().string();
}

}  // namespace

InstallationPaths::InstallationPaths(const fs::path& programDirectory)
    : prefix_(programDirectory.parent_path()),
      sourceRoot_(prefix_.parent_path().parent_path())
{
}

InstallationPaths InstallationPaths::ofThisProgram()
{
    std::error_code error;
    const auto program = fs::read_symlink("/proc/self/exe", error);
    return InstallationPaths(error ? fs::current_path() : program.parent_path());
}

std::string InstallationPaths::configFile(const std::string& name) const
{
    std::vector<fs::path> places;
    if (isSystemPrefix()) {
        places.emplace_back("/etc/talvik/" + name);
    }
    places.push_back(prefix_ / "etc/talvik" / name);
    places.push_back(prefix_ / "share/talvik/etc" / name);
    places.push_back(sourceRoot_ / "etc" / name);
    return firstThatExists(places);
}

std::string InstallationPaths::moduleFile(const std::string& name) const
{
    return firstThatExists({prefix_ / "lib/talvik" / name, prefix_ / "lib" / name});
}

std::string InstallationPaths::mibDirectory() const
{
    return firstThatExists({prefix_ / "share/talvik/mibs", sourceRoot_ / "mibs"});
}

std::string InstallationPaths::stateDirectory() const
{
    return isSystemPrefix() ? "/var/lib/talvik" : (prefix_ / "var/lib/talvik").string();
}

std::string InstallationPaths::installationRoot() const
{
    return firstThatExists({prefix_ / "share/talvik", sourceRoot_});
}

}  // namespace talvik
