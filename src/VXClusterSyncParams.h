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
    VXS_API explicit VXClusterSyncParams(const VXExtractParams& extractParams);

    unsigned int getMinLandmarksPerEstimate() const;
    unsigned int getMaxLandmarkCount() const;
    float getAudioFramesPerSecond() const;
    unsigned int getHopSize() const;
    float getMinTemplateMatchLengthInSeconds() const;
    float getMinOverlapLengthInSeconds() const;
    float getMinPercentMatch() const;

private:
    float minPercentMatch;
    float minOverlapLengthInSeconds;
    float minTemplateMatchLengthInSeconds;
    std::uint32_t maxLandmarkCount;
    std::uint32_t minLandmarksPerEstimate;
    float audioFramesPerSecond;
    std::uint32_t hopSize;
    std::uint32_t sampleRate;
};

} // namespace VXS

#endif
