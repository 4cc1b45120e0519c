#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Bits.h"
#include "Extraction.h"
#include "Random.h"
#include "SignalInput.h"
#include "VXFile.h"
#include "VXLandmarkExtract.h"
#include "plain/Extractor.h"
#include "plain/Reader.h"
#include "twin/Comparison.h"
#include "twin/Source.h"

using property::Random;
using property::Samples;

namespace
{

// So many samples that the cost is about the same at every size, and at least a few frames.
std::size_t sampleCount(Random& random, const plain::Parameters& parameters)
{
    const std::size_t frames = 4 + random.below(1 + 30000 / (parameters.fftSize + 100));
    return frames * parameters.hopSize + random.below(parameters.hopSize);
}

} // namespace

TEST(VXLandmarkExtract, EqualsThePlainTwinOnSoundOverManyParameters)
{
    for (std::uint64_t seed = 1; seed <= 400; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const plain::Parameters parameters = property::anyParameters(random);
        const Samples samples = property::sound(random, sampleCount(random, parameters));

        property::compareExtraction(parameters, samples);

        if (HasFatalFailure()) return;
    }
}

TEST(VXLandmarkExtract, EqualsThePlainTwinOnLongSoundAtTheDefaultParameters)
{
    const std::uint64_t seed = 1001;
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    const Samples samples = property::sound(random, 400123);

    property::compareExtraction(plain::Parameters(), samples);
}

TEST(VXLandmarkExtract, EqualsThePlainTwinOnHostileInput)
{
    for (std::uint64_t seed = 2000; seed < 2000 + 4 * property::hostileKinds; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const int kind = static_cast<int>(seed % property::hostileKinds);
        plain::Parameters parameters;
        if (seed % 2 == 1) parameters = property::anyParameters(random);
        const Samples samples =
            property::hostileSound(random, kind, sampleCount(random, parameters));

        property::compareExtraction(parameters, samples);

        if (HasFatalFailure()) return;
    }
}

TEST(VXLandmarkExtract, EqualsThePlainTwinOnVeryShortInput)
{
    for (std::uint64_t seed = 3000; seed < 3100; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        plain::Parameters parameters = property::anyParameters(random);
        parameters.initialFrames = static_cast<std::uint32_t>(random.below(4));
        const std::size_t count = random.below(3 * parameters.hopSize + 2);

        property::compareExtraction(parameters, property::sound(random, count));

        if (HasFatalFailure()) return;
    }
}

TEST(VXLandmarkExtract, EqualsThePlainTwinWithNumbersOfFramesAroundTheInitialOnes)
{
    for (std::uint32_t frames = 6; frames <= 13; ++frames) {
        const std::uint64_t seed = 3200 + frames;
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);

        property::compareExtraction(plain::Parameters(), property::sound(random, frames * 256 - 1));
        property::compareExtraction(plain::Parameters(), property::sound(random, frames * 256));
        property::compareExtraction(plain::Parameters(), property::sound(random, frames * 256 + 1));

        if (HasFatalFailure()) return;
    }
}

TEST(VXLandmarkExtract, EqualsThePlainTwinWhereASourceClaimsMoreOrLessThanItHas)
{
    for (std::uint64_t seed = 3300; seed < 3360; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const plain::Parameters parameters = property::anyParameters(random);
        const Samples samples = property::sound(random, sampleCount(random, parameters));
        const std::uint32_t claim =
            static_cast<std::uint32_t>(random.below(2 * samples.size() + 1));

        property::compareExtraction(parameters, samples, claim);

        if (HasFatalFailure()) return;
    }
}

TEST(VXLandmarkExtract, EqualsThePlainTwinWhereASourceResizesItsBlock)
{
    for (std::uint64_t seed = 3370; seed < 3400; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const plain::Parameters parameters = property::anyParameters(random);
        SCOPED_TRACE(property::describe(parameters));
        const Samples samples = property::sound(random, sampleCount(random, parameters));
        const std::uint32_t claim = static_cast<std::uint32_t>(samples.size());
        const std::size_t blockSize = 1 + random.below(2 * parameters.hopSize);
        twins::Source plainSource(samples, claim, blockSize);
        signals::SignalInput source(samples, claim);
        source.resizeBlocks(static_cast<std::int32_t>(blockSize));
        plain::Extractor twin(parameters);
        plain::Recording recording(1);
        VXS::VXLandmarkExtract extractor(twins::toLibrary(parameters));

        twin.run(plainSource, recording);
        const std::unique_ptr<VXS::VXFile> file(extractor.run(&source, 1));

        ASSERT_TRUE(property::samePeaks(extractor, twin));
        ASSERT_TRUE(property::sameLandmarks(*file, recording));
    }
}

TEST(VXLandmarkExtract, EqualsThePlainTwinWithMasksThatAreNotFinite)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    for (std::uint64_t seed = 3400; seed < 3480; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        plain::Parameters parameters = property::anyParameters(random);
        parameters.maskHeight = random.pick({40.0f, infinity, -infinity, nan, 3e38f});
        parameters.maskWidth = random.pick({25.0f, 0.0f, infinity, nan, 1e-38f});
        parameters.thresholdDecay = random.pick({0.2f, infinity, -infinity, nan});
        parameters.peakFloor = random.pick({-60.0f, infinity, -infinity, nan});

        property::compareExtraction(parameters,
                                    property::sound(random, sampleCount(random, parameters)));

        if (HasFatalFailure()) return;
    }
}

