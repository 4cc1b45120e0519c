#include "Assemble.h"

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using vxlsync::Alignment;
using vxlsync::AssembleInput;
using vxlsync::Assembly;
using vxlsync::Hypothesis;
using vxlsync::Verdict;

// Shared time of recordings of 60 s at the offset.
Hypothesis hypothesis(double offset, double coherence, double agreement = 1.0)
{
    Hypothesis one;
    one.line.start = std::max(0.0, offset);
    one.line.end = std::min(60.0, 60.0 + offset);
    one.line.middle = (one.line.start + one.line.end) / 2.0;
    one.line.offset = offset;
    one.line.offsetError = 1e-5;
    one.line.slopeError = 1e-6;
    one.line.coherence = coherence;
    one.line.significance = 300.0 * coherence;
    one.line.sharpness = 10.0;
    one.line.agreement = agreement;
    one.line.bands = 30;
    one.line.windows.resize(20);
    return one;
}

AssembleInput inputOf(std::size_t count, std::vector<vxlsync::PairFinding> findings)
{
    AssembleInput input;
    input.durations.assign(count, 60.0);
    input.findings = std::move(findings);
    return input;
}

// What is found where nobody searched: no window at all.
Alignment nothing(std::size_t, std::size_t, double, double)
{
    return Alignment();
}

// Sound on both sides that has nothing in common.
Alignment contradiction(std::size_t, std::size_t, double, double)
{
    Alignment line;
    line.windows.resize(14);
    line.coherence = 0.005;
    line.significance = 2.0;
    line.fullSignificance = 400.0;
    line.activity = 0.9;
    return line;
}

std::vector<Verdict> verdictsOf(const Assembly& assembly)
{
    std::vector<Verdict> verdicts;
    for (const vxlsync::Link& link : assembly.links)
        verdicts.push_back(link.verdict);
    return verdicts;
}

TEST(Assemble, JoinsWhatIsClear)
{
    const Assembly assembly = vxlsync::assemble(
        inputOf(3, {{0, 1, {hypothesis(10.0, 0.5)}}, {1, 2, {hypothesis(10.0, 0.4)}}}), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1, 2)));
    EXPECT_THAT(verdictsOf(assembly), ElementsAre(Verdict::accepted, Verdict::accepted));
}

TEST(Assemble, RefusesWhatIsFarLessAlikeThanBothAreWithOthers)
{
    // 0.2 against 0.6, the lower of the two bests.
    const Assembly assembly = vxlsync::assemble(inputOf(4, {{0, 1, {hypothesis(10.0, 0.6)}},
                                                            {1, 2, {hypothesis(5.0, 0.2)}},
                                                            {2, 3, {hypothesis(10.0, 0.8)}}}),
                                                nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1), ElementsAre(2, 3)));
    EXPECT_EQ(assembly.links[1].verdict, Verdict::weak);
}

TEST(Assemble, BelievesAnUnlikePairWhereOneOfThemHasNoBetter)
{
    // The third is noisy: 0.2 is the best that it reaches with anyone.
    const Assembly assembly = vxlsync::assemble(
        inputOf(3, {{0, 1, {hypothesis(10.0, 0.6)}}, {1, 2, {hypothesis(5.0, 0.2)}}}), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1, 2)));
}

TEST(Assemble, RefusesOffsetsThatFitEquallyWell)
{
    const Assembly assembly = vxlsync::assemble(
        inputOf(2, {{0, 1, {hypothesis(10.0, 0.5), hypothesis(18.0, 0.49)}}}), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0), ElementsAre(1)));
    EXPECT_THAT(verdictsOf(assembly), ElementsAre(Verdict::ambiguous, Verdict::ambiguous));
}

TEST(Assemble, TakesTheBestOfSeveralOffsetsWhereTheSoundIsTheSame)
{
    const Assembly assembly = vxlsync::assemble(
        inputOf(2, {{0, 1, {hypothesis(10.0, 0.6), hypothesis(18.0, 0.5)}}}), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1)));
    EXPECT_THAT(verdictsOf(assembly), ElementsAre(Verdict::accepted, Verdict::contradicted));
}

