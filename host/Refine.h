#ifndef VXL_SYNC_REFINE_H
#define VXL_SYNC_REFINE_H

#include <cstddef>
#include <functional>
#include <vector>

#include "Assemble.h"
#include "Recording.h"

namespace vxlsync
{

// Measures the used links again at the recordings' own rate, up to 16 kHz, where both have more to
// tell than at the rate of the analysis. `progress` is told the share done.
void refineLinks(std::vector<Link>& links, const std::vector<Recording>& recordings,
                 std::size_t workers, const std::function<void(double)>& progress);

} // namespace vxlsync

#endif
