#ifndef VXS_VXKEYINDEX_H
#define VXS_VXKEYINDEX_H

#include <cstddef>
#include <cstdint>
#include <limits>
#include <map>
#include <vector>

#include "VXLargeArray.h"
#include "VXPostingLists.h"

namespace VXS
{

class VXFile;
class VXLandmark;

// Every landmark of every recording, filed under its key: an inverted file. A landmark becomes a
// posting of eight bytes, its key and the number of its position, a file and a frame. The postings
// lie in partitions by key, each small enough to be sorted within a processor's cache, and are
// brought into order partition by partition, as they are purged or taken out.
//
// The landmarks are borrowed from their files, which must outlive the index.
class VXKeyIndex
{
public:
    // A place where landmarks stand.
    struct Position {
        // The number of the file, or noFile.
        std::uint32_t file;
        std::int32_t offset;
    };

    // A landmark without a file counts for the cap of its key, and has nobody to vote for.
    static constexpr std::uint32_t noFile = std::numeric_limits<std::uint32_t>::max();

    // Lays out an empty index for so many landmarks; one that is not empty stays as it is. More or
    // fewer may come.
    void prepareFor(std::size_t landmarks);
    // Files the landmarks of one file, by frame and in their order within it. Throws
    // std::length_error, with the index good for clear alone, when there are more landmarks or
    // files than 32 bits can number.
    void add(VXFile* file);
    // Drops every key that one landmark alone holds.
    void purgeSingletons();
    void clear();

    // Numbers the files by ascending id, and tells what a code needs to hold any posting.
    VXPostingLayout order();
    // Takes all landmarks out. Of the keys that at most `maxLandmarkCount` landmarks hold it gives
    // the lists. Requires: `order` has run since the last landmark was added, and its bits fit a
    // code beside the mark.
    template <typename Code>
    VXPostingLists<Code> takeLists(const VXPostingLayout& layout, std::uint32_t maxLandmarkCount);

    std::int64_t fileID(std::size_t file) const { return files[file].fileID; }
    // Of several equal landmarks the one that was added last; null where it has gone. Requires:
    // `order` has run.
    VXLandmark* findLandmark(std::size_t file, std::int64_t offset, std::uint32_t key) const;

    // Mixes a key over all 32 bits, since the fields of keys leave some bits at 0 and fill others
    // unevenly: with the keys as they are, a few partitions would hold nearly all landmarks. Each
    // key has a mixed key of its own, from which `keyOf` leads back.
    static std::uint32_t mix(std::uint32_t key);
    static std::uint32_t keyOf(std::uint32_t mixedKey);

private:
    struct Posting {
        std::uint32_t mixedKey;
        std::uint32_t position;

        bool operator<(const Posting& other) const
        {
            return mixedKey != other.mixedKey ? mixedKey < other.mixedKey
                                              : position < other.position;
        }
    };

    // A file that landmarks name as theirs, and where those landmarks stand: in all but damaged
    // sets in that file itself.
    struct File {
        std::int64_t fileID;
        std::vector<VXFile*> sources;
    };

    // The postings of the keys that share their upper bits, in the order in which they were added.
    // They are kept in blocks, so that nothing is moved as they become more.
    struct Partition {
        static constexpr std::size_t blockSize = 512;

        std::vector<Posting*> blocks;
        Posting* next = nullptr;
        Posting* blockEnd = nullptr;
    };

    // What the blocks of all partitions are cut from: many at a time come from one large array with
    // large pages, and sorting returns them to those that are filled next. Either saves the index
    // more than a twentieth of its time.
    struct BlockStore {
        std::size_t blocksAtATime = 1;
        std::vector<LargeArray<Posting>> slabs;
        std::vector<Posting*> spare;
    };

    // What one partition after the other is sorted in.
    struct Sorting {
        std::vector<Posting> sorted;
        std::vector<std::uint32_t> bucketEnds;
    };

    void addPosting(const Posting& posting);
    Posting* takeBlock();
    std::uint32_t fileNumberOf(const VXLandmark& landmark, VXFile* source);
    void orderPositions();
    std::size_t sizeOf(const Partition& partition) const;
    template <typename Visit>
    void visitPostings(const Partition& partition, Visit visit) const;
    void takeByKey(Partition& partition, Sorting& sorting);
    std::size_t filedPositions() const;

    // By the upper bits of the mixed key.
    std::vector<Partition> partitions = std::vector<Partition>(1);
    unsigned int partitionBits = 0;
    BlockStore blockStore;
    // By file and, within one, by frame once they are brought into order.
    std::vector<Position> positions;
    std::vector<File> files;
    std::map<std::int64_t, std::uint32_t> fileNumbers;
    std::uint64_t landmarks = 0;
    // Postings, and the positions that are never more, are numbered in 32 bits. A code of 64 bits
    // has 31 for the file beside the mark and 32 for the frame.
    std::uint64_t mostLandmarks = std::numeric_limits<std::uint32_t>::max();
    std::uint64_t mostFiles = std::uint64_t{1} << 31u;
};

} // namespace VXS

#endif
