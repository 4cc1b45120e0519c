// Landmarks made by hand through the synchronisation, stage by stage and as a whole, beside the
// plain twins of the votes, the evaluation and the clusters.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <limits>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "Bytes.h"
#include "Clusters.h"
#include "Comparison.h"
#include "Harness.h"
#include "VXClusterSync.h"
#include "VXClusterSyncParams.h"
#include "VXExtractParams.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXFileSetProcessor.h"
#include "VXHistogram.h"
#include "VXHistogramSetProcessor.h"
#include "VXLandmark.h"
#include "VXMergeStats.h"
#include "VXMergeStatsSetProcessor.h"
#include "plain/Evaluation.h"
#include "plain/Histograms.h"
#include "plain/Recording.h"
#include "property/Bins.h"
#include "support/Bits.h"
#include "support/twin/Job.h"

namespace
{

using fuzz::Bytes;
using fuzz::require;

constexpr std::uint32_t mostFiles = 12;
constexpr std::size_t mostLandmarks = 600;
// Every frame between the first landmark of a recording and its last costs.
constexpr std::int32_t mostFrames = 512;
// Without counts the frames between cost less, and the offsets of a few pairs are then more than
// are counted at a time.
constexpr std::int32_t sparseStep = 1024;
constexpr std::uint32_t mostSparseFiles = 4;

class Progress : public VXS::VXProgress
{
public:
    void setStage(int stage) override { stages.push_back(stage); }
    void setFraction(float fraction) override { fractions.push_back(fraction); }

    std::vector<int> stages;
    std::vector<float> fractions;
};

// Recordings as the input says.
class Job : public twins::Job
{
public:
    Job(Bytes& bytes, bool isSparse);

private:
    struct File {
        std::int64_t id;
        std::int32_t base;
        std::vector<std::pair<std::int32_t, std::uint32_t>> added;
    };

    void addFileOf(Bytes& bytes, std::size_t index);
    void addRun(Bytes& bytes);
    void addCopy(Bytes& bytes);
    void addStrayOf(Bytes& bytes);
    void add(File& file, std::int32_t frame, std::uint32_t key, std::optional<std::int64_t> owner);
    File& anyFile(Bytes& bytes);
    static std::uint32_t keyOf(std::uint32_t number);

