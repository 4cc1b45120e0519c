#include "match/Search.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "match/Excerpts.h"
#include "match/Look.h"
#include "match/PairCandidates.h"
#include "match/Workers.h"
#include "running/Parallel.h"

namespace vxlsync
{

namespace
{

// The landmarks are right to a frame of 32 ms, and clocks that differ blur that.
constexpr double landmarkReach = 0.06;

// What the steps of the search share.
struct Search {
    const std::vector<Prepared>& recordings;
    std::vector<RecordingPair> pairs;
    Run& run;
    // By thread.
    std::vector<AlignWorkspace> spaces;

    PairInHand inHand(std::size_t index) const
    {
        const RecordingPair pair = pairs[index];
        return {pair, recordings[pair.first], recordings[pair.second]};
    }
};

// By pair.
using LinkLists = std::vector<Links>;

// Looks at the proposals for one pair, one after the other.
Links lookAtAll(const std::vector<Proposal>& proposals, const PairInHand& pair, Links known,
                const Interrupt& interrupt, AlignWorkspace& work)
{
    for (const Proposal& proposal : proposals)
        known = lookAt(proposal, pair, std::move(known), interrupt, work);
    return known;
}

LinkLists lookAtLandmarks(const std::vector<LandmarkOffset>& landmarks, Search& search)
{
    std::map<std::pair<std::size_t, std::size_t>, std::vector<Proposal>> proposals;
    for (const LandmarkOffset& landmark : landmarks) {
        Proposal proposal;
        proposal.request.offset = landmark.offset;
        proposal.request.reach = landmarkReach;
        proposal.method = Method::landmarks;
        proposals[{landmark.first, landmark.second}].push_back(proposal);
    }
    LinkLists links(search.pairs.size());
    runParallel(links.size(), search.run.threads, [&](std::size_t index, std::size_t worker) {
        const RecordingPair pair = search.pairs[index];
        const auto ofPair = proposals.find({pair.first, pair.second});
        if (ofPair != proposals.end())
            links[index] = lookAtAll(ofPair->second, search.inHand(index), {}, search.run.interrupt,
                                     search.spaces[worker]);
        search.run.meter.step();
    });
    return links;
}

// Settled pairs need no search; their steps are done with.
std::vector<PiecePair> withoutSettled(const std::vector<PiecePair>& piecePairs,
                                      const LinkLists& links, Run& run)
{
    std::vector<PiecePair> open;
    for (const PiecePair& piecePair : piecePairs) {
        if (isSettled(links[piecePair.pair]))
            run.meter.step();
        else
            open.push_back(piecePair);
    }
    return open;
}

LinkLists lookAtCandidates(const std::vector<std::vector<Candidate>>& candidates, LinkLists links,
                           Search& search)
{
    runParallel(links.size(), search.run.threads, [&](std::size_t index, std::size_t worker) {
        const PairInHand pair = search.inHand(index);
        std::vector<Proposal> proposals;
        for (const Candidate& candidate : candidates[index]) {
            Proposal proposal;
            proposal.request.offset = static_cast<double>(candidate.lag) / pair.first.rate;
            proposal.height = std::fabs(candidate.height);
            proposals.push_back(proposal);
        }
        links[index] = lookAtAll(proposals, pair, std::move(links[index]), search.run.interrupt,
                                 search.spaces[worker]);
        search.run.meter.step();
    });
    return links;
}

// Where a pair has no link so far and is long enough for its clocks to hide it.
LinkLists lookAtExcerpts(LinkLists links, Search& search)
{
    std::vector<std::size_t> open;
    std::size_t bytes = 1;
    for (std::size_t i = 0; i < links.size(); ++i) {
        if (!links[i].empty() || !mayBlur(search.inHand(i))) {
            search.run.meter.step();
            continue;
        }
        open.push_back(i);
        bytes = std::max(bytes, bytesOfExcerpts(search.inHand(i)));
    }
    const Interrupt& interrupt = search.run.interrupt;
    const std::size_t workers =
        workersWithin(search.run.memory.remaining(), bytes, search.run.threads);
    runParallel(open.size(), workers, [&](std::size_t at, std::size_t worker) {
        const PairInHand pair = search.inHand(open[at]);
        links[open[at]] =
            lookAtAll(proposeExcerpts(pair, interrupt), pair, {}, interrupt, search.spaces[worker]);
        search.run.meter.step();
    });
    return links;
}

LinkLists lookCloselyAtAll(LinkLists links, Search& search)
{
    runParallel(links.size(), search.run.threads, [&](std::size_t index, std::size_t worker) {
        links[index] = lookClosely(search.inHand(index), std::move(links[index]),
                                   search.run.interrupt, search.spaces[worker]);
        search.run.meter.step();
    });
    return links;
}

Links flattened(const LinkLists& links)
{
    Links all;
    for (const Links& ofPair : links)
        all.insert(all.end(), ofPair.begin(), ofPair.end());
    return all;
}

} // namespace

Links searchPairs(const std::vector<Prepared>& recordings, const std::vector<std::string>& devices,
                  const std::vector<LandmarkOffset>& landmarks, Run& run)
{
    Search search{recordings, pairsToCompare(recordings, devices), run,
                  std::vector<AlignWorkspace>(run.threads)};
    const std::vector<PiecePair> piecePairs = piecePairsOf(recordings, search.pairs);
    // A pair is looked at in four steps: what the landmarks tell, what the whole correlation and
    // what excerpts propose, and what of it is left.
    run.meter.begin(Stage::comparing, piecePairs.size() + 4 * search.pairs.size());

    LinkLists links = lookAtLandmarks(landmarks, search);
    const std::vector<PiecePair> open = withoutSettled(piecePairs, links, run);
    const std::vector<std::vector<Candidate>> candidates =
        candidatesOfPairs(recordings, open, search.pairs.size(), run);
    links = lookAtCandidates(candidates, std::move(links), search);
    links = lookAtExcerpts(std::move(links), search);
    return flattened(lookCloselyAtAll(std::move(links), search));
}

} // namespace vxlsync
