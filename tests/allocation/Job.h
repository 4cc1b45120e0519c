#ifndef ALLOCATION_JOB_H
#define ALLOCATION_JOB_H

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <tuple>
#include <vector>

#include "Landmarks.h"
#include "Signals.h"
#include "VXClusterSyncParams.h"
#include "VXExtractParams.h"
#include "VXFileSet.h"

// Jobs that are as small as jobs can be in which every part has something to do.
namespace job
{

// Frames of 64 samples, 32 apart, and few landmarks in each.
VXS::VXExtractParams smallParams();
// Those that belong to them, with a limit on lengths that small jobs reach.
VXS::VXClusterSyncParams smallSyncParams();

// Name, path and landmarks by id.
using FileSetView =
    std::map<std::int64_t, std::tuple<std::string, std::string, std::vector<signals::LandmarkRow>>>;
FileSetView viewOf(VXS::VXFileSet& fileSet);
// Whether every entry is in the whole as well.
bool isPartOf(const FileSetView& part, const FileSetView& whole);

// Recordings 1, 2 and 3 of one event, 4 and 5 of another, and 6 of none, by landmarks.
std::unique_ptr<VXS::VXFileSet> someFileSet();
// What comes of them with smallSyncParams.
std::vector<VXS::support::Cluster> clustersOfSomeFileSet();

} // namespace job

#endif
