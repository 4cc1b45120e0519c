#include "decide/Weigh.h"

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
using vxlsync::weigh;

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
    line.agreement = 1.0;
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
    return weigh({impliedAt(0, 1, offset)}, {noLinks, bests, durations, examine});
}

// Evidence of the links alone; nothing is looked at.
struct ByLinks {
    explicit ByLinks(Links newLinks) : links(std::move(newLinks)) {}

    Evidence of(const std::vector<ImpliedPair>& pairs) const
    {
        return weigh(pairs, {links, best, durations, examine});
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

TEST(Weigh, CountsLinksThatSayTheSameByHowAlikeTheyAre)
{
    const Evidence evidence = ByLinks({judgedLink(0, 2, 10.0, 0.75), judgedLink(1, 2, 5.0, 0.5)})
                                  .of({impliedAt(0, 2, 10.0), impliedAt(1, 2, 5.0)});

    EXPECT_DOUBLE_EQ(evidence.support, 1.25);
    EXPECT_EQ(evidence.against, 0.0);
}

TEST(Weigh, CountsNoLinkForMoreThanOne)
{
    EXPECT_EQ(ByLinks({judgedLink(0, 1, 10.0, 1.5)}).of({impliedAt(0, 1, 10.0)}).support, 1.0);
}

TEST(Weigh, TakesTheLinkOfThePairThatSaysTheSame)
{
    const ByLinks known({judgedLink(0, 1, 10.0, 0.25), judgedLink(0, 2, 30.0, 1.0),
                         judgedLink(0, 2, 10.0, 0.5), judgedLink(0, 2, 10.001, 0.25),
                         judgedLink(0, 3, 10.0, 0.75), judgedLink(1, 2, 10.0, 0.125)});

    EXPECT_DOUBLE_EQ(known.of({impliedAt(0, 2, 10.0)}).support, 0.5);
    EXPECT_DOUBLE_EQ(known.of({impliedAt(0, 2, 30.0)}).support, 1.0);
    EXPECT_EQ(known.of({impliedAt(0, 2, 20.0)}).support, 0.0);
    EXPECT_EQ(known.of({impliedAt(1, 3, 10.0)}).support, 0.0);
    EXPECT_EQ(known.of({impliedAt(2, 3, 10.0)}).support, 0.0);
}

TEST(Weigh, ReadsLinksFromTheOtherSideToo)
{
    EXPECT_EQ(ByLinks({judgedLink(0, 1, 10.0, 0.75)}).of({impliedAt(1, 0, -10.0)}).support, 0.75);
    EXPECT_EQ(ByLinks({judgedLink(0, 1, 10.0, 0.75)}).of({impliedAt(1, 0, 10.0)}).support, 0.0);
}

TEST(Weigh, CountsALinkThatHoldsAtTimesAgainstTheJoin)
{
    const Evidence evidence =
        ByLinks({judgedLink(0, 1, 10.0, 0.75, 0.0, 0.5)}).of({impliedAt(0, 1, 10.0)});

    EXPECT_EQ(evidence.against, 1.0);
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

    weigh({impliedAt(1, 0, -10.0)}, {known.links, known.best, known.durations, examine});

    EXPECT_THAT(looked, testing::ElementsAre(1.0, 0.0, -10.0, 0.0));
}

TEST(Weigh, DoesNotAskWhatShortTimesSay)
{
    // Of a minute, 4.9 and 5.1 s are shared.
    EXPECT_EQ(seen(silenceBetweenTwoSounds(), 55.1).against, 0.0);
    EXPECT_EQ(seen(silenceBetweenTwoSounds(), 54.9).against, 1.0);
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

TEST(Weigh, CountsWhatALookSees)
{
    Alignment line = silenceBetweenTwoSounds();
    line.significance = 7.0;
    line.agreement = 0.31;

    // 0.2 of the 0.4 that both reach.
    EXPECT_DOUBLE_EQ(seen(line).support, 0.5);
    EXPECT_EQ(seen(line).against, 0.0);
    line.coherence = 0.6;
    EXPECT_EQ(seen(line).support, 1.0);
}

TEST(Weigh, SeesNothingBelowTheSignificanceAndAgreementOfSound)
{
    Alignment line = silenceBetweenTwoSounds();
    line.significance = 6.99;
    EXPECT_EQ(seen(line).support, 0.0);
    EXPECT_EQ(seen(line).against, 1.0);
    line.significance = 7.0;
    line.agreement = 0.3;
    EXPECT_EQ(seen(line).support, 0.0);
    EXPECT_EQ(seen(line).against, 1.0);
}

TEST(Weigh, ExpectsNothingOfPauses)
{
    Alignment line = silenceBetweenTwoSounds();
    line.activity = 0.2;
    EXPECT_EQ(seen(line).against, 1.0);
    line.activity = 0.199;
    EXPECT_EQ(seen(line).against, 0.0);
    EXPECT_EQ(seen(line).support, 0.0);
}

TEST(Weigh, ExpectsNothingThatCouldNotBeSeen)
{
    Alignment line = silenceBetweenTwoSounds();
    // Half of 0.4 of 75.1 and 74.9: 15.02 and 14.98.
    line.fullSignificance = 75.1;
    EXPECT_EQ(seen(line).against, 1.0);
    line.fullSignificance = 74.9;
    EXPECT_EQ(seen(line).against, 0.0);
}

TEST(Weigh, LooksAtThePairsThatWouldShareMost)
{
    // Of 20 pairs, each shares a second less than the one before.
    std::vector<ImpliedPair> pairs;
    for (std::size_t i = 0; i < 20; ++i)
        pairs.push_back(impliedAt(0, i + 1, 39.0 - static_cast<double>(i)));
    const std::vector<double> best(21, 0.4);
    const std::vector<double> durations(21, minute);
    std::vector<std::size_t> lookedAt;
    const Examine examine = [&](std::size_t, std::size_t second, double, double) {
        lookedAt.push_back(second);
        return silenceBetweenTwoSounds();
    };

    const Evidence evidence = weigh(pairs, {noLinks, best, durations, examine});

    // The last starts 20 s after the first, so that they share 40 s.
    EXPECT_THAT(lookedAt, testing::ElementsAre(20, 19, 18, 17, 16, 15, 14, 13, 12, 11, 10, 9));
    EXPECT_EQ(evidence.against, 12.0);
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