TEST(Assemble, RefusesASongThatTwoEventsShare)
{
    // Strong, but a tenth of the time both hear something else.
    const Assembly assembly = vxlsync::assemble(inputOf(4, {{0, 1, {hypothesis(10.0, 0.6)}},
                                                            {0, 2, {hypothesis(3.0, 0.42, 0.9)}},
                                                            {0, 3, {hypothesis(13.0, 0.42, 0.9)}},
                                                            {1, 2, {hypothesis(-7.0, 0.42, 0.9)}},
                                                            {1, 3, {hypothesis(3.0, 0.42, 0.9)}},
                                                            {2, 3, {hypothesis(10.0, 0.6)}}}),
                                                nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1), ElementsAre(2, 3)));
}

TEST(Assemble, RefusesShortOverlapsOfLittleEvidence)
{
    // 3 s shared; 300 * 0.12 is 36, less than 40.
    const Assembly assembly =
        vxlsync::assemble(inputOf(2, {{0, 1, {hypothesis(57.0, 0.12)}}}), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0), ElementsAre(1)));
}

TEST(Assemble, ConfirmsWhatStrongerLinksImply)
{
    // 0.25 is weak beside 0.6, but says what the two others say together.
    const Assembly assembly = vxlsync::assemble(inputOf(3, {{0, 1, {hypothesis(10.0, 0.6)}},
                                                            {0, 2, {hypothesis(15.0, 0.25)}},
                                                            {1, 2, {hypothesis(5.0, 0.6)}}}),
                                                nothing);

    EXPECT_THAT(verdictsOf(assembly),
                ElementsAre(Verdict::accepted, Verdict::confirmed, Verdict::accepted));
}

TEST(Assemble, ContradictsALinkThatDoesNotCloseTheLoop)
{
    const Assembly assembly = vxlsync::assemble(inputOf(3, {{0, 1, {hypothesis(10.0, 0.6)}},
                                                            {0, 2, {hypothesis(25.0, 0.4)}},
                                                            {1, 2, {hypothesis(5.0, 0.6)}}}),
                                                nothing);

    EXPECT_EQ(assembly.links[1].verdict, Verdict::contradicted);
}

TEST(Assemble, RefusesAJoinThatOtherPairsContradict)
{
    // Of the four pairs across, one has a link, and the three others share 35 s and more.
    const Assembly assembly = vxlsync::assemble(inputOf(4, {{0, 1, {hypothesis(10.0, 0.6)}},
                                                            {1, 2, {hypothesis(5.0, 0.35)}},
                                                            {2, 3, {hypothesis(10.0, 0.6)}}}),
                                                contradiction);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1), ElementsAre(2, 3)));
    EXPECT_EQ(assembly.links[1].verdict, Verdict::contradicted);
}

TEST(Assemble, KeepsApartWhatTheUserWantsApart)
{
    AssembleInput input = inputOf(2, {{0, 1, {hypothesis(10.0, 0.6)}}});
    input.apart = {{1, 0}};

    const Assembly assembly = vxlsync::assemble(input, nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0), ElementsAre(1)));
    EXPECT_EQ(assembly.links[0].verdict, Verdict::forbidden);
}

TEST(Assemble, JoinsWhatTheUserKnows)
{
    AssembleInput input = inputOf(3, {});
    input.known = {{0, 5.0}, {2, 20.0}};

    const Assembly assembly = vxlsync::assemble(input, nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 2), ElementsAre(1)));
}

TEST(Assemble, MeasuresLinksByWhatTheUserKnows)
{
    AssembleInput input = inputOf(2, {{0, 1, {hypothesis(10.0, 0.6)}}});
    input.known = {{0, 5.0}, {1, 20.0}};

    const Assembly assembly = vxlsync::assemble(input, nothing);

    EXPECT_EQ(assembly.links[0].verdict, Verdict::contradicted);
}

} // namespace
