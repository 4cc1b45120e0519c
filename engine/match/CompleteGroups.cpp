#include "match/CompleteGroups.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "match/Overlap.h"

namespace vxlsync
{

namespace
{

// How far the line that a group implies may be off, in seconds and of the clocks' difference: a few
// links in a row lead to it, each right to a millisecond and some millionths.
constexpr double impliedReachSeconds = 0.03;
constexpr double impliedSlopeReach = 60e-6;
// Each recording of a group is measured against so many others: in a small job against nearly all,
// which tells a wrong turn of a loop from the right one, and in a large one against a few.
constexpr std::size_t pairsOfJob = 200;
constexpr std::size_t fewestMeasured = 4;
// One alone might be wrong.
constexpr std::size_t fewestPartners = 2;

// Each pair counts for two recordings.
std::size_t partnersMeasured(std::size_t recordings)
{
    return std::max(fewestMeasured, 2 * pairsOfJob / std::max<std::size_t>(1, recordings));
}

struct ImpliedTask {
    KnownLine line;
    RecordingPair pair;
};

bool isMeasured(const ImpliedTask& task, const SearchState& search)
{
    const Links& links = search.linksOf(task.pair);
    return std::any_of(links.begin(), links.end(), [&](const Link& link) {
        return std::fabs(link.line.offset - task.line.offset) < impliedReachSeconds;
    });
}

// All that share enough to be measured, those first that share most.
std::vector<ImpliedTask> sharingPairs(const SearchState& search)
{
    std::vector<ImpliedTask> pairs;
    for (const std::size_t group : search.gathering.names()) {
        const std::vector<std::size_t>& members = search.gathering.membersOf(group);
        for (std::size_t i = 0; i < members.size(); ++i) {
            for (std::size_t j = i + 1; j < members.size(); ++j) {
                const KnownLine line = search.gathering.lineOf(members[i], members[j]);
                if (line.overlap >= shortestOverlapSeconds &&
                    search.mayCompare(members[i], members[j]))
                    pairs.push_back({line, {members[i], members[j]}});
            }
        }
    }
    std::stable_sort(pairs.begin(), pairs.end(),
                     [](const ImpliedTask& left, const ImpliedTask& right) {
                         return left.line.overlap > right.line.overlap;
                     });
    return pairs;
}

// Where the group says, and where else the landmarks find something: a place that is as good there
// speaks against the group's.
LookTask taskOf(const ImpliedTask& implied, const SearchState& search)
{
    Proposal proposal;
    proposal.request.offset = implied.line.offset;
    proposal.request.slope = implied.line.slope;
    proposal.request.reach = impliedReachSeconds;
    proposal.request.slopeReach = impliedSlopeReach;
    LookTask task{implied.pair, landmarkProposals(implied.pair, search)};
    task.proposals.insert(task.proposals.begin(), proposal);
    return task;
}

} // namespace

void completeGroups(double beginShare, double endShare, SearchState& search)
{
    std::vector<std::size_t> partners(search.recordings.size(), 0);
    const auto count = [&](const RecordingPair& pair) {
        ++partners[pair.first];
        ++partners[pair.second];
    };
    std::vector<ImpliedTask> open;
    for (const ImpliedTask& task : sharingPairs(search)) {
        if (isMeasured(task, search))
            count(task.pair);
        else
            open.push_back(task);
    }
    std::vector<LookTask> tasks;
    const auto take = [&](auto isWanted) {
        std::vector<ImpliedTask> left;
        for (const ImpliedTask& task : open) {
            if (isWanted(partners[task.pair.first], partners[task.pair.second])) {
                count(task.pair);
                tasks.push_back(taskOf(task, search));
            } else {
                left.push_back(task);
            }
        }
        open = std::move(left);
    };
    const std::size_t most = partnersMeasured(search.recordings.size());
    take([most](std::size_t ofFirst, std::size_t ofSecond) {
        return std::max(ofFirst, ofSecond) < most;
    });
    // Those whose partners have all they need.
    take([](std::size_t ofFirst, std::size_t ofSecond) {
        return std::min(ofFirst, ofSecond) < fewestPartners;
    });
    search.run.meter.part({beginShare, endShare, tasks.size()});
    look(tasks, search);
}

} // namespace vxlsync
