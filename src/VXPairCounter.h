#ifndef VXS_VXPAIRCOUNTER_H
#define VXS_VXPAIRCOUNTER_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <utility>
#include <vector>

#include "VXHistogram.h"
#include "VXPostingLists.h"

namespace VXS
{

class VXKeyIndex;
class VXKeyProgress;

// Counts the votes of the posting lists by pair of files and offset, and finds the ends of each
// pair's best bin. It takes one file after the other, A, against all files of higher number, B.
//
// The possible offsets of a pair are its slots, from the lowest up. Where the slots are not many
// beside the votes, the pair is dense and counted in a table with a counter for each slot. Dense
// pairs are counted in groups of neighbouring files, each group in one table, which so stays near
// the processor and small beside the landmarks. Where the slots are many, the pair is sparse: its
// votes are sorted, so that the cost is that of the votes however far apart they lie.
//
// The slot of a vote is found by subtracting two codes. With 4 bits for the frame, let file 1 hold
// the frames 3 to 9 and file 2 the frames 5 to 7. Its lowest offset is 3 - 7 = -4, and its slots
// begin at 100 of the row in which the pairs lie side by side:
//
//      offset        -4   -3   -2   -1    0    1    2    3    4
//      slot         100  101  102  103  104  105  106  107  108
//
//      A: file 1, frame 9            01 1001  =  25
//      B: file 2, frame 5            10 0101  =  37
//      A - B                                    -12  =  (1 - 2) * 16 + (9 - 5)
//
// What the numbers of the files add to the difference, -16, is the same for all votes of the pair,
// and so is the way from an offset to its slot, 100 - (-4). Both make the constant of the pair,
// 16 + 104 = 120:
//
//      slot = 120 - B + A = 120 - 37 + 25 = 108
//
// All of it is reckoned in unsigned numbers of 64 bits, which wrap around: 120 - 37 may go below 0
// and be a number near 2^64, and adding 25 brings it back. A pair that is not to be counted has the
// constant 0: A - B is below 0 for any two postings, so that its slot is near 2^64, beyond every
// table. The same constants lead from B to the posting of A that votes with it at a given offset:
// A = B - 16 + offset.
template <typename Code>
class VXPairCounter
{
public:
    // All are borrowed. What is counted is entered in `newHistograms`.
    VXPairCounter(const VXKeyIndex& newIndex, const VXPostingLists<Code>& newLists,
                  VXHistogramSet& newHistograms);

    // Count is a number that no bin can exceed. 32 bits, where they do, save some
    // tenth of the time of large jobs.
    template <typename Count>
    void countAllPairs(VXKeyProgress& progress);

private:
    // What file A has with one file B.
    struct Pair {
        std::uint64_t slots = 0;
        std::uint64_t votes = 0;
        bool isDense = false;
        // Where its slots begin in the row.
        std::uint64_t firstSlot = 0;
        // Borrowed from `histograms`.
        VXHistogram* histogram = nullptr;
    };

    // Numbers of postings.
    struct EndPostings {
        std::size_t least;
        std::size_t greatest;
        bool areFound;
    };

    // A posting of file A between the two, neither of which belongs to it, is no end of any pair.
    struct Inside {
        Code least = std::numeric_limits<Code>::max();
        Code greatest = 0;
    };

    // Files of consecutive numbers.
    struct Group {
        std::size_t firstFile;
        std::size_t endFile;
        bool hasPairs;
    };

    std::int64_t lowestOffset(std::size_t fileB) const;
    std::uint64_t slotsWith(std::size_t fileB) const;
    std::uint64_t codesBetween(std::size_t fileB) const;
    std::uint64_t mostSlots() const;
    bool layOut();
    bool layOutByVotes();
    Group allFiles() const;
    Group nextGroup(std::size_t firstFile) const;
    std::uint64_t makeRow(const Group& group, bool areDense);
    template <typename Visit>
    void visitRuns(Visit visit) const;
    template <typename Visit>
    const Code* visitPartners(const Group& group, const Code* partner, Visit visit) const;
    template <typename Count>
    void countDense(const Group& group, std::vector<Count>& counts, VXKeyProgress& progress);
    template <typename Count>
    void compact(const Group& group, std::vector<Count>& counts);
    void countSparse(VXKeyProgress& progress);
    void enter(std::size_t fileB);
    void keepEnds();
    Inside insideOfEnds() const;
    void extend(EndPostings& found, const Code* place) const;
    std::size_t numberOf(const Code* posting) const;
    std::uint32_t keyOf(std::size_t posting) const;
    VXLandmark* landmarkOf(std::size_t posting) const;

    const VXKeyIndex& index;
    const VXPostingLists<Code>& lists;
    VXHistogramSet& histograms;

    std::size_t fileA = 0;
    // By file B.
    std::vector<Pair> pairs;
    std::vector<std::uint64_t> constants;
    std::vector<EndPostings> ends;
    // By run of file A, the first partner that the groups before have left; 0 for all partners.
    std::vector<std::uint32_t> partners;
    // Filled pair by pair, and copied once its size is known.
    VXHistogram bins;
};

} // namespace VXS

#endif
