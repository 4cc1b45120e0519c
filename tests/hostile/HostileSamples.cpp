#include <cfloat>
#include <cmath>
#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Clean.h"
#include "Limits.h"
#include "Signals.h"
#include "VXFile.h"
#include "VXLandmarkExtract.h"
#include "twin/Source.h"

// Sound that no recorder makes, from a source of the host's own.

namespace
{

using hostile::Samples;
using VXS::VXExtractParams;
using VXS::VXFile;
using VXS::VXLandmarkExtract;

constexpr float infinite = std::numeric_limits<float>::infinity();
constexpr float notANumber = std::numeric_limits<float>::quiet_NaN();
constexpr std::size_t count = hostile::cleanCount;

enum class Found {
    Nothing,
    Clean,
    // What the plain twin finds, which is nothing or depends on rounding.
    AsTwin,
    // The same, and not nothing.
    AsTwinAndSome,
};

struct Row {
    std::string name;
    std::function<Samples()> make;
    Found found;
    // Frames in which no peak may be, since all of their levels are not a number.
    std::vector<std::size_t> framesWithoutPeaks = {};
};

std::ostream& operator<<(std::ostream& stream, const Row& row)
{
    return stream << row.name;
}

class HostileSound : public testing::TestWithParam<Row>
{
};

std::function<Samples()> constant(float value)
{
    return [value] { return Samples(count, value); };
}

// The clean sound with one sample replaced.
std::function<Samples()> cleanWith(std::size_t place, float value)
{
    return [place, value] {
        Samples samples = hostile::cleanSamples();
        samples[place] = value;
        return samples;
    };
}

std::function<Samples()> cleanTimes(float factor)
{
    return [factor] {
        Samples samples = hostile::cleanSamples();
        for (float& sample : samples)
            sample *= factor;
        return samples;
    };
}

std::function<Samples()> square(std::size_t halfPeriod, float height)
{
    return [halfPeriod, height] {
        Samples samples(count);
        for (std::size_t n = 0; n < count; ++n)
            samples[n] = n / halfPeriod % 2 == 0 ? height : -height;
        return samples;
    };
}

std::function<Samples()> click(std::size_t place, float height)
{
    return [place, height] {
        Samples samples(count, 0.0f);
        samples[place] = height;
        return samples;
    };
}

std::function<Samples()> cleanOf(std::size_t length)
{
    return [length] {
        Samples samples = hostile::cleanSamples();
        samples.resize(length);
        return samples;
    };
}

Samples fromLeastToGreatest()
{
    // Each sample is 2% louder than the one before: from 1e-38 to 1e30 over the second.
    Samples samples(count);
    for (std::size_t n = 0; n < count; ++n) {
        const double size = std::pow(10.0, -38.0 + 68.0 * static_cast<double>(n) / count);
        samples[n] = static_cast<float>(hostile::cleanSamples()[n] * size);
    }
    return samples;
}

Samples everyThousandthNotANumber()
{
    Samples samples = hostile::cleanSamples();
    for (std::size_t n = 500; n < count; n += 1000)
        samples[n] = notANumber;
    return samples;
}

std::vector<Row> rows()
{
    // Frame f holds samples 256 f - 256 to 256 f + 255, so that a sample is in two frames.
    return {
        {"NotANumberThroughout", constant(notANumber), Found::Nothing},
        {"SignallingNotANumberThroughout", constant(std::numeric_limits<float>::signaling_NaN()),
         Found::Nothing},
        {"NegativeNotANumberThroughout", constant(-notANumber), Found::Nothing},
        {"NotANumberFirst", cleanWith(0, notANumber), Found::AsTwinAndSome, {0, 1}},
        {"NotANumberInTheOpening", cleanWith(1000, notANumber), Found::AsTwinAndSome, {3, 4}},
        {"NotANumberInTheMiddle", cleanWith(4000, notANumber), Found::AsTwinAndSome, {15, 16}},
        // The last full hop ends with sample 7935.
        {"NotANumberInTheLastFrame", cleanWith(7935, notANumber), Found::AsTwinAndSome, {30, 31}},
        {"NotANumberBehindTheLastFrame", cleanWith(7936, notANumber), Found::Clean},
        {"NotANumberEveryThousandthSample", everyThousandthNotANumber, Found::AsTwin},
        {"InfinityThroughout", constant(infinite), Found::AsTwin},
        {"NegativeInfinityThroughout", constant(-infinite), Found::AsTwin},
        {"InfinityInTheOpening", cleanWith(1000, infinite), Found::AsTwin},
        {"InfinityInTheMiddle", cleanWith(4000, infinite), Found::AsTwin},
        {"NegativeInfinityInTheMiddle", cleanWith(4000, -infinite), Found::AsTwin},
        {"InfinityInTheLastFrame", cleanWith(7935, infinite), Found::AsTwin},
        {"AlternatingInfinities", square(1, infinite), Found::AsTwin},
        {"GreatestFloatThroughout", constant(FLT_MAX), Found::AsTwin},
        {"GreatestFloatAlternating", square(1, FLT_MAX), Found::AsTwin},
        {"GreatestFloatInTheMiddle", cleanWith(4000, FLT_MAX), Found::AsTwin},
        {"GreatestFloatAsASquare", square(64, FLT_MAX), Found::AsTwin},
        {"SquaresThatOverflow", cleanTimes(1e30f), Found::AsTwin},
        {"SquaresThatJustDoNotOverflow", cleanTimes(1e16f), Found::AsTwinAndSome},
        // Their squares are below the least float.
        {"LeastDenormalThroughout", constant(FLT_TRUE_MIN), Found::Nothing},
        {"DenormalSquare", square(64, FLT_MIN / 2.0f), Found::Nothing},
        {"DenormalSound", cleanTimes(1e-40f), Found::Nothing},
        {"LeastNormalThroughout", constant(FLT_MIN), Found::Nothing},
        {"SquaresThatAreDenormal", cleanTimes(1e-21f), Found::AsTwin},
        {"SoundAtTheLevelOfSilence", cleanTimes(1e-16f), Found::AsTwin},
        {"FromLeastToGreatest", fromLeastToGreatest, Found::AsTwin},
        {"Direct", constant(1.0f), Found::AsTwin},
        {"NegativeDirect", constant(-1.0f), Found::AsTwin},
        {"DirectBeyondFullScale", constant(32767.0f), Found::AsTwin},
        {"SoundOnDirect",
         [] { return signals::mix(Samples(count, 0.5f), hostile::cleanSamples()); },
         Found::AsTwinAndSome},
        {"SquareOfEverySample", square(1, 1.0f), Found::AsTwin},
        {"SquareOf8Samples", square(8, 1.0f), Found::AsTwin},
        {"SquareOfAHop", square(256, 1.0f), Found::AsTwin},
        {"SquareOfATransform", square(512, 1.0f), Found::AsTwin},
        {"SquareThatFitsNothing", square(77, 1.0f), Found::AsTwinAndSome},
        {"SoundAsIntegers", cleanTimes(32768.0f), Found::AsTwinAndSome},
        {"Silence", constant(0.0f), Found::Nothing},
        {"NegativeSilence", constant(-0.0f), Found::Nothing},
        // All but the place of one sample is silent; a click has one level in every bin.
        {"ClickAfterSilence", click(6000, 1.0f), Found::AsTwin},
        {"ClickAtTheEnd", click(7935, 1.0f), Found::AsTwin},
        {"ClickBehindTheLastFrame", click(7936, 1.0f), Found::Nothing},
        {"ClickAtTheStart", click(0, 1.0f), Found::AsTwin},
        {"ClickOfTheGreatestFloat", click(6000, FLT_MAX), Found::AsTwin},
        {"ClickOfInfinity", click(6000, infinite), Found::AsTwin},
        {"ClickThatIsNotANumber", click(6000, notANumber), Found::Nothing},
        {"ClickOfTheLeastFloat", click(6000, FLT_TRUE_MIN), Found::Nothing},
        {"ClicksInEveryHop", [] { return signals::comb(256, 1.0f, count); }, Found::AsTwin},
        {"SoundAfterSilence",
         [] {
             return signals::join({signals::silence(count / 2), signals::noise(7, count / 2)});
         },
         Found::AsTwinAndSome},
        {"NoSample", cleanOf(0), Found::Nothing},
        {"OneSample", cleanOf(1), Found::Nothing},
        // 2303 / 256 = 8.996: 8 + 2 - 1 frames are fewer than the opening ones, and 9 + 2 - 1 not.
        {"OneSampleTooShort", cleanOf(2303), Found::Nothing},
        {"JustLongEnough", cleanOf(2304), Found::AsTwinAndSome},
    };
}

} // namespace