TEST(VXLandmarkExtract, EqualsThePlainTwinWithoutAnyLimitOnPeaksAndPairs)
{
    constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();
    for (std::uint64_t seed = 3500; seed < 3512; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        plain::Parameters parameters;
        parameters.fftSize = 8u << random.below(5);
        parameters.hopSize = 1 + static_cast<std::uint32_t>(random.below(parameters.fftSize));
        parameters.maxPeaksPerFrame = none;
        parameters.maxPairsPerPeak = none;
        parameters.timeRange = none;
        parameters.maskHeight = 300.0f;
        parameters.maskWidth = 0.1f;

        property::compareExtraction(parameters, property::sound(random, 60 * parameters.hopSize));

        if (HasFatalFailure()) return;
    }
}

TEST(VXLandmarkExtract, RefusesTheSameNumbersOfFramesAsThePlainTwin)
{
    plain::Parameters parameters;
    parameters.fftSize = 8;
    parameters.hopSize = 1;
    const Samples samples;
    // 4294967288 / 1 + 8 / 1 - 1 frames are 2^32 - 1 and one more sample makes one too many.
    twins::Source plainSource(samples, 4294967289u);
    signals::SignalInput source(samples, 4294967289u);
    plain::Extractor twin(parameters);
    VXS::VXLandmarkExtract extractor(twins::toLibrary(parameters));

    EXPECT_THROW(twin.findPeaks(plainSource), std::length_error);
    EXPECT_THROW(extractor.run(&source, 1), std::length_error);
}

TEST(VXLandmarkExtract, FindsTheInitialThresholdOfThePlainTwin)
{
    for (std::uint64_t seed = 4000; seed < 4080; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const plain::Parameters parameters = property::anyParameters(random);
        SCOPED_TRACE(property::describe(parameters));
        const int kind = static_cast<int>(random.below(2 * property::hostileKinds));
        const std::size_t count = random.below(12 * parameters.hopSize);
        const Samples samples = kind < property::hostileKinds
                                    ? property::hostileSound(random, kind, count)
                                    : property::sound(random, count);
        twins::Source plainSource(samples, 0);
        signals::SignalInput source(samples, 0);
        plain::Extractor twin(parameters);
        VXS::VXLandmarkExtract extractor(twins::toLibrary(parameters));
        VXS::array<float> threshold(static_cast<std::int32_t>(parameters.fftSize / 2));
        std::fill(threshold.data, threshold.data + threshold.count(), 0.0f);
        extractor.setupFFT();

        const std::vector<float> expected = twin.initialThreshold(plainSource);
        extractor.computeInitialThreshold(threshold, &source);

        ASSERT_TRUE(property::sameFloats(threshold.data, expected.data(), expected.size()));
    }
}

TEST(VXLandmarkExtract, SmoothsAnyEnvelopeAsThePlainTwin)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    for (std::uint64_t seed = 4100; seed < 4300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        const plain::Parameters parameters = property::anyParameters(random);
        SCOPED_TRACE(property::describe(parameters));
        plain::Extractor twin(parameters);
        VXS::VXLandmarkExtract extractor(twins::toLibrary(parameters));
        // A mask shorter than the envelope, as long and longer, and none at all.
        std::vector<float> mask(random.below(80), 0.0f);
        for (float& value : mask)
            value = -40.0f * std::abs(random.sample());
        twin.maskShape = mask;
        extractor.maskShape = mask;
        std::vector<float> envelope(random.below(120), 0.0f);
        for (float& level : envelope) {
            level = 50.0f * random.sample();
            if (random.oneIn(20)) level = random.pick({infinity, -infinity, nan, 0.0f, -0.0f});
        }
        VXS::array<float> levels(static_cast<std::int32_t>(envelope.size()));
        std::copy(envelope.begin(), envelope.end(), levels.data);

        twin.smooth(envelope);
        extractor.smooth(levels);

        ASSERT_TRUE(property::sameFloats(levels.data, envelope.data(), envelope.size()));
    }
}

TEST(VXLandmarkExtract, ConvertsAnyMagnitudeAsThePlainTwin)
{
    const std::uint64_t seed = 4400;
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};

    for (int i = 0; i < 300000; ++i) {
        const float magnitude = random.anyFloat();
        ASSERT_TRUE(property::sameFloat(extractor.dB(magnitude), plain::Extractor::dB(magnitude)))
            << "of " << magnitude;
    }
}

