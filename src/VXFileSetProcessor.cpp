#include "VXFileSetProcessor.h"

#include <algorithm>
#include <limits>
#include <numeric>
#include <utility>

#include "VXClusterSync.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXLandmark.h"

namespace VXS
{

namespace
{

// A landmark without a file counts for the cap of its key, and has nobody to vote for.
constexpr std::uint32_t noFile = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t lastOfKey = std::uint32_t{1} << 31u;

constexpr std::size_t entriesPerDeal = 4096;
constexpr std::size_t mostDeals = 4096;
// The upper 12 bits choose among as many deals.
constexpr unsigned int dealShift = 20;

// Spreads keys evenly: their fields leave some bits at 0 and fill others unevenly.
std::uint32_t spread(std::uint32_t key)
{
    return key * 0x9E3779B1u;
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

// Counts the votes of one file, A, against every file of higher id. The possible offsets of all
// these pairs lie one pair after the other in one row of slots, and the row is counted a window at
// a time, so that the table stays small beside the landmarks however long the recordings are.
class VXFileSetProcessor::PairCounter
{
public:
    PairCounter(const VXFileSetProcessor& newProcessor, const Ballot& newBallot,
                VXHistogramSet& newHistograms)
        : processor(newProcessor),
          ballot(newBallot),
          histograms(newHistograms),
          spans(processor.owners.size(), {std::numeric_limits<std::int32_t>::max(),
                                          std::numeric_limits<std::int32_t>::min()}),
          firstSlot(spans.size() + 1),
          pairHistograms(spans.size()),
          bestOffsets(spans.size()),
          ends(spans.size())
    {
        for (const Voter& voter : ballot.voters) {
            Span& span = spans[voter.file & ~lastOfKey];
            span.least = std::min(span.least, voter.offset);
            span.greatest = std::max(span.greatest, voter.offset);
        }
    }

    template <typename Count>
    void countPairsOf(std::uint32_t fileA, KeyProgress& progress)
    {
        if (ballot.runs[fileA].empty()) return;
        layOutSlots(fileA);
        const std::uint64_t slots = firstSlot.back();
        const std::uint64_t windowSlots = std::min(slots, mostSlots());
        std::vector<Count> counts(windowSlots);
        for (std::uint64_t first = 0; first < slots; first += windowSlots) {
            if (windowSlots == slots) {
                count<Count, false>(fileA, first, counts, progress);
            } else {
                count<Count, true>(fileA, first, counts, progress);
            }
            compact(fileA, first, counts);
            std::fill(counts.begin(), counts.end(), Count{0});
        }
        keepEnds(fileA);
    }

private:
    struct Span {
        std::int32_t least;
        std::int32_t greatest;
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
        return std::max<std::uint64_t>(least, ballot.voters.size());
    }

    std::int64_t lowestOffset(std::uint32_t fileA, std::size_t fileB) const
    {
        return static_cast<std::int64_t>(spans[fileA].least) - spans[fileB].greatest;
    }

    void layOutSlots(std::uint32_t fileA)
    {
        std::uint64_t next = 0;
        for (std::size_t fileB = 0; fileB < spans.size(); ++fileB) {
            firstSlot[fileB] = next;
            pairHistograms[fileB] = nullptr;
            if (fileB <= fileA || spans[fileB].least > spans[fileB].greatest) continue;
            const std::int64_t highest =
                static_cast<std::int64_t>(spans[fileA].greatest) - spans[fileB].least;
            next += static_cast<std::uint64_t>(highest - lowestOffset(fileA, fileB)) + 1;
        }
        firstSlot[spans.size()] = next;
    }

    // Where an offset of 0 of each pair would stand, which may be outside the window.
    std::vector<std::int64_t> zeroSlots(std::uint32_t fileA, std::uint64_t firstOfWindow) const
    {
        std::vector<std::int64_t> zeros(spans.size());
        for (std::size_t fileB = 0; fileB < spans.size(); ++fileB) {
            zeros[fileB] = static_cast<std::int64_t>(firstSlot[fileB] - firstOfWindow) -
                           lowestOffset(fileA, fileB);
        }
        return zeros;
    }

    // Calls `visit` with the first of file A's voters in each of its keys, and with the first of
    // their partners, which stand behind them.
    template <typename Visit>
    void visitRuns(std::uint32_t fileA, Visit visit) const
    {
        for (const std::uint32_t begin : ballot.runs[fileA]) {
            const Voter* first = ballot.voters.data() + begin;
            const Voter* partner = first + 1;
            while (partner->file == fileA)
                ++partner;
            visit(first, partner);
        }
    }

    // Calls `visit` with the file and the offset of each voter from `partner` to the last of the
    // key.
    template <typename Visit>
    static void visitPartners(const Voter* partner, Visit visit)
    {
        std::uint32_t mark = 0;
        for (; mark == 0; ++partner) {
            mark = partner->file & lastOfKey;
            visit(partner->file & ~lastOfKey, partner->offset);
        }
    }

    template <typename Count, bool isWindowed>
    void count(std::uint32_t fileA, std::uint64_t firstOfWindow, std::vector<Count>& counts,
               KeyProgress& progress)
    {
        const std::vector<std::int64_t> zeroSlot = zeroSlots(fileA, firstOfWindow);
        const std::int64_t* zeros = zeroSlot.data();
        Count* table = counts.data();
        const std::uint64_t size = counts.size();
        visitRuns(fileA, [&](const Voter* first, const Voter* end) {
            std::uint64_t votes = 0;
            visitPartners(end, [&](std::uint32_t fileB, std::int32_t offsetB) {
                const std::int64_t base = zeros[fileB] - offsetB;
                for (const Voter* a = first; a != end; ++a) {
                    const std::int64_t slot = base + a->offset;
                    if (isWindowed && static_cast<std::uint64_t>(slot) >= size) continue;
                    ++table[slot];
                }
                votes += static_cast<std::uint64_t>(end - first);
            });
            if (firstOfWindow == 0) progress.addVotes(votes);
        });
    }

    template <typename Count>
    void compact(std::uint32_t fileA, std::uint64_t firstOfWindow, const std::vector<Count>& counts)
    {
        const std::uint64_t endOfWindow = firstOfWindow + counts.size();
        for (std::size_t fileB = fileA + 1; fileB < spans.size(); ++fileB) {
            const std::uint64_t begin = std::max(firstSlot[fileB], firstOfWindow);
            const std::uint64_t end = std::min(firstSlot[fileB + 1], endOfWindow);
            for (std::uint64_t slot = begin; slot < end; ++slot) {
                const Count votes = counts[slot - firstOfWindow];
                if (votes == 0) continue;
                const auto step = static_cast<std::int64_t>(slot - firstSlot[fileB]);
                histogramOf(fileA, fileB).append(lowestOffset(fileA, fileB) + step, votes);
            }
            VXHistogram* histogram = pairHistograms[fileB];
            if (histogram != nullptr && firstSlot[fileB + 1] <= endOfWindow) {
                histogram->shrinkToFit();
            }
        }
    }

    VXHistogram& histogramOf(std::uint32_t fileA, std::size_t fileB)
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
    void keepEnds(std::uint32_t fileA)
    {
        for (std::size_t fileB = fileA + 1; fileB < spans.size(); ++fileB) {
            ends[fileB].areFound = false;
            const VXHistogram* histogram = pairHistograms[fileB];
            if (histogram != nullptr) bestOffsets[fileB] = histogram->bestBin().offset;
        }

        const std::int64_t* best = bestOffsets.data();
        visitRuns(fileA, [&](const Voter* first, const Voter* end) {
            // Hardly any vote is for the best bin, and a bit for each remainder of the offsets by
            // 64 tells of nearly all at once that they are not.
            std::uint64_t remainders = 0;
            for (const Voter* a = first; a != end; ++a)
                remainders |= remainderBit(a->offset);
            visitPartners(end, [&](std::uint32_t fileB, std::int32_t offsetB) {
                const std::int64_t wanted = best[fileB] + offsetB;
                if ((remainders & remainderBit(wanted)) == 0) return;
                for (const Voter* a = first; a != end; ++a) {
                    if (a->offset == wanted) extend(ends[fileB], a);
                }
            });
        });

        for (std::size_t fileB = fileA + 1; fileB < spans.size(); ++fileB) {
            if (pairHistograms[fileB] == nullptr) continue;
            pairHistograms[fileB]->keepEnds(
                bestOffsets[fileB],
                {landmarkOf(fileA, ends[fileB].least), landmarkOf(fileA, ends[fileB].greatest)});
        }
    }

    static std::uint64_t remainderBit(std::int64_t offset)
    {
        return std::uint64_t{1} << (static_cast<std::uint64_t>(offset) & 63u);
    }

    void extend(EndVoters& found, const Voter* a) const
    {
        const auto voter = static_cast<std::size_t>(a - ballot.voters.data());
        if (!found.areFound) {
            found = {voter, voter, true};
            return;
        }
        const auto& voters = ballot.voters;
        const auto isLater = [this](std::size_t left, std::size_t right) {
            return keyOf(left) >= keyOf(right);
        };
        const std::int32_t offset = voters[voter].offset;
        const std::int32_t least = voters[found.least].offset;
        const std::int32_t greatest = voters[found.greatest].offset;
        if (offset < least || (offset == least && isLater(voter, found.least))) {
            found.least = voter;
        }
        if (offset > greatest || (offset == greatest && isLater(voter, found.greatest))) {
            found.greatest = voter;
        }
    }

    std::uint32_t keyOf(std::size_t voter) const
    {
        const auto isBefore = [](std::size_t position, const auto& keyEnd) {
            return position < keyEnd.first;
        };
        return std::upper_bound(ballot.keyEnds.begin(), ballot.keyEnds.end(), voter, isBefore)
            ->second;
    }

    VXLandmark* landmarkOf(std::uint32_t file, std::size_t voter) const
    {
        return processor.findLandmark(file, ballot.voters[voter].offset, keyOf(voter));
    }

    const VXFileSetProcessor& processor;
    const Ballot& ballot;
    VXHistogramSet& histograms;
    std::vector<Span> spans;
    // Where the slots of each pair begin, and the end of the last.
    std::vector<std::uint64_t> firstSlot;
    // By file B, borrowed from `histograms`.
    std::vector<VXHistogram*> pairHistograms;
    std::vector<std::int64_t> bestOffsets;
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
    VXHistogramSet* histograms = convert2Histograms(progress);
    clear();
    return histograms;
}

void VXFileSetProcessor::clear()
{
    landmarkIndex = std::vector<Deal>(1);
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
        std::size_t deals = 1;
        while (deals < mostDeals && deals * entriesPerDeal < expected)
            deals *= 2;
        landmarkIndex = std::vector<Deal>(deals);
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
            if (landmark->file != lastFile) {
                lastFile = landmark->file;
                lastOwner = ownerOf(*landmark, file);
                isNewPlace = true;
            }
            if (isNewPlace) places.push_back({lastOwner, landmark->offset});
            isNewPlace = false;
            addEntry({landmark->key, static_cast<std::uint32_t>(places.size() - 1)});
        }
    }
}

void VXFileSetProcessor::addEntry(const Entry& entry)
{
    // There are a power of two of deals, and the upper bits are the best spread.
    const std::size_t deal = (spread(entry.key) >> dealShift) & (landmarkIndex.size() - 1);
    Deal& target = landmarkIndex[deal];
    if (target.next == target.blockEnd) {
        target.blocks.emplace_back(new Entry[Deal::blockSize]);
        target.next = target.blocks.back().get();
        target.blockEnd = target.next + Deal::blockSize;
    }
    *target.next = entry;
    ++target.next;
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
    for (const auto& block : deal.blocks) {
        const std::size_t count = std::min(left, Deal::blockSize);
        for (std::size_t i = 0; i < count; ++i)
            visit(block[i]);
        left -= count;
    }
}

// Moves the landmarks of a deal into `sorted`, by key and, within one, by place.
void VXFileSetProcessor::takeByKey(Deal& deal, std::vector<Entry>& sorted)
{
    const std::size_t size = sizeOf(deal);
    unsigned int bits = 0;
    while (size >> bits != 0)
        ++bits;
    // The bits below those that chose the deal.
    const auto bucketOf = [bits](const Entry& entry) {
        const std::uint64_t lowBits = spread(entry.key) & ((1u << dealShift) - 1u);
        return static_cast<std::size_t>(lowBits << bits >> dealShift);
    };

    std::vector<std::uint32_t> bucketEnds(std::size_t{1} << bits);
    visitEntries(deal, [&](const Entry& entry) { ++bucketEnds[bucketOf(entry)]; });
    std::uint32_t next = 0;
    for (std::uint32_t& bucket : bucketEnds)
        next += std::exchange(bucket, next);
    sorted.resize(size);
    visitEntries(deal, [&](const Entry& entry) { sorted[bucketEnds[bucketOf(entry)]++] = entry; });
    deal = Deal();

    std::size_t begin = 0;
    for (const std::uint32_t end : bucketEnds) {
        const auto first = sorted.begin() + static_cast<std::ptrdiff_t>(begin);
        const auto last = sorted.begin() + static_cast<std::ptrdiff_t>(end);
        if (!std::is_sorted(first, last)) std::sort(first, last);
        begin = end;
    }
}

void VXFileSetProcessor::purgeSingletons()
{
    orderPlaces();
    std::vector<Entry> sorted;
    for (Deal& deal : landmarkIndex) {
        takeByKey(deal, sorted);
        for (std::size_t i = 0; i < sorted.size(); ++i) {
            const bool isAlone = (i == 0 || sorted[i - 1].key != sorted[i].key) &&
                                 (i + 1 == sorted.size() || sorted[i + 1].key != sorted[i].key);
            if (!isAlone) addEntry(sorted[i]);
        }
    }
}

// Enters the landmarks of one key, unless they are too many or stand in one file alone.
void VXFileSetProcessor::enterKey(const Entry* begin, const Entry* end, Ballot& ballot) const
{
    if (end - begin < 2) return;
    ++ballot.keys;
    if (static_cast<std::size_t>(end - begin) > maxLandmarkCount) return;
    const auto fileOf = [this](const Entry* entry) { return places[entry->place].file; };
    while (end != begin && fileOf(end - 1) == noFile)
        --end;
    if (begin == end || fileOf(begin) == fileOf(end - 1)) return;

    std::uint32_t lastFile = noFile;
    std::uint64_t voters = 0;
    const std::uint32_t highestFile = fileOf(end - 1);
    for (const Entry* entry = begin; entry != end; ++entry) {
        const Place& place = places[entry->place];
        if (place.file != lastFile) {
            ballot.votes += voters * static_cast<std::uint64_t>(end - entry);
            voters = 0;
            lastFile = place.file;
            if (place.file != highestFile) {
                ballot.runs[place.file].push_back(static_cast<std::uint32_t>(ballot.voters.size()));
            }
        }
        ++voters;
        ballot.voters.push_back({place.file, place.offset});
    }
    ballot.voters.back().file |= lastOfKey;
    ballot.keyEnds.emplace_back(ballot.voters.size(), begin->key);
}

VXFileSetProcessor::Ballot VXFileSetProcessor::collectBallot()
{
    orderPlaces();
    Ballot ballot;
    ballot.runs.resize(owners.size());
    std::size_t size = 0;
    for (const Deal& deal : landmarkIndex)
        size += sizeOf(deal);
    ballot.voters.reserve(size);

    std::vector<Entry> sorted;
    for (Deal& deal : landmarkIndex) {
        takeByKey(deal, sorted);
        const Entry* end = sorted.data() + sorted.size();
        for (const Entry* begin = sorted.data(); begin != end;) {
            const Entry* next = begin;
            while (next != end && next->key == begin->key)
                ++next;
            enterKey(begin, next, ballot);
            begin = next;
        }
    }
    return ballot;
}

// Of several equal landmarks the one that was added last.
VXLandmark* VXFileSetProcessor::findLandmark(std::uint32_t file, std::int32_t offset,
                                             std::uint32_t key) const
{
    const Owner& owner = owners[file];
    for (auto source = owner.sources.rbegin(); source != owner.sources.rend(); ++source) {
        auto& landmarks = (*source)->getLandmarkMap();
        const auto frame = landmarks.find(offset);
        if (frame == landmarks.end()) continue;
        const auto found = std::find_if(
            frame->second.rbegin(), frame->second.rend(), [&](const VXLandmark* landmark) {
                return landmark->key == key && landmark->file != nullptr &&
                       landmark->getFileID() == owner.fileID;
            });
        if (found != frame->second.rend()) return *found;
    }
    return nullptr;
}

VXHistogramSet* VXFileSetProcessor::convert2Histograms(VXProgress* progress)
{
    if (progress != nullptr) progress->setFraction(0.0f);
    VXHistogramSetHolder histograms(new VXHistogramSet());
    const Ballot ballot = collectBallot();

    KeyProgress keyProgress(progress, ballot.keys, ballot.votes);
    PairCounter counter(*this, ballot, *histograms);
    const bool fitsIn32Bits = ballot.votes <= std::numeric_limits<std::uint32_t>::max();
    for (std::uint32_t fileA = 0; fileA < owners.size(); ++fileA) {
        if (fitsIn32Bits) {
            counter.countPairsOf<std::uint32_t>(fileA, keyProgress);
        } else {
            counter.countPairsOf<std::uint64_t>(fileA, keyProgress);
        }
    }
    keyProgress.finish();
    return histograms.release();
}

} // namespace VXS
