#include "match/Windows.h"

#include <cmath>

#include <gtest/gtest.h>

#include "Measuring.h"
#include "Signals.h"

namespace
{

using vxlsync::Prepared;
using vxlsync::Windows;

// A recording of which only the loudness is known, by tenths of a second.
Prepared loudness(std::vector<float> energy, double floor)
{
    Prepared prepared;
    prepared.rate = signals::rate;
    prepared.samples.appendSilence(energy.size() * signals::rate / 10);
    prepared.energy = std::move(energy);
    prepared.floor = floor;
    return prepared;
}

Prepared loudFor(std::size_t seconds)
{
    return loudness(std::vector<float>(10 * seconds, 1.0f), 0.0);
}

TEST(Windows, AreLongerWhereMoreTimeIsShared)
{
    // Below 8 s one second each, below 20 s two, else four.
    EXPECT_EQ(vxlsync::placeWindows(loudFor(7), loudFor(7), 0.0, 40).seconds, 1.0);
    EXPECT_EQ(vxlsync::placeWindows(loudFor(8), loudFor(9), 0.0, 40).seconds, 2.0);
    EXPECT_EQ(vxlsync::placeWindows(loudFor(19), loudFor(19), 0.0, 40).seconds, 2.0);
    EXPECT_EQ(vxlsync::placeWindows(loudFor(20), loudFor(20), 0.0, 40).seconds, 4.0);
}

TEST(Windows, LieEvenlyOverTheSharedTimeAndOverlapByHalf)
{
    // 4 s to 10 s are shared: windows of 1 s from 4 s on, every half second, the last from 9 s on.
    const Windows windows = vxlsync::placeWindows(loudFor(10), loudFor(20), 4.0, 40);

    EXPECT_EQ(windows.overlap.start, 4.0);
    EXPECT_EQ(windows.overlap.end, 10.0);
    ASSERT_EQ(windows.count(), 11u);
    EXPECT_DOUBLE_EQ(windows.times.front(), 4.5);
    EXPECT_DOUBLE_EQ(windows.times[1], 5.0);
    EXPECT_DOUBLE_EQ(windows.times.back(), 9.5);
    EXPECT_DOUBLE_EQ(windows.start(1), 4.5);
}

TEST(Windows, AreNotMoreThanWanted)
{
    const Windows windows = vxlsync::placeWindows(loudFor(100), loudFor(100), 0.0, 3);

    ASSERT_EQ(windows.count(), 3u);
    EXPECT_DOUBLE_EQ(windows.times[0], 2.0);
    EXPECT_DOUBLE_EQ(windows.times[1], 50.0);
    EXPECT_DOUBLE_EQ(windows.times[2], 98.0);
    EXPECT_DOUBLE_EQ(vxlsync::placeWindows(loudFor(100), loudFor(100), 0.0, 1).times[0], 50.0);
}

TEST(Windows, CountByWhatBothHaveAboveTheirNoise)
{
    // The second is silent in the first half: of 3 windows one counts, one half of it does.
    std::vector<float> energy(20, 0.0f);
    std::fill(energy.begin() + 10, energy.end(), 1.0f);

    const Windows windows = vxlsync::placeWindows(loudness(std::vector<float>(20, 2.0f), 1.0),
                                                  loudness(energy, 0.0), 0.0, 40);

    ASSERT_EQ(windows.count(), 3u);
    // Half of the first's energy is noise: 0, 0.5 and 0.5, then against the greatest, with at least
    // 0.02.
    EXPECT_DOUBLE_EQ(windows.weights[0], 0.02);
    EXPECT_DOUBLE_EQ(windows.weights[1], 1.0);
    EXPECT_DOUBLE_EQ(windows.weights[2], 1.0);
    EXPECT_DOUBLE_EQ(windows.activity, 1.0 / 3.0);
    EXPECT_DOUBLE_EQ(windows.totalWeight(), 2.02);
}

TEST(Windows, AllCountTheSameWhereNothingIsHeard)
{
    const Windows windows =
        vxlsync::placeWindows(loudness(std::vector<float>(20, 1.0f), 2.0), loudFor(2), 0.0, 40);

    EXPECT_EQ(windows.weights, std::vector<double>(3, 0.02));
    EXPECT_EQ(windows.activity, 0.0);
}

TEST(Windows, CountTheSecondsThatAreHeardInBoth)
{
    // Both have noise of 1. A click of 0.1 s in the first, at 1 s, has 9 parts of 10 above it, and
    // so has the second, which is loud from 0.5 s on.
    std::vector<float> click(40, 1.0f);
    click[10] = 10.0f;
    std::vector<float> music(40, 1.0f);
    std::fill(music.begin() + 5, music.end(), 10.0f);

    const Windows windows =
        vxlsync::placeWindows(loudness(click, 1.0), loudness(music, 1.0), 0.0, 40);

    EXPECT_NEAR(windows.heardSeconds, 0.1 * 0.9 * 0.9, 1e-7);
    // Seen from 0.8 s on, the first's click falls on the second's noise at 0.2 s.
    EXPECT_EQ(
        vxlsync::placeWindows(loudness(click, 1.0), loudness(music, 1.0), 0.8, 40).heardSeconds,
        0.0);
}

TEST(Windows, HearNothingBeyondTheKnownLoudness)
{
    // Of 10 s that are shared the second's loudness is known for one.
    Prepared second = loudFor(1);
    second.samples.appendSilence(9 * signals::rate);

    EXPECT_NEAR(vxlsync::placeWindows(loudFor(10), second, 0.0, 40).heardSeconds, 1.0, 1e-9);
}

TEST(Windows, BeyondTheKnownLoudnessAreSilent)
{
    // The energy of the second ends before its samples do.
    Prepared second = loudFor(1);
    second.samples.appendSilence(9 * signals::rate);

    EXPECT_EQ(vxlsync::placeWindows(loudFor(10), second, 0.0, 40).weights.back(), 0.02);
}

TEST(Windows, ThatOverlapAddUpToMoreByChance)
{
    Windows windows;
    windows.weights = {1.0, 0.5};

    EXPECT_DOUBLE_EQ(vxlsync::chanceOfSum(windows), std::sqrt(1.25 * 1.5));
}

TEST(Windows, HaveNoVoiceInAPause)
{
    vxlsync::AlignmentWindow window;
    window.weight = 0.1;
    EXPECT_EQ(vxlsync::voiceOf(window), 0.0);
    window.weight = 0.6;
    EXPECT_DOUBLE_EQ(vxlsync::voiceOf(window), 0.5);
}

} // namespace
