#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <new>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Allocations.h"
#include "FixedConsole.h"
#include "Job.h"
#include "Landmarks.h"
#include "Signals.h"
#include "Sweep.h"
#include "VXClusterInternal.h"
#include "VXClusterSync.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXFileSetProcessor.h"
#include "VXHistogram.h"
#include "VXHistogramSetProcessor.h"
#include "VXLandmarkExtract.h"
#include "VXMergeStats.h"
#include "VXMergeStatsSetProcessor.h"
#include "Wave.h"

// Synchronisation that gets no memory, as a whole and stage by stage, and the whole job of a host.

namespace
{

using Clusters = std::vector<VXS::support::Cluster>;
using HistogramView = std::map<std::pair<std::int64_t, std::int64_t>, VXS::support::VoteCounts>;
using VXS::VXClusterInternal;
using VXS::VXClusterResultHolder;
using VXS::VXClusterSync;
using VXS::VXFileSet;
using VXS::VXFileSetProcessor;
using VXS::VXHistogram;
using VXS::VXHistogramSetHolder;
using VXS::VXHistogramSetProcessor;
using VXS::VXMerger;
using VXS::VXMergeStatsSetHolder;
using VXS::VXMergeStatsSetProcessor;

// Needs no memory of its own.
class CountingProgress final : public VXS::VXProgress
{
public:
    void setStage(int) override { ++stages; }
    void setFraction(float) override { ++fractions; }

    int stages = 0;
    int fractions = 0;
};

struct SyncJob {
    std::unique_ptr<VXFileSet> fileSet = job::someFileSet();
    VXClusterSync sync{job::smallSyncParams()};
    CountingProgress progress;
};

Clusters clustersOf(VXClusterResultHolder& result)
{
    return VXS::support::resultOf(result.release());
}

std::unique_ptr<VXFileSet> countedFileSet()
{
    auto fileSet = job::someFileSet();
    fileSet->computeAllCLFs();
    return fileSet;
}

VXHistogramSetHolder histogramsOf(VXFileSet& fileSet)
{
    return VXHistogramSetHolder(VXFileSetProcessor(250).run(&fileSet, nullptr));
}

// A file set with all that the merge decision reads.
struct Evaluated {
    std::unique_ptr<VXFileSet> fileSet = countedFileSet();
    VXHistogramSetHolder histograms = histogramsOf(*fileSet);
    VXMergeStatsSetHolder stats{VXHistogramSetProcessor().run(fileSet.get(), histograms.get())};
};

// Pair, votes and offset of each record, and how the pair was decided.
using StatsView = std::map<std::pair<std::int64_t, std::int64_t>, std::vector<float>>;

StatsView viewOf(const VXS::VXMergeStatsSet& stats)
{
    StatsView view;
    for (const auto& entry : stats) {
        const VXS::VXMergeStats& record = *entry.second;
        view[entry.first] = {record.peakCount,           record.bestOffset,
                             record.overlapLength,       record.percentMatchA,
                             record.percentMatchB,       record.landmarksInOverlapA,
                             record.landmarksInOverlapB, record.templateMatchLength,
                             record.meanCount,           record.stdDevCount};
    }
    return view;
}

using Groups = std::set<std::set<std::int64_t>>;

std::uint64_t sweepOfMerging(std::int64_t firstID, std::int64_t secondID, const Groups& expected)
{
    return allocation::sweep(
        expected,
        [] {
            auto merger = std::make_unique<VXMerger>();
            merger->fileClusters = {{1, 4}, {2, 3, 5}, {6}};
            return merger;
        },
        [firstID, secondID](VXMerger& merger) {
            merger.mergeClusters(firstID, secondID);
            return 0;
        },
        [](VXMerger& merger, int) { return merger.fileClusters; });
}

using SubClusters = std::set<std::map<std::int64_t, float>>;

std::uint64_t sweepOfMoving(std::int64_t firstID, std::int64_t secondID,
                            const SubClusters& expected)
{
    return allocation::sweep(
        expected,
        [] {
            auto cluster = std::make_unique<VXClusterInternal>();
            cluster->init({1, 2, 3});
            cluster->merge(2, 3, 10.0f);
            return cluster;
        },
        [firstID, secondID](VXClusterInternal& cluster) {
            cluster.merge(firstID, secondID, 5.0f);
            return 0;
        },
        [](VXClusterInternal& cluster, int) { return cluster.getCluster(); });
}

} // namespace

