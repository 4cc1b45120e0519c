#include "decide/ClockAxes.h"

#include <gmock/gmock.h>

#include "TestTakes.h"

namespace
{

using takes::both;
using takes::counted;
using takes::created;
using takes::ten;
using testing::DoubleNear;
using testing::Each;
using testing::ElementsAre;
using testing::Optional;
using vxlsync::CountMeaning;
using vxlsync::CreationMeaning;
using vxlsync::DeviceTakes;
using vxlsync::Takes;
using vxlsync::TakeStarts;

constexpr double hour = 3600.0;
// Of a count of 30 numbers for 29.97 frames a second.
constexpr double longDay = 86486.4;

DeviceTakes deviceOf(const Takes& takes)
{
    DeviceTakes device;
    for (const vxlsync::Take& take : takes)
        device.push_back(&take);
    return device;
}

TakeStarts createdStarts(const Takes& takes, CreationMeaning meaning = CreationMeaning::start)
{
    return vxlsync::createdStarts(deviceOf(takes), meaning);
}

TakeStarts countedStarts(const Takes& takes, CountMeaning meaning = CountMeaning::elapsed)
{
    return vxlsync::countedStarts(deviceOf(takes), meaning);
}

// In seconds, but for what rounding leaves of times since 1970.
testing::Matcher<std::optional<double>> at(double seconds)
{
    return Optional(DoubleNear(seconds, 1e-6));
}

testing::Matcher<TakeStarts> nothingOf(std::size_t takes)
{
    return testing::AllOf(testing::SizeIs(takes), Each(testing::Eq(std::nullopt)));
}

TEST(CreatedStarts, AreTheTimesOfCreationOrALengthBefore)
{
    const Takes takes{created(0, 30), takes::take("a.mov", 30), created(40, 60)};

    EXPECT_THAT(createdStarts(takes), ElementsAre(at(ten), std::nullopt, at(ten + 40)));
    EXPECT_THAT(createdStarts(takes, CreationMeaning::end),
                ElementsAre(at(ten - 30), std::nullopt, at(ten - 20)));
}

TEST(CreatedStarts, AreNoneOfADateWithoutATime)
{
    // Ten hours before ten.
    EXPECT_THAT(createdStarts({created(-10 * hour, 30), created(14 * hour, 30)}), nothingOf(2));
    EXPECT_THAT(createdStarts({created(-10 * hour + 1, 30)}), ElementsAre(at(ten - 10 * hour + 1)));

    // Midnight is that of the file's own zone.
    vxlsync::Take local = created(-12 * hour, 30);
    local.facts.created->zoneMinutes = 120;
    EXPECT_THAT(createdStarts({local}), nothingOf(1));
    local.facts.created->zoneMinutes = 60;
    EXPECT_THAT(createdStarts({local}), ElementsAre(at(ten - 12 * hour)));
}

TEST(CreatedStarts, OfChaptersWithTheTimeOfTheFirstFollowEachOther)
{
    // Whatever their order.
    const Takes takes{created(300, 30, "GX010043.MP4"), created(0, 30, "GX030042.MP4"),
                      created(0, 100, "GX010042.MP4"), created(0, 90, "GX020042.MP4")};

    EXPECT_THAT(createdStarts(takes),
                ElementsAre(at(ten + 300), at(ten + 190), at(ten), at(ten + 100)));
    // What is written at the end has a time of its own.
    EXPECT_THAT(createdStarts(takes, CreationMeaning::end),
                ElementsAre(at(ten + 270), at(ten - 30), at(ten - 100), at(ten - 90)));
}

TEST(CreatedStarts, AreTheTimesOfWhatIsNoNextChapter)
{
    // One is missing; another take; another folder; another time; no time.
    EXPECT_THAT(createdStarts({created(0, 100, "GX010042.MP4"), created(0, 100, "GX030042.MP4")}),
                ElementsAre(at(ten), at(ten)));
    EXPECT_THAT(createdStarts({created(0, 100, "GX010042.MP4"), created(0, 100, "GX020043.MP4")}),
                ElementsAre(at(ten), at(ten)));
    EXPECT_THAT(
        createdStarts({created(0, 100, "a/GX010042.MP4"), created(0, 100, "b/GX020042.MP4")}),
        ElementsAre(at(ten), at(ten)));
    EXPECT_THAT(createdStarts({created(0, 30, "MVI_0001.MOV"), created(50, 10, "MVI_0002.MOV")}),
                ElementsAre(at(ten), at(ten + 50)));
    EXPECT_THAT(createdStarts({created(0, 100, "GX010042.MP4"), takes::take("GX020042.MP4", 30)}),
                ElementsAre(at(ten), std::nullopt));
}

TEST(CountedStarts, StandAsTheyAreWhereNoTakeHasADate)
{
    EXPECT_THAT(countedStarts({counted(100, 20), takes::take("a.mov", 20), counted(300, 20)}),
                ElementsAre(at(100), std::nullopt, at(300)));
    EXPECT_THAT(countedStarts({counted(hour, 30)}), ElementsAre(at(hour)));
}

TEST(CountedStarts, LieOnTheAxisOfTheDates)
{
    // By the first that has both, an hour ahead.
    EXPECT_THAT(countedStarts({counted(10.5 * hour, 30), created(5, 30), both(0, 11 * hour, 30),
                               both(41, 11 * hour + 40.5, 30)}),
                ElementsAre(at(ten - hour / 2), std::nullopt, at(ten), at(ten + 40.5)));
}

TEST(CountedStarts, AreOfTheDayThatTheirDatesSay)
{
    EXPECT_THAT(countedStarts({both(0, 86390, 20), both(100, 90, 20)}),
                ElementsAre(at(ten), at(ten + 100)));
    EXPECT_THAT(countedStarts({both(0, 36000, 20), both(48 * hour, 36000.5, 20)}),
                ElementsAre(at(ten), at(ten + 48 * hour + 0.5)));
}

TEST(CountedStarts, BeginTheDayBehindItsLongestRestWhereThereIsNoDate)
{
    EXPECT_THAT(countedStarts({counted(86390, 20), counted(90, 20)}),
                ElementsAre(at(86390), at(86490)));
    EXPECT_THAT(countedStarts({counted(90, 20), counted(300, 20)}), ElementsAre(at(90), at(300)));
}

TEST(CountedStarts, AreNoneWhereNoRestTellsWhichCameFirst)
{
    EXPECT_THAT(countedStarts({counted(0, 20), counted(6 * hour, 20), counted(12 * hour, 20),
                               counted(18 * hour, 20)}),
                ElementsAre(at(0), at(6 * hour), at(12 * hour), at(18 * hour)));
    EXPECT_THAT(
        countedStarts({counted(0, 20), counted(6 * hour - 1, 20), counted(12 * hour - 2, 20),
                       counted(18 * hour + 1, 20)}),
        ElementsAre(at(24 * hour), at(30 * hour - 1), at(36 * hour - 2), at(18 * hour + 1)));
    EXPECT_THAT(countedStarts({counted(0, 20), counted(5 * hour, 20), counted(10 * hour, 20),
                               counted(15 * hour, 20), counted(19 * hour, 20)}),
                nothingOf(5));
}

TEST(CountedStarts, AreNoneWhereAllTakesBeginAlike)
{
    EXPECT_THAT(countedStarts({both(0, hour, 30), takes::take("a.mov", 9), both(60, hour, 30)}),
                nothingOf(3));
    EXPECT_THAT(countedStarts({created(0, 30), created(60, 30)}), nothingOf(2));
}

TEST(CountedStarts, GoByNumbersWhereTheClockSetsThem)
{
    // Two hours later its numbers are two hours higher, which makes 7,207.2 s of frames.
    Takes takes{both(0, 36036, 30), both(2 * hour, 43243.2, 30)};
    for (vxlsync::Take& take : takes)
        take.facts.started->daySeconds = longDay;

    EXPECT_THAT(countedStarts(takes, CountMeaning::elapsed),
                ElementsAre(at(ten), at(ten + 7207.2)));
    EXPECT_THAT(countedStarts(takes, CountMeaning::clock),
                ElementsAre(at(ten), at(ten + 2 * hour)));
}

TEST(CountedStarts, PassMidnightAfterTheDayOfTheirNumbers)
{
    Takes takes{counted(longDay - 10, 5), counted(90, 20)};
    for (vxlsync::Take& take : takes)
        take.facts.started->daySeconds = longDay;

    EXPECT_THAT(countedStarts(takes), ElementsAre(at(longDay - 10), at(longDay + 90)));
}

TEST(Overlap, IsMoreThanClocksMayErr)
{
    const Takes takes{created(0, 30), created(0, 20), created(0, 10)};
    const DeviceTakes device = deviceOf(takes);

    EXPECT_FALSE(vxlsync::overlap(device, {100.0, 128.0, 146.0}));
    EXPECT_TRUE(vxlsync::overlap(device, {100.0, 127.9, 150.0}));
    // Whatever their order; from 107.9 to 110 both run.
    EXPECT_TRUE(vxlsync::overlap(device, {107.9, 200.0, 100.0}));
    EXPECT_FALSE(vxlsync::overlap(device, {100.0, std::nullopt, std::nullopt}));
    EXPECT_FALSE(vxlsync::overlap(device, TakeStarts(3)));
}

TEST(WithoutPauses, EachBeginsWhereAnotherEnds)
{
    const Takes takes{created(0, 30), created(0, 20), created(0, 10)};
    const DeviceTakes device = deviceOf(takes);

    EXPECT_TRUE(vxlsync::isWithoutPauses(device, {100.0, 130.25, 150.0}));
    EXPECT_FALSE(vxlsync::isWithoutPauses(device, {100.0, 130.26, 150.26}));
    EXPECT_FALSE(vxlsync::isWithoutPauses(device, {100.0, 129.74, 149.74}));
    EXPECT_TRUE(vxlsync::isWithoutPauses(device, {110.0, std::nullopt, 100.0}));
}

TEST(WithoutPauses, AreTwoOrMore)
{
    const Takes takes{created(0, 30), created(0, 20)};
    const DeviceTakes device = deviceOf(takes);

    EXPECT_FALSE(vxlsync::isWithoutPauses(device, {100.0, std::nullopt}));
    EXPECT_FALSE(vxlsync::isWithoutPauses(device, TakeStarts(2)));
}

} // namespace
