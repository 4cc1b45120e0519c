#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "Goals.h"
#include "Jobs.h"
#include "Measure.h"
#include "Recordings.h"
#include "VXFile.h"
#include "VXLandmarkExtract.h"

namespace bench
{

namespace
{

// Extracts recordings that are made on the way and tells the seconds of the extraction alone, for
// what making them costs is known from a pass that does nothing else.
std::unique_ptr<VXS::VXFileSet> extractEvent(const Samples& event, std::size_t number,
                                             double seconds, double stepInSeconds,
                                             double& extraction)
{
    auto fileSet = std::make_unique<VXS::VXFileSet>();
    VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};
    const float noise = noiseLevel(event, lightDecibels);
    extraction = 0.0;
    for (std::size_t i = 0; i < number; ++i) {
        const Recorder recorder(event, static_cast<double>(i) * stepInSeconds, noise, i);
        RecorderInput input(recorder, seconds);
        extraction += secondsOf(
            [&] { fileSet->addFile(extractor.run(&input, static_cast<std::int64_t>(i) + 1)); });
        input.rewind();
        VXS::array<float> block(static_cast<std::int32_t>(input.getFrames()));
        extraction -= secondsOf([&] { input.read_mono(block); });
    }
    return fileSet;
}

// The recordings of a job, and the seconds that extracting them took. What they were made from is
// freed, so that only what a host would have counts as memory.
std::unique_ptr<VXS::VXFileSet> extractJob(const std::string& folder, std::size_t number,
                                           double seconds, double stepInSeconds, double& extraction)
{
    const Samples music = readMusic(wavesIn(folder + "/music", ""));
    const double length = static_cast<double>(number) * stepInSeconds + seconds;
    return extractEvent(lengthen(music, length), number, seconds, stepInSeconds, extraction);
}

void measureJob(const std::string& name, const std::string& folder, std::size_t number,
                double seconds, double stepInSeconds)
{
    constexpr double mostShare = 5.0;
    double extraction = 0.0;
    const std::unique_ptr<VXS::VXFileSet> fileSet =
        extractJob(folder, number, seconds, stepInSeconds, extraction);
    const Synchronisation done = synchronise(*fileSet);
    const double all = done.times.all();
    const double share = done.times.merge / all * 100.0;
    printRow(
        name + ": merge under 5 % of synchronisation", text("%.2f %%", share),
        text("%.2f s: counts %.2f, index %.2f, votes %.2f, evaluation %.2f, release %.2f, merge "
             "%.4f; %.2f ns a vote, %.0f million votes; %zu clusters, largest of %zu; "
             "extraction %.1f s; %.0f MiB",
             all, done.times.counts, done.times.index, done.times.votes, done.times.evaluation,
             done.times.release, done.times.merge, all * 1e9 / static_cast<double>(done.votes),
             static_cast<double>(done.votes) * 1e-6, done.clusters, done.largestCluster, extraction,
             peakResidentMiB()),
        share < mostShare);
}

// Many short recordings, where a pair has few votes for many offsets.
void measureShort(const std::string& folder, std::size_t number)
{
    constexpr double mostNanoseconds = 15.0;
    constexpr double mostMiB = 1.5e9 / 1048576.0;
    double extraction = 0.0;
    const std::unique_ptr<VXS::VXFileSet> fileSet =
        extractJob(folder, number, 60.0, 3.7, extraction);
    const double residentBefore = peakResidentMiB();
    const Synchronisation done = synchronise(*fileSet);
    const double nanoseconds = done.times.all() * 1e9 / static_cast<double>(done.votes);
    const std::string name = text("%zu x 1 min, light noise: ", number);
    printRow(name + "at most 15 ns a vote", text("%.2f", nanoseconds),
             text("%.2f s, %.0f million votes: counts %.2f, index %.2f, votes %.2f, evaluation "
                  "%.2f, release %.2f, merge %.4f",
                  done.times.all(), static_cast<double>(done.votes) * 1e-6, done.times.counts,
                  done.times.index, done.times.votes, done.times.evaluation, done.times.release,
                  done.times.merge),
             nanoseconds <= mostNanoseconds);
    printRow(name + "at most 1.5 GB in all", text("%.0f MiB", peakResidentMiB()),
             text("greatest resident size; %.0f MiB after extraction, %.1f million landmarks",
                  residentBefore, static_cast<double>(landmarksIn(*fileSet)) * 1e-6),
             peakResidentMiB() <= mostMiB);
}

struct Growth {
    std::vector<double> sizes;
    std::vector<double> extraction;
    std::vector<double> landmarks;
    std::vector<double> votes;
    std::vector<double> synchronisation;

    void add(double size, double extracted, VXS::VXFileSet& fileSet)
    {
        const Synchronisation done = synchroniseRepeatedly(fileSet, 5);
        sizes.push_back(size);
        extraction.push_back(extracted);
        landmarks.push_back(static_cast<double>(landmarksIn(fileSet)));
        votes.push_back(static_cast<double>(done.votes));
        synchronisation.push_back(done.times.all());
    }

    void print(const std::string& what) const
    {
        const auto row = [&](const char* part, const std::vector<double>& values, double scale,
                             const char* unit) {
            std::string all;
            for (std::size_t i = 0; i < values.size(); ++i)
                all += text("%s%g: %.3g", i == 0 ? "" : ", ", sizes[i], values[i] * scale);
            printRow(what + ": " + part, text("exponent %.2f", fittedExponent(sizes, values)),
                     all + " " + unit);
        };
        row("extraction", extraction, 1.0, "s");
        row("landmarks", landmarks, 1e-6, "million");
        row("votes", votes, 1e-6, "million");
        row("synchronisation", synchronisation, 1.0, "s");
    }
};

} // namespace

void measureHundreds(const std::string& folder)
{
    measureShort(folder, 300);
}

void measureMinutes(const std::string& folder)
{
    measureShort(folder, 1000);
}

void measureMany(const std::string& folder)
{
    measureJob("200 x 10 min, light noise", folder, 200, 600.0, startStepInSeconds);
}

void measureLength(const std::string& folder)
{
    constexpr std::size_t number = 4;
    constexpr double longest = 60.0;
    const Samples music = readMusic(wavesIn(folder + "/music", ""));
    const Samples event = lengthen(music, longest * 60.0 + number * startStepInSeconds);
    Growth growth;
    for (const double minutes : {1.0, 2.0, 5.0, 10.0, 20.0, 40.0, longest}) {
        double extraction = 0.0;
        const std::unique_ptr<VXS::VXFileSet> fileSet =
            extractEvent(event, number, minutes * 60.0, startStepInSeconds, extraction);
        growth.add(minutes, extraction, *fileSet);
    }
    growth.print("growth with length, 4 recordings of 1 to 60 min");
}

void measureNumber(const std::string& folder)
{
    constexpr std::size_t most = 64;
    constexpr double seconds = 600.0;
    const Samples music = readMusic(wavesIn(folder + "/music", ""));
    const Samples event = lengthen(music, seconds + most * startStepInSeconds);
    Growth growth;
    for (std::size_t number = 2; number <= most; number *= 2) {
        double extraction = 0.0;
        const std::unique_ptr<VXS::VXFileSet> fileSet =
            extractEvent(event, number, seconds, startStepInSeconds, extraction);
        growth.add(static_cast<double>(number), extraction, *fileSet);
    }
    growth.print("growth with number, 2 to 64 recordings of 10 min");
}

} // namespace bench
