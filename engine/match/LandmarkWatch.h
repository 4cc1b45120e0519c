#ifndef VXL_SYNC_LANDMARKWATCH_H
#define VXL_SYNC_LANDMARKWATCH_H

#include <vxl_audio/VXClusterSync.h>

#include "running/Interrupt.h"

namespace vxlsync
{

// Ends what the landmark library does, by throwing Cancelled out of it, if the job is to end.
class LandmarkWatch final : public VXS::VXProgress
{
public:
    // Borrows the interrupt.
    explicit LandmarkWatch(const Interrupt& newInterrupt) : interrupt(newInterrupt) {}

    void setStage(int) override { interrupt.check(); }
    void setFraction(float) override { interrupt.check(); }

private:
    const Interrupt& interrupt;
};

} // namespace vxlsync

#endif
