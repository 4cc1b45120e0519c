#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Clean.h"
#include "Landmarks.h"
#include "Limits.h"
#include "Outcome.h"
#include "VXClusterSync.h"
#include "VXClusterSyncParams.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXLandmarkExtract.h"
#include "Wave.h"
#include "twin/Source.h"

// Parameters at and beyond the ends of what makes sense: which of them are taken, and what comes of
// an extraction or a synchronisation with them.

namespace
{

using hostile::Samples;
using VXS::VXExtractParams;
using VXS::VXFile;
using VXS::VXLandmarkExtract;
using VXS::support::KeyAtFrame;

constexpr std::uint32_t most = std::numeric_limits<std::uint32_t>::max();
constexpr std::uint32_t topBit = 0x80000000u;
constexpr float infinite = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();

template <typename AnyRow>
std::string nameOf(const testing::TestParamInfo<AnyRow>& row)
{
    return row.param.name;
}

// Setters.

using Setter = bool (VXExtractParams::*)(unsigned int);

struct SetterRow {
    std::string name;
    Setter set;
    std::uint32_t value;
    bool isTaken;
    // The field afterwards.
    std::uint32_t VXExtractParams::*field;
    std::uint32_t after;
};

std::ostream& operator<<(std::ostream& stream, const SetterRow& row)
{
    return stream << row.name;
}

class HostileSetter : public testing::TestWithParam<SetterRow>
{
};

std::vector<SetterRow> setterRows()
{
    const Setter fft = &VXExtractParams::setFftSize;
    const Setter hop = &VXExtractParams::setHopSize;
    const Setter rate = &VXExtractParams::setSampleRate;
    const Setter pairs = &VXExtractParams::setMaxPairsPerPeak;
    const auto fftField = &VXExtractParams::fftSize;
    const auto hopField = &VXExtractParams::hopSize;
    const auto rateField = &VXExtractParams::sampleRate;
    const auto pairsField = &VXExtractParams::maxPairsPerPeak;
    return {
        {"TransformOf0", fft, 0, false, fftField, 512},
        {"TransformOf1", fft, 1, false, fftField, 512},
        {"TransformOf2", fft, 2, false, fftField, 512},
        {"TransformOf4", fft, 4, false, fftField, 512},
        {"TransformOf5", fft, 5, false, fftField, 512},
        {"TransformOf8", fft, 8, true, fftField, 8},
        {"TransformOf12", fft, 12, false, fftField, 512},
        {"TransformOf511", fft, 511, false, fftField, 512},
        {"TransformOfTheTopBit", fft, topBit, true, fftField, topBit},
        {"TransformOfTheTopBitAndOne", fft, topBit + 1, false, fftField, 512},
        {"TransformOfTheMost", fft, most, false, fftField, 512},
        {"HopOf0", hop, 0, false, hopField, 256},
        {"HopOf1", hop, 1, true, hopField, 1},
        {"HopAboveTheTransform", hop, 513, true, hopField, 513},
        {"HopOfTheTopBit", hop, topBit, true, hopField, topBit},
        {"HopOfTheMost", hop, most, true, hopField, most},
        {"RateOf0", rate, 0, false, rateField, 8000},
        {"RateOf3999", rate, 3999, false, rateField, 8000},
        {"RateOf4000", rate, 4000, true, rateField, 4000},
        {"RateOfTheTopBit", rate, topBit, true, rateField, topBit},
        {"RateOfTheMost", rate, most, true, rateField, most},
        {"PairsOf0", pairs, 0, true, pairsField, 0},
        {"PairsOfTheTopBit", pairs, topBit, true, pairsField, topBit},
        {"PairsOfTheMost", pairs, most, true, pairsField, most},
    };
}

// Extraction.

enum class Found {
    Nothing,
    Clean,
    AsTwin,
    AsTwinAndSome,
};

struct ExtractionRow {
    std::string name;
    std::function<void(VXExtractParams&)> set;
    Found found;
    // Samples of the clean sound that there are.
    std::size_t samples = hostile::cleanCount;
};

std::ostream& operator<<(std::ostream& stream, const ExtractionRow& row)
{
    return stream << row.name;
}

class HostileParameters : public testing::TestWithParam<ExtractionRow>
{
};

std::function<void(VXExtractParams&)> sizes(std::uint32_t fftSize, std::uint32_t hopSize)
{
    return [fftSize, hopSize](VXExtractParams& params) {
        EXPECT_TRUE(params.setFftSize(fftSize));
        EXPECT_TRUE(params.setHopSize(hopSize));
    };
}

template <typename Value>
std::function<void(VXExtractParams&)> field(Value VXExtractParams::*member, Value value)
{
    return [member, value](VXExtractParams& params) { params.*member = value; };
}

std::vector<ExtractionRow> extractionRows()
{
    using Params = VXExtractParams;
    return {
        {"Transform8Hop256", sizes(8, 256), Found::AsTwin},
        {"Transform8Hop8", sizes(8, 8), Found::AsTwinAndSome},
        {"Transform8Hop4", sizes(8, 4), Found::AsTwinAndSome},
        {"Transform8Hop1", sizes(8, 1), Found::AsTwinAndSome},
        {"Transform16Hop1", sizes(16, 1), Found::AsTwinAndSome},
        {"Transform8192Hop256", sizes(8192, 256), Found::AsTwinAndSome},
        // Longer than the recording: 0 + 64 - 1 frames.
        {"Transform16384Hop256Of300Samples", sizes(16384, 256), Found::AsTwin, 300},
        {"Hop1", sizes(512, 1), Found::AsTwinAndSome, 2000},
        {"Hop1OfNoSample", sizes(512, 1), Found::Nothing, 0},
        {"Hop511", sizes(512, 511), Found::AsTwinAndSome},
        {"Hop512", sizes(512, 512), Found::AsTwinAndSome},
        {"Hop513", sizes(512, 513), Found::AsTwinAndSome},
        // 8000 / 800 + 1 - 1 frames are as many as the opening ones, and 8000 / 801 is below 10.
        {"Hop800", sizes(512, 800), Found::AsTwin},
        {"Hop801", sizes(512, 801), Found::Nothing},
        {"HopLongerThanTheRecording", sizes(512, 8001), Found::Nothing},
        {"Hop2To31Less1", sizes(512, topBit - 1), Found::Nothing},
        {"Hop2To31", sizes(512, topBit), Found::Nothing},
        {"HopMost", sizes(512, most), Found::Nothing},
        {"Transform8HopMost", sizes(8, most), Found::Nothing},
        // A source has no rate.
        {"Rate4000", field(&Params::sampleRate, 4000u), Found::Clean},
        {"RateMost", field(&Params::sampleRate, most), Found::Clean},
        // Each peak still gets one neighbour.
        {"Pairs0", field(&Params::maxPairsPerPeak, 0u), Found::AsTwinAndSome},
        {"PairsMost", field(&Params::maxPairsPerPeak, most), Found::AsTwinAndSome},
        {"Peaks0", field(&Params::maxPeaksPerFrame, 0u), Found::Nothing},
        {"PeaksMost", field(&Params::maxPeaksPerFrame, most), Found::AsTwinAndSome},
        {"Opening0", field(&Params::initialFrames, 0u), Found::AsTwinAndSome},
        {"OpeningMost", field(&Params::initialFrames, most), Found::Nothing},
        {"TimeRange0", field(&Params::timeRange, 0u), Found::AsTwin},
        {"TimeRangeMost", field(&Params::timeRange, most), Found::AsTwinAndSome},
        // Only the anchor's own bin is looked at.
        {"FrequencyRange0", field(&Params::frequencyRange, 0u), Found::Clean},
        {"FrequencyRangeMost", field(&Params::frequencyRange, most), Found::Clean},
        {"MaskHeight0", field(&Params::maskHeight, 0.0f), Found::AsTwin},
        {"MaskHeightInfinite", field(&Params::maskHeight, infinite), Found::AsTwin},
        {"MaskHeightNotANumber", field(&Params::maskHeight, notANumber), Found::AsTwin},
        {"MaskWidth0", field(&Params::maskWidth, 0.0f), Found::AsTwin},
        {"MaskWidthInfinite", field(&Params::maskWidth, infinite), Found::AsTwin},
        {"MaskWidthNotANumber", field(&Params::maskWidth, notANumber), Found::AsTwin},
        {"DecayInfinite", field(&Params::thresholdDecay, infinite), Found::AsTwin},
        {"DecayMinusInfinite", field(&Params::thresholdDecay, -infinite), Found::AsTwin},
        {"DecayNotANumber", field(&Params::thresholdDecay, notANumber), Found::AsTwin},
        // No level is above the greatest, and none of these comparisons with it holds.
        {"FloorInfinite", field(&Params::peakFloor, infinite), Found::Nothing},
        {"FloorMinusInfinite", field(&Params::peakFloor, -infinite), Found::AsTwinAndSome},
        {"FloorNotANumber", field(&Params::peakFloor, notANumber), Found::AsTwinAndSome},
    };
}

// Extractions that end in an error.

struct ErrorRow {
    std::string name;
    std::uint32_t fftSize;
    std::uint32_t hopSize;
    std::uint32_t openingFrames;
    // What a runtime error says; empty for bad_alloc.
    std::string message;
    // Whether it needs the memory to be limited.
    bool needsLimit;
};

std::ostream& operator<<(std::ostream& stream, const ErrorRow& row)
{
    return stream << row.name;
}

class HostileSize : public testing::TestWithParam<ErrorRow>
{
};

std::vector<ErrorRow> errorRows()
{
    const std::string noMemory = "array::resize(): Error allocating memory";
    return {
        // 2^31 + 4 floats are a negative number of them.
        {"Transform2To31", topBit, 256, 10, noMemory, false},
        {"Transform2To31HopMost", topBit, most, 10, noMemory, false},
        {"Transform2To30", topBit / 2, 256, 10, noMemory, true},
        {"Transform2To28", topBit / 8, 256, 10, noMemory, true},
        // The claim of the source, 2^32 - 1 samples, makes 15 and 1 frames of such hops.
        {"Hop2To28", 512, topBit / 8, 10, "", true},
        {"HopMostWithoutAnOpening", 512, most, 0, "", false},
    };
}

// Files of these rates.

struct RateRow {
    std::string name;
    std::uint32_t parameter;
    std::uint32_t file;
};

std::ostream& operator<<(std::ostream& stream, const RateRow& row)
{
    return stream << row.name;
}

class HostileRate : public testing::TestWithParam<RateRow>
{
};

// Synchronisation.

struct SyncRow {
    std::string name;
    std::uint32_t sampleRate;
    std::uint32_t hopSize;
    std::uint32_t maxLandmarkCount;
    std::uint32_t minLandmarksPerEstimate;
    // How much later the second file begins; negative if they are not tied together.
    float seconds;
};

std::ostream& operator<<(std::ostream& stream, const SyncRow& row)
{
    return stream << row.name;
}

class HostileSyncParameters : public testing::TestWithParam<SyncRow>
{
};

std::vector<SyncRow> syncRows()
{
    constexpr float apart = -1.0f;
    const auto mostAsFloat = static_cast<float>(most);
    return {
        // 100 frames by the frames of a second.
        {"RateLeastHopMost", 4000, most, 250, 5, 100.0f / (4000.0f / mostAsFloat)},
        {"RateMostHopMost", most, most, 250, 5, 100.0f},
        // 3 seconds are more than the 400 frames that the files have in common.
        {"RateLeastHopLeast", 4000, 1, 250, 5, apart},
        {"RateMostHopLeast", most, 1, 250, 5, apart},
        {"RateMostHopDefault", most, 256, 250, 5, apart},
        {"CapOf0", 8000, 256, 0, 5, apart},
        {"CapOf1", 8000, 256, 1, 5, apart},
        {"CapOf2", 8000, 256, 2, 5, 3.2f},
        {"CapOfTheMost", 8000, 256, most, 5, 3.2f},
        {"VotesOf0", 8000, 256, 250, 0, 3.2f},
        {"VotesOfTheMost", 8000, 256, 250, most, apart},
    };
}

// Five keys over 400 frames.
std::vector<KeyAtFrame> eventFrom(std::int32_t frame)
{
    return {{1, frame}, {2, frame + 100}, {3, frame + 200}, {4, frame + 300}, {5, frame + 400}};
}

} // namespace

