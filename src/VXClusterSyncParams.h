#ifndef VXS_VXCLUSTERSYNCPARAMS_H
#define VXS_VXCLUSTERSYNCPARAMS_H

#include <cstdint>

#include "VXExport.h"

namespace VXS
{

class VXExtractParams;

// Every number that governs synchronisation. It is derived from the VXExtractParams of the same
// job, so that both halves count time alike, and it does not follow later changes of that record:
// build it after the last setter call. Nothing in it can be changed. A plain value; a VXClusterSync
// takes a copy.
class VXClusterSyncParams
{
public:
    // Converts: a job has one record of each kind, and this one follows from that one.
    VXS_API VXClusterSyncParams(const VXExtractParams& extractParams);

    VXS_INTERNAL unsigned int getMinLandmarksPerEstimate() const;
    VXS_INTERNAL unsigned int getMaxLandmarkCount() const;
    VXS_INTERNAL float getAudioFramesPerSecond() const;
    VXS_INTERNAL unsigned int getHopSize() const;
    VXS_INTERNAL float getMinTemplateMatchLengthInSeconds() const;
    VXS_INTERNAL float getMinOverlapLengthInSeconds() const;
    VXS_INTERNAL float getMinPercentMatch() const;

private:
    float minPercentMatch;
    float minOverlapLengthInSeconds;
    float minTemplateMatchLengthInSeconds;
    std::uint32_t maxLandmarkCount;
    std::uint32_t minLandmarksPerEstimate;
    float audioFramesPerSecond;
    std::uint32_t hopSize;
    // Nothing reads it; hosts compile in the size of this class, so it stays as long as that does.
    std::uint32_t sampleRate;
};

} // namespace VXS

#endif
