#include "VXHistogram.h"

namespace VXS
{

namespace
{

constexpr std::uint64_t lowBits = 0x7Fu;
constexpr std::uint8_t moreFollows = 0x80u;

// The mark and two numbers of ten groups.
constexpr std::size_t longestBin = 21;

// Answers where the next number goes.
std::uint8_t* packNumber(std::uint8_t* position, std::uint64_t number)
{
    for (; number > lowBits; number >>= 7u, ++position)
        *position = static_cast<std::uint8_t>((number & lowBits) | moreFollows);
    *position = static_cast<std::uint8_t>(number);
    return position + 1;
}

std::uint64_t unpackNumber(const std::uint8_t*& position)
{
    std::uint64_t number = 0;
    unsigned int shift = 0;
    while ((*position & moreFollows) != 0u) {
        number |= (*position & lowBits) << shift;
        shift += 7u;
        ++position;
    }
    number |= static_cast<std::uint64_t>(*position) << shift;
    ++position;
    return number;
}

// Unsigned, so that steps between any two offsets are defined.
std::uint64_t stepBetween(std::int64_t lower, std::int64_t higher)
{
    return static_cast<std::uint64_t>(higher) - static_cast<std::uint64_t>(lower);
}

std::int64_t stepFrom(std::int64_t offset, std::uint64_t step)
{
    return static_cast<std::int64_t>(static_cast<std::uint64_t>(offset) + step);
}

} // namespace

void VXHistogram::const_iterator::unpackSpelledOut()
{
    bin.offset = stepFrom(bin.offset, unpackNumber(next));
    bin.votes = unpackNumber(next);
}

VXHistogram::const_iterator VXHistogram::begin() const
{
    const std::uint8_t* first = packed.data();
    return const_iterator(first, first + packed.size(), firstOffset);
}

VXHistogram::const_iterator VXHistogram::end() const
{
    const std::uint8_t* end = packed.data() + packed.size();
    return const_iterator(end, end, lastOffset);
}

VXHistogram::const_iterator VXHistogram::find(std::int64_t offset) const
{
    const const_iterator stop = end();
    // The one that is asked for.
    if (offset == best.offset && !empty()) {
        return const_iterator(packed.data() + bestPosition, packed.data() + packed.size(),
                              beforeBest);
    }
    for (const_iterator bin = begin(); bin != stop; ++bin) {
        if (bin->offset == offset) return bin;
        if (bin->offset > offset) break;
    }
    return stop;
}

void VXHistogram::append(std::int64_t offset, std::uint64_t votes)
{
    // The first bin is a step of 0 from itself.
    if (empty()) {
        firstOffset = offset;
        lastOffset = offset;
    }
    const std::size_t position = packed.size();
    const std::int64_t before = lastOffset;
    const std::uint64_t step = stepBetween(lastOffset, offset);
    if (step == 1 && votes > 0 && votes < VXPackedBin::firstOfSteps) {
        packed.push_back(static_cast<std::uint8_t>(votes));
    } else if (step - 2 <= VXPackedBin::mostStep - 2 && votes - 1 < VXPackedBin::votesOfAStep) {
        packed.push_back(static_cast<std::uint8_t>(
            VXPackedBin::firstOfSteps + (step - 2) * VXPackedBin::votesOfAStep + (votes - 1)));
    } else {
        // All at once: what is left of a bin where memory runs out would read as another.
        std::uint8_t bin[longestBin] = {VXPackedBin::spelledOut};
        std::uint8_t* const stop = packNumber(packNumber(bin + 1, step), votes);
        packed.insert(packed.end(), &bin[0], stop);
    }
    lastOffset = offset;
    ++binCount;
    allVotes += votes;

    const auto count = static_cast<float>(votes);
    // Equal counts hand over to the later bin: bins rise, so of a tie the highest offset wins.
    if (count >= best.votes) {
        best = {count, offset};
        bestPosition = position;
        beforeBest = before;
    }
}

void VXHistogram::clear()
{
    packed.clear();
    binCount = 0;
    allVotes = 0;
    best = Best();
    keptEnds.clear();
}

void VXHistogram::keepEnds(std::int64_t offset, const Ends& ends)
{
    keptEnds.emplace_back(offset, ends);
}

VXHistogram::Ends VXHistogram::endsOf(std::int64_t offset) const
{
    for (const auto& kept : keptEnds) {
        if (kept.first == offset) return kept.second;
    }
    return {};
}

void deleteVXHistogramSet(VXHistogramSet*& histograms)
{
    if (histograms == nullptr) return;
    for (auto& entry : *histograms)
        delete entry.second;
    delete histograms;
    histograms = nullptr;
}

} // namespace VXS
