#include "decide/Disagreements.h"

#include <gmock/gmock.h>

#include "TestLinks.h"
#include "decide/Verdicts.h"

namespace
{

using links::constraintsOf;
using links::linkOf;
using testing::AllOf;
using testing::DoubleNear;
using testing::ElementsAre;
using testing::Field;
using testing::IsEmpty;
using vxlsync::Constraints;
using vxlsync::Disagreement;
using vxlsync::Links;

// Of one group that starts as told, with members from `first` on.
std::vector<Disagreement> disagreementsOf(const Links& all, const std::vector<double>& starts,
                                          const Constraints& constraints, std::size_t first = 0)
{
    vxlsync::PlacedGroup group;
    for (std::size_t i = 0; i < starts.size(); ++i) {
        group.members.push_back(first + i);
        group.placements.push_back({starts[i], 0.0, 0.0, 0.0});
    }
    const Links judged =
        vxlsync::judgeLinks(all, vxlsync::bestCoherences(all, constraints.durations.size()));
    return vxlsync::disagreementsOf(judged, {group}, constraints);
}

Constraints knowing(std::vector<std::pair<std::size_t, double>> known, std::size_t recordings = 2)
{
    Constraints constraints = constraintsOf(recordings);
    constraints.known = std::move(known);
    return constraints;
}

auto disagreement(std::size_t recording, std::size_t with, double later)
{
    return AllOf(Field(&Disagreement::recording, recording), Field(&Disagreement::with, with),
                 Field(&Disagreement::laterSeconds, DoubleNear(later, 1e-9)));
}

TEST(Disagreements, TellHowMuchLaterTheSoundIs)
{
    EXPECT_THAT(disagreementsOf({linkOf(0, 1, 10.4, 0.6)}, {100.0, 110.0},
                                knowing({{0, 100.0}, {1, 110.0}})),
                ElementsAre(disagreement(1, 0, 0.4)));
}

TEST(Disagreements, CountFromTheFirstKnownStart)
{
    EXPECT_THAT(disagreementsOf({linkOf(0, 1, 10.4, 0.6)}, {100.0, 110.0},
                                knowing({{1, 110.0}, {0, 100.0}})),
                ElementsAre(disagreement(0, 1, -0.4)));
}

TEST(Disagreements, AreNoneWhereTheSoundSaysTheSame)
{
    EXPECT_THAT(disagreementsOf({linkOf(0, 1, 10.0, 0.6)}, {100.0, 110.0},
                                knowing({{0, 100.0}, {1, 110.0}})),
                IsEmpty());
}

TEST(Disagreements, AreNoneOfAStartThatIsKnownAlone)
{
    EXPECT_THAT(disagreementsOf({linkOf(0, 1, 10.4, 0.6)}, {100.0, 110.0}, knowing({{0, 100.0}})),
                IsEmpty());
}

TEST(Disagreements, NeedSoundThatStandsOnItsOwn)
{
    EXPECT_THAT(disagreementsOf({linkOf(0, 1, 10.4, 0.6, 0.3)}, {100.0, 110.0},
                                knowing({{0, 100.0}, {1, 110.0}})),
                IsEmpty());
}

TEST(Disagreements, TellTheClearestOfARecording)
{
    EXPECT_THAT(disagreementsOf({linkOf(0, 1, 10.4, 0.6), linkOf(1, 2, 5.3, 0.7)},
                                {100.0, 110.0, 115.0}, knowing({{0, 100.0}, {1, 110.0}}, 3)),
                ElementsAre(disagreement(1, 2, -0.3)));
    EXPECT_THAT(disagreementsOf({linkOf(0, 1, 10.4, 0.7), linkOf(1, 2, 5.3, 0.6)},
                                {100.0, 110.0, 115.0}, knowing({{0, 100.0}, {1, 110.0}}, 3)),
                ElementsAre(disagreement(1, 0, 0.4)));
}

TEST(Disagreements, AreNoneWithWhatIsInAnotherGroup)
{
    EXPECT_THAT(disagreementsOf({linkOf(0, 1, 10.0, 0.6), linkOf(1, 2, 5.3, 0.6)}, {100.0, 110.0},
                                knowing({{0, 100.0}, {1, 110.0}, {2, 200.0}}, 3)),
                IsEmpty());
    EXPECT_THAT(disagreementsOf({linkOf(0, 2, 10.0, 0.6)}, {100.0, 110.0},
                                knowing({{0, 100.0}, {1, 110.0}}, 3)),
                IsEmpty());
    EXPECT_THAT(disagreementsOf({linkOf(0, 1, 10.0, 0.6)}, {100.0, 110.0},
                                knowing({{2, 110.0}, {1, 100.0}}, 3), 1),
                IsEmpty());
}

TEST(Disagreements, AreNoneBetweenRecordingsWhoseStartsNobodyGave)
{
    EXPECT_THAT(disagreementsOf({linkOf(2, 3, 10.4, 0.6)}, {100.0, 110.0, 100.0, 110.0},
                                knowing({{0, 100.0}, {1, 110.0}}, 4)),
                IsEmpty());
}

} // namespace
