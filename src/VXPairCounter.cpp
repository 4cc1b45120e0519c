#include "VXPairCounter.h"

#include <algorithm>
#include <iterator>

#include "VXKeyIndex.h"
#include "VXKeyProgress.h"
#include "VXPrefetch.h"

namespace VXS
{

namespace
{

// A table of 4 MB with counters of 32 bits. Of a smaller one a job of few long recordings would
// need several, each of which costs a walk through the runs.
constexpr std::uint64_t slotsPerGroup = std::uint64_t{1} << 20u;

// Sorting a vote takes as long as looking at some tens of empty counters.
constexpr std::uint64_t mostSlotsPerVote = 16;

// The list of a run has been counted to its end.
constexpr std::uint32_t noPartner = std::numeric_limits<std::uint32_t>::max();

// The votes of one slot.
struct SlotVotes {
    std::uint64_t slot;
    std::uint64_t votes;
};

// Moves votes into what is counted, which stands by slot.
void sortVotes(std::vector<std::uint64_t>& slots, std::vector<SlotVotes>& counted)
{
    std::sort(slots.begin(), slots.end());
    const auto middle = static_cast<std::ptrdiff_t>(counted.size());
    for (const std::uint64_t slot : slots) {
        const bool isNew = static_cast<std::ptrdiff_t>(counted.size()) == middle;
        if (isNew || counted.back().slot != slot) counted.push_back({slot, 0});
        ++counted.back().votes;
    }
    slots.clear();
    if (middle == 0) return;

    std::inplace_merge(
        counted.begin(), counted.begin() + middle, counted.end(),
        [](const SlotVotes& left, const SlotVotes& right) { return left.slot < right.slot; });
    auto last = counted.begin();
    for (auto bin = std::next(last); bin != counted.end(); ++bin) {
        if (bin->slot == last->slot) {
            last->votes += bin->votes;
        } else {
            *++last = *bin;
        }
    }
    counted.erase(std::next(last), counted.end());
}

} // namespace

template <typename Code>
VXPairCounter<Code>::VXPairCounter(const VXKeyIndex& newIndex, const VXPostingLists<Code>& newLists,
                                   VXHistogramSet& newHistograms)
    : index(newIndex),
      lists(newLists),
      histograms(newHistograms),
      pairs(newLists.files.size()),
      constants(newLists.files.size()),
      ends(newLists.files.size())
{
}

template <typename Code>
template <typename Count>
void VXPairCounter<Code>::countAllPairs(VXKeyProgress& progress)
{
    std::vector<Count> counts;
    for (fileA = 0; fileA < lists.files.size(); ++fileA) {
        if (lists.files[fileA].runs.empty()) continue;
        if (layOut()) countSparse(progress);
        partners.assign(lists.files[fileA].runs.size(), 0);
        for (Group group = nextGroup(fileA + 1); group.hasPairs; group = nextGroup(group.endFile)) {
            countDense(group, counts, progress);
            compact(group, counts);
        }
        keepEnds();
    }
}

template <typename Code>
std::int64_t VXPairCounter<Code>::lowestOffset(std::size_t fileB) const
{
    return lists.frameOf(lists.files[fileA].least) - lists.frameOf(lists.files[fileB].greatest);
}

template <typename Code>
std::uint64_t VXPairCounter<Code>::slotsWith(std::size_t fileB) const
{
    if (!lists.files[fileB].hasPostings()) return 0;
    const std::int64_t highest =
        lists.frameOf(lists.files[fileA].greatest) - lists.frameOf(lists.files[fileB].least);
    return static_cast<std::uint64_t>(highest - lowestOffset(fileB)) + 1;
}

// What the codes of A and B differ by where their frames are equal.
template <typename Code>
std::uint64_t VXPairCounter<Code>::codesBetween(std::size_t fileB) const
{
    return static_cast<std::uint64_t>(fileB - fileA) << lists.layout.offsetBits;
}

template <typename Code>
typename VXPairCounter<Code>::Group VXPairCounter<Code>::allFiles() const
{
    return {fileA + 1, pairs.size(), true};
}

// In proportion to the postings, and so to the landmarks.
template <typename Code>
std::uint64_t VXPairCounter<Code>::mostSlots() const
{
    constexpr std::uint64_t least = std::uint64_t{1} << 20u;
    return std::max<std::uint64_t>(least, lists.size);
}

// Tells whether there are sparse pairs.
template <typename Code>
bool VXPairCounter<Code>::layOut()
{
    std::uint64_t slots = 0;
    bool areDense = true;
    for (std::size_t fileB = fileA + 1; fileB < pairs.size(); ++fileB) {
        Pair& pair = pairs[fileB];
        pair = Pair();
        pair.slots = slotsWith(fileB);
        pair.isDense = pair.slots > 0;
        slots += pair.slots;
        areDense = areDense && pair.slots <= mostSlots();
    }
    // Files without a vote for A have slots then too, which takes less time than to tell which.
    if (areDense && slots / mostSlotsPerVote <= lists.files[fileA].votes) return false;
    return layOutByVotes();
}

template <typename Code>
bool VXPairCounter<Code>::layOutByVotes()
{
    const Group all = allFiles();
    visitRuns([&](std::size_t, const Code* begin, const Code* end) {
        const auto postings = static_cast<std::uint64_t>(end - begin);
        visitPartners(all, end, [&](std::size_t fileB, Code) { pairs[fileB].votes += postings; });
    });
    bool areSparse = false;
    for (std::size_t fileB = fileA + 1; fileB < pairs.size(); ++fileB) {
        Pair& pair = pairs[fileB];
        if (pair.votes == 0) pair.slots = 0;
        pair.isDense = pair.slots > 0 && pair.slots <= mostSlots() &&
                       pair.slots / mostSlotsPerVote <= pair.votes;
        areSparse = areSparse || (pair.slots > 0 && !pair.isDense);
    }
    return areSparse;
}

template <typename Code>
typename VXPairCounter<Code>::Group VXPairCounter<Code>::nextGroup(std::size_t firstFile) const
{
    Group group{firstFile, firstFile, false};
    std::uint64_t slots = 0;
    for (; group.endFile < pairs.size(); ++group.endFile) {
        const Pair& pair = pairs[group.endFile];
        if (!pair.isDense) continue;
        slots += pair.slots;
        if (group.hasPairs && slots > slotsPerGroup) break;
        group.hasPairs = true;
    }
    return group;
}

// Sets the constants of the pairs of a group, and gives the number of their slots.
template <typename Code>
std::uint64_t VXPairCounter<Code>::makeRow(const Group& group, bool areDense)
{
    std::uint64_t slots = 0;
    for (std::size_t fileB = group.firstFile; fileB < group.endFile; ++fileB) {
        Pair& pair = pairs[fileB];
        constants[fileB] = 0;
        if (pair.isDense != areDense || pair.slots == 0) continue;
        pair.firstSlot = slots;
        constants[fileB] =
            slots - static_cast<std::uint64_t>(lowestOffset(fileB)) + codesBetween(fileB);
        slots += pair.slots;
    }
    return slots;
}

// Calls `visit` with each run of file A: its number, its begin and its end, behind which its
// partners stand.
template <typename Code>
template <typename Visit>
void VXPairCounter<Code>::visitRuns(Visit visit) const
{
    // The runs of a file are spread over all lists, and too short for the processor to foresee the
    // next: with many files, asking for them ahead saves some tenth of the time.
    constexpr std::size_t ahead = 24;
    const Code* const postings = lists.postings.data();
    const std::vector<std::uint32_t>& runs = lists.files[fileA].runs;
    const unsigned int offsetBits = lists.layout.offsetBits;
    for (std::size_t i = 0; i < runs.size(); ++i) {
        VXS_PREFETCH(postings + runs[std::min(i + ahead, runs.size() - 1)]);
        const Code* const begin = postings + runs[i];
        const Code* end = begin + 1;
        while (*end >> offsetBits == fileA)
            ++end;
        visit(i, begin, end);
    }
}

// Calls `visit` with the file and the code of each partner from one on that belongs to the group.
// Gives the first behind the group, or null at the end of the list.
template <typename Code>
template <typename Visit>
const Code* VXPairCounter<Code>::visitPartners(const Group& group, const Code* partner,
                                               Visit visit) const
{
    const unsigned int offsetBits = lists.layout.offsetBits;
    const std::size_t endFile = group.endFile;
    for (;; ++partner) {
        const Code mark = *partner & VXPostingLists<Code>::lastOfList;
        const Code code = *partner ^ mark;
        const auto fileB = static_cast<std::size_t>(code >> offsetBits);
        if (fileB >= endFile) return partner;
        visit(fileB, code);
        if (mark != 0) return nullptr;
    }
}

template <typename Code>
template <typename Count>
void VXPairCounter<Code>::countDense(const Group& group, std::vector<Count>& counts,
                                     VXKeyProgress& progress)
{
    const std::uint64_t size = makeRow(group, true);
    if (counts.size() < size) counts.resize(size);
    Count* const table = counts.data();
    const Code* const postings = lists.postings.data();
    const std::uint64_t* const constantOf = constants.data();
    visitRuns([&](std::size_t run, const Code* begin, const Code* end) {
        if (partners[run] == noPartner) return;
        const Code* const partner = partners[run] == 0 ? end : postings + partners[run];
        std::uint64_t cast = 0;
        const Code* next = visitPartners(group, partner, [&](std::size_t fileB, Code code) {
            const std::uint64_t base = constantOf[fileB] - code;
            for (const Code* posting = begin; posting != end; ++posting) {
                const std::uint64_t slot = base + *posting;
                if (slot < size) ++table[slot];
            }
            ++cast;
        });
        partners[run] = next == nullptr ? noPartner : static_cast<std::uint32_t>(numberOf(next));
        progress.addVotes(cast * static_cast<std::uint64_t>(end - begin));
    });
}

// Moves what the table holds into the histograms, and leaves it at 0.
template <typename Code>
template <typename Count>
void VXPairCounter<Code>::compact(const Group& group, std::vector<Count>& counts)
{
    constexpr std::size_t slotsAtATime = 512;
    std::uint32_t filled[slotsAtATime];
    for (std::size_t fileB = group.firstFile; fileB < group.endFile; ++fileB) {
        const Pair& pair = pairs[fileB];
        if (!pair.isDense) continue;
        const std::int64_t lowest = lowestOffset(fileB);
        for (std::uint64_t slot = 0; slot < pair.slots; slot += slotsAtATime) {
            const std::size_t size =
                static_cast<std::size_t>(std::min<std::uint64_t>(slotsAtATime, pair.slots - slot));
            Count* const begin = counts.data() + pair.firstSlot + slot;
            // Whether a slot has votes cannot be foreseen, so nothing is made to depend on it: each
            // is noted, over the one before where that has none.
            std::size_t count = 0;
            for (std::size_t i = 0; i < size; ++i) {
                filled[count] = static_cast<std::uint32_t>(i);
                count += begin[i] != 0 ? 1 : 0;
            }
            const std::int64_t offset = lowest + static_cast<std::int64_t>(slot);
            for (std::size_t i = 0; i < count; ++i)
                bins.append(offset + static_cast<std::int64_t>(filled[i]), begin[filled[i]]);
            std::fill(begin, begin + size, Count{0});
        }
        enter(fileB);
    }
}

// Counts the sparse pairs of file A, and keeps their ends.
template <typename Code>
void VXPairCounter<Code>::countSparse(VXKeyProgress& progress)
{
    const Group all = allFiles();
    const std::uint64_t size = makeRow(all, false);
    std::vector<std::uint64_t> slots;
    std::vector<SlotVotes> counted;
    std::uint64_t mostUnsorted = mostSlots();
    visitRuns([&](std::size_t, const Code* begin, const Code* end) {
        const std::size_t before = slots.size();
        visitPartners(all, end, [&](std::size_t fileB, Code code) {
            for (const Code* posting = begin; posting != end; ++posting) {
                const std::uint64_t slot = constants[fileB] - code + *posting;
                if (slot < size) slots.push_back(slot);
            }
        });
        progress.addVotes(slots.size() - before);
        if (slots.size() < mostUnsorted) return;
        sortVotes(slots, counted);
        // Merging more than is counted already would take the longer part of the time.
        mostUnsorted = std::max<std::uint64_t>(mostUnsorted, counted.size());
    });
    sortVotes(slots, counted);

    auto next = counted.begin();
    for (std::size_t fileB = all.firstFile; fileB < all.endFile; ++fileB) {
        const Pair& pair = pairs[fileB];
        if (pair.isDense || pair.slots == 0) continue;
        const std::int64_t lowest = lowestOffset(fileB);
        for (; next != counted.end() && next->slot - pair.firstSlot < pair.slots; ++next) {
            const auto step = static_cast<std::int64_t>(next->slot - pair.firstSlot);
            bins.append(lowest + step, next->votes);
        }
        enter(fileB);
    }
}

// Copies the bins of a pair into a histogram of their size, and clears them.
template <typename Code>
void VXPairCounter<Code>::enter(std::size_t fileB)
{
    if (bins.empty()) return;
    const auto ids = std::make_pair(index.fileID(fileA), index.fileID(fileB));
    VXHistogram*& entry = histograms.emplace_hint(histograms.end(), ids, nullptr)->second;
    entry = new VXHistogram(bins);
    pairs[fileB].histogram = entry;
    bins.clear();
}

// Casts the votes once more to find those of the best bins. On equal positions the vote of the
// greater key replaces the other, as if the keys voted in ascending order.
template <typename Code>
void VXPairCounter<Code>::keepEnds()
{
    const Group all = allFiles();
    for (std::size_t fileB = all.firstFile; fileB < all.endFile; ++fileB) {
        ends[fileB].areFound = false;
        constants[fileB] = 0;
        if (pairs[fileB].histogram == nullptr) continue;
        const std::int64_t best = pairs[fileB].histogram->bestBin().offset;
        constants[fileB] = static_cast<std::uint64_t>(best) - codesBetween(fileB);
    }

    // The more ends are found, the fewer postings are at or beyond them: most stand inside all.
    const std::size_t runsBetween = std::max<std::size_t>(256, pairs.size());
    std::size_t runsLeft = runsBetween;
    Inside inside;
    const std::uint64_t* const constantOf = constants.data();
    visitRuns([&](std::size_t, const Code* begin, const Code* end) {
        if (runsLeft == 0) {
            inside = insideOfEnds();
            runsLeft = runsBetween;
        }
        --runsLeft;
        if (*begin > inside.least && *(end - 1) < inside.greatest) return;
        visitPartners(all, end, [&](std::size_t fileB, Code code) {
            const std::uint64_t wanted = constantOf[fileB] + code;
            for (const Code* posting = begin; posting != end; ++posting) {
                if (*posting == wanted) extend(ends[fileB], posting);
            }
        });
    });

    for (std::size_t fileB = all.firstFile; fileB < all.endFile; ++fileB) {
        if (pairs[fileB].histogram == nullptr) continue;
        VXHistogram& histogram = *pairs[fileB].histogram;
        histogram.keepEnds(histogram.bestBin().offset,
                           {landmarkOf(ends[fileB].least), landmarkOf(ends[fileB].greatest)});
    }
}

template <typename Code>
typename VXPairCounter<Code>::Inside VXPairCounter<Code>::insideOfEnds() const
{
    Inside inside{0, std::numeric_limits<Code>::max()};
    for (std::size_t fileB = fileA + 1; fileB < pairs.size(); ++fileB) {
        if (pairs[fileB].histogram == nullptr) continue;
        if (!ends[fileB].areFound) return Inside();
        inside.least = std::max(inside.least, lists.postings[ends[fileB].least]);
        inside.greatest = std::min(inside.greatest, lists.postings[ends[fileB].greatest]);
    }
    return inside;
}

template <typename Code>
void VXPairCounter<Code>::extend(EndPostings& found, const Code* place) const
{
    const std::size_t posting = numberOf(place);
    if (!found.areFound) {
        found = {posting, posting, true};
        return;
    }
    const auto isLater = [this](std::size_t left, std::size_t right) {
        return keyOf(left) >= keyOf(right);
    };
    const Code code = lists.postings[posting];
    const Code least = lists.postings[found.least];
    const Code greatest = lists.postings[found.greatest];
    if (code < least || (code == least && isLater(posting, found.least))) found.least = posting;
    if (code > greatest || (code == greatest && isLater(posting, found.greatest))) {
        found.greatest = posting;
    }
}

template <typename Code>
std::size_t VXPairCounter<Code>::numberOf(const Code* posting) const
{
    return static_cast<std::size_t>(posting - lists.postings.data());
}

template <typename Code>
std::uint32_t VXPairCounter<Code>::keyOf(std::size_t posting) const
{
    return VXKeyIndex::keyOf(lists.mixedKeyOf(posting));
}

template <typename Code>
VXLandmark* VXPairCounter<Code>::landmarkOf(std::size_t posting) const
{
    const std::int64_t frame = lists.frameOf(lists.postings[posting]);
    return index.findLandmark(fileA, lists.layout.leastOffset + frame, keyOf(posting));
}

template class VXPairCounter<std::uint32_t>;
template class VXPairCounter<std::uint64_t>;
template void VXPairCounter<std::uint32_t>::countAllPairs<std::uint32_t>(VXKeyProgress&);
template void VXPairCounter<std::uint32_t>::countAllPairs<std::uint64_t>(VXKeyProgress&);
template void VXPairCounter<std::uint64_t>::countAllPairs<std::uint32_t>(VXKeyProgress&);
template void VXPairCounter<std::uint64_t>::countAllPairs<std::uint64_t>(VXKeyProgress&);

} // namespace VXS
