#include "tell/Report.h"

#include <limits>
#include <numeric>
#include <string>

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using vxlsync::Decision;
using vxlsync::Link;
using vxlsync::MeasuredLink;
using vxlsync::Member;
using vxlsync::Placement;
using vxlsync::Recording;
using vxlsync::reportDecision;
using vxlsync::reportLandmarks;
using vxlsync::Result;
using vxlsync::Source;
using vxlsync::Verdict;

constexpr double plain = 60.0;

// Sources a.wav, b.wav ... by position, each of a minute of sound, known to the host in the same
// order.
struct Job {
    explicit Job(std::size_t count)
        : sources(count), recordings(count), sourceAt(count), origins(count)
    {
        std::iota(sourceAt.begin(), sourceAt.end(), std::size_t{0});
        for (std::size_t i = 0; i < count; ++i) {
            sources[i].path = std::string("dir/") + static_cast<char>('a' + i) + ".wav";
            recordings[i].durationSeconds = plain;
            recordings[i].meanSquare = 0.01;
        }
    }

    Result reported() const
    {
        Decision complete = decision;
        for (vxlsync::PlacedGroup& group : complete.groups)
            group.certainties.resize(group.members.size());
        return reportDecision({sources, recordings, sourceAt, origins}, complete);
    }

    std::vector<Source> sources;
    std::vector<Recording> recordings;
    std::vector<std::size_t> sourceAt;
    std::vector<vxlsync::Origin> origins;
    Decision decision;
};

Placement startingAt(double start)
{
    Placement place;
    place.start = start;
    return place;
}

Link linkOf(std::size_t first, std::size_t second, Verdict verdict)
{
    Link link;
    link.first = first;
    link.second = second;
    link.line.offset = 10.0;
    link.verdict = verdict;
    return link;
}

std::vector<std::size_t> sourcesOf(const std::vector<Member>& members)
{
    std::vector<std::size_t> sources;
    for (const Member& member : members)
        sources.push_back(member.source);
    return sources;
}

std::vector<std::pair<std::size_t, std::size_t>> pairsOf(const std::vector<MeasuredLink>& links)
{
    std::vector<std::pair<std::size_t, std::size_t>> pairs;
    for (const MeasuredLink& link : links)
        pairs.emplace_back(link.first, link.second);
    return pairs;
}

// Why the first of two recordings has no place.
std::string reasonOf(const Job& job)
{
    return job.reported().alone.at(0).reason;
}

TEST(Report, TellsTheFactsOfEverySource)
{
    Job job(2);
    job.origins[0] = {"recorder", vxlsync::DeviceEvidence::originator, 12.5};
    job.recordings[0].notes = {"ends early"};
    job.sources[1].name = "camera";

    const Result result = job.reported();

    ASSERT_EQ(result.sources.size(), 2u);
    EXPECT_EQ(result.sources[0].name, "a");
    EXPECT_EQ(result.sources[0].path, "dir/a.wav");
    EXPECT_EQ(result.sources[0].device, "recorder");
    EXPECT_EQ(result.sources[0].deviceKnownBy, vxlsync::DeviceEvidence::originator);
    EXPECT_EQ(result.sources[0].clockStartSeconds, 12.5);
    EXPECT_EQ(result.sources[0].durationSeconds, plain);
    EXPECT_THAT(result.sources[0].notes, ElementsAre("ends early"));
    EXPECT_EQ(result.sources[1].name, "camera");
    EXPECT_EQ(result.sources[1].device, "");
    EXPECT_EQ(result.sources[1].deviceKnownBy, vxlsync::DeviceEvidence::none);
}

TEST(Report, TellsWhatFilesSayOfThemselves)
{
    Job job(2);
    vxlsync::FileFacts& file = job.recordings[0].facts;
    file.created = vxlsync::parseDateTime("2026-06-01T10:00:37+02:00");
    file.timecode = "10:00:37:12";
    file.timeReference = 36037.5;
    file.frameRate = vxlsync::FrameRate{25, 1};
    file.pictureStart = 0.04;
    file.fileSeconds = 61.0;
    file.stream = 2;
    file.channel = 1;

    const std::vector<vxlsync::SourceFacts> sources = job.reported().sources;

    EXPECT_EQ(sources[0].creationTime, "2026-06-01T10:00:37+02:00");
    EXPECT_EQ(sources[0].timecode, "10:00:37:12");
    EXPECT_EQ(sources[0].timeReferenceSeconds, 36037.5);
    EXPECT_EQ(sources[0].frameRate.value().numerator, 25);
    EXPECT_EQ(sources[0].pictureStartSeconds, 0.04);
    EXPECT_EQ(sources[0].fileSeconds, 61.0);
    EXPECT_EQ(sources[0].stream, 2);
    EXPECT_EQ(sources[0].channel, 1);
    EXPECT_EQ(sources[1].creationTime, "");
    EXPECT_FALSE(sources[1].frameRate);
}

