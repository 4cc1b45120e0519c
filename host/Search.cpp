#include "Search.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <memory>
#include <mutex>
#include <set>
#include <utility>

#include "Candidates.h"
#include "Jumps.h"
#include "Parallel.h"

namespace vxlsync
{

namespace
{

// Longer recordings are searched in pieces, so that neither memory nor the blur of a drifting
// clock grow without bound. What two pieces share keeps short overlaps whole.
constexpr double pieceSeconds = 1200.0;
constexpr double pieceShared = 120.0;
// Between clocks that differ, a long overlap blurs until nothing stands out; a short excerpt does
// not.
constexpr double excerptSeconds = 30.0;
constexpr double excerptSpacing = 150.0;
constexpr std::size_t mostExcerpts = 6;
constexpr double longOverlap = 100.0;
constexpr double edgeSeconds = 12.0;

// First look at a candidate: enough windows to tell chance.
constexpr std::size_t fewWindows = 12;
// So many of a pair's candidates are measured with all windows; of a loop's many turns the rest
// only matter as rivals.
constexpr std::size_t lookedAtClosely = 3;
constexpr double settlingOverlap = 180.0;
constexpr double settlingSignificance = 60.0;
constexpr double settlingAgreement = 0.98;
constexpr double closeReach = 0.005;
constexpr double closeSlope = 40e-6;
constexpr double landmarkReach = 0.06;
// Two lines nearer to each other are one.
constexpr double sameLine = 0.02;

constexpr double leastSignificance = 9.0;
constexpr int leastBands = 6;
constexpr double leastSharpness = 1.3;
constexpr double leastAgreement = 0.3;

struct Piece {
    std::size_t recording;
    std::size_t start;
    std::size_t count;
};

std::vector<Piece> piecesOf(const std::vector<Prepared>& recordings)
{
    std::vector<Piece> pieces;
    for (std::size_t i = 0; i < recordings.size(); ++i) {
        const std::size_t count = recordings[i].samples.size();
        const auto rate = static_cast<double>(recordings[i].rate);
        const auto longest = static_cast<std::size_t>(pieceSeconds * rate);
        const auto step = static_cast<std::size_t>((pieceSeconds - pieceShared) * rate);
        std::size_t start = 0;
        for (; count > start + longest; start += step)
            pieces.push_back({i, start, longest});
        if (count > start) pieces.push_back({i, start, count - start});
    }
    return pieces;
}

// Lengths in steps of a quarter octave or less, so that pairs of recordings of like length share
// their transforms.
std::size_t lengthClass(std::size_t samples)
{
    std::size_t length = 1024;
    while (length < samples)
        length *= 2;
    for (const std::size_t eighths : {std::size_t{5}, std::size_t{6}, std::size_t{7}}) {
        if (length / 8 * eighths >= samples) return fastLength(length / 8 * eighths);
    }
    return length;
}

std::vector<float> part(const Prepared& recording, const Piece& piece)
{
    const auto from = recording.samples.begin() + static_cast<std::ptrdiff_t>(piece.start);
    return {from, from + static_cast<std::ptrdiff_t>(piece.count)};
}

struct PairKey {
    std::size_t first;
    std::size_t second;
    bool operator<(const PairKey& other) const
    {
        return first != other.first ? first < other.first : second < other.second;
    }
};

using CandidateMap = std::map<PairKey, std::vector<Candidate>>;

class Searcher
{
public:
    Searcher(const std::vector<Prepared>& newRecordings, std::size_t newWorkers,
             const std::function<void(double)>& newProgress)
        : recordings(newRecordings),
          workers(std::max<std::size_t>(1, newWorkers)),
          progress(newProgress)
    {
    }

