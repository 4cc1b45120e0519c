#include "vxl_sync/Sync.h"

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <ctime>
#include <map>
#include <string>
#include <thread>

#include <gmock/gmock.h>

#include "Broadcast.h"
#include "Signals.h"
#include "Wave.h"

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using vxlsync::Callbacks;
using vxlsync::Options;
using vxlsync::Progress;
using vxlsync::Result;
using vxlsync::Source;
using vxlsync::synchronise;

constexpr int rate = signals::rate;
// What noise at 8 kHz lets one measure.
constexpr double nearSeconds = 1e-4;

Source sourceOf(const std::string& name, std::vector<float> samples, int sampleRate = rate)
{
    Source source;
    source.name = name;
    source.samples = std::move(samples);
    source.sampleRate = sampleRate;
    return source;
}

// Seconds of one event, from `start` seconds on.
Source heard(const std::string& name, std::uint32_t event, double start, double seconds = 20.0)
{
    const std::vector<float> whole = signals::noise(event, 90 * rate);
    return sourceOf(name, signals::part(whole, static_cast<std::size_t>(start * rate),
                                        static_cast<std::size_t>(seconds * rate)));
}

// Three of one event, 5 and 12.5 s after the first, and a stranger.
std::vector<Source> threeAndAStranger()
{
    return {heard("first", 1, 3.0), heard("second", 1, 8.0), heard("third", 1, 15.5),
            heard("stranger", 2, 0.0, 8.0)};
}

std::vector<double> offsetsOf(const vxlsync::Group& group)
{
    std::vector<double> offsets;
    for (const vxlsync::Member& member : group.members)
        offsets.push_back(member.offsetSeconds);
    return offsets;
}

// What a camera recorded of an event from `start` seconds on, as its file tells it.
Source filmed(const wave::TempFolder& folder, double start)
{
    std::vector<int> samples;
    for (const float sample : heard("", 1, start).samples)
        samples.push_back(static_cast<int>(20000.0f * sample));
    const auto second = static_cast<std::uint32_t>(start);
    const std::string time = "10:00:" + std::to_string(10 + second);
    Source source;
    source.path = folder.write(
        "rec" + std::to_string(second) + ".wav",
        broadcast::file(broadcast::chunk("2026-06-01", time, 36010 + second), samples));
    return source;
}

TEST(Sync, TellsWhatFilesSayOfTheirDevice)
{
    const wave::TempFolder folder;
    Options options;
    options.landmarksOnly = true;
    const std::vector<Source> sources{filmed(folder, 30.0), filmed(folder, 5.0)};

    const std::vector<vxlsync::SourceFacts> told = synchronise(sources, options).sources;

    EXPECT_EQ(told[0].device, "camera a");
    EXPECT_EQ(told[0].deviceKnownBy, vxlsync::DeviceEvidence::originator);
    EXPECT_EQ(told[1].creationTime, "2026-06-01T10:00:15");
    EXPECT_EQ(told[1].timeReferenceSeconds, 36015.0);
    EXPECT_EQ(told[0].clockStartSeconds.value() - told[1].clockStartSeconds.value(), 25.0);

    options.ignoreClocks = true;
    const std::vector<vxlsync::SourceFacts> without = synchronise(sources, options).sources;

    EXPECT_EQ(without[0].device, "camera a");
    EXPECT_FALSE(without[0].clockStartSeconds);
}

TEST(Sync, LinesUpSamplesOfAHost)
{
    const Result result = synchronise(threeAndAStranger());

    ASSERT_THAT(result.groups, SizeIs(1));
    EXPECT_THAT(offsetsOf(result.groups[0]), ElementsAre(0.0, testing::DoubleNear(5.0, nearSeconds),
                                                         testing::DoubleNear(12.5, nearSeconds)));
    ASSERT_THAT(result.alone, SizeIs(1));
    EXPECT_EQ(result.alone[0].source, 3u);
    EXPECT_EQ(result.sources[3].name, "stranger");
    EXPECT_EQ(result.sources[0].durationSeconds, 20.0);
    EXPECT_THAT(result.failed, IsEmpty());
}

