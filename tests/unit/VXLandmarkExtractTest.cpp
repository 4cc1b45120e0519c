#include "VXLandmarkExtract.h"

#include <algorithm>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Console.h"
#include "Signals.h"
#include "VXFile.h"
#include "VXLandmark.h"
#include "vxaccelerate/transform.h"

namespace
{

using signals::SignalInput;
using VXS::Peak;
using VXS::VXExtractParams;
using VXS::VXFile;
using VXS::VXLandmarkExtract;

using FileHolder = std::unique_ptr<VXFile>;

// Two seconds with peaks in plenty.
signals::Samples someSound()
{
    return signals::noise(7, 16000);
}

// What a source throws in `operation` passes through, and the next recording comes out as from a
// new extractor.
void expectUsableAfterThrow(const std::string& operation, int turn)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    SignalInput broken(signals::noise(3, 16000));
    broken.throwIn(operation, turn);
    SignalInput input(someSound());

    EXPECT_THROW(FileHolder(extractor.run(&broken, 1)), std::domain_error);
    const FileHolder file(extractor.run(&input, 2));

    EXPECT_FALSE(signals::landmarksOf(*file).empty());
    EXPECT_EQ(signals::extractLandmarks(VXExtractParams(), someSound()),
              signals::landmarksOf(*file));
}

} // namespace

TEST(VXLandmarkExtract, ConstructionLeavesEverythingEmpty)
{
    const VXLandmarkExtract extractor{VXExtractParams()};

    EXPECT_FALSE(extractor.fftReady);
    ASSERT_NE(nullptr, extractor.frames);
    EXPECT_TRUE(extractor.frames->empty());
    EXPECT_TRUE(extractor.maskShape.empty());
    EXPECT_TRUE(extractor.spentPeaks.empty());
    EXPECT_EQ(nullptr, extractor.fftBuffer.data);
    EXPECT_EQ(nullptr, extractor.fftInput.data);
    EXPECT_EQ(nullptr, extractor.fftOutput.data);
}

TEST(VXLandmarkExtract, KeepsACopyOfTheParameters)
{
    VXExtractParams params;
    params.setHopSize(128);

    const VXLandmarkExtract extractor(params);
    params.setHopSize(64);

    EXPECT_EQ(128u, extractor.params.getHopSize());
}

// The sanitizers see whether they are freed.
TEST(VXLandmarkExtract, DestructionFreesSpentPeaksAndFrames)
{
    VXLandmarkExtract extractor{VXExtractParams()};

    extractor.spentPeaks.push_back(new Peak{1, 0.0f, 0});
    extractor.spentPeaks.push_back(nullptr);
    signals::setPeaks(extractor, {{{1, 0.0f, 0}}, {}});
    extractor.frames->back()->push_back(nullptr);

    SUCCEED();
}

TEST(VXLandmarkExtract, SetupSizesTheBuffersForFourFloatsMore)
{
    VXLandmarkExtract extractor{VXExtractParams()};

    extractor.setupFFT();

    EXPECT_TRUE(extractor.fftReady);
    // (512 + 4) & ~1.
    EXPECT_EQ(516, extractor.fftInput.dim0);
    EXPECT_EQ(1, extractor.fftInput.dim1);
    EXPECT_EQ(1, extractor.fftInput.dim2);
    EXPECT_EQ(516, extractor.fftOutput.dim0);
    EXPECT_EQ(1, extractor.fftOutput.dim1);
    EXPECT_EQ(1, extractor.fftOutput.dim2);
}

TEST(VXLandmarkExtract, SetupTakesTheSmallestTransform)
{
    VXExtractParams params;
    params.setFftSize(8);
    VXLandmarkExtract extractor(params);

    extractor.setupFFT();

    EXPECT_EQ(12, extractor.fftInput.dim0);
}

TEST(VXLandmarkExtract, SetupSizesTheWorkBufferAsTheTransformAsks)
{
    VXLandmarkExtract extractor{VXExtractParams()};

    extractor.setupFFT();

    unsigned int bytes = 0;
    vxaccelerate::transform::FFTGetBufSize(extractor.fftState, &bytes);
    EXPECT_EQ(static_cast<int>(bytes), extractor.fftBuffer.dim0);
}

// A pulse at the first sample has magnitude 1 in every bin.
TEST(VXLandmarkExtract, SetupTwiceLeavesAWorkingTransform)
{
    VXLandmarkExtract extractor{VXExtractParams()};

    extractor.setupFFT();
    extractor.setupFFT();
    std::vector<float> pulse(516, 0.0f);
    pulse[0] = 1.0f;
    vxaccelerate::transform::FFTFwd(pulse.data(), extractor.fftOutput.data, extractor.fftState,
                                    extractor.fftBuffer.data);

    EXPECT_FLOAT_EQ(1.0f, extractor.fftOutput.data[2 * 37]);
    EXPECT_FLOAT_EQ(0.0f, extractor.fftOutput.data[2 * 37 + 1]);
}

