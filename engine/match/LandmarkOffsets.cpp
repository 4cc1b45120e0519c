#include "match/LandmarkOffsets.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <tuple>
#include <utility>

#include <vxl_audio/VXClusterSync.h>
#include <vxl_audio/VXClusterSyncParams.h>
#include <vxl_audio/VXExtractParams.h>
#include <vxl_audio/VXFileSet.h>

#include "VXFileSetProcessor.h"
#include "VXHistogram.h"
#include "match/LandmarkFiles.h"
#include "match/LandmarkWatch.h"

namespace vxlsync
{

namespace
{

// Strangers' best bins stand at 6.6 in the median and at 8.6 in one of ten, those of true pairs at
// 22 in the median and below 9.4 in one of twenty.
constexpr double leastStanding = 8.0;
// Of five bins of a pair one is right where the best is not; what stands behind is chance.
constexpr std::size_t mostOffsets = 5;
// A sound between two frames votes for both bins.
constexpr std::int64_t sameBinFrames = 2;
// So that a histogram of a handful of votes has no bin that stands out for want of others.
constexpr double leastVariance = 0.1;
// A pair's histogram takes about a byte for each frame of its two recordings.
constexpr std::size_t histogramBytes = std::size_t{96} << 20U;

// A set that borrows its files, also where adding one of them fails.
class BorrowingSet
{
public:
    BorrowingSet() = default;
    ~BorrowingSet() { set.getFiles().clear(); }
    BorrowingSet(const BorrowingSet&) = delete;
    BorrowingSet& operator=(const BorrowingSet&) = delete;

    void add(VXS::VXFile* file) { set.addFile(file); }
    VXS::VXFileSet* get() { return &set; }

private:
    VXS::VXFileSet set;
};

struct Bin {
    std::int64_t offset;
    double standing;
};

// The bins that stand out, the highest first; of equal ones the greater offset.
std::vector<Bin> standingBins(const VXS::VXHistogram& histogram)
{
    double sum = 0.0;
    double squares = 0.0;
    for (const VXS::VXHistogram::Bin& bin : histogram) {
        const auto votes = static_cast<double>(bin.votes);
        sum += votes;
        squares += votes * votes;
    }
    const auto count = static_cast<double>(histogram.size());
    const double mean = sum / count;
    const double deviation = std::sqrt(std::max(leastVariance, squares / count - mean * mean));

    std::vector<Bin> high;
    for (const VXS::VXHistogram::Bin& bin : histogram) {
        const double standing = (static_cast<double>(bin.votes) - mean) / deviation;
        if (standing >= leastStanding) high.push_back({bin.offset, standing});
    }
    std::sort(high.begin(), high.end(), [](const Bin& left, const Bin& right) {
        return std::tie(left.standing, left.offset) > std::tie(right.standing, right.offset);
    });
    std::vector<Bin> chosen;
    for (const Bin& bin : high) {
        const bool isFlank = std::any_of(chosen.begin(), chosen.end(), [&](const Bin& other) {
            return std::llabs(other.offset - bin.offset) <= sameBinFrames;
        });
        if (!isFlank) chosen.push_back(bin);
        if (chosen.size() == mostOffsets) break;
    }
    return chosen;
}

// Seconds of a bin.
double secondsOf(std::int64_t frames)
{
    const VXS::VXClusterSyncParams params{VXS::VXExtractParams()};
    return static_cast<double>(frames) / static_cast<double>(params.getAudioFramesPerSecond());
}

// A stretch of the list of recordings.
struct Block {
    std::size_t from;
    std::size_t to;

    bool holds(std::size_t index) const { return index >= from && index < to; }
};

// Blocks of which any two have histograms of no more than the bytes meant for them.
std::vector<Block> blocksOf(const std::vector<Recording>& recordings)
{
    const double framesPerSecond = 1.0 / secondsOf(1);
    std::vector<Block> blocks;
    double frames = 0.0;
    for (std::size_t i = 0; i < recordings.size(); ++i) {
        const double more = recordings[i].durationSeconds * framesPerSecond;
        const bool fits = !blocks.empty() &&
                          4.0 * (frames + more) * static_cast<double>(i + 1 - blocks.back().from) <=
                              static_cast<double>(histogramBytes);
        if (!fits) {
            blocks.push_back({i, i});
            frames = 0.0;
        }
        blocks.back().to = i + 1;
        frames += more;
    }
    return blocks;
}

// Counts the votes of the files, and takes the pairs that are wanted.
template <typename Filter>
void countVotes(const std::vector<VXS::VXFile*>& files, Filter isWanted, const Interrupt& interrupt,
                std::vector<LandmarkOffset>& offsets)
{
    interrupt.check();
    BorrowingSet set;
    for (VXS::VXFile* file : files)
        set.add(file);
    LandmarkWatch watch(interrupt);
    VXS::VXFileSetProcessor processor(
        VXS::VXClusterSyncParams(VXS::VXExtractParams()).getMaxLandmarkCount());
    const VXS::VXHistogramSetHolder histograms(processor.run(set.get(), &watch));
    for (const auto& [ids, histogram] : *histograms) {
        const auto first = static_cast<std::size_t>(ids.first - 1);
        const auto second = static_cast<std::size_t>(ids.second - 1);
        if (!isWanted(first, second)) continue;
        for (const Bin& bin : standingBins(*histogram))
            offsets.push_back({first, second, secondsOf(bin.offset), bin.standing});
    }
}

std::vector<VXS::VXFile*> filesOf(const std::vector<LandmarkFile>& files, const Block& block,
                                  std::vector<VXS::VXFile*> before)
{
    for (std::size_t i = block.from; i < block.to; ++i) {
        if (files[i]) before.push_back(files[i].get());
    }
    return before;
}

} // namespace

std::vector<LandmarkOffset> offsetsByLandmarks(const std::vector<Recording>& recordings, Run& run)
{
    const std::vector<Block> blocks = blocksOf(recordings);
    run.meter.begin(Stage::landmarks, recordings.size() + blocks.size() * (blocks.size() + 1) / 2);
    const std::vector<LandmarkFile> files = extractLandmarks(recordings, run);
    std::vector<LandmarkOffset> offsets;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const std::vector<VXS::VXFile*> ofFirst = filesOf(files, blocks[i], {});
        for (std::size_t j = i; j < blocks.size(); ++j) {
            // Pairs within a block are counted with the block after it, or by themselves if there
            // is but one.
            if (j == i && blocks.size() > 1) {
                run.meter.step();
                continue;
            }
            const bool takesFirst = j <= i + 1;
            const bool takesSecond = i + 1 == j && j + 1 == blocks.size();
            const auto isWanted = [&](std::size_t first, std::size_t second) {
                // The first stands before the second, so that one of the two tells.
                if (blocks[i].holds(second)) return takesFirst;
                if (blocks[j].holds(first)) return takesSecond;
                return true;
            };
            std::vector<VXS::VXFile*> counted = ofFirst;
            if (j > i) counted = filesOf(files, blocks[j], std::move(counted));
            countVotes(counted, isWanted, run.interrupt, offsets);
            run.meter.step();
        }
    }
    std::stable_sort(offsets.begin(), offsets.end(),
                     [](const LandmarkOffset& left, const LandmarkOffset& right) {
                         return std::tie(left.first, left.second) <
                                std::tie(right.first, right.second);
                     });
    return offsets;
}

} // namespace vxlsync
