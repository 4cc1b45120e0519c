#include <algorithm>
#include <cstdint>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Signals.h"
#include "VXFile.h"
#include "VXLandmarkExtract.h"
#include "Wave.h"

// Which samples each frame of a recording holds, and how many frames there are.

namespace
{

using signals::Samples;
using signals::SignalInput;
using VXS::VXExtractParams;
using VXS::VXLandmarkExtract;

VXExtractParams paramsOf(unsigned int fftSize, unsigned int hopSize, unsigned int initialFrames)
{
    VXExtractParams params;
    params.setFftSize(fftSize);
    params.setHopSize(hopSize);
    params.initialFrames = initialFrames;
    return params;
}

std::size_t frameCount(const VXExtractParams& params, std::size_t samples)
{
    VXLandmarkExtract extractor(params);
    SignalInput input(signals::silence(samples));
    extractor.setupFFT();
    extractor.findFreqPeaks(&input);
    return extractor.frames->size();
}

// The samples of frame f: it ends with sample (f + 1) * hop - 1, and what lies before the recording
// or was never read is zero.
Samples frameOf(const Samples& samples, std::size_t read, std::size_t f, std::size_t fftSize,
                std::size_t hopSize)
{
    Samples frame(fftSize, 0.0f);
    for (std::size_t k = 0; k < fftSize; ++k) {
        const std::size_t end = (f + 1) * hopSize + k;
        if (end < fftSize) continue;
        const std::size_t n = end - fftSize;
        if (n < samples.size() && n < read) frame[k] = samples[n];
    }
    return frame;
}

// Every peak has the level that its bin has in the frame told by its time, and the working spectrum
// ends as the levels of the last frame.
void expectFramesOf(const VXExtractParams& params, const Samples& samples)
{
    VXLandmarkExtract extractor(params);
    SignalInput input(samples);
    extractor.setupFFT();
    extractor.findFreqPeaks(&input);

    const std::size_t count = extractor.frames->size();
    ASSERT_NE(0u, count);
    const std::size_t hopSize = params.getHopSize();
    const std::size_t read = (count - 1) * hopSize;
    std::size_t peaks = 0;
    Samples levels;
    for (std::size_t f = 0; f < count; ++f) {
        levels = signals::levelsOf(frameOf(samples, read, f, params.getFftSize(), hopSize));
        for (const VXS::Peak* peak : *extractor.frames->at(f)) {
            EXPECT_EQ(static_cast<int>(f), peak->time);
            EXPECT_EQ(levels[static_cast<std::size_t>(peak->frequency)], peak->amplitude) << f;
            ++peaks;
        }
    }
    EXPECT_LT(20u, peaks) << "too few peaks to tell anything";
    EXPECT_EQ(levels, Samples(extractor.fftInput.data, extractor.fftInput.data + levels.size()));
}

// Gives each block other dimensions before it is filled, and tells whether it came as a hop.
void resizeHops(SignalInput& input, int dim0, int dim1, bool& sawBlockOfAHop)
{
    input.resizeBlocks(dim0, dim1);
    input.onRead = [&sawBlockOfAHop, resized = input.onRead](VXS::array<float>& block) {
        sawBlockOfAHop = sawBlockOfAHop && block.dim0 == 256 && block.dim1 == 1;
        return resized(block);
    };
}

std::vector<signals::LandmarkRow> landmarksFrom(VXS::VXInput& input)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    const std::unique_ptr<VXS::VXFile> file(extractor.run(&input, 1));
    return signals::landmarksOf(*file);
}

} // namespace

TEST(FrameWalk, NullSourceIsNothingToDo)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    extractor.setupFFT();

    extractor.findFreqPeaks(nullptr);

    EXPECT_TRUE(extractor.frames->empty());
}

// 480000 / 256 = 1875, and 1875 + 2 - 1 = 1876.
TEST(FrameWalk, AMinuteHas1876Frames)
{
    EXPECT_EQ(1876u, frameCount(VXExtractParams(), 480000));
}

