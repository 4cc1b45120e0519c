#include "decide/Clocks.h"

#include <algorithm>

#include "decide/ClockAxes.h"

namespace vxlsync
{

namespace
{

// Two clocks of one device, both read twice.
constexpr double agreementSeconds = 2.0 * clockErrorSeconds;

bool saysAnything(const TakeStarts& starts)
{
    return std::any_of(starts.begin(), starts.end(),
                       [](const std::optional<double>& start) { return start.has_value(); });
}

// How one clock lies to another, over the takes of which both say something.
struct Difference {
    bool isKnown = false;
    double least = 0.0;
    double greatest = 0.0;
    // Between the earliest and the latest of those takes by each of the two.
    double firstSpan = 0.0;
    double secondSpan = 0.0;

    double spread() const { return greatest - least; }
};

Difference differenceOf(const TakeStarts& first, const TakeStarts& second)
{
    std::vector<double> differences;
    std::vector<double> firsts;
    std::vector<double> seconds;
    for (std::size_t i = 0; i < first.size(); ++i) {
        if (!first[i] || !second[i]) continue;
        firsts.push_back(*first[i]);
        seconds.push_back(*second[i]);
        differences.push_back(*first[i] - *second[i]);
    }
    Difference result;
    result.isKnown = !differences.empty();
    if (!result.isKnown) return result;
    const auto spanOf = [](const std::vector<double>& values) {
        const auto [least, greatest] = std::minmax_element(values.begin(), values.end());
        return *greatest - *least;
    };
    const auto [least, greatest] = std::minmax_element(differences.begin(), differences.end());
    result.least = *least;
    result.greatest = *greatest;
    result.firstSpan = spanOf(firsts);
    result.secondSpan = spanOf(seconds);
    return result;
}

// Of the two meanings of the times of creation those by which no take runs into another, the more
// usual first: devices mean the start unless they are known for the end.
std::vector<TakeStarts> possibleStarts(const DeviceTakes& takes)
{
    const bool isEnd = std::any_of(takes.begin(), takes.end(),
                                   [](const Take* take) { return take->facts.isCreatedAtEnd; });
    std::vector<TakeStarts> possible{createdStarts(takes, CreationMeaning::start),
                                     createdStarts(takes, CreationMeaning::end)};
    if (isEnd) std::swap(possible.front(), possible.back());
    const auto isImpossible = [&](const TakeStarts& starts) {
        return !saysAnything(starts) || overlap(takes, starts);
    };
    possible.erase(std::remove_if(possible.begin(), possible.end(), isImpossible), possible.end());
    return possible;
}

// The starts by the count, and where it says nothing those by the dates, on one axis.
TakeStarts joined(const TakeStarts& counted, const TakeStarts& dated, const Difference& difference)
{
    TakeStarts starts = counted;
    for (std::size_t i = 0; i < starts.size(); ++i) {
        if (!starts[i] && dated[i])
            starts[i] = *dated[i] + (difference.least + difference.greatest) / 2.0;
    }
    return starts;
}

// A count is to the frame, but in many cameras it stands still between takes: then less time goes
// by on it than on the clock. Requires a count by which no take runs into another.
TakeStarts chooseBetween(const TakeStarts& counted, const std::vector<TakeStarts>& possible)
{
    std::vector<Difference> differences;
    for (const TakeStarts& dated : possible)
        differences.push_back(differenceOf(counted, dated));
    const auto closest = std::min_element(differences.begin(), differences.end(),
                                          [](const Difference& left, const Difference& right) {
                                              return left.spread() < right.spread();
                                          });
    if (!closest->isKnown) return possible.front();
    if (closest->spread() <= agreementSeconds)
        return joined(counted, possible[static_cast<std::size_t>(closest - differences.begin())],
                      *closest);
    return closest->firstSpan < closest->secondSpan ? possible.front() : counted;
}

} // namespace

ClockReadings readClocks(const Takes& takes, const std::vector<std::size_t>& members)
{
    DeviceTakes device;
    for (const std::size_t member : members)
        device.push_back(&takes[member]);
    const std::vector<TakeStarts> possible = possibleStarts(device);
    const TakeStarts counted = countedStarts(device);
    const bool isCounted = saysAnything(counted) && !overlap(device, counted);
    const bool isDated = saysAnything(createdStarts(device, CreationMeaning::start));

    if (isCounted && !possible.empty()) return {chooseBetween(counted, possible), false};
    if (!possible.empty()) return {possible.front(), false};
    // Without dates, no one can tell chapters from a count that stands still.
    if (isCounted && (isDated || !isWithoutPauses(device, counted))) return {counted, false};
    return {TakeStarts(device.size()), !isCounted && (isDated || saysAnything(counted))};
}

} // namespace vxlsync
