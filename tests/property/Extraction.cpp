#include "Extraction.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <memory>
#include <sstream>

#include "Bits.h"
#include "SignalInput.h"
#include "VXFile.h"
#include "twin/Comparison.h"
#include "twin/Source.h"

namespace property
{

plain::Parameters anyParameters(Random& random)
{
    constexpr std::uint32_t none = std::numeric_limits<std::uint32_t>::max();
    plain::Parameters parameters;
    const std::uint32_t size = 8u << random.below(10);
    parameters.fftSize = size;
    parameters.hopSize = random.pick<std::uint32_t>(
        {std::max(size / 64u, 1u), size / 8u | 1u, size / 4u, size / 2u, size / 2u, size / 2u,
         size / 2u + 3u, size - 1u, size, size + 1u, size + size / 2u, 3u * size + 1u});
    parameters.frequencyRange = random.pick<std::uint32_t>({62, 62, 0, 1, none});
    parameters.timeRange = random.pick<std::uint32_t>({126, 126, 0, 1, 7, 2000, none});
    parameters.initialFrames = random.pick<std::uint32_t>({10, 10, 0, 1, 2, 5});
    parameters.maxPeaksPerFrame = random.pick<std::uint32_t>({5, 5, 0, 1, 2, 20, none});
    parameters.maskHeight = random.pick({40.0f, 40.0f, 40.0f, 0.0f, 0.1f, -10.0f, 200.0f});
    parameters.peakFloor = random.pick({-60.0f, -60.0f, -3.0f, 0.0f, 10.0f, -400.0f});
    parameters.thresholdDecay = random.pick({0.2f, 0.2f, 0.0f, -0.3f, 1e-3f, 3.0f, 30.0f});
    parameters.maskWidth = random.pick({25.0f, 25.0f, 1.0f, 0.5f, 300.0f, 1e-30f, -25.0f});
    parameters.maxPairsPerPeak = random.pick<std::uint32_t>({10, 10, 0, 1, 3, 40});
    return parameters;
}

std::string describe(const plain::Parameters& parameters)
{
    std::ostringstream text;
    text << "fftSize " << parameters.fftSize << " hopSize " << parameters.hopSize
         << " initialFrames " << parameters.initialFrames << " maxPeaksPerFrame "
         << parameters.maxPeaksPerFrame << " maskHeight " << parameters.maskHeight << " maskWidth "
         << parameters.maskWidth << " peakFloor " << parameters.peakFloor << " thresholdDecay "
         << parameters.thresholdDecay << " timeRange " << parameters.timeRange << " frequencyRange "
         << parameters.frequencyRange << " maxPairsPerPeak " << parameters.maxPairsPerPeak;
    return text.str();
}

Samples sound(Random& random, std::size_t count)
{
    Samples samples(count, 0.0f);
    float noiseLevel = 0.1f;
    float toneLevel = 0.5f;
    float phase = 0.0f;
    float step = 0.3f;
    for (std::size_t i = 0; i < count; ++i) {
        if (random.oneIn(700)) noiseLevel = 0.3f * std::abs(random.sample());
        if (random.oneIn(900)) {
            toneLevel = std::max(0.0f, random.sample());
            step = 3.0f * std::abs(random.sample());
        }
        phase += step;
        if (phase > 6.2831853f) phase -= 6.2831853f;
        samples[i] = toneLevel * std::sin(phase) + noiseLevel * random.sample();
    }
    return samples;
}

Samples hostileSound(Random& random, int kind, std::size_t count)
{
    constexpr float infinity = std::numeric_limits<float>::infinity();
    constexpr float nan = std::numeric_limits<float>::quiet_NaN();
    constexpr float greatest = std::numeric_limits<float>::max();
    constexpr float tiniest = std::numeric_limits<float>::denorm_min();
    Samples samples(count, 0.0f);
    const std::size_t place = count == 0 ? 0 : random.below(count);
    for (std::size_t i = 0; i < count; ++i) {
        float& sample = samples[i];
        switch (kind) {
        case 0: // silence
            break;
        case 1: // silence of the other sign
            sample = -0.0f;
            break;
        case 2: // a direct current
            sample = 1.0f;
            break;
        case 3: // full-scale square
            sample = i / 13 % 2 == 0 ? 1.0f : -1.0f;
            break;
        case 4: // a click in silence
            sample = i == place ? 1.0f : 0.0f;
            break;
        case 5: // silence, then noise
            sample = i > count / 2 ? random.sample() : 0.0f;
            break;
        case 6: // noise, then silence
            sample = i < count / 2 ? random.sample() : 0.0f;
            break;
        case 7: // one sample that is not a number
            sample = i == place ? nan : random.sample();
            break;
        case 8: // one infinity
            sample = i == place ? infinity : random.sample();
            break;
        case 9: // infinities of both signs
            sample = random.oneIn(500) ? (random.oneIn(2) ? infinity : -infinity) : random.sample();
            break;
        case 10: // the greatest numbers
            sample = random.oneIn(2) ? greatest : -greatest;
            break;
        case 11: // denormals
            sample = tiniest * static_cast<float>(random.below(1000));
            break;
        case 12: // levels near the constant of the conversion
            sample = 1e-17f * random.sample();
            break;
        case 13: // any bit pattern
            sample = random.anyFloat();
            break;
        case 14: // squares that overflow in places
            sample = random.sample() * (i / 300 % 3 == 0 ? 1e19f : 1.0f);
            break;
        case 15: // equal levels in many bins
            sample = i % 64 == 0 ? 0.5f : 0.0f;
            break;
        case 16: // a few bits a sample
            sample = static_cast<float>(random.between(-2, 2)) / 4.0f;
            break;
        case 17: // bursts in silence
            sample = i / 777 % 3 == 0 ? random.sample() : 0.0f;
            break;
        case 18: // growing and growing
            sample = random.sample() *
                     std::exp(static_cast<float>(i) * 20.0f / static_cast<float>(count) - 25.0f);
            break;
        default: // the first sample alone
            sample = i == 0 ? random.sample() : 0.0f;
            break;
        }
    }
    return samples;
}

namespace
{

testing::AssertionResult noDifference(const std::string& difference)
{
    if (difference.empty()) return testing::AssertionSuccess();
    return testing::AssertionFailure() << difference;
}

} // namespace

testing::AssertionResult samePeaks(const VXS::VXLandmarkExtract& library,
                                   const plain::Extractor& twin)
{
    return noDifference(twins::differenceOfPeaks(library, twin.peaks()));
}

testing::AssertionResult sameLandmarks(VXS::VXFile& library, const plain::Recording& twin)
{
    return noDifference(twins::differenceOfLandmarks(library, twin));
}

void compareExtraction(const plain::Parameters& parameters, const Samples& samples,
                       std::uint32_t claim)
{
    SCOPED_TRACE(describe(parameters) + ", " + std::to_string(samples.size()) + " samples");
    twins::Source plainSource(samples, claim);
    plain::Extractor twin(parameters);
    plain::Recording recording(7);
    signals::SignalInput source(samples, claim);
    VXS::VXLandmarkExtract extractor(twins::toLibrary(parameters));
    VXS::VXFile file(7);

    twin.findPeaks(plainSource);
    extractor.setupFFT();
    extractor.findFreqPeaks(&source);
    ASSERT_TRUE(samePeaks(extractor, twin)) << "after finding";
    if (!twin.peaks().empty()) {
        ASSERT_TRUE(sameFloats(extractor.maskShape, twin.mask())) << "mask";
        ASSERT_TRUE(
            sameFloats(extractor.fftInput.data, twin.lastLevels().data(), twin.lastLevels().size()))
            << "levels of the last frame";
    }

    twin.prune();
    extractor.prune();
    ASSERT_TRUE(samePeaks(extractor, twin)) << "after pruning";

    twin.pair(recording);
    extractor.combine(&file);
    ASSERT_TRUE(sameLandmarks(file, recording)) << "after pairing";

    // The same extractor once more: nothing of the first run may show.
    source.rewind();
    const std::unique_ptr<VXS::VXFile> again(extractor.run(&source, 7));
    ASSERT_TRUE(samePeaks(extractor, twin)) << "after a whole run";
    ASSERT_TRUE(sameLandmarks(*again, recording)) << "after a whole run";
}

void compareExtraction(const plain::Parameters& parameters, const Samples& samples)
{
    compareExtraction(parameters, samples, static_cast<std::uint32_t>(samples.size()));
}

std::vector<std::string> exampleRecordings()
{
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(VXS_EXAMPLE_RECORDINGS)) {
        if (entry.path().extension() == ".wav") paths.push_back(entry.path().string());
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

} // namespace property
