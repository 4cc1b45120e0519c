#include "VXFileSetProcessor.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

#include "VXClusterSync.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXLandmark.h"
#include "VXPrefetch.h"

namespace VXS
{

namespace
{

// A landmark without a file counts for the cap of its key, and has nobody to vote for.
constexpr std::uint32_t noFile = std::numeric_limits<std::uint32_t>::max();

constexpr std::size_t entriesPerDeal = 16384;
constexpr unsigned int mostDealBits = 12;
// Cut from one array of 2 MB where the landmarks are many enough to fill it.
constexpr std::size_t manyBlocks = 512;
constexpr unsigned int keyBits = 32;

// An odd number near 2^32 divided by the golden ratio.
constexpr std::uint32_t spreadFactor = 0x9E3779B1u;

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

// Where each element would stand in order.
template <typename Element, typename Order>
std::vector<std::uint32_t> ranksOf(const std::vector<Element>& elements, Order order)
{
    std::vector<std::uint32_t> sorted(elements.size());
    std::iota(sorted.begin(), sorted.end(), 0u);
    std::stable_sort(sorted.begin(), sorted.end(), [&](std::uint32_t left, std::uint32_t right) {
        return order(elements[left], elements[right]);
    });
    std::vector<std::uint32_t> ranks(elements.size());
    for (std::size_t i = 0; i < sorted.size(); ++i) {
        ranks[sorted[i]] = static_cast<std::uint32_t>(i);
    }
    return ranks;
}

// Calls `visit` with the begin and the end of the landmarks of each key.
template <typename Entry, typename Visit>
void visitKeys(const std::vector<Entry>& sorted, Visit visit)
{
    const Entry* end = sorted.data() + sorted.size();
    for (const Entry* begin = sorted.data(); begin != end;) {
        const Entry* next = begin;
        while (next != end && next->spreadKey == begin->spreadKey)
            ++next;
        visit(begin, next);
        begin = next;
    }
}

// The landmarks of a file whose counts are up to date; otherwise 0.
std::size_t expectedLandmarks(VXFile& file)
{
    const std::int64_t count = file.queryNumberLandmarksInBetween(file.getMinLandmarkOffsetTime(),
                                                                  file.getMaxLandmarkOffsetTime());
    return static_cast<std::size_t>(std::max<std::int64_t>(count, 0));
}

} // namespace

// Reports the share of the keys that are done, at most once a whole percent. The votes are cast by
// pairs of files and not key by key, so the keys are counted in step with the votes.
class VXFileSetProcessor::KeyProgress
{
public:
    KeyProgress(VXProgress* newProgress, std::size_t newKeys, std::uint64_t newVotes)
        : progress(newProgress), keys(newKeys), votes(newVotes)
    {
    }

    void addVotes(std::uint64_t cast)
    {
        votesDone += cast;
        if (progress == nullptr || votesDone < nextReport) return;
        nextReport = votesDone + votes / 256;
        const double share = static_cast<double>(votesDone) / static_cast<double>(votes);
        reportUpTo(static_cast<std::size_t>(share * static_cast<double>(keys)));
    }

    void finish()
    {
        if (progress != nullptr) reportUpTo(keys);
    }

private:
    void reportUpTo(std::size_t keysDone)
    {
        const auto total = static_cast<float>(keys);
        for (; counter < std::min(keysDone, keys); ++counter) {
            const float share = static_cast<float>(counter + 1) * 100.0f / total;
            const auto percentage = static_cast<std::int32_t>(share);
            if (lastPercentage >= percentage) continue;
            progress->setFraction(static_cast<float>(percentage) / 100.0f);
            lastPercentage = percentage;
        }
    }

    VXProgress* progress;
    std::size_t keys;
    std::uint64_t votes;
    std::uint64_t votesDone = 0;
    std::uint64_t nextReport = 0;
    std::size_t counter = 0;
    std::int32_t lastPercentage = 0;
};

// Everything that may vote. A voter is one landmark, coded as its file above its frame; those of
// one key stand together, in order of their files and frames.
template <typename Code>
struct VXFileSetProcessor::Ballot {
    static constexpr Code lastOfKey = Code{1} << (std::numeric_limits<Code>::digits - 1);

