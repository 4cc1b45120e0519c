#include "Refine.h"

#include <cmath>
#include <memory>
#include <mutex>

#include "Parallel.h"

namespace vxlsync
{

namespace
{

// The line is known to a fraction of a millisecond; more room would only let noise in.
constexpr double reach = 0.001;
constexpr double slopeReach = 2e-6;
// Above this, microphones and lossy codecs leave little in common.
constexpr double highest = 6500.0;
// A finer measurement that disagrees by more has lost the line.
constexpr double farthestMove = 0.0005;
// Recordings are unpacked once where all fit into about half a gigabyte.
constexpr std::size_t mostSamples = 120'000'000;

bool isFine(const Recording& recording)
{
    return recording.fineRate > analysisRate && recording.fine.size() > 0;
}

Prepared unpack(const Recording& recording)
{
    std::vector<float> samples(recording.fine.size());
    for (std::size_t i = 0; i < samples.size(); ++i)
        samples[i] = recording.fine[i];
    return prepare(samples, recording.fineRate);
}

void measure(Link& link, const Prepared& first, const Prepared& second, AlignWorkspace& work)
{
    Alignment& line = link.found.line;
    AlignRequest request;
    request.offset = line.offset;
    request.slope = line.slope;
    request.sign = line.sign;
    request.reach = reach;
    request.slopeReach = slopeReach;
    request.highest = highest;
    const Alignment fine = align(first, second, request, work);
    if (fine.windows.empty() || fine.agreement < line.agreement / 2.0) return;
    if (std::fabs(fine.offsetAt(line.middle) - line.offset) > farthestMove) return;
    // What the link was judged by stays; only its place gets finer.
    line.offset = fine.offsetAt(line.middle);
    line.slope = fine.slope;
    line.offsetError = fine.offsetError;
    line.slopeError = fine.slopeError;
}

} // namespace

void refineLinks(std::vector<Link>& links, const std::vector<Recording>& recordings,
                 std::size_t workers, const std::function<void(double)>& progress)
{
    std::vector<std::size_t> todo;
    std::vector<bool> needed(recordings.size(), false);
    std::size_t samples = 0;
    for (std::size_t i = 0; i < links.size(); ++i) {
        const Recording& first = recordings[links[i].first];
        const Recording& second = recordings[links[i].second];
        if (!links[i].used() || !isFine(first) || !isFine(second) ||
            first.fineRate != second.fineRate)
            continue;
        todo.push_back(i);
        needed[links[i].first] = needed[links[i].second] = true;
    }
    for (std::size_t i = 0; i < recordings.size(); ++i) {
        if (needed[i]) samples += recordings[i].fine.size();
    }
    const bool keep = samples <= mostSamples;
    std::vector<std::unique_ptr<Prepared>> kept(recordings.size());
    if (keep) {
        runParallel(recordings.size(), workers, [&](std::size_t index, std::size_t) {
            if (needed[index]) kept[index] = std::make_unique<Prepared>(unpack(recordings[index]));
        });
    }

    std::vector<AlignWorkspace> spaces(workers);
    std::mutex guard;
    std::size_t done = 0;
    runParallel(todo.size(), keep ? workers : 1, [&](std::size_t index, std::size_t worker) {
        Link& link = links[todo[index]];
        if (keep) {
            measure(link, *kept[link.first], *kept[link.second], spaces[worker]);
        } else {
            measure(link, unpack(recordings[link.first]), unpack(recordings[link.second]),
                    spaces[worker]);
        }
        const std::lock_guard<std::mutex> lock(guard);
        ++done;
        progress(static_cast<double>(done) / static_cast<double>(todo.size()));
    });
}

} // namespace vxlsync