TEST(SynchronisationAllocation, AFileSetIsSynchronisedAgainWithTheSameObjects)
{
    const std::uint64_t allocations = allocation::sweep(
        job::clustersOfSomeFileSet(), [] { return std::make_unique<SyncJob>(); },
        [](SyncJob& subject) {
            return VXClusterResultHolder(
                subject.sync.run(subject.fileSet.get(), &subject.progress));
        },
        [](SyncJob&, VXClusterResultHolder& result) { return clustersOf(result); });

    EXPECT_LT(100u, allocations);
}

TEST(SynchronisationAllocation, ASpanThatMemoryDoesNotHoldEndsTheRunInStageZero)
{
    SyncJob subject;
    const allocation::Refusal refusal(0, allocation::Refused::One);

    EXPECT_THROW(subject.sync.run(subject.fileSet.get(), &subject.progress), std::bad_alloc);

    EXPECT_EQ(1, subject.progress.stages);
    EXPECT_EQ(0, subject.progress.fractions);
}

TEST(SynchronisationAllocation, AFileSetWithoutNamesIsSynchronisedAgain)
{
    Clusters expected = job::clustersOfSomeFileSet();
    for (auto& cluster : expected) {
        for (auto& member : cluster)
            member.name.clear();
    }

    const std::uint64_t allocations = allocation::sweep(
        expected,
        [] {
            auto subject = std::make_unique<SyncJob>();
            subject->fileSet->computeAllCLFs();
            subject->fileSet->idToName.clear();
            return subject;
        },
        [](SyncJob& subject) {
            return VXClusterResultHolder(subject.sync.run(subject.fileSet.get(), nullptr));
        },
        [](SyncJob&, VXClusterResultHolder& result) { return clustersOf(result); });

    EXPECT_LT(60u, allocations);
}

TEST(SynchronisationAllocation, AResultIsFreedWithoutMemory)
{
    SyncJob subject;
    VXClusterResultHolder result(subject.sync.run(subject.fileSet.get(), nullptr));
    const allocation::Refusal refusal(0, allocation::Refused::AllFromThere);

    result.reset();

    EXPECT_FALSE(refusal.hasHappened());
}

TEST(SynchronisationAllocation, HistogramsAreMadeAgainByTheSameProcessor)
{
    struct Subject {
        std::unique_ptr<VXFileSet> fileSet = countedFileSet();
        VXFileSetProcessor processor{250};
    };
    const HistogramView expected = [] {
        const auto fileSet = countedFileSet();
        return VXS::support::voteCountsOf(*histogramsOf(*fileSet));
    }();
    // Of recordings 1 and 2 every frame from 10 to 129 meets, but for those that 7 divides: 120
    // frames less 14, 21 to 126, which are 17.
    ASSERT_EQ(VXS::support::VoteCounts({{10, 103}}), expected.at({1, 2}));

    const std::uint64_t allocations = allocation::sweep(
        expected, [] { return std::make_unique<Subject>(); },
        [](Subject& subject) {
            return VXHistogramSetHolder(subject.processor.run(subject.fileSet.get(), nullptr));
        },
        [](Subject&, const VXHistogramSetHolder& histograms) {
            return VXS::support::voteCountsOf(*histograms);
        });

    EXPECT_LT(20u, allocations);
}

TEST(SynchronisationAllocation, SingletonsArePurgedOrNothingIsLost)
{
    struct Subject {
        std::unique_ptr<VXFileSet> fileSet = countedFileSet();
        std::unique_ptr<VXFileSetProcessor> processor;
    };

    // The index is only good for a new start after it got no memory, which the stage itself makes.
    const std::uint64_t allocations = allocation::sweep(
        VXS::support::VoteCounts({{10, 103}}), [] { return std::make_unique<Subject>(); },
        [](Subject& subject) {
            subject.processor = std::make_unique<VXFileSetProcessor>(250u);
            subject.processor->addLandmarks(subject.fileSet.get(), nullptr);
            subject.processor->purgeSingletons();
            return VXHistogramSetHolder(subject.processor->convert2Histograms(nullptr));
        },
        [](Subject&, const VXHistogramSetHolder& histograms) {
            return VXS::support::voteCountsOf(*histograms).at({1, 2});
        });

    EXPECT_LT(20u, allocations);
}