TEST(FrameWalk, SamplesThatDoNotFillAHopAddNoFrame)
{
    EXPECT_EQ(1876u, frameCount(VXExtractParams(), 480255));
    EXPECT_EQ(1877u, frameCount(VXExtractParams(), 480256));
}

// 512 / 100 = 5.12 counts as 6: 1000 / 100 + 6 - 1 = 15.
TEST(FrameWalk, TransformThatIsNoMultipleOfTheHopCountsUp)
{
    EXPECT_EQ(15u, frameCount(paramsOf(512, 100, 0), 1000));
    EXPECT_EQ(15u, frameCount(paramsOf(512, 100, 0), 1099));
}

// 512 / 1000 counts as 1: 10 + 1 - 1 = 10.
TEST(FrameWalk, HopLongerThanTheTransformHasAFrameForEachHop)
{
    EXPECT_EQ(10u, frameCount(paramsOf(512, 1000, 0), 10999));
}

// 0 + 1 - 1 = 0 frames.
TEST(FrameWalk, RecordingShorterThanAnyFrameHasNone)
{
    EXPECT_EQ(0u, frameCount(paramsOf(512, 512, 0), 511));
}

TEST(FrameWalk, SourceWithoutSamplesStillHasTheFramesOfTheTransform)
{
    // 0 + 2 - 1.
    EXPECT_EQ(1u, frameCount(paramsOf(512, 256, 0), 0));
}

// 2303 samples make 8 + 2 - 1 = 9 frames, 2304 make 10.
TEST(FrameWalk, FewerFramesThanTheOpeningGiveNoFramesAndAsManyGiveAll)
{
    EXPECT_EQ(0u, frameCount(VXExtractParams(), 2303));
    EXPECT_EQ(10u, frameCount(VXExtractParams(), 2304));
}

TEST(FrameWalk, TooShortRecordingIsNotRead)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    SignalInput input(signals::silence(2303));
    input.keepsCalls = true;
    extractor.setupFFT();

    extractor.findFreqPeaks(&input);

    EXPECT_EQ((std::vector<std::string>{"getFrames"}), input.calls);
}

// At a hop of 1 and a transform of 8 there are 7 frames more than samples.
TEST(FrameWalk, FrameCountMayUseAll32BitsAndNotMore)
{
    const VXLandmarkExtract extractor(paramsOf(8, 1, 10));
    constexpr std::uint32_t most = std::numeric_limits<std::uint32_t>::max();

    EXPECT_EQ(most, extractor.countFrames(most - 7u));
    EXPECT_THROW(extractor.countFrames(most - 6u), std::length_error);
}

TEST(FrameWalk, FramesAtTheDefaultsHoldTheirSamples)
{
    expectFramesOf(VXExtractParams(), signals::noise(11, 8000));
}

TEST(FrameWalk, FramesHoldTheirSamplesWhereTheHopDoesNotDivideTheTransform)
{
    expectFramesOf(paramsOf(512, 300, 3), signals::noise(12, 9000));
}

// At a quarter of the transform the walk reads two blocks past the end.
TEST(FrameWalk, FramesHoldTheirSamplesAndZerosPastTheEnd)
{
    expectFramesOf(paramsOf(1024, 256, 3), signals::noise(13, 8100));
}

TEST(FrameWalk, FramesWithoutOverlapHoldTheirSamples)
{
    expectFramesOf(paramsOf(256, 256, 3), signals::noise(14, 8100));
}

TEST(FrameWalk, FramesOfALongerHopHoldTheNewestSamples)
{
    expectFramesOf(paramsOf(256, 700, 3), signals::noise(15, 30000));
}

TEST(FrameWalk, SmallestTransformHoldsItsSamples)
{
    expectFramesOf(paramsOf(8, 4, 3), signals::noise(16, 2000));
}

