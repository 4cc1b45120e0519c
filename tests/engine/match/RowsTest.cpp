#include "match/Rows.h"

#include <algorithm>
#include <cmath>

#include <gtest/gtest.h>

#include "Measuring.h"
#include "Signals.h"
#include "match/Band.h"

namespace
{

using measuring::preparedOf;
using signals::noise;
using signals::part;
using signals::rate;
using vxlsync::Line;
using vxlsync::Prepared;
using vxlsync::Rows;
using vxlsync::Windows;

Rows rowsOf(const Prepared& first, const Prepared& second, const Windows& windows, const Line& line,
            bool followsClock = false)
{
    const vxlsync::Interrupt never;
    vxlsync::AlignWorkspace work;
    return vxlsync::correlateWindows(first, second, windows, line,
                                     {80, vxlsync::highestFrequency, followsClock}, never, work);
}

// Three windows of a second.
Windows threeWindows()
{
    Windows windows;
    windows.overlap = {0.0, 4.0};
    windows.seconds = 1.0;
    windows.times = {1.0, 2.0, 3.0};
    windows.weights = {1.0, 0.5, 1.0};
    return windows;
}

std::size_t greatestOf(const Rows& rows, std::size_t index)
{
    const float* row = rows.row(index);
    return static_cast<std::size_t>(std::max_element(row, row + rows.width()) - row);
}

TEST(Rows, StandAtTheLineWhereTheSoundIsTheSame)
{
    const Prepared first = preparedOf(noise(1, 4 * rate));

    const Rows rows = rowsOf(first, first, threeWindows(), {2.0, 0.0, 0.0, 1.0});

    ASSERT_EQ(rows.count(), 3u);
    ASSERT_EQ(rows.width(), 161u);
    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_EQ(greatestOf(rows, i), 80u);
        // All phases agree, but for the fades.
        EXPECT_NEAR(rows.row(i)[80], 1.0, 0.01);
    }
    ASSERT_EQ(rows.bands.size(), 35u);
}

TEST(Rows, AreUpsideDownWhereTheLineIs)
{
    const Prepared first = preparedOf(noise(1, 4 * rate));

    const Rows rows = rowsOf(first, first, threeWindows(), {2.0, 0.0, 0.0, -1.0});

    EXPECT_LT(rows.row(0)[80], -0.8f);
}

TEST(Rows, TellHowFarTheSoundIsFromTheLine)
{
    // What stands at t in the first stands 8000 samples earlier in the second; the line is 5.25
    // samples below that.
    const std::vector<float> event = noise(1, 6 * rate);
    const Prepared first = preparedOf(part(event, 0, 5 * rate));
    const Prepared second = preparedOf(part(event, rate, 5 * rate));
    Windows windows = threeWindows();
    windows.times = {2.0, 3.0, 4.0};

    const Rows rows = rowsOf(first, second, windows, {2.0, 1.0 - 5.25 / rate, 0.0, 1.0});

    const vxlsync::RowPeak peak = vxlsync::peakOf(rows.row(1), 0, 160);
    // A parabola through a peak of such a band misses by up to a tenth of a sample.
    EXPECT_NEAR(rows.secondsAt(peak.position) * rate, 5.25, 0.1);
}

TEST(Rows, CountTheBinsOfEachBand)
{
    const Prepared first = preparedOf(noise(1, 4 * rate));

    const Rows rows = rowsOf(first, first, threeWindows(), {2.0, 0.0, 0.0, 1.0});

    // The transform has 8192 samples, 1.024 bins a hertz: 102 or 103 bins a band. Weights of 1, 0.5
    // and 1 are 2.25 squared and 2.5 in sum, which is reached where all phases agree.
    for (const vxlsync::BandAgreement& band : rows.bands) {
        EXPECT_NEAR(band.squares, 2.25 * 102.4, 2.25);
        EXPECT_GT(band.sum, 0.7 * 2.5 * 102.4);
        EXPECT_LT(band.sum, 2.5 * 103.0);
    }
    // sqrt(8192 / 8000 * 1.1 / (2 * 3584))
    EXPECT_NEAR(rows.noise, 0.01253, 0.0001);
}

