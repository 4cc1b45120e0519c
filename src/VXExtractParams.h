#ifndef VXS_VXEXTRACTPARAMS_H
#define VXS_VXEXTRACTPARAMS_H

#include <cstdint>

#include "VXExport.h"

namespace VXS
{

// Every number that governs how a recording is turned into landmarks. A plain value: build one,
// change what you want through the setters, and hand it to a VXLandmarkExtract, which takes a copy.
// Later changes do not reach that copy. A setter answers true if it took the value; a refused value
// leaves the record as it was, and no setter compares its value with another field.
//
// One frame is one transform of getFftSize() samples; frames start getHopSize() samples apart. At
// the defaults (8000 Hz, 512, 256) a frame starts every 32 ms.
class VXExtractParams
{
public:
    VXS_API VXExtractParams();

    // Samples in one transform, 512 unless changed.
    VXS_API unsigned int getFftSize() const;
    // Takes a power of two from 8 upward. Keys hold bins in 10 bits, so that above 2048 the bin
    // numbers wrap.
    VXS_API bool setFftSize(unsigned int newFftSize);

    // Samples from the start of one frame to the start of the next, 256 unless changed.
    VXS_API unsigned int getHopSize() const;
    // Refuses 0. Of a hop larger than the transform only the newest samples are looked at.
    VXS_API bool setHopSize(unsigned int newHopSize);

    // Sample rate in Hz that a recording must have; 8000 unless changed. Nothing is resampled.
    VXS_API unsigned int getSampleRate() const;
    // Refuses a rate below 4000 Hz.
    VXS_API bool setSampleRate(unsigned int newSampleRate);

    // Limit on the landmarks formed from one peak, 10 unless changed. The limit is tested after a
    // landmark is formed, so that a peak forms up to one more than this.
    VXS_API unsigned int getMaxPairsPerPeak();
    // Takes any value, 0 included, as long as the value held now is not 0: a limit of 0 is final.
    VXS_API bool setMaxPairsPerPeak(unsigned int newMaxPairsPerPeak);

private:
    friend class VXLandmarkExtract;

    // Bins on either side of an anchor. It keeps no pair apart, since what is compared with it is
    // the anchor's own bin; a test of the neighbour's would give other keys.
    std::uint32_t frequencyRange;
    std::uint32_t timeRange;
    std::uint32_t initialFrames;
    std::uint32_t maxPeaksPerFrame;
    float maskHeight;
    float peakFloor;
    float thresholdDecay;
    float maskWidth;
    std::uint32_t fftSize;
    std::uint32_t hopSize;
    std::uint32_t sampleRate;
    std::uint32_t maxPairsPerPeak;
};

} // namespace VXS

#endif
