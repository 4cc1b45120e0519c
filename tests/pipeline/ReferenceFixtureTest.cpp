#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Console.h"
#include "Signals.h"
#include "VXClusterSync.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXFileSetProcessor.h"
#include "VXHistogramSetProcessor.h"
#include "VXLandmarkExtract.h"
#include "VXMergeStatsSetProcessor.h"
#include "Wave.h"

// Two recordings of one made-up event, whose every number is known from an independent working of
// the method with a transform in double precision. What differs here differs for every host.

namespace
{

using VXS::VXClusterSyncParams;
using VXS::VXExtractParams;
using VXS::VXFile;
using VXS::VXFileSet;
using VXS::VXLandmarkExtract;

constexpr std::size_t recordingSamples = 480000;
// The second recording begins 160100 / 8000 = 20.0125 s after the first.
constexpr std::size_t shift = 160100;

// Rounds toward minus infinity.
std::int64_t floorDivide(std::int64_t dividend, std::int64_t divisor)
{
    const std::int64_t quotient = dividend / divisor;
    return dividend % divisor < 0 ? quotient - 1 : quotient;
}

// 90 s of noise whose loudness changes every tenth of a second.
std::vector<int> makeEvent()
{
    std::vector<int> event;
    std::uint32_t state = 12345;
    std::int64_t envelope = 0;
    for (int i = 0; i < 720000; ++i) {
        state = state * 1664525u + 1013904223u;
        if (i % 800 == 0) envelope = (state >> 20u) % 64u + 1;
        const auto value = static_cast<std::int64_t>(state >> 16u) - 32768;
        event.push_back(static_cast<int>(floorDivide(value * envelope, 128)));
    }
    return event;
}

class ReferenceFixture : public testing::Test
{
protected:
    ReferenceFixture()
    {
        const std::vector<int> event = makeEvent();
        const auto start = event.begin();
        const auto length = static_cast<std::ptrdiff_t>(recordingSamples);
        const auto begin = static_cast<std::ptrdiff_t>(shift);
        pathA = folder.write("a.wav", wave::file16({start, start + length}));
        pathB = folder.write("b.wav", wave::file16({start + begin, start + begin + length}));
    }

    std::unique_ptr<VXFileSet> runAll() const
    {
        VXLandmarkExtract extractor(params);
        const Console console;
        return std::unique_ptr<VXFileSet>(extractor.runAll({pathA, pathB}));
    }

    VXExtractParams params;
    wave::TempFolder folder;
    std::string pathA;
    std::string pathB;
};

std::size_t countPeaks(const VXLandmarkExtract& extractor)
{
    std::size_t count = 0;
    for (const auto* list : *extractor.frames)
        count += list->size();
    return count;
}

} // namespace

TEST_F(ReferenceFixture, FirstRecordingGivesItsPeaksAndLandmarks)
{
    VXLandmarkExtract extractor(params);

    const std::unique_ptr<VXFile> file(extractor.run(pathA, 1));
    const std::vector<signals::LandmarkRow> landmarks = signals::landmarksOf(*file);

    EXPECT_EQ(1876u, extractor.frames->size());
    EXPECT_EQ(2440u, countPeaks(extractor));
    EXPECT_EQ(26794u, landmarks.size());
    EXPECT_EQ(7, landmarks.front().first);
    EXPECT_EQ(7, file->getMinLandmarkOffsetTime());
    EXPECT_EQ(1874, landmarks.back().first);
    EXPECT_EQ(1874, file->getMaxLandmarkOffsetTime());
    EXPECT_EQ(0x0003f82fu, landmarks.at(0).second);
    EXPECT_EQ(0x0013f81bu, landmarks.at(1).second);
    EXPECT_EQ(0x0023f8c0u, landmarks.at(2).second);
}

TEST_F(ReferenceFixture, SecondRecordingGivesItsPeaksAndLandmarks)
{
    VXLandmarkExtract extractor(params);

    const std::unique_ptr<VXFile> file(extractor.run(pathB, 2));

    EXPECT_EQ(1876u, extractor.frames->size());
    EXPECT_EQ(2520u, countPeaks(extractor));
    EXPECT_EQ(27668u, signals::landmarksOf(*file).size());
    EXPECT_EQ(6, file->getMinLandmarkOffsetTime());
    EXPECT_EQ(1867, file->getMaxLandmarkOffsetTime());
}

TEST_F(ReferenceFixture, PairIsMeasuredAndAccepted)
{
    const VXClusterSyncParams syncParams(params);
    const std::unique_ptr<VXFileSet> fileSet = runAll();
    VXS::VXFileSetProcessor fileSetProcessor(syncParams.getMaxLandmarkCount());
    VXS::VXHistogramSetProcessor histogramSetProcessor;
    VXS::VXMergeStatsSetProcessor mergeStatsSetProcessor(syncParams);

    fileSet->computeAllCLFs();
    const VXS::VXHistogramSetHolder histograms(fileSetProcessor.run(fileSet.get(), nullptr));
    const VXS::VXMergeStatsSetHolder stats(
        histogramSetProcessor.run(fileSet.get(), histograms.get()));
    const VXS::VXClusterResultHolder result(mergeStatsSetProcessor.run(fileSet.get(), stats.get()));

    ASSERT_EQ(1u, histograms->size());
    const VXS::VXHistogram& histogram = *histograms->begin()->second;
    std::size_t votes = 0;
    for (const auto& bin : histogram)
        votes += bin.votes;
    EXPECT_EQ(1113u, histogram.size());
    EXPECT_EQ(3446u, votes);
    ASSERT_EQ(1u, stats->size());
    const VXS::VXMergeStats& record = *stats->begin()->second;
    EXPECT_EQ(1, record.fileA);
    EXPECT_EQ(2, record.fileB);
    EXPECT_EQ(1126.0f, record.peakCount);
    EXPECT_EQ(1243.0f, record.overlapLength);
    EXPECT_EQ(18104.0f, record.landmarksInOverlapA);
    EXPECT_EQ(18194.0f, record.landmarksInOverlapB);
    EXPECT_EQ(1241.0f, record.templateMatchLength);
    EXPECT_EQ(0x1.62db8cp+1f, record.meanCount);
    EXPECT_EQ(0x1.11676cp+5f, record.stdDevCount);
    EXPECT_EQ(625.0f, record.bestOffset);
    EXPECT_TRUE(record.merged);
}

// 625 frames / 31.25 frames a second, which is the true shift to the nearest frame.
TEST_F(ReferenceFixture, SecondRecordingBeginsAtExactlyTwentySeconds)
{
    const std::unique_ptr<VXFileSet> fileSet = runAll();
    VXS::VXClusterSync sync{VXClusterSyncParams(params)};

    const VXS::VXClusterResultHolder result(sync.run(fileSet.get(), nullptr));

    ASSERT_EQ(1u, result->size());
    const VXS::VXClusterMembers& members = **result->begin();
    ASSERT_EQ(2u, members.size());
    const VXS::VXClusterMember& first = **members.begin();
    const VXS::VXClusterMember& second = **members.rbegin();
    EXPECT_EQ("a", first.name);
    EXPECT_EQ(1, first.fileID);
    EXPECT_EQ(0.0f, first.offsetSeconds);
    EXPECT_EQ("b", second.name);
    EXPECT_EQ(2, second.fileID);
    EXPECT_EQ(20.0f, second.offsetSeconds);
}
