#include "backend/notification_stream.h"

#include "host/platform/durable_database.h"
#include "tests/unit/backend/alarm_kit.h"

#include <gmock/gmock.h>

#include <cstring>

namespace {

using namespace talvik::test;
using namespace talvik::backend;
using talvik::DurableDatabase;

constexpr std::uint32_t kWindow = 1024;

/// The notification of alarm `serial`, whose identifier is the same number, as package `number`.
Wire packageOf(std::uint32_t number, std::uint32_t serial)
{
    return Wire::package(3, number, 0xFFFFFFFF, faultOf(serial, alarmOf(serial)));
}

class NotificationStreamTest : public testing::Test {
protected:
    void raise(std::uint32_t count)
    {
        for (; count != 0; --count) {
            store_.raise(alarmOf(store_.lastSerial() + 1));
        }
    }

    static Bytes all(NotificationStream& stream)
    {
        Bytes bytes;
        for (auto page = stream.next(); !page.empty(); page = stream.next()) {
            bytes.insert(bytes.end(), page.begin(), page.end());
        }
        return bytes;
    }

    /// The numbers of the packages in `bytes`.
    static std::vector<std::uint32_t> numbersIn(const Bytes& bytes)
    {
        std::vector<std::uint32_t> numbers;
        for (std::size_t at = 0; at < bytes.size();) {
            TLVMsgHeadV3 head;
            std::memcpy(static_cast<void*>(&head), bytes.data() + at, sizeof head);
            numbers.push_back(head.uiWord2);
            at += sizeof head + head.uiDataLen;
        }
        return numbers;
    }

    static void acknowledge(NotificationStream& stream, std::uint32_t number)
    {
        stream.acknowledge(Wire::acknowledgement(number).bytes());
    }

    static std::string refusalOf(NotificationStream& stream, const Wire& wire)
    {
        try {
            stream.acknowledge(wire.bytes());
        } catch (const ProtocolError& error) {
            return error.what();
        }
        return "not refused";
    }

    std::size_t left() const { return outboxOf(store_).size(); }

