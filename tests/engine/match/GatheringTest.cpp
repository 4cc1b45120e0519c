#include "match/Gathering.h"

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using vxlsync::Alignment;
using vxlsync::Gathering;

// A line over so many seconds.
Alignment lineOf(double offset, double seconds = 10.0, double slope = 0.0)
{
    Alignment line;
    line.offset = offset;
    line.end = seconds;
    line.middle = seconds / 2.0;
    line.slope = slope;
    line.slopeError = 1e-6;
    return line;
}

TEST(Gathering, BeginsWithEachRecordingByItself)
{
    const Gathering gathering({10.0, 20.0});

    EXPECT_THAT(gathering.names(), ElementsAre(0, 1));
    EXPECT_THAT(gathering.membersOf(1), ElementsAre(1));
    EXPECT_EQ(gathering.endOf(1), 20.0);
}

TEST(Gathering, NamesAGroupAfterItsLowestMember)
{
    Gathering gathering({10.0, 10.0, 10.0});

    EXPECT_TRUE(gathering.join(1, 2, lineOf(3.0)));
    EXPECT_TRUE(gathering.join(2, 0, lineOf(3.0)));

    EXPECT_THAT(gathering.names(), ElementsAre(0));
    EXPECT_THAT(gathering.membersOf(0), ElementsAre(0, 1, 2));
    EXPECT_EQ(gathering.groupOf(2), 0u);
}

TEST(Gathering, LaysGroupsToEachOtherAsTheLineSays)
{
    Gathering gathering({10.0, 10.0, 10.0, 10.0});
    gathering.join(0, 1, lineOf(4.0));
    gathering.join(2, 3, lineOf(5.0));

    gathering.join(1, 3, lineOf(-2.0));

    // 1 starts 4 s after 0, 3 starts 2 s before 1 and 5 s after 2: 2 starts 3 s before 0.
    EXPECT_DOUBLE_EQ(gathering.lineOf(0, 2).offset, -3.0);
    EXPECT_DOUBLE_EQ(gathering.lineOf(0, 2).overlap, 7.0);
    // From 2 s of 0 to its end, and 2 of it to the end of 1 lie 12 s after the start of 3.
    EXPECT_DOUBLE_EQ(gathering.lineOf(3, 1).offset, 2.0);
    EXPECT_DOUBLE_EQ(gathering.lineOf(3, 1).overlap, 8.0);
}

TEST(Gathering, LeavesAGroupAsItIs)
{
    Gathering gathering({10.0, 10.0});
    gathering.join(0, 1, lineOf(4.0));

    EXPECT_FALSE(gathering.join(0, 1, lineOf(5.0)));

    EXPECT_DOUBLE_EQ(gathering.lineOf(0, 1).offset, 4.0);
}

TEST(Gathering, KnowsHowFarTwoAreApart)
{
    Gathering gathering({10.0, 10.0, 10.0});
    gathering.join(0, 1, lineOf(8.0));
    gathering.join(1, 2, lineOf(8.0));

    // 2 starts 16 s after 0, which is 10 s long.
    EXPECT_DOUBLE_EQ(gathering.lineOf(0, 2).overlap, -6.0);
}

TEST(Gathering, TakesADriftOverFromALongLine)
{
    Gathering gathering({100.0, 100.0});

    gathering.join(0, 1, lineOf(1.0, 100.0, 50e-6));

    // 1 - rate / rate of the second, which is 1 / (1 - slope).
    EXPECT_NEAR(gathering.lineOf(0, 1).slope, 50e-6, 1e-12);
    EXPECT_NEAR(gathering.lineOf(0, 1).offset, 1.0, 1e-4);
    EXPECT_NEAR(gathering.lineOf(1, 0).slope, -50e-6, 1e-8);
}

TEST(Gathering, TakesNoDriftFromAShortLineOrAnUncertainOne)
{
    Gathering gathering({100.0, 100.0, 100.0});

    gathering.join(0, 1, lineOf(1.0, 19.0, 50e-6));
    gathering.join(0, 2, lineOf(1.0, 100.0, 4e-6));

    EXPECT_EQ(gathering.lineOf(0, 1).slope, 0.0);
    EXPECT_EQ(gathering.lineOf(0, 2).slope, 0.0);
}

} // namespace
