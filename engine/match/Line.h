#ifndef VXL_SYNC_LINE_H
#define VXL_SYNC_LINE_H

namespace vxlsync
{

// An offset that changes evenly with the time of the first recording, in seconds.
struct Line {
    double middle = 0.0;
    double offset = 0.0;
    double slope = 0.0;
    // 1, or -1 where one recording is the other upside down.
    double sign = 1.0;

    double at(double time) const { return offset + slope * (time - middle); }
};

} // namespace vxlsync

#endif
