#include <numeric>

#include <gmock/gmock.h>

#include "TestTakes.h"
#include "decide/Clocks.h"

namespace
{

using takes::both;
using takes::counted;
using takes::created;
using takes::ten;
using testing::Each;
using testing::ElementsAre;
using testing::Eq;
using testing::Optional;
using vxlsync::ClockReadings;
using vxlsync::Takes;

constexpr double hour = 3600.0;

ClockReadings read(const Takes& takes)
{
    std::vector<std::size_t> members(takes.size());
    std::iota(members.begin(), members.end(), std::size_t{0});
    return vxlsync::readClocks(takes, members);
}

// Starts in seconds after the first; not a number for what has none.
std::vector<double> startsOf(const Takes& takes)
{
    const ClockReadings readings = read(takes);
    std::vector<double> starts;
    for (const auto& start : readings.starts)
        starts.push_back(start.value_or(NAN) - readings.starts.front().value_or(NAN));
    return starts;
}

void expectNothing(const Takes& takes, bool isContradictory)
{
    const ClockReadings readings = read(takes);
    EXPECT_EQ(readings.starts.size(), takes.size());
    EXPECT_THAT(readings.starts, Each(Eq(std::nullopt)));
    EXPECT_EQ(readings.isContradictory, isContradictory);
}

TEST(Clocks, TheTimeOfCreationIsTheStart)
{
    // As ends the second would have begun 20 s before the first ended.
    EXPECT_THAT(startsOf({created(0, 30), created(40, 60)}), ElementsAre(0.0, 40.0));
}

TEST(Clocks, TheTimeOfCreationIsTheEndWhereStartsWouldOverlap)
{
    // From 0 to 60 and from 70 to 100.
    EXPECT_THAT(startsOf({created(60, 60), created(100, 30)}), ElementsAre(0.0, 70.0));
}

TEST(Clocks, WhereBothArePossibleItIsTheStart)
{
    EXPECT_THAT(startsOf({created(0, 10), created(100, 20)}), ElementsAre(0.0, 100.0));
}

TEST(Clocks, WhereBothArePossibleTheDeviceMayBeKnownForTheEnd)
{
    Takes takes{created(0, 10), created(100, 20)};
    for (vxlsync::Take& take : takes)
        take.facts.isCreatedAtEnd = true;

    EXPECT_THAT(startsOf(takes), ElementsAre(0.0, 90.0));
}

TEST(Clocks, TakesMayRunIntoEachOtherByWhatClocksErr)
{
    EXPECT_THAT(startsOf({created(0, 30), created(28, 20), created(48, 10)}),
                ElementsAre(0.0, 28.0, 48.0));
    expectNothing({created(0, 31), created(28.9, 35)}, true);
}

TEST(Clocks, AFileWithoutATimeHasNoStart)
{
    const Takes takes{created(0, 30), takes::take("a.mov", 30), created(40, 30)};
    EXPECT_THAT(read(takes).starts, ElementsAre(Optional(ten), std::nullopt, Optional(ten + 40)));
    expectNothing({takes[1], takes[1]}, false);
}

TEST(Clocks, ACountIsFinerThanATime)
{
    EXPECT_THAT(startsOf({both(0, 36000.04, 30), both(41, 36040.52, 30)}),
                ElementsAre(0.0, testing::DoubleNear(40.48, 1e-6)));
}

TEST(Clocks, ACountTellsWhatTheTimeMeans)
{
    // By the time alone both meanings were possible; the third has no count. By the count the
    // second began 100 s after the first, so that the times are ends, and the third from 205 to
    // 210.
    EXPECT_THAT(startsOf({both(10, 36000, 10), both(130, 36100, 30), created(210, 5)}),
                ElementsAre(0.0, 100.0, testing::DoubleNear(205.0, 1e-6)));
}

TEST(Clocks, TakesWithoutACountGoByTheirTimes)
{
    // Counted a second before their times.
    const Takes takes{both(0, 35999, 10), both(100, 36099, 10), created(200, 10),
                      counted(36299, 10), takes::take("a.mov", 10)};

    EXPECT_THAT(read(takes).starts,
                ElementsAre(Optional(ten), Optional(ten + 100), Optional(ten + 200),
                            Optional(ten + 300), std::nullopt));
}

TEST(Clocks, ATakeWithoutACountHasNoStartAmongCountedOnes)
{
    EXPECT_THAT(read({counted(100, 20), takes::take("a.mov", 20), counted(300, 20)}).starts,
                ElementsAre(Optional(100.0), std::nullopt, Optional(300.0)));
}

TEST(Clocks, ACountMayBeSetByTheClockAtEachTake)
{
    // 30 numbers for 29.97 frames a second: the day of its numbers lasts 86,486.4 s. Two hours
    // after the first take its numbers are two hours higher, which makes 7,207.2 s of frames.
    Takes takes{both(0, 36036, 30), both(2 * hour, 43243.2, 30)};
    for (vxlsync::Take& take : takes)
        take.facts.started->daySeconds = 86486.4;
    EXPECT_THAT(startsOf(takes), ElementsAre(0.0, testing::DoubleNear(2 * hour, 1e-6)));

    // Or it runs on, and the clock is 7.2 s behind its numbers.
    takes[1].facts.created->seconds = ten + 7207;
    EXPECT_THAT(startsOf(takes), ElementsAre(0.0, testing::DoubleNear(7207.2, 1e-6)));
}

TEST(Clocks, ACountThatStandsStillBetweenTakesSaysNothing)
{
    // By the clock there are pauses of 30 s.
    EXPECT_THAT(startsOf({both(0, 100, 30), both(60, 130, 30), both(120, 160, 30)}),
                ElementsAre(0.0, 60.0, 120.0));
    // Takes are missing between.
    EXPECT_THAT(startsOf({both(0, 100, 30), both(300, 160, 30)}), ElementsAre(0.0, 300.0));
    // No date to tell it from chapters.
    expectNothing({counted(100, 30), counted(130, 30), counted(160, 30)}, false);
}

TEST(Clocks, ACountWithoutPausesIsOfChaptersIfTheTimesSaySo)
{
    EXPECT_THAT(startsOf({both(0, 36000, 30.04), both(30, 36030.04, 20)}),
                ElementsAre(0.0, testing::DoubleNear(30.04, 1e-6)));
    // The time of the first in all.
    EXPECT_THAT(startsOf({both(0, 36000, 30), both(0, 36030, 30)}), ElementsAre(0.0, 30.0));
}

TEST(Clocks, ACountThatBeginsAnewSaysNothing)
{
    EXPECT_THAT(startsOf({both(0, 3600, 30), both(60, 3600, 30)}), ElementsAre(0.0, 60.0));
    expectNothing({counted(3600, 30), counted(3600, 30)}, false);
}

TEST(Clocks, ACountThatRunsIntoItselfGivesWayToTheTimes)
{
    EXPECT_THAT(startsOf({both(0, 3600, 30), both(60, 3610, 30)}), ElementsAre(0.0, 60.0));
    expectNothing({counted(3600, 30), counted(3610, 30)}, true);
}

TEST(Clocks, TimesOfCopiesGiveWayToACount)
{
    // Copied within seconds, which is less than the takes last.
    EXPECT_THAT(startsOf({both(0, 36000, 30), both(1, 36100, 30)}), ElementsAre(0.0, 100.0));
    // Made at leisure later, but closer together than the takes were.
    EXPECT_THAT(startsOf({both(0, 36000, 30), both(60, 36100, 30)}), ElementsAre(0.0, 100.0));
}

TEST(Clocks, TwoClocksOfDifferentTakesAreNotCompared)
{
    // Nothing ties the count to the times; the times come first.
    EXPECT_THAT(read({created(0, 30), counted(100, 30)}).starts,
                ElementsAre(Optional(ten), std::nullopt));
}

TEST(Clocks, ContradictionsAreOfTwoDevicesOrOfWrongClocks)
{
    expectNothing({created(0, 30), created(10, 30)}, true);
    expectNothing({both(0, 100, 30), both(10, 110, 30)}, true);
}

TEST(Clocks, OneTakeBeginsWhenItsClockSays)
{
    EXPECT_THAT(read({created(7, 30)}).starts, ElementsAre(Optional(ten + 7)));
    EXPECT_THAT(read({counted(3600, 30)}).starts, ElementsAre(Optional(3600.0)));
}

TEST(Clocks, OnlyTheTakesNamedCount)
{
    const Takes takes{created(0, 30), created(10, 30), created(50, 30)};

    EXPECT_THAT(vxlsync::readClocks(takes, {0, 2}).starts,
                ElementsAre(Optional(ten), Optional(ten + 50)));
}

} // namespace