TEST(Sync, LinesUpSamplesOfDifferentRates)
{
    // A clock that runs fast by half reads the same sound at 16 kHz.
    const double twiceAsFast = -500000.0;

    const Result result =
        synchronise({sourceOf("a", signals::chirps(0.0, 20 * rate)),
                     sourceOf("b", signals::chirps(twiceAsFast, 20 * 2 * rate, 4.0), 2 * rate)});

    ASSERT_THAT(result.groups, SizeIs(1));
    EXPECT_THAT(offsetsOf(result.groups[0]),
                ElementsAre(0.0, testing::DoubleNear(4.0, nearSeconds)));
}

TEST(Sync, ReadsFilesBesideSamples)
{
    const wave::TempFolder folder;
    const Source same = heard("", 1, 10.0);
    Source file;
    file.path = folder.write("rec.wav",
                             wave::file(wave::format(3, 1, 32), wave::samplesFloat(same.samples)));

    const Result result = synchronise({file, heard("samples", 1, 3.0)});

    ASSERT_THAT(result.groups, SizeIs(1));
    EXPECT_EQ(result.groups[0].members[0].source, 1u);
    EXPECT_NEAR(result.groups[0].members[1].offsetSeconds, 7.0, nearSeconds);
    EXPECT_EQ(result.sources[0].name, "rec");
    EXPECT_EQ(result.sources[0].path, file.path);
}

TEST(Sync, FailsASourceAndNotTheJob)
{
    std::vector<Source> sources = threeAndAStranger();
    Source missing;
    missing.path = "no/such/file.wav";
    sources.insert(sources.begin(), missing);

    const Result result = synchronise(sources);

    ASSERT_THAT(result.failed, SizeIs(1));
    EXPECT_EQ(result.failed[0].source, 0u);
    EXPECT_EQ(result.failed[0].reason, "does not exist");
    ASSERT_THAT(result.groups, SizeIs(1));
    EXPECT_THAT(result.groups[0].members, SizeIs(3));
}

TEST(Sync, TellsTheSameForAnyNumberOfThreads)
{
    Options one;
    one.threads = 1;
    Options many;
    many.threads = 5;

    EXPECT_EQ(vxlsync::toJson(synchronise(threeAndAStranger(), one)),
              vxlsync::toJson(synchronise(threeAndAStranger(), many)));
}

// What of a group does not depend on how its sources were given, by name.
std::map<std::string, std::vector<double>> placesByName(const Result& result)
{
    std::map<std::string, std::vector<double>> places;
    for (const vxlsync::Member& member : result.groups.at(0).members)
        places[result.sources[member.source].name] = {member.offsetSeconds,
                                                      member.offsetUncertaintySeconds,
                                                      member.driftPpm, member.driftUncertaintyPpm};
    for (const vxlsync::MeasuredLink& link : result.groups.at(0).links) {
        // Links are told from the source given first, so that their senses may differ.
        const auto [first, second] =
            std::minmax(result.sources[link.first].name, result.sources[link.second].name);
        places[first + '-' + second] = {std::fabs(link.offsetSeconds), link.uncertaintySeconds,
                                        link.coherence, link.peakRatio};
    }
    return places;
}

TEST(Sync, TellsTheSameNumbersForAnyOrderOfItsSources)
{
    // By path or name, and not as they are given.
    std::vector<Source> sources{heard("b", 1, 3.0), heard("c", 1, 8.0), heard("a", 1, 15.5)};
    const Result forward = synchronise(sources);
    std::reverse(sources.begin(), sources.end());

    const Result backward = synchronise(sources);

    EXPECT_EQ(placesByName(forward), placesByName(backward));
}

TEST(Sync, NeverPlacesOneDeviceAtTwoPlacesAtOnce)
{
    std::vector<Source> sources = threeAndAStranger();
    sources[0].device = "camera";
    sources[1].device = "camera";

    const Result result = synchronise(sources);

    for (const vxlsync::Group& group : result.groups) {
        std::size_t cameras = 0;
        for (const vxlsync::Member& member : group.members)
            cameras += member.source < 2 ? 1 : 0;
        EXPECT_LE(cameras, 1u);
    }
}

