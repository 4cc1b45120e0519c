#include "VXMergeStatsSetProcessor.h"

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Landmarks.h"
#include "VXClusterInternal.h"
#include "VXClusterSyncParams.h"
#include "VXExtractParams.h"
#include "VXFileSet.h"

namespace VXS
{
namespace
{

using support::Cluster;
using support::Member;

using Pair = std::pair<std::int64_t, std::int64_t>;
using Clusters = std::vector<Cluster>;

constexpr float infinity = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr float framesPerSecond = 31.25f;
// 3 s * 31.25 frames per second
constexpr float limitInFrames = 93.75f;

float justBelow(float value)
{
    return std::nextafterf(value, -infinity);
}

VXMergeStatsSetProcessor defaultProcessor()
{
    return VXMergeStatsSetProcessor(VXClusterSyncParams(VXExtractParams()));
}

// A record that passes every test by far.
VXMergeStats goodRecord(std::int64_t fileA = 1, std::int64_t fileB = 2)
{
    VXMergeStats record(nullptr);
    record.fileA = fileA;
    record.fileB = fileB;
    record.peakCount = 50.0f;
    record.bestOffset = 100.0f;
    record.templateMatchLength = 200.0f;
    record.overlapLength = 400.0f;
    record.percentMatchA = 0.5f;
    record.percentMatchB = 0.5f;
    record.meanCount = 0.0f;
    record.stdDevCount = 0.5f;
    return record;
}

// Files without landmarks and the records of their pairs.
class Job
{
public:
    explicit Job(const std::vector<std::int64_t>& fileIDs) : stats(new VXMergeStatsSet())
    {
        support::addEmptyFiles(fileSet, fileIDs);
    }

    VXMergeStats& add(const VXMergeStats& record)
    {
        VXMergeStats*& entry = (*stats)[Pair(record.fileA, record.fileB)];
        entry = new VXMergeStats(record);
        return *entry;
    }

    // A pair that is accepted, with the offset of the second file after the first in frames.
    void link(std::int64_t fileA, std::int64_t fileB, float peak, float offset)
    {
        VXMergeStats& record = add(goodRecord(fileA, fileB));
        record.peakCount = peak;
        record.bestOffset = offset;
        record.stdDevCount = 0.4f;
    }

    Clusters run(VXMergeStatsSetProcessor processor = defaultProcessor())
    {
        return support::resultOf(processor.run(&fileSet, stats.get()));
    }

    std::vector<Pair> pairs() const
    {
        std::vector<Pair> keys;
        for (const auto& entry : *stats)
            keys.push_back(entry.first);
        return keys;
    }

