#include "plain/Histograms.h"

#include <cstddef>
#include <iterator>

namespace plain
{

namespace
{

using Index = std::map<std::uint32_t, std::vector<Vote>>;

void fileLandmarks(const RecordingSet& recordings, Index& index, std::vector<float>& fractions)
{
    fractions.push_back(0.0f);
    std::int32_t done = 0;
    for (const auto& [id, recording] : recordings) {
        if (recording != nullptr) {
            for (const auto& [frame, list] : recording->landmarks) {
                for (const Landmark& landmark : list) {
                    index[landmark.key].push_back(&landmark);
                }
            }
        }
        ++done;
        fractions.push_back(static_cast<float>(done) / static_cast<float>(recordings.size()));
    }
}

void vote(const std::map<std::int64_t, std::vector<Vote>>& landmarksByFile, HistogramSet& result)
{
    for (const auto& [lower, listA] : landmarksByFile) {
        for (const auto& [higher, listB] : landmarksByFile) {
            if (!(lower < higher)) continue;
            Histogram& histogram = result[{lower, higher}];
            for (const Landmark* a : listA) {
                for (const Landmark* b : listB) {
                    const std::int64_t offset =
                        static_cast<std::int64_t>(a->offset) - static_cast<std::int64_t>(b->offset);
                    histogram[offset].push_back(a);
                }
            }
        }
    }
}

} // namespace

HistogramSet histograms(const RecordingSet& recordings, std::uint32_t maxLandmarkCount,
                        std::vector<float>& fractions)
{
    Index index;
    fileLandmarks(recordings, index, fractions);

    fractions.push_back(0.0f);
    HistogramSet result;
    for (auto entry = index.begin(); entry != index.end();) {
        entry = entry->second.size() < 2 ? index.erase(entry) : std::next(entry);
    }
    if (index.empty()) return result;

    const float total = static_cast<float>(index.size());
    std::int32_t reported = 0;
    std::size_t counter = 0;
    for (const auto& [key, list] : index) {
        ++counter;
        const std::int32_t percentage =
            static_cast<std::int32_t>(static_cast<float>(counter) * 100.0f / total);
        if (reported < percentage) {
            fractions.push_back(static_cast<float>(percentage) / 100.0f);
            reported = percentage;
        }
        if (list.size() > maxLandmarkCount) continue;
        std::map<std::int64_t, std::vector<Vote>> landmarksByFile;
        for (const Landmark* landmark : list) {
            if (landmark->hasFile) landmarksByFile[landmark->fileID].push_back(landmark);
        }
        vote(landmarksByFile, result);
    }
    return result;
}

} // namespace plain
