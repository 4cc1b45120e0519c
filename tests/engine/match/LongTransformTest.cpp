#include "match/LongTransform.h"

#include <cmath>

#include <gtest/gtest.h>

#include "Measuring.h"
#include "Signals.h"
#include "match/Transform.h"

namespace
{

using vxlsync::LongTransform;
using vxlsync::Spectrum;

// In double precision, straight from the definition.
std::complex<double> binOf(const std::vector<float>& samples, std::size_t bin)
{
    const double turn =
        -2.0 * std::acos(-1.0) * static_cast<double>(bin) / static_cast<double>(samples.size());
    std::complex<double> sum = 0.0;
    for (std::size_t block = 0; block < samples.size(); block += 256) {
        // Started anew in each block, so that rounding does not add up.
        std::complex<double> rotor = std::polar(1.0, turn * static_cast<double>(block));
        const std::complex<double> next = std::polar(1.0, turn);
        for (std::size_t i = block; i < std::min(block + 256, samples.size()); ++i) {
            sum += rotor * static_cast<double>(samples[i]);
            rotor *= next;
        }
    }
    return sum;
}

// Lengths whose halves are a square and two squares, with fewer columns than a batch and more, and
// rows as short as they may be.
class LongTransformOfLength : public testing::TestWithParam<std::size_t>
{
};

TEST_P(LongTransformOfLength, GivesTheSpectrum)
{
    const std::vector<float> samples = signals::noise(3, GetParam());
    Spectrum spectrum(samples.size() / 2 + 1);
    LongTransform transform(samples.size(), nullptr);

    transform.forward(samples.data(), spectrum.data());

    // Noise of 0.3 adds up to the root of the length; a float has 24 bits.
    const double tolerance = 5e-7 * std::sqrt(static_cast<double>(samples.size()));
    for (std::size_t bin = 0; bin < spectrum.size(); ++bin) {
        const std::complex<double> expected = binOf(samples, bin);
        ASSERT_NEAR(spectrum[bin].real(), expected.real(), tolerance) << bin;
        ASSERT_NEAR(spectrum[bin].imag(), expected.imag(), tolerance) << bin;
    }
}

TEST_P(LongTransformOfLength, InvertsItselfTimesTheLength)
{
    const std::vector<float> samples = signals::noise(4, GetParam());
    Spectrum spectrum(samples.size() / 2 + 1);
    std::vector<float> back(samples.size());
    LongTransform transform(samples.size(), nullptr);

    transform.forward(samples.data(), spectrum.data());
    transform.inverse(spectrum.data(), back.data());

    for (std::size_t i = 0; i < samples.size(); ++i)
        ASSERT_NEAR(back[i] / static_cast<float>(samples.size()), samples[i], 5e-7f) << i;
}

TEST_P(LongTransformOfLength, GivesTheSameAgain)
{
    const std::vector<float> samples = signals::noise(7, GetParam());
    LongTransform transform(samples.size(), nullptr);
    Spectrum once(samples.size() / 2 + 1);
    Spectrum again(once.size());
    std::vector<float> back(samples.size());
    std::vector<float> backAgain(samples.size());

    transform.forward(samples.data(), once.data());
    transform.inverse(once.data(), back.data());
    transform.forward(samples.data(), again.data());
    transform.inverse(again.data(), backAgain.data());

    EXPECT_EQ(once, again);
    EXPECT_EQ(back, backAgain);
}

INSTANTIATE_TEST_SUITE_P(OfAllShapes, LongTransformOfLength,
                         testing::Values(128u, 256u, 512u, 2048u, 4096u, 8192u));

TEST(LongTransform, OfAMillionSamplesIsAsRightAsAFloatIs)
{
    const std::vector<float> samples = signals::noise(5, std::size_t{1} << 20u);
    Spectrum spectrum(samples.size() / 2 + 1);
    LongTransform transform(samples.size(), nullptr);

    transform.forward(samples.data(), spectrum.data());

    // The rms of a bin is 296; a float holds 6e-8 of it, and no bin should miss by much more than
    // its twenty stages make of that.
    for (const std::size_t bin : {std::size_t{0}, std::size_t{1}, std::size_t{77777},
                                  samples.size() / 4, samples.size() / 2 - 1, samples.size() / 2}) {
        const std::complex<double> expected = binOf(samples, bin);
        EXPECT_NEAR(spectrum[bin].real(), expected.real(), 296.0 * 6e-7) << bin;
        EXPECT_NEAR(spectrum[bin].imag(), expected.imag(), 296.0 * 6e-7) << bin;
    }
}

TEST(LongTransform, CanBeEndedAtAnyOfItsSteps)
{
    // 8 columns are a batch, 8 rows and one row of tiles follow: 10 questions, each way.
    const std::vector<float> samples = signals::noise(6, 128);
    Spectrum spectrum(65);
    std::vector<float> back(128);
    for (const int question : {1, 2, 10}) {
        const vxlsync::Interrupt interrupt(measuring::endingAt(question));
        LongTransform transform(128, &interrupt);
        EXPECT_THROW(transform.forward(samples.data(), spectrum.data()), vxlsync::Cancelled)
            << question;
    }
    const vxlsync::Interrupt interrupt(measuring::endingAt(2));
    LongTransform transform(128, &interrupt);
    EXPECT_THROW(transform.inverse(spectrum.data(), back.data()), vxlsync::Cancelled);
}

} // namespace