// Two frames: the first begins with 256 zeros, the second ends with 256 zeros.
TEST(FrameWalk, FirstFrameIsHalfZeros)
{
    VXExtractParams params;
    params.initialFrames = 0;
    VXLandmarkExtract extractor(params);
    const Samples tone = signals::tone(100, 1.0f, 256);
    SignalInput input(tone);
    extractor.setupFFT();

    extractor.findFreqPeaks(&input);

    ASSERT_EQ(2u, extractor.frames->size());
    const VXS::Peak* peak = extractor.frames->front()->front();
    EXPECT_EQ(100, peak->frequency);
    EXPECT_EQ(signals::levelsOf(signals::join({signals::silence(256), tone}))[100],
              peak->amplitude);
}

// 4000 / 256 = 15.6, so 16 frames, of which the last reads nothing: 15 * 256 = 3840 are read.
TEST(FrameWalk, WhatRemainsAfterTheLastReadReachesNoFrame)
{
    Samples changed = signals::noise(11, 4000);
    const Samples original = changed;
    std::fill(changed.begin() + 3840, changed.end(), 0.9f);

    const auto landmarks = signals::extractLandmarks(VXExtractParams(), original);

    EXPECT_FALSE(landmarks.empty());
    EXPECT_EQ(landmarks, signals::extractLandmarks(VXExtractParams(), changed));
}

TEST(FrameWalk, LastFrameIsTheOneBeforeItMovedOnWithZerosBehind)
{
    const Samples sound = signals::noise(11, 4000);
    VXLandmarkExtract extractor{VXExtractParams()};
    SignalInput input(sound);
    extractor.setupFFT();

    extractor.findFreqPeaks(&input);

    Samples last(sound.begin() + 3584, sound.begin() + 3840);
    last.resize(512);
    EXPECT_EQ(signals::levelsOf(last),
              Samples(extractor.fftInput.data, extractor.fftInput.data + 256));
}

TEST(FrameWalk, SourceThatClaimsMoreThanItDeliversEndsInSilence)
{
    Samples sound = signals::noise(11, 8192);
    SignalInput input(sound);
    input.claimedFrames = 16000;
    sound.resize(16000);

    EXPECT_EQ(signals::extractLandmarks(VXExtractParams(), sound), landmarksFrom(input));
}

TEST(FrameWalk, BlockIsZeroBeforeEachReadAndAnswersOfTheSourceAreIgnored)
{
    const Samples sound = signals::noise(11, 8000);
    SignalInput input(sound);
    bool sawZeros = true;
    input.onRead = [&input, &sawZeros](VXS::array<float>& block) {
        for (int i = 0; i < block.dim0; ++i)
            sawZeros = sawZeros && block.data[i] == 0.0f;
        return !input.deliver(block);
    };
    input.onRewind = [&input] { return !input.goBack(); };

    const auto landmarks = landmarksFrom(input);

    EXPECT_TRUE(sawZeros);
    EXPECT_EQ(signals::extractLandmarks(VXExtractParams(), sound), landmarks);
}

// The source delivers 100 samples a block; the other 156 are silence.
TEST(FrameWalk, SourceThatShrinksTheBlockIsHeardWithSilenceBehind)
{
    const Samples sound = signals::noise(11, 8192);
    SignalInput input(sound);
    bool sawBlockOfAHop = true;
    resizeHops(input, 100, 1, sawBlockOfAHop);
    Samples expected(8192, 0.0f);
    for (std::size_t n = 0; n < expected.size(); ++n) {
        if (n % 256 < 100) expected[n] = sound[n / 256 * 100 + n % 256];
    }

    const auto landmarks = landmarksFrom(input);

    EXPECT_FALSE(landmarks.empty());
    EXPECT_EQ(signals::extractLandmarks(VXExtractParams(), expected), landmarks);
    EXPECT_TRUE(sawBlockOfAHop);
}

