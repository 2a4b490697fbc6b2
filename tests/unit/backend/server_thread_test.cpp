#include "backend/server_thread.h"

#include "backend/back_end.h"
#include "host/platform/durable_database.h"
#include "host/startup_error.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/backend/alarm_kit.h"
#include "tests/unit/backend/program.h"
#include "tests/unit/backend/socket_kit.h"

#include <gmock/gmock.h>

#include <csignal>
#include <filesystem>
#include <optional>
#include <pthread.h>

namespace {

using namespace talvik::test;
using namespace talvik::backend;
using talvik::DeviceConfigFile;
using talvik::DurableDatabase;

constexpr std::uint64_t kSubscribe = 4013;
constexpr std::uint64_t kOwn = 77;

class ServerThreadTest : public testing::Test {
protected:
    void start() { thread_.emplace(backEnd_.commands(), path(), &backEnd_); }
    std::string path() const { return dir_.path("socket"); }

    TempDir dir_;
    BackEnd backEnd_{DeviceConfigFile::load(sampleDeviceFile()), DurableDatabase::kInMemory};
    std::optional<ServerThread> thread_;
};

TEST_F(ServerThreadTest, EndsWithClientsOfEachKind)
{
    for (int i = 0; i < 100; ++i) {
        backEnd_.alarms().raise({5, 3, 1, std::string(32768, 'p')});
    }
    start();
    auto idle = Stream::connectedTo(path());
    auto subscribed = Stream::connectedTo(path());
    subscribed.send(Wire::request(1, kSubscribe).bytes());
    subscribed.receive(28);

    thread_.reset();

    EXPECT_TRUE(idle.closedByPeer());
    EXPECT_TRUE(subscribed.closedByPeer());
    EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(ServerThreadTest, EndsBeforeAnybodyCame)
{
    start();
    thread_.reset();

    EXPECT_FALSE(std::filesystem::exists(path()));
}

TEST_F(ServerThreadTest, ServesCommandsThatWereAddedWithAllSignalsBlocked)
{
    backEnd_.commands().add(kOwn, "OWN", [](const Package&, Package&) {
        sigset_t blocked;
        pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
        const bool all = sigismember(&blocked, SIGTERM) == 1 &&
                         sigismember(&blocked, SIGHUP) == 1 && sigismember(&blocked, SIGUSR1) == 1;
        return all ? 0x80000001U : 0x80000002U;
    });
    start();
    auto client = Stream::connectedTo(path());

    client.send(Wire::request(1, kOwn).bytes());

    EXPECT_EQ(client.receive(28), Wire::refusal(1, 0x80000001).bytes());
    sigset_t blocked;
    pthread_sigmask(SIG_SETMASK, nullptr, &blocked);
    EXPECT_EQ(sigismember(&blocked, SIGUSR1), 0) << "those of the caller stay as they were";
}

TEST_F(ServerThreadTest, NeedsNoBackEnd)
{
    CommandServer commands;
    commands.add(kOwn, "OWN", [](const Package&, Package&) { return 0x80000001U; });
    const ServerThread server(commands, path());
    auto client = Stream::connectedTo(path());

    client.send(Wire::request(1, kOwn).bytes());

    EXPECT_EQ(client.receive(28), Wire::refusal(1, 0x80000001).bytes());
}

TEST_F(ServerThreadTest, RefusesAPathThatIsTaken)
{
    start();

    EXPECT_THROW(ServerThread(backEnd_.commands(), path()), talvik::StartupError);
}

}  // namespace