TEST(Sync, KeepsKnownStarts)
{
    std::vector<Source> sources = threeAndAStranger();
    sources[0].knownStartSeconds = 100.0;
    sources[3].knownStartSeconds = 130.0;

    const Result result = synchronise(sources);

    ASSERT_THAT(result.groups, SizeIs(1));
    ASSERT_THAT(result.groups[0].members, SizeIs(4));
    EXPECT_EQ(result.groups[0].members[3].source, 3u);
    EXPECT_NEAR(result.groups[0].members[3].offsetSeconds, 130.0, nearSeconds);
    EXPECT_THAT(result.sources[3].notes, IsEmpty());
}

TEST(Sync, SaysWhereTheSoundDisagreesWithAKnownStart)
{
    std::vector<Source> sources = {heard("a", 1, 0.0), heard("b", 1, 5.0)};
    sources[0].knownStartSeconds = 100.0;
    sources[1].knownStartSeconds = 104.6;

    const Result result = synchronise(sources);

    EXPECT_NEAR(result.groups.at(0).members.at(1).offsetSeconds, 104.6, nearSeconds);
    EXPECT_THAT(result.sources[0].notes, IsEmpty());
    EXPECT_THAT(result.sources[1].notes,
                testing::ElementsAre("by the sound that it shares with a it started 0.400 s later "
                                     "than was given"));
}

TEST(Sync, KeepsApartWhatTheHostWantsApart)
{
    Options options;
    options.apart = {{0, 1}};

    const Result result = synchronise({heard("a", 1, 0.0), heard("b", 1, 5.0)}, options);

    EXPECT_THAT(result.groups, IsEmpty());
    ASSERT_THAT(result.refusedLinks, SizeIs(1));
    EXPECT_EQ(result.refusedLinks[0].verdict, vxlsync::Verdict::forbidden);
}

TEST(Sync, TakesTheReferenceAskedFor)
{
    Options options;
    options.reference = 2;

    const Result result = synchronise(threeAndAStranger(), options);

    ASSERT_THAT(result.groups, SizeIs(1));
    EXPECT_EQ(result.groups[0].reference, 2u);
}

TEST(Sync, GoesNoFurtherThanTheLandmarksWhereAsked)
{
    Options options;
    options.landmarksOnly = true;
    // Noise whose loudness changes has the peaks that landmarks are made of.
    const std::vector<float> whole = signals::chirps(0.0, 60 * rate);

    const Result result =
        synchronise({sourceOf("a", signals::part(whole, 0, 30 * rate)),
                     sourceOf("b", signals::part(whole, 10 * 256 * 8, 30 * rate))},
                    options);

    ASSERT_THAT(result.groups, SizeIs(1));
    EXPECT_THAT(result.groups[0].links, IsEmpty());
    // 80 frames of 256 samples.
    EXPECT_NEAR(result.groups[0].members[1].offsetSeconds, 2.56, 1e-6);
}

TEST(Sync, HasNothingToTellOfNoSources)
{
    const Result result = synchronise({});

    EXPECT_THAT(result.sources, IsEmpty());
    EXPECT_THAT(result.groups, IsEmpty());
}

TEST(Sync, RefusesSourcesThatContradictTheContract)
{
    EXPECT_THROW(synchronise({sourceOf("a", {0.0f}, 7)}), std::invalid_argument);
}

TEST(Sync, TellsHowFarItIsAndNeverFallsBack)
{
    std::vector<Progress> heardOf;
    Callbacks callbacks;
    callbacks.progress = [&](const Progress& progress) { heardOf.push_back(progress); };

    synchronise(threeAndAStranger(), {}, callbacks);

    std::vector<std::size_t> finished;
    double share = 0.0;
    for (const Progress& progress : heardOf) {
        EXPECT_GE(progress.share, share);
        share = progress.share;
        if (progress.finishedSource) finished.push_back(*progress.finishedSource);
    }
    EXPECT_THAT(finished, testing::UnorderedElementsAre(0, 1, 2, 3));
    EXPECT_EQ(share, 1.0);
}

// What hosts are promised, tried on recordings for which a step that did not ask would take longer.
// Under a sanitizer and unoptimised, everything takes several times as long.
#ifdef VXL_SYNC_SANITIZED
constexpr double mostSecondsToTheEnd = 4.0;
constexpr std::size_t longSeconds = 60;
#else
constexpr double mostSecondsToTheEnd = 0.5;
constexpr std::size_t longSeconds = 600;
#endif

