#ifndef VXL_SYNC_PAIRCANDIDATES_H
#define VXL_SYNC_PAIRCANDIDATES_H

#include <cstddef>
#include <vector>

#include "match/Candidates.h"
#include "match/Pairs.h"
#include "match/Pieces.h"
#include "running/Run.h"

namespace vxlsync
{

// Two pieces that are correlated for the pair of recordings with an index.
struct PiecePair {
    std::size_t pair = 0;
    Piece first;
    Piece second;
};

// Every piece of the one recording with every one of the other, by pair.
std::vector<PiecePair> wholesOf(const std::vector<Prepared>& recordings,
                                const std::vector<RecordingPair>& pairs);

// The head of the one with the tail of the other, both ways.
std::vector<PiecePair> edgesOf(const std::vector<Prepared>& recordings,
                               const std::vector<RecordingPair>& pairs);

// The candidates of each of `pairCount` pairs, their lags in samples of the whole recordings. Makes
// a step of the meter for each pair of pieces. Throws Cancelled. The result depends neither on the
// number of threads nor on the memory left.
std::vector<std::vector<Candidate>> candidatesOfPairs(const std::vector<Prepared>& recordings,
                                                      const std::vector<PiecePair>& piecePairs,
                                                      std::size_t pairCount, Run& run);

} // namespace vxlsync

#endif
