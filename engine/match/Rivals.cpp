#include "match/Rivals.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>
#include <vector>

#include "match/GroupCandidates.h"

namespace vxlsync
{

namespace
{

// A link says what the group implies if it is as near, in seconds, at the middle of the overlap.
constexpr double sameOffsetSeconds = 0.03;

// By recording: those that a link holds to it where the group has them, in order.
using Neighbours = std::vector<std::vector<std::size_t>>;

bool saysWhatTheGroupImplies(const RecordingPair& pair, const Links& links,
                             const Gathering& gathering)
{
    if (gathering.groupOf(pair.first) != gathering.groupOf(pair.second)) return false;
    const double offset = gathering.lineOf(pair.first, pair.second).offset;
    return std::any_of(links.begin(), links.end(), [offset](const Link& link) {
        return std::fabs(link.line.offset - offset) < sameOffsetSeconds;
    });
}

Neighbours neighboursOf(const SearchState& search)
{
    Neighbours neighbours(search.recordings.size());
    for (const auto& [pair, links] : search.book) {
        if (!saysWhatTheGroupImplies({pair.first, pair.second}, links, search.gathering)) continue;
        neighbours[pair.first].push_back(pair.second);
        neighbours[pair.second].push_back(pair.first);
    }
    for (std::vector<std::size_t>& ofOne : neighbours)
        std::sort(ofOne.begin(), ofOne.end());
    return neighbours;
}

// In order.
std::vector<RecordingPair> pairsWithoutWitness(const Neighbours& neighbours)
{
    std::vector<RecordingPair> pairs;
    for (std::size_t first = 0; first < neighbours.size(); ++first) {
        for (const std::size_t second : neighbours[first]) {
            if (second < first) continue;
            std::vector<std::size_t> common;
            std::set_intersection(neighbours[first].begin(), neighbours[first].end(),
                                  neighbours[second].begin(), neighbours[second].end(),
                                  std::back_inserter(common));
            if (common.empty()) pairs.push_back({first, second});
        }
    }
    return pairs;
}

// The places at which two recordings correlate, for each pair that is in a list.
std::vector<LookTask> tasksAtCandidates(const std::vector<RecordingPair>& pairs,
                                        const std::vector<GroupCandidate>& candidates)
{
    std::vector<LookTask> tasks;
    tasks.reserve(pairs.size());
    for (const RecordingPair& pair : pairs)
        tasks.push_back({pair, {}});
    auto task = tasks.begin();
    for (const GroupCandidate& candidate : candidates) {
        while (!isSame(task->pair, candidate.pair))
            ++task;
        Proposal proposal;
        proposal.height = candidate.height;
        proposal.isDoubtful = true;
        proposal.request.offset = candidate.shift;
        task->proposals.push_back(proposal);
    }
    return tasks;
}

} // namespace

void lookForRivals(double beginShare, double endShare, SearchState& search)
{
    const std::vector<RecordingPair> pairs = pairsWithoutWitness(neighboursOf(search));
    if (pairs.empty()) return;
    const double correlated = (beginShare + endShare) / 2.0;
    // Each recording for itself: what the group adds stands where a wrong turn has put it.
    Gathering gathered = std::exchange(search.gathering, search.singles());
    const GroupCandidates proposed = candidatesOfGroups(pairs, beginShare, correlated, search);
    search.gathering = std::move(gathered);
    const std::vector<LookTask> tasks = tasksAtCandidates(pairs, proposed.candidates);
    search.run.meter.part({correlated, endShare, tasks.size()});
    look(tasks, search);
}

} // namespace vxlsync
