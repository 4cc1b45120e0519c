#ifndef VXL_SYNC_SYNCPROGRESS_H
#define VXL_SYNC_SYNCPROGRESS_H

#include <vxl_audio/VXClusterSync.h>

namespace vxlsync
{

class ProgressBar;

// Turns what the library tells of a synchronisation into one bar that never moves back. The bar
// must outlive it.
class SyncProgress final : public VXS::VXProgress
{
public:
    explicit SyncProgress(ProgressBar& newBar);

    void setStage(int stage) override;
    void setFraction(float fraction) override;

private:
    void show(float share);

    ProgressBar& bar;
    float lastFraction = 0.0f;
    bool inSecondPass = false;
    float shownShare = 0.0f;
};

} // namespace vxlsync

#endif
