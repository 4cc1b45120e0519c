#ifndef VXS_VXPOSTINGLISTS_H
#define VXS_VXPOSTINGLISTS_H

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "VXLargeArray.h"

namespace VXS
{

// How a posting is coded in one number: its file above its frame, both counted from the least.
// Files are numbered by ascending id.
struct VXPostingLayout {
    std::int32_t leastOffset = 0;
    unsigned int offsetBits = 0;
    unsigned int fileBits = 0;
};

// The landmarks that vote, list by list. A list holds the postings of one key, ordered by file and
// within a file by frame. Each posting is its code alone, so that two of them are compared, and
// their offset found, by subtracting two numbers:
//
//      list:          file 1, frame 9   file 2, frame 5   file 2, frame 7     (next key)
//      code:              01 1001           10 0101           10 0111         file above frame
//      in the array:    0 01 1001         0 10 0101         1 10 0111           0 ...
//                       ^ mark
//      runs:          [ run of file 1 ][ - - - its partners - - - - - ]
//
// The mark on top ends a list. A run is what one file holds of a list. Its partners, the postings
// of higher files, stand behind it up to the mark: each votes with each posting of the run. The
// last run of a list has no partners and is not noted.
//
// Codes of 32 bits, where files and frames fit, save a tenth to a fifth of the time of a large job.
template <typename Code>
struct VXPostingLists {
    static constexpr Code lastOfList = Code{1} << (std::numeric_limits<Code>::digits - 1);

    struct ListEnd {
        std::uint32_t posting;
        std::uint32_t mixedKey;
    };

    struct File {
        // Where its runs with partners begin.
        std::vector<std::uint32_t> runs;
        // Its first and last code of any list.
        Code least = std::numeric_limits<Code>::max();
        Code greatest = 0;
        // How often its runs vote.
        std::uint64_t votes = 0;

        bool hasPostings() const { return least <= greatest; }
    };

    VXPostingLists(const VXPostingLayout& newLayout, std::size_t fileCount,
                   std::size_t mostPostings)
        : layout(newLayout), postings(mostPostings), files(fileCount)
    {
        // What is reserved too much is never touched.
        listEnds.reserve(mostPostings / 2);
        for (File& file : files)
            file.runs.reserve(mostPostings / fileCount);
    }

    std::size_t fileOf(Code code) const
    {
        return static_cast<std::size_t>(code >> layout.offsetBits);
    }
    // From the least frame of any file.
    std::int64_t frameOf(Code code) const
    {
        return static_cast<std::int64_t>(code & ((Code{1} << layout.offsetBits) - 1u));
    }

    // Behind the last posting, where the next list is written before it is entered.
    Code* end() { return postings.data() + size; }

    // Enters the list that stands between `end()` and `last`, unless one file alone holds it.
    void enter(const Code* last, std::uint32_t mixedKey)
    {
        Code* const first = end();
        if (first == last || fileOf(*first) == fileOf(*(last - 1))) return;
        for (const Code* run = first; run != last;) {
            const std::size_t number = fileOf(*run);
            const Code* runEnd = run + 1;
            while (runEnd != last && fileOf(*runEnd) == number)
                ++runEnd;
            File& file = files[number];
            file.least = std::min(file.least, *run);
            file.greatest = std::max(file.greatest, *(runEnd - 1));
            if (runEnd != last) {
                file.runs.push_back(static_cast<std::uint32_t>(run - postings.data()));
                file.votes += static_cast<std::uint64_t>(runEnd - run) *
                              static_cast<std::uint64_t>(last - runEnd);
            }
            run = runEnd;
        }
        size = static_cast<std::size_t>(last - postings.data());
        postings[size - 1] |= lastOfList;
        listEnds.push_back({static_cast<std::uint32_t>(size), mixedKey});
    }

    std::uint32_t mixedKeyOf(std::size_t posting) const;
    std::uint64_t votes() const;

    VXPostingLayout layout;
    LargeArray<Code> postings;
    std::size_t size = 0;
    // In the order of the lists.
    std::vector<ListEnd> listEnds;
    // By number.
    std::vector<File> files;
    // The keys of two landmarks or more, also those that do not vote.
    std::size_t keys = 0;
};

extern template struct VXPostingLists<std::uint32_t>;
extern template struct VXPostingLists<std::uint64_t>;

} // namespace VXS

#endif