TEST(Report, TellsMembersInTheirPlaces)
{
    Job job(2);
    job.decision.groups = {{{0, 1}, {{0.0, 0.0, 0.0, 0.0}, {10.0, 20e-6, 1e-4, 1e-6}}, 0}};

    const Result result = job.reported();

    ASSERT_EQ(result.groups.size(), 1u);
    EXPECT_EQ(result.groups[0].reference, 0u);
    ASSERT_EQ(result.groups[0].members.size(), 2u);
    const Member& second = result.groups[0].members[1];
    EXPECT_EQ(second.source, 1u);
    EXPECT_EQ(second.offsetSeconds, 10.0);
    EXPECT_EQ(second.offsetUncertaintySeconds, 1e-4);
    EXPECT_DOUBLE_EQ(second.driftPpm, 20.0);
    EXPECT_DOUBLE_EQ(second.driftUncertaintyPpm, 1.0);
    EXPECT_THAT(result.alone, IsEmpty());
    EXPECT_THAT(result.failed, IsEmpty());
}

TEST(Report, OrdersMembersByOffsetAndEqualOnesBySource)
{
    Job job(4);
    job.sourceAt = {3, 2, 1, 0};
    job.decision.groups = {
        {{0, 1, 2, 3}, {startingAt(0.0), startingAt(2.0), startingAt(0.0), startingAt(0.0)}, 1}};

    const Result result = job.reported();

    EXPECT_THAT(sourcesOf(result.groups[0].members), ElementsAre(0, 1, 3, 2));
    EXPECT_EQ(result.groups[0].reference, 2u);
}

TEST(Report, OrdersGroupsByTheirFirstSource)
{
    Job job(4);
    job.sourceAt = {1, 3, 2, 0};
    job.decision.groups = {{{0, 1}, {startingAt(0.0), startingAt(1.0)}, 0},
                           {{2, 3}, {startingAt(0.0), startingAt(1.0)}, 2}};

    const Result result = job.reported();

    EXPECT_THAT(sourcesOf(result.groups[0].members), ElementsAre(2, 0));
    EXPECT_THAT(sourcesOf(result.groups[1].members), ElementsAre(1, 3));
}

TEST(Report, OrdersLoneAndFailedSourcesAsTheyWereGiven)
{
    Job job(4);
    job.sourceAt = {3, 2, 1, 0};
    job.recordings[0].failure = "does not exist";
    job.recordings[2].failure = "has no sound";

    const Result result = job.reported();

    ASSERT_EQ(result.alone.size(), 2u);
    EXPECT_EQ(result.alone[0].source, 0u);
    EXPECT_EQ(result.alone[1].source, 2u);
    ASSERT_EQ(result.failed.size(), 2u);
    EXPECT_EQ(result.failed[0].source, 1u);
    EXPECT_EQ(result.failed[0].reason, "has no sound");
    EXPECT_EQ(result.failed[1].source, 3u);
    EXPECT_EQ(result.failed[1].reason, "does not exist");
}

TEST(Report, TellsLinksInTheirGroupsAndOthersAsRefused)
{
    Job job(5);
    job.decision.groups = {{{0, 1}, {startingAt(0.0), startingAt(10.0)}, 0},
                           {{2, 3}, {startingAt(0.0), startingAt(10.0)}, 2}};
    job.decision.links = {linkOf(0, 1, Verdict::accepted), linkOf(0, 4, Verdict::weak),
                          linkOf(1, 2, Verdict::weak), linkOf(2, 3, Verdict::confirmed)};

    const Result result = job.reported();

    EXPECT_THAT(pairsOf(result.groups[0].links), ElementsAre(std::make_pair(0u, 1u)));
    EXPECT_THAT(pairsOf(result.groups[1].links), ElementsAre(std::make_pair(2u, 3u)));
    EXPECT_THAT(pairsOf(result.refusedLinks),
                ElementsAre(std::make_pair(0u, 4u), std::make_pair(1u, 2u)));
}

TEST(Report, TellsRefusedLinksBetweenLoneRecordings)
{
    Job job(2);
    job.decision.links = {linkOf(0, 1, Verdict::weak)};

    EXPECT_THAT(pairsOf(job.reported().refusedLinks), ElementsAre(std::make_pair(0u, 1u)));
}

