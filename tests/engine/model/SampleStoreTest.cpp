#include "model/SampleStore.h"

#include <cmath>
#include <cstdint>
#include <vector>

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using vxlsync::SampleStore;

constexpr std::size_t blockSize = SampleStore<float>::blockSize;

template <typename Stored>
std::vector<float> part(const SampleStore<Stored>& store, std::size_t from, std::size_t count)
{
    std::vector<float> samples(count, 99.0f);
    store.copy(from, count, samples.data());
    return samples;
}

TEST(SampleStore, GivesBackFloatsAsTheyAre)
{
    const float values[] = {0.7f, -0.3f, 1e-30f};
    SampleStore<float> store;

    store.append(values, 3);

    ASSERT_EQ(store.size(), 3u);
    EXPECT_THAT(part(store, 0, 3), ElementsAre(0.7f, -0.3f, 1e-30f));
    EXPECT_THAT(part(store, 1, 1), ElementsAre(-0.3f));
}

TEST(SampleStore, KeepsEightBitsAtAnyLevelInHalfTheMemory)
{
    // Half a step of the eighth bit: 2 to the -8th of the leading one.
    constexpr float half = 1.0f / 256.0f;
    const std::vector<float> values{0.7f, -0.3f, 1e-6f, -3e-9f, 0.0f};
    SampleStore<std::uint16_t> store;

    store.append(values.data(), values.size());

    const std::vector<float> kept = part(store, 0, values.size());
    for (std::size_t i = 0; i < values.size(); ++i)
        EXPECT_LE(std::fabs(kept[i] - values[i]), half * std::fabs(values[i])) << i;
    EXPECT_LT(store.bytes(), blockSize * sizeof(float));
}

TEST(SampleStore, GoesOnAcrossTheEndOfABlock)
{
    const std::vector<float> values(blockSize - 1, 0.25f);
    const float more[] = {0.5f, 0.75f, 1.0f};
    SampleStore<float> store;
    store.append(values.data(), values.size());

    store.append(more, 3);

    EXPECT_EQ(store.size(), blockSize + 2);
    EXPECT_THAT(part(store, blockSize - 2, 4), ElementsAre(0.25f, 0.5f, 0.75f, 1.0f));
}

TEST(SampleStore, TakesNoMemoryForBlocksInWhichNothingIsHeard)
{
    const std::vector<float> zeros(3 * blockSize, 0.0f);
    const float sound = 0.5f;
    SampleStore<float> store;

    store.append(zeros.data(), zeros.size());
    store.appendSilence(blockSize + 7);
    store.append(&sound, 1);

    ASSERT_EQ(store.size(), 4 * blockSize + 8);
    EXPECT_GE(store.bytes(), blockSize * sizeof(float));
    EXPECT_LT(store.bytes(), 2 * blockSize * sizeof(float));
    EXPECT_FALSE(store.hasSound(0, 4 * blockSize));
    EXPECT_TRUE(store.hasSound(4 * blockSize - 1, 2));
    EXPECT_THAT(part(store, 4 * blockSize + 6, 2), ElementsAre(0.0f, 0.5f));
}

TEST(SampleStore, HasSilenceAfterSoundInOneBlock)
{
    const float sound = 0.5f;
    SampleStore<float> store;
    store.append(&sound, 1);

    store.appendSilence(2);
    store.append(&sound, 1);

    EXPECT_THAT(part(store, 0, 4), ElementsAre(0.5f, 0.0f, 0.0f, 0.5f));
}

TEST(SampleStore, HasNoSoundInAnEmptyRange)
{
    const float sound = 0.5f;
    SampleStore<float> store;
    store.append(&sound, 1);

    EXPECT_FALSE(store.hasSound(0, 0));
    EXPECT_TRUE(store.hasSound(0, 1));
}

TEST(SampleStore, IsEmptyAndWithoutMemoryOnceCleared)
{
    const float sound = 0.5f;
    SampleStore<float> store;
    store.append(&sound, 1);

    store.clear();

    EXPECT_EQ(store.size(), 0u);
    EXPECT_EQ(store.bytes(), 0u);
    store.append(&sound, 1);
    EXPECT_THAT(part(store, 0, 1), ElementsAre(0.5f));
}

} // namespace
