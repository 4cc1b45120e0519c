#ifndef VXS_VXHISTOGRAM_H
#define VXS_VXHISTOGRAM_H

#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <map>
#include <memory>
#include <utility>
#include <vector>

namespace VXS
{

class VXLandmark;

// How a bin is packed. One byte tells the step from the bin before it and its votes: a step of 1
// with 1 to 127 votes, or a step of 2 to 17 with 1 to 8 votes. Any other bin is the mark, its step
// and its votes, both in groups of seven bits with the lowest first and the top bit set in all but
// the last byte. Of 37 million bins of short recordings 97 of 100 take one byte.
struct VXPackedBin {
    static constexpr std::uint8_t spelledOut = 0;
    static constexpr unsigned int firstOfSteps = 128;
    static constexpr unsigned int votesOfAStep = 8;
    static constexpr unsigned int mostStep = 17;

    using Table = std::array<std::uint8_t, 256>;

    static constexpr Table makeSteps()
    {
        Table table{};
        for (unsigned int head = 0; head < table.size(); ++head)
            table[head] = static_cast<std::uint8_t>(stepOf(head));
        return table;
    }
    static constexpr Table makeVotes()
    {
        Table table{};
        for (unsigned int head = 0; head < table.size(); ++head)
            table[head] = static_cast<std::uint8_t>(votesOf(head));
        return table;
    }
    static constexpr unsigned int stepOf(unsigned int head)
    {
        return head < firstOfSteps ? 1 : 2 + (head - firstOfSteps) / votesOfAStep;
    }
    static constexpr unsigned int votesOf(unsigned int head)
    {
        return head < firstOfSteps ? head : 1 + (head - firstOfSteps) % votesOfAStep;
    }

    // By the byte.
    static const Table steps;
    static const Table votes;
};

inline constexpr VXPackedBin::Table VXPackedBin::steps = VXPackedBin::makeSteps();
inline constexpr VXPackedBin::Table VXPackedBin::votes = VXPackedBin::makeVotes();

// The votes of one pair of recordings by offset. The offset is the position of a sound in the file
// with the lower id minus its position in the other, in frames, and a bin is exactly one offset
// wide. It reads like an ordered map: bins are walked by ascending offset, found by their offset,
// and a bin tells its number of votes.
//
// A vote is the landmark of the lower-id file. Of the votes themselves only the ends are kept, the
// landmarks of least and greatest position, and in a histogram that VXFileSetProcessor makes only
// those of the best bin, since nothing else is read of them. The landmarks are borrowed: the
// VXFileSet must outlive the histogram. The bins are packed, one byte for most of them, because
// there is a histogram for every pair of recordings and all of them stand at once.
class VXHistogram
{
public:
    struct Bin {
        std::int64_t offset;
        std::uint64_t votes;
    };

    // Null where they are not kept.
    struct Ends {
        VXLandmark* least = nullptr;
        VXLandmark* greatest = nullptr;
    };

    // Walks the packed bins. Stays valid until a bin is appended.
    class const_iterator
    {
    public:
        using iterator_category = std::input_iterator_tag;
        using value_type = Bin;
        using difference_type = std::ptrdiff_t;
        using pointer = const Bin*;
        using reference = const Bin&;

        reference operator*() const { return bin; }
        pointer operator->() const { return &bin; }
        const_iterator& operator++()
        {
            position = next;
            if (position != packedEnd) unpack();
            return *this;
        }
        bool operator==(const const_iterator& other) const { return position == other.position; }
        bool operator!=(const const_iterator& other) const { return position != other.position; }

    private:
        friend class VXHistogram;
        const_iterator(const std::uint8_t* first, const std::uint8_t* end, std::int64_t before)
            : position(first), next(first), packedEnd(end), bin{before, 0}
        {
            if (position != packedEnd) unpack();
        }
        void unpack()
        {
            const std::uint8_t head = *next;
            ++next;
            if (head == VXPackedBin::spelledOut) {
                unpackSpelledOut();
                return;
            }
            // A look-up and no decision: nobody can foresee what kind of bin comes next.
            bin.offset += VXPackedBin::steps[head];
            bin.votes = VXPackedBin::votes[head];
        }
        void unpackSpelledOut();

        const std::uint8_t* position;
        const std::uint8_t* next;
        const std::uint8_t* packedEnd;
        Bin bin;
    };

    // A bin whose votes are counted as single precision holds them.
    struct Best {
        float votes = 0.0f;
        std::int64_t offset = 0;
    };

    const_iterator begin() const;
    const_iterator end() const;
    const_iterator find(std::int64_t offset) const;
    std::size_t size() const { return binCount; }
    bool empty() const { return binCount == 0; }
    // The votes of all bins.
    std::uint64_t votes() const { return allVotes; }
    // The bin with the most votes; of a tie that of the highest offset. Of an empty histogram no
    // votes at offset 0.
    Best bestBin() const { return best; }

    // Adds a bin behind all others. Requires: `offset` is above every offset in the histogram.
    void append(std::int64_t offset, std::uint64_t votes);
    // Takes out all bins and ends, and keeps their memory for others. A copy takes no more than it
    // needs.
    void clear();

    // Keeps the ends of a bin.
    void keepEnds(std::int64_t offset, const Ends& ends);
    Ends endsOf(std::int64_t offset) const;

private:
    std::vector<std::uint8_t> packed;
    std::size_t binCount = 0;
    std::uint64_t allVotes = 0;
    std::int64_t firstOffset = 0;
    std::int64_t lastOffset = 0;
    Best best;
    // Where the best bin is packed, and the offset that its step is taken from.
    std::size_t bestPosition = 0;
    std::int64_t beforeBest = 0;
    std::vector<std::pair<std::int64_t, Ends>> keptEnds;
};

// The histograms by pair of file ids, lower id first. A pair without a vote has none. Owns the
// histograms.
using VXHistogramSet = std::map<std::pair<std::int64_t, std::int64_t>, VXHistogram*>;

// Frees the set with its histograms and nulls the caller's pointer. Null is nothing to do.
void deleteVXHistogramSet(VXHistogramSet*& histograms);

// Holds a set until it is handed on, so that an exception cannot leak it.
struct VXHistogramSetDeleter {
    void operator()(VXHistogramSet* histograms) const { deleteVXHistogramSet(histograms); }
};
using VXHistogramSetHolder = std::unique_ptr<VXHistogramSet, VXHistogramSetDeleter>;

} // namespace VXS

#endif