// The source delivers 300 samples a block, of which 256 are taken.
TEST(FrameWalk, SourceThatGrowsTheBlockIsHeardAsFarAsItFits)
{
    const Samples sound = signals::noise(11, 8192);
    SignalInput input(sound);
    bool sawBlockOfAHop = true;
    resizeHops(input, 300, 1, sawBlockOfAHop);
    Samples expected(8192, 0.0f);
    for (std::size_t n = 0; n < expected.size(); ++n) {
        const std::size_t source = n / 256 * 300 + n % 256;
        if (source < sound.size()) expected[n] = sound[source];
    }

    const auto landmarks = landmarksFrom(input);

    EXPECT_FALSE(landmarks.empty());
    EXPECT_EQ(signals::extractLandmarks(VXExtractParams(), expected), landmarks);
    EXPECT_TRUE(sawBlockOfAHop);
}

TEST(FrameWalk, SourceThatEmptiesTheBlockIsSilence)
{
    SignalInput input(signals::noise(11, 8192));
    input.resizeBlocks(0);

    EXPECT_TRUE(landmarksFrom(input).empty());
}

TEST(FrameWalk, SourceThatGivesTheBlockTwoDimensionsIsHeardInItsOrder)
{
    const Samples sound = signals::noise(11, 8192);
    SignalInput input(sound);
    input.resizeBlocks(64, 4);

    const auto landmarks = landmarksFrom(input);

    EXPECT_FALSE(landmarks.empty());
    EXPECT_EQ(signals::extractLandmarks(VXExtractParams(), sound), landmarks);
}

// At 1024/256 the walk reads two blocks past the data chunk, which holds 5120 samples.
TEST(FrameWalk, BytesAfterTheDataChunkOfAFileAreHeard)
{
    const wave::TempFolder folder;
    const std::vector<int> samples = signals::as16Bit(signals::noise(17, 5120 + 1000));
    const std::string path = folder.write(
        "take.wav", wave::fileClaiming(wave::Format(), 2 * 5120, wave::samples16(samples)));
    const VXExtractParams params = paramsOf(1024, 256, 3);
    VXLandmarkExtract fromFile(params);
    VXLandmarkExtract fromMemory(params);
    Samples values = signals::asRead(samples);
    SignalInput input(values, 5120);

    const std::unique_ptr<VXS::VXFile> file(fromFile.run(path, 1));
    const std::unique_ptr<VXS::VXFile> memory(fromMemory.run(&input, 1));

    // The last frame ends with the block that is never read; before it lie two blocks, that is 512
    // samples, from behind the data chunk.
    Samples last(values.begin() + 4864, values.begin() + 5632);
    last.resize(1024);
    EXPECT_EQ(signals::levelsOf(last),
              Samples(fromFile.fftInput.data, fromFile.fftInput.data + 512));
    EXPECT_EQ(signals::landmarksOf(*memory), signals::landmarksOf(*file));
}

// The file ends 100 samples into a block: one stale sample follows, and then silence.
TEST(FrameWalk, EndOfAFileWithinABlockRepeatsItsLastSampleOnce)
{
    const wave::TempFolder folder;
    const std::vector<int> samples = signals::as16Bit(signals::noise(17, 5220));
    const std::string path = folder.write("take.wav", wave::file16(samples));
    VXLandmarkExtract extractor(paramsOf(1024, 256, 3));

    const std::unique_ptr<VXS::VXFile> file(extractor.run(path, 1));

    Samples values = signals::asRead(samples);
    values.push_back(values.back());
    // 5220 / 256 = 20.4: 20 + 4 - 1 = 23 frames, and the last one begins at 23 * 256 - 1024.
    Samples last(values.begin() + 4864, values.end());
    last.resize(1024);
    EXPECT_EQ(signals::levelsOf(last),
              Samples(extractor.fftInput.data, extractor.fftInput.data + 512));
}
