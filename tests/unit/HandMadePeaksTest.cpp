#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include "Signals.h"
#include "VXLandmarkExtract.h"

// Lists of peaks that no recording gives, on 16 bins.

namespace
{

using signals::PeakTable;
using VXS::Peak;
using VXS::VXExtractParams;
using VXS::VXLandmarkExtract;

constexpr int bins = 16;

VXExtractParams smallParams()
{
    VXExtractParams params;
    params.setFftSize(2 * bins);
    return params;
}

// What the backward pass leaves of one frame. Every bin's level in it is 0, so that what is looked
// up goes if it is below.
PeakTable pruned(const PeakTable& table)
{
    VXLandmarkExtract extractor(smallParams());
    extractor.setupFFT();
    std::fill_n(extractor.fftInput.data, bins, 0.0f);
    signals::setPeaks(extractor, table);
    extractor.prune();
    return signals::peaksOf(extractor);
}

} // namespace

TEST(HandMadePeaks, PeakBelowTheLowestBinStaysWhateverItsLevel)
{
    const PeakTable table = {{{-1, -50.0f, 0}}};

    EXPECT_EQ(table, pruned(table));
}

TEST(HandMadePeaks, PeakAboveTheHighestBinStaysWhateverItsLevel)
{
    const PeakTable table = {{{bins, -50.0f, 0}}};

    EXPECT_EQ(table, pruned(table));
}

TEST(HandMadePeaks, PeaksOfTheLowestAndTheHighestBinAreJudged)
{
    const PeakTable table = {{{0, -50.0f, 0}, {bins - 1, -50.0f, 0}}};

    EXPECT_EQ((PeakTable{{}}), pruned(table));
}

TEST(HandMadePeaks, ClearingPassesOverAFrameWithoutAList)
{
    VXLandmarkExtract extractor(smallParams());
    extractor.frames->push_back(nullptr);
    extractor.frames->push_back(new std::vector<Peak*>{new Peak{3, 1.0f, 1}});

    extractor.clearFrames();

    EXPECT_TRUE(extractor.frames->empty());
}

TEST(HandMadePeaks, SettingUpAgainClearsWhatTheTransformWrites)
{
    VXLandmarkExtract extractor(smallParams());
    extractor.setupFFT();
    const int count = extractor.fftOutput.count();
    std::fill_n(extractor.fftOutput.data, count, 1.0f);

    extractor.setupFFT();

    const std::vector<float> silence(static_cast<std::size_t>(count), 0.0f);
    EXPECT_EQ(silence,
              std::vector<float>(extractor.fftOutput.data, extractor.fftOutput.data + count));
}

// At distance 0 the deviations are 0 / 0, further off they are infinite and the bell is 0.
TEST(HandMadePeaks, MaskOfNoWidthIsNotANumberAtItsMiddleAndFullBesideIt)
{
    VXExtractParams params = smallParams();
    params.maskWidth = 0.0f;
    VXLandmarkExtract extractor(params);

    extractor.fillMaskShape();

    ASSERT_EQ(16u, extractor.maskShape.size());
    EXPECT_TRUE(std::isnan(extractor.maskShape[0]));
    EXPECT_EQ(-40.0f, extractor.maskShape[1]);
}

// Two lines of 0 dB mask bin 105 between them at 40 * exp(-0.5 * (5 / 25)^2) - 40 = -0.79 dB, the
// lowest near them. The mask sinks by 100 dB a frame, so in the fifth frame it stands below the
// -313 dB of silence everywhere, and deepest below its neighbours at bin 105; further off the masks
// rise or are level.
TEST(HandMadePeaks, SilenceIsAPeakWhereTheSunkenMaskIsLowest)
{
    VXExtractParams params;
    params.setHopSize(512);
    params.initialFrames = 0;
    params.thresholdDecay = 100.0f;
    params.peakFloor = -1000.0f;
    signals::Samples samples = signals::mix(signals::tone(100, 1.0f / 256.0f, 512),
                                            signals::tone(110, 1.0f / 256.0f, 512));
    samples.resize(5 * 512);
    signals::SignalInput input(samples);
    VXLandmarkExtract extractor(params);

    extractor.setupFFT();
    extractor.findFreqPeaks(&input);

    EXPECT_EQ((std::vector<int>{}), signals::binsOf(extractor, 3));
    EXPECT_EQ((std::vector<int>{105}), signals::binsOf(extractor, 4));
}
