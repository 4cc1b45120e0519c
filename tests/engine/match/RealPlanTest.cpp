#include "match/RealPlan.h"

#include <cmath>

#include <gtest/gtest.h>

#include "Signals.h"

namespace
{

using vxlsync::RealPlan;

// In double precision, straight from the definition.
std::complex<double> binOf(const std::vector<float>& samples, std::size_t bin)
{
    std::complex<double> sum = 0.0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double turns =
            static_cast<double>(i * bin % samples.size()) / static_cast<double>(samples.size());
        sum += static_cast<double>(samples[i]) * std::polar(1.0, -2.0 * std::acos(-1.0) * turns);
    }
    return sum;
}

class RealPlanOfLength : public testing::TestWithParam<std::size_t>
{
};

TEST_P(RealPlanOfLength, GivesTheSpectrumWithItsLastBin)
{
    const std::vector<float> samples = signals::noise(1, GetParam());
    std::vector<std::complex<float>> bins(samples.size() / 2 + 1);
    RealPlan plan(samples.size());

    plan.forward(samples.data(), bins.data());

    const double tolerance = 1e-6 * std::sqrt(static_cast<double>(samples.size()));
    for (std::size_t bin = 0; bin < bins.size(); ++bin) {
        const std::complex<double> expected = binOf(samples, bin);
        ASSERT_NEAR(bins[bin].real(), expected.real(), tolerance) << bin;
        ASSERT_NEAR(bins[bin].imag(), expected.imag(), tolerance) << bin;
    }
}

TEST_P(RealPlanOfLength, InvertsItselfTimesTheLength)
{
    const std::vector<float> samples = signals::noise(2, GetParam());
    std::vector<std::complex<float>> bins(samples.size() / 2 + 1);
    std::vector<float> back(samples.size());
    RealPlan plan(samples.size());

    plan.forward(samples.data(), bins.data());
    plan.inverse(bins.data(), back.data());

    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_NEAR(back[i] / static_cast<float>(samples.size()), samples[i], 5e-7f) << i;
}

INSTANTIATE_TEST_SUITE_P(OfPowersOfTwo, RealPlanOfLength, testing::Values(8u, 16u, 64u, 1024u));

// The last bin is a sum of all samples, which would lose digits if it were taken in one go.
TEST(RealPlan, OfAMillionSamplesIsAsRightAsAFloatIs)
{
    constexpr std::size_t length = std::size_t{1} << 20u;
    const std::vector<float> samples = signals::noise(3, length);
    std::vector<std::complex<float>> bins(length / 2 + 1);
    std::vector<float> back(length);
    RealPlan plan(length);

    plan.forward(samples.data(), bins.data());
    plan.inverse(bins.data(), back.data());

    EXPECT_NEAR(bins.back().real(), binOf(samples, length / 2).real(), 2e-3);
    for (std::size_t i = 0; i < length; ++i)
        ASSERT_NEAR(back[i] / static_cast<float>(length), samples[i], 1e-6f) << i;
}

} // namespace
