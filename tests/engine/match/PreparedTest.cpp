#include "match/Prepared.h"

#include <gtest/gtest.h>

#include "Measuring.h"
#include "Signals.h"

namespace
{

using measuring::preparedOf;
using signals::rate;
using vxlsync::Prepared;

TEST(Prepared, KnowsItsEnergyByTenths)
{
    // A tone for a second, half as loud for another, and half a tenth more.
    std::vector<float> samples = signals::tone(1000.0, 2 * rate + 400);
    for (std::size_t i = rate; i < samples.size(); ++i)
        samples[i] *= 0.5f;

    const Prepared prepared = preparedOf(samples);

    ASSERT_EQ(prepared.energy.size(), 20u);
    // 0.3 squared, halved; away from the fades and the change.
    EXPECT_NEAR(prepared.energy[5], 0.045f, 0.0005f);
    EXPECT_NEAR(prepared.energy[14], 0.01125f, 0.0005f);
    EXPECT_DOUBLE_EQ(prepared.seconds(), 2.05);
}

TEST(Prepared, HasTheFloorOfItsQuietestTwentieth)
{
    // Nine tenths of a second are soft, 18 seconds are loud.
    std::vector<float> samples = signals::tone(1000.0, 20 * rate);
    for (std::size_t i = 10 * rate; i < 12 * rate; ++i)
        samples[i] *= 0.01f;

    const Prepared prepared = preparedOf(samples);

    // A hundredth of 0.3, squared and halved.
    EXPECT_NEAR(prepared.floor, 4.5e-6, 0.1e-6);
    EXPECT_EQ(preparedOf({}).floor, 0.0);
}

TEST(Prepared, HasNoEnergyWhereItIsSilent)
{
    vxlsync::SampleStore<float> silence;
    silence.appendSilence(36000u * rate);
    const vxlsync::Interrupt never;

    const Prepared prepared = vxlsync::prepare(silence, rate, never);

    EXPECT_EQ(prepared.energy, std::vector<float>(360000, 0.0f));
    EXPECT_FALSE(prepared.hasSound());
    EXPECT_LE(prepared.samples.bytes(), 2 * silence.bytes());
}

TEST(Prepared, TakesHalfFloatsAsWell)
{
    // A second of sound at 16 kHz before and behind ten minutes of silence.
    const std::vector<float> sound = signals::tone(1000.0, 16000);
    vxlsync::SampleStore<std::uint16_t> samples;
    samples.append(sound.data(), sound.size());
    samples.appendSilence(600u * 16000u);
    samples.append(sound.data(), sound.size());
    const vxlsync::Interrupt never;

    const Prepared prepared = vxlsync::prepare(samples, 16000, never);

    EXPECT_DOUBLE_EQ(prepared.seconds(), 602.0);
    ASSERT_EQ(prepared.energy.size(), 6020u);
    EXPECT_NEAR(prepared.energy[5], 0.045f, 0.001f);
    EXPECT_EQ(prepared.energy[3000], 0.0f);
    EXPECT_NEAR(prepared.energy[6015], 0.045f, 0.001f);
}

TEST(Prepared, IsTheSameForAllAtOnce)
{
    std::vector<vxlsync::SampleStore<float>> stores;
    for (const std::uint32_t seed : {1u, 2u, 3u})
        stores.push_back(signals::stored(signals::noise(seed, rate)));
    vxlsync::Run run(2, measuring::plenty, {});

    const std::vector<Prepared> prepared = vxlsync::prepareAll(std::move(stores), run);

    ASSERT_EQ(prepared.size(), 3u);
    for (std::uint32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(signals::samplesOf(prepared[i].samples),
                  signals::samplesOf(preparedOf(signals::noise(i + 1, rate)).samples));
        EXPECT_EQ(prepared[i].rate, rate);
    }
}

TEST(Prepared, CanBeEnded)
{
    vxlsync::Run run(2, measuring::plenty, measuring::cancelling());
    std::vector<vxlsync::SampleStore<float>> stores(3);
    for (auto& store : stores)
        store.appendSilence(36000u * rate);

    EXPECT_THROW(vxlsync::prepareAll(std::move(stores), run), vxlsync::Cancelled);
}

} // namespace
