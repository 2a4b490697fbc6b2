#include "backend/command_server.h"

#include "host/startup_error.h"
#include "tests/unit/backend/wire.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <new>
#include <stdexcept>

namespace {

using namespace talvik::backend;
using talvik::test::Wire;
using testing::HasSubstr;

constexpr std::uint64_t kCommand = 12;

void appendRecord(Package& reply, std::uint64_t id)
{
    auto record = std::make_unique<CTLVRecordV3>(id);
    reply.oRecords.push_back(record.get());
    record.release();
}

CommandServer serverWith(CommandServer::Command command)
{
    CommandServer server;
    server.add(kCommand, "COMMAND_UNDER_TEST", std::move(command));
    return server;
}

/// The reply to the command under test.
Bytes replyOf(const CommandServer& server)
{
    auto wire = Wire::request(7, kCommand).bytes();
    return server.serve(wire);
}

TEST(CommandServer, AnswersWithTheCommandsRecordsAndSuccess)
{
    const auto server = serverWith([](const Package&, Package& reply) {
        appendRecord(reply, 99);
        return result::kSuccess;
    });

    EXPECT_EQ(replyOf(server), Wire::header(2, 7, 0, 10).u64(99).u16(0).bytes());
}

TEST(CommandServer, HandsTheWholeRequestToTheCommand)
{
    std::size_t records = 0;
    std::uint32_t attribute = 0;
    const auto server = serverWith([&](const Package& request, Package&) {
        records = request.oRecords.size();
        attribute = request.oHead.uiWord3;
        return result::kSuccess;
    });
    auto wire = Wire::header(1, 7, 42, 20).u64(kCommand).u16(0).u64(5).u16(0).bytes();

    server.serve(wire);

    EXPECT_EQ(records, 2U);
    EXPECT_EQ(attribute, 42U);
}

TEST(CommandServer, CarriesTheReservedWordsUnchanged)
{
    const auto server = serverWith([](const Package&, Package&) { return result::kSuccess; });
    auto wire = Wire().u32(0x55555555).u32(3).u32(7).u32(0).u16(0xA0).u16(1).u16(0xA2).u16(0xA3);
    auto bytes = wire.u32(10).u64(kCommand).u16(0).bytes();

    const auto reply = server.serve(bytes);

    auto due = Wire().u32(0x55555555).u32(3).u32(7).u32(0).u16(0xA0).u16(2).u16(0xA2).u16(0xA3);
    EXPECT_EQ(reply, due.u32(0).bytes());
}

TEST(CommandServer, RefusesAnUnknownCommandWithoutRecords)
{
    auto wire = Wire::request(7, 4711).bytes();

    EXPECT_EQ(CommandServer().serve(wire), Wire::refusal(7, 0x1000010).bytes());
}

TEST(CommandServer, RefusesARequestThatNamesNoCommand)
{
    auto wire = Wire::header(1, 7, 0xFFFFFFFF, 0).bytes();

    EXPECT_EQ(CommandServer().serve(wire), Wire::refusal(7, 0x1000011).bytes());
}

TEST(CommandServer, PassesTheCommandsOwnCodeOnAndDropsItsRecords)
{
    const auto server = serverWith([](const Package&, Package& reply) {
        appendRecord(reply, 1);
        return std::uint32_t{0xFFFFFFFF};
    });

    EXPECT_EQ(replyOf(server), Wire::refusal(7, 0xFFFFFFFF).bytes());
}

TEST(CommandServer, TurnsWhateverACommandThrowsIntoACode)
{
    const CommandServer::Command throwing[] = {
        [](const Package&, Package&) -> std::uint32_t { throw std::runtime_error("broken"); },
        [](const Package&, Package&) -> std::uint32_t { throw std::bad_alloc(); },
        [](const Package&, Package& reply) -> std::uint32_t {
            appendRecord(reply, 1);
            throw 5;
        },
    };

    for (const auto& command : throwing) {
        EXPECT_EQ(replyOf(serverWith(command)), Wire::refusal(7, 0x1000012).bytes());
    }
}

TEST(CommandServer, SaysSoWhenAnAnswerDoesNotFitAPackage)
{
    const auto server = serverWith([](const Package&, Package& reply) {
        for (std::size_t i = 0; i <= kMaxRecords; ++i) {
            appendRecord(reply, 1);
        }
        return result::kSuccess;
    });

    EXPECT_EQ(replyOf(server), Wire::refusal(7, 0x1000013).bytes());
}

TEST(CommandServer, RefusesEveryKindThatIsNoRequest)
{
    for (const std::uint32_t kind : {0U, 2U, 3U, 4U, 5U, 0xFFFFU}) {
        auto wire = Wire::header(static_cast<std::uint16_t>(kind), 7, 0, 0).bytes();

        EXPECT_THROW(CommandServer().serve(wire), ProtocolError) << "kind " << kind;
    }
}

TEST(CommandServer, RefusesBytesWhoseRecordsDoNotParse)
{
    auto wire = Wire::header(1, 7, 0, 10).u64(kCommand).u16(1).bytes();

    EXPECT_THROW(CommandServer().serve(wire), ProtocolError);
}

TEST(CommandServer, RefusesTwoCommandsOfOneNumberByName)
{
    auto server = serverWith([](const Package&, Package&) { return result::kSuccess; });

    try {
        server.add(kCommand, "LATECOMER", [](const Package&, Package&) { return 0U; });
        FAIL() << "not refused";
    } catch (const talvik::StartupError& error) {
        EXPECT_THAT(error.what(), HasSubstr("COMMAND_UNDER_TEST and LATECOMER"));
        EXPECT_THAT(error.what(), HasSubstr("number 12"));
    }
}

}  // namespace