TEST(Report, OrdersLinksBySource)
{
    Job job(3);
    job.sourceAt = {2, 0, 1};
    job.decision.links = {linkOf(0, 1, Verdict::weak), linkOf(0, 2, Verdict::weak),
                          linkOf(1, 2, Verdict::weak)};

    EXPECT_THAT(
        pairsOf(job.reported().refusedLinks),
        ElementsAre(std::make_pair(0u, 1u), std::make_pair(0u, 2u), std::make_pair(1u, 2u)));
}

TEST(Report, LeavesOutLinksWhoseNumbersAreNotFinite)
{
    Job job(2);
    job.decision.links = {linkOf(0, 1, Verdict::weak)};
    job.decision.links[0].rival = std::numeric_limits<double>::infinity();

    EXPECT_THAT(job.reported().refusedLinks, IsEmpty());
}

TEST(Report, CallsShortWhatIsTooShortToBeCompared)
{
    Job job(1);
    job.recordings[0].durationSeconds = 1.999;

    EXPECT_EQ(reasonOf(job), "too short");
}

TEST(Report, CallsNothingShortThatCouldBeCompared)
{
    Job job(2);
    job.recordings[0].durationSeconds = 2.0;

    EXPECT_EQ(reasonOf(job), "no sound in common with any other");
}

TEST(Report, CallsSilentWhatHasNothingButTheLastBit)
{
    Job job(1);
    job.recordings[0].meanSquare = 0.99e-9;

    EXPECT_EQ(reasonOf(job), "silent");
}

TEST(Report, CallsNothingSilentThatCouldBeHeard)
{
    Job job(2);
    job.recordings[0].meanSquare = 1e-9;

    EXPECT_EQ(reasonOf(job), "no sound in common with any other");
}

TEST(Report, NotesWhereSoundDisagreesWithAKnownStart)
{
    Job job(3);
    job.sourceAt = {2, 0, 1};
    job.sources[1].name = "camera";
    job.recordings[2].notes = {"ends early"};
    job.decision.disagreements = {{2, 1, -12.0456}};

    const Result result = job.reported();

    EXPECT_THAT(result.sources[1].notes,
                ElementsAre("ends early", "by the sound that it shares with camera it started "
                                          "12.046 s earlier than was given"));
    EXPECT_THAT(result.sources[0].notes, IsEmpty());

    job.decision.disagreements[0].laterSeconds = 0.0204;
    EXPECT_THAT(job.reported().sources[1].notes[1],
                testing::EndsWith("started 0.020 s later than was given"));
}

TEST(Report, SaysThatThereIsNothingToCompareWith)
{
    EXPECT_EQ(reasonOf(Job(1)), "nothing to compare it with");

    Job job(4);
    job.recordings[1].failure = "no audio stream";
    job.recordings[2].durationSeconds = 1.0;
    job.recordings[3].meanSquare = 0.0;
    EXPECT_EQ(reasonOf(job), "nothing to compare it with");
    job.recordings[1].failure = "";
    EXPECT_EQ(reasonOf(job), "no sound in common with any other");
}

TEST(Report, ComparesOneDeviceWithItselfWhereTheUserDoesNotSayThatItIsOne)
{
    Job job(2);
    job.origins[0] = {"camera", vxlsync::DeviceEvidence::stated, std::nullopt};
    job.origins[1] = {"camera", vxlsync::DeviceEvidence::model, std::nullopt};

    EXPECT_EQ(reasonOf(job), "no sound in common with any other");
    job.origins[1].knownBy = vxlsync::DeviceEvidence::stated;
    EXPECT_EQ(reasonOf(job), "nothing to compare it with");
    job.origins[1].device = "recorder";
    EXPECT_EQ(reasonOf(job), "no sound in common with any other");
}

TEST(Report, SaysWhatMakesAPlaceDoubtful)
{
    Job job(2);
    job.decision.links = {linkOf(0, 1, Verdict::ambiguous)};
    job.decision.links[0].doubt = vxlsync::Doubt::littleHeard;
    job.decision.links[0].line.start = 10.0;
    job.decision.links[0].line.end = 50.0;
    job.decision.links[0].line.heardSeconds = 0.31;
    EXPECT_EQ(job.reported().alone[0].reason,
              "no certain place: 0.3 s of 40.0 s alike with b, the rest too quiet to tell");
    EXPECT_EQ(job.reported().alone[1].reason,
              "no certain place: 0.3 s of 40.0 s alike with a, the rest too quiet to tell");
    job.decision.links[0].doubt = vxlsync::Doubt::oneDevice;
    EXPECT_EQ(job.reported().alone[1].reason,
              "no certain place: the sound repeats, and the clock is that of another recording: "
              "perhaps one device at two times");
}

