#include "decide/Weigh.h"

#include <limits>

#include <gmock/gmock.h>

#include "TestLinks.h"

namespace
{

using links::linkOf;
using links::minute;
using vxlsync::Alignment;
using vxlsync::areBackedByLinks;
using vxlsync::Evidence;
using vxlsync::Examine;
using vxlsync::ImpliedPair;
using vxlsync::Link;
using vxlsync::Links;
using vxlsync::PairKnowledge;
using vxlsync::Scales;

// A link as it is after judging.
Link judgedLink(std::size_t first, std::size_t second, double offset, double relative,
                double rival = 0.0, double agreement = 1.0)
{
    Link link = linkOf(first, second, offset, 0.4, agreement);
    link.relative = relative;
    link.rival = rival;
    return link;
}

// Two recordings of a minute, of which the second starts after the offset.
ImpliedPair impliedAt(std::size_t first, std::size_t second, double offset)
{
    vxlsync::Placement place;
    place.start = offset;
    return {first, second, vxlsync::impliedLine(vxlsync::Placement(), minute, place, minute)};
}

// What a closer look sees: nothing in common, though both have sound and enough would be seen.
Alignment silenceBetweenTwoSounds()
{
    Alignment line;
    line.windows.resize(1);
    line.coherence = 0.2;
    line.significance = 0.0;
    line.fullSignificance = 100.0;
    line.agreement = 0.0;
    line.heardSeconds = 20.0;
    line.bands = 20;
    line.allBands = 40;
    line.activity = 1.0;
    return line;
}

const Links noLinks;

// What the pair says for which a look sees the line, both recordings being 0.4 coherent at best.
Evidence seen(const Alignment& line, double offset = 10.0, double best = 0.4)
{
    const std::vector<double> bests{best, best};
    const std::vector<double> durations{minute, minute};
    const Examine examine = [&](std::size_t, std::size_t, double, double) { return line; };
    return Scales({noLinks, bests, durations, examine}).closely({impliedAt(0, 1, offset)});
}

// Evidence of the links alone; nothing is looked at.
struct ByLinks {
    explicit ByLinks(Links newLinks) : links(std::move(newLinks)) {}

    Evidence of(const std::vector<ImpliedPair>& pairs) const
    {
        return Scales({links, best, durations, examine}).closely(pairs);
    }
    bool back(const std::vector<ImpliedPair>& pairs) const
    {
        return areBackedByLinks(pairs, {links, best, durations, examine});
    }