TEST_P(HostileSound, HasItsLandmarks)
{
    hostile::withinLimits([] {
        const Row& row = GetParam();
        const Samples samples = row.make();
        twins::Source twin(samples, static_cast<std::uint32_t>(samples.size()));
        const hostile::Landmarks expected = hostile::twinLandmarks(VXExtractParams(), twin);
        signals::SignalInput input(samples);
        VXLandmarkExtract extractor{VXExtractParams()};

        const std::unique_ptr<VXFile> file(extractor.run(&input, 1));

        EXPECT_EQ(expected, signals::landmarksOf(*file));
        if (row.found == Found::Nothing) {
            EXPECT_TRUE(expected.empty());
        } else if (row.found == Found::AsTwinAndSome) {
            EXPECT_FALSE(expected.empty());
        } else if (row.found == Found::Clean) {
            EXPECT_EQ(hostile::cleanLandmarks(), expected);
        }
        for (const std::size_t frame : row.framesWithoutPeaks)
            EXPECT_TRUE(signals::binsOf(extractor, frame).empty()) << "frame " << frame;
        hostile::expectUsable(extractor);
    });
}

INSTANTIATE_TEST_SUITE_P(Of, HostileSound, testing::ValuesIn(rows()),
                         [](const testing::TestParamInfo<Row>& row) { return row.param.name; });
