#ifndef VXL_SYNC_SEARCH_H
#define VXL_SYNC_SEARCH_H

#include <string>
#include <vector>

#include "match/LandmarkOffsets.h"
#include "match/Prepared.h"
#include "model/Link.h"
#include "running/Run.h"

namespace vxlsync
{

// The links of the pairs that were looked at, which are not all: what the landmarks propose is
// followed until recordings come together, members of a group are measured against some of the
// others and where the landmarks dispute the group, and groups are searched against groups over
// their whole range. Recordings without sound find nobody, and recordings that name the same device
// are not compared: they share no time, and what is alike in them is a repeat. Left out are places
// with too little evidence to be told from chance, tones or hum. Requires landmarks by pair. Throws
// Cancelled. The result does not depend on the number of threads, nor on the memory that is left,
// which bounds how many of them work at once.
Links searchPairs(const std::vector<Prepared>& recordings, const std::vector<std::string>& devices,
                  const std::vector<LandmarkOffset>& landmarks, Run& run);

} // namespace vxlsync

#endif
