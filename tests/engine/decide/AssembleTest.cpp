#include "decide/Assemble.h"

#include <limits>
#include <stdexcept>
#include <utility>

#include <gmock/gmock.h>

#include "TestLinks.h"
#include "vxl_sync/Sync.h"

namespace
{

using links::constraintsOf;
using links::linkOf;
using testing::ElementsAre;
using vxlsync::Alignment;
using vxlsync::Assembly;
using vxlsync::Constraints;
using vxlsync::Verdict;

Assembly assemble(vxlsync::Links all, const Constraints& constraints,
                  const vxlsync::Examine& examine)
{
    return vxlsync::assemble(std::move(all), constraints, examine, vxlsync::Interrupt());
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
    line.heardSeconds = 20.0;
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
    const Assembly assembly =
        assemble({linkOf(0, 1, 10.0, 0.5), linkOf(1, 2, 10.0, 0.4)}, constraintsOf(3), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1, 2)));
    EXPECT_THAT(verdictsOf(assembly), ElementsAre(Verdict::accepted, Verdict::accepted));
}

TEST(Assemble, LeavesRecordingsWithoutLinksAlone)
{
    const Assembly assembly = assemble({}, constraintsOf(2), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0), ElementsAre(1)));
    EXPECT_TRUE(assembly.links.empty());
}

TEST(Assemble, TellsGroupsInOrderOfTheirFirstRecording)
{
    // The stronger link joins 1 to 3 before 0 comes to both; 2 stays alone.
    const Assembly assembly =
        assemble({linkOf(0, 3, 10.0, 0.5), linkOf(1, 3, 10.0, 0.6)}, constraintsOf(4), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1, 3), ElementsAre(2)));
}

TEST(Assemble, RefusesWhatIsFarLessAlikeThanBothAreWithOthers)
{
    // 0.2 against 0.6, the lower of the two bests.
    const Assembly assembly =
        assemble({linkOf(0, 1, 10.0, 0.6), linkOf(1, 2, 5.0, 0.2), linkOf(2, 3, 10.0, 0.8)},
                 constraintsOf(4), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1), ElementsAre(2, 3)));
    EXPECT_EQ(assembly.links[1].verdict, Verdict::weak);
}

TEST(Assemble, BelievesAnUnlikePairWhereOneOfThemHasNoBetter)
{
    // The third is noisy: 0.2 is the best that it reaches with anyone.
    const Assembly assembly =
        assemble({linkOf(0, 1, 10.0, 0.6), linkOf(1, 2, 5.0, 0.2)}, constraintsOf(3), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1, 2)));
}

TEST(Assemble, RefusesOffsetsThatFitEquallyWell)
{
    const Assembly assembly =
        assemble({linkOf(0, 1, 10.0, 0.5), linkOf(0, 1, 18.0, 0.49)}, constraintsOf(2), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0), ElementsAre(1)));
    EXPECT_THAT(verdictsOf(assembly), ElementsAre(Verdict::ambiguous, Verdict::ambiguous));
}

TEST(Assemble, TakesTheBestOfSeveralOffsetsWhereTheSoundIsTheSame)
{
    const Assembly assembly =
        assemble({linkOf(0, 1, 10.0, 0.6), linkOf(0, 1, 18.0, 0.5)}, constraintsOf(2), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1)));
    EXPECT_THAT(verdictsOf(assembly), ElementsAre(Verdict::accepted, Verdict::contradicted));
}

TEST(Assemble, RefusesASongThatTwoEventsShare)
{
    // Strong, but a tenth of the time both hear something else.
    const Assembly assembly = assemble(
        {linkOf(0, 1, 10.0, 0.6), linkOf(0, 2, 3.0, 0.42, 0.9), linkOf(0, 3, 13.0, 0.42, 0.9),
         linkOf(1, 2, -7.0, 0.42, 0.9), linkOf(1, 3, 3.0, 0.42, 0.9), linkOf(2, 3, 10.0, 0.6)},
        constraintsOf(4), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1), ElementsAre(2, 3)));
}

