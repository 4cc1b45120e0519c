// The operations of the stages one by one, in any order and as often as the input says, within what
// their headers ask for. What is left by them must not show in the whole runs that follow.

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <memory>
#include <set>
#include <utility>
#include <vector>

#include "Bytes.h"
#include "Clusters.h"
#include "Comparison.h"
#include "Console.h"
#include "Harness.h"
#include "Sound.h"
#include "VXClusterInternal.h"
#include "VXClusterSync.h"
#include "VXClusterSyncParams.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXFileSetProcessor.h"
#include "VXHistogram.h"
#include "VXHistogramSetProcessor.h"
#include "VXLandmark.h"
#include "VXLandmarkExtract.h"
#include "VXMergeStats.h"
#include "VXMergeStatsSetProcessor.h"
#include "support/SignalInput.h"
#include "support/twin/Comparison.h"
#include "support/twin/Source.h"
#include "wavfile.h"

namespace
{

using fuzz::Bytes;
using fuzz::require;
using fuzz::Samples;

constexpr int mostOperations = 60;
constexpr std::size_t mostLandmarks = 600;

struct HostFailure {
};

// Throws at one of its calls, if the input says so.
class Progress : public VXS::VXProgress
{
public:
    explicit Progress(Bytes& bytes)
        : callsLeft(bytes.oneIn(4) ? bytes.below(8) : std::numeric_limits<std::uint32_t>::max())
    {
    }

    void setStage(int) override { count(); }
    void setFraction(float fraction) override
    {
        require(fraction >= 0.0f && fraction <= 1.0f, "a fraction from 0 to 1");
        count();
    }

private:
    void count()
    {
        if (callsLeft == 0) throw HostFailure();
        --callsLeft;
    }

    std::uint32_t callsLeft;
};

class ExtractionStages
{
public:
    explicit ExtractionStages(Bytes& bytes)
        : parameters(parametersOf(bytes)),
          samples(fuzz::soundOf(bytes, 0x400)),
          claim(static_cast<std::uint32_t>(samples.size())),
          extractor(twins::toLibrary(parameters))
    {
    }

    void operate(Bytes& bytes);
    // As if no operation had gone before.
    void runAsTwin();
    VXS::VXFile* extract(std::int64_t fileID);

private:
    static plain::Parameters parametersOf(Bytes& bytes);
    void findNeighbours(Bytes& bytes);
    void computeThreshold(Bytes& bytes);
    void smooth(Bytes& bytes);

