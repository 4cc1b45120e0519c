#ifndef VXL_SYNC_LITTLEENDIAN_H
#define VXL_SYNC_LITTLEENDIAN_H

#include <cstddef>
#include <cstdint>

namespace vxlsync
{

// The number in `count` bytes, at most eight, the lowest first.
inline std::uint64_t littleEndian(const unsigned char* bytes, std::size_t count)
{
    std::uint64_t value = 0;
    for (std::size_t i = count; i > 0; --i)
        value = value << 8U | bytes[i - 1];
    return value;
}

} // namespace vxlsync

#endif