TEST(Rows, GiveUpAFifthOfAWindowForASmallTransformAndNoMore)
{
    // 1000 samples in a transform of 1024, of which the margins take 224 and 226. With 798 left it
    // is one of 2048.
    const Prepared first = preparedOf(noise(1, 4 * rate));
    Windows windows = threeWindows();
    windows.seconds = 0.125;
    const vxlsync::Interrupt never;
    vxlsync::AlignWorkspace work;
    const auto squaresWith = [&](std::int64_t reach) {
        const Rows rows = vxlsync::correlateWindows(first, first, windows, {2.0, 0.0, 0.0, 1.0},
                                                    {reach, 2500.0, false}, never, work);
        EXPECT_EQ(greatestOf(rows, 1), static_cast<std::size_t>(reach));
        double squares = 0.0;
        for (const vxlsync::BandAgreement& band : rows.bands)
            squares += band.squares;
        return squares;
    };

    // Weights of 2.25 squared in sum. The bins from 100 Hz to below 2500 Hz: 13 to 319 of 1024, and
    // 26 to 639 of 2048.
    EXPECT_DOUBLE_EQ(squaresWith(111), 2.25 * 307.0);
    EXPECT_DOUBLE_EQ(squaresWith(112), 2.25 * 614.0);
}

TEST(Rows, LeaveTheBinAtTheTopOfTheLastBandOut)
{
    // Of 8192 samples 2500 Hz is bin 2560, the first of a band that is none.
    const Prepared first = preparedOf(noise(1, 4 * rate));
    const vxlsync::Interrupt never;
    vxlsync::AlignWorkspace work;

    const Rows rows = vxlsync::correlateWindows(first, first, threeWindows(), {2.0, 0.0, 0.0, 1.0},
                                                {80, 2500.0, false}, never, work);

    EXPECT_EQ(rows.bands.size(), 24u);
    // 102 bins from 2458 on.
    EXPECT_DOUBLE_EQ(rows.bands.back().squares, 2.25 * 102.0);
}

TEST(Rows, OfSilenceAreZero)
{
    // The second is silent from 1.5 s on for longer than a block: the third window is.
    std::vector<float> samples = noise(1, 4 * rate);
    std::fill(samples.begin() + rate, samples.end(), 0.0f);
    const Prepared first = preparedOf(noise(1, 4 * rate));

    for (const bool followsClock : {false, true}) {
        const Rows rows = rowsOf(first, preparedOf(samples), threeWindows(), {2.0, 0.0, 10e-6, 1.0},
                                 followsClock);
        const Rows turned = rowsOf(preparedOf(samples), first, threeWindows(),
                                   {2.0, 0.0, 10e-6, 1.0}, followsClock);

        for (std::size_t i = 0; i < rows.width(); ++i) {
            EXPECT_EQ(rows.row(2)[i], 0.0f);
            EXPECT_EQ(turned.row(2)[i], 0.0f);
        }
        EXPECT_NE(rows.row(0)[80], 0.0f);
    }
}

TEST(Rows, AreSharpAlongADriftingClock)
{
    // 150 millionths blur a window of 2 s by 2.4 samples.
    const Prepared first = preparedOf(signals::chirps(0.0, 8 * rate));
    const Prepared second = preparedOf(signals::chirps(150.0, 8 * rate));
    Windows windows = threeWindows();
    windows.seconds = 2.0;
    windows.times = {2.0, 4.0, 6.0};
    const Line line{0.0, 0.0, 150e-6, 1.0};

    const Rows straight = rowsOf(first, second, windows, line);
    const Rows along = rowsOf(first, second, windows, line, true);

    for (std::size_t i = 0; i < 3; ++i) {
        EXPECT_NEAR(static_cast<double>(greatestOf(along, i)), 80.0, 1.0);
        EXPECT_GT(along.row(i)[80], straight.row(i)[80]);
    }
}

TEST(Rows, CanBeEndedAtAnyWindow)
{
    const Prepared first = preparedOf(noise(1, 4 * rate));
    for (const int window : {1, 3}) {
        const vxlsync::Interrupt interrupt(measuring::endingAt(window));
        vxlsync::AlignWorkspace work;
        EXPECT_THROW(vxlsync::correlateWindows(first, first, threeWindows(), {},
                                               {80, 3600.0, false}, interrupt, work),
                     vxlsync::Cancelled)
            << window;
    }
}

TEST(Rows, HaveTheirPeakBetweenTwoLags)
{
    // 1 - (x - 2.25)^2 at whole x.
    const float row[] = {-4.0625f, -0.5625f, 0.9375f, 0.4375f, -2.0625f};

    const vxlsync::RowPeak peak = vxlsync::peakOf(row, 0, 4);

    EXPECT_NEAR(peak.position, 2.25, 1e-6);
    EXPECT_NEAR(peak.value, 1.0, 1e-6);
}

TEST(Rows, HaveNoPeakBeyondTheirEnds)
{
    const float row[] = {3.0f, 2.0f, 1.0f, 2.0f, 4.0f};

    EXPECT_EQ(vxlsync::peakOf(row, 0, 2).position, 0.0);
    EXPECT_EQ(vxlsync::peakOf(row, 0, 4).position, 4.0);
    EXPECT_EQ(vxlsync::peakOf(row, 0, 4).value, 4.0);
}

} // namespace
