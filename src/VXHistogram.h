#ifndef VXS_VXHISTOGRAM_H
#define VXS_VXHISTOGRAM_H

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
        const_iterator& operator++();
        bool operator==(const const_iterator& other) const { return position == other.position; }
        bool operator!=(const const_iterator& other) const { return position != other.position; }

    private:
        friend class VXHistogram;
        const_iterator(const std::uint8_t* first, const std::uint8_t* end, std::int64_t before);
        void unpack();

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
    // The bin with the most votes; of a tie that of the highest offset. Of an empty histogram no
    // votes at offset 0.
    Best bestBin() const { return best; }

    // Adds a bin behind all others. Requires: `offset` is above every offset in the histogram.
    void append(std::int64_t offset, std::uint64_t votes);
    // Gives back what appending has reserved too much.
    void shrinkToFit() { packed.shrink_to_fit(); }

    // Keeps the ends of a bin.
    void keepEnds(std::int64_t offset, const Ends& ends);
    Ends endsOf(std::int64_t offset) const;

private:
    std::vector<std::uint8_t> packed;
    std::size_t binCount = 0;
    std::int64_t firstOffset = 0;
    std::int64_t lastOffset = 0;
    Best best;
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