    struct KeyEnd {
        std::uint32_t voter;
        std::uint32_t spreadKey;
    };

    // The voters of one file in one key.
    struct Run {
        std::uint32_t begin;
        std::uint32_t end;
    };

    struct File {
        // One for each of its keys that files of higher id hold too.
        std::vector<Run> runs;
        Code least = std::numeric_limits<Code>::max();
        Code greatest = 0;

        bool hasVoters() const { return least <= greatest; }
    };

    Ballot(const VoterLayout& newLayout, std::size_t fileCount, std::size_t mostVoters)
        : layout(newLayout), voters(mostVoters), files(fileCount)
    {
        // What is reserved too much is never touched.
        keyEnds.reserve(mostVoters / 2);
        for (File& file : files)
            file.runs.reserve(mostVoters / fileCount);
    }

    std::size_t fileOf(Code voter) const
    {
        return static_cast<std::size_t>((voter & ~lastOfKey) >> layout.offsetBits);
    }

    // Enters the landmarks of one key, unless they stand in one file alone. `codes` ends before the
    // places without a file.
    void enterKey(const Entry* begin, const Entry* end, const std::vector<Code>& codes)
    {
        while (end != begin && (end - 1)->place >= codes.size())
            --end;
        if (begin == end) return;
        if (fileOf(codes[begin->place]) == fileOf(codes[(end - 1)->place])) return;

        Code* const first = voters.data() + size;
        Code* last = first;
        for (const Entry* entry = begin; entry != end; ++entry) {
            *last = codes[entry->place];
            ++last;
        }
        for (const Code* run = first; run != last;) {
            const std::size_t number = fileOf(*run);
            const Code* runEnd = run + 1;
            while (runEnd != last && fileOf(*runEnd) == number)
                ++runEnd;
            File& file = files[number];
            file.least = std::min(file.least, *run);
            file.greatest = std::max(file.greatest, *(runEnd - 1));
            if (runEnd != last) {
                const auto length = static_cast<std::size_t>(runEnd - run);
                file.runs.push_back({static_cast<std::uint32_t>(run - voters.data()),
                                     static_cast<std::uint32_t>(runEnd - voters.data())});
                votes += length * static_cast<std::uint64_t>(last - runEnd);
            }
            run = runEnd;
        }
        *(last - 1) |= lastOfKey;
        size = static_cast<std::size_t>(last - voters.data());
        keyEnds.push_back({static_cast<std::uint32_t>(size), begin->spreadKey});
    }

    VoterLayout layout;
    LargeArray<Code> voters;
    std::size_t size = 0;
    // In the order of the voters.
    std::vector<KeyEnd> keyEnds;
    std::vector<File> files;
    std::size_t keys = 0;
    std::uint64_t votes = 0;
};

// Counts the votes of one file, A, against every file of higher id. The possible offsets of all
// these pairs lie one pair after the other in one row of slots, and the row is counted a window at
// a time, so that the table stays small beside the landmarks however long the recordings are.
//
// A slot, and the place of a wanted voter, is a sum of two codes and a constant of the pair. The
// sums wrap around in 64 bits, so that the constants may be negative.
template <typename Code>
class VXFileSetProcessor::PairCounter
{
public:
    PairCounter(const VXFileSetProcessor& newProcessor, const Ballot<Code>& newBallot,
                VXHistogramSet& newHistograms)
        : processor(newProcessor),
          ballot(newBallot),
          histograms(newHistograms),
          firstSlot(ballot.files.size() + 1),
          isPartner(ballot.files.size()),
          pairHistograms(ballot.files.size()),
          constants(ballot.files.size()),
          ends(ballot.files.size())
    {
    }

    template <typename Count>
    void countAllPairs(KeyProgress& progress)
    {
        std::vector<Count> counts;
        for (std::size_t fileA = 0; fileA < ballot.files.size(); ++fileA) {
            if (ballot.files[fileA].runs.empty()) continue;
            countPairsOf(fileA, counts, progress);
            keepEnds(fileA);
        }
    }

private:
    using Run = typename Ballot<Code>::Run;

