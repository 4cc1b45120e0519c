#include <algorithm>
#include <iterator>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Signals.h"
#include "VXLandmarkExtract.h"

namespace
{

using signals::Samples;
using signals::SignalInput;
using VXS::VXExtractParams;
using VXS::VXLandmarkExtract;

constexpr int bins = 256;

// Runs the operation over a source and keeps the levels that it gives.
class InitialThreshold : public testing::Test
{
protected:
    Samples compute(SignalInput& input)
    {
        VXLandmarkExtract extractor(params);
        return compute(extractor, input);
    }

    static Samples compute(VXLandmarkExtract& extractor, VXS::VXInput& input)
    {
        extractor.setupFFT();
        VXS::array<float> threshold(bins);
        std::fill_n(threshold.data, bins, 0.0f);
        extractor.computeInitialThreshold(threshold, &input);
        return Samples(threshold.data, threshold.data + bins);
    }

    // A frame for each hop and no overlap, so that each frame has a known spectrum.
    void useWholeFrames(unsigned int initialFrames)
    {
        params.setHopSize(512);
        params.initialFrames = initialFrames;
    }

    float dB(float magnitude) { return VXLandmarkExtract(params).dB(magnitude); }

    VXExtractParams params;
};

Samples maximum(const Samples& left, const Samples& right)
{
    Samples result(left);
    for (std::size_t k = 0; k < result.size(); ++k)
        result[k] = std::max(left[k], right[k]);
    return result;
}

} // namespace

TEST_F(InitialThreshold, NoOpeningFramesReadNothingAndGiveTheLevelOfSilence)
{
    useWholeFrames(0);
    SignalInput input(signals::noise(1, 4000));
    input.keepsCalls = true;

    const Samples threshold = compute(input);

    EXPECT_EQ(Samples(bins, dB(0.0f)), threshold);
    EXPECT_TRUE(input.calls.empty());
}

TEST_F(InitialThreshold, SilenceGivesTheLevelOfSilence)
{
    SignalInput input(signals::silence(4000));

    const Samples threshold = compute(input);

    EXPECT_EQ(Samples(bins, dB(0.0f)), threshold);
    EXPECT_NEAR(-313.07f, threshold[17], 0.01f);
}

// The comb gives 64 times its height in bins 0, 64, 128 and 192 and nothing elsewhere.
TEST_F(InitialThreshold, LoudestFrameOfABinCountsWhateverCameAfter)
{
    useWholeFrames(5);
    SignalInput input(signals::join({signals::comb(8, 1.0f, 512), signals::comb(8, 2.0f, 512),
                                     signals::comb(8, 8.0f, 512), signals::comb(8, 4.0f, 512),
                                     signals::comb(8, 0.5f, 512)}));

    const Samples threshold = compute(input);

    EXPECT_EQ(dB(512.0f), threshold[64]);
    EXPECT_EQ(dB(512.0f), threshold[192]);
    EXPECT_EQ(dB(0.0f), threshold[65]);
}

// A period of 4 gives 128 times the height in bins 0 and 128.
TEST_F(InitialThreshold, EachBinHasItsOwnLoudestFrame)
{
    useWholeFrames(2);
    SignalInput input(signals::join({signals::comb(8, 4.0f, 512), signals::comb(4, 1.0f, 512)}));

    const Samples threshold = compute(input);

    EXPECT_EQ(dB(256.0f), threshold[64]);
    EXPECT_EQ(dB(256.0f), threshold[128]);
    EXPECT_EQ(dB(256.0f), threshold[192]);
}

TEST_F(InitialThreshold, FramesAfterTheOpeningDoNotCount)
{
    useWholeFrames(1);
    SignalInput input(signals::join({signals::comb(8, 1.0f, 512), signals::comb(8, 4.0f, 512)}));

    EXPECT_EQ(dB(64.0f), compute(input)[64]);
}

TEST_F(InitialThreshold, StartsFromWhatTheThresholdHolds)
{
    useWholeFrames(1);
    VXLandmarkExtract extractor(params);
    extractor.setupFFT();
    SignalInput input(signals::comb(8, 1.0f, 512));
    VXS::array<float> threshold(bins);
    std::fill_n(threshold.data, bins, 0.0f);
    threshold.data[64] = 1000.0f;
    threshold.data[128] = 63.0f;

    extractor.computeInitialThreshold(threshold, &input);

    EXPECT_EQ(dB(1000.0f), threshold.data[64]);
    EXPECT_EQ(dB(64.0f), threshold.data[128]);
}

TEST_F(InitialThreshold, ReadsOneBlockAFrameAndDoesNotRewind)
{
    SignalInput input(signals::noise(1, 4000));
    input.keepsCalls = true;

    compute(input);

    EXPECT_EQ(std::vector<std::string>(10, "read_mono"), input.calls);
    EXPECT_EQ(2560u, input.position);
}

