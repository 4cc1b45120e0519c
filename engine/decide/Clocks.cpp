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

// Leaves those that say something and by which no take runs into another.
void removeImpossible(const DeviceTakes& takes, std::vector<TakeStarts>& possible)
{
    const auto isImpossible = [&](const TakeStarts& starts) {
        return !saysAnything(starts) || overlap(takes, starts);
    };
    possible.erase(std::remove_if(possible.begin(), possible.end(), isImpossible), possible.end());
}

// Of the two meanings of the times of creation those by which no take runs into another, the more
// usual first: devices mean the start unless they are known for the end.
std::vector<TakeStarts> possibleDates(const DeviceTakes& takes)
{
    const bool isEnd = std::any_of(takes.begin(), takes.end(),
                                   [](const Take* take) { return take->facts.isCreatedAtEnd; });
    std::vector<TakeStarts> possible;
    for (const CreationMeaning meaning : {CreationMeaning::start, CreationMeaning::end})
        possible.push_back(createdStarts(takes, meaning));
    if (isEnd) std::swap(possible.front(), possible.back());
    removeImpossible(takes, possible);
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

// The same of what they count, the usual first.
std::vector<TakeStarts> possibleCounts(const DeviceTakes& takes)
{
    std::vector<TakeStarts> possible;
    for (const CountMeaning meaning : {CountMeaning::elapsed, CountMeaning::clock})
        possible.push_back(countedStarts(takes, meaning));
    removeImpossible(takes, possible);
    return possible;
}

// A count is to the frame, but in many cameras it stands still between takes: then less time goes
// by on it than on the clock. Requires one possibility of either at the least.
TakeStarts chooseBetween(const std::vector<TakeStarts>& counts,
                         const std::vector<TakeStarts>& dates)
{
    struct Match {
        const TakeStarts& counted;
        const TakeStarts& dated;
        Difference difference;
    };
    std::vector<Match> matches;
    for (const TakeStarts& counted : counts) {
        for (const TakeStarts& dated : dates)
            matches.push_back({counted, dated, differenceOf(counted, dated)});
    }
    const Match& closest = *std::min_element(
        matches.begin(), matches.end(), [](const Match& left, const Match& right) {
            return left.difference.spread() < right.difference.spread();
        });
    const Difference& difference = closest.difference;
    if (!difference.isKnown) return dates.front();
    if (difference.spread() <= agreementSeconds)
        return joined(closest.counted, closest.dated, difference);
    return difference.firstSpan < difference.secondSpan ? dates.front() : counts.front();
}

} // namespace

ClockReadings readClocks(const Takes& takes, const std::vector<std::size_t>& members)
{
    DeviceTakes device;
    for (const std::size_t member : members)
        device.push_back(&takes[member]);
    const std::vector<TakeStarts> dates = possibleDates(device);
    const std::vector<TakeStarts> counts = possibleCounts(device);
    ClockReadings readings;
    if (!dates.empty()) {
        readings.starts = counts.empty() ? dates.front() : chooseBetween(counts, dates);
        return readings;
    }
    readings.starts.resize(device.size());
    const bool isDated = saysAnything(createdStarts(device, CreationMeaning::start));
    const bool isCounted = saysAnything(countedStarts(device, CountMeaning::elapsed));
    readings.isContradictory = counts.empty() && (isDated || isCounted);
    if (counts.empty()) return readings;
    // Without dates, no one can tell chapters from a count that stands still.
    if (isDated || !isWithoutPauses(device, counts.front())) readings.starts = counts.front();
    return readings;
}

} // namespace vxlsync