TEST_P(HostileSetter, TakesOrRefuses)
{
    const SetterRow& row = GetParam();
    VXExtractParams params;

    const bool isTaken = (params.*row.set)(row.value);

    EXPECT_EQ(row.isTaken, isTaken);
    EXPECT_EQ(row.after, params.*row.field);
}

INSTANTIATE_TEST_SUITE_P(Of, HostileSetter, testing::ValuesIn(setterRows()), nameOf<SetterRow>);

TEST_P(HostileParameters, HaveTheirLandmarks)
{
    hostile::withinLimits([] {
        const ExtractionRow& row = GetParam();
        VXExtractParams params;
        row.set(params);
        Samples samples = hostile::cleanSamples();
        samples.resize(row.samples);
        twins::Source twin(samples, static_cast<std::uint32_t>(samples.size()));
        const hostile::Landmarks expected = row.found == Found::Nothing
                                                ? hostile::Landmarks()
                                                : hostile::twinLandmarks(params, twin);
        signals::SignalInput input(samples);
        VXLandmarkExtract extractor(params);

        const std::unique_ptr<VXFile> file(extractor.run(&input, 1));

        EXPECT_EQ(expected, signals::landmarksOf(*file));
        if (row.found == Found::Clean) {
            EXPECT_EQ(hostile::cleanLandmarks(), expected);
        } else if (row.found == Found::AsTwinAndSome) {
            EXPECT_FALSE(expected.empty());
        }
        // A second run starts afresh.
        input.rewind();
        const std::unique_ptr<VXFile> again(extractor.run(&input, 1));
        EXPECT_EQ(expected, signals::landmarksOf(*again));
    });
}

