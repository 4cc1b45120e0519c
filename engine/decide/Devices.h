#ifndef VXL_SYNC_DEVICES_H
#define VXL_SYNC_DEVICES_H

#include <vector>

#include "model/Take.h"

namespace vxlsync
{

// What recorded each take and when it began by that device's clock, as far as the takes were told
// it or their files say it. Takes are of one device if their files have the same serial number; or
// if in one folder they have the same make and model, the same name of their recorder, or names
// that count on, and their clocks do not say that two of them ran at the same time. Two devices may
// look alike in all that, so that what was not stated is evidence and no more.
std::vector<Origin> originsOf(const Takes& takes);

} // namespace vxlsync

#endif
