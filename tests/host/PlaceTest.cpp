#include "Place.h"

#include <gmock/gmock.h>

namespace
{

using vxlsync::Assembly;
using vxlsync::Link;
using vxlsync::PlacedGroup;
using vxlsync::Verdict;

Link link(std::size_t first, std::size_t second, double offset, Verdict verdict)
{
    Link one;
    one.first = first;
    one.second = second;
    one.found.line.start = std::max(0.0, offset);
    one.found.line.end = 60.0;
    one.found.line.middle = (one.found.line.start + 60.0) / 2.0;
    one.found.line.offset = offset;
    one.found.line.offsetError = 1e-5;
    one.found.line.slopeError = 1e-6;
    one.found.line.significance = 100.0;
    one.found.line.windows.resize(20);
    one.verdict = verdict;
    return one;
}

Assembly threeTogether()
{
    Assembly assembly;
    assembly.groups = {{0, 1, 2}, {3}};
    assembly.links = {link(0, 1, -10.0, Verdict::accepted), link(1, 2, 15.0, Verdict::accepted)};
    return assembly;
}

TEST(Place, CountsFromTheEarliest)
{
    Assembly assembly = threeTogether();

    const std::vector<PlacedGroup> groups = vxlsync::placeGroups(assembly, 4, {}, 4);

    ASSERT_EQ(groups.size(), 1u);
    // The second started 10 s before the first and 15 s before the third.
    EXPECT_NEAR(groups[0].placements[0].start, 10.0, 1e-6);
    EXPECT_NEAR(groups[0].placements[1].start, 0.0, 1e-6);
    EXPECT_NEAR(groups[0].placements[2].start, 15.0, 1e-6);
}

TEST(Place, TakesTheRecordingBestTiedForReference)
{
    Assembly assembly = threeTogether();

    EXPECT_EQ(vxlsync::placeGroups(assembly, 4, {}, 4)[0].reference, 1u);
}

TEST(Place, TakesTheReferenceThatIsAskedFor)
{
    Assembly assembly = threeTogether();

    EXPECT_EQ(vxlsync::placeGroups(assembly, 4, {}, 2)[0].reference, 2u);
}

TEST(Place, LeavesOutLinksThatAreNotUsed)
{
    Assembly assembly = threeTogether();
    assembly.links.push_back(link(0, 2, 3.0, Verdict::contradicted));

    const std::vector<PlacedGroup> groups = vxlsync::placeGroups(assembly, 4, {}, 4);

    EXPECT_NEAR(groups[0].placements[2].start, 15.0, 1e-6);
}

TEST(Place, KeepsStartsThatAreKnown)
{
    Assembly assembly;
    assembly.groups = {{0, 1}};

    const std::vector<PlacedGroup> groups =
        vxlsync::placeGroups(assembly, 2, {{0, 100.0}, {1, 107.5}}, 2);

    EXPECT_NEAR(groups[0].placements[0].start, 0.0, 1e-6);
    EXPECT_NEAR(groups[0].placements[1].start, 7.5, 1e-6);
}

} // namespace