INSTANTIATE_TEST_SUITE_P(Of, HostileParameters, testing::ValuesIn(extractionRows()),
                         nameOf<ExtractionRow>);

TEST_P(HostileSize, EndsInItsErrorAndLeavesTheExtractorUsable)
{
    const ErrorRow& row = GetParam();
    if (row.needsLimit && !hostile::refusesMemory()) {
        GTEST_SKIP() << "nothing limits the memory here";
    }

    hostile::withinLimits([&] {
        VXExtractParams params;
        params.fftSize = row.fftSize;
        params.hopSize = row.hopSize;
        params.initialFrames = row.openingFrames;
        VXLandmarkExtract extractor(params);
        signals::SignalInput source(signals::silence(0), most);
        for (int run = 0; run < 2; ++run) {
            try {
                delete extractor.run(&source, 1);
                ADD_FAILURE() << "threw nothing";
            } catch (const std::bad_alloc&) {
                EXPECT_EQ(row.message, "");
            } catch (const std::runtime_error& error) {
                EXPECT_EQ(row.message, error.what());
            }
        }
        extractor.params = VXExtractParams();
        hostile::expectUsable(extractor);
    });
}

INSTANTIATE_TEST_SUITE_P(Of, HostileSize, testing::ValuesIn(errorRows()), nameOf<ErrorRow>);

