#include "match/ComplexPlan.h"

#include <cmath>

#include <gtest/gtest.h>

#include "Signals.h"

namespace
{

using vxlsync::ComplexPlan;
using Numbers = std::vector<std::complex<float>>;

constexpr std::size_t length = 32;

Numbers anyNumbers()
{
    const std::vector<float> parts = signals::noise(1, 2 * length);
    Numbers numbers;
    for (std::size_t i = 0; i < length; ++i)
        numbers.emplace_back(parts[2 * i], parts[2 * i + 1]);
    return numbers;
}

// In double precision, straight from the definition.
std::complex<double> binOf(const Numbers& numbers, std::size_t bin, double sense)
{
    std::complex<double> sum = 0.0;
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const double turns =
            static_cast<double>(i * bin % numbers.size()) / static_cast<double>(numbers.size());
        sum += std::complex<double>(numbers[i]) *
               std::polar(1.0, sense * 2.0 * std::acos(-1.0) * turns);
    }
    return sum;
}

void expectTransform(bool isInverse)
{
    const Numbers numbers = anyNumbers();
    Numbers bins(length);
    ComplexPlan plan(length, isInverse);

    plan.transform(numbers.data(), bins.data());

    for (std::size_t bin = 0; bin < length; ++bin) {
        const std::complex<double> expected = binOf(numbers, bin, isInverse ? 1.0 : -1.0);
        EXPECT_NEAR(bins[bin].real(), expected.real(), 5e-6) << bin;
        EXPECT_NEAR(bins[bin].imag(), expected.imag(), 5e-6) << bin;
    }
}

TEST(ComplexPlan, GivesTheSpectrum)
{
    expectTransform(false);
}

TEST(ComplexPlan, GivesTheInverseTimesTheLength)
{
    expectTransform(true);
}

} // namespace
