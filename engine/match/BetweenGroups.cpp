#include "match/BetweenGroups.h"

#include <algorithm>
#include <iterator>
#include <optional>
#include <set>
#include <utility>

#include "match/CompleteGroups.h"
#include "match/Excerpts.h"
#include "match/GroupCandidates.h"
#include "match/Overlap.h"
#include "match/Workers.h"
#include "running/Parallel.h"

namespace vxlsync
{

namespace
{

// So many pairs of each group are looked at before what they tell is taken into account.
constexpr std::size_t pairsAtATime = 2;

// What the two would share if their groups lay as the candidate says, on the clock of the first's.
Overlap sharedAt(const GroupCandidate& candidate, const RecordingPair& pair,
                 const Gathering& gathering)
{
    return {std::max(gathering.clockOf(pair.first).start,
                     gathering.clockOf(pair.second).start + candidate.shift),
            std::min(gathering.endOf(pair.first), gathering.endOf(pair.second) + candidate.shift)};
}

// The members of the two groups that share most at a candidate, the first of the first group; none
// if nobody shares enough.
std::optional<RecordingPair> pairSharingMost(const GroupCandidate& candidate,
                                             const SearchState& search)
{
    std::optional<RecordingPair> most;
    double mostSeconds = shortestOverlapSeconds;
    for (const std::size_t first : search.gathering.membersOf(candidate.pair.first)) {
        for (const std::size_t second : search.gathering.membersOf(candidate.pair.second)) {
            if (!search.mayCompare(first, second)) continue;
            const RecordingPair pair{first, second};
            const double seconds = sharedAt(candidate, pair, search.gathering).seconds();
            if (seconds < mostSeconds || (most && seconds <= mostSeconds)) continue;
            most = pair;
            mostSeconds = seconds;
        }
    }
    return most;
}

Proposal proposalOf(const GroupCandidate& candidate, const RecordingPair& pair,
                    const Gathering& gathering)
{
    const Clock& ofFirst = gathering.clockOf(pair.first);
    const Clock& ofSecond = gathering.clockOf(pair.second);
    const double middle = sharedAt(candidate, pair, gathering).middle();
    const double offset = (middle - ofFirst.start) / ofFirst.rate -
                          (middle - candidate.shift - ofSecond.start) / ofSecond.rate;
    Proposal proposal;
    proposal.height = candidate.height;
    proposal.isDoubtful = true;
    proposal.request.offset = pair.first < pair.second ? offset : -offset;
    return proposal;
}

// Two members and the candidates at which they share most of all, and those at which they share
// enough.
struct MemberLooks {
    LookTask own;
    LookTask all;
};

// What is to be looked at to lay two groups to each other.
struct GroupLooks {
    // Of the highest candidate.
    double height = 0.0;
    // At least one.
    std::vector<MemberLooks> pairs;
};

// What a pair may be looked at, at all candidates at which it shares enough.
LookTask taskAtAll(const std::vector<GroupCandidate>& candidates, const RecordingPair& pair,
                   const SearchState& search)
{
    LookTask task{{std::min(pair.first, pair.second), std::max(pair.first, pair.second)}, {}};
    for (const GroupCandidate& candidate : candidates) {
        if (sharedAt(candidate, pair, search.gathering).seconds() >= shortestOverlapSeconds)
            task.proposals.push_back(proposalOf(candidate, pair, search.gathering));
    }
    return task;
}

GroupLooks looksOf(const std::vector<GroupCandidate>& candidates, const SearchState& search)
{
    GroupLooks looks;
    for (const GroupCandidate& candidate : candidates) {
        const std::optional<RecordingPair> pair = pairSharingMost(candidate, search);
        if (!pair) continue;
        looks.height = std::max(looks.height, candidate.height);
        const LookTask all = taskAtAll(candidates, *pair, search);
        auto looked =
            std::find_if(looks.pairs.begin(), looks.pairs.end(), [&](const MemberLooks& other) {
                return isSame(other.own.pair, all.pair);
            });
        if (looked == looks.pairs.end())
            looked = looks.pairs.insert(looked, MemberLooks{{all.pair, {}}, all});
        looked->own.proposals.push_back(proposalOf(candidate, *pair, search.gathering));
    }
    return looks;
}

// By pair of groups, the highest first.
std::vector<GroupLooks> looksByGroups(const std::vector<GroupCandidate>& candidates,
                                      const SearchState& search)
{
    std::vector<GroupLooks> all;
    for (auto begin = candidates.begin(); begin != candidates.end();) {
        const auto end = std::find_if(begin, candidates.end(), [&](const GroupCandidate& other) {
            return !isSame(other.pair, begin->pair);
        });
        GroupLooks looks = looksOf({begin, end}, search);
        if (!looks.pairs.empty()) all.push_back(std::move(looks));
        begin = end;
    }
    std::stable_sort(all.begin(), all.end(), [](const GroupLooks& left, const GroupLooks& right) {
        return left.height > right.height;
    });
    return all;
}

// Takes the highest few of each group out of the list, and what has come together.
std::vector<GroupLooks> takeNext(std::vector<GroupLooks>& list, const SearchState& search)
{
    const Gathering& gathering = search.gathering;
    std::vector<std::size_t> taken(search.recordings.size(), 0);
    std::vector<GroupLooks> later;
    std::vector<GroupLooks> next;
    for (GroupLooks& looks : list) {
        const std::size_t first = gathering.groupOf(looks.pairs.front().own.pair.first);
        const std::size_t second = gathering.groupOf(looks.pairs.front().own.pair.second);
        if (first == second) continue;
        const bool isFull = taken[first] >= pairsAtATime || taken[second] >= pairsAtATime;
        if (!isFull) {
            ++taken[first];
            ++taken[second];
        }
        (isFull ? later : next).push_back(std::move(looks));
    }
    list = std::move(later);
    return next;
}

// Each candidate by the pair that shares most there. Then what has a link so far at all candidates,
// so that a turn of a loop that fits nearly as well as the right one is seen to.
void lookAtPairs(const std::vector<GroupLooks>& groups, SearchState& search)
{
    std::vector<LookTask> tasks;
    for (const GroupLooks& looks : groups) {
        for (const MemberLooks& pair : looks.pairs)
            tasks.push_back(pair.own);
    }
    look(tasks, search);
    tasks.clear();
    for (const GroupLooks& looks : groups) {
        for (const MemberLooks& pair : looks.pairs) {
            if (!search.linksOf(pair.own.pair).empty()) tasks.push_back(pair.all);
        }
    }
    look(tasks, search);
}

void lookAtCandidates(const std::vector<GroupCandidate>& candidates, double beginShare,
                      double endShare, SearchState& search)
{
    std::vector<GroupLooks> list = looksByGroups(candidates, search);
    const auto all = static_cast<double>(std::max<std::size_t>(1, list.size()));
    double share = beginShare;
    while (!list.empty()) {
        const std::vector<GroupLooks> next = takeNext(list, search);
        const double left = static_cast<double>(list.size()) / all;
        const double after = endShare - (endShare - beginShare) * left;
        search.run.meter.part({share, after, next.size()});
        lookAtPairs(next, search);
        share = after;
    }
}

// Single recordings that are long enough for their clocks to hide what they share.
std::vector<LookTask> blurredPairs(const std::vector<GroupPair>& pairs, const SearchState& search)
{
    std::vector<LookTask> tasks;
    for (const GroupPair& groups : pairs) {
        const RecordingPair pair{groups.first, groups.second};
        const bool isOfSingles =
            search.gathering.isSingle(pair.first) && search.gathering.isSingle(pair.second);
        if (isOfSingles && search.linksOf(pair).empty() && mayBlur(search.inHand(pair)))
            tasks.push_back({pair, {}});
    }
    return tasks;
}

// By excerpts, which is done where there is little to search.
void searchBlurred(const std::vector<GroupPair>& pairs, double share, SearchState& search)
{
    std::vector<LookTask> tasks = blurredPairs(pairs, search);
    std::size_t bytes = 1;
    for (const LookTask& task : tasks)
        bytes = std::max(bytes, bytesOfExcerpts(search.inHand(task.pair)));
    const std::size_t workers =
        workersWithin(search.run.memory.remaining(), bytes, search.run.threads);
    search.run.meter.part({share, share, 0});
    runParallel(tasks.size(), workers, [&](std::size_t index, std::size_t) {
        tasks[index].proposals =
            proposeExcerpts(search.inHand(tasks[index].pair), search.run.interrupt);
    });
    look(tasks, search);
}

// Two groups by their members.
using MemberLists = std::pair<std::vector<std::size_t>, std::vector<std::size_t>>;

// Groups that have not been searched against each other as they are.
std::vector<GroupPair> takeOpen(std::set<MemberLists>& searched, const SearchState& search)
{
    const Gathering& gathering = search.gathering;
    const std::vector<std::size_t> names = gathering.names();
    std::vector<GroupPair> open;
    for (std::size_t i = 0; i < names.size(); ++i) {
        for (std::size_t j = i + 1; j < names.size(); ++j) {
            const GroupPair pair{names[i], names[j]};
            if (!maySearchBetween(pair, search)) continue;
            const MemberLists members{gathering.membersOf(names[i]), gathering.membersOf(names[j])};
            if (searched.insert(members).second) open.push_back(pair);
        }
    }
    return open;
}

} // namespace

void searchBetweenGroups(double beginShare, double endShare, SearchState& search)
{
    std::set<MemberLists> searched;
    double share = beginShare;
    std::vector<GroupPair> open = takeOpen(searched, search);
    while (!open.empty()) {
        // A round costs much less than the one before, and whether there is one is not known. What
        // two groups have become together may find a third that neither found.
        const double end = (endShare + share) / 2.0;
        searchBetween(open, share, end, search);
        share = end;
        open = takeOpen(searched, search);
    }
}

void searchBetween(const std::vector<GroupPair>& pairs, double beginShare, double endShare,
                   SearchState& search)
{
    const double correlated = (beginShare + endShare) / 2.0;
    const GroupCandidates proposed = candidatesOfGroups(pairs, beginShare, correlated, search);
    lookAtCandidates(proposed.candidates, correlated, endShare, search);
    if (proposed.isThorough) searchBlurred(pairs, endShare, search);
    completeGroups(endShare, endShare, search);
}

bool maySearchBetween(const GroupPair& pair, const SearchState& search)
{
    const bool areSingle =
        search.gathering.isSingle(pair.first) && search.gathering.isSingle(pair.second);
    return search.recordings[pair.first].hasSound() && search.recordings[pair.second].hasSound() &&
           (!areSingle || search.mayCompare(pair.first, pair.second));
}

} // namespace vxlsync