    VXFileSet fileSet;
    VXMergeStatsSetHolder stats;
};

bool isMerged(const VXMergeStats& record,
              const VXMergeStatsSetProcessor& processor = defaultProcessor())
{
    Job job({1, 2});
    const VXMergeStats& entry = job.add(record);
    const Clusters clusters = job.run(processor);
    // The verdict and the clusters tell the same.
    EXPECT_EQ(clusters.size(), entry.merged ? 1u : 2u);
    return entry.merged;
}

Member member(std::int64_t fileID, float offsetInFrames)
{
    return {fileID, offsetInFrames / framesPerSecond, "TODO"};
}

TEST(VXMergeStatsSetProcessor, CopiesSixValuesOfTheParameters)
{
    const VXMergeStatsSetProcessor processor = defaultProcessor();

    EXPECT_EQ(processor.minLandmarksPerEstimate, 5u);
    EXPECT_EQ(processor.audioFramesPerSecond, 31.25f);
    EXPECT_EQ(processor.minTemplateMatchLengthInSeconds, 3.0f);
    EXPECT_EQ(processor.minOverlapLengthInSeconds, 3.0f);
    EXPECT_EQ(processor.minPercentMatch, 0.0025f);
    EXPECT_EQ(processor.hopSize, 256u);
}

TEST(VXMergeStatsSetProcessor, CopiesAnotherTimeBase)
{
    VXExtractParams extractParams;
    extractParams.setSampleRate(44100);
    extractParams.setHopSize(441);

    const VXMergeStatsSetProcessor processor{VXClusterSyncParams(extractParams)};

    EXPECT_EQ(processor.audioFramesPerSecond, 100.0f);
    EXPECT_EQ(processor.hopSize, 441u);
}

TEST(VXMergeStatsSetProcessor, NullFileSetGivesNull)
{
    VXMergeStatsSet stats;

    EXPECT_EQ(defaultProcessor().run(nullptr, &stats), nullptr);
}

TEST(VXMergeStatsSetProcessor, NullStatsGiveNull)
{
    VXFileSet fileSet;

    EXPECT_EQ(defaultProcessor().run(&fileSet, nullptr), nullptr);
}

TEST(VXMergeStatsSetProcessor, EmptySetsGiveAResultWithoutClusters)
{
    Job job({});

    EXPECT_EQ(job.run(), Clusters{});
}

TEST(VXMergeStatsSetProcessor, GoodRecordIsAccepted)
{
    EXPECT_TRUE(isMerged(goodRecord()));
}

TEST(VXMergeStatsSetProcessor, TemplateMatchLengthOnItsLimitPasses)
{
    VXMergeStats record = goodRecord();
    record.templateMatchLength = limitInFrames;

    EXPECT_TRUE(isMerged(record));
}

TEST(VXMergeStatsSetProcessor, TemplateMatchLengthBelowItsLimitIsRefused)
{
    VXMergeStats record = goodRecord();
    record.templateMatchLength = justBelow(limitInFrames);

    EXPECT_FALSE(isMerged(record));
}

TEST(VXMergeStatsSetProcessor, PeakOfTheFewestVotesPasses)
{
    VXMergeStats record = goodRecord();
    record.peakCount = 5.0f;

    EXPECT_TRUE(isMerged(record));
}

TEST(VXMergeStatsSetProcessor, PeakBelowTheFewestVotesIsRefused)
{
    VXMergeStats record = goodRecord();
    record.stdDevCount = 0.1f;
    record.peakCount = justBelow(5.0f);

    EXPECT_FALSE(isMerged(record));
}

TEST(VXMergeStatsSetProcessor, MatchAsLongAsTheOverlapPasses)
{
    VXMergeStats record = goodRecord();
    record.templateMatchLength = 400.0f;
    record.overlapLength = 400.0f;

    EXPECT_TRUE(isMerged(record));
}

TEST(VXMergeStatsSetProcessor, MatchLongerThanTheOverlapIsRefused)
{
    VXMergeStats record = goodRecord();
    record.templateMatchLength = 400.0f;
    record.overlapLength = justBelow(400.0f);

    EXPECT_FALSE(isMerged(record));
}

TEST(VXMergeStatsSetProcessor, OverlapOfZeroIsNotNegative)
{
    VXMergeStatsSetProcessor processor = defaultProcessor();
    processor.minTemplateMatchLengthInSeconds = 0.0f;
    processor.minOverlapLengthInSeconds = 0.0f;
    VXMergeStats record = goodRecord();
    record.templateMatchLength = 0.0f;
    record.overlapLength = 0.0f;

    EXPECT_TRUE(isMerged(record, processor));
    record.overlapLength = -0.0f;
    EXPECT_TRUE(isMerged(record, processor));
}

TEST(VXMergeStatsSetProcessor, NegativeOverlapIsRefusedWhateverTheLimits)
{
    VXMergeStatsSetProcessor processor = defaultProcessor();
    processor.minTemplateMatchLengthInSeconds = -10.0f;
    processor.minOverlapLengthInSeconds = -10.0f;
    VXMergeStats record = goodRecord();
    record.templateMatchLength = -1.0f;

    record.overlapLength = justBelow(0.0f);
    EXPECT_FALSE(isMerged(record, processor));
    record.overlapLength = 0.0f;
    EXPECT_TRUE(isMerged(record, processor));
}

TEST(VXMergeStatsSetProcessor, OverlapOfZeroIsTooShort)
{
    VXMergeStatsSetProcessor processor = defaultProcessor();
    processor.minTemplateMatchLengthInSeconds = 0.0f;
    VXMergeStats record = goodRecord();
    record.templateMatchLength = 0.0f;
    record.overlapLength = 0.0f;

    EXPECT_FALSE(isMerged(record, processor));
}

TEST(VXMergeStatsSetProcessor, OverlapOnItsLimitPasses)
{
    VXMergeStats record = goodRecord();
    record.templateMatchLength = limitInFrames;
    record.overlapLength = limitInFrames;

    EXPECT_TRUE(isMerged(record));
}

TEST(VXMergeStatsSetProcessor, OverlapBelowItsLimitIsRefused)
{
    VXMergeStatsSetProcessor processor = defaultProcessor();
    processor.minTemplateMatchLengthInSeconds = 0.0f;
    VXMergeStats record = goodRecord();
    record.templateMatchLength = 10.0f;

    record.overlapLength = limitInFrames;
    EXPECT_TRUE(isMerged(record, processor));
    record.overlapLength = justBelow(limitInFrames);
    EXPECT_FALSE(isMerged(record, processor));
}

TEST(VXMergeStatsSetProcessor, LimitsInSecondsFollowTheFramesPerSecond)
{
    VXExtractParams extractParams;
    extractParams.setSampleRate(44100);
    extractParams.setHopSize(441);
    const VXMergeStatsSetProcessor processor{VXClusterSyncParams(extractParams)};
    VXMergeStats record = goodRecord();

    // 3 s * 100 frames per second
    record.templateMatchLength = 300.0f;
    EXPECT_TRUE(isMerged(record, processor));
    record.templateMatchLength = justBelow(300.0f);
    EXPECT_FALSE(isMerged(record, processor));
}

TEST(VXMergeStatsSetProcessor, PercentageOnItsLimitPasses)
{
    VXMergeStats record = goodRecord();
    record.percentMatchA = 0.0025f;
    record.percentMatchB = 0.0025f;

    EXPECT_TRUE(isMerged(record));
}

TEST(VXMergeStatsSetProcessor, BothPercentagesBelowTheLimitAreRefused)
{
    VXMergeStats record = goodRecord();
    record.percentMatchA = justBelow(0.0025f);
    record.percentMatchB = justBelow(0.0025f);

    EXPECT_FALSE(isMerged(record));
}

TEST(VXMergeStatsSetProcessor, OneGoodPercentageIsEnough)
{
    VXMergeStats record = goodRecord();

    record.percentMatchA = 0.0f;
    record.percentMatchB = 0.0025f;
    EXPECT_TRUE(isMerged(record));
    record.percentMatchA = 0.0025f;
    record.percentMatchB = 0.0f;
    EXPECT_TRUE(isMerged(record));
}

TEST(VXMergeStatsSetProcessor, InfinitePercentagePasses)
{
    VXMergeStats record = goodRecord();
    record.percentMatchA = infinity;
    record.percentMatchB = 0.0f;

    EXPECT_TRUE(isMerged(record));
}

TEST(VXMergeStatsSetProcessor, FirstPercentageStandsWhereTheTwoCannotBeCompared)
{
    VXMergeStats record = goodRecord();

    // The second is taken only if it is greater, which no comparison with not-a-number is.
    record.percentMatchA = notANumber;
    record.percentMatchB = 0.0f;
    EXPECT_TRUE(isMerged(record));
    record.percentMatchA = 0.0f;
    record.percentMatchB = notANumber;
    EXPECT_FALSE(isMerged(record));
}

TEST(VXMergeStatsSetProcessor, PeakTenDeviationsAboveTheMeanPasses)
{
    VXMergeStats record = goodRecord();
    record.meanCount = 2.0f;
    record.stdDevCount = 1.0f;
    record.peakCount = 12.0f;

    EXPECT_TRUE(isMerged(record));
}

TEST(VXMergeStatsSetProcessor, PeakLessThanTenDeviationsAboveTheMeanIsRefused)
{
    VXMergeStats record = goodRecord();
    record.meanCount = 2.0f;
    record.stdDevCount = 1.0f;
    record.peakCount = justBelow(12.0f);

    EXPECT_FALSE(isMerged(record));
}

TEST(VXMergeStatsSetProcessor, LimitOfThePeakIsRoundedAfterTheProductAndAfterTheSum)
{
    VXMergeStatsSetProcessor processor = defaultProcessor();
    processor.minLandmarksPerEstimate = 0;
    VXMergeStats record = goodRecord();
    // 0.1f is 0.1 + 1.49e-9, so that ten of it, rounded, are 1. With the mean of 2^-24 the sum lies
    // half way to the next float and goes back to 1. Without the first rounding it would be above
    // half way and end at 1 + 2^-23.
    record.stdDevCount = 0.1f;
    record.meanCount = 5.9604644775390625e-8f;

    record.peakCount = 1.0f;
    EXPECT_TRUE(isMerged(record, processor));
    record.peakCount = justBelow(1.0f);
    EXPECT_FALSE(isMerged(record, processor));
}

TEST(VXMergeStatsSetProcessor, ThreeVotesNeverStandOutFromTheLeastDeviation)
{
    VXMergeStatsSetProcessor processor = defaultProcessor();
    processor.minLandmarksPerEstimate = 0;
    VXMergeStats record = goodRecord();
    record.stdDevCount = std::sqrt(0.1f);

    // Ten times 0.3162 are 3.162 votes.
    record.peakCount = 3.0f;
    EXPECT_FALSE(isMerged(record, processor));
    record.peakCount = 4.0f;
    EXPECT_TRUE(isMerged(record, processor));
}

TEST(VXMergeStatsSetProcessor, InfiniteMeanIsRefused)
{
    VXMergeStats record = goodRecord();
    record.meanCount = infinity;

    EXPECT_FALSE(isMerged(record));
}

TEST(VXMergeStatsSetProcessor, NotANumberInAnyFieldRefusesNothing)
{
    for (float VXMergeStats::*field :
         {&VXMergeStats::templateMatchLength, &VXMergeStats::overlapLength,
          &VXMergeStats::percentMatchA, &VXMergeStats::meanCount, &VXMergeStats::stdDevCount}) {
        VXMergeStats record = goodRecord();
        record.*field = notANumber;

        EXPECT_TRUE(isMerged(record));
    }
}

TEST(VXMergeStatsSetProcessor, PeakThatIsNotANumberIsAcceptedAndLinksNothing)
{
    Job job({1, 2});
    VXMergeStats& record = job.add(goodRecord());
    record.peakCount = notANumber;

    // No peak can be the strongest, so each file stays at the zero of its own.
    EXPECT_EQ(job.run(), (Clusters{{member(1, 0.0f), member(2, 0.0f)}}));
    EXPECT_TRUE(record.merged);
}

TEST(VXMergeStatsSetProcessor, RecordOfAnEmptyHistogramIsRefused)
{
    VXMergeStats record(nullptr);
    record.fileA = 1;
    record.fileB = 2;
    record.overlapLength = 400.0f;
    record.percentMatchA = 0.0f;
    record.percentMatchB = 0.0f;
    record.meanCount = 0.0f;
    record.stdDevCount = std::sqrt(0.1f);

    EXPECT_FALSE(isMerged(record));
}

TEST(VXMergeStatsSetProcessor, NullRecordsArePassedOver)
{
    Job job({1, 2, 3});
    (*job.stats)[Pair(1, 2)] = nullptr;
    job.link(2, 3, 50.0f, 0.0f);

    EXPECT_EQ(job.run(), (Clusters{{member(1, 0.0f)}, {member(2, 0.0f), member(3, 0.0f)}}));
}

TEST(VXMergeStatsSetProcessor, RunChangesOneFieldOfARecord)
{
    Job job({1, 2});
    const VXMergeStats before = goodRecord();
    const VXMergeStats& record = job.add(before);

    job.run();

    EXPECT_TRUE(record.merged);
    EXPECT_EQ(record.fileA, before.fileA);
    EXPECT_EQ(record.fileB, before.fileB);
    EXPECT_EQ(record.peakCount, before.peakCount);
    EXPECT_EQ(record.bestOffset, before.bestOffset);
    EXPECT_EQ(record.templateMatchLength, before.templateMatchLength);
    EXPECT_EQ(record.overlapLength, before.overlapLength);
}

TEST(VXMergeStatsSetProcessor, FileWithoutALinkIsAClusterOfItsOwn)
{
    Job job({7});

    EXPECT_EQ(job.run(), (Clusters{{member(7, 0.0f)}}));
    EXPECT_TRUE(job.stats->empty());
}

TEST(VXMergeStatsSetProcessor, EveryFileIsInOneCluster)
{
    Job job({1, 2, 3, 4, 5});
    job.link(1, 4, 50.0f, 10.0f);
    job.link(2, 5, 50.0f, 20.0f);

    EXPECT_EQ(job.run(), (Clusters{{member(1, 0.0f), member(4, 10.0f)},
                                   {member(2, 0.0f), member(5, 20.0f)},
                                   {member(3, 0.0f)}}));
}

TEST(VXMergeStatsSetProcessor, SecondFileBeginsLaterByAPositiveOffset)
{
    Job job({1, 2});
    job.link(1, 2, 50.0f, 100.0f);

    const Clusters clusters = job.run();

    // 100 / 31.25 = 3.2 s
    EXPECT_EQ(clusters, (Clusters{{{1, 0.0f, "TODO"}, {2, 3.2f, "TODO"}}}));
}

TEST(VXMergeStatsSetProcessor, FirstFileBeginsLaterByANegativeOffset)
{
    Job job({1, 2});
    job.link(1, 2, 50.0f, -100.0f);

    const Clusters clusters = job.run();

    EXPECT_EQ(clusters, (Clusters{{{1, 3.2f, "TODO"}, {2, 0.0f, "TODO"}}}));
}

TEST(VXMergeStatsSetProcessor, SecondsAreFramesDividedInSinglePrecision)
{
    VXExtractParams extractParams;
    extractParams.setHopSize(300);
    Job job({1, 2});
    job.link(1, 2, 50.0f, 100.0f);

    const Clusters clusters = job.run(VXMergeStatsSetProcessor(VXClusterSyncParams(extractParams)));

    EXPECT_EQ(clusters.at(0).at(1).offsetSeconds, 100.0f / (8000.0f / 300.0f));
}

TEST(VXMergeStatsSetProcessor, StrongerPathReplacesADirectLink)
{
    Job job({1, 2, 3});
    job.link(1, 2, 100.0f, 100.0f);
    job.link(1, 3, 50.0f, 250.0f);
    job.link(2, 3, 80.0f, 140.0f);

    // (1, 2) comes first. (2, 3) becomes 140 + 100 = 240 against file 1, and 80 votes beat 50.
    // 240 / 31.25 = 7.68 s
    EXPECT_EQ(job.run(), (Clusters{{{1, 0.0f, "TODO"}, {2, 3.2f, "TODO"}, {3, 7.68f, "TODO"}}}));
}

TEST(VXMergeStatsSetProcessor, WeakerPathLeavesADirectLink)
{
    Job job({1, 2, 3});
    job.link(1, 2, 100.0f, 100.0f);
    job.link(1, 3, 80.0f, 250.0f);
    job.link(2, 3, 50.0f, 140.0f);

    EXPECT_EQ(job.run(), (Clusters{{member(1, 0.0f), member(2, 100.0f), member(3, 250.0f)}}));
}

TEST(VXMergeStatsSetProcessor, LinkOfTheSurvivorStaysAtEqualPeaks)
{
    Job job({1, 2, 3});
    job.link(1, 2, 40.0f, -100.0f);
    job.link(1, 3, 40.0f, -60.0f);
    job.link(2, 3, 90.0f, 30.0f);

    // (2, 3) comes first. (1, 3) becomes -60 - 30 = -90 against file 2, and 40 votes do not beat
    // 40: file 2 stands at -100 and file 3 at -100 + 30 = -70, then all rise by 100.
    EXPECT_EQ(job.run(), (Clusters{{member(1, 100.0f), member(2, 0.0f), member(3, 30.0f)}}));
}

TEST(VXMergeStatsSetProcessor, OffsetIsNegatedWhereALinkChangesItsDirection)
{
    Job job({1, 2, 5});
    job.link(1, 5, 70.0f, -50.0f);
    job.link(2, 5, 60.0f, 300.0f);

    // (1, 5) comes first. (2, 5) becomes 300 + 50 = 350, the position of 1 minus that of 2, and
    // stands under (1, 2) as -350: file 1 at 0, 2 at -350, 5 at -50, then all rise by 350.
    EXPECT_EQ(job.run(), (Clusters{{member(1, 350.0f), member(2, 0.0f), member(5, 300.0f)}}));
}

TEST(VXMergeStatsSetProcessor, OffsetIsNegatedWhereTheAbsorbedFileStoodFirst)
{
    Job job({1, 2, 3});
    job.link(1, 3, 90.0f, 10.0f);
    job.link(2, 3, 50.0f, 25.0f);

    // (1, 3) comes first. (2, 3) becomes 25 - 10 = 15 and stands under (1, 2) as -15: file 1 at 0,
    // 2 at -15, 3 at 10, then all rise by 15.
    EXPECT_EQ(job.run(), (Clusters{{member(1, 15.0f), member(2, 0.0f), member(3, 25.0f)}}));
}

TEST(VXMergeStatsSetProcessor, LastLinkInKeyOrderComesFirstAtEqualPeaks)
{
    Job job({1, 2, 3});
    job.link(1, 2, 40.0f, 100.0f);
    job.link(1, 3, 40.0f, 250.0f);
    job.link(2, 3, 40.0f, 140.0f);

    // (2, 3) comes first, so file 3 is at 100 + 140. If (1, 2) came first, (1, 3) would stay
    // against the equally strong path and leave file 3 at 250.
    EXPECT_EQ(job.run(), (Clusters{{member(1, 0.0f), member(2, 100.0f), member(3, 240.0f)}}));
}

TEST(VXMergeStatsSetProcessor, SelectionOfEqualPeaksTakesTheHighestFirstId)
{
    VXMergeStatsSetProcessor::Links links;
    links.set(Pair(1, 2), 40.0f, 0.0f);
    links.set(Pair(3, 4), 40.0f, 0.0f);
    Pair selected;

    ASSERT_TRUE(links.select(selected));

    EXPECT_EQ(selected, Pair(3, 4));
}

TEST(VXMergeStatsSetProcessor, SelectionOfEqualPeaksAndFirstIdsTakesTheHighestSecondId)
{
    VXMergeStatsSetProcessor::Links links;
    links.set(Pair(1, 2), 40.0f, 0.0f);
    links.set(Pair(1, 3), 40.0f, 0.0f);
    Pair selected;

    ASSERT_TRUE(links.select(selected));

    EXPECT_EQ(selected, Pair(1, 3));
}

TEST(VXMergeStatsSetProcessor, SelectionTakesTheHighestPeakWhereverItStands)
{
    VXMergeStatsSetProcessor::Links links;
    links.set(Pair(1, 2), 40.0f, 0.0f);
    links.set(Pair(1, 3), 40.5f, 0.0f);
    links.set(Pair(2, 3), 39.0f, 0.0f);
    Pair selected;

    ASSERT_TRUE(links.select(selected));

    EXPECT_EQ(selected, Pair(1, 3));
}

TEST(VXMergeStatsSetProcessor, SelectionTakesAPeakOfZero)
{
    VXMergeStatsSetProcessor::Links links;
    links.set(Pair(1, 2), 0.0f, 0.0f);
    Pair selected;

    ASSERT_TRUE(links.select(selected));

    EXPECT_EQ(selected, Pair(1, 2));
}

TEST(VXMergeStatsSetProcessor, ApplyingALinkGivesTheLinksOfTheSecondFileToTheFirst)
{
    VXMergeStatsSetProcessor::Links links;
    links.set(Pair(1, 5), 70.0f, -50.0f);
    links.set(Pair(2, 5), 60.0f, 300.0f);
    links.set(Pair(5, 7), 8.0f, 20.0f);
    VXClusterInternal cluster;
    cluster.init({1, 2, 5, 7});

    links.apply(Pair(1, 5), cluster);

    // (2, 5): 300 + 50, turned to -350. (5, 7): 20 - 50 = -30.
    ASSERT_EQ(links.links.size(), 2u);
    EXPECT_EQ(links.links.at(Pair(1, 2)).peak, 60.0f);
    EXPECT_EQ(links.links.at(Pair(1, 2)).offset, -350.0f);
    EXPECT_EQ(links.links.at(Pair(1, 7)).peak, 8.0f);
    EXPECT_EQ(links.links.at(Pair(1, 7)).offset, -30.0f);
}

TEST(VXMergeStatsSetProcessor, ConsistentLinksGiveThePositionsWhateverTheirOrder)
{
    const std::vector<std::pair<std::int64_t, float>> positions{
        {1, 300.0f}, {2, 0.0f}, {3, 120.0f}, {4, 640.0f}, {5, 20.0f}, {6, 415.0f}};
    Job job({1, 2, 3, 4, 5, 6});
    std::int32_t links = 0;
    for (std::size_t i = 0; i < positions.size(); ++i) {
        for (std::size_t j = i + 1; j < positions.size(); ++j) {
            // Fifteen peaks from 20 to 34, in an order of their own: 7 and 15 share no divisor.
            const auto peak = static_cast<float>(20 + links * 7 % 15);
            job.link(positions[i].first, positions[j].first, peak,
                     positions[j].second - positions[i].second);
            ++links;
        }
    }

    EXPECT_EQ(job.run(), (Clusters{{member(1, 300.0f), member(2, 0.0f), member(3, 120.0f),
                                    member(4, 640.0f), member(5, 20.0f), member(6, 415.0f)}}));
}

TEST(VXMergeStatsSetProcessor, ChainOfLinksAddsUp)
{
    Job job({1, 2, 3, 4});
    job.link(1, 2, 20.0f, 10.0f);
    job.link(2, 3, 30.0f, 20.0f);
    job.link(3, 4, 25.0f, -5.0f);

    // 0, 10, 10 + 20, 10 + 20 - 5
    EXPECT_EQ(job.run(),
              (Clusters{{member(1, 0.0f), member(2, 10.0f), member(3, 30.0f), member(4, 25.0f)}}));
}

TEST(VXMergeStatsSetProcessor, ChainGetsANullEntryForItsMissingPair)
{
    Job job({1, 2, 3});
    job.link(1, 2, 50.0f, 10.0f);
    job.link(2, 3, 50.0f, 20.0f);

    const Clusters clusters = job.run();

    EXPECT_EQ(clusters, (Clusters{{member(1, 0.0f), member(2, 10.0f), member(3, 30.0f)}}));
    EXPECT_EQ(job.pairs(), (std::vector<Pair>{{1, 2}, {1, 3}, {2, 3}}));
    EXPECT_EQ(job.stats->at(Pair(1, 3)), nullptr);
}

TEST(VXMergeStatsSetProcessor, PairOfTwoClustersGetsNoEntry)
{
    Job job({1, 2, 3, 4});
    job.link(1, 2, 50.0f, 10.0f);
    job.link(3, 4, 50.0f, 20.0f);

    job.run();

    EXPECT_EQ(job.pairs(), (std::vector<Pair>{{1, 2}, {3, 4}}));
}

TEST(VXMergeStatsSetProcessor, RefusedPairIsNoLinkInsideItsCluster)
{
    Job job({1, 2, 3});
    job.link(1, 2, 50.0f, 10.0f);
    job.link(2, 3, 50.0f, 20.0f);
    VXMergeStats refused = goodRecord(1, 3);
    refused.peakCount = 1000.0f;
    refused.bestOffset = 777.0f;
    refused.templateMatchLength = 1.0f;
    job.add(refused);

    EXPECT_EQ(job.run(), (Clusters{{member(1, 0.0f), member(2, 10.0f), member(3, 30.0f)}}));
    EXPECT_FALSE(job.stats->at(Pair(1, 3))->merged);
}

TEST(VXMergeStatsSetProcessor, PairInsideAClusterIsAcceptedAllTheSame)
{
    Job job({1, 2, 3});
    job.link(1, 2, 50.0f, 10.0f);
    job.link(1, 3, 40.0f, 30.0f);
    job.link(2, 3, 30.0f, 99.0f);

    EXPECT_EQ(job.run(), (Clusters{{member(1, 0.0f), member(2, 10.0f), member(3, 30.0f)}}));
    EXPECT_TRUE(job.stats->at(Pair(2, 3))->merged);
}

TEST(VXMergeStatsSetProcessor, LowerIdSurvivesWhateverTheSizesOfTheSubClusters)
{
    Job job({1, 2, 3, 4});
    job.link(2, 3, 90.0f, 10.0f);
    job.link(3, 4, 80.0f, 10.0f);
    job.link(1, 4, 70.0f, 50.0f);

    // 2, 3 and 4 stand at 0, 10 and 20 when the link to file 1 comes, rebased to 50 - 20 = 30.
    EXPECT_EQ(job.run(),
              (Clusters{{member(1, 0.0f), member(2, 30.0f), member(3, 40.0f), member(4, 50.0f)}}));
}

TEST(VXMergeStatsSetProcessor, SecondRunOverTheSameRecordsGivesTheSame)
{
    Job job({1, 2, 3});
    job.link(1, 2, 50.0f, 10.0f);
    job.link(2, 3, 40.0f, 20.0f);

    const Clusters first = job.run();
    const Clusters second = job.run();

    EXPECT_EQ(first, second);
    EXPECT_EQ(first.size(), 1u);
}

TEST(VXMergeStatsSetProcessor, AcceptedPairOutsideTheSetMakesAClusterWithoutMembers)
{
    Job job({1});
    job.link(8, 9, 50.0f, 10.0f);

    EXPECT_EQ(job.run(), (Clusters{{}, {member(1, 0.0f)}}));
}

TEST(VXMergeStatsSetProcessor, AcceptedPairWithOneFileOutsideTheSetLeavesTheOtherAlone)
{
    Job job({1});
    job.link(1, 9, 50.0f, 10.0f);

    EXPECT_EQ(job.run(), (Clusters{{member(1, 0.0f)}}));
    EXPECT_EQ(job.pairs(), (std::vector<Pair>{{1, 9}}));
}

TEST(VXMergeStatsSetProcessor, ClusterWithoutALinkKeepsEachMemberAtItsOwnZero)
{
    Job job({1, 3});
    VXMergeStats misfiled = goodRecord(1, 3);
    (*job.stats)[Pair(1, 2)] = new VXMergeStats(misfiled);

    // The record unites 1 and 3, but nothing stands under their pair.
    EXPECT_EQ(job.run(), (Clusters{{member(1, 0.0f), member(3, 0.0f)}}));
}

TEST(VXMergeStatsSetProcessor, FileSetIsNotTouched)
{
    Job job({1, 2});
    job.link(1, 2, 50.0f, 10.0f);

    job.run();

    EXPECT_EQ(job.fileSet.getFiles().size(), 2u);
    EXPECT_TRUE(job.fileSet.idToName.empty());
}

TEST(VXMergeStatsSetProcessor, FileWithoutAnObjectIsAMemberAllTheSame)
{
    Job job({1});
    job.fileSet.getFiles()[5] = nullptr;

    EXPECT_EQ(job.run(), (Clusters{{member(1, 0.0f)}, {member(5, 0.0f)}}));
}

TEST(VXMergeStatsSetProcessor, IdIsCutToItsLow32Bits)
{
    // 2^32 + 5
    Job job({INT64_C(4294967301)});

    EXPECT_EQ(job.run(), (Clusters{{member(5, 0.0f)}}));
}

TEST(VXMergeStatsSetProcessor, CutIdIsSigned)
{
    // 2^31 becomes -2^31, and -1 stays.
    Job job({-1, INT64_C(2147483648)});

    EXPECT_EQ(job.run(), (Clusters{{member(INT64_C(-2147483648), 0.0f)}, {member(-1, 0.0f)}}));
}

TEST(VXMergeStatsSetProcessor, ExtremeIdsAreCut)
{
    constexpr std::int64_t lowest = std::numeric_limits<std::int64_t>::min();
    constexpr std::int64_t highest = std::numeric_limits<std::int64_t>::max();
    Job job({lowest, highest});
    job.link(lowest, highest, 50.0f, 100.0f);

    // Low halves 0x00000000 and 0xFFFFFFFF
    EXPECT_EQ(job.run(), (Clusters{{member(-1, 100.0f), member(0, 0.0f)}}));
}

TEST(VXMergeStatsSetProcessor, OfTwoIdsOfOneClusterThatAgreeWhenCutTheLowerIsTheMember)
{
    Job job({5, INT64_C(4294967301)});
    job.link(5, INT64_C(4294967301), 50.0f, -100.0f);

    // File 5 is at 100 frames and the other at 0.
    EXPECT_EQ(job.run(), (Clusters{{member(5, 100.0f)}}));
}

TEST(VXMergeStatsSetProcessor, TwoIdsOfTwoClustersThatAgreeWhenCutAreBothMembers)
{
    Job job({5, INT64_C(4294967301)});

    EXPECT_EQ(job.run(), (Clusters{{member(5, 0.0f)}, {member(5, 0.0f)}}));
}

TEST(VXMergeStatsSetProcessor, DeletingANullResultDoesNothing)
{
    VXClusterResult* result = nullptr;

    deleteVXClusterResult(result);

    EXPECT_EQ(result, nullptr);
}

TEST(VXMergeStatsSetProcessor, DeletingAResultFreesItAndNullsTheCallersPointer)
{
    Job job({1, 2, 3});
    job.link(1, 2, 50.0f, 10.0f);
    VXClusterResult* result = defaultProcessor().run(&job.fileSet, job.stats.get());

    deleteVXClusterResult(result);

    EXPECT_EQ(result, nullptr);
}

} // namespace
} // namespace VXS
