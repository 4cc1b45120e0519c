#include "decide/Solve.h"

#include <gmock/gmock.h>

#include "vxl_sync/Sync.h"

namespace
{

using vxlsync::Measurement;
using vxlsync::Placement;
using vxlsync::Solution;

Solution solve(std::size_t count, std::size_t reference,
               const std::vector<Measurement>& measurements)
{
    return vxlsync::solve(count, reference, measurements, vxlsync::Interrupt());
}

// What a link between two placed recordings measures at `time` of the first. A sound at
// a + t (1 + p) of the reference stands in the second at (a + t (1 + p) - b) / (1 + q).
Measurement measured(std::size_t first, const Placement& a, std::size_t second, const Placement& b,
                     double time)
{
    Measurement m;
    m.first = first;
    m.second = second;
    m.middle = time;
    m.offset = time - (a.at(time) - b.start) / (1.0 + b.drift);
    m.slope = 1.0 - (1.0 + a.drift) / (1.0 + b.drift);
    m.offsetError = 1e-5;
    m.slopeError = 1e-7;
    return m;
}

Placement placed(double start, double drift)
{
    Placement place;
    place.start = start;
    place.drift = drift;
    return place;
}

TEST(Solve, PlacesAChain)
{
    const Placement a = placed(0.0, 0.0);
    const Placement b = placed(12.5, 0.0);
    const Placement c = placed(31.25, 0.0);

    const Solution solution = solve(3, 0, {measured(0, a, 1, b, 40.0), measured(1, b, 2, c, 40.0)});

    EXPECT_EQ(solution.placements[0].start, 0.0);
    EXPECT_NEAR(solution.placements[1].start, 12.5, 1e-7);
    EXPECT_NEAR(solution.placements[2].start, 31.25, 1e-7);
    EXPECT_EQ(solution.placements[2].drift, 0.0);
}

TEST(Solve, FindsStartsAndDriftsTogether)
{
    const Placement a = placed(0.0, 0.0);
    const Placement b = placed(100.0, 100e-6);
    const Placement c = placed(50.0, -80e-6);

    const Solution solution = solve(
        3, 0,
        {measured(0, a, 1, b, 200.0), measured(1, b, 2, c, 100.0), measured(0, a, 2, c, 150.0)});

    // Starts come from measurements in the middle of minutes, so that an error of the drift counts.
    EXPECT_NEAR(solution.placements[1].start, 100.0, 2e-5);
    EXPECT_NEAR(solution.placements[1].drift, 100e-6, 1e-7);
    EXPECT_NEAR(solution.placements[2].start, 50.0, 2e-5);
    EXPECT_NEAR(solution.placements[2].drift, -80e-6, 1e-7);
}

TEST(Solve, TakesADriftWithinItsErrorForNone)
{
    const Placement a = placed(0.0, 0.0);
    Measurement m = measured(0, a, 1, placed(10.0, 0.0), 30.0);
    m.slope = 3e-6;
    m.slopeError = 2e-6;

    const Solution solution = solve(2, 0, {m});

    EXPECT_EQ(solution.placements[1].drift, 0.0);
    EXPECT_NEAR(solution.placements[1].start, 10.0, 1e-6);
}

TEST(Solve, DropsTheMeasurementThatContradictsTheRest)
{
    const Placement a = placed(0.0, 0.0);
    const Placement b = placed(10.0, 0.0);
    const Placement c = placed(20.0, 0.0);
    const Placement d = placed(30.0, 0.0);
    std::vector<Measurement> all{measured(0, a, 1, b, 30.0), measured(1, b, 2, c, 30.0),
                                 measured(0, a, 2, c, 30.0), measured(2, c, 3, d, 30.0),
                                 measured(0, a, 3, d, 40.0), measured(1, b, 3, d, 40.0)};
    all[2].offset += 0.05;

    const Solution solution = solve(4, 0, all);

    EXPECT_THAT(solution.dropped, testing::ElementsAre(false, false, true, false, false, false));
    EXPECT_NEAR(solution.placements[2].start, 20.0, 1e-6);
}

TEST(Solve, KeepsTheOnlyMeasurementOfARecording)
{
    const Placement a = placed(0.0, 0.0);

    const Solution solution = solve(2, 0, {measured(0, a, 1, placed(10.0, 0.0), 30.0)});

    EXPECT_THAT(solution.dropped, testing::ElementsAre(false));
}

// Placement of the second of two recordings by one link of the slope, which is as if it were
// certain.
Placement driftBy(double slope)
{
    Measurement m = measured(0, placed(0.0, 0.0), 1, placed(10.0, 0.0), 30.0);
    m.slope = slope;
    m.slopeError = 1e-9;
    return solve(2, 0, {m}).placements[1];
}

TEST(Solve, TakesDriftsForSomeFromFourErrorsOn)
{
    // No slope is surer than 0.05 millionths, four of which are 0.2.
    EXPECT_NEAR(driftBy(0.21e-6).drift, 0.21e-6, 1e-9);
    EXPECT_EQ(driftBy(0.19e-6).drift, 0.0);
    EXPECT_EQ(driftBy(0.19e-6).driftError, 0.0);
    EXPECT_NEAR(driftBy(-0.21e-6).drift, -0.21e-6, 1e-9);
}

// Whether a measurement beside two that say otherwise, a chain of 10 and 10 s, is dropped if it
// says so much more than 20 s. The two are sure enough not to give way.
bool isDropped(double excess, double offsetError)
{
    const Placement a = placed(0.0, 0.0);
    const Placement b = placed(10.0, 0.0);
    const Placement c = placed(20.0, 0.0);
    std::vector<Measurement> all{measured(0, a, 1, b, 30.0), measured(1, b, 2, c, 30.0),
                                 measured(0, a, 2, c, 30.0)};
    all[0].offsetError = all[1].offsetError = 1e-9;
    all[2].offset += excess;
    all[2].offsetError = offsetError;
    all[2].slopeError = 1.0;
    return solve(3, 0, all).dropped[2];
}

TEST(Solve, DropsWhatMissesByMoreThanSixErrorsAndTwoThirdsOfAMillisecond)
{
    // Weighed against the least errors of the two, 0.02 ms each, an error of 1 ms gives way by less
    // than a thousandth.
    EXPECT_TRUE(isDropped(6.1e-3, 1e-3));
    EXPECT_FALSE(isDropped(5.9e-3, 1e-3));
    EXPECT_TRUE(isDropped(-6.1e-3, 1e-3));
    // Of 0.1 ms, six are less than 0.7 ms. It moves the two by a fourteenth of what it misses.
    EXPECT_TRUE(isDropped(0.78e-3, 0.1e-3));
    EXPECT_FALSE(isDropped(0.69e-3, 0.1e-3));
}

TEST(Solve, DropsTheWorstOfSeveralFirst)
{
    const Placement a = placed(0.0, 0.0);
    const Placement b = placed(10.0, 0.0);
    std::vector<Measurement> all(5, measured(0, a, 1, b, 30.0));
    all[1].offset += 0.05;
    all[3].offset -= 0.5;

    const Solution solution = solve(2, 0, all);

    EXPECT_THAT(solution.dropped, testing::ElementsAre(false, true, false, true, false));
    EXPECT_NEAR(solution.placements[1].start, 10.0, 1e-6);
}

TEST(Solve, DropsNothingWhereTheOthersWouldNotTieAll)
{
    const Placement a = placed(0.0, 0.0);
    std::vector<Measurement> both(2, measured(0, a, 1, placed(10.0, 0.0), 30.0));
    both[1].offset += 0.05;

    // Nobody has measured the third.
    const Solution solution = solve(3, 0, both);

    EXPECT_THAT(solution.dropped, testing::ElementsAre(false, false));
    EXPECT_NEAR(solution.placements[1].start, 10.025, 1e-6);
    EXPECT_NEAR(solution.placements[2].start, 0.0, 1e-9);
}

TEST(Solve, TakesTheSureMeasurementForMore)
{
    const Placement a = placed(0.0, 0.0);
    std::vector<Measurement> both(2, measured(0, a, 1, placed(10.0, 0.0), 30.0));
    both[1].offset += 0.3e-3;
    both[0].offsetError = 0.1e-3;
    both[1].offsetError = 0.2e-3;

    // By the inverse squares of the errors, four to one.
    EXPECT_NEAR(solve(2, 0, both).placements[1].start, 10.0 + 0.3e-3 / 5.0, 1e-9);
}

TEST(Solve, EndsWhenTheHostWantsItTo)
{
    const vxlsync::Interrupt always([] { return true; });
    const Measurement m = measured(0, placed(0.0, 0.0), 1, placed(10.0, 0.0), 30.0);

    EXPECT_THROW(vxlsync::solve(2, 0, {m}, always), vxlsync::Cancelled);
}

TEST(Solve, GivesGreaterErrorsFartherFromTheReference)
{
    const Placement a = placed(0.0, 0.0);
    const Placement b = placed(10.0, 0.0);
    const Placement c = placed(20.0, 0.0);

    const Solution solution = solve(3, 0, {measured(0, a, 1, b, 30.0), measured(1, b, 2, c, 30.0)});

    EXPECT_GT(solution.placements[1].startError, 0.0);
    EXPECT_GT(solution.placements[2].startError, solution.placements[1].startError);
}

} // namespace