    plain::Parameters parameters;
    Samples samples;
    std::uint32_t claim;
    VXS::VXLandmarkExtract extractor;
    // Takes landmarks that are not looked at further.
    VXS::VXFile file{1};
};

// Small, so that a stage makes many frames of little sound.
plain::Parameters ExtractionStages::parametersOf(Bytes& bytes)
{
    plain::Parameters parameters;
    parameters.fftSize = 8u << bytes.below(4);
    parameters.hopSize = bytes.pick({parameters.fftSize / 2u, parameters.fftSize, 5u, 33u});
    parameters.initialFrames = bytes.pick({10u, 1u, 0u});
    return parameters;
}

void ExtractionStages::findNeighbours(Bytes& bytes)
{
    VXS::Peak anchor{bytes.raw<std::int16_t>(), 0.0f, bytes.raw<std::int16_t>()};
    if (bytes.oneIn(8)) anchor.time = std::numeric_limits<std::int32_t>::max();
    if (bytes.oneIn(8)) anchor.frequency = std::numeric_limits<std::int32_t>::min();
    std::vector<VXS::Peak*> neighbours;
    extractor.findNeighborPeaks(bytes.oneIn(8) ? nullptr : &anchor, neighbours);
    require(neighbours.size() <= parameters.maxPairsPerPeak + std::size_t{1},
            "at most one neighbour more than the limit says");
}

void ExtractionStages::computeThreshold(Bytes& bytes)
{
    signals::SignalInput source(samples, claim);
    VXS::array<float> threshold(bytes.between(0, 40));
    std::fill(threshold.data, threshold.data + threshold.count(), 0.0f);
    extractor.computeInitialThreshold(threshold, bytes.oneIn(8) ? nullptr : &source);
}

void ExtractionStages::smooth(Bytes& bytes)
{
    VXS::array<float> envelope(bytes.between(0, 40));
    for (std::int32_t i = 0; i < envelope.count(); ++i)
        envelope.data[i] = bytes.oneIn(4) ? bytes.raw<float>() : bytes.raw<std::int8_t>();
    extractor.smooth(envelope);
}

void ExtractionStages::operate(Bytes& bytes)
{
    signals::SignalInput source(samples, claim);
    switch (bytes.below(12)) {
    case 0:
        extractor.setupFFT();
        break;
    case 1:
        computeThreshold(bytes);
        break;
    case 2:
    case 3:
        extractor.findFreqPeaks(bytes.oneIn(16) ? nullptr : &source);
        break;
    case 4:
        extractor.prune();
        break;
    case 5:
        extractor.combine(bytes.oneIn(8) ? nullptr : &file);
        break;
    case 6:
        findNeighbours(bytes);
        break;
    case 7:
        smooth(bytes);
        break;
    case 8:
        extractor.dB(bytes.raw<float>());
        break;
    case 9:
        extractor.printPeaks();
        break;
    case 10:
        runAsTwin();
        break;
    default:
        require(extractor.loadFile("") == nullptr, "no file without a path");
        delete extractor.runAll({});
        break;
    }
}

void ExtractionStages::runAsTwin()
{
    plain::Extractor twin(parameters);
    plain::Recording recording(5);
    twins::Source plainSource(samples, claim);
    twin.run(plainSource, recording);
    const std::unique_ptr<VXS::VXFile> extracted(extract(5));
    fuzz::requireSamePeaks(extractor, twin);
    fuzz::requireSameLandmarks(*extracted, recording);
}

VXS::VXFile* ExtractionStages::extract(std::int64_t fileID)
{
    signals::SignalInput source(samples, claim);
    return extractor.run(&source, fileID);
}

class SynchronisationStages
{
public:
    SynchronisationStages()
        : indexer(250), decision(VXS::VXClusterSyncParams(VXS::VXExtractParams()))
    {
    }

    void addFile(VXS::VXFile* file);
    void operate(Bytes& bytes);
    // As if no operation had gone before.
    void run();

private:
    VXS::VXFile* anyFile(Bytes& bytes);
    VXS::VXHistogramSet* anyHistograms(Bytes& bytes);
    void addLandmarks(Bytes& bytes);
    void countLandmarks(Bytes& bytes);
    void index(Bytes& bytes);
    void keep(VXS::VXHistogramSet* made) { histograms.emplace_back(made); }
    void evaluate(Bytes& bytes);
    void measureOverlap(Bytes& bytes);
    void measureBins(Bytes& bytes);
    void decide(Bytes& bytes);
    void runAll(Bytes& bytes);