TEST(SynchronisationAllocation, RecordsAreMadeAgainOfTheSameHistograms)
{
    struct Subject {
        std::unique_ptr<VXFileSet> fileSet = countedFileSet();
        VXHistogramSetHolder histograms = histogramsOf(*fileSet);
    };
    const StatsView expected = viewOf(*Evaluated().stats);
    ASSERT_EQ(4u, expected.size());

    const std::uint64_t allocations = allocation::sweep(
        expected, [] { return std::make_unique<Subject>(); },
        [](Subject& subject) {
            return VXMergeStatsSetHolder(
                VXHistogramSetProcessor().run(subject.fileSet.get(), subject.histograms.get()));
        },
        [](Subject&, const VXMergeStatsSetHolder& stats) { return viewOf(*stats); });

    // The set, and a node and a record for each of four pairs.
    EXPECT_LE(9u, allocations);
}

TEST(SynchronisationAllocation, ClustersAreMadeAgainOfTheSameRecords)
{
    Clusters expected = job::clustersOfSomeFileSet();
    for (auto& cluster : expected) {
        for (auto& member : cluster)
            member.name = "TODO";
    }

    const std::uint64_t allocations = allocation::sweep(
        expected, [] { return std::make_unique<Evaluated>(); },
        [](Evaluated& subject) {
            return VXClusterResultHolder(VXMergeStatsSetProcessor(job::smallSyncParams())
                                             .run(subject.fileSet.get(), subject.stats.get()));
        },
        [](Evaluated&, VXClusterResultHolder& result) { return clustersOf(result); });

    EXPECT_LT(40u, allocations);
}

TEST(VXHistogramAllocation, ABinCanBeAppendedAgain)
{
    // A bin one above the last, one far above it, and one of many votes.
    for (const auto& bin : {std::pair<std::int64_t, std::uint64_t>(6, 3), {2000000, 1}, {6, 500}}) {
        const VXS::support::VoteCounts expected = {{5, 2}, {bin.first, bin.second}};

        const std::uint64_t allocations = allocation::sweep(
            expected,
            [] {
                VXHistogram histogram;
                histogram.append(5, 2);
                // A copy has no room left.
                return std::make_unique<VXHistogram>(histogram);
            },
            [&bin](VXHistogram& histogram) {
                histogram.append(bin.first, bin.second);
                return 0;
            },
            [](VXHistogram& histogram, int) { return VXS::support::voteCountsOf(histogram); });

        EXPECT_LE(1u, allocations);
    }
}

TEST(VXHistogramAllocation, TheFirstBinCanBeAppendedAgain)
{
    const std::uint64_t allocations = allocation::sweep(
        VXS::support::VoteCounts({{-7, 300}}), [] { return std::make_unique<VXHistogram>(); },
        [](VXHistogram& histogram) {
            histogram.append(-7, 300);
            return 0;
        },
        [](VXHistogram& histogram, int) { return VXS::support::voteCountsOf(histogram); });

    EXPECT_LE(1u, allocations);
}

TEST(VXHistogramAllocation, EndsCanBeKeptAgain)
{
    VXS::VXLandmark landmark(3, nullptr, 0);

    const std::uint64_t allocations = allocation::sweep(
        static_cast<const VXS::VXLandmark*>(&landmark),
        [] {
            auto histogram = std::make_unique<VXHistogram>();
            histogram->append(5, 2);
            return histogram;
        },
        [&landmark](VXHistogram& histogram) {
            histogram.keepEnds(5, {&landmark, &landmark});
            return 0;
        },
        [](VXHistogram& histogram, int) { return VXS::support::leastVoteIn(histogram, 5); });

    EXPECT_EQ(1u, allocations);
}

TEST(VXMergerAllocation, GroupsAreMadeAgainOfTheSameFiles)
{
    const auto fileSet = job::someFileSet();

    const std::uint64_t allocations = allocation::sweep(
        Groups{{1}, {2}, {3}, {4}, {5}, {6}}, [] { return std::make_unique<VXMerger>(); },
        [&fileSet](VXMerger& merger) {
            merger.init(fileSet.get());
            return 0;
        },
        [](VXMerger& merger, int) { return merger.fileClusters; });

    EXPECT_LE(12u, allocations);
}

TEST(VXMergerAllocation, GroupsAreUnitedWithoutMemory)
{
    EXPECT_EQ(0u, sweepOfMerging(4, 5, {{1, 2, 3, 4, 5}, {6}}));
    EXPECT_EQ(0u, sweepOfMerging(5, 4, {{1, 2, 3, 4, 5}, {6}}));
}