    Links links;
    std::vector<double> best = std::vector<double>(4, 0.4);
    std::vector<double> durations = std::vector<double>(4, minute);
    Examine examine = [](std::size_t, std::size_t, double, double) { return Alignment(); };
};

// Of two recordings that share 50 s, half of it loud, in all bands.
constexpr double loudSeconds = 25.0;

TEST(Weigh, CountsTheSecondsOfLinksByHowMuchMoreAlikeThanARepeatTheyAre)
{
    const Evidence evidence = ByLinks({judgedLink(0, 2, 10.0, 1.0), judgedLink(1, 2, -10.0, 0.7)})
                                  .of({impliedAt(0, 2, 10.0), impliedAt(1, 2, -10.0)});

    // 0.4 and 0.1 above 0.6.
    EXPECT_NEAR(evidence.support, loudSeconds * 0.5, 1e-9);
    EXPECT_EQ(evidence.against, 0.0);
}

TEST(Weigh, CountsLinksThatAreNoMoreAlikeThanARepeatAgainstThem)
{
    const Evidence evidence = ByLinks({judgedLink(0, 1, 10.0, 0.5)}).of({impliedAt(0, 1, 10.0)});

    EXPECT_EQ(evidence.support, 0.0);
    EXPECT_NEAR(evidence.against, loudSeconds * 0.1, 1e-9);
}

TEST(Weigh, CountsTheShareOfTheBandThatAgrees)
{
    Link link = judgedLink(0, 1, 10.0, 1.0);
    link.line.bands = 15;
    EXPECT_NEAR(vxlsync::weightOf(link), loudSeconds * 0.4 / 2.0, 1e-9);
}

TEST(Weigh, CountsSecondsThatDifferAgainstTheLink)
{
    // 0.96 agree and 0.04 do not, which is not yet partial.
    EXPECT_NEAR(vxlsync::weightOf(judgedLink(0, 1, 10.0, 1.0, 0.0, 0.96)),
                loudSeconds * (0.96 * 0.4 - 0.04 * 0.6), 1e-9);
}

TEST(Weigh, MeasuresALinkAgainstAMoreCoherentPlaceOfItsPair)
{
    // 1.0 / 1.25 is 0.8.
    EXPECT_NEAR(vxlsync::weightOf(judgedLink(0, 1, 10.0, 1.0, 1.25)), loudSeconds * 0.2, 1e-9);
}

TEST(Weigh, CountsNoLinkForMoreAlikeThanFully)
{
    EXPECT_NEAR(vxlsync::weightOf(judgedLink(0, 1, 10.0, 1.5)), loudSeconds * 0.4, 1e-9);
}

TEST(Weigh, TakesTheLinkOfThePairThatSaysTheSame)
{
    const ByLinks known({judgedLink(0, 1, 10.0, 0.7), judgedLink(0, 2, 20.0, 1.0),
                         judgedLink(0, 2, 10.0, 0.8), judgedLink(0, 2, 10.001, 0.7),
                         judgedLink(0, 3, 10.0, 0.9), judgedLink(1, 2, 10.0, 0.65)});

    EXPECT_NEAR(known.of({impliedAt(0, 2, 10.0)}).support, loudSeconds * 0.2, 1e-9);
    EXPECT_NEAR(known.of({impliedAt(0, 2, 20.0)}).support, 20.0 * 0.4, 1e-9);
    EXPECT_EQ(known.of({impliedAt(0, 2, 30.0)}).support, 0.0);
    EXPECT_EQ(known.of({impliedAt(1, 3, 10.0)}).support, 0.0);
    EXPECT_EQ(known.of({impliedAt(2, 3, 10.0)}).support, 0.0);
}

TEST(Weigh, DoesNotAskPairsThatWouldShareNothing)
{
    EXPECT_EQ(ByLinks({judgedLink(0, 1, 70.0, 1.0)}).of({impliedAt(0, 1, 70.0)}).support, 0.0);
}

TEST(Weigh, ReadsLinksFromTheOtherSideToo)
{
    const ByLinks known({judgedLink(0, 1, 10.0, 1.0)});
    EXPECT_NEAR(known.of({impliedAt(1, 0, -10.0)}).support, loudSeconds * 0.4, 1e-9);
    EXPECT_EQ(known.of({impliedAt(1, 0, 10.0)}).support, 0.0);
}

TEST(Weigh, CountsALinkThatHoldsAtTimesAgainstTheJoin)
{
    const Evidence evidence =
        ByLinks({judgedLink(0, 1, 10.0, 1.0, 0.0, 0.5)}).of({impliedAt(0, 1, 10.0)});

    // Half of it agrees and half of it does not.
    EXPECT_NEAR(evidence.against, loudSeconds * (0.5 * 0.4 + 0.5 * 0.6), 1e-9);
    EXPECT_EQ(evidence.support, 0.0);
}

TEST(Weigh, LooksCloselyWhereNoLinkSaysTheSame)
{
    const ByLinks known({judgedLink(0, 1, 30.0, 0.75)});
    std::vector<double> looked;
    const Examine examine = [&](std::size_t first, std::size_t second, double offset,
                                double slope) {
        looked = {static_cast<double>(first), static_cast<double>(second), offset, slope};
        return Alignment();
    };

    Scales({known.links, known.best, known.durations, examine}).closely({impliedAt(1, 0, -10.0)});

    EXPECT_THAT(looked, testing::ElementsAre(1.0, 0.0, -10.0, 0.0));
}

// 20 s are heard that differ.
constexpr double missed = 20.0 * 0.6;

TEST(Weigh, DoesNotAskWhatShortTimesSay)
{
    // Of a minute, 4.9 and 5.1 s are shared.
    EXPECT_EQ(seen(silenceBetweenTwoSounds(), 55.1).against, 0.0);
    EXPECT_NEAR(seen(silenceBetweenTwoSounds(), 54.9).against, missed, 1e-9);
}

TEST(Weigh, DoesNotAskRecordingsThatAreAlikeWithNobody)
{
    EXPECT_EQ(seen(silenceBetweenTwoSounds(), 10.0, 0.0).against, 0.0);
}

TEST(Weigh, TakesNoWindowForNoAnswer)
{
    Alignment line = silenceBetweenTwoSounds();
    line.windows.clear();

    EXPECT_EQ(seen(line).against, 0.0);
}

TEST(Weigh, TakesWhatIsNoNumberForNoAnswer)
{
    Alignment line = silenceBetweenTwoSounds();
    line.heardSeconds = std::numeric_limits<double>::quiet_NaN();

    EXPECT_EQ(seen(line).against, 0.0);
}

TEST(Weigh, CountsWhatALookSees)
{
    Alignment line = silenceBetweenTwoSounds();
    line.significance = 7.0;
    line.agreement = 1.0;
    line.activity = 0.0;

    // 0.28 of the 0.4 that both reach, in half of the band.
    line.coherence = 0.28;
    EXPECT_NEAR(seen(line).support, 20.0 * 0.5 * 0.1, 1e-9);
    line.coherence = 0.6;
    EXPECT_NEAR(seen(line).support, 20.0 * 0.5 * 0.4, 1e-9);
}

TEST(Weigh, SeesNothingBelowTheSignificanceAndAgreementOfSound)
{
    Alignment line = silenceBetweenTwoSounds();
    line.activity = 0.0;
    line.coherence = 0.4;
    line.agreement = 0.31;
    line.significance = 6.99;
    EXPECT_EQ(seen(line).support, 0.0);
    line.significance = 7.0;
    EXPECT_GT(seen(line).support, 0.0);
    line.agreement = 0.3;
    EXPECT_EQ(seen(line).support, 0.0);
}

TEST(Weigh, LooksAtNoPairTwice)
{
    int looks = 0;
    const std::vector<double> bests{0.4, 0.4};
    const std::vector<double> durations{minute, minute};
    const Examine examine = [&](std::size_t, std::size_t, double, double) {
        ++looks;
        return silenceBetweenTwoSounds();
    };
    Scales scales({noLinks, bests, durations, examine});

    const double first = scales.closely({impliedAt(0, 1, 10.0)}).against;
    EXPECT_EQ(scales.closely({impliedAt(0, 1, 10.0)}).against, first);
    EXPECT_EQ(looks, 1);
    scales.closely({impliedAt(0, 1, 10.1)});
    EXPECT_EQ(looks, 2);
}

TEST(Weigh, LooksAtThoseOfManyThatWouldShareMost)
{
    const std::vector<double> bests(10, 0.4);
    const std::vector<double> durations(10, minute);
    std::vector<std::size_t> looked;
    const Examine examine = [&](std::size_t, std::size_t second, double, double) {
        looked.push_back(second);
        return silenceBetweenTwoSounds();
    };
    std::vector<ImpliedPair> pairs;
    for (std::size_t i = 1; i < 10; ++i)
        pairs.push_back(impliedAt(0, i, 40.0 - static_cast<double>(i)));

    Scales({noLinks, bests, durations, examine}).closely(pairs);

    // The first shares 21 s, the last 29 s.
    EXPECT_THAT(looked, testing::ElementsAre(9, 8, 7, 6, 5, 4, 3, 2));
}

TEST(Weigh, ExpectsNothingOfPauses)
{
    Alignment line = silenceBetweenTwoSounds();
    line.activity = 0.2;
    EXPECT_NEAR(seen(line).against, missed, 1e-9);
    line.activity = 0.199;
    EXPECT_EQ(seen(line).against, 0.0);
    EXPECT_EQ(seen(line).support, 0.0);
}

TEST(Weigh, ExpectsNothingThatCouldNotBeSeen)
{
    Alignment line = silenceBetweenTwoSounds();
    // Half of 0.4 of 75.1 and 74.9: 15.02 and 14.98.
    line.fullSignificance = 75.1;
    EXPECT_NEAR(seen(line).against, missed, 1e-9);
    line.fullSignificance = 74.9;
    EXPECT_EQ(seen(line).against, 0.0);
}

TEST(Weigh, SaysNothingOfNoPairs)
{
    const Evidence evidence = ByLinks({}).of({});

    EXPECT_EQ(evidence.support, 0.0);
    EXPECT_EQ(evidence.against, 0.0);
}

TEST(Links, BackAJoinTogether)
{
    const std::vector<ImpliedPair> pairs{impliedAt(0, 2, 10.0), impliedAt(1, 3, 10.0)};

    // 0.16 + 0.5 * (1 - 0.7) is 0.31.
    EXPECT_TRUE(
        ByLinks({judgedLink(0, 2, 10.0, 0.16), judgedLink(1, 3, 10.0, 0.5, 0.7)}).back(pairs));
    // 0.16 + 0.5 * (1 - 0.74) is 0.29.
    EXPECT_FALSE(
        ByLinks({judgedLink(0, 2, 10.0, 0.16), judgedLink(1, 3, 10.0, 0.5, 0.74)}).back(pairs));
}

TEST(Links, DoNotBackAJoinAlone)
{
    const std::vector<ImpliedPair> pairs{impliedAt(0, 2, 10.0), impliedAt(1, 3, 10.0)};

    EXPECT_FALSE(ByLinks({judgedLink(0, 2, 10.0, 1.0)}).back(pairs));
    EXPECT_FALSE(ByLinks({judgedLink(0, 2, 10.0, 1.0), judgedLink(1, 3, 11.0, 1.0)}).back(pairs));
}

TEST(Links, ThatHoldAtTimesBackNothing)
{
    const std::vector<ImpliedPair> pairs{impliedAt(0, 2, 10.0), impliedAt(1, 3, 10.0)};

    EXPECT_FALSE(
        ByLinks({judgedLink(0, 2, 10.0, 1.0), judgedLink(1, 3, 10.0, 1.0, 0.0, 0.5)}).back(pairs));
}

} // namespace
