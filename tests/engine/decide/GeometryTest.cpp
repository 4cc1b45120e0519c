#include "decide/Geometry.h"

#include <gmock/gmock.h>

namespace
{

using vxlsync::agree;
using vxlsync::Alignment;
using vxlsync::clockChangeFor;
using vxlsync::ImpliedLine;
using vxlsync::impliedLine;
using vxlsync::moved;
using vxlsync::Placement;
using vxlsync::turned;

// Rounding of a few operations on seconds.
constexpr double rounding = 1e-12;

Placement placed(double start, double drift = 0.0)
{
    Placement place;
    place.start = start;
    place.drift = drift;
    return place;
}

// An offset of 10 s over the shared time, whose slope is certain by far.
Alignment measured(double overlap, double slope, double slopeError = 0.0)
{
    Alignment line;
    line.offset = 10.0;
    line.slope = slope;
    line.slopeError = slopeError;
    line.start = 10.0;
    line.end = 10.0 + overlap;
    line.middle = 10.0 + overlap / 2.0;
    return line;
}

TEST(ImpliedLine, LiesAtTheMiddleOfWhatTheTwoShare)
{
    // From 15 to 65 s of the clock on which the first starts at 5.
    const ImpliedLine line = impliedLine(placed(5.0), 60.0, placed(15.0), 60.0);

    EXPECT_DOUBLE_EQ(line.overlap, 50.0);
    EXPECT_DOUBLE_EQ(line.middle, 35.0);
    EXPECT_DOUBLE_EQ(line.offset, 10.0);
    EXPECT_EQ(line.slope, 0.0);
}

TEST(ImpliedLine, OverlapsByLessThanNothingAcrossAGap)
{
    EXPECT_DOUBLE_EQ(impliedLine(placed(0.0), 10.0, placed(13.0), 10.0).overlap, -3.0);
    EXPECT_DOUBLE_EQ(impliedLine(placed(13.0), 10.0, placed(0.0), 10.0).overlap, -3.0);
}

TEST(ImpliedLine, ChangesWithTheDifferenceOfTheClocks)
{
    const Placement first = placed(0.0, 1e-4);
    const Placement second = placed(20.0, -1e-4);

    const ImpliedLine line = impliedLine(first, 60.0, second, 60.0);

    // A sound at the first's second 50 is at 50.005, and 30.005 / 0.9999 s into the second.
    const double offset = 50.0 - 30.005 / 0.9999;
    EXPECT_NEAR(line.offset + line.slope * (50.0 - line.middle), offset, 1e-9);
    EXPECT_NEAR(line.slope, 1.0 - 1.0001 / 0.9999, rounding);
}

TEST(ImpliedLine, TurnedIsWhatTheSecondSeesOfTheFirst)
{
    const Placement first = placed(3.0, 1e-4);
    const Placement second = placed(20.0, -1e-4);

    const ImpliedLine seen = turned(impliedLine(first, 60.0, second, 50.0));
    const ImpliedLine expected = impliedLine(second, 50.0, first, 60.0);

    EXPECT_NEAR(seen.middle, expected.middle, rounding);
    EXPECT_NEAR(seen.offset, expected.offset, rounding);
    EXPECT_NEAR(seen.slope, expected.slope, rounding);
    EXPECT_EQ(seen.overlap, expected.overlap);
}

TEST(Lines, AgreeWithinWhatDriftMayDoInTheTimeOfTheRecordings)
{
    ImpliedLine implied;
    implied.middle = 35.0;
    // 3 ms and 20 millionths of 60 s, the mean of 40 and 80: 4.2 ms.
    for (const double side : {-1.0, 1.0}) {
        implied.offset = 10.0 + side * 0.00419;
        EXPECT_TRUE(agree(measured(50.0, 0.0), implied, 40.0, 80.0));
        implied.offset = 10.0 + side * 0.00421;
        EXPECT_FALSE(agree(measured(50.0, 0.0), implied, 40.0, 80.0));
    }
}

TEST(Lines, AreComparedWhereTheImpliedOneIs)
{
    ImpliedLine implied;
    implied.offset = 10.005;
    // The measured line is there at 10 + 1e-4 * (85 - 35).
    implied.middle = 85.0;

    EXPECT_TRUE(agree(measured(50.0, 1e-4), implied, 40.0, 80.0));
}

TEST(Placement, MovesWithTheClockThatItStandsOn)
{
    const Placement place = moved(placed(100.0, 2e-5), placed(7.0, 1e-5));

    EXPECT_NEAR(place.start, 107.001, rounding);
    EXPECT_NEAR(place.drift, 1.00002 * 1.00001 - 1.0, rounding);
}

TEST(ClockChange, LetsTheLineHold)
{
    const Placement first = placed(5.0, 2e-5);
    const Placement second = placed(100.0, -3e-5);
    const Alignment line = measured(50.0, 8e-5);

    const Placement there = moved(second, clockChangeFor(line, first, second));

    const ImpliedLine implied = impliedLine(first, 60.0, there, 60.0);
    EXPECT_NEAR(implied.offset, line.offsetAt(implied.middle), 1e-9);
    EXPECT_NEAR(implied.slope, 8e-5, rounding);
}

TEST(ClockChange, TakesNoSlopeFromAShortTime)
{
    EXPECT_NEAR(clockChangeFor(measured(20.0, 8e-5), placed(0.0), placed(0.0)).drift, 8e-5, 1e-8);
    EXPECT_EQ(clockChangeFor(measured(19.9, 8e-5), placed(0.0), placed(0.0)).drift, 0.0);
}

TEST(ClockChange, TakesNoSlopeWithinFourErrorsOfNone)
{
    for (const double slope : {-8e-5, 8e-5}) {
        EXPECT_NEAR(clockChangeFor(measured(50.0, slope, 1.99e-5), placed(0.0), placed(0.0)).drift,
                    slope, 1e-8);
        EXPECT_EQ(clockChangeFor(measured(50.0, slope, 2.01e-5), placed(0.0), placed(0.0)).drift,
                  0.0);
    }
}

} // namespace