TEST(VXMergerAllocation, AGroupIsKeptWhereAnIdIsOfNone)
{
    EXPECT_EQ(0u, sweepOfMerging(4, 77, {{1, 4}, {2, 3, 5}, {6}}));
    EXPECT_EQ(0u, sweepOfMerging(77, 4, {{1, 4}, {2, 3, 5}, {6}}));
    EXPECT_EQ(0u, sweepOfMerging(1, 4, {{1, 4}, {2, 3, 5}, {6}}));
}

TEST(VXMergerAllocation, AnEmptyGroupIsEnteredAgain)
{
    EXPECT_EQ(1u, sweepOfMerging(77, 78, {{}, {1, 4}, {2, 3, 5}, {6}}));
}

TEST(VXClusterInternalAllocation, SubClustersAreJoinedAgain)
{
    // 3 stands 10 behind 2, and 2 comes to stand 5 behind 1.
    EXPECT_LT(3u, sweepOfMoving(1, 2, {{{1, 0.0f}, {2, 5.0f}, {3, 15.0f}}}));
    // 1 comes to stand 5 behind 2.
    EXPECT_LT(3u, sweepOfMoving(2, 1, {{{1, 5.0f}, {2, 0.0f}, {3, 10.0f}}}));
}

TEST(VXClusterInternalAllocation, ASubClusterIsMovedAgain)
{
    EXPECT_LT(2u, sweepOfMoving(2, 3, {{{1, 0.0f}}, {{2, 5.0f}, {3, 15.0f}}}));
}

TEST(VXClusterInternalAllocation, AFileOfNoSubClusterIsJoinedAgain)
{
    EXPECT_LT(1u, sweepOfMoving(77, 1, {{{1, 5.0f}}, {{2, 0.0f}, {3, 10.0f}}}));
}

TEST(VXClusterInternalAllocation, SubClustersAreMadeAgain)
{
    const std::uint64_t allocations = allocation::sweep(
        SubClusters{{{1, 0.0f}}, {{2, 0.0f}}}, [] { return std::make_unique<VXClusterInternal>(); },
        [](VXClusterInternal& cluster) {
            cluster.init({1, 2});
            return 0;
        },
        [](VXClusterInternal& cluster, int) { return cluster.getCluster(); });

    EXPECT_LT(3u, allocations);
}

TEST(WholeJobAllocation, AHostExtractsAndSynchronisesAgainWithTheSameObjects)
{
    struct Host {
        VXS::VXLandmarkExtract extractor{job::smallParams()};
        VXClusterSync sync{job::smallSyncParams()};
        CountingProgress progress;
    };
    struct Outcome {
        std::unique_ptr<VXFileSet> fileSet;
        VXClusterResultHolder result;
    };
    using View = std::pair<job::FileSetView, Clusters>;
    const allocation::FixedConsole console;
    const wave::TempFolder folder;
    const signals::Samples sound = signals::noise(7, 4800);
    // 10 frames apart, with 130 in common.
    const std::vector<std::string> paths = {
        folder.write("first.wav",
                     wave::file16(signals::as16Bit({sound.begin(), sound.end() - 320}))),
        folder.write("second.wav",
                     wave::file16(signals::as16Bit({sound.begin() + 320, sound.end()})))};
    const auto work = [&paths](Host& host) {
        Outcome outcome;
        outcome.fileSet.reset(host.extractor.runAll(paths));
        outcome.result.reset(host.sync.run(outcome.fileSet.get(), &host.progress));
        return outcome;
    };
    const auto view = [](Host&, Outcome& outcome) {
        return View(job::viewOf(*outcome.fileSet), clustersOf(outcome.result));
    };
    Host clean;
    Outcome cleanOutcome = work(clean);
    const View expected = view(clean, cleanOutcome);
    // 320 samples are 0.04 s.
    ASSERT_EQ((Clusters{{{1, 0.0f, "first"}, {2, 0.04f, "second"}}}), expected.second);
    // A recording that could not be loaded is missing, and the other one is alone.
    const auto lacksAFile = [&expected](const View& value) {
        if (value.first.size() == expected.first.size()) return false;
        if (!job::isPartOf(value.first, expected.first)) return false;
        Clusters alone;
        for (const auto& entry : value.first)
            alone.push_back({{entry.first, 0.0f, std::get<0>(entry.second)}});
        return value.second == alone;
    };

    const std::uint64_t allocations = allocation::sweep(
        expected, [] { return std::make_unique<Host>(); }, work, view, lacksAFile);

    EXPECT_LT(300u, allocations);
}