    template <typename Count>
    struct Window {
        // At 0 but while they are counted.
        Count* counts;
        std::uint64_t size;
    };

    struct EndVoters {
        std::size_t least;
        std::size_t greatest;
        bool areFound;
    };

    // In proportion to the voters, and so to the landmarks.
    std::uint64_t mostSlots() const
    {
        constexpr std::uint64_t least = std::uint64_t{1} << 20u;
        return std::max<std::uint64_t>(least, ballot.size);
    }

    // Of the file's first voter or last, from the first frame of any.
    std::int64_t frameOf(Code voter) const
    {
        return static_cast<std::int64_t>(voter & ((Code{1} << ballot.layout.offsetBits) - 1u));
    }

    std::int64_t lowestOffset(std::size_t fileA, std::size_t fileB) const
    {
        return frameOf(ballot.files[fileA].least) - frameOf(ballot.files[fileB].greatest);
    }

    // What the codes of files A and B differ by where their frames are equal.
    std::uint64_t codesBetween(std::size_t fileA, std::size_t fileB) const
    {
        return static_cast<std::uint64_t>(fileB - fileA) << ballot.layout.offsetBits;
    }

    template <typename Count>
    void countPairsOf(std::size_t fileA, std::vector<Count>& counts, KeyProgress& progress)
    {
        layOutSlots(fileA);
        const std::uint64_t slots = firstSlot.back();
        const std::uint64_t windowSlots = std::min(slots, mostSlots());
        if (counts.size() < windowSlots) counts.resize(windowSlots);
        const Window<Count> window{counts.data(), windowSlots};
        if (slots == windowSlots) {
            count<false>(fileA, 0, window, progress);
            compact(fileA, 0, window);
            return;
        }
        for (std::uint64_t first = 0; first < slots; first += windowSlots) {
            count<true>(fileA, first, window, progress);
            compact(fileA, first, window);
        }
    }

    // Lays out the slots for all files of higher id, and where these are many beside what votes,
    // only for those with which file A shares a key: in a job of many groups those are few.
    void layOutSlots(std::size_t fileA)
    {
        for (std::size_t fileB = 0; fileB < isPartner.size(); ++fileB)
            isPartner[fileB] = fileB > fileA && ballot.files[fileB].hasVoters() ? 1 : 0;
        layOutPartners(fileA);
        if (firstSlot.back() / 8 <= ballot.files[fileA].runs.size()) return;

        std::fill(isPartner.begin(), isPartner.end(), char{0});
        visitRuns(fileA, [&](const Code*, const Code* end) {
            visitPartners(end, [&](Code partner) { isPartner[ballot.fileOf(partner)] = 1; });
        });
        layOutPartners(fileA);
    }

    void layOutPartners(std::size_t fileA)
    {
        std::uint64_t next = 0;
        for (std::size_t fileB = 0; fileB < ballot.files.size(); ++fileB) {
            firstSlot[fileB] = next;
            pairHistograms[fileB] = nullptr;
            if (!isPartner[fileB]) continue;
            const std::int64_t highest =
                frameOf(ballot.files[fileA].greatest) - frameOf(ballot.files[fileB].least);
            next += static_cast<std::uint64_t>(highest - lowestOffset(fileA, fileB)) + 1;
        }
        firstSlot.back() = next;
    }

    // Calls `visit` with the begin and the end of file A's voters in each of its keys; their
    // partners stand behind them.
    template <typename Visit>
    void visitRuns(std::size_t fileA, Visit visit) const
    {
        // The runs of a file are spread over the voters of all, and too short to foresee the next.
        constexpr std::size_t ahead = 24;
        const Code* voters = ballot.voters.data();
        const std::vector<Run>& runs = ballot.files[fileA].runs;
        for (std::size_t i = 0; i < runs.size(); ++i) {
            VXS_PREFETCH(voters + runs[std::min(i + ahead, runs.size() - 1)].begin);
            visit(voters + runs[i].begin, voters + runs[i].end);
        }
    }

