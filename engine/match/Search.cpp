#include "match/Search.h"

#include "match/BetweenGroups.h"
#include "match/CompleteGroups.h"
#include "match/FollowLandmarks.h"

namespace vxlsync
{

namespace
{

// Of a job in which most recordings are tied by what the landmarks tell: the shares of the stage at
// which that and the measuring within the groups end.
constexpr double landmarksEndShare = 0.4;
constexpr double completedShare = 0.7;

Links linksOf(const LinkBook& book)
{
    Links all;
    for (const auto& entry : book)
        all.insert(all.end(), entry.second.begin(), entry.second.end());
    return all;
}

} // namespace

Links searchPairs(const std::vector<Prepared>& recordings, const std::vector<std::string>& devices,
                  const std::vector<LandmarkOffset>& landmarks, Run& run)
{
    run.meter.begin(Stage::comparing, 0);
    SearchState search(recordings, devices, landmarks, run);
    followLandmarks(landmarksEndShare, search);
    completeGroups(landmarksEndShare, completedShare, search);
    searchBetweenGroups(completedShare, search);
    run.meter.part({1.0, 1.0, 0});
    return linksOf(search.book);
}

} // namespace vxlsync
