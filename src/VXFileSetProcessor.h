#ifndef VXS_VXFILESETPROCESSOR_H
#define VXS_VXFILESETPROCESSOR_H

#include <cstddef>
#include <cstdint>
#include <memory>
#include <utility>
#include <vector>

#include "VXHistogram.h"

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
    // One landmark: its key, and the row of `places` that tells its file and frame.
    struct Entry {
        std::uint32_t key;
        std::uint32_t place;

        bool operator<(const Entry& other) const
        {
            return key != other.key ? key < other.key : place < other.place;
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

        std::vector<std::unique_ptr<Entry[]>> blocks;
        Entry* next = nullptr;
        Entry* blockEnd = nullptr;
    };

    // One landmark that may vote or be voted against. Those of one key stand together, in order of
    // their files.
    struct Voter {
        // The place of its file in `owners`, and the mark of the last of a key.
        std::uint32_t file;
        std::int32_t offset;
    };

    // Everything that may vote.
    struct Ballot {
        std::vector<Voter> voters;
        // The keys with the end of their voters, in the order of the voters.
        std::vector<std::pair<std::size_t, std::uint32_t>> keyEnds;
        // By file, where its voters begin in each of its keys that files of higher id hold too.
        std::vector<std::vector<std::uint32_t>> runs;
        std::size_t keys = 0;
        std::uint64_t votes = 0;
    };

    class KeyProgress;
    class PairCounter;

    void clear();
    void addEntry(const Entry& entry);
    std::uint32_t ownerOf(const VXLandmark& landmark, VXFile* source);
    void orderPlaces();
    std::size_t sizeOf(const Deal& deal) const;
    template <typename Visit>
    void visitEntries(Deal& deal, Visit visit) const;
    void takeByKey(Deal& deal, std::vector<Entry>& sorted);
    void enterKey(const Entry* begin, const Entry* end, Ballot& ballot) const;
    Ballot collectBallot();
    VXLandmark* findLandmark(std::uint32_t file, std::int32_t offset, std::uint32_t key) const;

    // By key, in as many deals as make each small beside a processor's cache.
    std::vector<Deal> landmarkIndex;
    std::uint32_t maxLandmarkCount;
    // By file and, within one, by frame once they are brought into order.
    std::vector<Place> places;
    std::vector<Owner> owners;
};

} // namespace VXS

#endif
