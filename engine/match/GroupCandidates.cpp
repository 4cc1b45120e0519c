#include "match/GroupCandidates.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "match/Mix.h"
#include "match/PairCandidates.h"
#include "running/Parallel.h"

namespace vxlsync
{

namespace
{

// Seconds of sound that are correlated in all, up to which it is done at the full rate: a few
// seconds' work.
constexpr double thoroughSeconds = 10000.0;
// Two sounds of so many seconds together always are: in a coarse look an overlap of some seconds
// would be lost, and the full rate costs little.
constexpr double shortPairSeconds = 200.0;

// The groups as sounds, in order of their names.
struct Sounds {
    std::vector<std::size_t> names;
    std::vector<Prepared> sounds;
    std::vector<double> starts;
    // Pairs of places in the lists above.
    std::vector<RecordingPair> pairs;

    double seconds(const RecordingPair& pair) const
    {
        return sounds[pair.first].seconds() + sounds[pair.second].seconds();
    }
};

Sounds mixAll(const std::vector<GroupPair>& pairs, const SearchState& search)
{
    Sounds all;
    for (const GroupPair& pair : pairs) {
        all.names.push_back(pair.first);
        all.names.push_back(pair.second);
    }
    std::sort(all.names.begin(), all.names.end());
    all.names.erase(std::unique(all.names.begin(), all.names.end()), all.names.end());
    const auto placeOf = [&all](std::size_t name) {
        return static_cast<std::size_t>(std::lower_bound(all.names.begin(), all.names.end(), name) -
                                        all.names.begin());
    };
    for (const GroupPair& pair : pairs)
        all.pairs.push_back({placeOf(pair.first), placeOf(pair.second)});
    all.sounds.resize(all.names.size());
    all.starts.resize(all.names.size());
    runParallel(all.names.size(), search.run.threads, [&](std::size_t index, std::size_t) {
        Mix mix =
            mixOf(search.recordings, search.gathering, all.names[index], search.run.interrupt);
        all.sounds[index] = std::move(mix.sound);
        all.starts[index] = mix.start;
    });
    return all;
}

// Appends, to the lists by pair, what a list of pairs at `places` found at some rate.
void append(const std::vector<std::vector<Candidate>>& found,
            const std::vector<std::size_t>& places, int rate,
            std::vector<std::vector<GroupCandidate>>& byPair)
{
    for (std::size_t i = 0; i < found.size(); ++i) {
        for (const Candidate& candidate : found[i]) {
            byPair[places[i]].push_back(
                {{}, static_cast<double>(candidate.lag) / rate, std::fabs(candidate.height)});
        }
    }
}

std::vector<RecordingPair> pairsAt(const std::vector<std::size_t>& places, const Sounds& all)
{
    std::vector<RecordingPair> pairs;
    for (const std::size_t place : places)
        pairs.push_back(all.pairs[place]);
    return pairs;
}

std::vector<Prepared> coarseAll(const std::vector<Prepared>& sounds, const SearchState& search)
{
    std::vector<Prepared> result(sounds.size());
    runParallel(sounds.size(), search.run.threads, [&](std::size_t index, std::size_t) {
        result[index] = coarse(sounds[index], search.run.interrupt);
    });
    return result;
}

// Which pairs are correlated how, by place.
struct Plan {
    std::vector<std::size_t> all;
    std::vector<std::size_t> fine;
    std::vector<std::size_t> rough;
};

Plan planOf(const Sounds& all, bool isThorough)
{
    Plan plan;
    for (std::size_t i = 0; i < all.pairs.size(); ++i) {
        const bool isFine = isThorough || all.seconds(all.pairs[i]) <= shortPairSeconds;
        (isFine ? plan.fine : plan.rough).push_back(i);
        plan.all.push_back(i);
    }
    return plan;
}

} // namespace

GroupCandidates candidatesOfGroups(const std::vector<GroupPair>& pairs, double beginShare,
                                   double endShare, SearchState& search)
{
    const Sounds all = mixAll(pairs, search);
    double seconds = 0.0;
    for (const RecordingPair& pair : all.pairs)
        seconds += all.seconds(pair);
    GroupCandidates result;
    result.isThorough = seconds <= thoroughSeconds;
    const Plan plan = planOf(all, result.isThorough);
    const std::vector<Prepared> coarseSounds =
        plan.rough.empty() ? std::vector<Prepared>() : coarseAll(all.sounds, search);

    const std::vector<PiecePair> edges = edgesOf(all.sounds, all.pairs);
    const std::vector<PiecePair> fine = wholesOf(all.sounds, pairsAt(plan.fine, all));
    const std::vector<PiecePair> rough = wholesOf(coarseSounds, pairsAt(plan.rough, all));
    search.run.meter.part({beginShare, endShare, edges.size() + fine.size() + rough.size()});
    const int rate = all.sounds.front().rate;
    std::vector<std::vector<GroupCandidate>> byPair(pairs.size());
    append(candidatesOfPairs(all.sounds, edges, plan.all.size(), search.run), plan.all, rate,
           byPair);
    append(candidatesOfPairs(all.sounds, fine, plan.fine.size(), search.run), plan.fine, rate,
           byPair);
    if (!rough.empty()) {
        append(candidatesOfPairs(coarseSounds, rough, plan.rough.size(), search.run), plan.rough,
               coarseSounds.front().rate, byPair);
    }
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        for (GroupCandidate& candidate : byPair[i]) {
            candidate.pair = pairs[i];
            candidate.shift += all.starts[all.pairs[i].first] - all.starts[all.pairs[i].second];
        }
        std::move(byPair[i].begin(), byPair[i].end(), std::back_inserter(result.candidates));
    }
    return result;
}

} // namespace vxlsync
