#include "decide/ClockAxes.h"

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>

#include "decide/SeriesName.h"

namespace vxlsync
{

namespace
{

// A take that goes on where another ends does so within some frames, and the length of its sound
// is not exactly that of its picture.
constexpr double seamSeconds = 0.25;
// Where no date says how often a clock has passed midnight, all takes must lie in one stretch of
// the day, and the rest of it has to be this long.
constexpr double leastRestSeconds = 6.0 * 3600.0;

struct Span {
    double start = 0.0;
    double end = 0.0;
};

// Of the takes whose start is known, in order of start.
std::vector<Span> spansOf(const DeviceTakes& takes, const TakeStarts& starts)
{
    std::vector<Span> spans;
    for (std::size_t i = 0; i < takes.size(); ++i) {
        if (starts[i]) spans.push_back({*starts[i], *starts[i] + takes[i]->seconds});
    }
    std::sort(spans.begin(), spans.end(), [](const Span& left, const Span& right) {
        return std::tie(left.start, left.end) < std::tie(right.start, right.end);
    });
    return spans;
}

// Exactly midnight is a date without a time that was written as one.
bool isToTheDay(const DateTime& time)
{
    constexpr double daySeconds = 24.0 * 3600.0;
    return std::fmod(time.seconds + 60.0 * time.zoneMinutes.value_or(0), daySeconds) == 0.0;
}

std::optional<double> creationOf(const Take& take)
{
    if (!take.facts.created || isToTheDay(*take.facts.created)) return std::nullopt;
    return take.facts.created->seconds;
}

// Chapters that have the time of creation of the first begin where the one before ends.
void chain(const DeviceTakes& takes, TakeStarts& starts)
{
    std::vector<std::optional<SeriesName>> names;
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < takes.size(); ++i) {
        names.push_back(seriesNameOf(takes[i]->path));
        if (names[i] && starts[i]) order.push_back(i);
    }
    const auto keyOf = [&](std::size_t index) {
        const SeriesName& name = *names[index];
        return std::tie(name.folder, name.prefix, name.ending, name.number, name.chapter);
    };
    std::sort(order.begin(), order.end(),
              [&](std::size_t left, std::size_t right) { return keyOf(left) < keyOf(right); });
    for (std::size_t k = 1; k < order.size(); ++k) {
        const std::size_t before = order[k - 1];
        const std::size_t next = order[k];
        if (names[before]->isFollowedBy(*names[next]) &&
            creationOf(*takes[before]) == creationOf(*takes[next]))
            starts[next] = *starts[before] + takes[before]->seconds;
    }
}

using Counts = std::vector<std::optional<DayTime>>;

// What each take begins with, by the meaning.
Counts countsOf(const DeviceTakes& takes, CountMeaning meaning)
{
    Counts counts;
    for (const Take* take : takes) {
        counts.push_back(take->facts.started);
        if (!counts.back() || meaning == CountMeaning::elapsed) continue;
        const DayTime day;
        counts.back()->seconds *= day.daySeconds / counts.back()->daySeconds;
        counts.back()->daySeconds = day.daySeconds;
    }
    return counts;
}

// Lays the counts on the axis of the dates, each in the day that its own date says. The first take
// with both says how the two axes lie to each other.
TakeStarts countedByDates(const DeviceTakes& takes, const Counts& counts, std::size_t both)
{
    const double firstDate = *creationOf(*takes[both]);
    const double shift = firstDate - counts[both]->seconds;
    TakeStarts starts(takes.size());
    for (std::size_t i = 0; i < takes.size(); ++i) {
        if (!counts[i]) continue;
        const double date = creationOf(*takes[i]).value_or(firstDate);
        const double start = counts[i]->seconds + shift;
        const double day = counts[i]->daySeconds;
        starts[i] = start + std::round((date - start) / day) * day;
    }
    return starts;
}

// The day is taken to begin behind its longest stretch without a take.
TakeStarts countedWithinADay(const Counts& counts)
{
    std::vector<double> seconds;
    double day = 0.0;
    for (const std::optional<DayTime>& count : counts) {
        if (!count) continue;
        seconds.push_back(count->seconds);
        day = std::max(day, count->daySeconds);
    }
    std::sort(seconds.begin(), seconds.end());
    double first = seconds.front();
    double rest = first + day - seconds.back();
    for (std::size_t i = 1; i < seconds.size(); ++i) {
        if (seconds[i] - seconds[i - 1] <= rest) continue;
        rest = seconds[i] - seconds[i - 1];
        first = seconds[i];
    }
    TakeStarts starts(counts.size());
    if (rest < leastRestSeconds) return starts;
    for (std::size_t i = 0; i < counts.size(); ++i) {
        if (counts[i]) starts[i] = counts[i]->seconds + (counts[i]->seconds < first ? day : 0.0);
    }
    return starts;
}

} // namespace

TakeStarts createdStarts(const DeviceTakes& takes, CreationMeaning meaning)
{
    TakeStarts starts;
    for (const Take* take : takes) {
        starts.push_back(creationOf(*take));
        if (starts.back() && meaning == CreationMeaning::end) *starts.back() -= take->seconds;
    }
    if (meaning == CreationMeaning::start) chain(takes, starts);
    return starts;
}

TakeStarts countedStarts(const DeviceTakes& takes, CountMeaning meaning)
{
    const Counts counts = countsOf(takes, meaning);
    std::vector<std::size_t> counted;
    for (std::size_t i = 0; i < takes.size(); ++i) {
        if (counts[i]) counted.push_back(i);
    }
    const auto beginsAlike = [&](std::size_t index) {
        return counts[index]->seconds == counts[counted.front()]->seconds;
    };
    if (counted.empty() ||
        (counted.size() > 1 && std::all_of(counted.begin(), counted.end(), beginsAlike)))
        return TakeStarts(takes.size());
    const auto both = std::find_if(counted.begin(), counted.end(), [&](std::size_t index) {
        return creationOf(*takes[index]).has_value();
    });
    return both != counted.end() ? countedByDates(takes, counts, *both) : countedWithinADay(counts);
}

bool overlap(const DeviceTakes& takes, const TakeStarts& starts)
{
    const std::vector<Span> spans = spansOf(takes, starts);
    for (std::size_t i = 1; i < spans.size(); ++i) {
        if (spans[i].start < spans[i - 1].end - clockErrorSeconds) return true;
    }
    return false;
}

bool isWithoutPauses(const DeviceTakes& takes, const TakeStarts& starts)
{
    const std::vector<Span> spans = spansOf(takes, starts);
    for (std::size_t i = 1; i < spans.size(); ++i) {
        if (std::fabs(spans[i].start - spans[i - 1].end) > seamSeconds) return false;
    }
    return spans.size() > 1;
}

} // namespace vxlsync
