#include "host/snmp/line_budget.h"

#include "tests/unit/host_snmp/log_kit.h"

#include <gtest/gtest.h>

namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

class LineBudgetOf : public testing::Test {
protected:
    /// Asks for `lines` and counts those that may be written.
    int written(int lines)
    {
        int count = 0;
        for (int i = 0; i < lines; ++i) {
            count += budget.take() ? 1 : 0;
        }
        return count;
    }

    talvik::test::ManualClock clock;
    talvik::LineBudget budget = clock.budget();
};

TEST_F(LineBudgetOf, TwentyLinesMayBeWrittenAtOnce)
{
    EXPECT_EQ(written(10000), 20);
    EXPECT_EQ(budget.leftOut(), 9980u);
}

TEST_F(LineBudgetOf, EachSecondEarnsALine)
{
    written(20);

    clock.advance(milliseconds(999));
    EXPECT_EQ(written(5), 0);
    clock.advance(milliseconds(1));
    EXPECT_EQ(written(5), 1);
    clock.advance(milliseconds(2500));
    EXPECT_EQ(written(5), 2);
    clock.advance(milliseconds(500));
    EXPECT_EQ(written(5), 1);
}

TEST_F(LineBudgetOf, NoMoreThanTwentyAreSaved)
{
    clock.advance(seconds(3600));
    EXPECT_EQ(written(100), 20);

    clock.advance(seconds(3600));
    EXPECT_EQ(written(100), 20);
}

TEST_F(LineBudgetOf, TheNextLineLearnsHowManyWereLeftOut)
{
    EXPECT_EQ(budget.take(), 0u);
    written(22);

    clock.advance(seconds(2));

    EXPECT_EQ(budget.take(), 3u);
    EXPECT_EQ(budget.take(), 0u);
}

}  // namespace
