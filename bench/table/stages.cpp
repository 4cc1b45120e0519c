// stages FOLDER: each stage alone and the whole, on one recording and on one job of eight, clean
// and with heavy noise. The times are processor time, each run in a process of its own.

#include <cstdint>
#include <cstdio>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "Jobs.h"
#include "Measure.h"
#include "Recordings.h"
#include "VXClusterSync.h"
#include "VXClusterSyncParams.h"
#include "VXFile.h"
#include "VXLandmarkExtract.h"
#include "VXMergeStatsSetProcessor.h"
#include "support/SignalInput.h"
#include "vxaccelerate/transform.h"
#include "wavfile.h"

namespace
{

constexpr std::int32_t hop = 256;

std::vector<float> samplesOf(const std::string& path)
{
    VXS::wavfile_t file(path, 8, 0, 0);
    VXS::array<float> samples(static_cast<std::int32_t>(file.frames));
    file.read_mono(samples);
    return std::vector<float>(samples.data, samples.data + samples.count());
}

struct Extraction {
    double transform = 0.0;
    double read = 0.0;
    double find = 0.0;
    double prune = 0.0;
    double combine = 0.0;
    double whole = 0.0;
    double frames = 0.0;
};

Extraction extract(const std::string& path)
{
    Extraction times;
    VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};
    {
        VXS::wavfile_t file(path, 8, 0, 0);
        VXS::array<float> block(hop);
        times.read = bench::secondsOf([&] {
            for (std::uint32_t i = 0; i < file.frames / hop; ++i)
                file.read_mono(block);
        });
    }
    signals::SignalInput input(samplesOf(path));
    extractor.setupFFT();
    times.find = bench::secondsOf([&] { extractor.findFreqPeaks(&input); });
    times.prune = bench::secondsOf([&] { extractor.prune(); });
    VXS::VXFile stages(1);
    times.combine = bench::secondsOf([&] { extractor.combine(&stages); });
    times.frames = static_cast<double>(extractor.frames->size());

    input.rewind();
    VXS::array<float> frame(512);
    VXS::array<float> output(512);
    input.read_mono(frame);
    times.transform = bench::secondsOf([&] {
        for (double i = 0.0; i < times.frames; i += 1.0) {
            vxaccelerate::transform::FFTFwd(frame.data, output.data, extractor.fftState,
                                            extractor.fftBuffer.data);
        }
    });
    return times;
}

Extraction extractAtOnce(const std::string& path)
{
    Extraction times;
    VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};
    std::unique_ptr<VXS::VXFile> file;
    times.whole = bench::secondsOf([&] { file.reset(extractor.run(path, 1)); });
    times.frames = static_cast<double>(extractor.frames->size());
    return times;
}

// Registers one benchmark whose time is measured inside: one part of what `measure` does at once.
void add(const std::string& name, const char* unit, const std::function<double()>& seconds,
         const std::function<double()>& units)
{
    benchmark::RegisterBenchmark(name.c_str(),
                                 [=](benchmark::State& state) {
                                     for (auto step : state) {
                                         (void)step;
                                         state.SetIterationTime(seconds());
                                     }
                                     state.counters["units"] = units();
                                     state.SetLabel(unit);
                                 })
        ->UseManualTime()
        ->Iterations(1)
        ->Repetitions(7)
        ->Unit(benchmark::kSecond)
        ->ReportAggregatesOnly();
}

void addExtraction(const std::string& name, const std::string& path)
{
    const std::pair<const char*, double Extraction::*> stages[] = {
        {"transform", &Extraction::transform}, {"read", &Extraction::read},
        {"find peaks", &Extraction::find},     {"prune", &Extraction::prune},
        {"combine", &Extraction::combine},     {"whole", &Extraction::whole}};
    for (const auto& stage : stages) {
        const auto frames = std::make_shared<double>(0.0);
        add(
            "extraction of 10 min, " + name + ": " + stage.first, "frame",
            [=] {
                const std::vector<double> run = bench::inFreshProcess([&] {
                    const bool isWhole = stage.second == &Extraction::whole;
                    const Extraction times = isWhole ? extractAtOnce(path) : extract(path);
                    return std::vector<double>{times.*stage.second, times.frames};
                });
                *frames = run[1];
                return run[0];
            },
            [=] { return *frames; });
    }
}

void addSynchronisation(const std::string& name, const std::vector<std::string>& paths)
{
    const std::pair<const char*, double bench::StageTimes::*> stages[] = {
        {"cumulative counts", &bench::StageTimes::counts},
        {"index", &bench::StageTimes::index},
        {"votes", &bench::StageTimes::votes},
        {"evaluation", &bench::StageTimes::evaluation},
        {"release", &bench::StageTimes::release},
        {"merge", &bench::StageTimes::merge}};
    const auto votes = std::make_shared<double>(0.0);
    const std::string prefix = "synchronisation of 8 x 10 min, " + name + ": ";
    for (const auto& stage : stages) {
        add(
            prefix + stage.first, "vote",
            [=] {
                const std::vector<double> run = bench::inFreshProcess([&] {
                    const std::unique_ptr<VXS::VXFileSet> fileSet = bench::extractFiles(paths);
                    const bench::Synchronisation done = bench::synchronise(*fileSet);
                    const auto all = static_cast<double>(done.votes);
                    return std::vector<double>{done.times.*stage.second, all};
                });
                *votes = run[1];
                return run[0];
            },
            [=] { return *votes; });
    }
    add(
        prefix + "whole", "vote",
        [=] {
            const std::vector<double> run = bench::inFreshProcess([&] {
                const std::unique_ptr<VXS::VXFileSet> fileSet = bench::extractFiles(paths);
                VXS::VXClusterSync sync{VXS::VXClusterSyncParams(VXS::VXExtractParams())};
                VXS::VXClusterResultHolder result;
                const double seconds =
                    bench::secondsOf([&] { result.reset(sync.run(fileSet.get(), nullptr)); });
                return std::vector<double>{seconds};
            });
            return run[0];
        },
        [=] { return *votes; });
}

// Prints the medians as rows of the table.
class RowReporter final : public benchmark::BenchmarkReporter
{
public:
    bool ReportContext(const Context&) override { return true; }
    void ReportRuns(const std::vector<Run>& runs) override
    {
        for (const Run& run : runs) {
            if (run.aggregate_name != "median") continue;
            const double seconds = run.GetAdjustedRealTime();
            const double units = run.counters.at("units");
            bench::printRow(
                run.run_name.function_name,
                bench::text("%.2f ns a %s", seconds * 1e9 / units, run.report_label.c_str()),
                bench::text("%.4f s", seconds));
        }
    }
};

} // namespace

int main(int argc, char** argv)
{
    benchmark::Initialize(&argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    const std::string recordings = std::string(argv[1]) + "/recordings";
    const auto clean = bench::wavesIn(recordings, "clean");
    const auto heavy = bench::wavesIn(recordings, "heavy");
    addExtraction("clean", clean[0]);
    addExtraction("heavy noise", heavy[0]);
    addSynchronisation("clean", clean);
    addSynchronisation("heavy noise", heavy);
    RowReporter reporter;
    benchmark::RunSpecifiedBenchmarks(&reporter);
    return 0;
}