TEST(VXLandmarkExtract, PairsHandMadePeaksAsThePlainTwin)
{
    for (std::uint64_t seed = 4500; seed < 4560; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        plain::Parameters parameters = property::anyParameters(random);
        SCOPED_TRACE(property::describe(parameters));
        plain::Extractor twin(parameters);
        VXS::VXLandmarkExtract extractor(twins::toLibrary(parameters));
        // Bins and distances beyond the ten bits that a key has for each, and equal levels.
        const std::size_t lists = random.below(1500);
        const std::uint64_t gap = random.pick<std::uint64_t>({1, 3, 600});
        for (std::size_t f = 0; f < lists; ++f) {
            twin.frames.emplace_back();
            extractor.frames->push_back(new std::vector<VXS::Peak*>);
            if (!random.oneIn(gap)) continue;
            for (std::int32_t bin = 0; bin < 3000; ++bin) {
                if (!random.oneIn(1000)) continue;
                const float level = static_cast<float>(random.between(-2, 2));
                const std::int32_t time = static_cast<std::int32_t>(f);
                twin.frames.back().push_back(
                    std::make_unique<plain::Peak>(plain::Peak{bin, level, time}));
            }
            plain::Extractor::sort(twin.frames.back());
            for (const auto& peak : twin.frames.back()) {
                extractor.frames->back()->push_back(
                    new VXS::Peak{peak->frequency, peak->amplitude, peak->time});
            }
        }
        plain::Recording recording(3);
        VXS::VXFile file(3);

        twin.pair(recording);
        extractor.combine(&file);

        ASSERT_TRUE(property::sameLandmarks(file, recording));
    }
}

TEST(VXLandmarkExtract, FindsTheNeighboursOfAnyAnchorAsThePlainTwin)
{
    constexpr std::int32_t most = std::numeric_limits<std::int32_t>::max();
    const std::uint64_t seed = 4600;
    SCOPED_TRACE("seed " + std::to_string(seed));
    Random random(seed);
    for (int round = 0; round < 300; ++round) {
        plain::Parameters parameters = property::anyParameters(random);
        SCOPED_TRACE(property::describe(parameters));
        plain::Extractor twin(parameters);
        VXS::VXLandmarkExtract extractor(twins::toLibrary(parameters));
        for (std::int32_t f = 0; f < 20; ++f) {
            twin.frames.emplace_back();
            twin.frames.back().push_back(std::make_unique<plain::Peak>(plain::Peak{f, 0.0f, f}));
            extractor.frames->push_back(new std::vector<VXS::Peak*>{new VXS::Peak{f, 0.0f, f}});
        }
        const std::int32_t bin = random.pick({5, 0, -1, -100, 300, 5000, most, -most - 1});
        const std::int32_t time = random.pick({0, 5, 19, 20, 100, most});
        VXS::Peak anchor{bin, 0.0f, time};
        std::vector<VXS::Peak*> neighbours;

        const std::vector<const plain::Peak*> expected = twin.neighboursOf({bin, 0.0f, time});
        extractor.findNeighborPeaks(&anchor, neighbours);

        ASSERT_EQ(neighbours.size(), expected.size()) << "bin " << bin << " time " << time;
        for (std::size_t i = 0; i < expected.size(); ++i) {
            ASSERT_EQ(neighbours[i]->time, expected[i]->time) << "bin " << bin << " time " << time;
        }
    }
}

TEST(VXLandmarkExtract, EqualsThePlainTwinOnTheExampleRecordings)
{
    const std::vector<std::string> paths = property::exampleRecordings();
    ASSERT_FALSE(paths.empty());
    VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};
    for (const std::string& path : paths) {
        SCOPED_TRACE(path);
        plain::Reader reader(path);
        plain::Extractor twin{plain::Parameters()};
        plain::Recording recording(2);

        twin.run(reader, recording);
        const std::unique_ptr<VXS::VXFile> file(extractor.run(path, 2));

        ASSERT_NE(file, nullptr);
        ASSERT_FALSE(recording.landmarks.empty());
        ASSERT_TRUE(property::samePeaks(extractor, twin));
        ASSERT_TRUE(property::sameLandmarks(*file, recording));
    }
}

TEST(VXLandmarkExtract, EqualsThePlainTwinOnAnExampleRecordingAtOtherSizes)
{
    const std::vector<std::string> paths = property::exampleRecordings();
    ASSERT_FALSE(paths.empty());
    std::uint64_t seed = 4700;
    for (const std::uint32_t size : {64u, 256u, 1024u, 4096u}) {
        for (const std::uint32_t hop : {size / 4, size / 2, size, size + size / 2}) {
            ++seed;
            SCOPED_TRACE("seed " + std::to_string(seed));
            Random random(seed);
            plain::Parameters parameters;
            parameters.fftSize = size;
            parameters.hopSize = hop;
            plain::Reader reader(paths[random.below(paths.size())]);
            std::vector<float> samples(std::min<std::size_t>(reader.frames(), 160000), 0.0f);
            reader.read(samples);
            const std::size_t length = std::min<std::size_t>(samples.size(), 150 * hop);
            const std::size_t start = random.below(samples.size() - length + 1);
            const auto from = samples.begin() + static_cast<std::ptrdiff_t>(start);

            property::compareExtraction(parameters,
                                        Samples(from, from + static_cast<std::ptrdiff_t>(length)));

            if (HasFatalFailure()) return;
        }
    }
}