TEST(VXLandmarkExtract, ComparatorIsTrueForTheLouderPeakFirst)
{
    Peak louder{5, -10.0f, 0};
    Peak quieter{3, -10.5f, 0};

    EXPECT_TRUE(VXLandmarkExtract::sortByAmplitudeComparitor(&louder, &quieter));
    EXPECT_FALSE(VXLandmarkExtract::sortByAmplitudeComparitor(&quieter, &louder));
}

TEST(VXLandmarkExtract, ComparatorIsFalseForEqualAmplitudes)
{
    Peak left{5, -10.0f, 0};
    Peak right{3, -10.0f, 1};

    EXPECT_FALSE(VXLandmarkExtract::sortByAmplitudeComparitor(&left, &right));
    EXPECT_FALSE(VXLandmarkExtract::sortByAmplitudeComparitor(&right, &left));
}

TEST(VXLandmarkExtract, RunWithoutInputGivesAnEmptyFileWithTheId)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    constexpr std::int64_t wideID = std::int64_t{1} << 40;

    const FileHolder file(extractor.run(static_cast<VXS::VXInput*>(nullptr), wideID));

    ASSERT_NE(nullptr, file);
    EXPECT_EQ(wideID, file->getFileID());
    EXPECT_TRUE(signals::landmarksOf(*file).empty());
}

TEST(VXLandmarkExtract, RunWithoutInputDropsThePeaksOfTheRunBefore)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    SignalInput input(someSound());
    const FileHolder first(extractor.run(&input, 1));

    const FileHolder second(extractor.run(static_cast<VXS::VXInput*>(nullptr), 2));

    EXPECT_FALSE(signals::landmarksOf(*first).empty());
    EXPECT_TRUE(signals::landmarksOf(*second).empty());
    EXPECT_TRUE(extractor.frames->empty());
}

TEST(VXLandmarkExtract, RunGivesTheFileItsIdAndTheLandmarksTheFile)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    SignalInput input(someSound());

    const FileHolder file(extractor.run(&input, -12));

    EXPECT_EQ(-12, file->getFileID());
    ASSERT_FALSE(file->getLandmarkMap().empty());
    EXPECT_EQ(-12, file->getLandmarkMap().begin()->second.front()->getFileID());
}

TEST(VXLandmarkExtract, SecondRunHoldsNothingOfTheFirst)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    SignalInput first(signals::noise(3, 24000));
    SignalInput second(someSound());

    const FileHolder firstFile(extractor.run(&first, 1));
    const FileHolder secondFile(extractor.run(&second, 2));

    EXPECT_FALSE(signals::landmarksOf(*secondFile).empty());
    EXPECT_EQ(signals::extractLandmarks(VXExtractParams(), someSound()),
              signals::landmarksOf(*secondFile));
}

TEST(VXLandmarkExtract, RecordingThatIsTooShortAfterALongOneGivesAnEmptyFile)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    SignalInput first(someSound());
    SignalInput second(signals::noise(7, 1000));

    const FileHolder firstFile(extractor.run(&first, 1));
    const FileHolder secondFile(extractor.run(&second, 2));

    EXPECT_TRUE(signals::landmarksOf(*secondFile).empty());
    EXPECT_TRUE(extractor.frames->empty());
}

TEST(VXLandmarkExtract, PeaksOfTheLatestRunStayUntilTheNext)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    SignalInput input(someSound());

    const FileHolder file(extractor.run(&input, 1));

    // 16000 / 256 = 62.5, so 62 + 2 - 1 frames.
    EXPECT_EQ(63u, extractor.frames->size());
}

TEST(VXLandmarkExtract, ThrowingGetFramesLeavesTheExtractorUsable)
{
    expectUsableAfterThrow("getFrames", 1);
}

TEST(VXLandmarkExtract, ThrowingRewindLeavesTheExtractorUsable)
{
    expectUsableAfterThrow("rewind", 1);
}

TEST(VXLandmarkExtract, ThrowingReadInTheOpeningLeavesTheExtractorUsable)
{
    expectUsableAfterThrow("read_mono", 4);
}

// The opening takes 10 reads, so the 40th is that of frame 29.
TEST(VXLandmarkExtract, ThrowingReadInTheMainPassLeavesTheExtractorUsable)
{
    expectUsableAfterThrow("read_mono", 40);
}

TEST(VXLandmarkExtract, PeaksBeforeAThrowCanBePrinted)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    SignalInput broken(someSound());
    broken.throwIn("read_mono", 40);
    EXPECT_THROW(FileHolder(extractor.run(&broken, 1)), std::domain_error);

    const Console console;
    extractor.printPeaks();

    // Frames 0 to 28 are complete.
    EXPECT_EQ(29u, extractor.frames->size());
    EXPECT_FALSE(console.text().empty());
}

