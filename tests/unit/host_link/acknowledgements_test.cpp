#include "host/link/acknowledgements.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using talvik::Acknowledgements;

using Delivery = std::shared_ptr<void>;

std::vector<Delivery> expect(Acknowledgements& acknowledgements, int count)
{
    std::vector<Delivery> deliveries;
    for (int made = 0; made < count; ++made) {
        deliveries.push_back(acknowledgements.expect());
    }
    return deliveries;
}

TEST(Acknowledgements, NumbersFromOne)
{
    Acknowledgements acknowledgements;
    EXPECT_EQ(acknowledgements.next(), 1U);
    const auto first = acknowledgements.expect();
    EXPECT_EQ(acknowledgements.next(), 2U);
    EXPECT_FALSE(acknowledgements.due());
    EXPECT_EQ(acknowledgements.take(), std::nullopt);
}

TEST(Acknowledgements, WaitForTheLastCopy)
{
    Acknowledgements acknowledgements;
    auto delivery = acknowledgements.expect();
    auto copy = delivery;
    delivery.reset();
    EXPECT_FALSE(acknowledgements.due());
    copy.reset();
    EXPECT_TRUE(acknowledgements.due());
    EXPECT_EQ(acknowledgements.take(), 1U);
    EXPECT_FALSE(acknowledgements.due());
    EXPECT_EQ(acknowledgements.take(), std::nullopt);
}

TEST(Acknowledgements, CoverAllBefore)
{
    Acknowledgements acknowledgements;
    auto deliveries = expect(acknowledgements, 4);
    deliveries[2].reset();
    deliveries[1].reset();
    EXPECT_EQ(acknowledgements.take(), std::nullopt) << "the first is not settled";
    deliveries[0].reset();
    EXPECT_EQ(acknowledgements.take(), 3U);
    EXPECT_EQ(acknowledgements.next(), 5U);
    deliveries[3].reset();
    EXPECT_EQ(acknowledgements.take(), 4U);
    EXPECT_EQ(acknowledgements.next(), 5U);
}

TEST(Acknowledgements, NeverSkipANumberThatIsMadeInBetween)
{
    Acknowledgements acknowledgements;
    acknowledgements.expect();
    const auto second = acknowledgements.expect();
    acknowledgements.expect();
    EXPECT_EQ(acknowledgements.take(), 1U);
    EXPECT_EQ(acknowledgements.next(), 4U);
}

TEST(Acknowledgements, OfAnEarlierConnectionChangeNothing)
{
    Acknowledgements acknowledgements;
    auto old = acknowledgements.expect();
    acknowledgements = Acknowledgements();
    const auto current = acknowledgements.expect();
    old.reset();
    EXPECT_FALSE(acknowledgements.due());
}

}  // namespace
