#ifndef VXS_TESTS_SUPPORT_LANDMARKS_H
#define VXS_TESTS_SUPPORT_LANDMARKS_H

#include <cstddef>
#include <cstdint>
#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "VXClusterSync.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXHistogram.h"
#include "VXLandmark.h"

namespace VXS::support
{

// A file with one landmark of key 0 at each of the given frames, in the given order. Its CLF is
// still stale.
std::unique_ptr<VXFile> fileWith(const std::vector<std::int32_t>& frames, std::int64_t fileID = 1);

// The same, ready for queries.
std::unique_ptr<VXFile> countedFileWith(const std::vector<std::int32_t>& frames,
                                        std::int64_t fileID = 1);

struct KeyAtFrame {
    std::uint32_t key;
    std::int32_t frame;
};

// Puts a new file with one landmark for each mark into the set, which owns it.
VXFile* addFileWith(VXFileSet& fileSet, std::int64_t fileID, const std::vector<KeyAtFrame>& marks);

// Puts a file with landmarks of key 0 into the set and brings its CLF up to date.
VXFile* addCountedFile(VXFileSet& fileSet, std::int64_t fileID,
                       const std::vector<std::int32_t>& frames);

// Enough recordings without landmarks to stand for the ids.
void addEmptyFiles(VXFileSet& fileSet, const std::vector<std::int64_t>& fileIDs);

// The landmark in the given place of the frame's list. The file keeps it.
VXLandmark* landmarkAt(VXFile& file, std::int64_t frame, std::size_t place = 0);

// Everything that looks into a bin stands here, so that a test says what a bin tells and not how it
// is stored.
bool hasBin(const VXHistogram& histogram, std::int64_t offset);
// 0 where there is no such bin.
std::size_t votesIn(const VXHistogram& histogram, std::int64_t offset);
// The landmark of the least, or greatest, position among the votes of a bin; of equal positions the
// one that voted last. Null where there is no such bin, and where its ends are not kept.
const VXLandmark* leastVoteIn(const VXHistogram& histogram, std::int64_t offset);
const VXLandmark* greatestVoteIn(const VXHistogram& histogram, std::int64_t offset);
// Casts one vote for each landmark, in order. The landmarks are borrowed.
void addVotes(VXHistogram& histogram, std::int64_t offset,
              const std::vector<VXLandmark*>& landmarks);
// Casts several votes of one landmark.
void addVotes(VXHistogram& histogram, std::int64_t offset, std::size_t votes, VXLandmark* landmark);
// A bin that no landmark voted for, which no histogram of the library ever holds.
void addBinWithoutVotes(VXHistogram& histogram, std::int64_t offset);

// Votes by offset.
using VoteCounts = std::map<std::int64_t, std::size_t>;
VoteCounts voteCountsOf(const VXHistogram& histogram);
// Votes by offset, by pair of file ids.
std::map<std::pair<std::int64_t, std::int64_t>, VoteCounts>
voteCountsOf(const VXHistogramSet& histograms);

// One call of a VXProgress.
struct ProgressEvent {
    enum Kind { Stage, Fraction };
    Kind kind;
    int stage;
    float fraction;
};
ProgressEvent stageEvent(int stage);
ProgressEvent fractionEvent(float fraction);
bool operator==(const ProgressEvent& left, const ProgressEvent& right);
std::ostream& operator<<(std::ostream& stream, const ProgressEvent& event);

// Keeps every call in order. `onEvent`, if there is one, is called after the event is kept, and may
// throw.
class RecordingProgress final : public VXProgress
{
public:
    void setStage(int stage) override;
    void setFraction(float fraction) override;

    std::vector<ProgressEvent> events;
    std::function<void(const ProgressEvent&)> onEvent;

private:
    void keep(const ProgressEvent& event);
};

struct Member {
    std::int64_t fileID;
    float offsetSeconds;
    std::string name;
};
bool operator==(const Member& left, const Member& right);
std::ostream& operator<<(std::ostream& stream, const Member& member);

using Cluster = std::vector<Member>;

// The clusters by their lowest id, an empty one first, each with its members in the order of the
// set. Frees the result as a host would. Fails the test, and answers with nothing, on null.
std::vector<Cluster> resultOf(VXClusterResult* result);

} // namespace VXS::support

#endif
