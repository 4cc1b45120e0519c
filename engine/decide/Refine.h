#ifndef VXL_SYNC_REFINE_H
#define VXL_SYNC_REFINE_H

#include <vector>

#include "model/Link.h"
#include "model/Recording.h"
#include "running/Run.h"

namespace vxlsync
{

// Measures the used links again at the recordings' own rate, up to 16 kHz, where both have more to
// tell than at the rate of the analysis. Verdicts and the evidence they rest on stay.
Links refineLinks(Links links, const std::vector<Recording>& recordings, Run& run);

} // namespace vxlsync

#endif