// 2^32 - 1 samples at a hop of 1 make 2^32 - 1 + 512 - 1 frames.
TEST(VXLandmarkExtract, MoreFramesThan32BitsHoldThrowLengthError)
{
    VXExtractParams params;
    params.setHopSize(1);
    VXLandmarkExtract extractor(params);
    SignalInput input(signals::silence(100), std::numeric_limits<unsigned int>::max());

    EXPECT_THROW(FileHolder(extractor.run(&input, 1)), std::length_error);

    EXPECT_TRUE(extractor.frames->empty());
}

TEST(VXLandmarkExtract, ExtractorIsUsableAfterALengthError)
{
    VXExtractParams params;
    params.setHopSize(1);
    VXLandmarkExtract extractor(params);
    SignalInput huge(signals::silence(100), std::numeric_limits<unsigned int>::max());
    SignalInput input(signals::noise(7, 600));

    EXPECT_THROW(FileHolder(extractor.run(&huge, 1)), std::length_error);
    const FileHolder file(extractor.run(&input, 2));

    EXPECT_EQ(signals::extractLandmarks(params, signals::noise(7, 600)),
              signals::landmarksOf(*file));
}

// 2^31 + 4 floats are more than a count in signed 32 bits.
TEST(VXLandmarkExtract, TransformThatDoesNotFitGivesTheErrorOfTheArray)
{
    VXExtractParams params;
    ASSERT_TRUE(params.setFftSize(1u << 31u));
    VXLandmarkExtract extractor(params);
    SignalInput input(someSound());

    try {
        const FileHolder file(extractor.run(&input, 1));
        FAIL() << "no exception";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ("array::resize(): Error allocating memory", error.what());
    }
}

TEST(VXLandmarkExtract, ExtractorWhoseTransformDoesNotFitStaysHarmless)
{
    VXExtractParams params;
    ASSERT_TRUE(params.setFftSize(1u << 31u));
    VXLandmarkExtract extractor(params);
    SignalInput input(someSound());
    EXPECT_THROW(FileHolder(extractor.run(&input, 1)), std::runtime_error);
    VXFile file(1);

    extractor.findFreqPeaks(&input);
    extractor.prune();
    extractor.combine(&file);

    EXPECT_TRUE(extractor.frames->empty());
    EXPECT_TRUE(signals::landmarksOf(file).empty());
    EXPECT_THROW(FileHolder(extractor.run(&input, 2)), std::runtime_error);
}

TEST(VXLandmarkExtract, StagesBeforeRunAreHarmless)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    SignalInput input(someSound());
    VXS::array<float> threshold(256);
    std::fill_n(threshold.data, 256, 0.0f);
    VXFile file(1);
    Peak anchor{5, 0.0f, 0};
    std::vector<Peak*> neighbours;
    const Console console;

    extractor.computeInitialThreshold(threshold, &input);
    extractor.findFreqPeaks(&input);
    extractor.prune();
    extractor.combine(&file);
    extractor.combine(nullptr);
    extractor.findNeighborPeaks(&anchor, neighbours);
    extractor.printPeaks();

    EXPECT_TRUE(extractor.frames->empty());
    EXPECT_TRUE(signals::landmarksOf(file).empty());
    EXPECT_TRUE(neighbours.empty());
    EXPECT_EQ("", console.text());
}

TEST(VXLandmarkExtract, StagesWithoutTheirArgumentAreHarmless)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    extractor.setupFFT();
    VXS::array<float> threshold(256);
    std::fill_n(threshold.data, 256, 0.0f);
    std::vector<Peak*> neighbours;
    signals::setPeaks(extractor, {{{1, 0.0f, 0}, {2, -1.0f, 0}}});

    extractor.computeInitialThreshold(threshold, nullptr);
    extractor.combine(nullptr);
    extractor.findNeighborPeaks(nullptr, neighbours);

    EXPECT_TRUE(neighbours.empty());
}

TEST(VXLandmarkExtract, StagesWithoutFramesAreHarmless)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    delete extractor.frames;
    extractor.frames = nullptr;
    VXFile file(1);
    Peak anchor{5, 0.0f, 0};
    std::vector<Peak*> neighbours;
    const Console console;

    extractor.setupFFT();
    extractor.prune();
    extractor.combine(&file);
    extractor.findNeighborPeaks(&anchor, neighbours);
    extractor.printPeaks();

    EXPECT_TRUE(signals::landmarksOf(file).empty());
    EXPECT_TRUE(neighbours.empty());
    EXPECT_EQ("", console.text());
}

TEST(VXLandmarkExtract, CallsTheSourceInOrder)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    SignalInput input(signals::noise(7, 3000));
    input.keepsCalls = true;

    const FileHolder file(extractor.run(&input, 1));

    // 3000 / 256 = 11.7, so 11 + 2 - 1 = 12 frames, of which the last reads nothing.
    std::vector<std::string> expected(1, "getFrames");
    expected.insert(expected.end(), 10, "read_mono");
    expected.emplace_back("rewind");
    expected.insert(expected.end(), 11, "read_mono");
    EXPECT_EQ(expected, input.calls);
}
