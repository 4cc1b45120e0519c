#ifndef VXL_SYNC_PIECES_H
#define VXL_SYNC_PIECES_H

#include <cstddef>
#include <vector>

#include "match/Prepared.h"

namespace vxlsync
{

// A stretch of a recording, which is known by its index, that is correlated as a whole; in samples.
struct Piece {
    std::size_t recording = 0;
    std::size_t start = 0;
    std::size_t count = 0;
};

// Longer recordings are searched in pieces, so that neither memory nor the blur of a drifting clock
// grow without bound. What two pieces share keeps short overlaps whole. Pieces without sound are
// left out.
std::vector<Piece> piecesOf(const Prepared& recording, std::size_t index);

// The first and the last seconds of a recording. A short overlap is the end of one recording and
// the start of the other: among all the rest of the two it may drown, between the edges alone it
// stands out.
Piece headOf(const Prepared& recording, std::size_t index);
Piece tailOf(const Prepared& recording, std::size_t index);

// Length of a transform that takes two pieces of so many samples together. Lengths come in steps of
// a quarter octave or less, so that pairs of like length share their transforms.
std::size_t lengthClass(std::size_t samples);

} // namespace vxlsync

#endif
