#include "match/Jumps.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "match/Windows.h"

namespace vxlsync
{

namespace
{

// Recorders drop seconds at most; turns of a loop that are further apart stay rivals.
constexpr double longestJumpSeconds = 5.0;
// Windows with sound that each part must have.
constexpr double fewestVoices = 3.0;
// Share of its windows on which a line holds in its part, and at most holds in the other.
constexpr double heldShare = 0.9;
constexpr double leftShare = 0.15;
// Of the two parts' coherences, the lower against the higher.
constexpr double alikeCoherence = 0.5;
// Windows at the very ends count too, whatever rounding does.
constexpr double endMarginSeconds = 1.0;

// Of the windows on one side of a moment: how many have a voice, how many of those agree, and the
// coherence of the side.
struct Side {
    double voices = 0.0;
    double agreeing = 0.0;
    double weight = 0.0;
    double coherence = 0.0;

    bool isHeld() const { return voices >= fewestVoices && agreeing >= heldShare * voices; }
    bool isLeft() const { return agreeing <= leftShare * voices; }
};

Side sideOf(const Alignment& line, double from, double to)
{
    Side side;
    double sum = 0.0;
    for (const AlignmentWindow& window : line.windows) {
        if (window.time < from || window.time >= to) continue;
        side.voices += voiceOf(window);
        if (window.agrees) side.agreeing += voiceOf(window);
        side.weight += window.weight;
        sum += window.weight * window.coherence;
    }
    if (side.weight > 0.0) side.coherence = sum / side.weight;
    return side;
}

bool areAlike(const Side& left, const Side& right)
{
    return std::min(left.coherence, right.coherence) >=
           alikeCoherence * std::max(left.coherence, right.coherence);
}

// One line up to a moment and another from there on.
struct Joint {
    double moment;
    double agreement;
    double coherence;
};

std::optional<Joint> jointAt(const Alignment& early, const Alignment& late, double moment)
{
    const double begin = std::min(early.start, late.start) - endMarginSeconds;
    const double end = std::max(early.end, late.end) + endMarginSeconds;
    const Side held = sideOf(early, begin, moment);
    const Side followed = sideOf(late, moment, end);
    if (!held.isHeld() || !followed.isHeld() || !sideOf(early, moment, end).isLeft() ||
        !sideOf(late, begin, moment).isLeft() || !areAlike(held, followed))
        return std::nullopt;
    return Joint{moment, (held.agreeing + followed.agreeing) / (held.voices + followed.voices),
                 (held.weight * held.coherence + followed.weight * followed.coherence) /
                     (held.weight + followed.weight)};
}

// Of all moments at which the two can be joined, the one at which most windows agree.
std::optional<Joint> bestJoint(const Alignment& early, const Alignment& late)
{
    std::optional<Joint> best;
    for (const AlignmentWindow& window : early.windows) {
        const std::optional<Joint> joint = jointAt(early, late, window.time);
        if (joint && (!best || joint->agreement > best->agreement)) best = joint;
    }
    return best;
}

bool mayBelongTogether(const Alignment& one, const Alignment& other)
{
    return one.sign == other.sign && std::fabs(one.offset - other.offset) <= longestJumpSeconds;
}

Link joined(const Link& early, const Link& late, const Joint& joint)
{
    Link link = early;
    link.line.agreement = joint.agreement;
    link.line.coherence = joint.coherence;
    link.line.significance = std::hypot(early.line.significance, late.line.significance);
    link.line.bands = std::max(early.line.bands, late.line.bands);
    const double before = early.line.offsetAt(joint.moment);
    link.jumps.push_back({joint.moment, late.line.offsetAt(joint.moment) - before});
    return link;
}

} // namespace

Links joinJumps(Links ofPair)
{
    for (std::size_t i = 0; i < ofPair.size(); ++i) {
        for (std::size_t j = 0; j < ofPair.size(); ++j) {
            if (i == j || !mayBelongTogether(ofPair[i].line, ofPair[j].line)) continue;
            const std::optional<Joint> joint = bestJoint(ofPair[i].line, ofPair[j].line);
            if (!joint) continue;
            ofPair[i] = joined(ofPair[i], ofPair[j], *joint);
            ofPair.erase(ofPair.begin() + static_cast<std::ptrdiff_t>(j));
            return ofPair;
        }
    }
    return ofPair;
}

} // namespace vxlsync