TEST_P(HostileRate, LoadsWhereFileAndParameterAgree)
{
    const wave::TempFolder folder;
    const RateRow& row = GetParam();
    const std::string path =
        folder.write("take.wav", wave::file16(hostile::cleanSamples16(), row.file));

    hostile::withinLimits([&] {
        VXExtractParams params;
        ASSERT_TRUE(params.setSampleRate(row.parameter));
        hostile::expectOutcome(
            path, row.parameter == row.file ? hostile::clean() : hostile::ofOtherRate(), params);
    });
}

INSTANTIATE_TEST_SUITE_P(Of, HostileRate,
                         testing::ValuesIn(std::vector<RateRow>{
                             {"Least", 4000, 4000},
                             {"Most", most, most},
                             {"LeastForAFileOf0", 4000, 0},
                             {"LeastForTheMost", 4000, most},
                             {"MostForTheLeast", most, 4000},
                             {"MostForMinus2", most, most - 1},
                         }),
                         nameOf<RateRow>);

TEST_P(HostileSyncParameters, TieOrLeaveApart)
{
    hostile::withinLimits([] {
        const SyncRow& row = GetParam();
        VXExtractParams extractParams;
        ASSERT_TRUE(extractParams.setSampleRate(row.sampleRate));
        ASSERT_TRUE(extractParams.setHopSize(row.hopSize));
        VXS::VXClusterSyncParams params(extractParams);
        params.maxLandmarkCount = row.maxLandmarkCount;
        params.minLandmarksPerEstimate = row.minLandmarksPerEstimate;
        VXS::VXFileSet fileSet;
        VXS::support::addFileWith(fileSet, 1, eventFrom(100));
        VXS::support::addFileWith(fileSet, 2, eventFrom(0));

        const std::vector<VXS::support::Cluster> clusters =
            VXS::support::resultOf(VXS::VXClusterSync(params).run(&fileSet, nullptr));

        std::vector<VXS::support::Cluster> expected = {{{1, 0.0f, ""}, {2, row.seconds, ""}}};
        if (row.seconds < 0.0f) expected = {{{1, 0.0f, ""}}, {{2, 0.0f, ""}}};
        EXPECT_EQ(expected, clusters);
    });
}

INSTANTIATE_TEST_SUITE_P(Of, HostileSyncParameters, testing::ValuesIn(syncRows()), nameOf<SyncRow>);
