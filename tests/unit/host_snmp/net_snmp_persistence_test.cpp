#include "host/snmp/net_snmp_persistence.h"

#include "host/snmp/durable_file.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

namespace {

using talvik::EngineState;

const std::string kUser = "usmUser 1 3 0x80 \"manager\" \"manager\" NULL .1 0x01 .1 0x02 \"\"\n";
const std::string kEnd = "# talvik-agentd: end of file\n";
const EngineState kEngine{*talvik::fromHex("8001869f050102030405060708"), 5};

class LibrarysFile : public testing::Test {
protected:
    std::string content(const std::string& name) const
    {
        return talvik::readFile(dir.path(name)).value_or("<none>");
    }

    talvik::test::TempDir dir;
};

TEST_F(LibrarysFile, TellsTheEngineOneBootEarlier)
{
    dir.write("talvik-agentd.conf", "engineBoots 99\n" + kUser + "oldEngineID 0x8000\n" + kEnd);

    talvik::storeForLibrary(dir.path(), kEngine);

    EXPECT_EQ(content("talvik-agentd.conf"),
              kUser + "engineBoots 4\noldEngineID 0x8001869f050102030405060708\n" + kEnd);
    const auto known = talvik::persistentEngineState(dir.path());
    ASSERT_TRUE(known.has_value());
    EXPECT_EQ(known->id, kEngine.id);
    EXPECT_EQ(known->boots, 4u);
}

TEST_F(LibrarysFile, IsMadeWhenThereIsNone)
{
    talvik::storeForLibrary(dir.path(), {kEngine.id, 1});

    EXPECT_EQ(content("talvik-agentd.conf"),
              "engineBoots 0\noldEngineID 0x8001869f050102030405060708\n" + kEnd);
}

TEST_F(LibrarysFile, WithoutAnEngineOfOursTellsNothing)
{
    for (const std::string text :
         {"", "engineBoots 4\n", "engineBoots x\noldEngineID 0x8001869f050102030405060708\n",
          "engineBoots 4\noldEngineID 0x80001f8880aabbccddee\n",
          "engineBoots 4\noldEngineID 0x8001869f05\n",
          "engineBoots 4294967296\noldEngineID 0x8001869f050102030405060708\n"}) {
        dir.write("talvik-agentd.conf", text);
        EXPECT_FALSE(talvik::persistentEngineState(dir.path()).has_value()) << text;
    }
}

TEST_F(LibrarysFile, ThatIsCompleteStaysAndBackupsGo)
{
    dir.write("talvik-agentd.conf", kUser + kEnd);
    dir.write("talvik-agentd.0.conf", "older\n" + kEnd);

    talvik::preparePersistentDirectory(dir.path());

    EXPECT_EQ(content("talvik-agentd.conf"), kUser + kEnd);
    EXPECT_EQ(content("talvik-agentd.0.conf"), "<none>");
}

TEST_F(LibrarysFile, ThatWasCutIsRestoredFromTheNewestCompleteBackup)
{
    for (const std::string& cut :
         {std::string(), kUser, kUser + kEnd.substr(0, 9), std::string("<missing>")}) {
        SCOPED_TRACE(cut);
        if (cut == "<missing>") {
            std::filesystem::remove(dir.path("talvik-agentd.conf"));
        } else {
            dir.write("talvik-agentd.conf", cut);
        }
        dir.write("talvik-agentd.0.conf", "old\n" + kEnd);
        dir.write("talvik-agentd.1.conf", kUser + kEnd);
        dir.write("talvik-agentd.2.conf", kUser);

        talvik::preparePersistentDirectory(dir.path());

        EXPECT_EQ(content("talvik-agentd.conf"), kUser + kEnd);
        for (const char* backup :
             {"talvik-agentd.0.conf", "talvik-agentd.1.conf", "talvik-agentd.2.conf"}) {
            EXPECT_EQ(content(backup), "<none>");
        }
    }
}

TEST_F(LibrarysFile, ThatWasCutWithoutABackupKeepsItsWholeLines)
{
    dir.write("talvik-agentd.conf", kUser + "engineBo");

    talvik::preparePersistentDirectory(dir.path());

    EXPECT_EQ(content("talvik-agentd.conf"), kUser);
}

}  // namespace
