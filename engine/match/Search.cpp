#include "match/Search.h"

#include "match/BetweenGroups.h"
#include "match/CompleteGroups.h"
#include "match/DisputeGroups.h"
#include "match/FollowLandmarks.h"
#include "match/Rivals.h"

namespace vxlsync
{

namespace
{

// Of a job in which most recordings are tied by what the landmarks tell: the shares of the stage at
// which that, the measuring within the groups and the search between them end.
constexpr double landmarksEndShare = 0.4;
constexpr double completedShare = 0.6;
constexpr double betweenEndShare = 0.8;
constexpr double disputesEndShare = 0.9;

} // namespace

Links searchPairs(const std::vector<Prepared>& recordings, const std::vector<std::string>& devices,
                  const std::vector<LandmarkOffset>& landmarks, Run& run)
{
    run.meter.begin(Stage::comparing, 0);
    SearchState search(recordings, devices, landmarks, run);
    followLandmarks(landmarksEndShare, search);
    completeGroups(landmarksEndShare, completedShare, search);
    searchBetweenGroups(completedShare, betweenEndShare, search);
    lookAtDisputes(betweenEndShare, disputesEndShare, search);
    lookForRivals(disputesEndShare, 1.0, search);
    run.meter.part({1.0, 1.0, 0});
    return linksIn(search.book);
}

} // namespace vxlsync