    std::vector<PairFinding> run(const std::vector<LandmarkOffset>& landmarks)
    {
        std::vector<PairFinding> findings;
        for (std::size_t first = 0; first < recordings.size(); ++first) {
            for (std::size_t second = first + 1; second < recordings.size(); ++second) {
                if (recordings[first].samples.empty() || recordings[second].samples.empty())
                    continue;
                findings.push_back({first, second, {}});
            }
        }
        std::vector<AlignWorkspace> spaces(workers);
        runParallel(findings.size(), workers, [&](std::size_t index, std::size_t worker) {
            lookAtLandmarks(findings[index], landmarks, spaces[worker]);
        });
        std::set<PairKey> settled;
        for (const PairFinding& finding : findings) {
            if (isSettled(finding)) settled.insert({finding.first, finding.second});
        }
        const CandidateMap candidates = findAll(settled);
        steps = findings.size();
        done = 0;
        runParallel(findings.size(), workers, [&](std::size_t index, std::size_t worker) {
            PairFinding& finding = findings[index];
            const auto found = candidates.find({finding.first, finding.second});
            lookAt(finding, found == candidates.end() ? std::vector<Candidate>() : found->second,
                   spaces[worker]);
            step(0.4, 1.0);
        });
        return findings;
    }

private:
    // Candidates of all pairs, their lags in samples of the whole recordings.
    CandidateMap findAll(const std::set<PairKey>& settled)
    {
        std::vector<Piece> pieces = piecesOf(recordings);
        const std::size_t wholes = pieces.size();
        std::map<std::size_t, std::vector<std::pair<std::size_t, std::size_t>>> byLength;
        steps = 0;
        done = 0;
        for (std::size_t i = 0; i < wholes; ++i) {
            for (std::size_t j = i + 1; j < wholes; ++j) {
                if (pieces[i].recording == pieces[j].recording ||
                    settled.count({pieces[i].recording, pieces[j].recording}) > 0)
                    continue;
                byLength[lengthClass(pieces[i].count + pieces[j].count)].push_back({i, j});
                ++steps;
            }
        }
        addEdges(pieces, settled, byLength);
        CandidateMap all;
        for (const auto& entry : byLength) {
            const std::size_t length = entry.first;
            const auto& pairs = entry.second;
            std::vector<Phases> phases(pieces.size());
            std::vector<bool> needed(pieces.size(), false);
            for (const auto& [i, j] : pairs)
                needed[i] = needed[j] = true;
            std::vector<std::unique_ptr<Transform>> transforms(workers);
            for (std::unique_ptr<Transform>& transform : transforms)
                transform = std::make_unique<Transform>(length);
            runParallel(pieces.size(), workers, [&](std::size_t index, std::size_t worker) {
                if (!needed[index]) return;
                const Prepared& recording = recordings[pieces[index].recording];
                phases[index] =
                    phasesOf(part(recording, pieces[index]), recording.rate, *transforms[worker]);
            });
            // A transform keeps tables for each direction it was used in, and at this length they
            // are most of the memory.
            for (std::unique_ptr<Transform>& transform : transforms)
                transform = std::make_unique<Transform>(length);
            std::vector<CandidateScratch> scratches(workers);
            std::vector<std::vector<Candidate>> found(pairs.size());
            runParallel(pairs.size(), workers, [&](std::size_t index, std::size_t worker) {
                const auto [i, j] = pairs[index];
                found[index] = findCandidates(phases[i], pieces[i].count, phases[j],
                                              pieces[j].count, recordings[pieces[i].recording].rate,
                                              *transforms[worker], scratches[worker]);
                step(0.0, 0.4);
            });
            for (std::size_t index = 0; index < pairs.size(); ++index) {
                const Piece& first = pieces[pairs[index].first];
                const Piece& second = pieces[pairs[index].second];
                std::vector<Candidate>& list = all[{first.recording, second.recording}];
                for (Candidate candidate : found[index]) {
                    candidate.lag += static_cast<std::int64_t>(first.start) -
                                     static_cast<std::int64_t>(second.start);
                    list.push_back(candidate);
                }
            }
        }
        return all;
    }

