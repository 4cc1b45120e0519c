#include "decide/Refine.h"

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <optional>
#include <set>
#include <vector>

#include "match/Align.h"
#include "match/Prepared.h"
#include "running/Parallel.h"

namespace vxlsync
{

namespace
{

// Above this, in Hz, microphones and lossy codecs leave little in common.
constexpr double refineHighestFrequency = 6500.0;
// A recording is refined against so many others; more tell its place hardly better, and every one
// costs as much as it did to find.
constexpr std::size_t refinedLinks = 3;
// Unpacked sound that is in memory at once: more saves little unpacking.
constexpr std::size_t mostUnpackedBytes = std::size_t{384} << 20U;
// A finer measurement that disagrees by more has lost the line.
constexpr double farthestMoveSeconds = 0.0005;
// So has one on which fewer windows agree than this share of those that agreed before.
constexpr double leastAgreementKept = 0.5;

bool isFine(const Recording& recording)
{
    return recording.fineRate > analysisRate && recording.fine.size() > 0;
}

bool canBeRefined(const Link& link, const std::vector<Recording>& recordings)
{
    const Recording& first = recordings[link.first];
    const Recording& second = recordings[link.second];
    return link.isUsed() && isFine(first) && isFine(second) && first.fineRate == second.fineRate;
}

// Of those that can be refined, the most significant of each recording, by index and in order.
std::vector<std::size_t> linksToRefine(const Links& links, const std::vector<Recording>& recordings)
{
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < links.size(); ++i) {
        if (canBeRefined(links[i], recordings)) order.push_back(i);
    }
    std::stable_sort(order.begin(), order.end(), [&](std::size_t left, std::size_t right) {
        return links[left].line.significance > links[right].line.significance;
    });
    std::vector<std::size_t> taken(recordings.size(), 0);
    std::vector<std::size_t> chosen;
    for (const std::size_t index : order) {
        std::size_t& first = taken[links[index].first];
        std::size_t& second = taken[links[index].second];
        if (first >= refinedLinks && second >= refinedLinks) continue;
        ++first;
        ++second;
        chosen.push_back(index);
    }
    std::sort(chosen.begin(), chosen.end());
    return chosen;
}

// Memory that a recording takes once it is unpacked, floats for halves, with an eighth for its
// loudness and what the filter leaves at the edges of silence.
std::size_t unpackedBytes(const Recording& recording)
{
    return recording.fine.bytes() / 4 * 9;
}

// Links, by index, whose recordings are in memory together.
struct Batch {
    std::vector<std::size_t> links;
    std::set<std::size_t> recordings;
};

// Splits the links that can be refined, in their order, so that the recordings of each batch fit
// into the memory; a link whose two recordings alone do not fit is a batch of its own.
std::vector<Batch> batchesOf(const Links& links, const std::vector<Recording>& recordings,
                             std::size_t memory)
{
    std::vector<Batch> batches;
    std::size_t taken = 0;
    for (const std::size_t i : linksToRefine(links, recordings)) {
        const std::set<std::size_t> pair{links[i].first, links[i].second};
        std::size_t added = 0;
        std::size_t both = 0;
        for (const std::size_t recording : pair) {
            const std::size_t bytes = unpackedBytes(recordings[recording]);
            both += bytes;
            if (!batches.empty() && batches.back().recordings.count(recording) == 0) added += bytes;
        }
        if (batches.empty() || taken + added > memory) {
            batches.emplace_back();
            taken = 0;
            added = both;
        }
        taken += added;
        batches.back().links.push_back(i);
        batches.back().recordings.insert(pair.begin(), pair.end());
    }
    return batches;
}

// Recordings that are unpacked, by index.
using Unpacked = std::vector<std::optional<Prepared>>;

// Lets go of what the batch does not need, and unpacks what it needs and does not have.
void unpack(Unpacked& unpacked, const Batch& batch, const std::vector<Recording>& recordings,
            const Run& run)
{
    for (std::size_t i = 0; i < unpacked.size(); ++i) {
        if (batch.recordings.count(i) == 0) unpacked[i].reset();
    }
    runParallel(unpacked.size(), run.threads, [&](std::size_t index, std::size_t) {
        if (batch.recordings.count(index) == 0 || unpacked[index]) return;
        unpacked[index] =
            prepare(recordings[index].fine, recordings[index].fineRate, run.interrupt);
    });
}

Alignment measured(const Alignment& line, const Prepared& first, const Prepared& second,
                   const Interrupt& interrupt, AlignWorkspace& work)
{
    AlignRequest request;
    request.offset = line.offset;
    request.slope = line.slope;
    request.sign = line.sign;
    request.isKnown = true;
    request.highest = refineHighestFrequency;
    return align(first, second, request, interrupt, work);
}

// Comparisons with what is no number fail, and the line stays as it was.
bool hasKeptTheLine(const Alignment& fine, const Alignment& line)
{
    return !fine.windows.empty() && fine.agreement >= line.agreement * leastAgreementKept &&
           std::fabs(fine.offsetAt(line.middle) - line.offset) <= farthestMoveSeconds;
}

// What the link was judged by stays; only its place gets finer.
Alignment refined(Alignment line, const Alignment& fine)
{
    if (!hasKeptTheLine(fine, line)) return line;
    line.offset = fine.offsetAt(line.middle);
    line.slope = fine.slope;
    line.offsetError = fine.offsetError;
    line.slopeError = fine.slopeError;
    return line;
}

} // namespace

Links refineLinks(Links links, const std::vector<Recording>& recordings, Run& run)
{
    const std::vector<Batch> batches =
        batchesOf(links, recordings, std::min(mostUnpackedBytes, run.memory.remaining()));
    std::size_t steps = 0;
    for (const Batch& batch : batches)
        steps += batch.links.size();
    run.meter.begin(Stage::refining, steps);

    Unpacked unpacked(recordings.size());
    std::vector<AlignWorkspace> workspaces(run.threads);
    for (const Batch& batch : batches) {
        unpack(unpacked, batch, recordings, run);
        runParallel(batch.links.size(), run.threads, [&](std::size_t index, std::size_t worker) {
            Link& link = links[batch.links[index]];
            const Alignment fine =
                measured(link.line, *unpacked[link.first], *unpacked[link.second], run.interrupt,
                         workspaces[worker]);
            link.line = refined(link.line, fine);
            run.meter.step();
        });
    }
    return links;
}

} // namespace vxlsync
