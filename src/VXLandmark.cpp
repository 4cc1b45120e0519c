#include "VXLandmark.h"

#include "VXFile.h"

namespace VXS
{

VXLandmark::VXLandmark(std::int32_t newOffset, VXFile* owner, std::uint32_t newKey)
    : offset(newOffset), file(owner), key(newKey)
{
}

std::uint32_t VXLandmark::packKey(std::int32_t anchorBin, std::int32_t neighbourBin,
                                  std::int32_t framesBetween)
{
    constexpr std::uint32_t field = 0x3FFu;
    return ((static_cast<std::uint32_t>(framesBetween) & field) << 20u) |
           ((static_cast<std::uint32_t>(anchorBin) & field) << 10u) |
           (static_cast<std::uint32_t>(neighbourBin) & field);
}

std::int64_t VXLandmark::getOffset() const
{
    return offset;
}

std::int64_t VXLandmark::getFileID() const
{
    return file == nullptr ? 0 : file->getFileID();
}

} // namespace VXS
