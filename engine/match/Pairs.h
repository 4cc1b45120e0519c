#ifndef VXL_SYNC_PAIRS_H
#define VXL_SYNC_PAIRS_H

#include <cstddef>

namespace vxlsync
{

// Two recordings by index, the lower first.
struct RecordingPair {
    std::size_t first = 0;
    std::size_t second = 0;
};

inline bool isSame(const RecordingPair& left, const RecordingPair& right)
{
    return left.first == right.first && left.second == right.second;
}

} // namespace vxlsync

#endif
