#include "match/Mix.h"

#include <cmath>

#include <gmock/gmock.h>

#include "Measuring.h"
#include "Signals.h"

namespace
{

using measuring::preparedOf;
using signals::noise;
using signals::part;
using signals::rate;
using vxlsync::Gathering;
using vxlsync::Prepared;

std::vector<float> samplesOf(const Prepared& prepared, std::size_t from, std::size_t count)
{
    std::vector<float> samples(count);
    prepared.samples.copy(from, count, samples.data());
    return samples;
}

// Of two stretches of one length, 1 for the same but for its loudness.
double likeness(const std::vector<float>& left, const std::vector<float>& right)
{
    double product = 0.0;
    double leftSquares = 0.0;
    double rightSquares = 0.0;
    for (std::size_t i = 0; i < left.size(); ++i) {
        product += static_cast<double>(left[i]) * static_cast<double>(right[i]);
        leftSquares += static_cast<double>(left[i]) * static_cast<double>(left[i]);
        rightSquares += static_cast<double>(right[i]) * static_cast<double>(right[i]);
    }
    return product / std::sqrt(leftSquares * rightSquares);
}

vxlsync::Alignment lineOf(double offset)
{
    vxlsync::Alignment line;
    line.offset = offset;
    return line;
}

TEST(Mix, LaysMembersOnOneTimeLine)
{
    const std::vector<float> event = noise(1, 30 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(preparedOf(part(event, 12 * rate, 18 * rate)));
    recordings.push_back(preparedOf(part(event, 0, 20 * rate)));
    Gathering gathering({18.0, 20.0});
    gathering.join(0, 1, lineOf(-12.0));
    const vxlsync::Interrupt never;

    const vxlsync::Mix mix = vxlsync::mixOf(recordings, gathering, 0, never);

    EXPECT_DOUBLE_EQ(mix.start, -12.0);
    EXPECT_NEAR(mix.sound.seconds(), 30.0, 0.001);
    const Prepared whole = preparedOf(event);
    // Of the one alone, of both, and of the other alone, away from the fades.
    for (const std::size_t second : {3u, 15u, 25u}) {
        EXPECT_GT(likeness(samplesOf(mix.sound, second * rate, 2 * rate),
                           samplesOf(whole, second * rate, 2 * rate)),
                  0.99);
    }
}

TEST(Mix, HearsMoreThanAnyMember)
{
    const std::vector<float> event = noise(1, 10 * rate);
    std::vector<Prepared> recordings;
    Gathering gathering(std::vector<double>(4, 10.0));
    for (std::uint32_t i = 0; i < 4; ++i) {
        recordings.push_back(preparedOf(signals::mixed(event, noise(2 + i, 10 * rate), 1.0f)));
        if (i > 0) gathering.join(0, i, lineOf(0.0));
    }
    const vxlsync::Interrupt never;

    const vxlsync::Mix mix = vxlsync::mixOf(recordings, gathering, 0, never);

    const std::vector<float> heard = samplesOf(preparedOf(event), rate, 8 * rate);
    // Of one with as much noise as sound, 1 / sqrt(2); of four of them, 1 / sqrt(1 + 1 / 4).
    EXPECT_NEAR(likeness(samplesOf(recordings[0], rate, 8 * rate), heard), 0.71, 0.02);
    EXPECT_NEAR(likeness(samplesOf(mix.sound, rate, 8 * rate), heard), 0.89, 0.02);
}

TEST(Mix, IsNoLouderWhereMoreWereThere)
{
    const std::vector<float> event = noise(1, 20 * rate);
    std::vector<Prepared> recordings;
    recordings.push_back(preparedOf(event));
    recordings.push_back(preparedOf(part(event, 10 * rate, 10 * rate)));
    Gathering gathering({20.0, 10.0});
    gathering.join(0, 1, lineOf(10.0));
    const vxlsync::Interrupt never;

    const Prepared sound = vxlsync::mixOf(recordings, gathering, 0, never).sound;

    const auto squares = [&](std::size_t second) {
        double sum = 0.0;
        for (const float sample : samplesOf(sound, second * rate, 4 * rate))
            sum += static_cast<double>(sample) * static_cast<double>(sample);
        return sum;
    };
    EXPECT_NEAR(squares(14) / squares(4), 1.0, 0.1);
}

TEST(Mix, LeavesSilentMembersOut)
{
    std::vector<Prepared> recordings;
    recordings.push_back(preparedOf(std::vector<float>(5 * rate, 0.0f)));
    const vxlsync::Interrupt never;

    const vxlsync::Mix mix = vxlsync::mixOf(recordings, Gathering({5.0}), 0, never);

    EXPECT_FALSE(mix.sound.hasSound());
}

TEST(Mix, CoarseKeepsWhatFitsAQuarterOfTheRate)
{
    const double pi = std::acos(-1.0);
    const auto tone = [&](double frequency) {
        std::vector<float> samples(4 * rate);
        for (std::size_t i = 0; i < samples.size(); ++i)
            samples[i] =
                static_cast<float>(std::sin(2.0 * pi * frequency * static_cast<double>(i) / rate));
        return preparedOf(samples);
    };
    const vxlsync::Interrupt never;
    const auto loudness = [](const Prepared& sound) {
        double sum = 0.0;
        for (const float sample : samplesOf(sound, sound.samples.size() / 4, 2000))
            sum += static_cast<double>(sample) * static_cast<double>(sample);
        return sum / 2000.0;
    };

    const Prepared low = vxlsync::coarse(tone(500.0), never);
    const Prepared high = vxlsync::coarse(tone(1300.0), never);

    EXPECT_EQ(low.rate, 2000);
    EXPECT_EQ(low.samples.size(), 8000u);
    // Half the square of the amplitude.
    EXPECT_NEAR(loudness(low), 0.5, 0.02);
    // 1300 Hz would fold back to 700 Hz.
    EXPECT_LT(loudness(high), 1e-4);
}

} // namespace
