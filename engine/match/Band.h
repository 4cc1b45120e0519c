#ifndef VXL_SYNC_BAND_H
#define VXL_SYNC_BAND_H

namespace vxlsync
{

// The band, in Hz, in which recordings are compared. Below is hum and handling, above is what cheap
// recorders and lossy codecs cut off.
constexpr double lowestFrequency = 100.0;
constexpr double highestFrequency = 3600.0;

} // namespace vxlsync

#endif
