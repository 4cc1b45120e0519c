#ifndef VXS_VXFILESETPROCESSOR_H
#define VXS_VXFILESETPROCESSOR_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "VXHistogram.h"
#include "VXLargeArray.h"

namespace VXS
{

class VXFile;
class VXFileSet;
class VXLandmark;
class VXProgress;

// Turns the landmarks of all recordings into one offset histogram for each pair of them. It files
// every landmark under its key first, an inverted file, so that the work grows with the landmarks
// that share a key and not with the product of all landmarks of two recordings. The landmarks are
// borrowed from their files.
class VXFileSetProcessor
{
public:
    // A key that more than `newMaxLandmarkCount` landmarks hold, over all files together, is too
    // common to tell anything and casts no vote.
    explicit VXFileSetProcessor(std::uint32_t newMaxLandmarkCount);

    // The whole stage, with the index empty before and after. The caller owns the result, which is
    // never null. `progress` may be null.
    VXHistogramSet* run(VXFileSet* fileSet, VXProgress* progress);

    // Files the landmarks of all files, in order of id.
    void addLandmarks(VXFileSet* fileSet, VXProgress* progress);
    // Files the landmarks of one file, by frame and in their order within it.
    void addLandmarks(VXFile* file);
    // Lets the keys vote, and takes them out of the index as they do. The caller owns the result,
    // which is never null. Requires: addLandmarks has run.
    VXHistogramSet* convert2Histograms(VXProgress* progress);
    // Drops every key that one landmark alone holds.
    void purgeSingletons();

private:
    // One landmark: its key, spread as `spread` does, and the row of `places` that tells its file
    // and frame.
    struct Entry {
        std::uint32_t spreadKey;
        std::uint32_t place;

        bool operator<(const Entry& other) const
        {
            return spreadKey != other.spreadKey ? spreadKey < other.spreadKey : place < other.place;
        }
    };

    struct Place {
        // The place of the file in `owners`, or noFile.
        std::uint32_t file;
        std::int32_t offset;
    };

    // A file that landmarks name as theirs, and where those landmarks stand.
    struct Owner {
        std::int64_t fileID;
        std::vector<VXFile*> sources;
    };

    // The landmarks of the keys that fall together, in the order in which they were added. They are
    // kept in blocks, so that nothing is moved as they become more.
    struct Deal {
        static constexpr std::size_t blockSize = 512;

        std::vector<Entry*> blocks;
        Entry* next = nullptr;
        Entry* blockEnd = nullptr;
    };

    // What the blocks of all deals are cut from.
    struct BlockStore {
        std::size_t blocksAtATime = 1;
        std::vector<LargeArray<Entry>> slabs;
        std::vector<Entry*> spare;
    };

    // What one deal after the other is sorted in.
    struct Sorting {
        std::vector<Entry> sorted;
        std::vector<std::uint32_t> bucketEnds;
    };

    // How a landmark that may vote is coded in one number, as its file above its frame.
    struct VoterLayout {
        // The places with a file, which stand before those without one.
        std::size_t filedPlaces = 0;
        std::int32_t leastOffset = 0;
        unsigned int offsetBits = 0;
        unsigned int fileBits = 0;
    };

    template <typename Code>
    struct Ballot;
    class KeyProgress;
    template <typename Code>
    class PairCounter;

    // Spreads keys evenly over the 32 bits: their fields leave some bits at 0 and fill others
    // unevenly. Each key has a spread of its own.
    static std::uint32_t spread(std::uint32_t key);
    static std::uint32_t keyOfSpread(std::uint32_t spreadKey);

    void clear();
    void addEntry(const Entry& entry);
    Entry* takeBlock();
    std::uint32_t ownerOf(const VXLandmark& landmark, VXFile* source);
    void orderPlaces();
    std::size_t sizeOf(const Deal& deal) const;
    template <typename Visit>
    void visitEntries(Deal& deal, Visit visit) const;
    void takeByKey(Deal& deal, Sorting& sorting);
    VoterLayout voterLayout() const;
    template <typename Code>
    Ballot<Code> collectBallot(const VoterLayout& layout);
    template <typename Code>
    void vote(const VoterLayout& layout, VXHistogramSet& histograms, VXProgress* progress);
    VXLandmark* findLandmark(std::size_t file, std::int64_t offset, std::uint32_t key) const;

    // By key, in as many deals as make each small beside a processor's cache.
    std::vector<Deal> landmarkIndex;
    unsigned int dealBits = 0;
    BlockStore blockStore;
    std::uint32_t maxLandmarkCount;
    // So many votes at most are counted in 32 bits: no bin can hold more.
    std::uint64_t mostNarrowVotes = std::numeric_limits<std::uint32_t>::max();
    // By file and, within one, by frame once they are brought into order.
    std::vector<Place> places;
    std::vector<Owner> owners;
};

} // namespace VXS

#endif
