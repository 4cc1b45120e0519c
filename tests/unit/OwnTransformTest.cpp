#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include <gtest/gtest.h>

#include "vxaccelerate/transform.h"

// What the provider beside the interface answers to calls without their arguments.

namespace
{

using namespace vxaccelerate;

constexpr unsigned int shortOrder = 4;
constexpr unsigned int longOrder = 9;

// A state with room for its work and for what it transforms.
class OwnTransform : public testing::Test
{
protected:
    void init(unsigned int order)
    {
        ASSERT_EQ(0, transform::FFTInit(&state, order));
        unsigned int bytes = 0;
        ASSERT_EQ(0, transform::FFTGetBufSize(state, &bytes));
        buffer.resize(bytes);
        samples.assign(std::size_t{1} << order, 1.0f);
        output.assign(samples.size(), untouched);
    }

    ~OwnTransform() override { transform::FFTFree(state); }

    bool isUntouched() const { return output == std::vector<float>(output.size(), untouched); }

    static constexpr float untouched = -77.0f;
    FFTState_Float* state = nullptr;
    std::vector<unsigned char> buffer;
    std::vector<float> samples;
    std::vector<float> output;
};

} // namespace

TEST_F(OwnTransform, InitWithoutAPlaceForTheStateAnswersOne)
{
    EXPECT_EQ(1, transform::FFTInit(nullptr, longOrder));
}

TEST_F(OwnTransform, InitAnswersOneBelowItsLeastOrder)
{
    EXPECT_EQ(1, transform::FFTInit(&state, 2));
    EXPECT_EQ(nullptr, state);
}

TEST_F(OwnTransform, InitAnswersOneAboveItsGreatestOrder)
{
    EXPECT_EQ(1, transform::FFTInit(&state, 32));
    EXPECT_EQ(nullptr, state);
}

TEST_F(OwnTransform, InitServesItsLeastOrder)
{
    EXPECT_EQ(0, transform::FFTInit(&state, 3));
    EXPECT_NE(nullptr, state);
}

TEST_F(OwnTransform, BufferSizeWithoutAPlaceForItAnswersOne)
{
    init(longOrder);

    EXPECT_EQ(1, transform::FFTGetBufSize(state, nullptr));
}

TEST_F(OwnTransform, BufferSizeOfNoStateAnswersOne)
{
    unsigned int bytes = 5;

    EXPECT_EQ(1, transform::FFTGetBufSize(nullptr, &bytes));
}

TEST_F(OwnTransform, TransformWithoutInputAnswersOneAndWritesNothing)
{
    init(longOrder);

    EXPECT_EQ(1, transform::FFTFwd(nullptr, output.data(), state, buffer.data()));
    EXPECT_TRUE(isUntouched());
}

TEST_F(OwnTransform, TransformWithoutOutputAnswersOne)
{
    init(longOrder);

    EXPECT_EQ(1, transform::FFTFwd(samples.data(), nullptr, state, buffer.data()));
}

TEST_F(OwnTransform, TransformWithoutStateAnswersOne)
{
    init(longOrder);

    EXPECT_EQ(1, transform::FFTFwd(samples.data(), output.data(), nullptr, buffer.data()));
    EXPECT_TRUE(isUntouched());
}

TEST_F(OwnTransform, LongTransformWithoutBufferAnswersOneAndWritesNothing)
{
    init(longOrder);

    EXPECT_EQ(1, transform::FFTFwd(samples.data(), output.data(), state, nullptr));
    EXPECT_TRUE(isUntouched());
}

TEST_F(OwnTransform, LongTransformAnswersZero)
{
    init(longOrder);

    EXPECT_EQ(0, transform::FFTFwd(samples.data(), output.data(), state, buffer.data()));
    EXPECT_EQ(512.0f, output[0]);
}

TEST_F(OwnTransform, ShortTransformNeedsNoBuffer)
{
    init(shortOrder);

    EXPECT_EQ(0, transform::FFTFwd(samples.data(), output.data(), state, nullptr));
    EXPECT_EQ(16.0f, output[0]);
}

// The greatest transforms work in a block of their own. A constant is all in bin 0: 2^20 ones.
TEST_F(OwnTransform, TransformOfAMillionSamplesNeedsNoBuffer)
{
    init(20);

    EXPECT_EQ(0u, buffer.size());
    EXPECT_EQ(0, transform::FFTFwd(samples.data(), output.data(), state, nullptr));
    EXPECT_EQ(1048576.0f, output[0]);
    EXPECT_EQ(0.0f, output[2]);
}

TEST_F(OwnTransform, TransformOfHalfAMillionSamplesTakesABuffer)
{
    init(19);

    EXPECT_NE(0u, buffer.size());
    EXPECT_EQ(1, transform::FFTFwd(samples.data(), output.data(), state, nullptr));
    EXPECT_EQ(0, transform::FFTFwd(samples.data(), output.data(), state, buffer.data()));
    EXPECT_EQ(524288.0f, output[0]);
}

// An impulse in the second sample gives the factors themselves: bin k is exp(-2 pi i k / n), to
// which nothing but zeros is added. Each is the exact value rounded once.
TEST_F(OwnTransform, FactorsAreTheExactOnesRoundedOnce)
{
    constexpr double twoPi = 6.283185307179586476925;
    for (const unsigned int order : {5u, 9u, 20u}) {
        SCOPED_TRACE(order);
        transform::FFTFree(state);
        init(order);
        std::fill(samples.begin(), samples.end(), 0.0f);
        samples[1] = 1.0f;

        transform::FFTFwd(samples.data(), output.data(), state, buffer.data());

        const std::size_t size = samples.size();
        for (std::size_t k = 1; k < size / 2; ++k) {
            const double angle = twoPi * static_cast<double>(k) / static_cast<double>(size);
            // No angle written in binary is exactly a quarter of the circle.
            const double cosine = 4 * k == size ? 0.0 : std::cos(angle);
            ASSERT_EQ(static_cast<float>(cosine), output[2 * k]) << k;
            ASSERT_EQ(static_cast<float>(-std::sin(angle)), output[2 * k + 1]) << k;
        }
    }
}

TEST_F(OwnTransform, FreeAnswersZero)
{
    init(longOrder);

    EXPECT_EQ(0, transform::FFTFree(state));

    state = nullptr;
}
