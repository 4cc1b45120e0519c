#include "decide/Improve.h"

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
using vxlsync::Constraints;
using vxlsync::Link;
using vxlsync::Standing;

TEST(Improve, MovesARecordingToThePlaceForWhichMoreSpeaks)
{
    Scene scene({linkOf(0, 1, 10.0, 0.6), linkOf(0, 2, 20.0, 0.6), linkOf(1, 2, 10.0, 0.6),
                 linkOf(1, 2, 18.0, 0.5)},
                3);
    scene.join(0);
    scene.join(3);
    ASSERT_DOUBLE_EQ(scene.startOf(2), 28.0);

    improve(scene.arrangement);

    EXPECT_DOUBLE_EQ(scene.startOf(2), 20.0);
    EXPECT_TRUE(scene.arrangement.holds(1));
    EXPECT_TRUE(scene.arrangement.holds(2));
    EXPECT_FALSE(scene.arrangement.holds(3));
}

TEST(Improve, CanBeCancelled)
{
    Scene scene({linkOf(0, 1, 10.0, 0.6)}, 2);
    scene.join(0);
    scene.isCancelled = true;

    EXPECT_THROW(improve(scene.arrangement), vxlsync::Cancelled);
}

TEST(Improve, MovesAPartOfAGroupAsAWhole)
{
    // 2 and 3 hang on the rest by a turn of the loop; two links say 8 s less.
    Scene scene({linkOf(0, 1, 10.0, 0.6), linkOf(0, 2, 20.0, 0.6), linkOf(1, 2, 18.0, 0.5),
                 linkOf(1, 3, 15.0, 0.6), linkOf(2, 3, 5.0, 0.6)},
                4);
    scene.join(0);
    scene.join(2);
    scene.join(4);

    improve(scene.arrangement);

    EXPECT_DOUBLE_EQ(scene.startOf(2), 20.0);
    EXPECT_DOUBLE_EQ(scene.startOf(3), 25.0);
}

TEST(Improve, LeavesWhatIsRight)
{
    Scene scene({linkOf(0, 1, 10.0, 0.6), linkOf(0, 1, 18.0, 0.5)}, 2);
    scene.join(0);

    improve(scene.arrangement);

    EXPECT_THAT(scene.arrangement.groups().all(), ElementsAre(ElementsAre(0, 1)));
    EXPECT_DOUBLE_EQ(scene.startOf(1), 10.0);
}

TEST(Improve, PartsWhatMoreSpeaksAgainst)
{
    // 0.3 against 0.6 is no more than a repeat.
    Scene scene({linkOf(0, 1, 10.0, 0.6), linkOf(1, 2, 10.0, 0.3), linkOf(2, 3, 10.0, 0.6)}, 4);
    scene.join(0);
    scene.join(1);
    scene.join(2);

    improve(scene.arrangement);

    EXPECT_THAT(scene.arrangement.groups().all(),
                ElementsAre(ElementsAre(0, 1), ElementsAre(2, 3)));
}

TEST(Improve, DoesNotTakeAPlaceThatALookContradicts)
{
    // The turn has longer sound, but 0 would hear it too and does not.
    Scene scene({linkOf(0, 1, 10.0, 0.6), linkOf(1, 2, 30.0, 0.6), linkOf(1, 2, 5.0, 0.55)}, 3);
    scene.seen = different();
    scene.join(0);
    scene.join(1);

    improve(scene.arrangement);

    EXPECT_DOUBLE_EQ(scene.startOf(2), 40.0);
}

TEST(Improve, DoesNotMoveWhatIsKnown)
{
    Constraints constraints = constraintsOf(2);
    constraints.known = {{0, 0.0}, {1, 30.0}};
    Scene scene({linkOf(0, 1, 10.0, 0.6)}, 2, constraints);

    improve(scene.arrangement);

    EXPECT_DOUBLE_EQ(scene.startOf(1), 30.0);
}

TEST(Improve, KeepsToWhatTheUserAndTheDevicesAllow)
{
    Constraints constraints = constraintsOf(3);
    constraints.devices = {"camera", "", "camera"};
    Scene scene({linkOf(0, 1, 50.0, 0.6), linkOf(1, 2, 20.0, 0.4), linkOf(1, 2, 5.0, 0.6)}, 3,
                constraints);
    scene.join(0);
    scene.join(1);

    improve(scene.arrangement);

    // At 55 s the camera would be in two places at once.
    EXPECT_DOUBLE_EQ(scene.startOf(2), 70.0);
}

// Two recordings that hear little of each other at this place.
Link unlikeLinkOf(std::size_t first, std::size_t second, double offset)
{
    return linkOf(first, second, offset, 0.6, 0.1);
}

