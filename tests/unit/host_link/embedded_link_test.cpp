#include "host/link/embedded_link.h"

#include "backend/system_commands.h"
#include "host/link/socket_link.h"
#include "tests/support/temp_dir.h"
#include "tests/unit/backend/wire.h"
#include "tests/unit/host_link/link_kit.h"

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <stdexcept>

namespace {

using namespace talvik;
using namespace talvik::test;

constexpr std::uint64_t kGetWwn = 4001;
constexpr std::uint64_t kThrowing = 5;
constexpr std::uint64_t kRefusing = 6;

backend::CommandServer makeCommands()
{
    const TempDir dir;
    auto server = backend::makeCommandServer(DeviceConfigFile::load(dir.write(
        "device.xml", "<device><section name='COMMAND'><item name='GET_SYSTEM_WWN' value='4001'/>"
                      "</section><section name='SYSTEM'><item name='WWN' "
                      "value='2100a1b2c3d4e5f6'/></section></device>")));
    server.add(kThrowing, "THROWING", [](const Package&, Package&) -> std::uint32_t {
        throw std::runtime_error("broken");
    });
    server.add(kRefusing, "REFUSING", [](const Package&, Package&) { return 0x80000001U; });
    return server;
}

TEST(EmbeddedLink, AnswersFromItsOwnBackEnd)
{
    EmbeddedLink link(makeCommands());
    Package request;
    Package answer;
    addRecord(request, kGetWwn);
    addRecord(answer, 99);

    EXPECT_EQ(link.exchange(request, answer), 0);

    ASSERT_EQ(answer.oRecords.size(), 2U);
    EXPECT_EQ(answer[1]->ullRecordId, kGetWwn);
    EXPECT_EQ(textOf(answer, 1), "2100a1b2c3d4e5f6");
    EXPECT_EQ(link.name(), "embedded");
}

struct Request {
    const char* name;
    std::function<void(Package&)> fill;
    int code;

    friend std::ostream& operator<<(std::ostream& os, const Request& row) { return os << row.name; }
};

void addCell(Package& package, CTLVCell::ETLVType type, std::size_t size)
{
    const std::string value(size, 'x');
    auto cell = std::make_unique<CTLVCell>();
    cell->set_i(type, 1, value.data(), value.size());
    package.oRecords.back()->append(cell.release());
}

const Request kRequests[] = {
    {"KnownCommand", [](Package& p) { addRecord(p, kGetWwn); }, 0},
    {"KnownCommandWithAnAttribute",
     [](Package& p) {
         addRecord(p, kGetWwn);
         p.oHead.uiWord3 = 17;
         p.oHead.usShort0 = 1;
         p.oHead.usShort2 = 2;
         p.oHead.usShort3 = 3;
     },
     0},
    {"KnownCommandWithMoreRecords",
     [](Package& p) {
         addRecord(p, kGetWwn);
         addRecord(p, kThrowing);
     },
     0},
    {"UnknownCommand", [](Package& p) { addRecord(p, 4711); }, 0x1000010},
    {"NoCommand", [](Package&) {}, 0x1000011},
    {"ThrowingCommand", [](Package& p) { addRecord(p, kThrowing); }, 0x1000012},
    {"RefusingCommand", [](Package& p) { addRecord(p, kRefusing); }, static_cast<int>(0x80000001)},
    {"RequestThatDoesNotParse",
     [](Package& p) {
         addRecord(p, kGetWwn);
         addCell(p, static_cast<CTLVCell::ETLVType>(12), 4);
     },
     BackendLink::kUnreachable},
    {"RequestThatIsTooLarge",
     [](Package& p) {
         addRecord(p, kGetWwn);
         addCell(p, CTLVCell::TLV_OCTETS, 65535);
     },
     BackendLink::kProtocolError},
};

class EveryLink : public testing::TestWithParam<Request> {};

TEST_P(EveryLink, AnswersWithTheSameBytes)
{
    const TempDir dir;
    const auto commands = makeCommands();
    const RunningServer server(commands, dir.path("socket"));
    EmbeddedLink embedded(makeCommands());
    SocketLimits limits;
    limits.exchange = std::chrono::milliseconds(kWaitMs);
    SocketLink socket(dir.path("socket"), limits);
    Package request;
    GetParam().fill(request);
    Package fromEmbedded;
    Package fromSocket;

    EXPECT_EQ(embedded.exchange(request, fromEmbedded), GetParam().code);
    EXPECT_EQ(socket.exchange(request, fromSocket), GetParam().code);

    EXPECT_EQ(backend::encoded(fromEmbedded), backend::encoded(fromSocket));
    EXPECT_EQ(fromSocket.oRecords.empty(), GetParam().code != 0);
}

INSTANTIATE_TEST_SUITE_P(Requests, EveryLink, testing::ValuesIn(kRequests),
                         [](const auto& row) { return row.param.name; });

}  // namespace
