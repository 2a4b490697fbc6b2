#include "host/installation_paths.h"

#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <string>

namespace {

namespace fs = std::filesystem;
using talvik::InstallationPaths;

constexpr const char* kModule = "libSnmpTalvikMibModule.so";

/// A folder that programs could be installed or built in.
class InstallationPathsOf : public testing::Test {
protected:
    std::string at(const std::string& name) const { return root.path(name); }

    void make(const std::string& name) const
    {
        fs::create_directories(fs::path(at(name)).parent_path());
        std::ofstream(at(name)) << "here";
    }

    InstallationPaths ofProgramIn(const std::string& folder) const
    {
        return InstallationPaths(at(folder));
    }

    talvik::test::TempDir root;
};

TEST_F(InstallationPathsOf, AnInstalledProgramHasItsModuleInAFolderOfItsOwn)
{
    make("prefix/lib/talvik/libSnmpTalvikMibModule.so");
    make("prefix/lib/libSnmpTalvikMibModule.so");

    EXPECT_EQ(ofProgramIn("prefix/sbin").moduleFile(kModule),
              at("prefix/lib/talvik/libSnmpTalvikMibModule.so"));
    EXPECT_EQ(ofProgramIn("prefix/bin").moduleFile(kModule),
              at("prefix/lib/talvik/libSnmpTalvikMibModule.so"));
}

TEST_F(InstallationPathsOf, ABuiltProgramHasItsModuleInTheBuildTree)
{
    make("source/build/release/lib/libSnmpTalvikMibModule.so");

    EXPECT_EQ(ofProgramIn("source/build/release/bin").moduleFile(kModule),
              at("source/build/release/lib/libSnmpTalvikMibModule.so"));
}

TEST_F(InstallationPathsOf, AMissingModuleIsNamedWhereItWouldBeInstalled)
{
    EXPECT_EQ(ofProgramIn("prefix/sbin").moduleFile(kModule),
              at("prefix/lib/talvik/libSnmpTalvikMibModule.so"));
}

TEST_F(InstallationPathsOf, WhatTheUserHasConfiguredGoesBeforeTheDelivery)
{
    make("prefix/share/talvik/etc/talvik-device.xml");
    EXPECT_EQ(ofProgramIn("prefix/sbin").configFile("talvik-device.xml"),
              at("prefix/share/talvik/etc/talvik-device.xml"));

    make("prefix/etc/talvik/talvik-device.xml");
    EXPECT_EQ(ofProgramIn("prefix/sbin").configFile("talvik-device.xml"),
              at("prefix/etc/talvik/talvik-device.xml"));
}

TEST_F(InstallationPathsOf, ABuiltProgramTakesTheFilesOfTheSource)
{
    make("source/etc/talvik-device.xml");
    make("source/mibs/KEL-TALVIK-MIB.json");
    const auto paths = ofProgramIn("source/build/release/bin");

    EXPECT_EQ(paths.configFile("talvik-device.xml"), at("source/etc/talvik-device.xml"));
    EXPECT_EQ(paths.mibDirectory(), at("source/mibs"));
    EXPECT_EQ(paths.installationRoot(), at("source"));
    EXPECT_EQ(paths.stateDirectory(), at("source/build/release/var/lib/talvik"));
}

TEST_F(InstallationPathsOf, AnInstalledProgramTakesTheFilesOfItsPrefix)
{
    make("prefix/share/talvik/mibs/KEL-TALVIK-MIB.json");
    const auto paths = ofProgramIn("prefix/sbin");

    EXPECT_EQ(paths.mibDirectory(), at("prefix/share/talvik/mibs"));
    EXPECT_EQ(paths.installationRoot(), at("prefix/share/talvik"));
    EXPECT_EQ(paths.stateDirectory(), at("prefix/var/lib/talvik"));
}

TEST(InstallationPathsOfTheSystem, KeepConfigurationAndStateOutsideThePrefix)
{
    const InstallationPaths paths("/usr/sbin");

    EXPECT_EQ(paths.configFile("no-such-file.conf"), "/etc/talvik/no-such-file.conf");
    EXPECT_EQ(paths.stateDirectory(), "/var/lib/talvik");
    EXPECT_EQ(paths.moduleFile("no-such-module.so"), "/usr/lib/talvik/no-such-module.so");
}

}  // namespace
