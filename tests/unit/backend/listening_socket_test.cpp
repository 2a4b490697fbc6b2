#include "backend/listening_socket.h"

#include "host/startup_error.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/backend/socket_kit.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sys/stat.h>

#include <filesystem>
#include <memory>

namespace {

using namespace talvik::backend;
using talvik::test::Stream;
using talvik::test::TempDir;
using testing::HasSubstr;

std::string refusalOf(const std::string& path)
{
    try {
        const ListeningSocket socket(path);
    } catch (const talvik::StartupError& error) {
        return error.what();
    }
    return "not refused";
}

/// What a back end that was killed leaves: a socket file that nobody listens on.
void leaveSocketBehind(const std::string& path)
{
    const FileDescriptor fd(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
    const auto address = unixAddress(path).value();
    ASSERT_EQ(::bind(fd.get(), asSocketAddress(address), sizeof address), 0);
}

TEST(ListeningSocket, IsForItsUserAndGroupOnly)
{
    const TempDir dir;
    const ListeningSocket socket(dir.path("socket"));

    struct stat found {};
    ASSERT_EQ(::stat(dir.path("socket").c_str(), &found), 0);
    EXPECT_EQ(found.st_mode & 07777U, 0660U);
}

TEST(ListeningSocket, RemovesItsFileAtTheEnd)
{
    const TempDir dir;

    EXPECT_EQ(refusalOf(dir.path("socket")), "not refused");

    EXPECT_FALSE(std::filesystem::exists(dir.path("socket")));
}

TEST(ListeningSocket, TakesThePlaceOfOneThatWasLeftBehind)
{
    const TempDir dir;
    leaveSocketBehind(dir.path("socket"));

    const ListeningSocket socket(dir.path("socket"));

    EXPECT_NO_THROW(Stream::connectedTo(dir.path("socket")));
}

TEST(ListeningSocket, RefusesAPathWhereAnotherListens)
{
    const TempDir dir;
    const ListeningSocket first(dir.path("socket"));

    EXPECT_EQ(refusalOf(dir.path("socket")),
              "cannot listen on unix:" + dir.path("socket") +
                  ": another program listens there: stop it or choose another path");
    EXPECT_NO_THROW(Stream::connectedTo(dir.path("socket"))) << "the first one must go on";
}

TEST(ListeningSocket, NeverRemovesAFileThatIsNoSocket)
{
    const TempDir dir;
    dir.write("socket", "precious");

    EXPECT_THAT(refusalOf(dir.path("socket")), HasSubstr("not a socket"));
    EXPECT_EQ(dir.read("socket"), "precious");
}

TEST(ListeningSocket, LeavesTheFileOfASuccessorAlone)
{
    const TempDir dir;
    auto first = std::make_unique<ListeningSocket>(dir.path("socket"));
    std::filesystem::remove(dir.path("socket"));
    const ListeningSocket second(dir.path("socket"));

    first.reset();

    EXPECT_NO_THROW(Stream::connectedTo(dir.path("socket")));
}

TEST(ListeningSocket, NamesADirectoryThatIsMissing)
{
    const TempDir dir;

    EXPECT_THAT(refusalOf(dir.path("missing/socket")),
                HasSubstr("directory " + dir.path("missing") + " cannot be opened"));
}

TEST(ListeningSocket, RefusesAPathThatIsTooLongOrEmpty)
{
    const TempDir dir;

    EXPECT_THAT(refusalOf(dir.path(std::string(108, 'x'))), HasSubstr("choose a shorter one"));
    EXPECT_THAT(refusalOf(""), HasSubstr("empty"));
}

}  // namespace
