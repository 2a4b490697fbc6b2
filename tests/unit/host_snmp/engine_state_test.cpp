#include "host/snmp/engine_state.h"

#include "host/snmp/durable_file.h"
#include "host/startup_error.h"
#include "tests/support/temp_dir.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <optional>
#include <string>

namespace {

using talvik::EngineState;
using talvik::EngineStateStore;
using talvik::StartupError;

const std::string kId = "8001869f050102030405060708";

std::string stateText(const std::string& id, const std::string& boots)
{
    return R"({"boots":)" + boots + R"(,"engineId":")" + id + "\"}\n";
}

class EngineStateFiles : public testing::Test {
protected:
    EngineStateStore store() const
    {
        return EngineStateStore(dir.path(), [this] { return fallback; });
    }

    std::string path(const char* name) const { return dir.path(name); }
    std::string content(const char* name) const
    {
        return talvik::readFile(path(name)).value_or("<none>");
    }

    void write(const char* name, const std::string& text) { dir.write(name, text); }

    talvik::test::TempDir dir;
    std::optional<EngineState> fallback;
};

TEST_F(EngineStateFiles, AreMadeWithANewIdWhenThereAreNone)
{
    const auto engine = store().begin();

    EXPECT_TRUE(talvik::isOwnEngineId(engine.id));
    EXPECT_EQ(engine.boots, 1u);
    EXPECT_EQ(content("engine.json"), stateText(talvik::toHex(engine.id), "1"));
    EXPECT_EQ(content("engine.bak.json"), content("engine.json"));
    EXPECT_EQ(std::filesystem::status(path("engine.json")).permissions(),
              std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);
}

TEST_F(EngineStateFiles, KeepTheIdAndCountTheBoots)
{
    const auto first = store().begin();
    const auto second = store().begin();

    EXPECT_EQ(second.id, first.id);
    EXPECT_EQ(second.boots, 2u);
}

TEST_F(EngineStateFiles, WithTheHigherBootsWin)
{
    write("engine.json", stateText(kId, "4"));
    write("engine.bak.json", stateText(kId, "9"));

    EXPECT_EQ(store().begin().boots, 10u);
}

TEST_F(EngineStateFiles, ThatAreDamagedAreSetAsideAndRestored)
{
    for (const std::string& damage :
         {std::string(), std::string("{"), std::string(40, '\0'), stateText(kId, "0"),
          stateText(kId, "-1"), stateText(kId, "2147483648"), stateText(kId, "1.5"),
          stateText(kId, "\"7\""), stateText("80001f88050102030405060708", "7"),
          stateText("8001869f05", "7"), stateText("8001869F050102030405060708", "7"),
          stateText(kId, "7") + "x", stateText(kId, "7").substr(0, 30), std::string(5000, '[')}) {
        SCOPED_TRACE(damage);
        write("engine.json", damage);
        write("engine.bak.json", stateText(kId, "6"));
        std::filesystem::remove(path("engine.json.damaged-1"));

        const auto engine = store().begin();

        EXPECT_EQ(talvik::toHex(engine.id), kId);
        EXPECT_EQ(engine.boots, 7u);
        EXPECT_EQ(content("engine.json"), stateText(kId, "7"));
        EXPECT_EQ(content("engine.json.damaged-1"), damage);
    }
}

TEST_F(EngineStateFiles, ThatWereSetAsideBeforeStay)
{
    write("engine.bak.json.damaged-1", "older");
    write("engine.json", stateText(kId, "1"));
    write("engine.bak.json", "newer");

    store().begin();

    EXPECT_EQ(content("engine.bak.json.damaged-1"), "older");
    EXPECT_EQ(content("engine.bak.json.damaged-2"), "newer");
}

TEST_F(EngineStateFiles, ThatAreBothDamagedNeedTheFallback)
{
    write("engine.json", "{");
    write("engine.bak.json", "");

    EXPECT_THROW(store().begin(), StartupError);
    EXPECT_EQ(content("engine.json"), "{") << "nothing is touched";

    fallback = EngineState{*talvik::fromHex(kId), 41};
    EXPECT_EQ(store().begin().boots, 42u);
    EXPECT_EQ(content("engine.bak.json"), stateText(kId, "42"));
}

TEST_F(EngineStateFiles, OfWhichTheOnlyOneIsDamagedAreNoNewEngine)
{
    write("engine.bak.json", "{");

    EXPECT_THROW(store().begin(), StartupError);
}

TEST_F(EngineStateFiles, ThatAreOlderThanTheLibrarysOwnFileDoNotTurnTheBootsBack)
{
    write("engine.bak.json", stateText(kId, "3"));
    fallback = EngineState{*talvik::fromHex(kId), 13};

    EXPECT_EQ(store().begin().boots, 14u);
}

TEST_F(EngineStateFiles, DoNotTakeTheBootsOfAnotherEngine)
{
    write("engine.json", stateText(kId, "3"));
    fallback = EngineState{*talvik::fromHex("8001869f05ffffffffffffffff"), 13};

    EXPECT_EQ(store().begin().boots, 4u);
}

TEST_F(EngineStateFiles, ThatAreGoneFromAUsedFolderAreLost)
{
    write("mark", "");
    const EngineStateStore used(
        dir.path(), [] { return std::nullopt; }, dir.path("mark"));

    EXPECT_THROW(used.begin(), StartupError);

    const EngineStateStore fresh(
        dir.path(), [] { return std::nullopt; }, dir.path("no mark"));
    EXPECT_EQ(fresh.begin().boots, 1u);
}

TEST_F(EngineStateFiles, WithDifferentIdsAreRefused)
{
    write("engine.json", stateText(kId, "4"));
    write("engine.bak.json", stateText("8001869f05ffffffffffffffff", "4"));

    EXPECT_THROW(store().begin(), StartupError);
}

TEST_F(EngineStateFiles, StopCountingAtTheCeiling)
{
    write("engine.json", stateText(kId, "2147483646"));

    EXPECT_EQ(store().begin().boots, talvik::kMaxEngineBoots);
    EXPECT_EQ(store().begin().boots, talvik::kMaxEngineBoots);
}

TEST_F(EngineStateFiles, AreNotTouchedByAPreview)
{
    write("engine.json", stateText(kId, "4"));
    write("engine.bak.json", "{");

    EXPECT_EQ(store().preview().boots, 5u);
    EXPECT_EQ(content("engine.json"), stateText(kId, "4"));
    EXPECT_EQ(content("engine.bak.json"), "{");
}

TEST_F(EngineStateFiles, ThatCannotBeWrittenAreAnError)
{
    std::filesystem::create_directory(path("engine.bak.json.new"));

    EXPECT_THROW(store().begin(), StartupError);
}

}  // namespace
