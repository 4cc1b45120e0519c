#include "match/DisputeGroups.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <set>
#include <utility>
#include <vector>

namespace vxlsync
{

namespace
{

// Landmarks are right to a frame of 32 ms, and a group's line to less; what is further away is
// another place.
constexpr double otherPlaceSeconds = 0.2;
// So many pairs are looked at, of the thousands that music full of repeats has: of a small job all
// or nearly all, and of a large one so many of each recording.
constexpr std::size_t disputesOfJob = 500;
constexpr std::size_t fewestDisputesOfRecording = 8;

// Each pair counts for two recordings.
std::size_t disputesOfEach(std::size_t recordings)
{
    return std::max(fewestDisputesOfRecording,
                    2 * disputesOfJob / std::max<std::size_t>(1, recordings));
}

bool isDisputed(const LandmarkOffset& landmark, const SearchState& search)
{
    const Gathering& gathering = search.gathering;
    const RecordingPair pair{landmark.first, landmark.second};
    if (landmark.standing < clearStanding || !search.mayCompare(pair.first, pair.second) ||
        gathering.groupOf(pair.first) != gathering.groupOf(pair.second) ||
        search.book.count({pair.first, pair.second}) > 0)
        return false;
    const KnownLine line = gathering.lineOf(pair.first, pair.second);
    return std::fabs(landmark.offset - line.offset) > otherPlaceSeconds;
}

} // namespace

void lookAtDisputes(double beginShare, double endShare, SearchState& search)
{
    std::vector<LandmarkOffset> disputed;
    std::copy_if(search.landmarks.begin(), search.landmarks.end(), std::back_inserter(disputed),
                 [&](const LandmarkOffset& landmark) { return isDisputed(landmark, search); });
    std::stable_sort(disputed.begin(), disputed.end(),
                     [](const LandmarkOffset& left, const LandmarkOffset& right) {
                         return left.standing > right.standing;
                     });
    const std::size_t most = disputesOfEach(search.recordings.size());
    std::vector<std::size_t> taken(search.recordings.size(), 0);
    std::set<std::pair<std::size_t, std::size_t>> pairs;
    for (const LandmarkOffset& landmark : disputed) {
        std::size_t& ofFirst = taken[landmark.first];
        std::size_t& ofSecond = taken[landmark.second];
        if (std::max(ofFirst, ofSecond) >= most) continue;
        if (!pairs.emplace(landmark.first, landmark.second).second) continue;
        ++ofFirst;
        ++ofSecond;
    }
    std::vector<LookTask> tasks;
    for (const auto& [first, second] : pairs) {
        const RecordingPair pair{first, second};
        tasks.push_back({pair, landmarkProposals(pair, search)});
    }
    search.run.meter.part({beginShare, endShare, tasks.size()});
    look(tasks, search);
}

} // namespace vxlsync
