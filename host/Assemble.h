#ifndef VXL_SYNC_ASSEMBLE_H
#define VXL_SYNC_ASSEMBLE_H

#include <cstddef>
#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "Search.h"
#include "Solve.h"

namespace vxlsync
{

// Why a link is used or not.
enum class Verdict {
    // Stands on its own.
    accepted,
    // Too little on its own, but other links say the same.
    confirmed,
    // Given by the user.
    given,
    // Far less alike than either recording is with another.
    weak,
    // Another offset fits nearly as well: the sound repeats.
    ambiguous,
    // Contradicts stronger links.
    contradicted,
    // The user wants the two apart.
    forbidden,
};

// One link between two recordings with what was decided about it.
struct Link {
    std::size_t first = 0;
    std::size_t second = 0;
    Hypothesis found;
    // Coherence against the lower of the bests that either recording reaches with anyone.
    double relative = 0.0;
    // Coherence of the next best offset against that of this one.
    double rival = 0.0;
    Verdict verdict = Verdict::weak;

    bool used() const
    {
        return verdict == Verdict::accepted || verdict == Verdict::confirmed ||
               verdict == Verdict::given;
    }
};

// Measures how two recordings lie to each other about a line that other links imply.
using Examine =
    std::function<Alignment(std::size_t first, std::size_t second, double offset, double slope)>;

struct AssembleInput {
    std::vector<double> durations;
    std::vector<PairFinding> findings;
    // Recordings whose starts are known, on one common clock.
    std::vector<std::pair<std::size_t, double>> known;
    // Pairs that must not be in one group.
    std::vector<std::pair<std::size_t, std::size_t>> apart;
};

struct Assembly {
    // Each recording is in exactly one group; members and groups in order of index.
    std::vector<std::vector<std::size_t>> groups;
    std::vector<Link> links;
};

// Decides which links are true and which recordings belong together.
Assembly assemble(const AssembleInput& input, const Examine& examine);

} // namespace vxlsync

#endif