    VXS::VXFileSet fileSet;
    VXS::VXFileSetProcessor indexer;
    VXS::VXHistogramSetProcessor evaluation;
    VXS::VXMergeStatsSetProcessor decision;
    std::vector<VXS::VXHistogramSetHolder> histograms;
    std::vector<VXS::VXMergeStatsSetHolder> records;
    std::size_t landmarks = 0;
};

// Of an id that is taken the earlier file stays.
void SynchronisationStages::addFile(VXS::VXFile* file)
{
    std::unique_ptr<VXS::VXFile> holder(file);
    require(fileSet.addFile(file) == file, "a file that comes back");
    if (fileSet.getFiles().at(file->getFileID()) == file) holder.release();
}

VXS::VXFile* SynchronisationStages::anyFile(Bytes& bytes)
{
    const auto& files = fileSet.getFiles();
    const std::uint32_t place = bytes.below(static_cast<std::uint32_t>(files.size()) + 1u);
    return place == files.size() ? nullptr : std::next(files.begin(), place)->second;
}

VXS::VXHistogramSet* SynchronisationStages::anyHistograms(Bytes& bytes)
{
    const std::uint32_t place = bytes.below(static_cast<std::uint32_t>(histograms.size()) + 1u);
    return place == histograms.size() ? nullptr : histograms[place].get();
}

void SynchronisationStages::addLandmarks(Bytes& bytes)
{
    VXS::VXFile* file = anyFile(bytes);
    std::int32_t offset = bytes.raw<std::int8_t>();
    std::uint32_t key = bytes.byte();
    const std::int32_t step = bytes.between(0, 4);
    const std::uint32_t keyStep = bytes.below(3);
    for (std::uint32_t count = bytes.below(130); count > 0; --count) {
        if (file == nullptr || landmarks >= mostLandmarks) return;
        ++landmarks;
        file->addLandmark(new VXS::VXLandmark(offset, file, key));
        offset += step;
        key += keyStep;
    }
    if (file != nullptr) file->addLandmark(nullptr);
}

void SynchronisationStages::countLandmarks(Bytes& bytes)
{
    VXS::VXFile* file = anyFile(bytes);
    if (file == nullptr) {
        fileSet.computeAllCLFs();
        return;
    }
    if (bytes.oneIn(2)) file->computeCLF();
    const bool isWide = bytes.oneIn(2);
    const std::int64_t start = isWide ? bytes.raw<std::int64_t>() : bytes.raw<std::int16_t>();
    const std::int64_t end = isWide ? bytes.raw<std::int64_t>() : bytes.raw<std::int16_t>();
    require(file->queryNumberLandmarksInBetween(start, end) >= (file->clfDirty ? -1 : 0),
            "no negative number of landmarks");
}

void SynchronisationStages::index(Bytes& bytes)
{
    Progress progress(bytes);
    VXS::VXProgress* told = bytes.oneIn(2) ? &progress : nullptr;
    VXS::VXFile* file = nullptr;
    try {
        switch (bytes.below(6)) {
        case 0:
            indexer.addLandmarks(bytes.oneIn(8) ? nullptr : &fileSet, told);
            break;
        case 1:
            file = anyFile(bytes);
            if (file != nullptr) indexer.addLandmarks(file);
            break;
        case 2:
            indexer.purgeSingletons();
            break;
        case 3:
        case 4:
            keep(indexer.convert2Histograms(told));
            break;
        default:
            keep(indexer.run(&fileSet, told));
            break;
        }
    } catch (const HostFailure&) {
    }
}

void SynchronisationStages::evaluate(Bytes& bytes)
{
    VXS::VXHistogramSet* set = anyHistograms(bytes);
    VXS::VXFileSet* files = bytes.oneIn(8) ? nullptr : &fileSet;
    VXS::VXMergeStatsSetHolder made(evaluation.run(files, set));
    require((made == nullptr) == (files == nullptr || set == nullptr), "records where they can be");
    if (made == nullptr) return;
    require(made->size() == set->size(), "one record for each pair");
    records.push_back(std::move(made));
}

void SynchronisationStages::measureOverlap(Bytes& bytes)
{
    VXS::VXFile* first = anyFile(bytes);
    VXS::VXFile* second = anyFile(bytes);
    const float offset = bytes.oneIn(2) ? bytes.raw<float>() : bytes.raw<std::int16_t>();
    float countFirst = 0.0f;
    float countSecond = 0.0f;
    evaluation.proposedOverlapRegion(first, second, offset, countFirst, countSecond);
}

void SynchronisationStages::measureBins(Bytes& bytes)
{
    VXS::VXHistogramSet* set = anyHistograms(bytes);
    if (set == nullptr) return;
    const std::int64_t wide = bytes.raw<std::int16_t>();
    for (const auto& [pair, histogram] : *set) {
        for (const std::int64_t offset : {wide, histogram->bestBin().offset}) {
            float percentA = -1.0f;
            float percentB = -1.0f;
            float length = -1.0f;
            evaluation.offset2Percetage(pair, histogram, offset, percentA, percentB, length,
                                        &fileSet);
        }
    }
}

void SynchronisationStages::decide(Bytes& bytes)
{
    const std::uint32_t place = bytes.below(static_cast<std::uint32_t>(records.size()) + 1u);
    VXS::VXMergeStatsSet* set = place == records.size() ? nullptr : records[place].get();
    const VXS::VXClusterResultHolder result(decision.run(&fileSet, set));
    require((result == nullptr) == (set == nullptr), "clusters of every set of records");
}

void SynchronisationStages::runAll(Bytes& bytes)
{
    Progress progress(bytes);
    VXS::VXClusterSync whole{VXS::VXClusterSyncParams(VXS::VXExtractParams())};
    VXS::VXFileSet* files = bytes.oneIn(8) ? nullptr : &fileSet;
    try {
        const VXS::VXClusterResultHolder result(whole.run(files, &progress));
        require((result == nullptr) == (files == nullptr), "clusters of every set of files");
    } catch (const HostFailure&) {
    }
}

void SynchronisationStages::operate(Bytes& bytes)
{
    switch (bytes.below(9)) {
    case 0:
        addLandmarks(bytes);
        break;
    case 1:
        countLandmarks(bytes);
        break;
    case 2:
    case 3:
        index(bytes);
        break;
    case 4:
        evaluate(bytes);
        break;
    case 5:
        measureOverlap(bytes);
        break;
    case 6:
        measureBins(bytes);
        break;
    case 7:
        runAll(bytes);
        break;
    default:
        decide(bytes);
        break;
    }
}

void requireSameBins(const VXS::VXHistogram& used, const VXS::VXHistogram& fresh)
{
    require(used.size() == fresh.size(), "as many bins from a used processor");
    auto bin = used.begin();
    for (const VXS::VXHistogram::Bin& expected : fresh) {
        require(bin->offset == expected.offset, "the same offsets from a used processor");
        require(bin->votes == expected.votes, "the same votes from a used processor");
        ++bin;
    }
    const VXS::VXHistogram::Ends ends = used.endsOf(fresh.bestBin().offset);
    const VXS::VXHistogram::Ends expectedEnds = fresh.endsOf(fresh.bestBin().offset);
    require(ends.least != nullptr && ends.least == expectedEnds.least, "the same least vote");
    require(ends.greatest != nullptr && ends.greatest == expectedEnds.greatest,
            "the same greatest vote");
}

// Once with the processors that have been through all this, once with new ones.
void SynchronisationStages::run()
{
    fileSet.computeAllCLFs();
    const VXS::VXHistogramSetHolder old(indexer.run(&fileSet, nullptr));
    const VXS::VXHistogramSetHolder fresh(VXS::VXFileSetProcessor(250).run(&fileSet, nullptr));
    require(old->size() == fresh->size(), "the same pairs from a used processor");
    for (const auto& [pair, histogram] : *fresh) {
        requireSameBins(*old->at(pair), *histogram);
    }
    const VXS::VXMergeStatsSetHolder usedRecords(evaluation.run(&fileSet, old.get()));
    const VXS::VXClusterResultHolder used(decision.run(&fileSet, usedRecords.get()));
    const VXS::VXClusterResultHolder whole(
        VXS::VXClusterSync(VXS::VXClusterSyncParams(VXS::VXExtractParams()))
            .run(&fileSet, nullptr));
    fuzz::requireSameClusters(*used, fuzz::clustersOf(*whole));
}

// Bins of any offsets and votes, beside a map.
void comparePacking(Bytes& bytes)
{
    VXS::VXHistogram histogram;
    std::map<std::int64_t, std::uint64_t> bins;
    std::int64_t offset = bytes.oneIn(2) ? bytes.raw<std::int64_t>() : bytes.raw<std::int8_t>();
    float most = 0.0f;
    std::int64_t best = 0;
    for (std::uint32_t count = bytes.below(40); count > 0; --count) {
        const std::uint64_t votes =
            bytes.oneIn(4) ? bytes.raw<std::uint64_t>() : bytes.raw<std::uint8_t>();
        histogram.append(offset, votes);
        bins[offset] = votes;
        if (static_cast<float>(votes) >= most) {
            most = static_cast<float>(votes);
            best = offset;
        }
        const std::uint64_t step =
            bytes.oneIn(4) ? bytes.raw<std::uint64_t>() : bytes.pick({1u, 1u, 2u, 300u});
        const auto next = static_cast<std::int64_t>(static_cast<std::uint64_t>(offset) + step);
        if (next <= offset) break;
        offset = next;
    }

    require(histogram.size() == bins.size(), "as many bins as were appended");
    require(histogram.bestBin().offset == best, "the best bin's offset");
    require(histogram.bestBin().votes == most, "the best bin's votes");
    auto bin = histogram.begin();
    for (const auto& [expected, votes] : bins) {
        require(bin->offset == expected && bin->votes == votes, "the bins as they were appended");
        const auto found = histogram.find(expected);
        require(found != histogram.end() && found->votes == votes, "a bin found by its offset");
        ++bin;
    }
    require(bin == histogram.end(), "an end behind the last bin");
    const std::int64_t absent = bytes.raw<std::int64_t>();
    require((histogram.find(absent) == histogram.end()) == (bins.count(absent) == 0),
            "no bin that was not appended");
}

float anyNumber(Bytes& bytes)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    if (bytes.oneIn(8)) return bytes.pick({infinity, -infinity, nan, 0.0f, -0.0f, 3e38f, 93.75f});
    return static_cast<float>(bytes.raw<std::int16_t>()) / 8.0f;
}