    // Calls `visit` with each voter from `partner` to the last of its key, and gives their number.
    template <typename Visit>
    static std::size_t visitPartners(const Code* partner, Visit visit)
    {
        const Code* next = partner;
        Code mark = 0;
        do {
            mark = *next & Ballot<Code>::lastOfKey;
            visit(static_cast<Code>(*next ^ mark));
            ++next;
        } while (mark == 0);
        return static_cast<std::size_t>(next - partner);
    }

    template <bool isWindowed, typename Count>
    void count(std::size_t fileA, std::uint64_t firstOfWindow, const Window<Count>& window,
               KeyProgress& progress)
    {
        for (std::size_t fileB = fileA + 1; fileB < constants.size(); ++fileB) {
            constants[fileB] = firstSlot[fileB] - firstOfWindow -
                               static_cast<std::uint64_t>(lowestOffset(fileA, fileB)) +
                               codesBetween(fileA, fileB);
        }
        const std::uint64_t* constantOf = constants.data();
        Count* counts = window.counts;
        const std::uint64_t size = window.size;
        const unsigned int offsetBits = ballot.layout.offsetBits;
        visitRuns(fileA, [&](const Code* begin, const Code* end) {
            const std::size_t partners = visitPartners(end, [&](Code partner) {
                const std::uint64_t base = constantOf[partner >> offsetBits] - partner;
                for (const Code* voter = begin; voter != end; ++voter) {
                    const std::uint64_t slot = base + *voter;
                    if (isWindowed && slot >= size) continue;
                    ++counts[slot];
                }
            });
            const auto voters = static_cast<std::size_t>(end - begin);
            if (!isWindowed || firstOfWindow == 0) {
                progress.addVotes(std::uint64_t{voters} * partners);
            }
        });
    }

    // Moves what a window holds into the histograms, and leaves it at 0.
    template <typename Count>
    void compact(std::size_t fileA, std::uint64_t firstOfWindow, const Window<Count>& window)
    {
        const std::uint64_t endOfWindow = firstOfWindow + window.size;
        for (std::size_t fileB = fileA + 1; fileB < ballot.files.size(); ++fileB) {
            const std::uint64_t begin = std::max(firstSlot[fileB], firstOfWindow);
            const std::uint64_t end = std::min(firstSlot[fileB + 1], endOfWindow);
            for (std::uint64_t slot = begin; slot < end; ++slot) {
                Count& votes = window.counts[slot - firstOfWindow];
                if (votes == 0) continue;
                const auto step = static_cast<std::int64_t>(slot - firstSlot[fileB]);
                histogramOf(fileA, fileB).append(lowestOffset(fileA, fileB) + step, votes);
                votes = 0;
            }
            VXHistogram* histogram = pairHistograms[fileB];
            if (histogram != nullptr && firstSlot[fileB + 1] <= endOfWindow) {
                histogram->shrinkToFit();
            }
        }
    }

    VXHistogram& histogramOf(std::size_t fileA, std::size_t fileB)
    {
        VXHistogram*& histogram = pairHistograms[fileB];
        if (histogram == nullptr) {
            const auto pair =
                std::make_pair(processor.owners[fileA].fileID, processor.owners[fileB].fileID);
            VXHistogram*& entry = histograms.emplace(pair, nullptr).first->second;
            entry = new VXHistogram();
            histogram = entry;
        }
        return *histogram;
    }

    // Casts the votes once more to find those of the best bins. Keys vote in ascending order, and
    // on equal positions the later vote replaces the earlier one.
    void keepEnds(std::size_t fileA)
    {
        for (std::size_t fileB = fileA + 1; fileB < ballot.files.size(); ++fileB) {
            ends[fileB].areFound = false;
            if (pairHistograms[fileB] == nullptr) continue;
            const std::int64_t best = pairHistograms[fileB]->bestBin().offset;
            constants[fileB] = static_cast<std::uint64_t>(best) - codesBetween(fileA, fileB);
        }

        // The more ends are found, the fewer voters are at or beyond them: most stand inside all.
        const std::size_t runsBetween = std::max<std::size_t>(256, ballot.files.size());
        std::size_t runsLeft = runsBetween;
        Inside inside;
        visitRuns(fileA, [&](const Code* begin, const Code* end) {
            if (runsLeft == 0) {
                inside = insideOfEnds(fileA);
                runsLeft = runsBetween;
            }
            --runsLeft;
            if (*begin > inside.least && *(end - 1) < inside.greatest) return;
            extendEnds(begin, end);
        });

        for (std::size_t fileB = fileA + 1; fileB < ballot.files.size(); ++fileB) {
            if (pairHistograms[fileB] == nullptr) continue;
            pairHistograms[fileB]->keepEnds(
                pairHistograms[fileB]->bestBin().offset,
                {landmarkOf(fileA, ends[fileB].least), landmarkOf(fileA, ends[fileB].greatest)});
        }
    }

