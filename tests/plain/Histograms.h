#ifndef PLAIN_HISTOGRAMS_H
#define PLAIN_HISTOGRAMS_H

#include <cstdint>
#include <map>
#include <utility>
#include <vector>

#include "plain/Recording.h"

namespace plain
{

using Pair = std::pair<std::int64_t, std::int64_t>;
// A vote is the landmark of the recording with the lower id, borrowed from it.
using Vote = const Landmark*;
using Histogram = std::map<std::int64_t, std::vector<Vote>>;
using HistogramSet = std::map<Pair, Histogram>;

// Files every landmark under its key and lets each key vote: one map look-up a landmark, one map
// look-up and one list entry a vote. Appends the fractions that are reported on the way.
HistogramSet histograms(const RecordingSet& recordings, std::uint32_t maxLandmarkCount,
                        std::vector<float>& fractions);

} // namespace plain

#endif
