#include "running/MemoryBudget.h"

#include <gtest/gtest.h>

namespace
{

using vxlsync::MemoryBudget;

TEST(MemoryBudget, GivesAllItHasAndNoMore)
{
    MemoryBudget budget(100);

    EXPECT_TRUE(budget.take(60));
    EXPECT_FALSE(budget.take(41));
    EXPECT_TRUE(budget.take(40));
    EXPECT_EQ(budget.remaining(), 0u);
}

TEST(MemoryBudget, TakesNothingWhereItRefuses)
{
    MemoryBudget budget(100);

    EXPECT_FALSE(budget.take(101));

    EXPECT_EQ(budget.remaining(), 100u);
}

TEST(MemoryBudget, LendsAgainWhatIsGivenBack)
{
    MemoryBudget budget(100);
    EXPECT_TRUE(budget.take(100));

    budget.giveBack(30);

    EXPECT_TRUE(budget.take(30));
    EXPECT_FALSE(budget.take(1));
}

} // namespace
