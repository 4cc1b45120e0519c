#ifndef PLAIN_EXTRACTOR_H
#define PLAIN_EXTRACTOR_H

#include <cstdint>
#include <memory>
#include <vector>

#include "plain/Recording.h"
#include "plain/Source.h"

namespace vxaccelerate
{
struct FFTState_Float;
}

namespace plain
{

struct Parameters {
    std::uint32_t frequencyRange = 62;
    std::uint32_t timeRange = 126;
    std::uint32_t initialFrames = 10;
    std::uint32_t maxPeaksPerFrame = 5;
    float maskHeight = 40.0f;
    float peakFloor = -60.0f;
    float thresholdDecay = 0.2f;
    float maskWidth = 25.0f;
    std::uint32_t fftSize = 512;
    std::uint32_t hopSize = 256;
    std::uint32_t sampleRate = 8000;
    std::uint32_t maxPairsPerPeak = 10;
};

struct Peak {
    std::int32_t frequency;
    float amplitude;
    std::int32_t time;
};

// From samples to landmarks, with every step in the shape in which it is told: each candidate peak
// an object, each list sorted, each removal closing its gap, each mask a pass over all bins. The
// stages stand in the order of their calls.
class Extractor
{
public:
    explicit Extractor(const Parameters& newParameters);
    ~Extractor();
    Extractor(const Extractor&) = delete;
    Extractor& operator=(const Extractor&) = delete;

    // All stages. The source stands at its first sample.
    void run(Source& source, Recording& recording);

    // The threshold that the opening frames give, one level for each bin, not yet spread.
    std::vector<float> initialThreshold(Source& source);
    void findPeaks(Source& source);
    void prune();
    void pair(Recording& recording) const;

    // The partners of an anchor, which may also be a peak that is in no list.
    std::vector<const Peak*> neighboursOf(const Peak& anchor) const;
    void smooth(std::vector<float>& envelope) const;
    static float dB(float magnitude);

    // The peaks that are left after the latest stage, by frame.
    std::vector<std::vector<Peak>> peaks() const;
    const std::vector<float>& mask() const { return maskShape; }
    // The levels of the last frame, where findPeaks came as far as that.
    const std::vector<float>& lastLevels() const { return levels; }

private:
    using List = std::vector<std::unique_ptr<Peak>>;

    void slide(std::vector<float>& frame, const std::vector<float>& block) const;
    void transform(const std::vector<float>& frame);
    float magnitude(std::size_t bin) const;
    void raise(std::vector<float>& threshold, std::int32_t center, float amplitude) const;
    List candidates(const std::vector<float>& excess, std::int32_t time) const;
    static void sort(List& list);

    Parameters parameters;
    std::size_t bins;
    vxaccelerate::FFTState_Float* state = nullptr;
    std::vector<unsigned char> workBuffer;
    std::vector<float> input;
    std::vector<float> output;
    std::vector<float> levels;
    std::vector<float> maskShape;
    std::vector<List> frames;
};

} // namespace plain

#endif
