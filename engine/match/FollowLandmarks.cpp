#include "match/FollowLandmarks.h"

#include <algorithm>
#include <map>
#include <utility>

namespace vxlsync
{

namespace
{

// So many pairs of two groups are looked at in vain before the rest is left to the correlation of
// the groups, which hears more than the few votes that two of their members have in common.
constexpr std::size_t mostMissesOfClear = 6;
constexpr std::size_t mostMissesOfDoubtful = 2;
// So many pairs of each recording are looked at before what they tell is taken into account.
constexpr std::size_t pairsAtATime = 2;

// What the landmarks propose for a pair, with the standing of the best of it.
struct LandmarkTask {
    double standing;
    LookTask task;
};

// The clearest first.
std::vector<LandmarkTask> tasksOf(const SearchState& search)
{
    std::vector<LandmarkTask> tasks;
    for (const LandmarkOffset& landmark : search.landmarks) {
        const RecordingPair pair{landmark.first, landmark.second};
        if (!search.mayCompare(pair.first, pair.second)) continue;
        const bool isNext = tasks.empty() || !isSame(tasks.back().task.pair, pair);
        if (isNext) tasks.push_back({landmark.standing, {pair, {}}});
        tasks.back().task.proposals.push_back(proposalOf(landmark));
    }
    std::stable_sort(tasks.begin(), tasks.end(),
                     [](const LandmarkTask& left, const LandmarkTask& right) {
                         return left.standing > right.standing;
                     });
    return tasks;
}

// Looks in vain by pair of groups.
using Misses = std::map<std::pair<std::size_t, std::size_t>, std::size_t>;

std::pair<std::size_t, std::size_t> groupsOf(const RecordingPair& pair, const SearchState& search)
{
    const std::size_t first = search.gathering.groupOf(pair.first);
    const std::size_t second = search.gathering.groupOf(pair.second);
    return {std::min(first, second), std::max(first, second)};
}

bool isOpen(const LandmarkTask& task, const Misses& misses, const SearchState& search)
{
    const auto groups = groupsOf(task.task.pair, search);
    if (groups.first == groups.second) return false;
    const auto missed = misses.find(groups);
    const std::size_t most =
        task.standing >= clearStanding ? mostMissesOfClear : mostMissesOfDoubtful;
    return missed == misses.end() || missed->second < most;
}

void countMisses(const std::vector<LookTask>& looked, const SearchState& search, Misses& misses)
{
    for (const LookTask& task : looked) {
        const auto groups = groupsOf(task.pair, search);
        if (groups.first != groups.second) ++misses[groups];
    }
}

// Takes the clearest few of each recording out of the list, and what is no longer open.
std::vector<LookTask> takeNext(std::vector<LandmarkTask>& list, const Misses& misses,
                               const SearchState& search)
{
    std::vector<std::size_t> taken(search.recordings.size(), 0);
    std::vector<LandmarkTask> later;
    std::vector<LookTask> next;
    for (LandmarkTask& task : list) {
        if (!isOpen(task, misses, search)) continue;
        std::size_t& ofFirst = taken[task.task.pair.first];
        std::size_t& ofSecond = taken[task.task.pair.second];
        if (ofFirst >= pairsAtATime || ofSecond >= pairsAtATime) {
            later.push_back(std::move(task));
            continue;
        }
        ++ofFirst;
        ++ofSecond;
        next.push_back(std::move(task.task));
    }
    list = std::move(later);
    return next;
}

} // namespace

void followLandmarks(double endShare, SearchState& search)
{
    std::vector<LandmarkTask> list = tasksOf(search);
    const auto all = static_cast<double>(std::max<std::size_t>(1, list.size()));
    Misses misses;
    double share = 0.0;
    while (!list.empty()) {
        const std::vector<LookTask> next = takeNext(list, misses, search);
        const double after = endShare * (1.0 - static_cast<double>(list.size()) / all);
        search.run.meter.part({share, after, next.size()});
        look(next, search);
        countMisses(next, search, misses);
        share = after;
    }
}

} // namespace vxlsync