TEST(Assemble, RefusesShortOverlapsOfLittleEvidence)
{
    // 3 s shared; 300 * 0.12 is 36, less than 40.
    const Assembly assembly = assemble({linkOf(0, 1, 57.0, 0.12)}, constraintsOf(2), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0), ElementsAre(1)));
}

TEST(Assemble, ConfirmsWhatStrongerLinksImply)
{
    // 0.25 is weak beside 0.6, but says what the two others say together.
    const Assembly assembly =
        assemble({linkOf(0, 1, 10.0, 0.6), linkOf(0, 2, 15.0, 0.25), linkOf(1, 2, 5.0, 0.6)},
                 constraintsOf(3), nothing);

    EXPECT_THAT(verdictsOf(assembly),
                ElementsAre(Verdict::accepted, Verdict::confirmed, Verdict::accepted));
}

TEST(Assemble, ContradictsALinkThatDoesNotCloseTheLoop)
{
    const Assembly assembly =
        assemble({linkOf(0, 1, 10.0, 0.6), linkOf(0, 2, 25.0, 0.4), linkOf(1, 2, 5.0, 0.6)},
                 constraintsOf(3), nothing);

    EXPECT_EQ(assembly.links[1].verdict, Verdict::contradicted);
}

TEST(Assemble, RefusesAJoinThatOtherPairsContradict)
{
    // Of the four pairs across, one has a link, and the three others share 35 s and more.
    const Assembly assembly =
        assemble({linkOf(0, 1, 10.0, 0.6), linkOf(1, 2, 5.0, 0.35), linkOf(2, 3, 10.0, 0.6)},
                 constraintsOf(4), contradiction);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1), ElementsAre(2, 3)));
    EXPECT_EQ(assembly.links[1].verdict, Verdict::contradicted);
}

TEST(Assemble, LooksAtNothingThatTheLinksDecide)
{
    const auto unexpected = [](std::size_t, std::size_t, double, double) -> Alignment {
        throw std::logic_error("looked at");
    };

    EXPECT_NO_THROW(assemble({linkOf(0, 1, 10.0, 0.6)}, constraintsOf(2), unexpected));
}

TEST(Assemble, PassesOnWhatALookThrows)
{
    const auto refusal = [](std::size_t, std::size_t, double, double) -> Alignment {
        throw std::runtime_error("cancelled");
    };

    EXPECT_THROW(
        assemble({linkOf(0, 1, 10.0, 0.6), linkOf(1, 2, 5.0, 0.6)}, constraintsOf(3), refusal),
        std::runtime_error);
}

TEST(Assemble, CanBeCancelledWhereNothingIsLookedAt)
{
    const vxlsync::Interrupt interrupt([] { return true; });

    EXPECT_THROW(vxlsync::assemble({linkOf(0, 1, 10.0, 0.6)}, constraintsOf(2), nothing, interrupt),
                 vxlsync::Cancelled);
}

// A link that is alike enough, and too little: of 40 s and more at least 18 are asked.
vxlsync::Link weakLink(std::size_t first, std::size_t second, double offset)
{
    vxlsync::Link link = linkOf(first, second, offset, 0.45);
    link.line.significance = 17.0;
    return link;
}

// Two groups of two, 10 s apart in each, tied by weak links; 0 and 2 lie 5 s apart.
vxlsync::Links twoGroups(std::vector<vxlsync::Link> across)
{
    vxlsync::Links all{linkOf(0, 1, 10.0, 0.6)};
    all.insert(all.end(), across.begin(), across.end());
    all.push_back(linkOf(2, 3, 10.0, 0.6));
    return all;
}

TEST(Assemble, JoinsByWeakLinksThatSayTheSame)
{
    // Distinctions of 0.45 / 0.6 each, 1.5 together.
    const Assembly assembly =
        assemble(twoGroups({weakLink(0, 2, 5.0), weakLink(1, 3, 5.0)}), constraintsOf(4), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1, 2, 3)));
    EXPECT_THAT(verdictsOf(assembly), ElementsAre(Verdict::accepted, Verdict::confirmed,
                                                  Verdict::confirmed, Verdict::accepted));
}

