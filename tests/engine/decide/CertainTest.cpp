#include "decide/Certain.h"

#include <gmock/gmock.h>

#include "TestScene.h"
#include "vxl_sync/Sync.h"

namespace
{

using links::constraintsOf;
using links::linkOf;
using links::Scene;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using vxlsync::Certainty;
using vxlsync::Confidence;
using vxlsync::Constraints;
using vxlsync::Doubtful;

// 1 lies 10 s after 0; a turn of the loop, 2 s earlier, is as coherent as `share` of that.
vxlsync::Links loopOf(double share)
{
    return {linkOf(0, 1, 10.0, 0.6), linkOf(0, 1, 8.0, share * 0.6)};
}

TEST(PartDoubtful, PartsWhatFitsElsewhereNearlyAsWell)
{
    // Of 0.4 for each second of 25 that are heard, 0.92 * 0.92 - 0.6 of 26: a margin of 0.36.
    Scene scene(loopOf(0.92), 2);
    scene.join(0);
    partDoubtful(scene.arrangement);
    EXPECT_THAT(scene.arrangement.groups().all(), ElementsAre(ElementsAre(0), ElementsAre(1)));
}

TEST(PartDoubtful, LeavesWhatHasAMargin)
{
    // 0.90 * 0.90 - 0.6 of 26: a margin of 0.45.
    Scene scene(loopOf(0.90), 2);
    scene.join(0);
    partDoubtful(scene.arrangement);
    EXPECT_THAT(scene.arrangement.groups().all(), ElementsAre(ElementsAre(0, 1)));
}

TEST(PartDoubtful, PartsWhatOnlyOneDoubtfulPairSays)
{
    // A repeat of one clock, by its coherence, slope and rival; clear of it at another slope.
    for (const double slope : {0.0, 5e-6}) {
        vxlsync::Links links{linkOf(0, 1, 10.0, 0.4), linkOf(0, 1, 30.0, 0.2)};
        links[0].line.slope = slope;
        Scene scene(links, 2);
        scene.join(0);
        partDoubtful(scene.arrangement);
        EXPECT_EQ(scene.arrangement.groups().all().size(), slope == 0.0 ? 2u : 1u);
    }
}

TEST(Doubt, CanBeCancelled)
{
    Scene scene({linkOf(0, 1, 10.0, 0.6)}, 2);
    scene.join(0);
    scene.isCancelled = true;

    EXPECT_THROW(partDoubtful(scene.arrangement), vxlsync::Cancelled);
    EXPECT_THROW(certaintiesOf(scene.arrangement), vxlsync::Cancelled);
}

TEST(PartDoubtful, LeavesWhatTheUserKnows)
{
    Constraints constraints = constraintsOf(2);
    constraints.known = {{0, 0.0}, {1, 30.0}};
    Scene scene({}, 2, constraints);
    partDoubtful(scene.arrangement);
    EXPECT_THAT(scene.arrangement.groups().all(), ElementsAre(ElementsAre(0, 1)));
}

TEST(Certainties, TellTheMarginAndTheEvidence)
{
    Scene scene(loopOf(0.8), 2);
    scene.join(0);

    const std::vector<Certainty> certainties = certaintiesOf(scene.arrangement);

    ASSERT_THAT(certainties, SizeIs(2));
    EXPECT_EQ(certainties[1].confidence, Confidence::certain);
    // 0.8 * 0.8 - 0.6 of 26 s.
    EXPECT_NEAR(certainties[1].margin, 1.0 - 26.0 * 0.04 / 10.0, 1e-9);
    EXPECT_NEAR(certainties[1].evidence, 10.0, 1e-9);
}

TEST(Certainties, CallLikelyWhatHasASmallMargin)
{
    // 0.88 * 0.88 - 0.6 of 26 s: a margin of 0.55.
    Scene scene(loopOf(0.88), 2);
    scene.join(0);
    EXPECT_EQ(certaintiesOf(scene.arrangement)[0].confidence, Confidence::likely);
}

// 0 and 1 alone, or with a third that lies to both as the link says.
Confidence confidenceOf(double coherence, double slope, bool isWitnessed)
{
    vxlsync::Links links{linkOf(0, 1, 10.0, coherence)};
    links[0].line.slope = slope;
    if (isWitnessed) {
        links.push_back(linkOf(0, 2, 20.0, 0.5));
        links.push_back(linkOf(1, 2, 10.0, 0.5));
    }
    Scene scene(links, 3);
    scene.join(0);
    if (isWitnessed) scene.join(1);
    return certaintiesOf(scene.arrangement)[1].confidence;
}

TEST(Certainties, CallLikelyWhatOneDeviceMayHaveRecordedTwice)
{
    // Clocks are told to a millionth, three errors of which count.
    EXPECT_EQ(confidenceOf(0.59, 2.9e-6, false), Confidence::likely);
    EXPECT_EQ(confidenceOf(0.59, 3.1e-6, false), Confidence::certain);
    EXPECT_EQ(confidenceOf(0.61, 2.9e-6, false), Confidence::certain);
    EXPECT_EQ(confidenceOf(0.59, 0.0, true), Confidence::certain);
    EXPECT_EQ(confidenceOf(0.59, 0.0, false), Confidence::likely);
}

TEST(Certainties, CallLikelyWhatLittleSpeaksFor)
{
    // 4.9 and 5.1 s are shared, half of it heard.
    Scene little({linkOf(0, 1, 55.1, 0.7)}, 2);
    little.join(0);
    EXPECT_EQ(certaintiesOf(little.arrangement)[1].confidence, Confidence::likely);
    Scene enough({linkOf(0, 1, 54.9, 0.7)}, 2);
    enough.join(0);
    EXPECT_EQ(certaintiesOf(enough.arrangement)[1].confidence, Confidence::certain);
}

TEST(Certainties, AreThoseOfTheWeakestTieThatARecordingHangsOn)
{
    // 2 hangs on 1 by 20 s of sound, and all three on nothing else.
    Scene scene({linkOf(0, 1, 10.0, 0.6), linkOf(1, 2, 40.0, 0.6)}, 3);
    scene.join(0);
    scene.join(1);

    const std::vector<Certainty> certainties = certaintiesOf(scene.arrangement);

    EXPECT_NEAR(certainties[0].evidence, 25.0 * 0.4, 1e-9);
    EXPECT_NEAR(certainties[2].evidence, 10.0 * 0.4, 1e-9);
}

TEST(Certainties, AreFullForWhatTheUserKnows)
{
    Constraints constraints = constraintsOf(2);
    constraints.known = {{0, 0.0}, {1, 10.0}};
    Scene scene({linkOf(0, 1, 10.0, 0.6)}, 2, constraints);

    const Certainty certainty = certaintiesOf(scene.arrangement)[1];

    EXPECT_EQ(certainty.confidence, Confidence::certain);
    EXPECT_EQ(certainty.margin, 1.0);
}

TEST(Doubtful, TellsThePlacesThatOthersSay)
{
    Scene scene(loopOf(0.97), 3);

    const std::vector<Doubtful> doubtful = doubtfulOf(scene.arrangement);

    ASSERT_THAT(doubtful, SizeIs(2));
    EXPECT_EQ(doubtful[0].recording, 0u);
    EXPECT_EQ(doubtful[1].recording, 1u);
    ASSERT_THAT(doubtful[1].candidates, SizeIs(2));
    EXPECT_EQ(doubtful[1].candidates[0].with, 0u);
    EXPECT_DOUBLE_EQ(doubtful[1].candidates[0].start, 10.0);
    EXPECT_NEAR(doubtful[1].candidates[0].evidence, 10.0, 1e-9);
    EXPECT_DOUBLE_EQ(doubtful[1].candidates[1].start, 8.0);
    EXPECT_DOUBLE_EQ(doubtful[0].candidates[0].start, -10.0);
}

TEST(Doubtful, TellsNothingOfPlacesThatNothingSpeaksFor)
{
    // 0.2 is far less than the 0.6 that both reach with others.
    Scene scene({linkOf(0, 1, 10.0, 0.6), linkOf(0, 2, 5.0, 0.2), linkOf(2, 3, 10.0, 0.6)}, 4);
    scene.join(0);

    EXPECT_THAT(doubtfulOf(scene.arrangement), SizeIs(2));
    scene.join(2);
    EXPECT_THAT(doubtfulOf(scene.arrangement), IsEmpty());
}

} // namespace
