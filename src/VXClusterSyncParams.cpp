#include "VXClusterSyncParams.h"

#include "VXExtractParams.h"

namespace VXS
{

VXClusterSyncParams::VXClusterSyncParams(const VXExtractParams& extractParams)
    : minPercentMatch(0.0025f),
      minOverlapLengthInSeconds(3.0f),
      minTemplateMatchLengthInSeconds(3.0f),
      maxLandmarkCount(250),
      minLandmarksPerEstimate(5),
      audioFramesPerSecond(static_cast<float>(extractParams.getSampleRate()) /
                           static_cast<float>(extractParams.getHopSize())),
      hopSize(extractParams.getHopSize()),
      sampleRate(extractParams.getSampleRate())
{
}

unsigned int VXClusterSyncParams::getMinLandmarksPerEstimate() const
{
    return minLandmarksPerEstimate;
}

unsigned int VXClusterSyncParams::getMaxLandmarkCount() const
{
    return maxLandmarkCount;
}

float VXClusterSyncParams::getAudioFramesPerSecond() const
{
    return audioFramesPerSecond;
}

unsigned int VXClusterSyncParams::getHopSize() const
{
    return hopSize;
}

float VXClusterSyncParams::getMinTemplateMatchLengthInSeconds() const
{
    return minTemplateMatchLengthInSeconds;
}

float VXClusterSyncParams::getMinOverlapLengthInSeconds() const
{
    return minOverlapLengthInSeconds;
}

float VXClusterSyncParams::getMinPercentMatch() const
{
    return minPercentMatch;
}

} // namespace VXS