    // A voter of file A between the two, neither of which belongs to it, is no end of any pair.
    struct Inside {
        Code least = std::numeric_limits<Code>::max();
        Code greatest = 0;
    };

    Inside insideOfEnds(std::size_t fileA) const
    {
        Inside inside{0, std::numeric_limits<Code>::max()};
        for (std::size_t fileB = fileA + 1; fileB < ends.size(); ++fileB) {
            if (pairHistograms[fileB] == nullptr) continue;
            if (!ends[fileB].areFound) return Inside();
            inside.least = std::max(inside.least, ballot.voters[ends[fileB].least]);
            inside.greatest = std::min(inside.greatest, ballot.voters[ends[fileB].greatest]);
        }
        return inside;
    }

    void extendEnds(const Code* begin, const Code* end)
    {
        // Hardly any vote is for the best bin, and a bit for each remainder of the codes by 64
        // tells of nearly all at once that they are not.
        std::uint64_t remainders = 0;
        for (const Code* voter = begin; voter != end; ++voter)
            remainders |= remainderBit(*voter);
        visitPartners(end, [&](Code partner) {
            const std::size_t fileB = ballot.fileOf(partner);
            const std::uint64_t wanted = constants[fileB] + partner;
            if ((remainders & remainderBit(wanted)) == 0) return;
            for (const Code* voter = begin; voter != end; ++voter) {
                if (*voter == wanted) extend(ends[fileB], voter);
            }
        });
    }

    static std::uint64_t remainderBit(std::uint64_t code)
    {
        return std::uint64_t{1} << (code & 63u);
    }

    void extend(EndVoters& found, const Code* place) const
    {
        const auto voter = static_cast<std::size_t>(place - ballot.voters.data());
        if (!found.areFound) {
            found = {voter, voter, true};
            return;
        }
        const auto& voters = ballot.voters;
        const auto isLater = [this](std::size_t left, std::size_t right) {
            return keyOf(left) >= keyOf(right);
        };
        const Code code = voters[voter];
        const Code least = voters[found.least];
        const Code greatest = voters[found.greatest];
        if (code < least || (code == least && isLater(voter, found.least))) found.least = voter;
        if (code > greatest || (code == greatest && isLater(voter, found.greatest))) {
            found.greatest = voter;
        }
    }

    std::uint32_t keyOf(std::size_t voter) const
    {
        const auto isBefore = [](std::size_t position, const auto& keyEnd) {
            return position < keyEnd.voter;
        };
        return keyOfSpread(
            std::upper_bound(ballot.keyEnds.begin(), ballot.keyEnds.end(), voter, isBefore)
                ->spreadKey);
    }

    VXLandmark* landmarkOf(std::size_t fileA, std::size_t voter) const
    {
        const std::int64_t offset = ballot.layout.leastOffset + frameOf(ballot.voters[voter]);
        return processor.findLandmark(fileA, offset, keyOf(voter));
    }

