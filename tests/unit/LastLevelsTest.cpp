// The levels of the last frame, from which the backward pass starts: what leaves them in place, and
// what the opening leaves there instead.
#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <stdexcept>
#include <vector>

#include <gtest/gtest.h>

#include "Signals.h"
#include "VXFile.h"
#include "VXLandmarkExtract.h"

namespace
{

using signals::Samples;
using VXS::VXExtractParams;
using VXS::VXFile;
using VXS::VXLandmarkExtract;

// Noise that gets louder six times, a tenth of a second each, and begins anew.
Samples risingNoise()
{
    Samples samples(80000);
    std::uint32_t state = 1;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        state = state * 1664525u + 1013904223u;
        const auto value = static_cast<float>(static_cast<std::int32_t>(state >> 16u) - 32768);
        samples[i] = value / 65536.0f * static_cast<float>(i / 800 % 7) / 200.0f;
    }
    return samples;
}

// Runs until the source throws, which is in its read of the given number, from 1.
void runUpTo(VXLandmarkExtract& extractor, int lastRead)
{
    signals::SignalInput input(risingNoise());
    input.throwIn("read_mono", lastRead);
    EXPECT_THROW(delete extractor.run(&input, 1), std::domain_error);
}

std::size_t countPeaks(const VXLandmarkExtract& extractor)
{
    std::size_t count = 0;
    for (const auto& list : signals::peaksOf(extractor))
        count += list.size();
    return count;
}

Samples lastLevelsOf(const VXLandmarkExtract& extractor)
{
    return Samples(extractor.fftInput.data, extractor.fftInput.data + 256);
}

// Of the frame that ends with the given block of 256 samples, from 0.
Samples levelsAt(std::ptrdiff_t block)
{
    const Samples sound = risingNoise();
    return signals::levelsOf(
        Samples(sound.begin() + (block - 1) * 256, sound.begin() + (block + 1) * 256));
}

} // namespace

// Loud frames follow the last one of each rise, so the backward pass has found all it can find.
TEST(LastLevels, PruningTwiceFindsNoMore)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    signals::SignalInput input(risingNoise());
    const std::unique_ptr<VXFile> file(extractor.run(&input, 1));
    const signals::PeakTable once = signals::peaksOf(extractor);

    extractor.prune();

    EXPECT_EQ(327u, countPeaks(extractor));
    EXPECT_EQ(once, signals::peaksOf(extractor));
}

TEST(LastLevels, StayWhenTheTransformIsSetUpAgain)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    signals::SignalInput input(risingNoise());
    const std::unique_ptr<VXFile> file(extractor.run(&input, 1));
    const signals::PeakTable once = signals::peaksOf(extractor);
    const Samples levels = lastLevelsOf(extractor);

    extractor.setupFFT();
    extractor.prune();

    EXPECT_EQ(levels, lastLevelsOf(extractor));
    EXPECT_EQ(once, signals::peaksOf(extractor));
}

// The opening reads 10 times, so the 190th read of the pass throws, and frame 188 is the last.
TEST(LastLevels, AreThereWhenASourceThrowsInThePass)
{
    VXLandmarkExtract extractor{VXExtractParams()};

    runUpTo(extractor, 200);

    ASSERT_EQ(189u, extractor.frames->size());
    EXPECT_EQ(levelsAt(188), lastLevelsOf(extractor));
    extractor.prune();
    EXPECT_EQ(192u, countPeaks(extractor));
}

TEST(LastLevels, AreZeroBeforeTheFirstFrame)
{
    VXLandmarkExtract extractor{VXExtractParams()};

    runUpTo(extractor, 11);

    EXPECT_EQ(Samples(256, 0.0f), lastLevelsOf(extractor));
}

// The opening works on magnitudes.
TEST(LastLevels, AreMagnitudesWhenASourceThrowsInTheOpening)
{
    VXLandmarkExtract extractor{VXExtractParams()};

    runUpTo(extractor, 10);

    Samples levels = lastLevelsOf(extractor);
    EXPECT_LT(0.0f, *std::max_element(levels.begin(), levels.end()));
    for (float& level : levels)
        level = extractor.dB(level);
    EXPECT_EQ(levelsAt(8), levels);
}

TEST(LastLevels, OfTheRecordingBeforeStayWhenTheFirstReadThrows)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    runUpTo(extractor, 200);

    runUpTo(extractor, 1);

    EXPECT_EQ(levelsAt(188), lastLevelsOf(extractor));
}