TEST(Assemble, DoesNotJoinByAWeakLinkThatNoOtherBacks)
{
    const Assembly assembly =
        assemble(twoGroups({weakLink(0, 2, 5.0), weakLink(1, 3, 7.0)}), constraintsOf(4), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1), ElementsAre(2, 3)));
    EXPECT_THAT(verdictsOf(assembly),
                ElementsAre(Verdict::accepted, Verdict::weak, Verdict::weak, Verdict::accepted));
}

TEST(Assemble, ContradictsWeakLinksThatOtherPairsSpeakAgainst)
{
    // 10 s or less for it against two pairs of 20 s that differ.
    const Assembly assembly = assemble(twoGroups({weakLink(0, 2, 5.0), weakLink(1, 3, 5.0)}),
                                       constraintsOf(4), contradiction);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1), ElementsAre(2, 3)));
    EXPECT_THAT(verdictsOf(assembly), ElementsAre(Verdict::accepted, Verdict::contradicted,
                                                  Verdict::contradicted, Verdict::accepted));
}

TEST(Assemble, LetsAJoinGiveOthersWhatTheyLacked)
{
    // 4 and the first group have one weak link, 4 and the second another: once the two groups are
    // one, both say the same of 4, which has a better partner in 5.
    vxlsync::Links all{linkOf(0, 1, 10.0, 0.6), weakLink(0, 2, 5.0),     weakLink(0, 4, 2.0),
                       weakLink(1, 3, 5.0),     linkOf(2, 3, 10.0, 0.6), weakLink(2, 4, -3.0),
                       linkOf(4, 5, 1.0, 0.6)};
    // The two that tie 4 come first, and fail at first.
    all[2].line.significance = all[5].line.significance = 17.9;

    const Assembly assembly = assemble(all, constraintsOf(6), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1, 2, 3, 4, 5)));
}

TEST(Assemble, KeepsApartWhatTheUserWantsApart)
{
    for (const std::pair<std::size_t, std::size_t> pair : {std::make_pair(0, 1), {1, 0}}) {
        Constraints constraints = constraintsOf(2);
        constraints.apart = {pair};

        const Assembly assembly = assemble({linkOf(0, 1, 10.0, 0.6)}, constraints, nothing);

        EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0), ElementsAre(1)));
        EXPECT_EQ(assembly.links[0].verdict, Verdict::forbidden);
        EXPECT_FALSE(assembly.links[0].isDeviceClash);
    }
}

TEST(Assemble, KeepsApartWhatOthersWouldBringTogether)
{
    Constraints constraints = constraintsOf(3);
    constraints.apart = {{2, 0}};

    const Assembly assembly =
        assemble({linkOf(0, 1, 10.0, 0.6), linkOf(1, 2, 10.0, 0.5)}, constraints, nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1), ElementsAre(2)));
    EXPECT_THAT(verdictsOf(assembly), ElementsAre(Verdict::accepted, Verdict::forbidden));
}

TEST(Assemble, JoinsOthersThanTheUserWantsApart)
{
    for (const std::pair<std::size_t, std::size_t> pair :
         {std::make_pair(0, 3), {3, 0}, {1, 3}, {3, 1}}) {
        Constraints constraints = constraintsOf(4);
        constraints.apart = {pair};

        const Assembly assembly =
            assemble({linkOf(0, 1, 10.0, 0.6), linkOf(2, 3, 10.0, 0.5)}, constraints, nothing);

        EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1), ElementsAre(2, 3)));
    }
}

TEST(Assemble, KeepsApartWhatWeakLinksWouldBringTogether)
{
    // The links to 4 and 5 come first and may not; those of 2 and 3 join all the same.
    vxlsync::Links all{linkOf(0, 1, 10.0, 0.6), weakLink(0, 2, 5.0), weakLink(0, 4, 2.0),
                       weakLink(1, 3, 5.0),     weakLink(1, 5, 2.0), linkOf(2, 3, 10.0, 0.6),
                       linkOf(4, 5, 10.0, 0.6)};
    all[2].line.significance = all[4].line.significance = 17.9;
    Constraints constraints = constraintsOf(6);
    constraints.apart = {{0, 4}};

    const Assembly assembly = assemble(all, constraints, nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1, 2, 3), ElementsAre(4, 5)));
    EXPECT_EQ(assembly.links[2].verdict, Verdict::forbidden);
    EXPECT_EQ(assembly.links[4].verdict, Verdict::forbidden);
}

