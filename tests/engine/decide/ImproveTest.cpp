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

TEST(Standing, CountsAnotherGroupThatTheRestCannotJoin)
{
    Scene scene({linkOf(0, 1, 10.0, 0.6), linkOf(1, 2, 10.0, 0.6)}, 3);
    scene.seen = different();
    scene.join(0);

    // 0 and 2 would share 40 s and hear nothing in common.
    EXPECT_NEAR(standingOf({1}, scene.arrangement).elsewhere, 25.0 * 0.4, 1e-9);
}

} // namespace
