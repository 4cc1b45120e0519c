#include "decide/Arrangement.h"

#include <gmock/gmock.h>

#include "TestScene.h"
#include "vxl_sync/Sync.h"

namespace
{

using links::constraintsOf;
using links::different;
using links::linkOf;
using links::Scene;
using testing::ElementsAre;
using vxlsync::Arrangement;
using vxlsync::Constraints;
using vxlsync::ImpliedPair;
using vxlsync::Join;
using vxlsync::Link;
using vxlsync::Parting;
using vxlsync::Placement;

// Three in a row, 10 s apart.
vxlsync::Links row()
{
    return {linkOf(0, 1, 10.0, 0.6), linkOf(0, 2, 20.0, 0.6), linkOf(1, 2, 10.0, 0.6)};
}

// Its drift is not certain enough to count for places, but leads away from its middle.
Link driftingLink()
{
    Link link = linkOf(0, 1, 10.0, 0.6);
    link.line.middle = 0.0;
    link.line.slope = 1e-3;
    link.line.slopeError = 1e-3;
    return link;
}

// Of a join that puts the recording's group at the offset to the one of 0, whose clock is 0's.
Join joinAt(const Arrangement& arrangement, std::size_t recording, double offset)
{
    Placement by;
    by.start = offset;
    return {arrangement.groups().groupOf(0), arrangement.groups().groupOf(recording), by};
}

TEST(Arrangement, BeginsWithEachRecordingAlone)
{
    const Scene scene(row(), 3);

    EXPECT_THAT(scene.arrangement.groups().all(),
                ElementsAre(ElementsAre(0), ElementsAre(1), ElementsAre(2)));
    EXPECT_THAT(scene.arrangement.linksOf(1), ElementsAre(0, 2));
    for (const std::size_t link : {0u, 1u, 2u})
        EXPECT_FALSE(scene.arrangement.holds(link));
}

TEST(Arrangement, BeginsWithKnownStartsInOneGroup)
{
    Constraints constraints = constraintsOf(4);
    constraints.known = {{3, 5.0}, {0, 45.0}, {2, 25.0}};
    const Scene scene(row(), 4, constraints);
    const vxlsync::Groups& groups = scene.arrangement.groups();

    EXPECT_THAT(groups.all(), ElementsAre(ElementsAre(0, 2, 3), ElementsAre(1)));
    EXPECT_EQ(groups.placeOf(0).start, 45.0);
    EXPECT_EQ(groups.placeOf(2).start, 25.0);
    EXPECT_EQ(groups.placeOf(3).start, 5.0);
    EXPECT_TRUE(scene.arrangement.areHeld({1, 3}));
    EXPECT_FALSE(scene.arrangement.areHeld({1}));
}

TEST(Arrangement, HoldsLinksThatSayWhereTheirRecordingsLie)
{
    vxlsync::Links links = row();
    links.push_back(linkOf(1, 2, 18.0, 0.5));
    Scene scene(links, 3);
    scene.join(0);

    EXPECT_TRUE(scene.arrangement.holds(0));
    // 2 is in no group yet.
    EXPECT_FALSE(scene.arrangement.holds(1));
    scene.join(2);
    EXPECT_TRUE(scene.arrangement.holds(1));
    EXPECT_FALSE(scene.arrangement.holds(3));
}

TEST(Arrangement, HoldsALinkThatJoinedWhateverItSaysOfTheMiddle)
{
    Scene joined({driftingLink()}, 2);
    joined.join(0);
    EXPECT_TRUE(joined.arrangement.holds(0));

    Scene placed({linkOf(0, 1, 10.0, 0.6), driftingLink()}, 2);
    placed.join(0);
    // At the middle of what they share, 35 s, it is 35 ms off.
    EXPECT_FALSE(placed.arrangement.holds(1));
}

TEST(Arrangement, PartsSomeOfAGroupThatKeepTheirPlaces)
{
    Scene scene(row(), 3);
    scene.join(0);
    scene.join(2);

    const Parting parting = scene.arrangement.part({1, 2});

    EXPECT_THAT(scene.arrangement.groups().all(), ElementsAre(ElementsAre(0), ElementsAre(1, 2)));
    EXPECT_DOUBLE_EQ(scene.startOf(2), 20.0);
    EXPECT_EQ(parting.back.from, scene.arrangement.groups().groupOf(2));
    EXPECT_EQ(parting.back.into, scene.arrangement.groups().groupOf(0));
    // The other join was within the part, and the last link joined nothing.
    EXPECT_THAT(parting.carriers, ElementsAre(0));
    EXPECT_FALSE(scene.arrangement.holds(0));
    EXPECT_TRUE(scene.arrangement.holds(2));
    const std::vector<ImpliedPair> pairs = scene.arrangement.pairsOf(parting.back);
    ASSERT_EQ(pairs.size(), 2u);
    EXPECT_DOUBLE_EQ(pairs[0].line.offset, 10.0);
    EXPECT_DOUBLE_EQ(pairs[1].line.offset, 20.0);
}

TEST(Arrangement, IsAsBeforeOnceAPartingIsUndone)
{
    Scene scene({driftingLink(), linkOf(1, 2, 10.0, 0.6)}, 3);
    scene.join(0);
    scene.join(1);

    scene.arrangement.undo(scene.arrangement.part({1, 2}));

    EXPECT_THAT(scene.arrangement.groups().all(), ElementsAre(ElementsAre(0, 1, 2)));
    EXPECT_DOUBLE_EQ(scene.startOf(1), 10.0);
    EXPECT_DOUBLE_EQ(scene.startOf(2), 20.0);
    EXPECT_TRUE(scene.arrangement.holds(0));
    EXPECT_THAT(scene.arrangement.part({0}).carriers, ElementsAre(0));
}

// Once more apart and together by another link, the first is no longer what joined them.
TEST(Arrangement, ForgetsALinkThatJoinedWhatIsPartedNow)
{
    Scene scene({linkOf(0, 1, 10.0, 0.6), driftingLink()}, 2);
    scene.join(1);
    scene.arrangement.part({1});

    scene.join(0);

    EXPECT_FALSE(scene.arrangement.holds(1));
    EXPECT_THAT(scene.arrangement.part({1}).carriers, ElementsAre(0));
}

TEST(Arrangement, CountsForThePlaceWhatJoinedAndIsNotFoundByItsPair)
{
    Scene scene({driftingLink(), linkOf(1, 2, 10.0, 0.6)}, 3);
    scene.join(0);
    scene.join(1);

    const Parting first = scene.arrangement.part({1, 2});
    EXPECT_GT(weightOf(scene.judged[0]), 0.0);
    EXPECT_DOUBLE_EQ(scene.arrangement.carriedBy(first), weightOf(scene.judged[0]));
    EXPECT_EQ(scene.arrangement.byLinks(scene.arrangement.pairsOf(first.back)).support, 0.0);
    scene.arrangement.undo(first);

    // This one is found.
    const Parting second = scene.arrangement.part({2});
    EXPECT_EQ(scene.arrangement.carriedBy(second), 0.0);
    EXPECT_GT(scene.arrangement.byLinks(scene.arrangement.pairsOf(second.back)).support, 0.0);
}

TEST(Arrangement, WantsNoGroupsJoinedThatTheUserWantsApart)
{
    Constraints constraints = constraintsOf(4);
    constraints.apart = {{1, 2}};
    Scene scene(row(), 4, constraints);
    scene.join(0);
    const auto isUnwanted = [&](std::size_t into, std::size_t from) {
        const vxlsync::Groups& groups = scene.arrangement.groups();
        return scene.arrangement.isUnwanted({groups.groupOf(into), groups.groupOf(from), {}});
    };

    EXPECT_TRUE(isUnwanted(0, 2));
    EXPECT_TRUE(isUnwanted(2, 0));
    EXPECT_FALSE(isUnwanted(0, 3));
    EXPECT_FALSE(isUnwanted(2, 3));
}

TEST(Arrangement, AsksTheDevicesAndTheirClocks)
{
    Constraints constraints = constraintsOf(3);
    constraints.devices = {"camera", "camera", "camera"};
    constraints.clockStarts = {1000.0, 1100.0, 1200.0};
    Scene scene({linkOf(0, 1, 100.0, 0.6)}, 3, constraints);
    Arrangement& arrangement = scene.arrangement;
    const auto pairsAt = [&](double offset) {
        return arrangement.pairsOf(joinAt(arrangement, 2, offset));
    };
    EXPECT_FALSE(arrangement.isBackedByClocks(pairsAt(200.0)));
    arrangement.unite(joinAt(arrangement, 1, 100.0), 0);

    EXPECT_TRUE(arrangement.isDeviceTwice(pairsAt(130.0)));
    EXPECT_FALSE(arrangement.isDeviceTwice(pairsAt(200.0)));
    // The clock was right of two.
    EXPECT_TRUE(arrangement.isBackedByClocks(pairsAt(200.0)));
    EXPECT_FALSE(arrangement.isBackedByClocks(pairsAt(300.0)));
}

TEST(Arrangement, WeighsLinksLooksAndClocks)
{
    Constraints constraints = constraintsOf(3);
    constraints.likelyDevices = {"camera", "", "camera"};
    constraints.clockStarts = {1000.0, std::nullopt, 1055.0};
    Scene scene({linkOf(0, 1, 10.0, 0.6), linkOf(1, 2, 45.0, 0.6)}, 3, constraints);
    scene.seen = different();
    scene.join(0);
    const std::vector<ImpliedPair> pairs =
        scene.arrangement.pairsOf(scene.arrangement.groups().joinBy(scene.judged[1]));

    const vxlsync::Evidence byLinks = scene.arrangement.byLinks(pairs);
    const vxlsync::Evidence closely = scene.arrangement.closely(pairs);

    // The clock is worth 2; that one camera would be there twice for 5 s counts 12 against.
    EXPECT_DOUBLE_EQ(byLinks.support, weightOf(scene.judged[1]) + 2.0);
    EXPECT_DOUBLE_EQ(byLinks.against, 12.0);
    EXPECT_DOUBLE_EQ(closely.support, byLinks.support);
    // 0 and 2 would share 5 s and were not linked: 0.6 of 20 s that differ.
    EXPECT_DOUBLE_EQ(closely.against, 12.0 + 0.6 * 20.0);
}

TEST(Arrangement, CanBeCancelledWhereASearchTakesItsSteps)
{
    Scene scene(row(), 3);
    scene.join(0);
    scene.isCancelled = true;

    EXPECT_THROW(scene.arrangement.part({1}), vxlsync::Cancelled);
    EXPECT_THROW(scene.arrangement.closely({}), vxlsync::Cancelled);
    EXPECT_THAT(scene.arrangement.groups().all(), ElementsAre(ElementsAre(0, 1), ElementsAre(2)));
    EXPECT_EQ(scene.arrangement.byLinks({}).balance(), 0.0);
}

} // namespace
