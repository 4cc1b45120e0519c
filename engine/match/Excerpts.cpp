#include "match/Excerpts.h"

#include <algorithm>
#include <cmath>

#include "match/Candidates.h"
#include "match/Overlap.h"
#include "match/Pieces.h"

namespace vxlsync
{

namespace
{

constexpr double excerptSeconds = 30.0;
// An excerpt for so many seconds of the shorter recording, up to a few: somewhere in it both hear
// the same.
constexpr double excerptSpacingSeconds = 150.0;
constexpr std::size_t mostExcerpts = 6;
// Clocks 170 millionths apart blur this long an overlap by 17 ms, about as far as a peak is wide.
constexpr double blurredOverlapSeconds = 100.0;
// Of an excerpt's candidates; the sound that is looked for is nearly all of the excerpt.
constexpr std::size_t bestOfExcerpt = 2;

// A pair of which the longer stands first.
struct LongAndShort {
    const Prepared& longer;
    const Prepared& shorter;
    bool isTurned;
};

LongAndShort sorted(const PairInHand& pair)
{
    const bool isTurned = pair.first.samples.size() < pair.second.samples.size();
    return {isTurned ? pair.second : pair.first, isTurned ? pair.first : pair.second, isTurned};
}

std::size_t excerptLength(const Prepared& recording)
{
    return static_cast<std::size_t>(excerptSeconds * recording.rate);
}

std::vector<std::size_t> excerptStarts(const Prepared& shorter)
{
    const std::size_t number = std::min(
        mostExcerpts,
        static_cast<std::size_t>(std::lround(shorter.seconds() / excerptSpacingSeconds)) + 1);
    const std::size_t room = shorter.samples.size() - excerptLength(shorter);
    std::vector<std::size_t> starts;
    for (std::size_t i = 0; i < number; ++i)
        starts.push_back(room * (2 * i + 1) / (2 * number));
    return starts;
}

// `offset` is that of the longer against the shorter. The excerpt begins at `start` of the shorter.
Proposal proposalAt(const LongAndShort& pair, double offset, std::size_t start, double height)
{
    Proposal proposal;
    proposal.height = std::fabs(height);
    // Seconds between the excerpt and the middle of the overlap, over which the clocks may have
    // drifted.
    const Overlap overlap = overlapOf(pair.shorter.seconds(), pair.longer.seconds(), -offset);
    const std::size_t middle = start + excerptLength(pair.shorter) / 2;
    const double away =
        std::fabs(static_cast<double>(middle) / pair.shorter.rate - overlap.middle());
    proposal.request.reach += proposal.request.slopeReach * away;
    proposal.request.offset = pair.isTurned ? -offset : offset;
    return proposal;
}

} // namespace

bool mayBlur(const PairInHand& pair)
{
    return std::min(pair.first.seconds(), pair.second.seconds()) >= blurredOverlapSeconds;
}

std::size_t bytesOfExcerpts(const PairInHand& pair)
{
    const LongAndShort lengths = sorted(pair);
    std::size_t longest = 0;
    for (const Piece& piece : piecesOf(lengths.longer, 0))
        longest = std::max(longest, piece.count);
    const std::size_t length = lengthClass(longest + excerptLength(lengths.shorter));
    return bytesOfSpace(length) + 2 * bytesOfPhases(length, lengths.longer.rate);
}

std::vector<Proposal> proposeExcerpts(const PairInHand& pair, const Interrupt& interrupt)
{
    const LongAndShort lengths = sorted(pair);
    const Prepared& longer = lengths.longer;
    const Prepared& shorter = lengths.shorter;
    const std::size_t count = excerptLength(shorter);
    std::vector<Proposal> proposals;
    for (const Piece& piece : piecesOf(longer, 0)) {
        CorrelationSpace space(lengthClass(piece.count + count), interrupt);
        const Phases whole = phasesOf(longer.samples, piece.start, piece.count, longer.rate, space);
        for (const std::size_t start : excerptStarts(shorter)) {
            const Phases excerpt = phasesOf(shorter.samples, start, count, shorter.rate, space);
            std::vector<Candidate> candidates =
                findCandidates(whole, piece.count, excerpt, count, shorter.rate, space);
            if (candidates.size() > bestOfExcerpt) candidates.resize(bestOfExcerpt);
            for (const Candidate& candidate : candidates) {
                const double lag = static_cast<double>(candidate.lag) +
                                   static_cast<double>(piece.start) - static_cast<double>(start);
                proposals.push_back(
                    proposalAt(lengths, lag / shorter.rate, start, candidate.height));
            }
        }
    }
    return proposals;
}

} // namespace vxlsync
