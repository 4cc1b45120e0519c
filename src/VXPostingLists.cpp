#include "VXPostingLists.h"

namespace VXS
{

template <typename Code>
std::uint32_t VXPostingLists<Code>::mixedKeyOf(std::size_t posting) const
{
    const auto isBefore = [](std::size_t position, const ListEnd& listEnd) {
        return position < listEnd.posting;
    };
    return std::upper_bound(listEnds.begin(), listEnds.end(), posting, isBefore)->mixedKey;
}

template <typename Code>
std::uint64_t VXPostingLists<Code>::votes() const
{
    std::uint64_t sum = 0;
    for (const File& file : files)
        sum += file.votes;
    return sum;
}

template struct VXPostingLists<std::uint32_t>;
template struct VXPostingLists<std::uint64_t>;

} // namespace VXS
