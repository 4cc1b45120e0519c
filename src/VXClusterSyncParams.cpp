#include "VXClusterSyncParams.h"

#include "VXExtractParams.h"
#include "VXFloatingPoint.h"

namespace VXS
{

namespace
{

float framesPerSecond(unsigned int sampleRate, unsigned int hopSize)
{
    const DefaultFloatingPoint environment;
    const volatile unsigned int samples = sampleRate;
    const volatile unsigned int samplesPerFrame = hopSize;
    const volatile float frames = static_cast<float>(samples) / static_cast<float>(samplesPerFrame);
    return frames;
}

} // namespace

VXClusterSyncParams::VXClusterSyncParams(const VXExtractParams& extractParams)
    : minPercentMatch(0.0025f),
      minOverlapLengthInSeconds(3.0f),
      minTemplateMatchLengthInSeconds(3.0f),
      maxLandmarkCount(250),
      minLandmarksPerEstimate(5),
      audioFramesPerSecond(
          framesPerSecond(extractParams.getSampleRate(), extractParams.getHopSize())),
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
