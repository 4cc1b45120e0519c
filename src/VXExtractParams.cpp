#include "VXExtractParams.h"

namespace VXS
{

VXExtractParams::VXExtractParams()
    : frequencyRange(62),
      timeRange(126),
      initialFrames(10),
      maxPeaksPerFrame(5),
      maskHeight(40.0f),
      peakFloor(-60.0f),
      thresholdDecay(0.2f),
      maskWidth(25.0f),
      fftSize(512),
      hopSize(256),
      sampleRate(8000),
      maxPairsPerPeak(10)
{
}

unsigned int VXExtractParams::getFftSize() const
{
    return fftSize;
}

bool VXExtractParams::setFftSize(unsigned int newFftSize)
{
    const bool atMostOneBit = (newFftSize & (newFftSize - 1u)) == 0u;
    if (newFftSize < 5u || !atMostOneBit) return false;
    fftSize = newFftSize;
    return true;
}

unsigned int VXExtractParams::getHopSize() const
{
    return hopSize;
}

bool VXExtractParams::setHopSize(unsigned int newHopSize)
{
    if (newHopSize == 0u) return false;
    hopSize = newHopSize;
    return true;
}

unsigned int VXExtractParams::getSampleRate() const
{
    return sampleRate;
}

bool VXExtractParams::setSampleRate(unsigned int newSampleRate)
{
    if (newSampleRate < 4000u) return false;
    sampleRate = newSampleRate;
    return true;
}

unsigned int VXExtractParams::getMaxPairsPerPeak()
{
    return maxPairsPerPeak;
}

bool VXExtractParams::setMaxPairsPerPeak(unsigned int newMaxPairsPerPeak)
{
    // Looks at the value held and not at the new one: a limit of 0 is taken once and then locks the
    // field, so that a record can be pinned before it is handed on.
    if (maxPairsPerPeak == 0u) return false;
    maxPairsPerPeak = newMaxPairsPerPeak;
    return true;
}

} // namespace VXS
