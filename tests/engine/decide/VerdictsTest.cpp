#include "decide/Verdicts.h"

#include <limits>

#include <gmock/gmock.h>

#include "TestLinks.h"

namespace
{

using links::linkOf;
using testing::ElementsAre;
using vxlsync::Alignment;
using vxlsync::bestCoherences;
using vxlsync::Doubt;
using vxlsync::isFinite;
using vxlsync::judgeLinks;
using vxlsync::Link;
using vxlsync::Links;
using vxlsync::sayingLinks;
using vxlsync::strengthOf;
using vxlsync::Verdict;

// A link that nothing speaks against, but for what a test changes.
struct Case {
    double coherence = 0.5;
    // Against what its recordings reach at best.
    double relative = 1.0;
    // Coherence of the next best offset against that of the link; 0 for none.
    double rival = 0.0;
    double agreement = 1.0;
    double significance = 1000.0;
    double overlap = 50.0;
    double heardSeconds = 25.0;
    // Of 20 windows.
    std::size_t agreeingWindows = 20;
    double slope = 5e-6;
    double slopeError = 1e-6;

    Verdict verdict() const { return judged().verdict; }
    Doubt doubt() const { return judged().doubt; }

private:
    Link judged() const
    {
        Links links{linkOf(0, 1, 0.0, coherence, agreement)};
        links[0].line.end = overlap;
        links[0].line.significance = significance;
        links[0].line.heardSeconds = heardSeconds;
        links[0].line.slope = slope;
        links[0].line.slopeError = slopeError;
        for (std::size_t i = 0; i < agreeingWindows; ++i)
            links[0].line.windows[i].agrees = true;
        if (rival > 0.0) links.push_back(linkOf(0, 1, 8.0, rival * coherence));
        const double best = coherence / relative;
        return judgeLinks(links, {best, best})[0];
    }
};

TEST(Verdict, IsWeakBelowHalfOfWhatBothReachWithOthers)
{
    Case link;
    link.relative = 0.51;
    EXPECT_EQ(link.verdict(), Verdict::accepted);
    link.relative = 0.49;
    EXPECT_EQ(link.verdict(), Verdict::weak);
}

TEST(Verdict, IsAmbiguousWhereALinkOfTheSecondRankHasARival)
{
    Case link;
    link.relative = 0.6;
    // 0.6 * (1 - 0.49) is 0.306, and 0.6 * (1 - 0.51) is 0.294, of which 0.3 are needed.
    link.rival = 0.49;
    EXPECT_EQ(link.verdict(), Verdict::accepted);
    link.rival = 0.51;
    EXPECT_EQ(link.verdict(), Verdict::ambiguous);
}

TEST(Verdict, GrantsRivalsToLinksThatAreAsGoodAsAny)
{
    Case link;
    link.rival = 0.9;
    link.relative = 0.81;
    EXPECT_EQ(link.verdict(), Verdict::accepted);
    // 0.79 * (1 - 0.9) is no distinction.
    link.relative = 0.79;
    EXPECT_EQ(link.verdict(), Verdict::ambiguous);
}

TEST(Verdict, LetsRivalsComeTheNearerTheMoreCoherentALinkIs)
{
    struct Limit {
        double coherence;
        double below;
        double above;
    };
    // 0.6 below 0.3; from there on 0.7 rising to 0.95 at 0.45: half way at 0.375 it is 0.825.
    for (const Limit& limit : {Limit{0.1, 0.59, 0.61},
                               {0.299, 0.59, 0.61},
                               {0.301, 0.69, 0.72},
                               {0.375, 0.82, 0.83},
                               {0.449, 0.94, 0.96},
                               {0.9, 0.94, 0.96}}) {
        Case link;
        link.coherence = limit.coherence;
        link.rival = limit.below;
        EXPECT_EQ(link.verdict(), Verdict::accepted) << limit.coherence;
        link.rival = limit.above;
        EXPECT_EQ(link.verdict(), Verdict::ambiguous) << limit.coherence;
    }
}

TEST(Verdict, AsksForTheMoreAgreementTheLessAlikeTheTwoAre)
{
    struct Limit {
        double relative;
        double needed;
    };
    // 0.97 up to 0.8, falling to 0.85 at 0.95: half way at 0.875 it is 0.91.
    for (const Limit& limit :
         {Limit{0.6, 0.97}, {0.8, 0.97}, {0.875, 0.91}, {0.95, 0.85}, {1.0, 0.85}}) {
        Case link;
        link.relative = limit.relative;
        link.agreement = limit.needed + 0.001;
        EXPECT_EQ(link.verdict(), Verdict::accepted) << limit.relative;
        link.agreement = limit.needed - 0.001;
        EXPECT_EQ(link.verdict(), Verdict::weak) << limit.relative;
    }
}

TEST(Verdict, AsksForLessAgreementWhereNoiseDrownsSingleWindows)
{
    Case link;
    link.coherence = 0.089;
    link.agreement = 0.801;
    EXPECT_EQ(link.verdict(), Verdict::accepted);
    link.agreement = 0.799;
    EXPECT_EQ(link.verdict(), Verdict::weak);
    // At 0.09 and above, 0.85 is needed of the best.
    link.coherence = 0.09;
    link.agreement = 0.849;
    EXPECT_EQ(link.verdict(), Verdict::weak);
    link.agreement = 0.851;
    EXPECT_EQ(link.verdict(), Verdict::accepted);
}

TEST(Verdict, AsksForTheMoreEvidenceTheShorterTheOverlapIs)
{
    struct Limit {
        double overlap;
        double needed;
    };
    // 40 up to 4 s, falling to 18 at 12 s: half way at 8 s it is 29.
    for (const Limit& limit :
         {Limit{2.0, 40.0}, {4.0, 40.0}, {8.0, 29.0}, {12.0, 18.0}, {60.0, 18.0}}) {
        Case link;
        link.overlap = limit.overlap;
        link.significance = limit.needed;
        EXPECT_EQ(link.verdict(), Verdict::accepted) << limit.overlap;
        link.significance = limit.needed - 0.01;
        EXPECT_EQ(link.verdict(), Verdict::weak) << limit.overlap;
    }
}

TEST(Verdict, IsAmbiguousWhereHardlyMoreThanAClickIsHeard)
{
    Case link;
    link.agreeingWindows = 10;
    link.heardSeconds = 0.91;
    EXPECT_EQ(link.verdict(), Verdict::accepted);
    EXPECT_EQ(link.doubt(), Doubt::none);
    link.heardSeconds = 0.89;
    EXPECT_EQ(link.verdict(), Verdict::ambiguous);
    EXPECT_EQ(link.doubt(), Doubt::littleHeard);
}

// Six seconds of 40 may be a jingle that two rooms have heard.
TEST(Verdict, IsAmbiguousWhereLittleIsHeardAndTheRestSaysNothing)
{
    Case link;
    link.overlap = 40.0;
    link.heardSeconds = 6.0;
    link.agreeingWindows = 9;
    EXPECT_EQ(link.verdict(), Verdict::ambiguous);
    EXPECT_EQ(link.doubt(), Doubt::littleHeard);

    link.agreeingWindows = 10;
    EXPECT_EQ(link.verdict(), Verdict::accepted);

    link.agreeingWindows = 9;
    link.overlap = 24.0;
    EXPECT_EQ(link.verdict(), Verdict::accepted);

    link.overlap = 400.0;
    link.heardSeconds = 9.9;
    EXPECT_EQ(link.doubt(), Doubt::littleHeard);
    link.heardSeconds = 10.0;
    EXPECT_EQ(link.doubt(), Doubt::none);
}

TEST(HeardSeconds, AreAllThatIsSharedWhereSteadySoundAgreesAllAlong)
{
    // 50 s are shared, and 5 of them stand above the noise, or a little less.
    const auto heard = [](std::size_t windows, std::size_t agreeing, double aboveNoise) {
        Alignment line = linkOf(0, 1, 10.0, 0.5).line;
        line.heardSeconds = aboveNoise;
        line.windows.resize(windows);
        for (std::size_t i = 0; i < agreeing; ++i)
            line.windows[i].agrees = true;
        return vxlsync::heardSecondsOf(line);
    };
    EXPECT_EQ(heard(20, 18, 4.9), 50.0);
    EXPECT_EQ(heard(20, 17, 4.9), 4.9);
    EXPECT_EQ(heard(20, 18, 5.1), 5.1);
    EXPECT_EQ(heard(8, 8, 4.9), 50.0);
    EXPECT_EQ(heard(7, 7, 4.9), 4.9);
}

// Two recordings of one clock whose sound repeats.
Case repeatOfOneDevice()
{
    Case link;
    link.coherence = 0.59;
    link.rival = 0.31;
    link.slope = 0.49e-6;
    link.slopeError = 0.1e-6;
    return link;
}

TEST(Verdict, IsAmbiguousWhereTheTwoMayBeOneDevice)
{
    EXPECT_EQ(repeatOfOneDevice().verdict(), Verdict::ambiguous);
    EXPECT_EQ(repeatOfOneDevice().doubt(), Doubt::oneDevice);
    Case backwards = repeatOfOneDevice();
    backwards.slope = -0.49e-6;
    EXPECT_EQ(backwards.doubt(), Doubt::oneDevice);
}

TEST(Verdict, TakesTwoForOneDeviceOnlyIfTheirClocksAreTheSame)
{
    Case link = repeatOfOneDevice();
    link.slope = 0.51e-6;
    EXPECT_EQ(link.verdict(), Verdict::accepted);
    // Three errors of 0.2 are 0.6.
    link.slopeError = 0.2e-6;
    link.slope = 0.59e-6;
    EXPECT_EQ(link.verdict(), Verdict::ambiguous);
    link.slope = 0.61e-6;
    EXPECT_EQ(link.verdict(), Verdict::accepted);
    link = repeatOfOneDevice();
    link.slopeError = 0.61e-6;
    EXPECT_EQ(link.verdict(), Verdict::accepted);
    link.coherence = 0.49;
    EXPECT_EQ(link.verdict(), Verdict::ambiguous);
    link.coherence = 0.51;
    EXPECT_EQ(link.verdict(), Verdict::accepted);
    link.slopeError = 0.59e-6;
    EXPECT_EQ(link.verdict(), Verdict::ambiguous);
}

TEST(Verdict, TakesTwoForOneDeviceOnlyIfTheirSoundIsARepeat)
{
    Case same = repeatOfOneDevice();
    same.coherence = 0.61;
    EXPECT_EQ(same.verdict(), Verdict::accepted);
    Case single = repeatOfOneDevice();
    single.rival = 0.29;
    EXPECT_EQ(single.verdict(), Verdict::accepted);
}

// What repeatOfOneDevice says of 0 and 1, and what a third recording says of both: 2 begins 10 s
// after 0, and 1 `miss` later than 10 s before 2.
Link judgedWithThird(double miss, double coherenceOfThird = 0.9)
{
    const Case repeat = repeatOfOneDevice();
    Links links{linkOf(0, 1, 0.0, repeat.coherence),
                linkOf(0, 1, 8.0, repeat.rival * repeat.coherence),
                linkOf(0, 2, 10.0, coherenceOfThird), linkOf(1, 2, 10.0 - miss, coherenceOfThird)};
    links[0].line.slope = repeat.slope;
    links[0].line.slopeError = repeat.slopeError;
    return judgeLinks(links, {0.6, 0.6, 0.9})[0];
}

TEST(JudgeLinks, BelievesThatTwoAreNotOneDeviceWhereAThirdLiesToBothAsTheySay)
{
    EXPECT_EQ(judgedWithThird(0.004).verdict, Verdict::accepted);
    EXPECT_EQ(judgedWithThird(0.004).doubt, Doubt::none);
    EXPECT_EQ(judgedWithThird(-0.006).verdict, Verdict::ambiguous);
    EXPECT_EQ(judgedWithThird(-0.006).doubt, Doubt::oneDevice);
}

TEST(JudgeLinks, BelievesTheBestOfNearlyEqualPlacesWhereAThirdLiesToBothAsItSays)
{
    for (const double miss : {0.004, 0.006}) {
        const Links judged = judgeLinks({linkOf(0, 1, 0.0, 0.5), linkOf(0, 1, 8.0, 0.49),
                                         linkOf(0, 2, 10.0, 0.5), linkOf(0, 2, 18.0, 0.49),
                                         linkOf(1, 2, 10.0 - miss, 0.5), linkOf(1, 2, 2.0, 0.49)},
                                        {0.5, 0.5, 0.5});
        const Verdict expected = miss < 0.005 ? Verdict::accepted : Verdict::ambiguous;
        EXPECT_EQ(judged[0].verdict, expected);
        EXPECT_EQ(judged[4].verdict, expected);
        EXPECT_EQ(judged[1].verdict, Verdict::ambiguous);
    }
}

TEST(JudgeLinks, TakesNoWitnessForWhatIsHardlyHeard)
{
    Links links{linkOf(0, 1, 0.0, 0.5), linkOf(0, 2, 10.0, 0.5), linkOf(1, 2, 10.0, 0.5)};
    links[0].line.heardSeconds = 0.5;
    EXPECT_EQ(judgeLinks(links, {0.5, 0.5, 0.5})[0].doubt, Doubt::littleHeard);
}

TEST(JudgeLinks, TakesNoWitnessThatIsWeakItself)
{
    // Coherences of 0.25 are below half of what the recordings reach with others, 0.6.
    EXPECT_EQ(judgedWithThird(0.0, 0.25).doubt, Doubt::oneDevice);
}

TEST(JudgeLinks, MeasuresAgainstTheLowerOfTheTwoBests)
{
    const Links judged = judgeLinks({linkOf(0, 1, 10.0, 0.25)}, {0.5, 1.0});

    EXPECT_EQ(judged[0].relative, 0.5);
}

TEST(JudgeLinks, ComparesTheBestOfAPairWithTheNextAndOthersWithTheBest)
{
    const Links judged = judgeLinks({linkOf(0, 1, 10.0, 0.5), linkOf(0, 1, 18.0, 0.25),
                                     linkOf(0, 1, 26.0, 0.125), linkOf(0, 2, 10.0, 0.25)},
                                    {1.0, 1.0, 1.0});

    EXPECT_EQ(judged[0].rival, 0.5);
    EXPECT_EQ(judged[1].rival, 2.0);
    EXPECT_EQ(judged[2].rival, 4.0);
    EXPECT_EQ(judged[3].rival, 0.0);
}

TEST(BestCoherences, AreThoseThatEachRecordingReachesWithAnyone)
{
    EXPECT_THAT(
        bestCoherences(
            {linkOf(0, 1, 10.0, 0.5), linkOf(0, 1, 18.0, 0.25), linkOf(1, 2, 10.0, 0.75)}, 4),
        ElementsAre(0.5, 0.75, 0.75, 0.0));
}

TEST(SayingLinks, AreThoseWithCoherenceAndFiniteNumbers)
{
    Links links{linkOf(0, 1, 10.0, 0.5), linkOf(0, 2, 10.0, 0.0), linkOf(0, 3, 10.0, 0.5),
                linkOf(1, 3, 10.0, 0.5)};
    links[2].line.offset = std::numeric_limits<double>::infinity();

    const Links saying = sayingLinks(links);

    ASSERT_EQ(saying.size(), 2u);
    EXPECT_EQ(saying[0].second, 1u);
    EXPECT_EQ(saying[1].first, 1u);
}

TEST(IsFinite, LooksAtEveryNumberThatIsWorkedWith)
{
    EXPECT_TRUE(isFinite(linkOf(0, 1, 10.0, 0.5).line));
    for (double Alignment::*number :
         {&Alignment::middle, &Alignment::offset, &Alignment::slope, &Alignment::offsetError,
          &Alignment::slopeError, &Alignment::start, &Alignment::end, &Alignment::coherence,
          &Alignment::significance, &Alignment::agreement, &Alignment::heardSeconds}) {
        Alignment line;
        line.*number = std::numeric_limits<double>::quiet_NaN();
        EXPECT_FALSE(isFinite(line));
        line.*number = -std::numeric_limits<double>::infinity();
        EXPECT_FALSE(isFinite(line));
    }
}

TEST(Strength, GrowsWithEvidenceUpToAPointAndFallsWithRivals)
{
    Link link = linkOf(0, 1, 10.0, 0.5);
    link.relative = 0.5;
    link.rival = 0.5;
    // 0.5 * (1 - 0.7 * 0.5) * 30 / 60 + 0.0001 * 30.
    link.line.significance = 30.0;
    EXPECT_NEAR(strengthOf(link), 0.1655, 1e-12);
    // 0.5 * (1 - 0.7 * 0.5) + 0.0001 * 120.
    link.line.significance = 120.0;
    EXPECT_NEAR(strengthOf(link), 0.337, 1e-12);
}

} // namespace
