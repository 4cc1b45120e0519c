#ifndef VXL_SYNC_SETTLE_H
#define VXL_SYNC_SETTLE_H

#include <functional>

#include "decide/Assemble.h"

namespace vxlsync
{

using AssembleLinks = std::function<Assembly(Links)>;
// The links of an assembly, not judged, and those that are found besides; between two shares of a
// stage.
using SearchAgain = std::function<Links(const Assembly&, double beginShare, double endShare)>;

// Decides, and searches again between what a search took for one and the decision parts, until
// nothing more is found; a few times at most. Throws what its steps throw.
Assembly settle(Links links, const AssembleLinks& assembleLinks, const SearchAgain& searchAgain);

} // namespace vxlsync

#endif
