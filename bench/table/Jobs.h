#ifndef VXS_BENCH_JOBS_H
#define VXS_BENCH_JOBS_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "VXExtractParams.h"
#include "VXFileSet.h"

namespace bench
{

std::unique_ptr<VXS::VXFileSet> extractFiles(const std::vector<std::string>& paths);

std::size_t landmarksIn(VXS::VXFileSet& fileSet);

// Takes the set back to what extraction made, so that the cumulative counts are work again.
void forgetCounts(VXS::VXFileSet& fileSet);

// Seconds of each stage of one synchronisation, by processor time.
struct StageTimes {
    double counts = 0.0;
    double index = 0.0;
    double votes = 0.0;
    double evaluation = 0.0;
    double release = 0.0;
    double merge = 0.0;

    double withoutMerge() const { return counts + index + votes + evaluation; }
    double all() const { return withoutMerge() + release + merge; }
};

struct Synchronisation {
    StageTimes times;
    std::uint64_t votes = 0;
    std::size_t clusters = 0;
    std::size_t largestCluster = 0;
};

// The stages of VXClusterSync::run one by one, on a set whose counts are forgotten first.
Synchronisation synchronise(VXS::VXFileSet& fileSet);

// The run of the middle among several, by its whole time.
Synchronisation synchroniseRepeatedly(VXS::VXFileSet& fileSet, int runs);

} // namespace bench

#endif