// Sound in common there is, so that "none" would be untrue.
TEST(Report, SaysWhereARecordingMayBeThatTooLittleSpeaksFor)
{
    Job job(2);
    job.decision.links = {linkOf(0, 1, Verdict::weak)};
    job.decision.doubtful = {{1, {{0, 12.5, 0.7}}}};

    EXPECT_EQ(
        job.reported().alone[1].reason,
        "no certain place: perhaps 12.50 s after the start of a, but too little speaks for it");
}

TEST(Report, TellsHowCertainAPlaceIs)
{
    Job job(2);
    job.decision.groups = {{{0, 1}, {startingAt(0.0), startingAt(1.0)}, 0}};
    job.decision.groups[0].certainties = {{vxlsync::Confidence::certain, 1.0, 9.0},
                                          {vxlsync::Confidence::likely, 0.5, 2.0}};

    const std::vector<Member> members = job.reported().groups[0].members;

    EXPECT_EQ(members[0].confidence, vxlsync::Confidence::certain);
    EXPECT_EQ(members[1].confidence, vxlsync::Confidence::likely);
    EXPECT_EQ(members[1].margin, 0.5);
}

TEST(Report, TellsThePlacesOfWhatIsDoubtful)
{
    Job job(3);
    job.sourceAt = {2, 1, 0};
    job.decision.links = {linkOf(0, 1, Verdict::ambiguous)};
    job.decision.doubtful = {{0, {{1, 300.004, 11.0}, {2, -0.5, 9.0}, {1, 324.0, 2.0}}}};

    const vxlsync::LeftOut alone = job.reported().alone[2];

    EXPECT_EQ(alone.source, 2u);
    EXPECT_EQ(alone.reason,
              "no certain place: fits 300.00 s after the start of b and 0.50 s before "
              "the start of c");
    ASSERT_EQ(alone.candidates.size(), 3u);
    EXPECT_EQ(alone.candidates[0].with, 1u);
    EXPECT_EQ(alone.candidates[0].offsetSeconds, 300.004);
    EXPECT_EQ(alone.candidates[0].evidenceSeconds, 11.0);
    EXPECT_EQ(alone.candidates[1].with, 0u);
    EXPECT_THAT(job.reported().alone[0].candidates, IsEmpty());
}

TEST(Report, SaysThatTheSoundRepeats)
{
    Job job(3);
    job.decision.links = {linkOf(0, 1, Verdict::ambiguous)};

    const Result result = job.reported();

    ASSERT_EQ(result.alone.size(), 3u);
    const std::string repeats =
        "no certain place: the sound repeats, and more than one offset fits";
    EXPECT_EQ(result.alone[0].reason, repeats);
    EXPECT_EQ(result.alone[1].reason, repeats);
    EXPECT_EQ(result.alone[2].reason, "no sound in common with any other");
}

TEST(Report, DoesNotSayThatNothingIsInCommonOfWhatTheUserKeepsApart)
{
    Job job(3);
    job.decision.links = {linkOf(0, 1, Verdict::forbidden), linkOf(0, 2, Verdict::ambiguous)};

    EXPECT_EQ(reasonOf(job), "kept apart by the user from what it has in common with others");
}

TEST(Report, DoesNotSayThatNothingIsInCommonOfWhatItsDeviceKeepsApart)
{
    Job job(3);
    job.decision.links = {linkOf(0, 1, Verdict::forbidden), linkOf(0, 2, Verdict::ambiguous)};
    job.decision.links[0].isDeviceClash = true;

    EXPECT_EQ(reasonOf(job),
              "its sound has a place only where its device would be in two places at once");
}

TEST(Report, TellsGroupsOfTheLandmarksToTheFrame)
{
    Job job(4);
    job.sourceAt = {3, 2, 1, 0};

    const Result result = reportLandmarks({job.sources, job.recordings, job.sourceAt, job.origins},
                                          {{{0, 2}, {1.5, 0.0}}});

    ASSERT_EQ(result.groups.size(), 1u);
    EXPECT_EQ(result.groups[0].reference, 3u);
    EXPECT_THAT(sourcesOf(result.groups[0].members), ElementsAre(1, 3));
    const Member& later = result.groups[0].members[1];
    EXPECT_EQ(later.offsetSeconds, 1.5);
    // One frame: 256 / 8000 s.
    EXPECT_DOUBLE_EQ(later.offsetUncertaintySeconds, 0.032);
    EXPECT_EQ(later.driftPpm, 0.0);
    EXPECT_THAT(result.groups[0].links, IsEmpty());
    ASSERT_EQ(result.alone.size(), 2u);
    EXPECT_EQ(result.alone[0].source, 0u);
    EXPECT_EQ(result.alone[1].source, 2u);
}

} // namespace