// Records made by hand, in part of files that the set lacks, beside the twin of the clusters.
void compareDecision(Bytes& bytes)
{
    VXS::VXFileSet fileSet;
    std::set<std::int64_t> ids;
    const std::int64_t fileCount = bytes.below(9);
    for (std::int64_t id = 0; id < fileCount; ++id) {
        ids.insert(id);
        fileSet.addFile(new VXS::VXFile(id));
    }
    const VXS::VXMergeStatsSetHolder stats(new VXS::VXMergeStatsSet());
    std::map<fuzz::Pair, fuzz::PairRecord> twin;
    for (std::uint32_t count = bytes.below(30); count > 0; --count) {
        const fuzz::Pair pair{bytes.below(10), bytes.below(10)};
        if (pair.first >= pair.second || stats->count(pair) != 0) continue;
        if (bytes.oneIn(8)) {
            (*stats)[pair] = nullptr;
            continue;
        }
        // Most are good enough in all but one of their numbers.
        fuzz::PairRecord record{50.0f, 10.0f, 200.0f, 400.0f, 0.5f, 0.5f, 0.0f, 0.5f};
        record.peakCount = static_cast<float>(bytes.below(16)) * 10.0f;
        record.bestOffset = anyNumber(bytes);
        float* const fields[] = {&record.peakCount,     &record.templateMatchLength,
                                 &record.overlapLength, &record.percentMatchA,
                                 &record.percentMatchB, &record.meanCount,
                                 &record.stdDevCount,   &record.bestOffset};
        if (bytes.oneIn(4)) *fields[bytes.below(8)] = anyNumber(bytes);
        twin[pair] = record;
        auto made = std::make_unique<VXS::VXMergeStats>(nullptr);
        made->fileA = pair.first;
        made->fileB = pair.second;
        made->peakCount = record.peakCount;
        made->bestOffset = record.bestOffset;
        made->templateMatchLength = record.templateMatchLength;
        made->overlapLength = record.overlapLength;
        made->percentMatchA = record.percentMatchA;
        made->percentMatchB = record.percentMatchB;
        made->meanCount = record.meanCount;
        made->stdDevCount = record.stdDevCount;
        (*stats)[pair] = made.release();
    }

    const VXS::VXClusterSyncParams params{VXS::VXExtractParams()};
    VXS::VXMergeStatsSetProcessor decision(params);
    const auto expected = fuzz::Clusters(params.getAudioFramesPerSecond()).run(ids, twin);
    for (int i = 0; i < 2; ++i) {
        const VXS::VXClusterResultHolder result(decision.run(&fileSet, stats.get()));
        fuzz::requireSameClusters(*result, expected);
    }
    for (const auto& [pair, record] : twin)
        require(stats->at(pair)->merged == record.isAccepted, "the pairs that the twin accepts");
}

