#include "vxaccelerate/transform.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <limits>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

// What every provider of the transform has to do, whichever one is linked.
namespace
{

using vxaccelerate::FFTState_Float;
using namespace vxaccelerate::transform;

using Samples = std::vector<float>;
using Bin = std::complex<long double>;

constexpr unsigned int smallestOrder = 3;
// Orders 3 to 12 are the sizes that are used; the comparisons go through all of them.
constexpr unsigned int greatestOrder = 12;
constexpr unsigned int usualOrder = 9;
constexpr unsigned int millionOrder = 20;
// The greatest error of a bin's real or imaginary part, as a share of the spectrum's root mean
// square. One rounding to float is already an error of up to 6e-8 of the value.
constexpr long double tolerance = 5e-7L;

// A state with its work buffer.
class Transform
{
public:
    explicit Transform(unsigned int order) : size(std::size_t{1} << order)
    {
        EXPECT_EQ(FFTInit(&state, order), 0);
        unsigned int bytes = 0;
        EXPECT_EQ(FFTGetBufSize(state, &bytes), 0);
        buffer.reset(new unsigned char[bytes]);
    }
    ~Transform() { FFTFree(state); }
    Transform(const Transform&) = delete;
    Transform& operator=(const Transform&) = delete;

    Samples forward(const Samples& input)
    {
        Samples output(size);
        EXPECT_EQ(FFTFwd(input.data(), output.data(), state, buffer.get()), 0);
        return output;
    }

    std::size_t size;
    FFTState_Float* state = nullptr;
    std::unique_ptr<unsigned char[]> buffer;
};

// Evenly distributed from -1 up to 1; the same on every machine.
Samples randomSamples(std::size_t count, std::uint32_t seed)
{
    std::mt19937 generator(seed);
    Samples samples(count);
    for (float& sample : samples) {
        sample = static_cast<float>(generator() >> 8) * 0x1p-23f - 1.0f;
    }
    return samples;
}

// What a recording of music might be: a few partials, a hit that dies away, faint noise, and 16 bits.
Samples soundLike(std::size_t count)
{
    const Samples noise = randomSamples(count, 77);
    Samples samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double t = static_cast<double>(i) / 8000.0;
        const double tones = 0.4 * std::sin(2765.0 * t) + 0.2 * std::sin(5530.0 * t + 1.0) +
                             0.1 * std::sin(8295.0 * t + 2.0);
        const double hit = 0.5 * std::exp(-60.0 * t) * std::sin(9000.0 * t);
        const double value = 0.7 * (tones + hit) + 0.01 * static_cast<double>(noise[i]);
        samples[i] = static_cast<float>(std::floor(value * 32768.0) / 32768.0);
    }
    return samples;
}

Samples silence(std::size_t count) { return Samples(count, 0.0f); }

Samples impulse(std::size_t count, std::size_t position)
{
    Samples samples = silence(count);
    samples[position] = 1.0f;
    return samples;
}

// exp(-2 * pi * i * turns / size).
Bin turned(std::size_t turns, std::size_t size)
{
    const long double pi = 3.141592653589793238462643383279502884L;
    const long double angle =
        2.0L * pi * static_cast<long double>(turns % size) / static_cast<long double>(size);
    return Bin(std::cos(angle), -std::sin(angle));
}

// One bin straight from its definition. The imaginary part of bin 0 is a sum of zeros.
Bin binByDefinition(const Samples& samples, std::size_t k)
{
    const std::size_t size = samples.size();
    long double re = 0.0L;
    long double im = 0.0L;
    for (std::size_t t = 0; t < size; ++t) {
        const Bin factor = turned(k * t, size);
        re += static_cast<long double>(samples[t]) * factor.real();
        im += static_cast<long double>(samples[t]) * factor.imag();
    }
    return Bin(re, im);
}

Bin binOf(const Samples& output, std::size_t k)
{
    return Bin(static_cast<long double>(output[2 * k]), static_cast<long double>(output[2 * k + 1]));
}

// The root mean square of the magnitudes, which follows from the samples: the sum over all `size`
// bins of the squared magnitudes is `size` times the sum of the squared samples.
long double rmsOfSpectrum(const Samples& samples)
{
    long double energy = 0.0L;
    for (const float sample : samples) {
        energy += static_cast<long double>(sample) * static_cast<long double>(sample);
    }
    return std::sqrt(energy);
}

long double distance(const Bin& left, const Bin& right)
{
    return std::max(std::abs(left.real() - right.real()), std::abs(left.imag() - right.imag()));
}

// The greatest error of every `step`th bin.
long double errorAgainstDefinition(const Samples& samples, const Samples& output, std::size_t step)
{
    long double error = 0.0L;
    for (std::size_t k = 0; k < samples.size() / 2; k += step) {
        error = std::max(error, distance(binOf(output, k), binByDefinition(samples, k)));
    }
    return error;
}

// So many bins that the definition is affordable, and odd, so that no kind of bin is left out.
std::size_t affordableStep(std::size_t size) { return size <= 256 ? 1 : size / 128 - 1; }

bool sameBits(const Samples& left, const Samples& right)
{
    return left.size() == right.size() &&
           std::memcmp(left.data(), right.data(), left.size() * sizeof(float)) == 0;
}

bool isPlusZero(float value) { return value == 0.0f && !std::signbit(value); }

// A cosine or a sine of so many periods.
Samples cosine(std::size_t count, std::size_t periods)
{
    Samples samples(count);
    for (std::size_t t = 0; t < count; ++t) {
        samples[t] = static_cast<float>(turned(periods * t, count).real());
    }
    return samples;
}

Samples sine(std::size_t count, std::size_t periods)
{
    Samples samples(count);
    for (std::size_t t = 0; t < count; ++t) {
        samples[t] = static_cast<float>(-turned(periods * t, count).imag());
    }
    return samples;
}

} // namespace

TEST(Transform, RandomFrameAgreesWithTheDefinition)
{
    Transform transform(usualOrder);

    for (std::uint32_t seed = 1; seed <= 8; ++seed) {
        const Samples samples = randomSamples(transform.size, seed);
        const Samples output = transform.forward(samples);

        EXPECT_LT(errorAgainstDefinition(samples, output, 1), tolerance * rmsOfSpectrum(samples));
    }
}
