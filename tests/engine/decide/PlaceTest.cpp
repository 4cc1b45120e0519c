#include "decide/Place.h"

#include <gmock/gmock.h>

#include "TestLinks.h"
#include "decide/Verdicts.h"

namespace
{

using links::constraintsOf;
using vxlsync::Assembly;
using vxlsync::Constraints;
using vxlsync::Decision;
using vxlsync::Link;
using vxlsync::PlacedGroup;
using vxlsync::Verdict;

Link link(std::size_t first, std::size_t second, double offset, Verdict verdict)
{
    Link link = links::linkOf(first, second, offset, 0.5);
    link.verdict = verdict;
    return link;
}

// The second started 10 s before the first and 15 s before the third; the fourth is alone.
Assembly threeTogether()
{
    return {{{0, 1, 2}, {3}},
            {link(0, 1, -10.0, Verdict::accepted), link(1, 2, 15.0, Verdict::accepted)},
            {},
            {}};
}

Decision placeGroups(Assembly assembly, const Constraints& constraints)
{
    assembly.certainties.resize(constraints.durations.size());
    return vxlsync::placeGroups(assembly, constraints, vxlsync::Interrupt());
}

// The only group.
PlacedGroup placed(const Assembly& assembly, const Constraints& constraints = constraintsOf(4))
{
    const Decision decision = placeGroups(assembly, constraints);
    EXPECT_EQ(decision.groups.size(), 1u);
    return decision.groups.at(0);
}

TEST(Place, CountsFromTheEarliest)
{
    const PlacedGroup group = placed(threeTogether());

    EXPECT_THAT(group.members, testing::ElementsAre(0, 1, 2));
    EXPECT_NEAR(group.placements[0].start, 10.0, 1e-6);
    EXPECT_EQ(group.placements[1].start, 0.0);
    EXPECT_NEAR(group.placements[2].start, 15.0, 1e-6);
}

TEST(Place, TakesTheRecordingBestTiedForReference)
{
    EXPECT_EQ(placed(threeTogether()).reference, 1u);
}

TEST(Place, TakesTheFirstOfThoseEquallyTiedForReference)
{
    Assembly assembly;
    assembly.groups = {{0}, {1, 3}};
    assembly.links = {link(1, 3, 5.0, Verdict::accepted)};

    EXPECT_EQ(placed(assembly).reference, 1u);
}

TEST(Place, TakesTheReferenceThatIsAskedFor)
{
    Constraints constraints = constraintsOf(4);
    constraints.reference = 2;

    EXPECT_EQ(placed(threeTogether(), constraints).reference, 2u);
}

TEST(Place, TakesTheRecordingBestTiedWhereTheReferenceIsInNoOtherGroup)
{
    Constraints constraints = constraintsOf(4);
    constraints.reference = 3;

    EXPECT_EQ(placed(threeTogether(), constraints).reference, 1u);
}

TEST(Place, PlacesEachGroupByItsOwnLinks)
{
    Assembly assembly;
    assembly.groups = {{0, 2}, {1, 3}};
    assembly.links = {link(0, 2, 7.0, Verdict::accepted), link(1, 3, 12.0, Verdict::confirmed)};

    const Decision decision = placeGroups(assembly, constraintsOf(4));

    ASSERT_EQ(decision.groups.size(), 2u);
    EXPECT_NEAR(decision.groups[0].placements[1].start, 7.0, 1e-6);
    EXPECT_NEAR(decision.groups[1].placements[1].start, 12.0, 1e-6);
}

TEST(Place, LeavesOutLinksThatAreNotUsed)
{
    Assembly assembly = threeTogether();
    assembly.links.insert(assembly.links.begin() + 1, link(0, 2, 3.0, Verdict::contradicted));

    EXPECT_NEAR(placed(assembly).placements[2].start, 15.0, 1e-6);
}

TEST(Place, HandsOnTheLinksAsTheyAre)
{
    const Decision decision = placeGroups(threeTogether(), constraintsOf(4));

    ASSERT_EQ(decision.links.size(), 2u);
    EXPECT_EQ(decision.links[0].verdict, Verdict::accepted);
    EXPECT_EQ(decision.links[1].verdict, Verdict::accepted);
}

TEST(Place, ContradictsTheLinkThatMissesWhatTheOthersSay)
{
    Assembly assembly;
    assembly.groups = {{0, 1, 2, 3}};
    assembly.links = {link(0, 1, 5.0, Verdict::accepted),  link(0, 2, 10.05, Verdict::confirmed),
                      link(0, 3, 15.0, Verdict::accepted), link(1, 2, 5.0, Verdict::accepted),
                      link(1, 3, 10.0, Verdict::accepted), link(2, 3, 5.0, Verdict::accepted)};

    const Decision decision = placeGroups(assembly, constraintsOf(4));

    for (std::size_t i = 0; i < decision.links.size(); ++i)
        EXPECT_EQ(decision.links[i].verdict == Verdict::contradicted, i == 1) << i;
    EXPECT_NEAR(decision.groups.at(0).placements[2].start, 10.0, 1e-6);
}

TEST(Place, KeepsStartsThatAreKnown)
{
    Assembly assembly;
    assembly.groups = {{0, 1}};
    Constraints constraints = constraintsOf(2);
    constraints.known = {{0, 100.0}, {1, 107.5}};

    const PlacedGroup group = placed(assembly, constraints);

    EXPECT_NEAR(group.placements[0].start, 100.0, 1e-6);
    EXPECT_NEAR(group.placements[1].start, 107.5, 1e-6);
    // A given start is exact, to the microsecond (times the root of 2, for two points).
    EXPECT_LT(group.placements[1].startError, 25e-6);
}

TEST(Place, TellsKnownStartsAsTheyWereGivenWhateverTheClocksDo)
{
    Assembly assembly;
    assembly.groups = {{0, 1}};
    assembly.links = {links::linkOf(0, 1, 40.0, 0.6)};
    assembly.links[0].verdict = Verdict::accepted;
    assembly.links[0].line.slope = 50e-6;
    Constraints constraints = constraintsOf(2);
    constraints.known = {{1, 1040.0}, {0, 1000.0}};

    const PlacedGroup group = placed(assembly, constraints);

    EXPECT_EQ(group.reference, 1u);
    EXPECT_NEAR(group.placements[1].start, 1040.0, 1e-9);
    // 50 millionths of 40 s would be 2 ms.
    EXPECT_NEAR(group.placements[0].start, 1000.0, 50e-6);
}

TEST(Place, CountsOnTheClockOfASingleKnownStart)
{
    Assembly assembly = threeTogether();
    Constraints constraints = constraintsOf(4);
    const PlacedGroup free = placed(assembly, constraints);
    constraints.known = {{1, -50.0}};

    const PlacedGroup group = placed(assembly, constraints);

    EXPECT_NEAR(group.placements[1].start, -50.0, 1e-9);
    EXPECT_NEAR(group.placements[0].start - group.placements[1].start,
                free.placements[0].start - free.placements[1].start, 1e-9);
}

TEST(Place, IgnoresKnownStartsOfOtherGroups)
{
    Assembly assembly = threeTogether();
    Constraints constraints = constraintsOf(4);
    constraints.known = {{3, 107.5}};

    EXPECT_NEAR(placed(assembly, constraints).placements[0].start, 10.0, 1e-6);
}

TEST(Place, TellsWhereSoundDisagreesWithKnownStarts)
{
    Assembly assembly;
    assembly.groups = {{0, 1}};
    assembly.links = vxlsync::judgeLinks({links::linkOf(0, 1, 7.9, 0.6)}, {0.6, 0.6});
    Constraints constraints = constraintsOf(2);
    constraints.known = {{0, 100.0}, {1, 107.5}};

    const Decision decision = placeGroups(assembly, constraints);

    ASSERT_EQ(decision.disagreements.size(), 1u);
    EXPECT_NEAR(decision.disagreements[0].laterSeconds, 0.4, 1e-3);
}

// Drift of the second against the first, by a slope of 50 millionths.
double driftBy(std::size_t windows, double overlap)
{
    Assembly assembly;
    assembly.groups = {{0, 1}};
    assembly.links = {link(0, 1, 0.0, Verdict::accepted)};
    assembly.links[0].line.end = overlap;
    assembly.links[0].line.middle = overlap / 2.0;
    assembly.links[0].line.slope = 50e-6;
    assembly.links[0].line.slopeError = 0.0;
    assembly.links[0].line.windows.resize(windows);
    return placed(assembly, constraintsOf(2)).placements[1].drift;
}

TEST(Place, BelievesSlopesOfFourWindowsAndMore)
{
    EXPECT_NEAR(driftBy(4, 60.0), 50e-6, 1e-6);
    EXPECT_EQ(driftBy(3, 60.0), 0.0);
}

TEST(Place, BelievesNoSlopeOfAShortTime)
{
    // The error that all windows share is 5e-5 / 2 s, or 25 millionths: two errors from none, where
    // four are needed.
    EXPECT_EQ(driftBy(20, 2.0), 0.0);
    // Of a shared time below a second, no less than that of a second counts.
    EXPECT_EQ(driftBy(20, 0.5), 0.0);
    // 5e-5 / 10 s.
    EXPECT_NEAR(driftBy(20, 10.0), 50e-6, 1e-6);
}

} // namespace