// Merges of ids that are known or not, alike or not.
void mergeAnyhow(Bytes& bytes)
{
    VXS::VXFileSet fileSet;
    std::set<std::int64_t> ids;
    for (std::int64_t id = bytes.below(8); id > 0; --id) {
        fileSet.addFile(new VXS::VXFile(id));
        ids.insert(id);
    }
    VXS::VXMerger merger;
    VXS::VXClusterInternal cluster;
    merger.init(bytes.oneIn(4) ? nullptr : &fileSet);
    const bool isFilled = !merger.fileClusters.empty();
    cluster.init(ids);
    // A file that nobody knows pushes out the sub-cluster that stands at the number of such files.
    bool areKnown = true;
    for (std::uint32_t count = bytes.below(16); count > 0; --count) {
        const std::int64_t first = bytes.below(10);
        const std::int64_t second = bytes.below(10);
        areKnown = areKnown && ids.count(first) != 0 && ids.count(second) != 0;
        merger.mergeClusters(first, second);
        cluster.merge(first, second, anyNumber(bytes));
    }
    cluster.normalizeOffsets();
    std::set<std::int64_t> left;
    for (const auto& offsets : cluster.getCluster()) {
        for (const auto& [id, offset] : offsets)
            require(left.insert(id).second, "an id in one sub-cluster alone");
    }
    require(!areKnown || left == ids, "the ids as they were");
    require(std::includes(ids.begin(), ids.end(), left.begin(), left.end()), "no id from nowhere");
    std::set<std::int64_t> grouped;
    for (const auto& group : merger.fileClusters) {
        for (const std::int64_t id : group)
            require(grouped.insert(id).second, "an id in one group alone");
    }
    require(!isFilled || grouped == ids, "the ids of the set and no others");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const fuzz::SilentConsole silence;
    Bytes bytes(data, size);
    switch (bytes.below(8)) {
    case 4:
        comparePacking(bytes);
        return 0;
    case 5:
        compareDecision(bytes);
        return 0;
    case 6:
        mergeAnyhow(bytes);
        return 0;
    default:
        break;
    }

    Bytes sound = bytes.split(bytes.byte());
    ExtractionStages extraction(sound);
    SynchronisationStages synchronisation;
    for (int i = 0; i < mostOperations && !bytes.empty(); ++i) {
        const std::uint32_t kind = bytes.below(8);
        if (kind == 0) {
            synchronisation.addFile(extraction.extract(bytes.raw<std::int8_t>()));
        } else if (kind == 1) {
            synchronisation.addFile(new VXS::VXFile(bytes.raw<std::int8_t>()));
        } else if (kind < 4) {
            extraction.operate(bytes);
        } else {
            synchronisation.operate(bytes);
        }
    }
    extraction.runAsTwin();
    synchronisation.run();
    return 0;
}
