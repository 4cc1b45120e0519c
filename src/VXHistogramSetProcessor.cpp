#include "VXHistogramSetProcessor.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iostream>
#include <limits>
#include <memory>

#include "VXFile.h"
#include "VXFileSet.h"
#include "VXLandmark.h"

namespace VXS
{

namespace
{

struct Noise {
    float meanCount;
    float stdDevCount;
};

// A bound outside 32 bits saturates and not-a-number is 0, so that every machine counts alike.
std::int64_t toFrame(float bound)
{
    constexpr float beyond = 2147483648.0f;
    if (std::isnan(bound)) return 0;
    if (bound >= beyond) return std::numeric_limits<std::int32_t>::max();
    if (bound < -beyond) return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(bound);
}

// Offsets of damaged votes may lie anywhere in 64 bits, so the difference is formed unsigned.
std::int64_t difference(std::int64_t minuend, std::int64_t subtrahend)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(minuend) -
                                     static_cast<std::uint64_t>(subtrahend));
}

float countLandmarks(VXFile* file, std::int64_t start, std::int64_t end)
{
    if (file == nullptr) return 0.0f;
    return static_cast<float>(file->queryNumberLandmarksInBetween(start, end));
}

// The sum of the bins in single precision, by ascending offset.
float sumOfVotes(const VXHistogram& histogram)
{
    // Up to here single precision holds every whole number, and so every sum on the way.
    constexpr std::uint64_t mostExact = std::uint64_t{1} << 24u;
    if (histogram.votes() <= mostExact) return static_cast<float>(histogram.votes());

    float sum = 0.0f;
    for (const auto& bin : histogram)
        sum += static_cast<float>(bin.votes);
    return sum;
}

// The mean is taken over the frames of the overlap, the number of bins that the pair could have
// had, while the squares are summed over the bins that exist. Taken over the existing bins alone
// the noise would look larger, and short overlaps would lose their links.
Noise measureNoise(const VXHistogram* histogram, float overlapLength)
{
    constexpr float leastVariance = 0.1f;
    if (histogram == nullptr) return {0.0f, std::sqrt(leastVariance)};

    const float mean = sumOfVotes(*histogram) / overlapLength;

    float squares = 0.0f;
    for (const auto& bin : *histogram) {
        const float distance = static_cast<float>(bin.votes) - mean;
        const float square = distance * distance;
        squares += square;
    }
    float variance = squares / overlapLength;
    // Not-a-number stays: it compares false.
    if (variance < leastVariance) variance = leastVariance;
    return {mean, std::sqrt(variance)};
}

} // namespace

VXMergeStatsSet* VXHistogramSetProcessor::run(VXFileSet* fileSet, VXHistogramSet* histograms)
{
    if (fileSet == nullptr || histograms == nullptr) return nullptr;

    VXMergeStatsSetHolder result(new VXMergeStatsSet());
    for (const auto& entry : *histograms) {
        const auto& pair = entry.first;
        VXHistogram* histogram = entry.second;

        VXMergeStats*& slot = (*result)[pair];
        slot = new VXMergeStats(histogram);
        VXMergeStats& record = *slot;
        record.fileA = pair.first;
        record.fileB = pair.second;

        const VXHistogram::Best best =
            histogram == nullptr ? VXHistogram::Best() : histogram->bestBin();
        record.peakCount = best.votes;
        record.bestOffset = static_cast<float>(best.offset);

        auto& files = fileSet->getFiles();
        VXFile* fileA = files[pair.first];
        VXFile* fileB = files[pair.second];
        record.overlapLength =
            proposedOverlapRegion(fileA, fileB, record.bestOffset, record.landmarksInOverlapA,
                                  record.landmarksInOverlapB);
        // A count of 0 gives an infinity, which the merge decision copes with.
        record.percentMatchA = record.peakCount / record.landmarksInOverlapA;
        record.percentMatchB = record.peakCount / record.landmarksInOverlapB;

        // Its percentages relate the votes to the span of the best bin and are not kept: the record
        // relates them to the overlap.
        float spanPercentA = 0.0f;
        float spanPercentB = 0.0f;
        offset2Percetage(pair, histogram, best.offset, spanPercentA, spanPercentB,
                         record.templateMatchLength, fileSet);

        const Noise noise = measureNoise(histogram, record.overlapLength);
        record.meanCount = noise.meanCount;
        record.stdDevCount = noise.stdDevCount;
    }
    return result.release();
}