    AlarmStore store_{DurableDatabase::kInMemory};
    NotificationSource source_{store_};
};

using NotificationStreamOrder = NotificationStreamTest;
using NotificationStreamWindow = NotificationStreamTest;
using NotificationStreamAcknowledgement = NotificationStreamTest;

TEST_F(NotificationStreamOrder, IsThatOfTheOutboxAndNumbersBeginWithOne)
{
    raise(2);
    const auto stream = source_.subscribe();

    EXPECT_EQ(all(*stream), packageOf(1, 1).append(packageOf(2, 2)).bytes());
    EXPECT_FALSE(stream->mayHaveMore());
    raise(1);
    stream->wake();
    EXPECT_TRUE(stream->mayHaveMore());
    EXPECT_EQ(all(*stream), packageOf(3, 3).bytes());
}

TEST_F(NotificationStreamOrder, BeginsAgainWithWhatWasNotAcknowledged)
{
    raise(4);
    {
        const auto stream = source_.subscribe();
        all(*stream);
        acknowledge(*stream, 2);
        stream->commit();
    }

    const auto stream = source_.subscribe();

    EXPECT_EQ(all(*stream), packageOf(1, 3).append(packageOf(2, 4)).bytes());
}

TEST_F(NotificationStreamOrder, GoesOnAfterTheOutboxWasEmpty)
{
    raise(2);
    const auto stream = source_.subscribe();
    all(*stream);
    acknowledge(*stream, 2);
    stream->commit();
    ASSERT_EQ(left(), 0U);

    raise(1);
    stream->wake();

    EXPECT_EQ(all(*stream), packageOf(3, 3).bytes());
}

TEST_F(NotificationStreamOrder, IsReadInPages)
{
    raise(100);
    const auto stream = source_.subscribe();

    const auto page = numbersIn(stream->next());

    EXPECT_EQ(page.size(), 64U);
    EXPECT_EQ(numbersIn(stream->next()).front(), 65U);
}

TEST_F(NotificationStreamOrder, ReadsFewLongNotificationsAtOnce)
{
    for (int i = 0; i < 4; ++i) {
        store_.raise(alarmOf(1, std::string(32768, 'p')));
    }
    const auto stream = source_.subscribe();

    EXPECT_EQ(numbersIn(stream->next()).size(), 1U);
}

TEST_F(NotificationStreamWindow, KeepsPackagesBackUntilOneIsAcknowledged)
{
    raise(kWindow + 3);
    const auto stream = source_.subscribe();
    EXPECT_EQ(numbersIn(all(*stream)).back(), kWindow);
    EXPECT_FALSE(stream->mayHaveMore());
    stream->wake();
    EXPECT_FALSE(stream->mayHaveMore());

    acknowledge(*stream, 1);

    EXPECT_TRUE(stream->mayHaveMore());
    EXPECT_EQ(all(*stream), packageOf(kWindow + 1, kWindow + 1).bytes());
    acknowledge(*stream, kWindow + 1);
    EXPECT_EQ(numbersIn(all(*stream)), (std::vector<std::uint32_t>{kWindow + 2, kWindow + 3}));
}

TEST_F(NotificationStreamAcknowledgement, HoldsForAllBeforeItOnceItIsCommitted)
{
    raise(5);
    const auto stream = source_.subscribe();
    all(*stream);

    acknowledge(*stream, 2);
    acknowledge(*stream, 4);
    EXPECT_EQ(left(), 5U);
    stream->commit();

    EXPECT_EQ(left(), 1U);
    acknowledge(*stream, 5);
    stream->commit();
    EXPECT_EQ(left(), 0U);
}

TEST_F(NotificationStreamAcknowledgement, MayComeLateOrTwice)
{
    raise(3);
    const auto stream = source_.subscribe();
    all(*stream);
    acknowledge(*stream, 2);

    EXPECT_EQ(refusalOf(*stream, Wire::acknowledgement(2)), "not refused");
    EXPECT_EQ(refusalOf(*stream, Wire::acknowledgement(1)), "not refused");
    stream->commit();

    EXPECT_EQ(left(), 1U);
}

TEST_F(NotificationStreamAcknowledgement, IsRefusedForWhatWasNotSent)
{
    raise(3);
    const auto stream = source_.subscribe();
    EXPECT_EQ(refusalOf(*stream, Wire::acknowledgement(1)),
              "it acknowledges package 1, but only 0 were sent");
    all(*stream);

    EXPECT_EQ(refusalOf(*stream, Wire::acknowledgement(4)),
              "it acknowledges package 4, but only 3 were sent");
    EXPECT_EQ(refusalOf(*stream, Wire::acknowledgement(0)),
              "it acknowledges package 0, but only 3 were sent");
    EXPECT_EQ(refusalOf(*stream, Wire::acknowledgement(0xFFFFFFFF)),
              "it acknowledges package 4294967295, but only 3 were sent");
    acknowledge(*stream, 3);
    EXPECT_EQ(refusalOf(*stream, Wire::acknowledgement(4)),
              "it acknowledges package 4, but only 3 were sent");
}

TEST_F(NotificationStreamAcknowledgement, IsThePackageThatIsDue)
{
    raise(1);
    const auto stream = source_.subscribe();
    all(*stream);

    EXPECT_EQ(refusalOf(*stream, Wire::request(1, 4010)),
              "message kind 1 where an acknowledgement (4) is due");
    EXPECT_EQ(refusalOf(*stream, Wire::package(4, 1, 0, Wire::record(1, Wire()))),
              "an acknowledgement with 10 bytes of records, none are due");
    stream->commit();
    EXPECT_EQ(left(), 1U);
}

TEST_F(NotificationStreamTest, GoesToOneSubscriberAtATime)
{
    auto first = source_.subscribe();

    EXPECT_EQ(source_.subscribe(), nullptr);

    first.reset();
    EXPECT_NE(source_.subscribe(), nullptr);
}

TEST_F(NotificationStreamTest, EndsWhenItsNumbersAreUsedUp)
{
    NotificationSource source(store_, 3);
    raise(4);
    {
        const auto stream = source.subscribe();
        EXPECT_THROW(all(*stream), ProtocolError);
        acknowledge(*stream, 3);
        stream->commit();
    }

    EXPECT_EQ(all(*source.subscribe()), packageOf(1, 4).bytes());
}

}  // namespace
