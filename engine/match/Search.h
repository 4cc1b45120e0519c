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

// Looks for every pair over its whole range and at what the landmarks tell. Recordings without
// sound find nobody, and recordings that name the same device are not compared: they share no time,
// and what is alike in them is a repeat. Left out are places with too little evidence to be told
// from chance, tones or hum. Throws Cancelled. The result does not depend on the number of threads,
// nor on the memory that is left, which bounds how many of them work at once.
Links searchPairs(const std::vector<Prepared>& recordings, const std::vector<std::string>& devices,
                  const std::vector<LandmarkOffset>& landmarks, Run& run);

} // namespace vxlsync

#endif
