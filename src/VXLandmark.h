#ifndef VXS_VXLANDMARK_H
#define VXS_VXLANDMARK_H

#include <cstdint>

namespace VXS
{

class VXFile;

// One hashed pair of spectral peaks, the anchor and a neighbour, placed at the frame of the anchor.
// Equal keys in two recordings are candidates for the same sound.
//
// The key packs three values, each cut to its low 10 bits: the neighbour's bin in bits 0 to 9, the
// anchor's bin in bits 10 to 19, and the frames from anchor to neighbour in bits 20 to 29. Bits 30
// and 31 are 0. Nothing is rejected when a value overflows its field: it wraps.
class VXLandmark
{
public:
    VXLandmark(std::int32_t newOffset, VXFile* owner, std::uint32_t newKey);

    static std::uint32_t packKey(std::int32_t anchorBin, std::int32_t neighbourBin,
                                 std::int32_t framesBetween);

    std::int64_t getOffset() const;
    // 0 for a landmark without a file.
    std::int64_t getFileID() const;

    std::int32_t offset;
    // The recording that owns this landmark. Borrowed.
    VXFile* file;
    std::uint32_t key;
};

} // namespace VXS

#endif
