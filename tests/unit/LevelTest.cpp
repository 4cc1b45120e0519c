#include <algorithm>
#include <cmath>
#include <cstdint>
#include <initializer_list>
#include <limits>
#include <vector>

#include <gtest/gtest.h>

#include "VXLandmarkExtract.h"

// The conversion to dB and the spreading of an envelope.

namespace
{

using VXS::VXExtractParams;
using VXS::VXLandmarkExtract;

class Smooth : public testing::Test
{
protected:
    std::vector<float> smooth(const std::vector<float>& envelope)
    {
        VXS::array<float> block(static_cast<std::int32_t>(envelope.size()));
        std::copy(envelope.begin(), envelope.end(), block.data);
        extractor.smooth(block);
        return std::vector<float>(block.data, block.data + envelope.size());
    }

    VXLandmarkExtract extractor{VXExtractParams()};
    const float infinity = std::numeric_limits<float>::infinity();
    const float notANumber = std::numeric_limits<float>::quiet_NaN();
};

} // namespace

TEST(Decibel, OfOneIsExactlyZero)
{
    VXLandmarkExtract extractor{VXExtractParams()};

    EXPECT_EQ(0.0f, extractor.dB(1.0f));
}

// 20 * log10(2.2204e-16) = 20 * (log10(2.2204) - 16) = 20 * (0.346431 - 16) = -313.0714.
TEST(Decibel, OfZeroIsAboutMinus313)
{
    constexpr float rounding = 0.001f;
    VXLandmarkExtract extractor{VXExtractParams()};

    EXPECT_NEAR(-313.0714f, extractor.dB(0.0f), rounding);
}

// The divisor is the natural logarithm of 10.
TEST(Decibel, OfTenIsExactlyTwenty)
{
    VXLandmarkExtract extractor{VXExtractParams()};

    EXPECT_EQ(20.0f, extractor.dB(10.0f));
}

TEST(Decibel, OfInfinityIsInfinite)
{
    const float infinity = std::numeric_limits<float>::infinity();
    VXLandmarkExtract extractor{VXExtractParams()};

    EXPECT_EQ(infinity, extractor.dB(infinity));
}

TEST(Decibel, OfNotANumberIsNotANumber)
{
    VXLandmarkExtract extractor{VXExtractParams()};

    EXPECT_TRUE(std::isnan(extractor.dB(std::numeric_limits<float>::quiet_NaN())));
}

TEST_F(Smooth, NoElementsAreLeftAlone)
{
    extractor.maskShape = {0.0f, -1.0f};
    VXS::array<float> empty;

    extractor.smooth(empty);

    EXPECT_EQ(nullptr, empty.data);
}

TEST_F(Smooth, OneElementIsLeftAlone)
{
    extractor.maskShape = {0.0f, -1.0f};

    EXPECT_EQ((std::vector<float>{-7.0f}), smooth({-7.0f}));
}

TEST_F(Smooth, FlatEnvelopeHasNoMaxima)
{
    extractor.maskShape = {5.0f, 5.0f, 5.0f, 5.0f};

    EXPECT_EQ((std::vector<float>{3.0f, 3.0f, 3.0f, 3.0f}), smooth({3.0f, 3.0f, 3.0f, 3.0f}));
}

// 40 * exp(-0.5 * (25 / 25)^2) - 40 = 40 * 0.606531 - 40 = -15.7388.
TEST_F(Smooth, SharpMaximumSpreadsByTheMaskOfTheDefaults)
{
    constexpr float rounding = 0.0001f;
    extractor.fillMaskShape();
    std::vector<float> envelope(256, -300.0f);
    envelope[100] = 0.0f;

    const std::vector<float> spread = smooth(envelope);

    EXPECT_EQ(0.0f, spread[100]);
    EXPECT_NEAR(-15.7388f, spread[75], rounding);
    EXPECT_NEAR(-15.7388f, spread[125], rounding);
}

TEST_F(Smooth, RaisesToBothSidesByDistance)
{
    extractor.maskShape = {0.0f, -1.0f, -3.0f, -6.0f};

    EXPECT_EQ((std::vector<float>{-3.0f, -1.0f, 0.0f, -1.0f, -3.0f, -6.0f}),
              smooth({-50.0f, -50.0f, 0.0f, -50.0f, -50.0f, -50.0f}));
}

TEST_F(Smooth, KeepsWhatIsHigherThanTheMask)
{
    extractor.maskShape = {0.0f, -10.0f, -20.0f, -30.0f};

    EXPECT_EQ((std::vector<float>{-5.0f, 0.0f, -10.0f, -15.0f}),
              smooth({-5.0f, 0.0f, -50.0f, -15.0f}));
}

