#ifndef VXL_SYNC_TESTS_TESTSCENE_H
#define VXL_SYNC_TESTS_TESTSCENE_H

#include <atomic>
#include <cstddef>
#include <utility>
#include <vector>

#include "TestLinks.h"
#include "decide/Arrangement.h"
#include "decide/Verdicts.h"

namespace links
{

// What a look sees where both have sound, and it differs.
inline vxlsync::Alignment different()
{
    vxlsync::Alignment line;
    line.windows.resize(14);
    line.coherence = 0.005;
    line.significance = 2.0;
    line.fullSignificance = 400.0;
    line.activity = 0.9;
    line.heardSeconds = 20.0;
    return line;
}

// Recordings, their links, and what looks see: nothing unless said otherwise. The arrangement
// borrows the rest.
struct Scene {
    Scene(vxlsync::Links newLinks, std::size_t recordings, vxlsync::Constraints newConstraints)
        : constraints(std::move(newConstraints)),
          best(vxlsync::bestCoherences(newLinks, recordings)),
          judged(vxlsync::judgeLinks(std::move(newLinks), best)),
          arrangement(constraints, {judged, best, constraints.durations, examine}, interrupt)
    {
    }
    Scene(vxlsync::Links newLinks, std::size_t recordings)
        : Scene(std::move(newLinks), recordings, constraintsOf(recordings))
    {
    }

    Scene(const Scene&) = delete;

    void join(std::size_t link)
    {
        arrangement.unite(arrangement.groups().joinBy(judged[link]), link);
    }
    double startOf(std::size_t recording) const
    {
        return arrangement.groups().placeOf(recording).start -
               arrangement.groups().placeOf(0).start;
    }

    vxlsync::Constraints constraints;
    std::vector<double> best;
    vxlsync::Links judged;
    vxlsync::Alignment seen;
    std::atomic<bool> isCancelled{false};
    const vxlsync::Interrupt interrupt{[this] { return isCancelled.load(); }};
    vxlsync::Examine examine = [this](std::size_t, std::size_t, double, double) { return seen; };
    vxlsync::Arrangement arrangement;
};

} // namespace links

#endif
