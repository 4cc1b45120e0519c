#include "match/PairCandidates.h"

#include <algorithm>
#include <iterator>
#include <map>
#include <memory>
#include <tuple>

#include "match/Workers.h"
#include "running/Parallel.h"

namespace vxlsync
{

namespace
{

auto keyOf(const Piece& piece)
{
    return std::tie(piece.recording, piece.start, piece.count);
}

bool isBefore(const Piece& left, const Piece& right)
{
    return keyOf(left) < keyOf(right);
}

bool isSame(const Piece& left, const Piece& right)
{
    return keyOf(left) == keyOf(right);
}

// Pairs of pieces that share one length of transform. Pieces are known by their place in a list
// without repeats, in order; the first of a pair stands before the second.
struct LengthGroup {
    std::size_t length = 0;
    std::vector<Piece> pieces;
    struct Task {
        // Index of the pair of pieces.
        std::size_t index;
        std::size_t first;
        std::size_t second;
    };
    std::vector<Task> tasks;
};

std::vector<LengthGroup> groupByLength(const std::vector<PiecePair>& piecePairs)
{
    std::map<std::size_t, std::vector<std::size_t>> byLength;
    for (std::size_t i = 0; i < piecePairs.size(); ++i)
        byLength[lengthClass(piecePairs[i].first.count + piecePairs[i].second.count)].push_back(i);
    std::vector<LengthGroup> groups;
    for (const auto& [length, indices] : byLength) {
        LengthGroup group;
        group.length = length;
        for (const std::size_t index : indices) {
            group.pieces.push_back(piecePairs[index].first);
            group.pieces.push_back(piecePairs[index].second);
        }
        std::sort(group.pieces.begin(), group.pieces.end(), isBefore);
        group.pieces.erase(std::unique(group.pieces.begin(), group.pieces.end(), isSame),
                           group.pieces.end());
        const auto placeOf = [&group](const Piece& piece) {
            return static_cast<std::size_t>(
                std::lower_bound(group.pieces.begin(), group.pieces.end(), piece, isBefore) -
                group.pieces.begin());
        };
        for (const std::size_t index : indices) {
            group.tasks.push_back(
                {index, placeOf(piecePairs[index].first), placeOf(piecePairs[index].second)});
        }
        groups.push_back(std::move(group));
    }
    return groups;
}

// How the work on a group fits into the memory that is left: half of it for the threads' spaces,
// the rest for phases. Phases are kept for so many pieces as a tile has, twice.
struct Fit {
    std::size_t workers;
    std::size_t tile;
};

Fit fitOf(const LengthGroup& group, int rate, const Run& run)
{
    const std::size_t memory = run.memory.remaining();
    const std::size_t space = bytesOfSpace(group.length);
    const std::size_t workers =
        std::min(group.tasks.size(), workersWithin(memory / 2, space, run.threads));
    const std::size_t left = memory - std::min(memory, workers * space);
    const std::size_t fitting = left / bytesOfPhases(group.length, rate);
    const std::size_t count = group.pieces.size();
    return {workers, fitting >= count ? count : std::max<std::size_t>(1, fitting / 2)};
}

// A stretch of the group's list of pieces.
struct Tile {
    std::size_t from;
    std::size_t to;

