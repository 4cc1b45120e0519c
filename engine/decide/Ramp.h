#ifndef VXL_SYNC_RAMP_H
#define VXL_SYNC_RAMP_H

#include <algorithm>

namespace vxlsync
{

// A limit that changes evenly between two places and stays as it is beyond them.
struct Ramp {
    double from = 0.0;
    double valueAtFrom = 0.0;
    double to = 0.0;
    double valueAtTo = 0.0;

    double at(double place) const
    {
        const double share = std::clamp((place - from) / (to - from), 0.0, 1.0);
        return valueAtFrom + share * (valueAtTo - valueAtFrom);
    }
};

} // namespace vxlsync

#endif
