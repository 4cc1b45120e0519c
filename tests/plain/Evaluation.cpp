#include "plain/Evaluation.h"

#include <cmath>
#include <limits>

namespace plain
{

namespace
{

std::int64_t toFrame(float value)
{
    if (std::isnan(value)) return 0;
    if (value >= 2147483648.0f) return std::numeric_limits<std::int32_t>::max();
    if (value < -2147483648.0f) return std::numeric_limits<std::int32_t>::min();
    return static_cast<std::int32_t>(value);
}

float lesser(float left, float right)
{
    return left < right ? left : right;
}

float greater(float left, float right)
{
    return left > right ? left : right;
}

std::int64_t landmarksBetween(Recording* recording, std::int64_t start, std::int64_t end)
{
    return recording == nullptr ? 0 : recording->countBetween(start, end);
}

} // namespace

float overlapRegion(Recording* first, Recording* second, float offset, float& landmarksInFirst,
                    float& landmarksInSecond)
{
    if (first == nullptr || second == nullptr) return 0.0f;
    const float max1 = static_cast<float>(first->last);
    const float min1 = static_cast<float>(first->first);
    const float max2 = static_cast<float>(second->last);
    const float min2 = static_cast<float>(second->first);
    if (offset > 0.0f) {
        // In the second recording's time: its head meets the tail of the first.
        const float end = lesser(max2, max1 - offset);
        const float start = greater(min2, min1 - offset);
        const float length = end - start;
        landmarksInFirst = static_cast<float>(
            first->countBetween(toFrame(std::floor(max1 - length)), first->last));
        landmarksInSecond = static_cast<float>(
            second->countBetween(second->first, toFrame(std::ceil(min2 + length))));
        return length;
    }
    const float end = lesser(max2 + offset, max1);
    const float start = greater(min2 + offset, min1);
    const float length = end - start;
    landmarksInFirst =
        static_cast<float>(first->countBetween(first->first, toFrame(std::ceil(min1 + length))));
    landmarksInSecond =
        static_cast<float>(second->countBetween(toFrame(std::floor(max2 - length)), second->last));
    return length;
}

void measureBin(const Pair& pair, const Histogram& histogram, std::int64_t offset, float& percentA,
                float& percentB, float& templateMatchLength, RecordingSet& recordings)
{
    const auto bin = histogram.find(offset);
    if (bin == histogram.end()) return;
    std::int64_t greatest = std::numeric_limits<std::int64_t>::min();
    std::int64_t least = std::numeric_limits<std::int64_t>::max();
    for (const Landmark* landmark : bin->second) {
        if (landmark->offset >= greatest) greatest = landmark->offset;
        if (landmark->offset <= least) least = landmark->offset;
    }
    Recording* first = recordings[pair.first];
    Recording* second = recordings[pair.second];
    const std::int64_t countA = landmarksBetween(first, least, greatest);
    const std::int64_t countB = landmarksBetween(second, least - offset, greatest - offset);
    templateMatchLength = static_cast<float>(greatest - least);
    const float votes = static_cast<float>(bin->second.size());
    percentA = votes / static_cast<float>(countA);
    percentB = votes / static_cast<float>(countB);
}

BestBin bestBin(const Histogram& histogram)
{
    BestBin best{0.0f, 0};
    for (const auto& [offset, bin] : histogram) {
        const float count = static_cast<float>(bin.size());
        if (count >= best.count) best = {count, offset};
    }
    return best;
}

std::map<Pair, Statistics> evaluate(RecordingSet& recordings, const HistogramSet& histograms)
{
    std::map<Pair, Statistics> result;
    for (const auto& [pair, histogram] : histograms) {
        Statistics& record = result[pair];
        record.fileA = pair.first;
        record.fileB = pair.second;

        const BestBin best = bestBin(histogram);
        record.peakCount = best.count;
        record.bestOffset = static_cast<float>(best.offset);

        Recording* first = recordings[pair.first];
        Recording* second = recordings[pair.second];
        record.landmarksInOverlapA = 0.0f;
        record.landmarksInOverlapB = 0.0f;
        record.overlapLength =
            overlapRegion(first, second, record.bestOffset, record.landmarksInOverlapA,
                          record.landmarksInOverlapB);
        record.percentMatchA = record.peakCount / record.landmarksInOverlapA;
        record.percentMatchB = record.peakCount / record.landmarksInOverlapB;

        float unusedA = 0.0f;
        float unusedB = 0.0f;
        record.templateMatchLength = 0.0f;
        measureBin(pair, histogram, best.offset, unusedA, unusedB, record.templateMatchLength,
                   recordings);

        float sum = 0.0f;
        for (const auto& [offset, bin] : histogram)
            sum += static_cast<float>(bin.size());
        record.meanCount = sum / record.overlapLength;
        float squares = 0.0f;
        for (const auto& [offset, bin] : histogram) {
            const float difference = static_cast<float>(bin.size()) - record.meanCount;
            squares += difference * difference;
        }
        float variance = squares / record.overlapLength;
        if (variance < 0.1f) variance = 0.1f;
        record.stdDevCount = std::sqrt(variance);
    }
    return result;
}

} // namespace plain
