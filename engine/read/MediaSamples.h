#ifndef VXL_SYNC_MEDIASAMPLES_H
#define VXL_SYNC_MEDIASAMPLES_H

#include <cstdint>
#include <vector>

extern "C" {
#include <libavutil/frame.h>
}

#include "read/Reader.h"

namespace vxlsync
{

// The samples of one channel of a decoded frame from `first` on, added to `sums`, which has one
// place for each; full scale is from -1 to 1. Requires that the frame has the channel.
void addChannel(const AVFrame& frame, int channel, std::int64_t first, std::vector<double>& sums);

} // namespace vxlsync

#endif