// Pairs of a recording and one that stands 15 s before it, of which the latter belongs to that of
// the next pair. Nothing speaks for that while the next is with its own partner.
vxlsync::Links chainOf(std::size_t pairs)
{
    vxlsync::Links all;
    for (std::size_t pair = 0; pair < pairs; ++pair) {
        const std::size_t other = 2 * pair;
        const std::size_t own = other + 1;
        // 22.5 s are heard: 22.5 * 0.4 = 9.
        all.push_back(linkOf(other, own, -15.0, 0.6));
        // 22.5 * (0.1 * 0.4 + 0.9 * 0.6) = 13 against it.
        all.push_back(unlikeLinkOf(other, own + 2, -15.0));
        all.push_back(unlikeLinkOf(own, own + 1, 15.0));
        // 30 * 0.4 = 12.
        all.push_back(linkOf(own, own + 2, 0.0, 0.6));
    }
    return all;
}

TEST(Improve, EndsAfterSomeRoundsWhateverIsLeft)
{
    // In each round the pair before the one that moved last can move.
    constexpr std::size_t pairs = 9;
    constexpr std::size_t rounds = 8;
    Scene scene(chainOf(pairs), 2 * pairs + 2);
    for (std::size_t pair = 0; pair < pairs; ++pair)
        scene.join(4 * pair);

    improve(scene.arrangement);

    const vxlsync::Groups& groups = scene.arrangement.groups();
    for (std::size_t pair = pairs - rounds; pair < pairs; ++pair)
        EXPECT_EQ(groups.groupOf(2 * pair + 1), groups.groupOf(2 * pairs + 1)) << pair;
    EXPECT_EQ(groups.groupOf(1), groups.groupOf(0));

    improve(scene.arrangement);

    EXPECT_EQ(groups.groupOf(1), groups.groupOf(2 * pairs + 1));
}

TEST(Standing, TellsWhatSpeaksForThePlaceAndForTheBestOther)
{
    // 25 s are heard at 10 s and 21 s at 18 s, where 0.5 of 0.6 agrees.
    Scene scene({linkOf(0, 1, 10.0, 0.6), linkOf(0, 1, 18.0, 0.5)}, 2);
    scene.join(0);

    const Standing standing = standingOf({1}, scene.arrangement);

    EXPECT_NEAR(standing.here, 25.0 * 0.4, 1e-9);
    // Measured against the better place as well: 25 of 36.
    EXPECT_NEAR(standing.elsewhere, 21.0 * (25.0 / 36.0 - 0.6), 1e-9);
    EXPECT_NEAR(standing.margin(), 1.0 - standing.elsewhere / standing.here, 1e-12);
    EXPECT_TRUE(scene.arrangement.holds(0));
}

TEST(Standing, HasNoMarginWhereNothingSpeaksForThePlace)
{
    EXPECT_EQ((Standing{0.0, 0.0, true, false}).margin(), 0.0);
}

TEST(Standing, CountsNoOtherGroupThatTheRestMayJoinToo)
{
    // 2 is alone, and lies to 0 as to 1.
    Scene scene({linkOf(0, 1, 10.0, 0.6), linkOf(0, 2, 20.0, 0.6), linkOf(1, 2, 10.0, 0.6)}, 3);
    scene.join(0);

    EXPECT_EQ(standingOf({1}, scene.arrangement).elsewhere, 0.0);
}

// 2 lies 40 s before 0 and hears 1 for 5 s: 2 of the 10 that speak for 1 where it is.
constexpr double farOffset = -40.0;

TEST(Standing, LooksAtNoOtherGroupForWhichLittleSpeaks)
{
    Scene scene({linkOf(0, 1, 10.0, 0.6), linkOf(1, 2, farOffset - 10.0, 0.6)}, 3);
    scene.join(0);

    // A look would find that 0, which would share 20 s with 2, cannot come along.
    scene.seen = different();

    EXPECT_EQ(standingOf({1}, scene.arrangement).elsewhere, 0.0);
}

TEST(Standing, TakesTheLinksOfTheRestWhereItDoesNotLook)
{
    // The rest has a link for the place: half as coherent as both are at best, 10 s are heard.
    Scene scene({linkOf(0, 1, 10.0, 0.6), linkOf(0, 2, farOffset, 0.3),
                 linkOf(1, 2, farOffset - 10.0, 0.6)},
                3);
    scene.join(0);

    // 5 * 0.4 for 1, and 10 * (0.5 - 0.6) for 0: what both have is no gain.
    EXPECT_NEAR(standingOf({1}, scene.arrangement).elsewhere, 2.0 - (2.0 - 1.0), 1e-9);
}

TEST(Standing, CountsAnotherGroupThatTheRestCannotJoin)
{
    Scene scene({linkOf(0, 1, 10.0, 0.6), linkOf(1, 2, 10.0, 0.6)}, 3);
    scene.seen = different();
    scene.join(0);

    // 0 and 2 would share 40 s and hear nothing in common.
    EXPECT_NEAR(standingOf({1}, scene.arrangement).elsewhere, 25.0 * 0.4, 1e-9);
}

} // namespace