float VXHistogramSetProcessor::proposedOverlapRegion(VXFile* first, VXFile* second, float offset,
                                                     float& landmarksInFirst,
                                                     float& landmarksInSecond)
{
    if (first == nullptr || second == nullptr) return 0.0f;

    const auto max1 = static_cast<float>(first->getMaxLandmarkOffsetTime());
    const auto min1 = static_cast<float>(first->getMinLandmarkOffsetTime());
    const auto max2 = static_cast<float>(second->getMaxLandmarkOffsetTime());
    const auto min2 = static_cast<float>(second->getMinLandmarkOffsetTime());

    // Each count runs from the end of its file that takes part in the overlap. Where one file lies
    // wholly inside the other, the stretch counted in the longer one is therefore at its end and
    // not at the place of the overlap. The shares of all links are taken like this.
    float length = 0.0f;
    if (offset > 0.0f) {
        const float end = std::min(max2, max1 - offset);
        const float start = std::max(min2, min1 - offset);
        length = end - start;
        landmarksInFirst = countLandmarks(first, toFrame(std::floor(max1 - length)),
                                          first->getMaxLandmarkOffsetTime());
        landmarksInSecond = countLandmarks(second, second->getMinLandmarkOffsetTime(),
                                           toFrame(std::ceil(min2 + length)));
    } else {
        const float end = std::min(max2 + offset, max1);
        const float start = std::max(min2 + offset, min1);
        length = end - start;
        landmarksInFirst = countLandmarks(first, first->getMinLandmarkOffsetTime(),
                                          toFrame(std::ceil(min1 + length)));
        landmarksInSecond = countLandmarks(second, toFrame(std::floor(max2 - length)),
                                           second->getMaxLandmarkOffsetTime());
    }
    return length;
}

void VXHistogramSetProcessor::offset2Percetage(const std::pair<std::int64_t, std::int64_t>& pair,
                                               VXHistogram* histogram, std::int64_t offset,
                                               float& percentA, float& percentB,
                                               float& templateMatchLength, VXFileSet* fileSet)
{
    if (histogram == nullptr || fileSet == nullptr) return;
    const auto bin = histogram->find(offset);
    if (bin == histogram->end()) return;

    const VXHistogram::Ends ends = histogram->endsOf(offset);
    const bool areKept = ends.least != nullptr && ends.greatest != nullptr;
    // Only the best bin of a pair keeps its ends, and no other is ever measured.
    if (!areKept && bin->votes > 0) return;
    const std::int64_t greatest =
        areKept ? ends.greatest->getOffset() : std::numeric_limits<std::int64_t>::min();
    const std::int64_t least =
        areKept ? ends.least->getOffset() : std::numeric_limits<std::int64_t>::max();

    // The votes are the first file's landmarks, so the span stands in its time already.
    auto& files = fileSet->getFiles();
    const float countA = countLandmarks(files[pair.first], least, greatest);
    const float countB =
        countLandmarks(files[pair.second], difference(least, offset), difference(greatest, offset));
    templateMatchLength = static_cast<float>(difference(greatest, least));
    const auto votes = static_cast<float>(bin->votes);
    percentA = votes / countA;
    percentB = votes / countB;

    if (greatest < least) {
        std::cerr << "[ERROR]: error in computing the region of "
                     "overlap between proposed histogram points"
                  << std::endl;
        std::exit(1);
    }
}

} // namespace VXS