TEST(Assemble, JoinsWhatTheUserKnows)
{
    Constraints constraints = constraintsOf(3);
    constraints.known = {{0, 5.0}, {2, 20.0}};

    const Assembly assembly = assemble({}, constraints, nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 2), ElementsAre(1)));
}

TEST(Assemble, MeasuresLinksByWhatTheUserKnows)
{
    Constraints constraints = constraintsOf(2);
    constraints.known = {{0, 5.0}, {1, 20.0}};

    const Assembly assembly = assemble({linkOf(0, 1, 10.0, 0.6)}, constraints, nothing);

    EXPECT_EQ(assembly.links[0].verdict, Verdict::contradicted);
}

// Recordings of a minute, of which 0 and 2 come of one device; 1 lies between them.
Assembly withOneDeviceTwice(double gap, const std::string& firstDevice = "recorder",
                            const std::string& secondDevice = "recorder")
{
    Constraints constraints = constraintsOf(3);
    constraints.devices = {firstDevice, "camera", secondDevice};
    return assemble({linkOf(0, 1, 30.0, 0.6), linkOf(1, 2, 30.0 + gap, 0.5)}, constraints, nothing);
}

TEST(Assemble, DoesNotPlaceOneDeviceTwiceAtOneTime)
{
    const Assembly assembly = withOneDeviceTwice(-0.51);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1), ElementsAre(2)));
    EXPECT_THAT(verdictsOf(assembly), ElementsAre(Verdict::accepted, Verdict::forbidden));
    EXPECT_TRUE(assembly.links[1].isDeviceClash);
}

TEST(Assemble, LetsRecordingsOfOneDeviceMeetToHalfASecond)
{
    const Assembly assembly = withOneDeviceTwice(-0.49);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1, 2)));
    EXPECT_FALSE(assembly.links[1].isDeviceClash);
}

TEST(Assemble, LetsDevicesThatAreNotKnownOverlap)
{
    EXPECT_THAT(withOneDeviceTwice(-10.0, "", "").groups, ElementsAre(ElementsAre(0, 1, 2)));
}

TEST(Assemble, LetsDifferentDevicesOverlap)
{
    EXPECT_THAT(withOneDeviceTwice(-10.0, "recorder", "phone").groups,
                ElementsAre(ElementsAre(0, 1, 2)));
}

TEST(Assemble, DoesNotLinkOneDeviceToItselfAtOneTime)
{
    Constraints constraints = constraintsOf(2);
    constraints.devices = {"recorder", "recorder"};

    const Assembly assembly = assemble({linkOf(0, 1, 10.0, 0.6)}, constraints, nothing);

    EXPECT_EQ(assembly.links[0].verdict, Verdict::forbidden);
}

TEST(Assemble, TellsOfTheUserFirstWhereHisDeviceClashesToo)
{
    Constraints constraints = constraintsOf(2);
    constraints.devices = {"recorder", "recorder"};
    constraints.apart = {{0, 1}};

    const Assembly assembly = assemble({linkOf(0, 1, 10.0, 0.6)}, constraints, nothing);

    EXPECT_EQ(assembly.links[0].verdict, Verdict::forbidden);
    EXPECT_FALSE(assembly.links[0].isDeviceClash);
}

TEST(Assemble, TakesKnownStartsForTruthEvenOfOneDevice)
{
    Constraints constraints = constraintsOf(2);
    constraints.devices = {"recorder", "recorder"};
    constraints.known = {{0, 0.0}, {1, 10.0}};

    const Assembly assembly = assemble({linkOf(0, 1, 10.0, 0.6)}, constraints, nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1)));
    EXPECT_EQ(assembly.links[0].verdict, Verdict::accepted);
}

TEST(Assemble, KeepsTheLinkThatAJoinStandsOn)
{
    // A slope that is not certain is none for the join. At the middle of the overlap, 30 s from
    // where the line has its own, it makes 5.1 ms, more than the 4.2 ms in which two links of a
    // minute agree.
    vxlsync::Link link = linkOf(0, 1, 10.0, 0.6);
    link.line.middle = 5.0;
    link.line.slope = 1.7e-4;
    link.line.slopeError = 1e-4;

    const Assembly assembly = assemble({link}, constraintsOf(2), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1)));
    EXPECT_THAT(verdictsOf(assembly), ElementsAre(Verdict::accepted));
}

