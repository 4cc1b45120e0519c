#ifndef VXL_SYNC_TRACK_H
#define VXL_SYNC_TRACK_H

#include <cstddef>
#include <cstdint>
#include <memory>

#include "model/Recording.h"
#include "read/Resampler.h"

namespace vxlsync
{

// The rate at which a source is kept for the last refinement, analysisRate if it has nothing above.
int fineRateOf(int sampleRate);

// Fills `store` with one sound that comes in stretches of different rates. Where a stretch begins
// and ends is reckoned from the start of the whole, so that the rounding of many does not add up.
template <typename Stored>
class Lane
{
public:
    Lane(SampleStore<Stored>& newStore, int newRate) : store(newStore), rate(newRate) {}

    // A stretch at `sourceRate` begins. Requires that none is open.
    void open(int sourceRate);
    void append(const float* samples, std::size_t count);
    // Ends the stretch, `seconds` after the start of the whole.
    void close(double seconds);
    // Requires that nothing was appended since a stretch was opened or closed.
    void skip(std::size_t seconds);

private:
    SampleStore<Stored>& store;
    int rate;
    std::unique_ptr<Resampler> resampler;
};

// Puts the sound of one source into a recording at the rates that the recording keeps. Silence
// costs neither time nor memory, whether it is a gap or is made of samples.
class Track
{
public:
    // `newRecording` is borrowed, has no samples and is filled up to finish().
    explicit Track(Recording& newRecording) : recording(newRecording) {}

    // The rate of what follows, from leastSampleRate to greatestSampleRate. The first one decides
    // what is kept for the refinement. Requires another rate than before.
    void setRate(int newRate);
    // Requires a rate.
    void append(const float* samples, std::size_t count);
    void appendSilence(std::int64_t count) { silence += count; }
    // Nothing may follow.
    void finish();

private:
    void feed(const float* samples, std::size_t count);
    void feedSilence(std::int64_t count);
    void bridgeSilence();
    void closeStretch();

    Recording& recording;
    int rate = 0;
    std::unique_ptr<Lane<float>> coarse;
    std::unique_ptr<Lane<std::uint16_t>> fine;
    // Seconds up to the present stretch, and samples fed in it.
    double stretchStart = 0.0;
    std::int64_t stretchSamples = 0;
    // Samples of silence not yet fed.
    std::int64_t silence = 0;
};

} // namespace vxlsync

#endif
