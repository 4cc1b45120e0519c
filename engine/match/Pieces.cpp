#include "match/Pieces.h"

#include <algorithm>

#include "match/Transform.h"

namespace vxlsync
{

namespace
{

// Clocks 170 millionths apart blur 17 minutes by 0.2 s, which still leaves a peak to be seen where
// the music is dense; two minutes shared are as long as the shortest overlap that can hide. Two
// pieces fill a transform of 2^24 samples.
constexpr double pieceSeconds = 1048.0;
constexpr double pieceSharedSeconds = 120.0;
// Six times the shortest overlap, half of it the other recording's.
constexpr double edgeSeconds = 12.0;
constexpr std::size_t shortestLength = 1024;

} // namespace

std::vector<Piece> piecesOf(const Prepared& recording, std::size_t index)
{
    const std::size_t count = recording.samples.size();
    const auto longest = static_cast<std::size_t>(pieceSeconds * recording.rate);
    const auto step =
        static_cast<std::size_t>((pieceSeconds - pieceSharedSeconds) * recording.rate);
    std::vector<Piece> pieces;
    for (std::size_t start = 0; start < count; start += step) {
        const std::size_t length = std::min(longest, count - start);
        if (recording.samples.hasSound(start, length)) pieces.push_back({index, start, length});
        if (start + length == count) break;
    }
    return pieces;
}

Piece headOf(const Prepared& recording, std::size_t index)
{
    const auto edge = static_cast<std::size_t>(edgeSeconds * recording.rate);
    return {index, 0, std::min(recording.samples.size(), edge)};
}

Piece tailOf(const Prepared& recording, std::size_t index)
{
    const std::size_t count = headOf(recording, index).count;
    return {index, recording.samples.size() - count, count};
}

std::size_t lengthClass(std::size_t samples)
{
    return fastLength(std::max(samples, shortestLength));
}

} // namespace vxlsync
