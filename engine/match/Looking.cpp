#include "match/Looking.h"

#include <algorithm>
#include <iterator>
#include <tuple>

#include "match/Ties.h"
#include "running/Parallel.h"

namespace vxlsync
{

namespace
{

// The landmarks are right to a frame of 32 ms, and clocks that differ blur that.
constexpr double landmarkReachSeconds = 0.06;

std::vector<double> durationsOf(const std::vector<Prepared>& recordings)
{
    std::vector<double> durations;
    durations.reserve(recordings.size());
    for (const Prepared& recording : recordings)
        durations.push_back(recording.seconds());
    return durations;
}

// True if no link has been added and no line has given way to one that is more coherent.
bool areSame(const Links& links, const Links& known)
{
    return std::equal(links.begin(), links.end(), known.begin(), known.end(),
                      [](const Link& left, const Link& right) {
                          return left.line.coherence == right.line.coherence;
                      });
}

// The links of the pair after the look.
Links looked(const LookTask& task, const SearchState& search, AlignWorkspace& work)
{
    const PairInHand pair = search.inHand(task.pair);
    const Interrupt& interrupt = search.run.interrupt;
    const Links& known = search.linksOf(task.pair);
    Links links = known;
    for (const Proposal& proposal : task.proposals)
        links = lookAt(proposal, pair, std::move(links), interrupt, work);
    // What is known has been measured already.
    if (areSame(links, known)) return links;
    return lookClosely(pair, std::move(links), interrupt, work);
}

} // namespace

Links linksIn(const LinkBook& book)
{
    Links all;
    for (const auto& entry : book)
        all.insert(all.end(), entry.second.begin(), entry.second.end());
    return all;
}

SearchState::SearchState(const std::vector<Prepared>& newRecordings,
                         const std::vector<std::string>& newDevices,
                         const std::vector<LandmarkOffset>& newLandmarks, Run& newRun)
    : recordings(newRecordings),
      devices(newDevices),
      landmarks(newLandmarks),
      run(newRun),
      spaces(newRun.threads),
      gathering(durationsOf(newRecordings))
{
}

bool SearchState::mayCompare(std::size_t first, std::size_t second) const
{
    return devices[first].empty() || devices[first] != devices[second];
}

PairInHand SearchState::inHand(const RecordingPair& pair) const
{
    return {pair, recordings[pair.first], recordings[pair.second]};
}

Gathering SearchState::singles() const
{
    return Gathering(durationsOf(recordings));
}

const Links& SearchState::linksOf(const RecordingPair& pair) const
{
    const auto known = book.find({pair.first, pair.second});
    return known == book.end() ? noLinks : known->second;
}

Proposal proposalOf(const LandmarkOffset& landmark)
{
    Proposal proposal;
    proposal.request.offset = landmark.offset;
    proposal.request.reach = landmarkReachSeconds;
    proposal.method = Method::landmarks;
    proposal.isDoubtful = landmark.standing < clearStanding;
    return proposal;
}

std::vector<Proposal> landmarkProposals(const RecordingPair& pair, const SearchState& search)
{
    const auto isBefore = [](const LandmarkOffset& left, const LandmarkOffset& right) {
        return std::tie(left.first, left.second) < std::tie(right.first, right.second);
    };
    const LandmarkOffset sought{pair.first, pair.second, 0.0, 0.0};
    const auto range =
        std::equal_range(search.landmarks.begin(), search.landmarks.end(), sought, isBefore);
    std::vector<Proposal> proposals;
    std::transform(range.first, range.second, std::back_inserter(proposals), proposalOf);
    return proposals;
}

void look(const std::vector<LookTask>& tasks, SearchState& search)
{
    std::vector<Links> links(tasks.size());
    runParallel(tasks.size(), search.run.threads, [&](std::size_t index, std::size_t worker) {
        links[index] = looked(tasks[index], search, search.spaces[worker]);
        search.run.meter.step();
    });
    for (std::size_t i = 0; i < tasks.size(); ++i)
        search.book[{tasks[i].pair.first, tasks[i].pair.second}] = std::move(links[i]);
    gather(search.book, search.gathering);
}

} // namespace vxlsync