    // A short overlap is the end of one recording and the start of the other. Among all the rest of
    // the two it may drown; between the edges alone it stands out.
    void addEdges(std::vector<Piece>& pieces, const std::set<PairKey>& settled,
                  std::map<std::size_t, std::vector<std::pair<std::size_t, std::size_t>>>& byLength)
    {
        const std::size_t heads = pieces.size();
        for (std::size_t i = 0; i < recordings.size(); ++i) {
            const std::size_t count = recordings[i].samples.size();
            const std::size_t edge =
                std::min(count, static_cast<std::size_t>(edgeSeconds * recordings[i].rate));
            pieces.push_back({i, 0, edge});
            pieces.push_back({i, count - edge, edge});
        }
        for (std::size_t i = 0; i < recordings.size(); ++i) {
            for (std::size_t j = i + 1; j < recordings.size(); ++j) {
                if (recordings[i].samples.empty() || recordings[j].samples.empty() ||
                    settled.count({i, j}) > 0)
                    continue;
                for (const auto& [first, second] : {std::pair{heads + 2 * i, heads + 2 * j + 1},
                                                    std::pair{heads + 2 * i + 1, heads + 2 * j}}) {
                    byLength[lengthClass(pieces[first].count + pieces[second].count)].push_back(
                        {first, second});
                    ++steps;
                }
            }
        }
    }

    void lookAtLandmarks(PairFinding& finding, const std::vector<LandmarkOffset>& landmarks,
                         AlignWorkspace& work)
    {
        for (const LandmarkOffset& told : landmarks) {
            if (told.first != finding.first || told.second != finding.second) continue;
            AlignRequest request;
            request.offset = told.offset;
            request.reach = landmarkReach;
            glance(finding, request, 0.0, Method::landmarks, work);
        }
    }

    // A piece of music does not repeat itself for minutes; a line that the landmarks tell and that
    // is clear all along needs no search for others.
    static bool isSettled(const PairFinding& finding)
    {
        return std::any_of(finding.hypotheses.begin(), finding.hypotheses.end(),
                           [](const Hypothesis& one) {
                               return one.line.overlap() >= settlingOverlap &&
                                      one.line.significance >= settlingSignificance &&
                                      one.line.agreement >= settlingAgreement;
                           });
    }

    void lookAt(PairFinding& finding, const std::vector<Candidate>& candidates,
                AlignWorkspace& work)
    {
        const Prepared& first = recordings[finding.first];
        const Prepared& second = recordings[finding.second];
        for (const Candidate& candidate : candidates) {
            AlignRequest request;
            request.offset = static_cast<double>(candidate.lag) / first.rate;
            glance(finding, request, std::fabs(candidate.height), Method::correlation, work);
        }
        if (finding.hypotheses.empty()) tryExcerpts(finding, work);
        sortByCoherence(finding);
        const std::size_t close = std::min(finding.hypotheses.size(), lookedAtClosely);
        for (std::size_t i = 0; i < close; ++i)
            lookClosely(finding.hypotheses[i], first, second, work);
        finding.hypotheses.erase(
            std::remove_if(finding.hypotheses.begin(), finding.hypotheses.end(),
                           [](const Hypothesis& one) { return !isSound(one.line); }),
            finding.hypotheses.end());
        sortByCoherence(finding);
        joinJumps(finding);
    }

    static void sortByCoherence(PairFinding& finding)
    {
        std::stable_sort(finding.hypotheses.begin(), finding.hypotheses.end(),
                         [](const Hypothesis& left, const Hypothesis& right) {
                             return left.line.coherence > right.line.coherence;
                         });
    }

    static bool isKnown(PairFinding& finding, double offset, double height)
    {
        for (Hypothesis& known : finding.hypotheses) {
            if (std::fabs(known.line.offset - offset) >= sameLine) continue;
            known.height = std::max(known.height, height);
            return true;
        }
        return false;
    }

    // Keeps what is more than chance in a few windows.
    void glance(PairFinding& finding, AlignRequest request, double height, Method method,
                AlignWorkspace& work)
    {
        if (isKnown(finding, request.offset, height)) return;
        request.mostWindows = fewWindows;
        const Alignment line =
            align(recordings[finding.first], recordings[finding.second], request, work);
        if (line.significance < leastSignificance) return;
        for (Hypothesis& known : finding.hypotheses) {
            if (std::fabs(known.line.offset - line.offset) >= sameLine) continue;
            known.height = std::max(known.height, height);
            if (line.coherence > known.line.coherence) known.line = line;
            return;
        }
        finding.hypotheses.push_back({line, method, height, {}});
    }