    bool holds(std::size_t place) const { return place >= from && place < to; }
};

// What works on one group: phases by place in its list, empty where they are not needed now.
struct GroupWork {
    const std::vector<Prepared>& recordings;
    const LengthGroup& group;
    std::vector<std::unique_ptr<CorrelationSpace>> spaces;
    std::vector<Phases> phases;
};

void load(const Tile& tile, GroupWork& work)
{
    runParallel(tile.to - tile.from, work.spaces.size(), [&](std::size_t at, std::size_t worker) {
        const Piece& piece = work.group.pieces[tile.from + at];
        const Prepared& recording = work.recordings[piece.recording];
        work.phases[tile.from + at] = phasesOf(recording.samples, piece.start, piece.count,
                                               recording.rate, *work.spaces[worker]);
    });
}

void drop(const Tile& tile, GroupWork& work)
{
    for (std::size_t place = tile.from; place < tile.to; ++place)
        work.phases[place] = Phases();
}

std::vector<LengthGroup::Task> tasksBetween(const LengthGroup& group, const Tile& first,
                                            const Tile& second)
{
    std::vector<LengthGroup::Task> tasks;
    std::copy_if(group.tasks.begin(), group.tasks.end(), std::back_inserter(tasks),
                 [&](const LengthGroup::Task& task) {
                     return first.holds(task.first) && second.holds(task.second);
                 });
    return tasks;
}

using CandidateLists = std::vector<std::vector<Candidate>>;

void correlate(const std::vector<LengthGroup::Task>& tasks, GroupWork& work, Run& run,
               CandidateLists& byPiecePair)
{
    runParallel(tasks.size(), work.spaces.size(), [&](std::size_t at, std::size_t worker) {
        const LengthGroup::Task& task = tasks[at];
        const Piece& first = work.group.pieces[task.first];
        byPiecePair[task.index] =
            findCandidates(work.phases[task.first], first.count, work.phases[task.second],
                           work.group.pieces[task.second].count,
                           work.recordings[first.recording].rate, *work.spaces[worker]);
        run.meter.step();
    });
}

// Puts the candidates of the group's pairs into their places.
void searchGroup(const std::vector<Prepared>& recordings, const LengthGroup& group, Run& run,
                 CandidateLists& byPiecePair)
{
    const std::size_t count = group.pieces.size();
    const Fit fit = fitOf(group, recordings[group.pieces.front().recording].rate, run);
    GroupWork work{recordings, group, {}, {}};
    work.phases.resize(count);
    for (std::size_t i = 0; i < fit.workers; ++i)
        work.spaces.push_back(std::make_unique<CorrelationSpace>(group.length, run.interrupt));
    for (std::size_t a = 0; a < count; a += fit.tile) {
        const Tile first{a, std::min(count, a + fit.tile)};
        load(first, work);
        for (std::size_t b = a; b < count; b += fit.tile) {
            const Tile second{b, std::min(count, b + fit.tile)};
            const std::vector<LengthGroup::Task> tasks = tasksBetween(group, first, second);
            if (tasks.empty()) continue;
            if (b != a) load(second, work);
            correlate(tasks, work, run, byPiecePair);
            if (b != a) drop(second, work);
        }
        drop(first, work);
    }
}

} // namespace

std::vector<PiecePair> wholesOf(const std::vector<Prepared>& recordings,
                                const std::vector<RecordingPair>& pairs)
{
    std::vector<PiecePair> piecePairs;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const auto [first, second] = pairs[i];
        const std::vector<Piece> ofSecond = piecesOf(recordings[second], second);
        for (const Piece& ofFirst : piecesOf(recordings[first], first)) {
            for (const Piece& piece : ofSecond)
                piecePairs.push_back({i, ofFirst, piece});
        }
    }
    return piecePairs;
}

std::vector<PiecePair> edgesOf(const std::vector<Prepared>& recordings,
                               const std::vector<RecordingPair>& pairs)
{
    std::vector<PiecePair> piecePairs;
    for (std::size_t i = 0; i < pairs.size(); ++i) {
        const auto [first, second] = pairs[i];
        piecePairs.push_back(
            {i, headOf(recordings[first], first), tailOf(recordings[second], second)});
        piecePairs.push_back(
            {i, tailOf(recordings[first], first), headOf(recordings[second], second)});
    }
    return piecePairs;
}

std::vector<std::vector<Candidate>> candidatesOfPairs(const std::vector<Prepared>& recordings,
                                                      const std::vector<PiecePair>& piecePairs,
                                                      std::size_t pairCount, Run& run)
{
    CandidateLists byPiecePair(piecePairs.size());
    CandidateLists byPair(pairCount);
    for (const LengthGroup& group : groupByLength(piecePairs)) {
        searchGroup(recordings, group, run, byPiecePair);
        // Of a pair, those of shorter transforms come first.
        for (const LengthGroup::Task& task : group.tasks) {
            const PiecePair& piecePair = piecePairs[task.index];
            for (const Candidate& candidate : byPiecePair[task.index]) {
                const std::int64_t lag = candidate.lag +
                                         static_cast<std::int64_t>(piecePair.first.start) -
                                         static_cast<std::int64_t>(piecePair.second.start);
                byPair[piecePair.pair].push_back({lag, candidate.height});
            }
        }
    }
    return byPair;
}

} // namespace vxlsync
