#include "VXKeyIndex.h"

#include <algorithm>
#include <numeric>
#include <stdexcept>
#include <utility>

#include "VXFile.h"
#include "VXLandmark.h"

namespace VXS
{

namespace
{

constexpr std::size_t postingsPerPartition = 16384;
constexpr unsigned int mostPartitionBits = 12;
// Cut from one array of 2 MB where the landmarks are many enough to fill it.
constexpr std::size_t manyBlocks = 512;
constexpr unsigned int keyBits = 32;

// An odd number near 2^32 divided by the golden ratio.
constexpr std::uint32_t mixFactor = 0x9E3779B1u;

// Newton's iteration modulo 2^32, which doubles the bits that are right.
constexpr std::uint32_t inverse(std::uint32_t factor)
{
    std::uint32_t result = factor;
    for (int step = 0; step < 4; ++step)
        result *= 2u - factor * result;
    return result;
}

unsigned int bitsToHold(std::uint64_t greatest)
{
    unsigned int bits = 0;
    while (greatest >> bits != 0)
        ++bits;
    return bits;
}

bool standsBefore(const VXKeyIndex::Position& left, const VXKeyIndex::Position& right)
{
    return left.file != right.file ? left.file < right.file : left.offset < right.offset;
}

// Where each position would stand in order.
std::vector<std::uint32_t> ranksOf(const std::vector<VXKeyIndex::Position>& positions)
{
    std::vector<std::uint32_t> sorted(positions.size());
    std::iota(sorted.begin(), sorted.end(), 0u);
    std::stable_sort(sorted.begin(), sorted.end(), [&](std::uint32_t left, std::uint32_t right) {
        return standsBefore(positions[left], positions[right]);
    });
    std::vector<std::uint32_t> ranks(positions.size());
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        ranks[sorted[i]] = static_cast<std::uint32_t>(i);
    }
    return ranks;
}

// Calls `visit` with the begin and the end of the postings of each key.
template <typename Posting, typename Visit>
void visitKeys(const std::vector<Posting>& sorted, Visit visit)
{
    const Posting* end = sorted.data() + sorted.size();
    for (const Posting* begin = sorted.data(); begin != end;) {
        const Posting* next = begin;
        while (next != end && next->mixedKey == begin->mixedKey)
            ++next;
        visit(begin, next);
        begin = next;
    }
}

} // namespace

void VXKeyIndex::prepareFor(std::size_t expected)
{
    if (!positions.empty()) return;
    partitionBits = std::min(mostPartitionBits, bitsToHold(expected / postingsPerPartition));
    partitions = std::vector<Partition>(std::size_t{1} << partitionBits);
    blockStore.blocksAtATime = expected / Partition::blockSize < manyBlocks ? 1 : manyBlocks;
}

void VXKeyIndex::clear()
{
    partitions = std::vector<Partition>(1);
    partitionBits = 0;
    blockStore = BlockStore();
    positions = std::vector<Position>();
    files.clear();
    fileNumbers.clear();
    landmarks = 0;
}

void VXKeyIndex::add(VXFile* file)
{
    const VXFile* lastFile = nullptr;
    std::uint32_t lastNumber = noFile;
    for (const auto& frame : file->getLandmarkMap()) {
        bool isNewPosition = true;
        for (const VXLandmark* landmark : frame.second) {
            if (landmark == nullptr) continue;
            if (landmark->file != lastFile) {
                lastFile = landmark->file;
                lastNumber = fileNumberOf(*landmark, file);
                isNewPosition = true;
            }
            if (landmarks >= mostLandmarks) {
                throw std::length_error("VXKeyIndex::add() : more landmarks than 32 bits number.");
            }
            ++landmarks;
            if (isNewPosition) positions.push_back({lastNumber, landmark->offset});
            isNewPosition = false;
            addPosting({mix(landmark->key), static_cast<std::uint32_t>(positions.size() - 1)});
        }
    }
}

std::uint32_t VXKeyIndex::mix(std::uint32_t key)
{
    return key * mixFactor;
}

std::uint32_t VXKeyIndex::keyOf(std::uint32_t mixedKey)
{
    return mixedKey * inverse(mixFactor);
}

void VXKeyIndex::addPosting(const Posting& posting)
{
    const auto number =
        static_cast<std::size_t>(std::uint64_t{posting.mixedKey} << partitionBits >> keyBits);
    Partition& partition = partitions[number];
    if (partition.next == partition.blockEnd) {
        partition.blocks.push_back(takeBlock());
        partition.next = partition.blocks.back();
        partition.blockEnd = partition.next + Partition::blockSize;
    }
    *partition.next = posting;
    ++partition.next;
}