    const VXFileSetProcessor& processor;
    const Ballot<Code>& ballot;
    VXHistogramSet& histograms;
    // Where the slots of each pair begin, and the end of the last.
    std::vector<std::uint64_t> firstSlot;
    // By file B, whether it has slots; not vector<bool>, whose bits are slow to set one by one.
    std::vector<char> isPartner;
    // By file B, borrowed from `histograms`.
    std::vector<VXHistogram*> pairHistograms;
    // By file B: what leads from the codes of two voters to their slot, or from that of B's to the
    // one of A's that would vote for the best bin with it.
    std::vector<std::uint64_t> constants;
    std::vector<EndVoters> ends;
};

VXFileSetProcessor::VXFileSetProcessor(std::uint32_t newMaxLandmarkCount)
    : landmarkIndex(1), maxLandmarkCount(newMaxLandmarkCount)
{
}

VXHistogramSet* VXFileSetProcessor::run(VXFileSet* fileSet, VXProgress* progress)
{
    clear();
    addLandmarks(fileSet, progress);
    VXHistogramSetHolder histograms(convert2Histograms(progress));
    clear();
    return histograms.release();
}

void VXFileSetProcessor::clear()
{
    landmarkIndex = std::vector<Deal>(1);
    dealBits = 0;
    blockStore = BlockStore();
    places = std::vector<Place>();
    owners.clear();
}

void VXFileSetProcessor::addLandmarks(VXFileSet* fileSet, VXProgress* progress)
{
    if (fileSet == nullptr) return;
    if (progress != nullptr) progress->setFraction(0.0f);

    const auto& files = fileSet->getFiles();
    if (places.empty()) {
        std::size_t expected = 0;
        for (const auto& entry : files) {
            if (entry.second != nullptr) expected += expectedLandmarks(*entry.second);
        }
        dealBits = std::min(mostDealBits, bitsToHold(expected / entriesPerDeal));
        landmarkIndex = std::vector<Deal>(std::size_t{1} << dealBits);
        blockStore.blocksAtATime = expected / Deal::blockSize < manyBlocks ? 1 : manyBlocks;
    }

    std::int32_t done = 0;
    for (const auto& entry : files) {
        if (entry.second != nullptr) addLandmarks(entry.second);
        ++done;
        if (progress != nullptr) {
            progress->setFraction(static_cast<float>(done) / static_cast<float>(files.size()));
        }
    }
}

void VXFileSetProcessor::addLandmarks(VXFile* file)
{
    const VXFile* lastFile = nullptr;
    std::uint32_t lastOwner = noFile;
    for (const auto& frame : file->getLandmarkMap()) {
        bool isNewPlace = true;
        for (const VXLandmark* landmark : frame.second) {
            if (landmark == nullptr) continue;
            if (landmark->file != lastFile) {
                lastFile = landmark->file;
                lastOwner = ownerOf(*landmark, file);
                isNewPlace = true;
            }
            if (isNewPlace) places.push_back({lastOwner, landmark->offset});
            isNewPlace = false;
            addEntry({spread(landmark->key), static_cast<std::uint32_t>(places.size() - 1)});
        }
    }
}

std::uint32_t VXFileSetProcessor::spread(std::uint32_t key)
{
    return key * spreadFactor;
}

std::uint32_t VXFileSetProcessor::keyOfSpread(std::uint32_t spreadKey)
{
    return spreadKey * inverse(spreadFactor);
}

void VXFileSetProcessor::addEntry(const Entry& entry)
{
    const auto deal =
        static_cast<std::size_t>(std::uint64_t{entry.spreadKey} << dealBits >> keyBits);
    Deal& target = landmarkIndex[deal];
    if (target.next == target.blockEnd) {
        target.blocks.push_back(takeBlock());
        target.next = target.blocks.back();
        target.blockEnd = target.next + Deal::blockSize;
    }
    *target.next = entry;
    ++target.next;
}

VXFileSetProcessor::Entry* VXFileSetProcessor::takeBlock()
{
    auto& [blocksAtATime, slabs, spare] = blockStore;
    if (spare.empty()) {
        slabs.emplace_back(blocksAtATime * Deal::blockSize);
        for (std::size_t i = blocksAtATime; i > 0; --i)
            spare.push_back(slabs.back().data() + (i - 1) * Deal::blockSize);
    }
    Entry* block = spare.back();
    spare.pop_back();
    return block;
}

// The place of the landmark's file, entered if it is new. `source` is where the landmark stands,
// which in all but damaged sets is the same file.
std::uint32_t VXFileSetProcessor::ownerOf(const VXLandmark& landmark, VXFile* source)
{
    if (landmark.file == nullptr) return noFile;
    const std::int64_t fileID = landmark.getFileID();
    auto owner = std::find_if(owners.rbegin(), owners.rend(), [fileID](const Owner& candidate) {
        return candidate.fileID == fileID;
    });
    if (owner == owners.rend()) {
        owners.push_back({fileID, {}});
        owner = owners.rbegin();
    }
    if (owner->sources.empty() || owner->sources.back() != source) {
        owner->sources.push_back(source);
    }
    return static_cast<std::uint32_t>(std::distance(owner, owners.rend()) - 1);
}

// Brings the owners into order of id, and the places into order of owner and frame, as they are
// from the start if the landmarks of each file stand in it and the files were added by id.
void VXFileSetProcessor::orderPlaces()
{
    const std::vector<std::uint32_t> ownerRanks = ranksOf(
        owners, [](const Owner& left, const Owner& right) { return left.fileID < right.fileID; });
    for (Place& place : places) {
        if (place.file != noFile) place.file = ownerRanks[place.file];
    }
    std::sort(owners.begin(), owners.end(),
              [](const Owner& left, const Owner& right) { return left.fileID < right.fileID; });

    const auto standsBefore = [](const Place& left, const Place& right) {
        return left.file != right.file ? left.file < right.file : left.offset < right.offset;
    };
    if (std::is_sorted(places.begin(), places.end(), standsBefore)) return;
    const std::vector<std::uint32_t> placeRanks = ranksOf(places, standsBefore);
    for (Deal& deal : landmarkIndex) {
        visitEntries(deal, [&placeRanks](Entry& entry) { entry.place = placeRanks[entry.place]; });
    }
    std::stable_sort(places.begin(), places.end(), standsBefore);
}

std::size_t VXFileSetProcessor::sizeOf(const Deal& deal) const
{
    return deal.blocks.size() * Deal::blockSize -
           static_cast<std::size_t>(deal.blockEnd - deal.next);
}

template <typename Visit>
void VXFileSetProcessor::visitEntries(Deal& deal, Visit visit) const
{
    std::size_t left = sizeOf(deal);
    for (Entry* block : deal.blocks) {
        const std::size_t count = std::min(left, Deal::blockSize);
        for (std::size_t i = 0; i < count; ++i)
            visit(block[i]);
        left -= count;
    }
}

// Moves the landmarks of a deal into `sorting`, by spread key and, within one, by place.
void VXFileSetProcessor::takeByKey(Deal& deal, Sorting& sorting)
{
    const std::size_t size = sizeOf(deal);
    const unsigned int bits = std::min(bitsToHold(size), keyBits - dealBits);
    // The bits below those that chose the deal.
    const unsigned int unused = keyBits - bits;
    const auto bucketOf = [this, unused](const Entry& entry) {
        return static_cast<std::size_t>(std::uint64_t{entry.spreadKey << dealBits} >> unused);
    };

    std::vector<Entry>& sorted = sorting.sorted;
    std::vector<std::uint32_t>& bucketEnds = sorting.bucketEnds;
    bucketEnds.assign(std::size_t{1} << bits, 0);
    visitEntries(deal, [&](const Entry& entry) { ++bucketEnds[bucketOf(entry)]; });
    std::uint32_t next = 0;
    for (std::uint32_t& bucket : bucketEnds)
        next += std::exchange(bucket, next);
    sorted.resize(size);
    visitEntries(deal, [&](const Entry& entry) { sorted[bucketEnds[bucketOf(entry)]++] = entry; });
    blockStore.spare.insert(blockStore.spare.end(), deal.blocks.begin(), deal.blocks.end());
    deal = Deal();

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

void VXFileSetProcessor::purgeSingletons()
{
    orderPlaces();
    Sorting sorting;
    for (Deal& deal : landmarkIndex) {
        takeByKey(deal, sorting);
        visitKeys(sorting.sorted, [this](const Entry* begin, const Entry* end) {
            if (end - begin < 2) return;
            for (const Entry* entry = begin; entry != end; ++entry)
                addEntry(*entry);
        });
    }
}

VXFileSetProcessor::VoterLayout VXFileSetProcessor::voterLayout() const
{
    VoterLayout layout;
    std::int32_t least = std::numeric_limits<std::int32_t>::max();
    std::int32_t greatest = std::numeric_limits<std::int32_t>::min();
    for (const Place& place : places) {
        if (place.file == noFile) break;
        least = std::min(least, place.offset);
        greatest = std::max(greatest, place.offset);
        ++layout.filedPlaces;
    }
    if (layout.filedPlaces == 0) return layout;
    layout.leastOffset = least;
    layout.offsetBits =
        bitsToHold(static_cast<std::uint64_t>(std::int64_t{greatest} - std::int64_t{least}));
    layout.fileBits = bitsToHold(owners.size() - 1);
    return layout;
}

// The places must be in order. Leaves no landmark in the index.
template <typename Code>
VXFileSetProcessor::Ballot<Code> VXFileSetProcessor::collectBallot(const VoterLayout& layout)
{
    std::vector<Code> codes(layout.filedPlaces);
    for (std::size_t i = 0; i < codes.size(); ++i) {
        const std::int64_t offset = std::int64_t{places[i].offset} - layout.leastOffset;
        codes[i] = static_cast<Code>(std::uint64_t{places[i].file} << layout.offsetBits |
                                     static_cast<std::uint64_t>(offset));
    }
    std::size_t size = 0;
    for (const Deal& deal : landmarkIndex)
        size += sizeOf(deal);

    Ballot<Code> ballot(layout, owners.size(), size);
    Sorting sorting;
    for (Deal& deal : landmarkIndex) {
        takeByKey(deal, sorting);
        visitKeys(sorting.sorted, [&](const Entry* begin, const Entry* end) {
            if (end - begin < 2) return;
            ++ballot.keys;
            if (static_cast<std::size_t>(end - begin) > maxLandmarkCount) return;
            ballot.enterKey(begin, end, codes);
        });
    }
    blockStore = BlockStore();
    return ballot;
}

// Of several equal landmarks the one that was added last.
VXLandmark* VXFileSetProcessor::findLandmark(std::size_t file, std::int64_t offset,
                                             std::uint32_t key) const
{
    const Owner& owner = owners[file];
    for (auto source = owner.sources.rbegin(); source != owner.sources.rend(); ++source) {
        auto& landmarks = (*source)->getLandmarkMap();
        const auto frame = landmarks.find(offset);
        if (frame == landmarks.end()) continue;
        const auto found = std::find_if(
            frame->second.rbegin(), frame->second.rend(), [&](const VXLandmark* landmark) {
                return landmark != nullptr && landmark->key == key && landmark->file != nullptr &&
                       landmark->getFileID() == owner.fileID;
            });
        if (found != frame->second.rend()) return *found;
    }
    return nullptr;
}

template <typename Code>
void VXFileSetProcessor::vote(const VoterLayout& layout, VXHistogramSet& histograms,
                              VXProgress* progress)
{
    const Ballot<Code> ballot = collectBallot<Code>(layout);
    KeyProgress keyProgress(progress, ballot.keys, ballot.votes);
    PairCounter<Code> counter(*this, ballot, histograms);
    if (ballot.votes <= mostNarrowVotes) {
        counter.template countAllPairs<std::uint32_t>(keyProgress);
    } else {
        counter.template countAllPairs<std::uint64_t>(keyProgress);
    }
    keyProgress.finish();
}

VXHistogramSet* VXFileSetProcessor::convert2Histograms(VXProgress* progress)
{
    if (progress != nullptr) progress->setFraction(0.0f);
    VXHistogramSetHolder histograms(new VXHistogramSet());
    orderPlaces();
    const VoterLayout layout = voterLayout();
    // One bit marks the last voter of a key.
    if (layout.fileBits + layout.offsetBits < std::numeric_limits<std::uint32_t>::digits) {
        vote<std::uint32_t>(layout, *histograms, progress);
    } else {
        vote<std::uint64_t>(layout, *histograms, progress);
    }
    return histograms.release();
}

} // namespace VXS
