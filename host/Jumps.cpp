#include "Jumps.h"

#include <algorithm>
#include <cmath>

namespace vxlsync
{

namespace
{

// Recorders drop seconds at most; turns of a loop that are further apart stay rivals.
constexpr double longestJump = 5.0;
// Windows with sound that each part must have.
constexpr double leastVoices = 3.0;
// Share of its windows on which a line holds in its part, and at most holds in the other.
constexpr double holds = 0.9;
constexpr double fails = 0.15;
// Of the two parts' coherences, the lower against the higher.
constexpr double alike = 0.5;
constexpr double pauseWeight = 0.1;

// Of the windows on one side of a moment: how many have a voice, how many of those agree, and the
// coherence of the side.
struct Side {
    double voices = 0.0;
    double agreeing = 0.0;
    double weight = 0.0;
    double coherence = 0.0;

    bool isHeld() const { return voices >= leastVoices && agreeing >= holds * voices; }
    bool isLeft() const { return agreeing <= fails * voices; }
};

Side sideOf(const Alignment& line, double from, double to)
{
    Side side;
    for (const AlignWindow& window : line.windows) {
        if (window.time < from || window.time >= to) continue;
        const double voice = std::max(0.0, window.weight - pauseWeight);
        side.voices += voice;
        if (window.agrees) side.agreeing += voice;
        side.weight += window.weight;
        side.coherence += window.weight * window.coherence;
    }
    if (side.weight > 0.0) side.coherence /= side.weight;
    return side;
}

bool tryJoin(Hypothesis& early, const Hypothesis& late)
{
    const Alignment& first = early.line;
    const Alignment& second = late.line;
    const double begin = std::min(first.start, second.start) - 1.0;
    const double end = std::max(first.end, second.end) + 1.0;
    Alignment joined = first;
    double best = 0.0;
    double moment = 0.0;
    for (const AlignWindow& window : first.windows) {
        const Side held = sideOf(first, begin, window.time);
        const Side followed = sideOf(second, window.time, end);
        if (!held.isHeld() || !followed.isHeld() || !sideOf(first, window.time, end).isLeft() ||
            !sideOf(second, begin, window.time).isLeft())
            continue;
        if (std::min(held.coherence, followed.coherence) <
            alike * std::max(held.coherence, followed.coherence))
            continue;
        const double agreement =
            (held.agreeing + followed.agreeing) / (held.voices + followed.voices);
        if (agreement <= best) continue;
        best = agreement;
        moment = window.time;
        joined.agreement = agreement;
        joined.coherence = (held.weight * held.coherence + followed.weight * followed.coherence) /
                           (held.weight + followed.weight);
    }
    if (best <= 0.0) return false;
    joined.significance = std::hypot(first.significance, second.significance);
    joined.bands = std::max(first.bands, second.bands);
    early.jumps.push_back({moment, second.offsetAt(moment) - first.offsetAt(moment)});
    early.line = joined;
    return true;
}

} // namespace

void joinJumps(PairFinding& finding)
{
    std::vector<Hypothesis>& all = finding.hypotheses;
    for (std::size_t i = 0; i < all.size(); ++i) {
        for (std::size_t j = 0; j < all.size(); ++j) {
            if (i == j || all[i].line.sign != all[j].line.sign ||
                std::fabs(all[i].line.offset - all[j].line.offset) > longestJump)
                continue;
            if (!tryJoin(all[i], all[j])) continue;
            all.erase(all.begin() + static_cast<std::ptrdiff_t>(j));
            std::stable_sort(all.begin(), all.end(),
                             [](const Hypothesis& left, const Hypothesis& right) {
                                 return left.line.coherence > right.line.coherence;
                             });
            return;
        }
    }
}

} // namespace vxlsync
