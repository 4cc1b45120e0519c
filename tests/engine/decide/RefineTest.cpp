#include "decide/Refine.h"

#include <cmath>
#include <limits>
#include <utility>

#include <gmock/gmock.h>

#include "Signals.h"

namespace
{

using signals::noise;
using signals::part;
using vxlsync::Alignment;
using vxlsync::Callbacks;
using vxlsync::Link;
using vxlsync::Links;
using vxlsync::Progress;
using vxlsync::Recording;
using vxlsync::refineLinks;
using vxlsync::Verdict;

constexpr int fineRate = 16000;
constexpr std::size_t recordingSeconds = 6;
constexpr std::size_t plenty = std::size_t{1} << 30U;
// A twelfth of a sample of 16 kHz: the interpolation of peaks is no better.
constexpr double measuredTo = 5e-6;

Recording recordingOf(const std::vector<float>& samples, int rate = fineRate)
{
    Recording recording;
    recording.fine.append(samples.data(), samples.size());
    recording.fineRate = rate;
    return recording;
}

// A recording of the event from the sample on.
Recording heardFrom(std::size_t sample)
{
    static const std::vector<float> event = noise(1, 12 * fineRate);
    return recordingOf(part(event, sample, recordingSeconds * fineRate));
}

double secondsOf(std::size_t samples)
{
    return static_cast<double>(samples) / fineRate;
}

// A used link with all windows on the line, off by as much as the coarse rate leaves.
Link linkOf(std::size_t first, std::size_t second, double offset)
{
    Link link;
    link.first = first;
    link.second = second;
    link.line.offset = offset;
    link.line.middle = 4.0;
    link.line.offsetError = 1.0;
    link.line.slopeError = 1.0;
    link.line.agreement = 1.0;
    link.line.coherence = 0.5;
    link.line.significance = 100.0;
    link.verdict = Verdict::accepted;
    return link;
}

Links refined(Links links, const std::vector<Recording>& recordings, std::size_t memory = plenty,
              std::size_t threads = 1)
{
    vxlsync::Run run(threads, memory, Callbacks());
    return refineLinks(std::move(links), recordings, run);
}

// Recordings cannot be copied, so that a list of them cannot be written as such.
template <typename... Others>
std::vector<Recording> listOf(Recording first, Others... others)
{
    std::vector<Recording> list;
    list.push_back(std::move(first));
    (list.push_back(std::move(others)), ...);
    return list;
}

// The second recording starts 2 s and one sample of 16 kHz later than the first.
constexpr std::size_t laterBy = 2 * fineRate + 1;

std::vector<Recording> pairOfRecordings()
{
    return listOf(heardFrom(0), heardFrom(laterBy));
}

Link refinedFrom(double offset)
{
    return refined({linkOf(0, 1, offset)}, pairOfRecordings())[0];
}

bool isTheSame(const Link& left, const Link& right)
{
    return left.line.offset == right.line.offset && left.line.slope == right.line.slope &&
           left.line.offsetError == right.line.offsetError &&
           left.line.slopeError == right.line.slopeError;
}

TEST(Refine, MeasuresUsedLinksAtTheRecordingsOwnRate)
{
    for (const Verdict verdict : {Verdict::accepted, Verdict::confirmed}) {
        Link link = linkOf(0, 1, 2.0);
        link.verdict = verdict;

        const Link fine = refined({link}, pairOfRecordings())[0];

        EXPECT_NEAR(fine.line.offset, secondsOf(laterBy), measuredTo);
        EXPECT_LT(fine.line.offsetError, 1e-4);
        EXPECT_LT(fine.line.slopeError, 1e-4);
        EXPECT_NEAR(fine.line.slope, 0.0, 2e-6);
    }
}

TEST(Refine, LeavesWhatTheLinkWasJudgedBy)
{
    const Link fine = refinedFrom(2.0);

    EXPECT_EQ(fine.line.agreement, 1.0);
    EXPECT_EQ(fine.line.coherence, 0.5);
    EXPECT_EQ(fine.line.significance, 100.0);
    EXPECT_EQ(fine.line.middle, 4.0);
    EXPECT_TRUE(fine.line.windows.empty());
    EXPECT_EQ(fine.verdict, Verdict::accepted);
}

TEST(Refine, FollowsARecordingThatIsUpsideDown)
{
    std::vector<float> upsideDown = noise(1, recordingSeconds * fineRate);
    for (float& sample : upsideDown)
        sample = -sample;
    Link link = linkOf(0, 1, 0.0002);
    link.line.sign = -1.0;

    const Links links = refined({link}, listOf(heardFrom(0), recordingOf(upsideDown)));

    EXPECT_NEAR(links[0].line.offset, 0.0, measuredTo);
}

TEST(Refine, LeavesLinksThatAreNotUsed)
{
    for (const Verdict verdict :
         {Verdict::weak, Verdict::ambiguous, Verdict::contradicted, Verdict::forbidden}) {
        Link link = linkOf(0, 1, 2.0);
        link.verdict = verdict;

        EXPECT_TRUE(isTheSame(refined({link}, pairOfRecordings())[0], link));
    }
}

TEST(Refine, LeavesLinksWhereEitherHasNoMoreThanTheRateOfTheAnalysis)
{
    const std::vector<float> event = noise(1, recordingSeconds * fineRate);
    const Link link = linkOf(0, 1, 0.0002);
    for (const int rate : {fineRate, vxlsync::analysisRate, 12000}) {
        // At the full rate, the other has no samples.
        const auto other = [&] {
            return recordingOf(rate == fineRate ? std::vector<float>() : event, rate);
        };

        EXPECT_TRUE(isTheSame(refined({link}, listOf(recordingOf(event), other()))[0], link));
        EXPECT_TRUE(isTheSame(refined({link}, listOf(other(), recordingOf(event)))[0], link));
    }
}

TEST(Refine, MovesALineByHalfAMillisecondAtMost)
{
    EXPECT_NEAR(refinedFrom(secondsOf(laterBy) - 0.00045).line.offset, secondsOf(laterBy),
                measuredTo);
    EXPECT_NEAR(refinedFrom(secondsOf(laterBy) + 0.00045).line.offset, secondsOf(laterBy),
                measuredTo);

    const Link early = linkOf(0, 1, secondsOf(laterBy) - 0.00055);
    EXPECT_TRUE(isTheSame(refinedFrom(early.line.offset), early));
    const Link late = linkOf(0, 1, secondsOf(laterBy) + 0.00055);
    EXPECT_TRUE(isTheSame(refinedFrom(late.line.offset), late));
}

TEST(Refine, LeavesALineOnWhichTooFewWindowsAgree)
{
    const std::vector<float> other = noise(2, recordingSeconds * fineRate);
    const Link link = linkOf(0, 1, 2.0);

    EXPECT_TRUE(isTheSame(refined({link}, listOf(heardFrom(0), recordingOf(other)))[0], link));
}

TEST(Refine, LeavesALineOnWhichNothingCanBeMeasured)
{
    // Half a second is shared.
    const Link link = linkOf(0, 1, static_cast<double>(recordingSeconds) - 0.5);

    EXPECT_TRUE(isTheSame(refined({link}, listOf(heardFrom(0), heardFrom(0)))[0], link));
}

TEST(Refine, LeavesALineWhereSamplesPassWhatCanBeReckonedWith)
{
    std::vector<float> extreme = noise(1, recordingSeconds * fineRate);
    for (float& sample : extreme)
        sample *= std::numeric_limits<float>::max();

    const Links links =
        refined({linkOf(0, 1, 0.0)}, listOf(recordingOf(extreme), recordingOf(extreme)));

    EXPECT_TRUE(std::isfinite(links[0].line.offset));
    EXPECT_TRUE(std::isfinite(links[0].line.slope));
    EXPECT_TRUE(std::isfinite(links[0].line.offsetError));
    EXPECT_TRUE(std::isfinite(links[0].line.slopeError));
}

TEST(Refine, DependsNeitherOnMemoryNorOnThreads)
{
    const std::vector<Recording> recordings =
        listOf(heardFrom(0), heardFrom(laterBy), heardFrom(fineRate), heardFrom(3 * fineRate + 5));
    Links links;
    for (std::size_t first = 0; first < 4; ++first) {
        const double starts[] = {0.0, 2.0, 1.0, 3.0};
        for (std::size_t second = first + 1; second < 4; ++second)
            links.push_back(linkOf(first, second, starts[second] - starts[first]));
    }
    // No link between the second and third.
    links[3].verdict = Verdict::weak;

    const Links plain = refined(links, recordings);

    // Room for none, for two at a time, for three, and for all: 9/4 of two bytes a sample.
    const std::size_t each = recordingSeconds * fineRate * 2 / 4 * 9;
    const std::pair<std::size_t, std::size_t> memoryAndThreads[] = {
        {0, 1}, {2 * each + each / 2, 3}, {3 * each + each / 2, 1}, {plenty, 3}};
    for (const auto& [memory, threads] : memoryAndThreads) {
        const Links same = refined(links, recordings, memory, threads);
        ASSERT_EQ(same.size(), plain.size());
        for (std::size_t i = 0; i < plain.size(); ++i)
            EXPECT_TRUE(isTheSame(same[i], plain[i])) << memory << ' ' << threads << ' ' << i;
    }
    EXPECT_FALSE(isTheSame(plain[0], links[0]));
    EXPECT_TRUE(isTheSame(plain[3], links[3]));
}

TEST(Refine, MeasuresTheClearestLinksOfEachRecording)
{
    // Five recordings of one stretch have ten links, each clearer than the next.
    Links links;
    for (std::size_t first = 0; first < 5; ++first) {
        for (std::size_t second = first + 1; second < 5; ++second) {
            links.push_back(linkOf(first, second, 0.0));
            links.back().line.significance = 100.0 - static_cast<double>(links.size());
        }
    }
    std::vector<Recording> recordings;
    for (std::size_t i = 0; i < 5; ++i)
        recordings.push_back(heardFrom(0));

    const Links fine = refined(links, recordings);

    // When the last, that of 3 and 4, has its turn, both have three with 0, 1 and 2.
    for (std::size_t i = 0; i < 9; ++i)
        EXPECT_FALSE(isTheSame(fine[i], links[i])) << i;
    EXPECT_TRUE(isTheSame(fine[9], links[9]));
}

TEST(Refine, TellsOfEachLinkThatItMeasures)
{
    std::vector<Progress> told;
    Callbacks callbacks;
    callbacks.progress = [&](const Progress& progress) { told.push_back(progress); };
    vxlsync::Run run(1, plenty, callbacks);
    Link unused = linkOf(0, 2, 1.0);
    unused.verdict = Verdict::weak;

    refineLinks({linkOf(0, 1, 2.0), unused, linkOf(1, 2, -1.0)},
                listOf(heardFrom(0), heardFrom(laterBy), heardFrom(fineRate)), run);

    ASSERT_EQ(told.size(), 3u);
    for (std::size_t i = 0; i < told.size(); ++i) {
        EXPECT_EQ(told[i].stage, vxlsync::Stage::refining);
        EXPECT_DOUBLE_EQ(told[i].stageShare, static_cast<double>(i) / 2.0);
    }
}

TEST(Refine, EndsWhenTheHostWantsItTo)
{
    Callbacks callbacks;
    callbacks.isCancelled = [] { return true; };
    vxlsync::Run run(2, plenty, callbacks);

    EXPECT_THROW(refineLinks({linkOf(0, 1, 2.0)}, pairOfRecordings(), run), vxlsync::Cancelled);
}

TEST(Refine, HasNothingToDoWithoutLinks)
{
    EXPECT_TRUE(refined({}, {}).empty());
}

} // namespace