    std::vector<File> files;
    std::size_t landmarks = 0;
    std::int32_t frameStep;
    bool hasStrays;
};

// A file of the set that the landmarks of others name shares the frames of those, so that with
// strays all files lie in one place: the votes of a pair are counted over all offsets between.
Job::Job(Bytes& bytes, bool isSparse)
    : frameStep(isSparse ? sparseStep : 1), hasStrays(bytes.oneIn(4))
{
    const std::size_t count = 1 + bytes.below(mostFiles) % (isSparse ? mostSparseFiles : mostFiles);
    for (std::size_t i = 0; i < count; ++i)
        addFileOf(bytes, i);
    while (!bytes.empty() && landmarks < mostLandmarks) {
        switch (bytes.below(8)) {
        case 0:
        case 1: {
            File& file = anyFile(bytes);
            const std::int32_t frame = bytes.between(0, mostFrames - 1);
            add(file, frame, keyOf(bytes.byte()), file.id);
            break;
        }
        case 2:
        case 3:
            addRun(bytes);
            break;
        case 4:
        case 5:
            addCopy(bytes);
            break;
        case 6:
            addStrayOf(bytes);
            break;
        default: {
            // Counts that are made before the last landmark is there stay as they are for the
            // frames that they cover.
            const File& file = anyFile(bytes);
            if (frameStep == 1) countUp(file.id);
            break;
        }
        }
    }
}

// Multiplied over all 32 bits, so that keys with the top bit set are among them; the product of two
// different numbers differs.
std::uint32_t Job::keyOf(std::uint32_t number)
{
    return number * 2654435761u;
}

Job::File& Job::anyFile(Bytes& bytes)
{
    return files[bytes.below(static_cast<std::uint32_t>(files.size()))];
}

void Job::addFileOf(Bytes& bytes, std::size_t index)
{
    constexpr std::int32_t lowest = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t highest = std::numeric_limits<std::int32_t>::max();
    const auto number = static_cast<std::int64_t>(index) + 1;
    std::int64_t id = number;
    switch (bytes.below(8)) {
    case 4:
        id = -number;
        break;
    case 5:
        // Equal in the low half, which is all that comes out in the end.
        id = number << 32u;
        break;
    case 6:
        id = bytes.raw<std::int64_t>();
        break;
    case 7:
        // An entry without a file.
        if (recordings.count(number) == 0) addNothing(number);
        if (!files.empty()) return;
        id = -1;
        break;
    default:
        break;
    }
    if (recordings.count(id) != 0) return;
    const std::int32_t base =
        bytes.pick({0, 0, 0, -100, 1 << 24, lowest, highest - mostFrames * frameStep});
    addFile(id);
    if (bytes.oneIn(2)) fileSet.idToName[id] = std::to_string(id);
    files.push_back({id, hasStrays && !files.empty() ? files.front().base : base, {}});
}

void Job::add(File& file, std::int32_t frame, std::uint32_t key, std::optional<std::int64_t> owner)
{
    if (landmarks >= mostLandmarks) return;
    ++landmarks;
    const std::int32_t within = std::min(std::max(frame, 0), mostFrames - 1);
    const std::int32_t offset = file.base + within * frameStep;
    file.added.emplace_back(within, key);
    addStray(file.id, offset, key, owner);
}

// One sound after the other.
void Job::addRun(Bytes& bytes)
{
    File& file = anyFile(bytes);
    std::int32_t frame = bytes.between(0, mostFrames - 1);
    const std::int32_t step = bytes.between(0, 7);
    std::uint32_t key = bytes.byte();
    const std::uint32_t keyStep = bytes.below(4);
    for (std::uint32_t count = bytes.byte(); count > 0; --count) {
        add(file, frame, keyOf(key), file.id);
        frame += step;
        key += keyStep;
    }
}

// What one recording has heard, another hears later or earlier, and not all of it.
void Job::addCopy(Bytes& bytes)
{
    const File& from = anyFile(bytes);
    File& to = anyFile(bytes);
    const std::int32_t shift = bytes.between(-mostFrames / 2, mostFrames / 2 - 1);
    const std::size_t missing = bytes.byte() + std::size_t{2};
    const std::vector<std::pair<std::int32_t, std::uint32_t>> heard = from.added;
    for (std::size_t i = 0; i < heard.size(); ++i) {
        if (i % missing == missing - 1) continue;
        add(to, heard[i].first + shift, heard[i].second, to.id);
    }
}

// A landmark that names no file, another one of the set, or one outside of it.
void Job::addStrayOf(Bytes& bytes)
{
    File& file = anyFile(bytes);
    const std::int32_t frame = bytes.between(0, mostFrames - 1);
    const std::uint32_t key = keyOf(bytes.byte());
    std::optional<std::int64_t> owner;
    const std::uint32_t kind = bytes.below(3);
    if (kind == 1 && hasStrays) owner = anyFile(bytes).id;
    if (kind == 2 && hasStrays) {
        const std::int64_t id = 1000 + bytes.below(3);
        if (fileSet.getFiles().count(id) != 0) return;
        addOutsider(id);
        owner = id;
    }
    add(file, frame, key, owner);
}

void compareHistograms(Job& job, const VXS::VXHistogramSet& library,
                       const plain::HistogramSet& twin)
{
    auto twins = job.twins();
    require(library.size() == twin.size(), "as many pairs as the twin");
    auto entry = library.begin();
    for (const auto& [pair, histogram] : twin) {
        require(entry->first == pair, "the twin's pairs");
        require(entry->second->size() == histogram.size(), "as many bins as the twin");
        auto bin = entry->second->begin();
        for (const auto& [offset, list] : histogram) {
            require(bin->offset == offset, "the twin's offsets");
            require(bin->votes == property::votes(list), "the twin's votes");
            ++bin;
        }
        require(bin == entry->second->end(), "an end behind the last bin");
        const plain::BestBin best = plain::bestBin(histogram);
        require(entry->second->bestBin().offset == best.offset, "the twin's best offset");
        require(support::sameBits(entry->second->bestBin().votes, best.count),
                "the twin's best count");
        const VXS::VXHistogram::Ends ends = entry->second->endsOf(best.offset);
        const auto& votes = histogram.at(best.offset);
        require(twins[ends.least] == property::least(votes), "the twin's least vote");
        require(twins[ends.greatest] == property::greatest(votes), "the twin's greatest vote");
        ++entry;
    }
}

void compareRecords(const VXS::VXMergeStatsSet& library,
                    const std::map<plain::Pair, plain::Statistics>& twin)
{
    require(library.size() == twin.size(), "as many records as the twin");
    auto entry = library.begin();
    for (const auto& [pair, expected] : twin) {
        require(entry->first == pair, "records of the twin's pairs");
        const VXS::VXMergeStats& record = *entry->second;
        require(record.fileA == expected.fileA && record.fileB == expected.fileB, "the pair's ids");
        require(support::sameBits(record.peakCount, expected.peakCount), "peakCount");
        require(support::sameBits(record.overlapLength, expected.overlapLength), "overlapLength");
        require(support::sameBits(record.percentMatchA, expected.percentMatchA), "percentMatchA");
        require(support::sameBits(record.percentMatchB, expected.percentMatchB), "percentMatchB");
        require(support::sameBits(record.landmarksInOverlapA, expected.landmarksInOverlapA),
                "landmarksInOverlapA");
        require(support::sameBits(record.landmarksInOverlapB, expected.landmarksInOverlapB),
                "landmarksInOverlapB");
        require(support::sameBits(record.templateMatchLength, expected.templateMatchLength),
                "templateMatchLength");
        require(support::sameBits(record.meanCount, expected.meanCount), "meanCount");
        require(support::sameBits(record.stdDevCount, expected.stdDevCount), "stdDevCount");
        require(support::sameBits(record.bestOffset, expected.bestOffset), "bestOffset");
        require(!record.merged, "no pair accepted before the decision");
        ++entry;
    }
}

void compareFiles(Job& job)
{
    require(job.fileSet.getFiles().size() == job.recordings.size(), "as many files as the twin");
    for (const auto& [id, recording] : job.recordings) {
        VXS::VXFile* file = job.fileSet.getFiles().at(id);
        require((file == nullptr) == (recording == nullptr), "files where the twin has them");
        if (recording == nullptr) continue;
        require(file->getMinLandmarkOffsetTime() == recording->first, "the twin's first frame");
        require(file->getMaxLandmarkOffsetTime() == recording->last, "the twin's last frame");
        require(std::equal(file->clf.begin(), file->clf.end(), recording->counts.begin(),
                           recording->counts.end()),
                "the twin's counts");
        require(file->getLandmarkMap().size() == recording->landmarks.size(), "the twin's frames");
        const std::int64_t all =
            file->queryNumberLandmarksInBetween(recording->first, recording->last);
        require(all == recording->countBetween(recording->first, recording->last),
                "the twin's number of landmarks");
    }
}

std::map<fuzz::Pair, fuzz::PairRecord>
recordsOf(const std::map<plain::Pair, plain::Statistics>& statistics)
{
    std::map<fuzz::Pair, fuzz::PairRecord> records;
    for (const auto& [pair, measured] : statistics) {
        records[pair] = {measured.peakCount,           measured.bestOffset,
                         measured.templateMatchLength, measured.overlapLength,
                         measured.percentMatchA,       measured.percentMatchB,
                         measured.meanCount,           measured.stdDevCount};
    }
    return records;
}

void compareStages(Job& job, const VXS::VXClusterSyncParams& params)
{
    std::vector<float> expectedFractions;
    const plain::HistogramSet expected =
        plain::histograms(job.recordings, params.getMaxLandmarkCount(), expectedFractions);
    Progress progress;
    VXS::VXFileSetProcessor processor(params.getMaxLandmarkCount());
    const VXS::VXHistogramSetHolder histograms(processor.run(&job.fileSet, &progress));
    require(progress.fractions == expectedFractions, "the twin's fractions");
    compareHistograms(job, *histograms, expected);

    const auto expectedRecords = plain::evaluate(job.recordings, expected);
    const VXS::VXMergeStatsSetHolder records(
        VXS::VXHistogramSetProcessor().run(&job.fileSet, histograms.get()));
    compareRecords(*records, expectedRecords);
    compareFiles(job);
}

// Of any two of the recordings, at any offset.
void compareOverlap(Job& job, Bytes& bytes)
{
    const auto anyID = [&job, &bytes] {
        const std::uint32_t place = bytes.below(static_cast<std::uint32_t>(job.recordings.size()));
        return std::next(job.recordings.begin(), place)->first;
    };
    const std::int64_t first = anyID();
    const std::int64_t second = anyID();
    const float offset =
        bytes.oneIn(4) ? bytes.raw<float>() : static_cast<float>(bytes.raw<std::int16_t>()) / 16.0f;
    // Offsets are differences of frames, so that each is a number.
    if (std::isnan(offset)) return;
    float expectedFirst = -7.0f;
    float expectedSecond = -7.0f;
    float countFirst = -7.0f;
    float countSecond = -7.0f;
    const float expected = plain::overlapRegion(job.recordings.at(first), job.recordings.at(second),
                                                offset, expectedFirst, expectedSecond);
    const float length = VXS::VXHistogramSetProcessor().proposedOverlapRegion(
        job.fileSet.getFiles().at(first), job.fileSet.getFiles().at(second), offset, countFirst,
        countSecond);
    require(support::sameBits(length, expected), "the twin's overlap");
    require(support::sameBits(countFirst, expectedFirst),
            "the twin's count in the first recording");
    require(support::sameBits(countSecond, expectedSecond),
            "the twin's count in the second recording");
}

void compareRun(Job& job, const VXS::VXClusterSyncParams& params)
{
    for (const auto& [id, recording] : job.recordings) {
        if (recording != nullptr) recording->countUp();
    }
    std::vector<float> expectedFractions;
    auto records = recordsOf(plain::evaluate(
        job.recordings,
        plain::histograms(job.recordings, params.getMaxLandmarkCount(), expectedFractions)));
    std::set<std::int64_t> ids;
    for (const auto& [id, recording] : job.recordings)
        ids.insert(id);
    const auto names = job.fileSet.idToName;

    Progress progress;
    const VXS::VXClusterResultHolder result(
        VXS::VXClusterSync(params).run(&job.fileSet, &progress));
    require(result != nullptr, "a result");
    require(progress.stages == std::vector<int>({0, 1, 2, 3, 4, 5}), "each stage once, in order");
    require(progress.fractions == expectedFractions, "the twin's fractions in a whole run");
    compareFiles(job);
    fuzz::requireSameClusters(*result,
                              fuzz::Clusters(params.getAudioFramesPerSecond()).run(ids, records));
    for (const VXS::VXClusterMembers* members : *result) {
        for (const VXS::VXClusterMember* member : *members) {
            const auto name = names.find(member->fileID);
            require(member->name == (name == names.end() ? std::string() : name->second),
                    "the member's name");
        }
    }
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Bytes bytes(data, size);
    VXS::VXExtractParams extractParams;
    // With long hops few frames are three seconds, so that little is enough for a match.
    extractParams.setHopSize(bytes.pick({256u, 8000u, 4000u, 1u, 100000u}));
    VXS::VXClusterSyncParams params(extractParams);
    params.maxLandmarkCount = bytes.pick({250u, 250u, 250u, 0u, 1u, 2u, 3u, 20u});
    const std::uint32_t mode = bytes.below(16);
    const bool isStaged = mode % 2 == 1;
    const bool isSparse = mode == 15;
    Bytes places = bytes.split(bytes.below(64));
    Job job(bytes, isSparse);
    while (!places.empty())
        compareOverlap(job, places);

    if (isStaged) compareStages(job, params);
    if (isSparse) return 0;
    compareRun(job, params);
    // Nothing of the first run may show in the second.
    compareRun(job, params);
    if (isStaged) compareStages(job, params);
    return 0;
}
