#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "Goals.h"
#include "Jobs.h"
#include "Measure.h"
#include "Recordings.h"
#include "VXClusterSync.h"
#include "VXClusterSyncParams.h"
#include "VXFile.h"
#include "VXLandmark.h"
#include "VXLandmarkExtract.h"
#include "VXMergeStatsSetProcessor.h"
#include "plain/Evaluation.h"
#include "plain/Histograms.h"

namespace bench
{

namespace
{

// The plain twin's synchronisation of the same landmarks, in seconds. It has no merge stage.
class Twin
{
public:
    explicit Twin(VXS::VXFileSet& fileSet)
    {
        for (const auto& entry : fileSet.getFiles()) {
            owned.push_back(std::make_unique<plain::Recording>(entry.first));
            recordings[entry.first] = owned.back().get();
            for (const auto& frame : entry.second->getLandmarkMap()) {
                for (const VXS::VXLandmark* landmark : frame.second) {
                    owned.back()->add({landmark->offset, landmark->key, entry.first, true});
                }
            }
        }
    }

    double synchronise()
    {
        for (const auto& entry : recordings) {
            entry.second->counts.clear();
            entry.second->stale = true;
        }
        const VXS::VXClusterSyncParams params{VXS::VXExtractParams()};
        std::vector<float> fractions;
        plain::HistogramSet histograms;
        return secondsOf([&] {
            for (const auto& entry : recordings)
                entry.second->countUp();
            histograms = plain::histograms(recordings, params.getMaxLandmarkCount(), fractions);
            plain::evaluate(recordings, histograms);
        });
    }

private:
    std::vector<std::unique_ptr<plain::Recording>> owned;
    plain::RecordingSet recordings;
};

void measureSet(const std::string& name, const std::vector<std::string>& paths,
                std::optional<double> mostNanoseconds)
{
    constexpr int runs = 9;
    const std::vector<double> run = medianRun(runs, [&] {
        const std::unique_ptr<VXS::VXFileSet> fileSet = extractFiles(paths);
        const Synchronisation done = synchronise(*fileSet);
        const StageTimes& times = done.times;
        const auto votes = static_cast<double>(done.votes);
        return std::vector<double>{times.all() * 1e9 / votes,
                                   votes,
                                   times.all(),
                                   times.counts,
                                   times.index,
                                   times.votes,
                                   times.evaluation,
                                   times.release,
                                   times.merge};
    });
    std::string goal = "synchronisation, 8 x 10 min, " + name + ", ns a vote";
    if (mostNanoseconds) goal += text(", at most %g", *mostNanoseconds);
    printRow(goal, text("%.2f", run[0]),
             text("%.3f s, %.1f million votes: counts %.3f, index %.3f, votes %.3f, evaluation "
                  "%.3f, release %.4f, merge %.4f",
                  run[2], run[1] * 1e-6, run[3], run[4], run[5], run[6], run[7], run[8]),
             mostNanoseconds ? std::optional<bool>(run[0] <= *mostNanoseconds) : std::nullopt);
}

void compareWithTwin(const std::string& name, const std::vector<std::string>& paths, int runs,
                     double leastRatio)
{
    const std::vector<double> run = medianRun(runs, [&] {
        const std::unique_ptr<VXS::VXFileSet> fileSet = extractFiles(paths);
        const Synchronisation done = synchronise(*fileSet);
        const double twin = Twin(*fileSet).synchronise();
        return std::vector<double>{twin / done.times.withoutMerge(), done.times.withoutMerge(),
                                   twin};
    });
    printRow(
        text("synchronisation, 8 x 10 min, %s, at least %g x plain twin", name.c_str(), leastRatio),
        text("%.0f", run[0]),
        text("%.3f s, twin %.2f s; both without merge, which the twin lacks", run[1], run[2]),
        run[0] >= leastRatio);
}

} // namespace

void measureSynchronisation(const std::string& folder)
{
    const std::string recordings = folder + "/recordings";
    measureSet("heavy noise", wavesIn(recordings, "heavy"), 8.0);
    measureSet("light noise", wavesIn(recordings, "light"), std::nullopt);
    measureSet("clean", wavesIn(recordings, "clean"), std::nullopt);
    compareWithTwin("heavy noise", wavesIn(recordings, "heavy"), 3, 100.0);
    compareWithTwin("clean", wavesIn(recordings, "clean"), 7, 40.0);
}

void measureFar(const std::string&)
{
    constexpr std::int32_t landmarksPerFile = 100;
    constexpr std::int64_t fileCount = 20;
    constexpr std::int32_t framesBetween = 27000;
    const std::vector<double> run = medianRun(9, [&] {
        VXS::VXFileSet fileSet;
        for (std::int64_t fileID = 1; fileID <= fileCount; ++fileID) {
            auto file = std::make_unique<VXS::VXFile>(fileID);
            for (std::int32_t i = 0; i < landmarksPerFile; ++i) {
                const auto key = static_cast<std::uint32_t>(i);
                const std::int32_t frame = i * framesBetween + static_cast<std::int32_t>(fileID);
                file->addLandmark(new VXS::VXLandmark(frame, file.get(), key));
            }
            fileSet.addFile(file.release());
        }
        Twin twin(fileSet);
        const Synchronisation done = synchronise(fileSet);
        const double twinSeconds = twin.synchronise();
        return std::vector<double>{twinSeconds / done.times.withoutMerge(),
                                   done.times.withoutMerge(), twinSeconds,
                                   static_cast<double>(done.votes), done.times.votes};
    });
    printRow("20 recordings of 2.7 million frames, 100 landmarks each: at least 1 x plain twin",
             text("%.2f", run[0]),
             text("%.3f s, twin %.3f s, nearly all of it counts by frame; votes %.5f s for %.0f "
                  "votes",
                  run[1], run[2], run[4], run[3]),
             run[0] >= 1.0);
}

void measureHours(const std::string& folder)
{
    constexpr double mostSeconds = 8.0;
    constexpr double mostMiB = 2e9 / 1048576.0;
    const std::vector<std::string> paths = wavesIn(folder + "/recordings", "hour");
    const std::vector<double> run = medianRun(3, [&] {
        std::unique_ptr<VXS::VXFileSet> fileSet;
        const double extraction = secondsOf([&] { fileSet = extractFiles(paths); });
        const double residentBefore = peakResidentMiB();
        VXS::VXClusterSync sync{VXS::VXClusterSyncParams(VXS::VXExtractParams())};
        VXS::VXClusterResultHolder result;
        const double seconds = secondsOf([&] { result.reset(sync.run(fileSet.get(), nullptr)); });
        const double resident = peakResidentMiB();
        const auto votes = static_cast<double>(synchronise(*fileSet).votes);
        const auto landmarks = static_cast<double>(landmarksIn(*fileSet));
        return std::vector<double>{seconds, votes, extraction, residentBefore, resident, landmarks};
    });
    printRow("8 x 60 min, heavy noise: synchronisation under 8 s", text("%.2f s", run[0]),
             text("%.2f ns a vote, %.1f million votes; extraction %.1f s", run[0] * 1e9 / run[1],
                  run[1] * 1e-6, run[2]),
             run[0] < mostSeconds);
    printRow("8 x 60 min, heavy noise: under 2 GB in all", text("%.0f MiB", run[4]),
             text("greatest resident size; %.0f MiB after extraction, %.1f million landmarks",
                  run[3], run[5] * 1e-6),
             run[4] < mostMiB);
}

} // namespace bench