VXKeyIndex::Posting* VXKeyIndex::takeBlock()
{
    auto& [blocksAtATime, slabs, spare] = blockStore;
    if (spare.empty()) {
        slabs.emplace_back(blocksAtATime * Partition::blockSize);
        for (std::size_t i = blocksAtATime; i > 0; --i)
            spare.push_back(slabs.back().data() + (i - 1) * Partition::blockSize);
    }
    Posting* block = spare.back();
    spare.pop_back();
    return block;
}

// The number of the landmark's file, entered if it is new. `source` is where the landmark stands.
std::uint32_t VXKeyIndex::fileNumberOf(const VXLandmark& landmark, VXFile* source)
{
    if (landmark.file == nullptr) return noFile;
    const std::int64_t id = landmark.getFileID();
    auto entry = fileNumbers.find(id);
    if (entry == fileNumbers.end()) {
        if (files.size() >= mostFiles) {
            throw std::length_error("VXKeyIndex::add() : more files than 31 bits number.");
        }
        entry = fileNumbers.emplace(id, static_cast<std::uint32_t>(files.size())).first;
        files.push_back({id, {}});
    }
    std::vector<VXFile*>& sources = files[entry->second].sources;
    if (sources.empty() || sources.back() != source) sources.push_back(source);
    return entry->second;
}

// Brings the files into order of id, and the positions into order of file and frame, as they are
// from the start if the landmarks of each file stand in it and the files were added by id.
void VXKeyIndex::orderPositions()
{
    std::vector<std::uint32_t> ranks(files.size());
    std::vector<File> ordered;
    ordered.reserve(files.size());
    for (auto& [id, number] : fileNumbers) {
        ranks[number] = static_cast<std::uint32_t>(ordered.size());
        ordered.push_back(std::move(files[number]));
        number = ranks[number];
    }
    files = std::move(ordered);
    for (Position& position : positions) {
        if (position.file != noFile) position.file = ranks[position.file];
    }

    if (std::is_sorted(positions.begin(), positions.end(), standsBefore)) return;
    const std::vector<std::uint32_t> positionRanks = ranksOf(positions);
    for (Partition& partition : partitions) {
        visitPostings(partition, [&positionRanks](Posting& posting) {
            posting.position = positionRanks[posting.position];
        });
    }
    std::stable_sort(positions.begin(), positions.end(), standsBefore);
}

std::size_t VXKeyIndex::sizeOf(const Partition& partition) const
{
    return partition.blocks.size() * Partition::blockSize -
           static_cast<std::size_t>(partition.blockEnd - partition.next);
}

template <typename Visit>
void VXKeyIndex::visitPostings(const Partition& partition, Visit visit) const
{
    std::size_t left = sizeOf(partition);
    for (Posting* block : partition.blocks) {
        const std::size_t count = std::min(left, Partition::blockSize);
        for (std::size_t i = 0; i < count; ++i)
            visit(block[i]);
        left -= count;
    }
}

// Moves the postings of a partition into `sorting`, by mixed key and, within one, by position.
void VXKeyIndex::takeByKey(Partition& partition, Sorting& sorting)
{
    const std::size_t size = sizeOf(partition);
    const unsigned int bits = std::min(bitsToHold(size), keyBits - partitionBits);
    // The bits below those that chose the partition.
    const unsigned int unused = keyBits - bits;
    const auto bucketOf = [this, unused](const Posting& posting) {
        return static_cast<std::size_t>(std::uint64_t{posting.mixedKey << partitionBits} >> unused);
    };

    std::vector<Posting>& sorted = sorting.sorted;
    std::vector<std::uint32_t>& bucketEnds = sorting.bucketEnds;
    bucketEnds.assign(std::size_t{1} << bits, 0);
    visitPostings(partition, [&](const Posting& posting) { ++bucketEnds[bucketOf(posting)]; });
    std::uint32_t next = 0;
    for (std::uint32_t& bucket : bucketEnds)
        next += std::exchange(bucket, next);
    sorted.resize(size);
    visitPostings(partition, [&](const Posting& posting) {
        sorted[bucketEnds[bucketOf(posting)]++] = posting;
    });
    blockStore.spare.insert(blockStore.spare.end(), partition.blocks.begin(),
                            partition.blocks.end());
    partition = Partition();

    // Only keys that share a bucket can be out of order.
    const auto end = sorted.end();
    for (auto unsorted = std::is_sorted_until(sorted.begin(), end); unsorted != end;) {
        const std::size_t bucket = bucketOf(*unsorted);
        const std::size_t first = bucket == 0 ? 0 : bucketEnds[bucket - 1];
        const auto bucketEnd = sorted.begin() + static_cast<std::ptrdiff_t>(bucketEnds[bucket]);
        std::sort(sorted.begin() + static_cast<std::ptrdiff_t>(first), bucketEnd);
        unsorted = std::is_sorted_until(bucketEnd, end);
    }
}

