#include <cstddef>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "Signals.h"
#include "VXLandmarkExtract.h"

// Frames so loud that the power of a bin is infinite in single precision: from a magnitude of 2^64
// on, which a tone of amplitude 2^56 has. Frames of 512 samples that do not overlap, no opening.

namespace
{

using signals::Samples;
using signals::tone;
using VXS::VXExtractParams;
using VXS::VXLandmarkExtract;

using Bins = std::vector<int>;

constexpr float beyondAll = 144115188075855872.0f; // 2^57

// The bins of each frame's peaks. The last frame of a recording reads nothing and is left out.
std::vector<Bins> binsOf(VXExtractParams params, const std::vector<Samples>& frames)
{
    params.setHopSize(512);
    params.initialFrames = 0;
    // Every finite level is infinitely far below an infinite one.
    params.peakFloor = -std::numeric_limits<float>::infinity();
    Samples samples = signals::join(frames);
    samples.resize(samples.size() + 512);
    signals::SignalInput input(samples);
    VXLandmarkExtract extractor(params);
    extractor.setupFFT();
    extractor.findFreqPeaks(&input);
    std::vector<Bins> bins;
    for (std::size_t frame = 0; frame < frames.size(); ++frame)
        bins.push_back(signals::binsOf(extractor, frame));
    return bins;
}

} // namespace

// Of two infinite neighbours none is louder, so neither is a peak nor masks anything. Bin 100 is
// 0.1 dB quieter than in the frame before, where its mask sank by 0.2 dB: it is just above. Its
// power is 1.44 * 2^108.
TEST(InfinitePeaks, PeakJustAboveItsThresholdIsFoundBesideInfiniteBins)
{
    constexpr float level = 1.2f * 70368744177664.0f; // 1.2 * 2^54 / 256
    constexpr float louderByTenthOfADb = 1.0115794543f;
    const Samples first = tone(100, level * louderByTenthOfADb, 512);
    const Samples second = signals::mix(
        tone(100, level, 512), signals::mix(tone(200, beyondAll, 512), tone(201, beyondAll, 512)));

    const std::vector<Bins> bins = binsOf(VXExtractParams(), {first, second});

    EXPECT_EQ((std::vector<Bins>{{100}, {100}}), bins);
}

// A narrow mask leaves a steep threshold: 380 dB at bin 200, some 345 dB beside it. An infinite bin
// 200 exceeds it by more than bin 199 with its 370 dB does.
TEST(InfinitePeaks, InfiniteBinIsAPeakHoweverSteepTheThresholdIs)
{
    VXExtractParams params;
    params.maskWidth = 0.5f;
    const Samples first = tone(200, 1e19f / 256.0f, 512);
    const Samples second =
        signals::mix(tone(200, beyondAll, 512), tone(199, 3.1622777e18f / 256.0f, 512));

    const std::vector<Bins> bins = binsOf(params, {first, second});

    EXPECT_EQ((std::vector<Bins>{{200}, {200}}), bins);
}
