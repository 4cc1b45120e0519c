#include "tell/MeasuredLinks.h"

#include <limits>

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using vxlsync::isFinite;
using vxlsync::Link;
using vxlsync::Links;
using vxlsync::linksWorthTelling;
using vxlsync::MeasuredLink;
using vxlsync::measuredLinkOf;
using vxlsync::Verdict;

constexpr double infinite = std::numeric_limits<double>::infinity();
constexpr double none = std::numeric_limits<double>::quiet_NaN();

// Told apart by their offsets.
Link linkOf(std::size_t first, std::size_t second, double offset, Verdict verdict)
{
    Link link;
    link.first = first;
    link.second = second;
    link.line.offset = offset;
    link.verdict = verdict;
    return link;
}

std::vector<double> offsetsOf(const Links& links)
{
    std::vector<double> offsets;
    for (const Link& link : links)
        offsets.push_back(link.line.offset);
    return offsets;
}

TEST(LinksWorthTelling, AreTheUsedOnesOfAPair)
{
    const Links links{linkOf(0, 1, 1.0, Verdict::weak), linkOf(0, 1, 2.0, Verdict::confirmed),
                      linkOf(0, 1, 3.0, Verdict::ambiguous), linkOf(0, 1, 4.0, Verdict::accepted)};

    EXPECT_THAT(offsetsOf(linksWorthTelling(links)), ElementsAre(2.0, 4.0));
}

TEST(LinksWorthTelling, AreTheBestOfAPairWithoutUsedOnes)
{
    const Links links{linkOf(0, 1, 1.0, Verdict::ambiguous), linkOf(0, 1, 2.0, Verdict::weak),
                      linkOf(0, 2, 3.0, Verdict::weak), linkOf(0, 2, 4.0, Verdict::weak),
                      linkOf(1, 2, 5.0, Verdict::forbidden)};

    EXPECT_THAT(offsetsOf(linksWorthTelling(links)), ElementsAre(1.0, 3.0, 5.0));
}

TEST(LinksWorthTelling, AreNoneOfNone)
{
    EXPECT_THAT(linksWorthTelling({}), IsEmpty());
}

TEST(MeasuredLink, HoldsWhatWasMeasured)
{
    Link link = linkOf(0, 1, 10.0, Verdict::accepted);
    link.method = vxlsync::Method::landmarks;
    link.line.start = 10.0;
    link.line.end = 60.0;
    link.line.middle = 35.0;
    link.line.slope = 2e-6;
    link.line.offsetError = 1e-5;
    link.line.slopeError = 3e-7;
    link.line.significance = 70.0;
    link.line.coherence = 0.5;
    link.line.agreement = 0.9;
    link.line.sign = -1.0;
    link.rival = 0.25;
    link.jumps = {{20.0, 0.5}};

    const MeasuredLink measured = measuredLinkOf(link, {4, 7});

    EXPECT_EQ(measured.first, 4u);
    EXPECT_EQ(measured.second, 7u);
    EXPECT_EQ(measured.method, vxlsync::Method::landmarks);
    EXPECT_EQ(measured.offsetSeconds, 10.0);
    // 25 s before and after the middle: 25 * 2e-6.
    EXPECT_DOUBLE_EQ(measured.offsetAtStartSeconds, 10.0 - 5e-5);
    EXPECT_DOUBLE_EQ(measured.offsetAtEndSeconds, 10.0 + 5e-5);
    EXPECT_EQ(measured.uncertaintySeconds, 1e-5);
    EXPECT_DOUBLE_EQ(measured.driftPpm, 2.0);
    EXPECT_DOUBLE_EQ(measured.driftUncertaintyPpm, 0.3);
    EXPECT_EQ(measured.overlapSeconds, 50.0);
    EXPECT_EQ(measured.peakRatio, 70.0);
    EXPECT_EQ(measured.coherence, 0.5);
    EXPECT_EQ(measured.agreement, 0.9);
    EXPECT_EQ(measured.secondBest, 0.25);
    EXPECT_TRUE(measured.inverted);
    ASSERT_EQ(measured.jumps.size(), 1u);
    EXPECT_EQ(measured.jumps[0].atSeconds, 20.0);
    EXPECT_EQ(measured.jumps[0].sizeSeconds, 0.5);
    EXPECT_EQ(measured.verdict, Verdict::accepted);
    EXPECT_EQ(measured.reason, "clear by itself");
}

