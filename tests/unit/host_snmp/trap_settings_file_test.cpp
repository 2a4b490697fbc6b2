#include "host/snmp/trap_settings_file.h"

#include "host/startup_error.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/host_snmp/log_kit.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <future>
#include <string>

namespace {

using namespace std::chrono_literals;
using talvik::StartupError;
using talvik::TrapSettingsFile;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

const std::string kUser =
    R"({"users": [{"name": "u", "auth": "SHA-256", "authPassphrase": "12345678",)"
    R"( "privacy": "AES", "privacyPassphrase": "12345678"}]})";

class SettingsFile : public testing::Test {
protected:
    void write(const std::string& text, mode_t mode = S_IRUSR | S_IWUSR)
    {
        const auto path = dir_.write("traps.json", text);
        chmod(path.c_str(), mode);
    }

    std::string refusal()
    {
        try {
            file_.load();
        } catch (const StartupError& error) {
            return error.what();
        }
        return "<accepted>";
    }

    talvik::test::TempDir dir_;
    talvik::test::LoggerCapture log_{"host"};
    TrapSettingsFile file_{dir_.path("traps.json")};
    TrapSettingsFile::Time now_ = std::chrono::steady_clock::now();
};

TEST_F(SettingsFile, ThatIsMissingMeansTheDefaults)
{
    EXPECT_EQ(file_.load().community, "public");
    EXPECT_FALSE(file_.changed(now_).has_value());
}

TEST_F(SettingsFile, WithoutANameIsNeverLookedFor)
{
    TrapSettingsFile none("");

    EXPECT_EQ(none.load().community, "public");
    EXPECT_FALSE(none.changed(now_).has_value());
}

TEST_F(SettingsFile, ThatChangedIsReadAgain)
{
    write(R"({"community": "one"})");
    EXPECT_EQ(file_.load().community, "one");
    EXPECT_FALSE(file_.changed(now_).has_value());

    write(R"({"community": "other"})");

    EXPECT_FALSE(file_.changed(now_ + 999us).has_value()) << "a storm has few looks";
    const auto changed = file_.changed(now_ + 1ms);
    ASSERT_TRUE(changed.has_value());
    EXPECT_EQ(changed->community, "other");
    EXPECT_FALSE(file_.changed(now_ + 2ms).has_value());
    EXPECT_THAT(log_.lines(), ElementsAre(HasSubstr("read again")));
}

TEST_F(SettingsFile, ThatIsReplacedByOneOfTheSameSizeIsReadAgain)
{
    write(R"({"community": "one"})");
    file_.load();
    dir_.write("new.json", R"({"community": "two"})");

    std::filesystem::rename(dir_.path("new.json"), dir_.path("traps.json"));

    const auto changed = file_.changed(now_);
    ASSERT_TRUE(changed.has_value());
    EXPECT_EQ(changed->community, "two");
}

TEST_F(SettingsFile, ThatCameOrWentCounts)
{
    file_.load();
    write(R"({"community": "one"})");
    EXPECT_EQ(file_.changed(now_)->community, "one");

    std::filesystem::remove(dir_.path("traps.json"));

    EXPECT_EQ(file_.changed(now_ + 1s)->community, "public");
    EXPECT_THAT(log_.lines().back(), HasSubstr("the file is gone"));
}

TEST_F(SettingsFile, ThatBecomesWrongIsReportedOnce)
{
    write("{}");
    file_.load();
    write(R"({"community": 1})");

    EXPECT_FALSE(file_.changed(now_).has_value());
    EXPECT_FALSE(file_.changed(now_ + 1s).has_value());

    ASSERT_EQ(log_.lines().size(), 1u);
    EXPECT_THAT(log_.lines()[0], HasSubstr("traps.json, community: expected a text of 1 to 128 "
                                           "octets; the former settings stay in use"));
}

TEST_F(SettingsFile, WithPassphrasesIsForItsOwnerOnly)
{
    write(kUser, S_IRUSR | S_IWUSR);
    file_.load();
    EXPECT_THAT(log_.lines(), IsEmpty());

    write("{}", 0644);
    file_.load();
    EXPECT_THAT(log_.lines(), IsEmpty()) << "there are no passphrases";

    std::size_t warnings = 0;
    for (const mode_t mode : {0640U, 0604U, 0602U}) {
        write(kUser, mode);
        file_.load();
        ASSERT_EQ(log_.lines().size(), ++warnings) << mode;
        EXPECT_THAT(log_.lines().back(), HasSubstr("chmod 600"));
    }
}

TEST_F(SettingsFile, ThatCannotBeReadIsRefused)
{
    std::filesystem::create_directory(dir_.path("traps.json"));
    EXPECT_THAT(refusal(), HasSubstr("is no ordinary file"));
}

TEST_F(SettingsFile, ThatIsAFifoIsRefusedWithoutWaitingForAWriter)
{
    const auto path = dir_.path("traps.json");
    ASSERT_EQ(mkfifo(path.c_str(), S_IRUSR | S_IWUSR), 0);

    auto outcome = std::async(std::launch::async, [this] { return refusal(); });

    if (outcome.wait_for(20s) != std::future_status::ready) {
        ADD_FAILURE() << "it waits for a writer";
        const int writer = open(path.c_str(), O_RDWR | O_NONBLOCK);
        outcome.wait();
        close(writer);
    }
    EXPECT_THAT(outcome.get(), HasSubstr("is no ordinary file"));
}

TEST_F(SettingsFile, ThatIsEmptyIsRefused)
{
    write("");
    EXPECT_THAT(refusal(), HasSubstr("is empty"));
}

TEST_F(SettingsFile, ThatIsTooLargeIsRefused)
{
    write(std::string((1U << 20U) + 1, ' '));
    EXPECT_THAT(refusal(), HasSubstr("is larger than 1 MiB"));
}

}  // namespace