void VXKeyIndex::purgeSingletons()
{
    orderPositions();
    Sorting sorting;
    for (Partition& partition : partitions) {
        takeByKey(partition, sorting);
        visitKeys(sorting.sorted, [this](const Posting* begin, const Posting* end) {
            if (end - begin < 2) return;
            for (const Posting* posting = begin; posting != end; ++posting)
                addPosting(*posting);
        });
    }
}

// The positions with a file, which stand before those without one.
std::size_t VXKeyIndex::filedPositions() const
{
    const auto hasFile = [](const Position& position) { return position.file != noFile; };
    return static_cast<std::size_t>(
        std::partition_point(positions.begin(), positions.end(), hasFile) - positions.begin());
}

VXPostingLayout VXKeyIndex::order()
{
    orderPositions();
    VXPostingLayout layout;
    const std::size_t filed = filedPositions();
    if (filed == 0) return layout;
    std::int32_t least = std::numeric_limits<std::int32_t>::max();
    std::int32_t greatest = std::numeric_limits<std::int32_t>::min();
    for (std::size_t i = 0; i < filed; ++i) {
        least = std::min(least, positions[i].offset);
        greatest = std::max(greatest, positions[i].offset);
    }
    layout.leastOffset = least;
    layout.offsetBits =
        bitsToHold(static_cast<std::uint64_t>(std::int64_t{greatest} - std::int64_t{least}));
    layout.fileBits = bitsToHold(files.size() - 1);
    return layout;
}

template <typename Code>
VXPostingLists<Code> VXKeyIndex::takeLists(const VXPostingLayout& layout,
                                           std::uint32_t maxLandmarkCount)
{
    std::vector<Code> codes(filedPositions());
    for (std::size_t i = 0; i < codes.size(); ++i) {
        const std::int64_t offset = std::int64_t{positions[i].offset} - layout.leastOffset;
        codes[i] = static_cast<Code>(std::uint64_t{positions[i].file} << layout.offsetBits |
                                     static_cast<std::uint64_t>(offset));
    }
    std::size_t size = 0;
    for (const Partition& partition : partitions)
        size += sizeOf(partition);

    VXPostingLists<Code> lists(layout, files.size(), size);
    Sorting sorting;
    for (Partition& partition : partitions) {
        takeByKey(partition, sorting);
        visitKeys(sorting.sorted, [&](const Posting* begin, const Posting* end) {
            if (end - begin < 2) return;
            ++lists.keys;
            if (static_cast<std::size_t>(end - begin) > maxLandmarkCount) return;
            Code* last = lists.end();
            for (const Posting* posting = begin; posting != end; ++posting) {
                // Postings without a file come last.
                if (posting->position >= codes.size()) break;
                *last = codes[posting->position];
                ++last;
            }
            lists.enter(last, begin->mixedKey);
        });
    }
    blockStore = BlockStore();
    return lists;
}

template VXPostingLists<std::uint32_t> VXKeyIndex::takeLists(const VXPostingLayout&, std::uint32_t);
template VXPostingLists<std::uint64_t> VXKeyIndex::takeLists(const VXPostingLayout&, std::uint32_t);

VXLandmark* VXKeyIndex::findLandmark(std::size_t file, std::int64_t offset, std::uint32_t key) const
{
    const auto& [id, sources] = files[file];
    for (auto source = sources.rbegin(); source != sources.rend(); ++source) {
        auto& frames = (*source)->getLandmarkMap();
        const auto frame = frames.find(offset);
        if (frame == frames.end()) continue;
        for (auto found = frame->second.rbegin(); found != frame->second.rend(); ++found) {
            const VXLandmark* landmark = *found;
            if (landmark != nullptr && landmark->key == key && landmark->file != nullptr &&
                landmark->getFileID() == id)
                return *found;
        }
    }
    return nullptr;
}

} // namespace VXS
