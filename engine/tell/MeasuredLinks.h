#ifndef VXL_SYNC_MEASUREDLINKS_H
#define VXL_SYNC_MEASUREDLINKS_H

#include <cstddef>
#include <vector>

#include "model/Link.h"
#include "vxl_sync/Result.h"

namespace vxlsync
{

// Of each pair the links that are used, or else the best of those that are not: a loop's many other
// turns say nothing to anyone. Requires the order of Links.
Links linksWorthTelling(const Links& links);

// The link as the host is told of it, between the sources that stand at its recordings' positions.
// Where their order is the other way round, the link is told from the other side.
MeasuredLink measuredLinkOf(const Link& link, const std::vector<std::size_t>& sourceAt);

// False if any number of the link is infinite or none.
bool isFinite(const MeasuredLink& link);

} // namespace vxlsync

#endif