TEST(MeasuredLink, IsToldFromTheOtherSideWhereTheSourcesStandTheOtherWayRound)
{
    Link link = linkOf(0, 1, 10.0, Verdict::accepted);
    link.line.start = 10.0;
    link.line.end = 60.0;
    link.line.middle = 30.0;
    link.line.slope = 1e-4;

    const MeasuredLink measured = measuredLinkOf(link, {5, 2});

    EXPECT_EQ(measured.first, 2u);
    EXPECT_EQ(measured.second, 5u);
    EXPECT_EQ(measured.offsetSeconds, -10.0);
    // The same two moments: 10 + 1e-4 * (10 - 30) and 10 + 1e-4 * (60 - 30).
    EXPECT_DOUBLE_EQ(measured.offsetAtStartSeconds, -9.998);
    EXPECT_DOUBLE_EQ(measured.offsetAtEndSeconds, -10.003);
    // 1 / (1 - 1e-4) seconds of the first pass in one of the second.
    EXPECT_NEAR(measured.driftPpm, -100.01, 1e-3);
    // From 10 - 9.998 to 60 - 10.003.
    EXPECT_DOUBLE_EQ(measured.overlapSeconds, 49.995);
    EXPECT_FALSE(measured.inverted);
}

TEST(MeasuredLink, HasItsJumpsAtTheSameMomentsFromTheOtherSide)
{
    Link link = linkOf(0, 1, 10.0, Verdict::accepted);
    link.jumps = {{20.0, 0.5}, {40.0, -0.25}};

    const MeasuredLink measured = measuredLinkOf(link, {1, 0});

    ASSERT_EQ(measured.jumps.size(), 2u);
    EXPECT_DOUBLE_EQ(measured.jumps[0].atSeconds, 10.0);
    EXPECT_DOUBLE_EQ(measured.jumps[0].sizeSeconds, -0.5);
    // At 40 s the offset is 10.5 s.
    EXPECT_DOUBLE_EQ(measured.jumps[1].atSeconds, 29.5);
    EXPECT_DOUBLE_EQ(measured.jumps[1].sizeSeconds, 0.25);
}

TEST(MeasuredLink, SaysWhyItIsUsedOrNot)
{
    const auto reasonOf = [](Verdict verdict) {
        return measuredLinkOf(linkOf(0, 1, 1.0, verdict), {0, 1}).reason;
    };

    EXPECT_EQ(reasonOf(Verdict::accepted), "clear by itself");
    EXPECT_EQ(reasonOf(Verdict::confirmed), "agrees with the other links of the group");
    EXPECT_EQ(reasonOf(Verdict::weak),
              "far less alike than a shared scene is: a part of the sound in common, or chance");
    EXPECT_EQ(reasonOf(Verdict::ambiguous),
              "another offset fits nearly as well: the sound repeats");
    EXPECT_EQ(reasonOf(Verdict::contradicted), "contradicts stronger links");
    EXPECT_EQ(reasonOf(Verdict::forbidden), "kept apart by the user");
}

TEST(MeasuredLink, SaysThatADeviceWouldHaveBeenInTwoPlaces)
{
    Link link = linkOf(0, 1, 1.0, Verdict::forbidden);
    link.isDeviceClash = true;

    EXPECT_EQ(measuredLinkOf(link, {0, 1}).reason,
              "one device would have been in two places at once");
}

TEST(MeasuredLink, SaysWhatMakesItDoubtful)
{
    Link link = linkOf(0, 1, 1.0, Verdict::ambiguous);

    link.doubt = vxlsync::Doubt::littleHeard;
    EXPECT_EQ(measuredLinkOf(link, {0, 1}).reason, "too little is heard in both to tell");
    link.doubt = vxlsync::Doubt::oneDevice;
    EXPECT_EQ(measuredLinkOf(link, {0, 1}).reason,
              "the sound repeats and the clocks are the same: perhaps one device at two times");
    link.verdict = Verdict::confirmed;
    EXPECT_EQ(measuredLinkOf(link, {0, 1}).reason, "agrees with the other links of the group");
}

TEST(MeasuredLink, IsFiniteIfAllOfItsNumbersAre)
{
    MeasuredLink link;
    link.jumps = {{1.0, 1.0}};

    EXPECT_TRUE(isFinite(link));
}

TEST(MeasuredLink, IsNotFiniteIfAnyOfItsNumbersIsNot)
{
    for (double MeasuredLink::*number :
         {&MeasuredLink::offsetSeconds, &MeasuredLink::offsetAtStartSeconds,
          &MeasuredLink::offsetAtEndSeconds, &MeasuredLink::uncertaintySeconds,
          &MeasuredLink::driftPpm, &MeasuredLink::driftUncertaintyPpm,
          &MeasuredLink::overlapSeconds, &MeasuredLink::peakRatio, &MeasuredLink::coherence,
          &MeasuredLink::agreement, &MeasuredLink::secondBest}) {
        MeasuredLink link;
        link.*number = none;
        EXPECT_FALSE(isFinite(link));
        link.*number = -infinite;
        EXPECT_FALSE(isFinite(link));
    }
    MeasuredLink link;
    link.jumps = {{1.0, 1.0}, {1.0, infinite}};
    EXPECT_FALSE(isFinite(link));
    link.jumps = {{none, 1.0}};
    EXPECT_FALSE(isFinite(link));
}

} // namespace