TEST(Assemble, ContradictsWhatAJoinStoodOnThatOthersUndo)
{
    // 1 and 2 are joined first, by 5 s of which 5 * 0.4 speak for it. Once 0 is there, more speaks
    // against it: 10 * (0.3 * 0.4 + 0.7 * 0.6).
    const Assembly assembly = assemble(
        {linkOf(0, 1, 10.0, 0.6), linkOf(0, 2, -40.0, 0.6, 0.3), linkOf(1, 2, -50.0, 0.65)},
        constraintsOf(3), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1), ElementsAre(2)));
    EXPECT_THAT(verdictsOf(assembly),
                ElementsAre(Verdict::accepted, Verdict::weak, Verdict::contradicted));
}

TEST(Assemble, CallsAmbiguousWhatHasNoMargin)
{
    // Good enough for a pair by itself, where 0.92 * 0.92 - 0.6 of 26 s stands against 0.4 of 25.
    const Assembly assembly = assemble({linkOf(0, 1, 10.0, 0.6), linkOf(0, 1, 8.0, 0.92 * 0.6)},
                                       constraintsOf(2), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0), ElementsAre(1)));
    EXPECT_THAT(verdictsOf(assembly), ElementsAre(Verdict::ambiguous, Verdict::contradicted));
    EXPECT_EQ(assembly.doubtful.size(), 2u);
}

TEST(Assemble, TellsHowCertainPlacesAre)
{
    const Assembly assembly = assemble({linkOf(0, 1, 10.0, 0.6)}, constraintsOf(3), nothing);

    EXPECT_EQ(assembly.certainties.size(), 3u);
    // 25 s times 0.4.
    EXPECT_NEAR(assembly.certainties[1].evidence, 10.0, 1e-9);
    EXPECT_TRUE(assembly.doubtful.empty());
}

TEST(Assemble, SettlesALoopByTheClockOfADevice)
{
    // 0, 2 and 3 are of one camera; 3 has two equal places beside 1, and the clock says the second.
    Constraints constraints = constraintsOf(4);
    constraints.durations[1] = 300.0;
    constraints.likelyDevices = {"camera", "", "camera", "camera"};
    constraints.clockStarts = {1000.0, std::nullopt, 1100.0, 1200.0};
    const vxlsync::Links links{linkOf(0, 1, -10.0, 0.6), linkOf(1, 2, 110.0 - 60.0, 0.6)};
    vxlsync::Links all = links;
    for (const double offset : {202.0, 210.0}) {
        vxlsync::Link link = linkOf(1, 3, 10.0, 0.6);
        link.line.offset = offset;
        link.line.start = offset;
        link.line.end = offset + 60.0;
        link.line.middle = offset + 30.0;
        link.line.heardSeconds = 30.0;
        all.push_back(link);
    }
    all[1].line.offset = 110.0;
    all[1].line.start = 110.0;
    all[1].line.end = 170.0;
    all[1].line.middle = 140.0;
    all[1].line.heardSeconds = 30.0;

    const Assembly assembly = assemble(all, constraints, nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0, 1, 2, 3)));
    EXPECT_EQ(assembly.links[2].verdict, Verdict::contradicted);
    EXPECT_EQ(assembly.links[3].verdict, Verdict::confirmed);
}

TEST(Assemble, LeavesOutLinksThatAreNotFinite)
{
    vxlsync::Link broken = linkOf(0, 1, 10.0, 0.6);
    broken.line.offsetError = std::numeric_limits<double>::quiet_NaN();

    const Assembly assembly =
        assemble({broken, linkOf(1, 2, 10.0, 0.4)}, constraintsOf(3), nothing);

    EXPECT_THAT(assembly.groups, ElementsAre(ElementsAre(0), ElementsAre(1, 2)));
    ASSERT_EQ(assembly.links.size(), 1u);
    EXPECT_EQ(assembly.links[0].second, 2u);
}

} // namespace
