#include "Job.h"

#include <map>
#include <string>

#include <gmock/gmock.h>

#include "Bins.h"
#include "Bits.h"
#include "VXFile.h"
#include "VXFileSetProcessor.h"
#include "VXHistogram.h"
#include "VXHistogramSetProcessor.h"
#include "VXLandmark.h"
#include "VXMergeStats.h"
#include "plain/Evaluation.h"

namespace property
{

VXS::VXHistogram histogramOf(Job& job, const plain::Histogram& histogram)
{
    std::map<const plain::Landmark*, VXS::VXLandmark*> landmarks;
    for (const auto& [id, recording] : job.recordings) {
        if (recording == nullptr) continue;
        for (const auto& [frame, list] : recording->landmarks) {
            const auto& own = job.fileSet.getFiles().at(id)->getLandmarkMap().at(frame);
            for (std::size_t i = 0; i < list.size(); ++i)
                landmarks[&list[i]] = own.at(i);
        }
    }
    VXS::VXHistogram made;
    for (const auto& [offset, list] : histogram) {
        made.append(offset, list.size());
        made.keepEnds(offset, {landmarks.at(least(list)), landmarks.at(greatest(list))});
    }
    return made;
}

namespace
{

void compareFiles(Job& job)
{
    ASSERT_EQ(job.fileSet.getFiles().size(), job.recordings.size());
    for (const auto& [id, recording] : job.recordings) {
        SCOPED_TRACE("file " + std::to_string(id));
        VXS::VXFile* file = job.fileSet.getFiles().at(id);
        ASSERT_EQ(file == nullptr, recording == nullptr);
        if (recording == nullptr) continue;
        ASSERT_EQ(file->getMinLandmarkOffsetTime(), recording->first);
        ASSERT_EQ(file->getMaxLandmarkOffsetTime(), recording->last);
        ASSERT_EQ(file->clfDirty, recording->stale);
        ASSERT_THAT(file->clf, testing::ElementsAreArray(recording->counts));
        auto entry = file->getLandmarkMap().begin();
        ASSERT_EQ(file->getLandmarkMap().size(), recording->landmarks.size());
        for (const auto& [frame, list] : recording->landmarks) {
            ASSERT_EQ(entry->first, frame);
            ASSERT_EQ(entry->second.size(), list.size()) << "frame " << frame;
            ++entry;
        }
    }
}

void compareHistograms(Job& job, const VXS::VXHistogramSet& library,
                       const plain::HistogramSet& twin)
{
    auto twins = job.twins();
    ASSERT_EQ(library.size(), twin.size());
    auto entry = library.begin();
    for (const auto& [pair, histogram] : twin) {
        SCOPED_TRACE("pair " + std::to_string(pair.first) + ", " + std::to_string(pair.second));
        ASSERT_EQ(entry->first, pair);
        ASSERT_NE(entry->second, nullptr);
        ASSERT_EQ(entry->second->size(), histogram.size());
        auto bin = entry->second->begin();
        for (const auto& [offset, list] : histogram) {
            SCOPED_TRACE("offset " + std::to_string(offset));
            ASSERT_EQ(bin->offset, offset);
            ASSERT_EQ(bin->votes, votes(list));
            ASSERT_NE(entry->second->find(offset), entry->second->end());
            ++bin;
        }
        const std::int64_t best = plain::bestBin(histogram).offset;
        const VXS::VXHistogram::Ends ends = entry->second->endsOf(best);
        ASSERT_EQ(twins[ends.least], least(histogram.at(best)));
        ASSERT_EQ(twins[ends.greatest], greatest(histogram.at(best)));
        ++entry;
    }
}

void compareRecords(const VXS::VXMergeStatsSet& library, const VXS::VXHistogramSet& histograms,
                    const std::map<plain::Pair, plain::Statistics>& twin)
{
    ASSERT_EQ(library.size(), twin.size());
    auto entry = library.begin();
    for (const auto& [pair, expected] : twin) {
        SCOPED_TRACE("pair " + std::to_string(pair.first) + ", " + std::to_string(pair.second));
        ASSERT_EQ(entry->first, pair);
        const VXS::VXMergeStats& record = *entry->second;
        EXPECT_EQ(record.fileA, expected.fileA);
        EXPECT_EQ(record.fileB, expected.fileB);
        EXPECT_TRUE(sameFloat(record.peakCount, expected.peakCount)) << "peakCount";
        EXPECT_TRUE(sameFloat(record.overlapLength, expected.overlapLength)) << "overlapLength";
        EXPECT_TRUE(sameFloat(record.percentMatchA, expected.percentMatchA)) << "percentMatchA";
        EXPECT_TRUE(sameFloat(record.percentMatchB, expected.percentMatchB)) << "percentMatchB";
        EXPECT_TRUE(sameFloat(record.landmarksInOverlapA, expected.landmarksInOverlapA))
            << "landmarksInOverlapA";
        EXPECT_TRUE(sameFloat(record.landmarksInOverlapB, expected.landmarksInOverlapB))
            << "landmarksInOverlapB";
        EXPECT_TRUE(sameFloat(record.templateMatchLength, expected.templateMatchLength))
            << "templateMatchLength";
        EXPECT_TRUE(sameFloat(record.meanCount, expected.meanCount)) << "meanCount";
        EXPECT_TRUE(sameFloat(record.stdDevCount, expected.stdDevCount)) << "stdDevCount";
        EXPECT_TRUE(sameFloat(record.bestOffset, expected.bestOffset)) << "bestOffset";
        EXPECT_FALSE(record.merged);
        EXPECT_EQ(record.histogram, histograms.at(pair));
        ASSERT_FALSE(testing::Test::HasFailure());
        ++entry;
    }
}

} // namespace

void compareJob(Job& job, std::uint32_t maxLandmarkCount)
{
    SCOPED_TRACE(std::to_string(job.recordings.size()) + " files, cap " +
                 std::to_string(maxLandmarkCount));
    std::vector<float> expectedFractions;
    const plain::HistogramSet expected =
        plain::histograms(job.recordings, maxLandmarkCount, expectedFractions);
    Fractions fractions;
    VXS::VXFileSetProcessor processor(maxLandmarkCount);
    const VXS::VXHistogramSetHolder histograms(processor.run(&job.fileSet, &fractions));
    ASSERT_NE(histograms, nullptr);
    ASSERT_TRUE(sameFloats(fractions.values, expectedFractions)) << "fractions";
    compareHistograms(job, *histograms, expected);
    if (testing::Test::HasFatalFailure()) return;

    const auto expectedRecords = plain::evaluate(job.recordings, expected);
    const VXS::VXMergeStatsSetHolder records(
        VXS::VXHistogramSetProcessor().run(&job.fileSet, histograms.get()));
    ASSERT_NE(records, nullptr);
    compareRecords(*records, *histograms, expectedRecords);
    if (testing::Test::HasFatalFailure()) return;
    compareFiles(job);
}

} // namespace property