// The maxima are elements 1 and 4; where their masks meet the higher one counts.
TEST_F(Smooth, TakesTheHigherOfTwoMasks)
{
    extractor.maskShape = {0.0f, -4.0f, -8.0f, -12.0f, -16.0f, -20.0f};

    // From 1: -4 0 -4 -8 -12 -16. From 4: -17 -13 -9 -5 -1 -5.
    EXPECT_EQ((std::vector<float>{-4.0f, 0.0f, -4.0f, -5.0f, -1.0f, -5.0f}),
              smooth({-50.0f, 0.0f, -50.0f, -50.0f, -1.0f, -50.0f}));
}

// The mask of element 1 makes element 4 a maximum, which would lift element 7 to -10.
TEST_F(Smooth, CollectsAllMaximaBeforeItRaisesAny)
{
    extractor.maskShape = {0.0f, -20.0f, -20.0f, -5.0f, -20.0f, -20.0f, -20.0f, -20.0f};

    EXPECT_EQ((std::vector<float>{-20.0f, 0.0f, -20.0f, -20.0f, -5.0f, -20.0f, -20.0f, -20.0f}),
              smooth({-50.0f, 0.0f, -50.0f, -50.0f, -50.0f, -50.0f, -50.0f, -50.0f}));
}

TEST_F(Smooth, FirstElementIsNeverAMaximum)
{
    extractor.maskShape = {0.0f, -1.0f, -2.0f};

    EXPECT_EQ((std::vector<float>{0.0f, -50.0f, -50.0f}), smooth({0.0f, -50.0f, -50.0f}));
}

TEST_F(Smooth, LastElementAboveItsNeighbourIsAMaximum)
{
    extractor.maskShape = {0.0f, -1.0f, -2.0f};

    EXPECT_EQ((std::vector<float>{-2.0f, -1.0f, 0.0f}), smooth({-50.0f, -50.0f, 0.0f}));
}

TEST_F(Smooth, LastElementThatEqualsItsNeighbourIsNoMaximum)
{
    extractor.maskShape = {0.0f, -1.0f, -2.0f};

    EXPECT_EQ((std::vector<float>{-50.0f, 0.0f, 0.0f}), smooth({-50.0f, 0.0f, 0.0f}));
}

// Nothing is quieter than the element past the end.
TEST_F(Smooth, LastElementOfMinusInfinityIsNoMaximum)
{
    extractor.maskShape = {0.0f, -1.0f};

    EXPECT_EQ((std::vector<float>{-infinity, -infinity}), smooth({-infinity, -infinity}));
}

TEST_F(Smooth, PlateauIsNoMaximum)
{
    extractor.maskShape = {0.0f, -1.0f, -2.0f, -3.0f};

    EXPECT_EQ((std::vector<float>{-50.0f, 0.0f, 0.0f, -50.0f}),
              smooth({-50.0f, 0.0f, 0.0f, -50.0f}));
}

TEST_F(Smooth, WithoutAMaskNothingIsRaised)
{
    EXPECT_EQ((std::vector<float>{-50.0f, 0.0f, -50.0f}), smooth({-50.0f, 0.0f, -50.0f}));
}

TEST_F(Smooth, DistancesBeyondTheMaskRaiseNothing)
{
    extractor.maskShape = {0.0f, -1.0f};

    EXPECT_EQ((std::vector<float>{-50.0f, -50.0f, -1.0f, 0.0f, -1.0f, -50.0f}),
              smooth({-50.0f, -50.0f, -50.0f, 0.0f, -50.0f, -50.0f}));
}

TEST_F(Smooth, CountsTheProductOfTheDimensions)
{
    extractor.maskShape = {0.0f, -1.0f, -2.0f, -3.0f};
    VXS::array<float> square(2, 1, 2);
    const std::vector<float> envelope = {-50.0f, -50.0f, 0.0f, -50.0f};
    std::copy(envelope.begin(), envelope.end(), square.data);

    extractor.smooth(square);

    EXPECT_EQ((std::vector<float>{-2.0f, -1.0f, 0.0f, -1.0f}),
              std::vector<float>(square.data, square.data + 4));
}

TEST_F(Smooth, NotANumberIsNoMaximumAndHidesItsNeighbours)
{
    extractor.maskShape = {0.0f, -1.0f, -2.0f, -3.0f};

    const std::vector<float> spread = smooth({-50.0f, 0.0f, notANumber, 0.0f, -50.0f});

    EXPECT_EQ(-50.0f, spread[0]);
    EXPECT_EQ(0.0f, spread[1]);
    EXPECT_TRUE(std::isnan(spread[2]));
    EXPECT_EQ(0.0f, spread[3]);
    EXPECT_EQ(-50.0f, spread[4]);
}

TEST_F(Smooth, InfiniteMaximumLiftsEverythingInReach)
{
    extractor.maskShape = {0.0f, -1.0f, -2.0f};

    EXPECT_EQ((std::vector<float>{infinity, infinity, infinity}),
              smooth({-50.0f, infinity, -50.0f}));
}