    static void lookClosely(Hypothesis& hypothesis, const Prepared& first, const Prepared& second,
                            AlignWorkspace& work)
    {
        if (hypothesis.line.windows.size() < fewWindows) return;
        AlignRequest request;
        request.offset = hypothesis.line.offset;
        request.slope = hypothesis.line.slope;
        request.sign = hypothesis.line.sign;
        request.reach = closeReach;
        request.slopeReach = closeSlope;
        hypothesis.line = align(first, second, request, work);
    }

    // Short pieces of the shorter recording against all of the longer one.
    void tryExcerpts(PairFinding& finding, AlignWorkspace& work)
    {
        const Prepared& first = recordings[finding.first];
        const Prepared& second = recordings[finding.second];
        if (std::min(first.seconds(), second.seconds()) < longOverlap) return;
        const bool turned = first.samples.size() < second.samples.size();
        const Prepared& longer = turned ? second : first;
        const Prepared& shorter = turned ? first : second;
        const double rate = shorter.rate;
        const auto count = static_cast<std::size_t>(excerptSeconds * rate);
        const std::size_t number =
            std::min(mostExcerpts,
                     static_cast<std::size_t>(std::lround(shorter.seconds() / excerptSpacing)) + 1);
        for (const Piece& piece : piecesOf({longer})) {
            const std::size_t length = lengthClass(piece.count + count);
            Transform transform(length);
            CandidateScratch scratch;
            const Phases whole = phasesOf(part(longer, piece), longer.rate, transform);
            for (std::size_t i = 0; i < number; ++i) {
                const std::size_t start =
                    (shorter.samples.size() - count) * (2 * i + 1) / (2 * number);
                const Phases excerpt =
                    phasesOf(part(shorter, {0, start, count}), shorter.rate, transform);
                std::vector<Candidate> found = findCandidates(whole, piece.count, excerpt, count,
                                                              shorter.rate, transform, scratch);
                if (found.size() > 2) found.resize(2);
                for (const Candidate& candidate : found) {
                    AlignRequest request;
                    request.offset =
                        (static_cast<double>(candidate.lag) + static_cast<double>(piece.start) -
                         static_cast<double>(start)) /
                        rate;
                    // Seconds between the excerpt and the middle of the overlap, over which the
                    // clocks may have drifted.
                    const double from = std::max(0.0, -request.offset);
                    const double to =
                        std::min(shorter.seconds(), longer.seconds() - request.offset);
                    const std::size_t middle = start + count / 2;
                    const double away =
                        std::fabs(static_cast<double>(middle) / rate - (from + to) / 2.0);
                    request.reach += request.slopeReach * away;
                    if (turned) request.offset = -request.offset;
                    glance(finding, request, std::fabs(candidate.height), Method::correlation,
                           work);
                }
            }
        }
    }

    void step(double from, double to)
    {
        const std::lock_guard<std::mutex> lock(guard);
        ++done;
        progress(from + (to - from) * static_cast<double>(done) / static_cast<double>(steps));
    }

    const std::vector<Prepared>& recordings;
    std::size_t workers;
    const std::function<void(double)>& progress;
    std::mutex guard;
    std::size_t steps = 0;
    std::size_t done = 0;
};

} // namespace

bool isSound(const Alignment& line)
{
    return line.significance >= leastSignificance && line.bands >= leastBands &&
           line.sharpness >= leastSharpness && line.agreement >= leastAgreement;
}

std::vector<PairFinding> searchPairs(const std::vector<Prepared>& recordings,
                                     const std::vector<LandmarkOffset>& landmarks,
                                     std::size_t workers,
                                     const std::function<void(double)>& progress)
{
    return Searcher(recordings, workers, progress).run(landmarks);
}

} // namespace vxlsync