// Seconds as they pass for a thread that would work half of the time. Where processors are free
// they are those of the wall; on a machine that others keep busy they last longer, as they do for a
// job.
class WorkingClock
{
public:
    WorkingClock() : thread([this] { run(); }) {}
    ~WorkingClock()
    {
        isOver = true;
        thread.join();
    }
    WorkingClock(const WorkingClock&) = delete;
    WorkingClock& operator=(const WorkingClock&) = delete;

    double seconds() const { return steps * stepSeconds; }

private:
    static constexpr double stepSeconds = 0.01;

    static double processorSeconds()
    {
        timespec time{};
        clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
        return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
    }

    void run()
    {
        using std::chrono::duration;
        using std::chrono::steady_clock;
        while (!isOver) {
            const auto start = steady_clock::now();
            const double worked = processorSeconds();
            while (processorSeconds() - worked < stepSeconds / 2.0) {
            }
            std::this_thread::sleep_until(start + duration<double>(stepSeconds));
            steps = steps + 1;
        }
    }

    std::atomic<bool> isOver{false};
    std::atomic<int> steps{0};
    std::thread thread;
};

// Two of one event and two of another.
std::vector<Source> fourLongSources()
{
    constexpr std::size_t count = longSeconds * rate;
    const std::vector<float> first = signals::noise(1, count + 50 * rate);
    const std::vector<float> second = signals::noise(2, count + 20 * rate);
    return {sourceOf("a", signals::part(first, 0, count)),
            sourceOf("b", signals::part(first, 50 * rate, count)),
            sourceOf("c", signals::part(second, 0, count)),
            sourceOf("d", signals::part(second, 20 * rate, count))};
}

// More than a machine of two processors has, so that some wait for their turn.
Options onFourThreads()
{
    Options options;
    options.threads = 4;
    return options;
}

TEST(Sync, AsksAgainWithinHalfASecond)
{
    std::vector<Source> sources = fourLongSources();
    sources.resize(2);
    const WorkingClock clock;
    double last = clock.seconds();
    double longest = 0.0;
    Callbacks callbacks;
    callbacks.isCancelled = [&] {
        const double now = clock.seconds();
        longest = std::max(longest, now - last);
        last = now;
        return false;
    };

    synchronise(std::move(sources), onFourThreads(), callbacks);

    EXPECT_LT(longest, mostSecondsToTheEnd);
    EXPECT_LT(clock.seconds() - last, mostSecondsToTheEnd);
}

// From the wish on, not from the question: while it reads, while it looks for landmarks, as the
// comparison begins, when transforms are long, and in the midst of it.
TEST(Sync, EndsWithinHalfASecondOfBeingCancelled)
{
    const std::vector<Source> sources = fourLongSources();
    const WorkingClock clock;
    for (const double share : {0.0, 0.28, 0.35, 0.45}) {
        std::atomic<bool> isWanted{false};
        double wanted = 0.0;
        Callbacks callbacks;
        callbacks.progress = [&](const Progress& progress) {
            if (isWanted || progress.share < share) return;
            wanted = clock.seconds();
            isWanted = true;
        };
        callbacks.isCancelled = [&] { return isWanted.load(); };

        EXPECT_THROW(synchronise(sources, onFourThreads(), callbacks), vxlsync::Cancelled) << share;

        EXPECT_LT(clock.seconds() - wanted, mostSecondsToTheEnd) << share;
    }
}

TEST(Sync, PassesOnWhatItsCallbacksThrow)
{
    Callbacks callbacks;
    callbacks.progress = [](const Progress&) { throw std::domain_error("the host's own"); };
    EXPECT_THROW(synchronise(threeAndAStranger(), {}, callbacks), std::domain_error);

    callbacks.progress = nullptr;
    callbacks.isCancelled = []() -> bool { throw std::domain_error("the host's own"); };
    EXPECT_THROW(synchronise(threeAndAStranger(), {}, callbacks), std::domain_error);
}

TEST(Sync, RunsJobsSideBySide)
{
    const std::string expected = vxlsync::toJson(synchronise(threeAndAStranger()));
    std::vector<std::string> results(3);

    std::vector<std::thread> threads;
    for (std::string& result : results)
        threads.emplace_back(
            [&result] { result = vxlsync::toJson(synchronise(threeAndAStranger())); });
    for (std::thread& thread : threads)
        thread.join();

    EXPECT_THAT(results, testing::Each(expected));
}

} // namespace
