#include "Landmarks.h"

#include <algorithm>
#include <ostream>

#include <gtest/gtest.h>

namespace VXS::support
{

std::unique_ptr<VXFile> fileWith(const std::vector<std::int32_t>& frames, std::int64_t fileID)
{
    auto file = std::make_unique<VXFile>(fileID);
    for (const std::int32_t frame : frames)
        file->addLandmark(new VXLandmark(frame, file.get(), 0));
    return file;
}

std::unique_ptr<VXFile> countedFileWith(const std::vector<std::int32_t>& frames,
                                        std::int64_t fileID)
{
    auto file = fileWith(frames, fileID);
    file->computeCLF();
    return file;
}

VXFile* addFileWith(VXFileSet& fileSet, std::int64_t fileID, const std::vector<KeyAtFrame>& marks)
{
    auto file = std::make_unique<VXFile>(fileID);
    for (const KeyAtFrame& mark : marks)
        file->addLandmark(new VXLandmark(mark.frame, file.get(), mark.key));
    return fileSet.addFile(file.release());
}

VXFile* addCountedFile(VXFileSet& fileSet, std::int64_t fileID,
                       const std::vector<std::int32_t>& frames)
{
    return fileSet.addFile(countedFileWith(frames, fileID).release());
}

void addEmptyFiles(VXFileSet& fileSet, const std::vector<std::int64_t>& fileIDs)
{
    for (const std::int64_t fileID : fileIDs)
        addFileWith(fileSet, fileID, {});
}

VXLandmark* landmarkAt(VXFile& file, std::int64_t frame, std::size_t place)
{
    return file.getLandmarkMap().at(frame).at(place);
}

bool hasBin(const VXHistogram& histogram, std::int64_t offset)
{
    return histogram.find(offset) != histogram.end();
}

std::size_t votesIn(const VXHistogram& histogram, std::int64_t offset)
{
    const auto bin = histogram.find(offset);
    return bin == histogram.end() ? 0 : static_cast<std::size_t>(bin->votes);
}

const VXLandmark* leastVoteIn(const VXHistogram& histogram, std::int64_t offset)
{
    return histogram.endsOf(offset).least;
}

const VXLandmark* greatestVoteIn(const VXHistogram& histogram, std::int64_t offset)
{
    return histogram.endsOf(offset).greatest;
}

namespace
{

struct Bin {
    std::uint64_t votes = 0;
    VXHistogram::Ends ends;
};

// A histogram takes its bins in ascending order only, so it is taken apart and put together anew.
std::map<std::int64_t, Bin> binsOf(const VXHistogram& histogram)
{
    std::map<std::int64_t, Bin> bins;
    for (const VXHistogram::Bin& bin : histogram)
        bins[bin.offset] = {bin.votes, histogram.endsOf(bin.offset)};
    return bins;
}

VXHistogram histogramOf(const std::map<std::int64_t, Bin>& bins)
{
    VXHistogram histogram;
    for (const auto& [offset, bin] : bins) {
        histogram.append(offset, bin.votes);
        if (bin.ends.least != nullptr) histogram.keepEnds(offset, bin.ends);
    }
    return histogram;
}

} // namespace

void addVotes(VXHistogram& histogram, std::int64_t offset,
              const std::vector<VXLandmark*>& landmarks)
{
    std::map<std::int64_t, Bin> bins = binsOf(histogram);
    Bin& bin = bins[offset];
    for (VXLandmark* landmark : landmarks) {
        VXLandmark*& least = bin.ends.least;
        VXLandmark*& greatest = bin.ends.greatest;
        if (least == nullptr || landmark->getOffset() <= least->getOffset()) least = landmark;
        if (greatest == nullptr || landmark->getOffset() >= greatest->getOffset())
            greatest = landmark;
        ++bin.votes;
    }
    histogram = histogramOf(bins);
}

void addVotes(VXHistogram& histogram, std::int64_t offset, std::size_t votes, VXLandmark* landmark)
{
    addVotes(histogram, offset, std::vector<VXLandmark*>(votes, landmark));
}

void addBinWithoutVotes(VXHistogram& histogram, std::int64_t offset)
{
    addVotes(histogram, offset, std::vector<VXLandmark*>());
}

VoteCounts voteCountsOf(const VXHistogram& histogram)
{
    VoteCounts counts;
    for (const auto& bin : histogram)
        counts[bin.offset] = static_cast<std::size_t>(bin.votes);
    return counts;
}

std::map<std::pair<std::int64_t, std::int64_t>, VoteCounts>
voteCountsOf(const VXHistogramSet& histograms)
{
    std::map<std::pair<std::int64_t, std::int64_t>, VoteCounts> counts;
    for (const auto& entry : histograms)
        counts[entry.first] = voteCountsOf(*entry.second);
    return counts;
}

ProgressEvent stageEvent(int stage)
{
    return {ProgressEvent::Stage, stage, 0.0f};
}

ProgressEvent fractionEvent(float fraction)
{
    return {ProgressEvent::Fraction, 0, fraction};
}

bool operator==(const ProgressEvent& left, const ProgressEvent& right)
{
    return left.kind == right.kind && left.stage == right.stage && left.fraction == right.fraction;
}

std::ostream& operator<<(std::ostream& stream, const ProgressEvent& event)
{
    if (event.kind == ProgressEvent::Stage) return stream << "stage " << event.stage;
    return stream << "fraction " << ::testing::PrintToString(event.fraction);
}

void RecordingProgress::setStage(int stage)
{
    keep(stageEvent(stage));
}

void RecordingProgress::setFraction(float fraction)
{
    keep(fractionEvent(fraction));
}

void RecordingProgress::keep(const ProgressEvent& event)
{
    events.push_back(event);
    if (onEvent) onEvent(event);
}

bool operator==(const Member& left, const Member& right)
{
    return left.fileID == right.fileID && left.offsetSeconds == right.offsetSeconds &&
           left.name == right.name;
}

std::ostream& operator<<(std::ostream& stream, const Member& member)
{
    return stream << member.fileID << " '" << member.name << "' at "
                  << ::testing::PrintToString(member.offsetSeconds) << " s";
}

std::vector<Cluster> resultOf(VXClusterResult* result)
{
    std::vector<Cluster> clusters;
    EXPECT_NE(result, nullptr) << "expected a result";
    if (result == nullptr) return clusters;
    for (VXClusterMembers* members : *result) {
        Cluster cluster;
        for (VXClusterMember* member : *members) {
            cluster.push_back({member->fileID, member->offsetSeconds, member->name});
            delete member;
        }
        clusters.push_back(cluster);
        delete members;
    }
    delete result;
    std::sort(clusters.begin(), clusters.end(), [](const Cluster& left, const Cluster& right) {
        if (left.empty() || right.empty()) return left.empty() && !right.empty();
        return left.front().fileID < right.front().fileID;
    });
    return clusters;
}

} // namespace VXS::support