TEST_F(InitialThreshold, ReadsFromWhereTheSourceStands)
{
    useWholeFrames(1);
    SignalInput input(signals::join({signals::comb(8, 4.0f, 512), signals::comb(8, 1.0f, 512)}));
    input.position = 512;

    EXPECT_EQ(dB(64.0f), compute(input)[64]);
}

TEST_F(InitialThreshold, LeavesTheWorkingSpectrumZeroAndTheLastTransformInTheOutput)
{
    useWholeFrames(2);
    VXLandmarkExtract extractor(params);
    SignalInput input(signals::join({signals::comb(8, 4.0f, 512), signals::comb(8, 2.0f, 512)}));

    compute(extractor, input);

    EXPECT_EQ(Samples(516, 0.0f), Samples(extractor.fftInput.data, extractor.fftInput.data + 516));
    EXPECT_EQ(128.0f, extractor.fftOutput.data[2 * 64]);
    EXPECT_EQ(0.0f, extractor.fftOutput.data[2 * 65]);
}

TEST_F(InitialThreshold, FirstFrameIsHalfZeros)
{
    params.initialFrames = 1;
    const Samples sound = signals::noise(5, 256);
    SignalInput input(sound);

    EXPECT_EQ(signals::levelsOf(signals::join({signals::silence(256), sound})), compute(input));
}

// Taking the level keeps the order of magnitudes, so the greatest level is that of the greatest
// magnitude.
TEST_F(InitialThreshold, SecondFrameBeginsWithTheFirstSample)
{
    params.initialFrames = 2;
    const Samples sound = signals::noise(5, 512);
    SignalInput input(sound);
    const Samples first(sound.begin(), sound.begin() + 256);

    EXPECT_EQ(maximum(signals::levelsOf(signals::join({signals::silence(256), first})),
                      signals::levelsOf(sound)),
              compute(input));
}

TEST_F(InitialThreshold, WhatTheRecordingLacksIsSilence)
{
    useWholeFrames(2);
    Samples sound = signals::noise(5, 700);
    SignalInput input(sound);
    sound.resize(1024);
    const Samples first(sound.begin(), sound.begin() + 512);
    const Samples second(sound.begin() + 512, sound.end());

    EXPECT_EQ(maximum(signals::levelsOf(first), signals::levelsOf(second)), compute(input));
}

TEST_F(InitialThreshold, BlockIsZeroBeforeEachReadAndTheResultOfTheReadIsIgnored)
{
    VXLandmarkExtract extractor(params);
    SignalInput input(signals::silence(0));
    bool sawZeros = true;
    // Writes only the first half of every block.
    input.onRead = [&sawZeros](VXS::array<float>& block) {
        sawZeros = sawZeros && std::all_of(block.data, block.data + block.dim0,
                                           [](float sample) { return sample == 0.0f; });
        std::fill_n(block.data, block.dim0 / 2, 1.0f);
        return false;
    };
    input.onRewind = [] { return false; };

    compute(extractor, input);

    EXPECT_EQ(10, input.reads);
    EXPECT_TRUE(sawZeros);
}

// Each frame ends with the last sample of its hop of 700: samples 188 to 699, then 888 to 1399.
TEST_F(InitialThreshold, HopLongerThanTheTransformLooksAtTheNewestSamples)
{
    params.setHopSize(700);
    params.initialFrames = 2;
    const Samples sound = signals::noise(5, 1400);
    SignalInput input(sound);
    const Samples first(sound.begin() + 188, sound.begin() + 700);
    const Samples second(sound.begin() + 888, sound.end());

    EXPECT_EQ(maximum(signals::levelsOf(first), signals::levelsOf(second)), compute(input));
}

TEST_F(InitialThreshold, ConvertsTheProductOfTheDimensions)
{
    useWholeFrames(1);
    VXLandmarkExtract extractor(params);
    extractor.setupFFT();
    SignalInput input(signals::comb(8, 1.0f, 512));
    VXS::array<float> threshold(16, 4, 4);
    std::fill_n(threshold.data, bins, 0.0f);

    extractor.computeInitialThreshold(threshold, &input);

    EXPECT_EQ(dB(64.0f), threshold.data[192]);
    EXPECT_EQ(dB(0.0f), threshold.data[255]);
}

// 2304 samples make 9 + 2 - 1 = 10 frames. The opening reads ten blocks, of which the last gets
// nothing; the main pass reads nine.
TEST_F(InitialThreshold, RecordingOfJustEnoughFramesIsReadOneBlockFurtherThanByTheMainPass)
{
    VXLandmarkExtract extractor(params);
    SignalInput input(signals::noise(5, 2304));
    input.keepsCalls = true;

    extractor.setupFFT();
    extractor.findFreqPeaks(&input);

    EXPECT_EQ(10, std::distance(std::find(input.calls.begin(), input.calls.end(), "read_mono"),
                                std::find(input.calls.begin(), input.calls.end(), "rewind")));
    EXPECT_EQ("read_mono", input.calls.back());
    // getFrames, ten reads, rewind, nine reads.
    EXPECT_EQ(21u, input.calls.size());
}
