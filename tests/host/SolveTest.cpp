#include "Solve.h"

#include <gmock/gmock.h>

namespace
{

using vxlsync::Measurement;
using vxlsync::Placement;
using vxlsync::Solution;
using vxlsync::solve;

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
