#include "vxaccelerate/transform.h"

#include <algorithm>
#include <cmath>
#include <complex>
#include <cstddef>
#include <cstdint>
#include <cstring>
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
using vxaccelerate::transform::FFTFree;
using vxaccelerate::transform::FFTFwd;
using vxaccelerate::transform::FFTGetBufSize;
using vxaccelerate::transform::FFTInit;

using Samples = std::vector<float>;
using Bin = std::complex<long double>;

// The comparisons go through all sizes from 8 to 4096 samples.
constexpr unsigned int smallestOrder = 3;
constexpr unsigned int greatestOrder = 12;
constexpr unsigned int usualOrder = 9;
constexpr unsigned int millionOrder = 20;

// The error that is allowed, as a share of the root mean square of the spectrum. Rounding the exact
// result to float is an error of up to 6e-8 of each value, and a transform rounds several times.
constexpr long double tolerance = 5e-7L;

// A state with its work buffer.
class Transform
{
public:
    explicit Transform(unsigned int order) : size(std::size_t{1} << order)
    {
        EXPECT_EQ(FFTInit(&state, order), 0);
        FFTGetBufSize(state, &bufferBytes);
        buffer.reset(new unsigned char[bufferBytes]);
    }
    ~Transform() { FFTFree(state); }
    Transform(const Transform&) = delete;
    Transform& operator=(const Transform&) = delete;

    Samples forward(const Samples& input) { return forward(input, buffer.get()); }
    Samples forward(const Samples& input, unsigned char* otherBuffer) const
    {
        Samples output(size);
        FFTFwd(input.data(), output.data(), state, otherBuffer);
        return output;
    }

    std::size_t size;
    FFTState_Float* state = nullptr;
    unsigned int bufferBytes = 0;
    std::unique_ptr<unsigned char[]> buffer;
};

// Evenly distributed from -1 to below 1, and the same on every machine.
Samples randomSamples(std::size_t count, std::uint32_t seed)
{
    std::mt19937 generator(seed);
    Samples samples(count);
    for (float& sample : samples) {
        sample = static_cast<float>(generator() >> 8) * 0x1p-23f - 1.0f;
    }
    return samples;
}

// What a recording of music might hold: a few partials, a hit that dies away and faint noise, in
// steps of 16 bits.
Samples soundLike(std::size_t count)
{
    const Samples noise = randomSamples(count, 77);
    Samples samples(count);
    for (std::size_t i = 0; i < count; ++i) {
        const double t = static_cast<double>(i) / 8000.0;
        const double tones = 0.4 * std::sin(2765.0 * t) + 0.2 * std::sin(5530.0 * t + 1.0) +
                             0.1 * std::sin(8295.0 * t + 2.0);
        const double hit = 0.2 * std::exp(-60.0 * t) * std::sin(9000.0 * t);
        const double value = tones + hit + 0.01 * static_cast<double>(noise[i]);
        samples[i] = static_cast<float>(std::floor(value * 32768.0) / 32768.0);
    }
    return samples;
}

Samples impulse(std::size_t count, std::size_t position)
{
    Samples samples(count);
    samples[position] = 1.0f;
    return samples;
}

// exp(-2 * pi * i * steps / size).
Bin turn(std::size_t steps, std::size_t size)
{
    constexpr long double twoPi = 6.283185307179586476925286766559005768L;
    const long double angle =
        twoPi * static_cast<long double>(steps % size) / static_cast<long double>(size);
    return Bin(std::cos(angle), -std::sin(angle));
}

// The angle of a wave of so many periods at a sample, within one round.
double phase(std::size_t periods, std::size_t t, std::size_t count)
{
    constexpr double twoPi = 6.283185307179586476925;
    return twoPi * static_cast<double>(periods * t % count) / static_cast<double>(count);
}

Samples cosine(std::size_t count, std::size_t periods)
{
    Samples samples(count);
    for (std::size_t t = 0; t < count; ++t) {
        samples[t] = static_cast<float>(std::cos(phase(periods, t, count)));
    }
    return samples;
}

Samples sine(std::size_t count, std::size_t periods)
{
    Samples samples(count);
    for (std::size_t t = 0; t < count; ++t) {
        samples[t] = static_cast<float>(std::sin(phase(periods, t, count)));
    }
    return samples;
}

Bin binOf(const Samples& output, std::size_t k)
{
    return Bin(static_cast<long double>(output[2 * k]),
               static_cast<long double>(output[2 * k + 1]));
}

// The root mean square of the magnitudes, known from the samples: the squared magnitudes of all n
// bins add up to n times the sum of the squared samples.
long double rmsOfSpectrum(const Samples& samples)
{
    long double energy = 0.0L;
    for (const float sample : samples) {
        energy += static_cast<long double>(sample) * static_cast<long double>(sample);
    }
    return std::sqrt(energy);
}

// The root mean square of the error of every `step`th bin against the sum that defines it, as a
// share of the spectrum's.
long double errorAgainstDefinition(const Samples& samples, const Samples& output, std::size_t step)
{
    const std::size_t size = samples.size();
    std::vector<Bin> turns;
    for (std::size_t i = 0; i < size; ++i) {
        turns.push_back(turn(i, size));
    }
    long double squares = 0.0L;
    std::size_t bins = 0;
    for (std::size_t k = 0; k < size / 2; k += step) {
        long double re = 0.0L;
        long double im = 0.0L;
        for (std::size_t t = 0; t < size; ++t) {
            const Bin& factor = turns[k * t % size];
            re += static_cast<long double>(samples[t]) * factor.real();
            im += static_cast<long double>(samples[t]) * factor.imag();
        }
        squares += std::norm(binOf(output, k) - Bin(re, im));
        ++bins;
    }
    return std::sqrt(squares / static_cast<long double>(bins)) / rmsOfSpectrum(samples);
}

// The definition is slow, so of long transforms it checks about 128 bins. An odd step reaches every
// kind of bin.
std::size_t stepFor(std::size_t size)
{
    return size <= 512 ? 1 : size / 256 + 1;
}

// The greatest difference of a bin's parts.
long double distance(const Bin& left, const Bin& right)
{
    return std::max(std::abs(left.real() - right.real()), std::abs(left.imag() - right.imag()));
}

bool haveSameBits(const Samples& left, const Samples& right)
{
    return left.size() == right.size() &&
           std::memcmp(left.data(), right.data(), left.size() * sizeof(float)) == 0;
}

bool isPlusZero(float value)
{
    return value == 0.0f && !std::signbit(value);
}

// The sizes below 8 are the provider's choice, as those that only few machines could hold.
TEST(Transform, TinyOrderIsServedOrLeavesTheStateNull)
{
    for (unsigned int order = 0; order < smallestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform usual(usualOrder);
        FFTState_Float* state = usual.state;

        const int result = FFTInit(&state, order);

        if (result == 0) {
            EXPECT_NE(state, usual.state);
            FFTFree(state);
        } else {
            EXPECT_EQ(state, nullptr);
        }
    }
}

TEST(Transform, OrderThatNoMemoryHoldsLeavesTheStateNull)
{
    for (const unsigned int order : {63u, 64u, std::numeric_limits<unsigned int>::max()}) {
        SCOPED_TRACE(order);
        Transform usual(usualOrder);
        FFTState_Float* state = usual.state;

        const int result = FFTInit(&state, order);

        EXPECT_NE(result, 0);
        EXPECT_EQ(state, nullptr);
    }
}

TEST(Transform, FreeingNullIsNothingToDo)
{
    const Samples samples = randomSamples(std::size_t{1} << usualOrder, 70);
    Transform transform(usualOrder);
    const Samples expected = transform.forward(samples);

    FFTFree(nullptr);

    EXPECT_TRUE(haveSameBits(transform.forward(samples), expected));
}

TEST(Transform, BufferSizeIsTheSameEachTime)
{
    Transform transform(usualOrder);

    unsigned int first = 1;
    unsigned int second = 2;
    FFTGetBufSize(transform.state, &first);
    FFTGetBufSize(transform.state, &second);

    EXPECT_EQ(first, second);
}

TEST(Transform, BufferSizeOfNoStateIsZero)
{
    unsigned int bytes = 5;

    FFTGetBufSize(nullptr, &bytes);

    EXPECT_EQ(bytes, 0u);
}

TEST(Transform, NothingHappensWithoutState)
{
    const Samples samples(8);
    Samples output(8, 3.0f);

    FFTFwd(samples.data(), output.data(), nullptr, nullptr);

    EXPECT_EQ(output, Samples(8, 3.0f));
}

// Samples 1 to 8. Sums over the samples taken four apart, 1 + 5, 2 + 6, 3 + 7, 4 + 8, are
// 6, 8, 10, 12, and their differences are all -4. Bin 0 is 6 + 8 + 10 + 12 = 36; bin 2 is
// (6 - 10) + (12 - 8)i = -4 + 4i. Bins 1 and 3 are -4 times the sum of w^t for t from 0 to 3, with
// w = (1 - i) / sqrt 2 for bin 1, so 1 + w - i + w^3 = 1 - (1 + sqrt 2)i, and w = (-1 - i) / sqrt 2
// for bin 3, so 1 + w + i + w^3 = 1 + (1 - sqrt 2)i.
TEST(Transform, EightSamplesByHand)
{
    Transform transform(3);
    const float root = 1.41421356f;

    const Samples output = transform.forward({1.0f, 2.0f, 3.0f, 4.0f, 5.0f, 6.0f, 7.0f, 8.0f});

    const Samples expected{36.0f, 0.0f, -4.0f, 4.0f * (1.0f + root),
                           -4.0f, 4.0f, -4.0f, 4.0f * (root - 1.0f)};
    for (std::size_t i = 0; i < output.size(); ++i) {
        EXPECT_NEAR(output[i], expected[i], 1e-5f) << i;
    }
}

TEST(Transform, RandomFrameAgreesWithDefinition)
{
    Transform transform(usualOrder);

    for (std::uint32_t seed = 1; seed <= 4; ++seed) {
        SCOPED_TRACE(seed);
        const Samples samples = randomSamples(transform.size, seed);

        const Samples output = transform.forward(samples);

        EXPECT_LT(errorAgainstDefinition(samples, output, 1), tolerance);
    }
}

TEST(Transform, FrameOfSoundAgreesWithDefinition)
{
    Transform transform(usualOrder);
    const Samples samples = soundLike(transform.size);

    const Samples output = transform.forward(samples);

    EXPECT_LT(errorAgainstDefinition(samples, output, 1), tolerance);
}

TEST(Transform, EverySizeAgreesWithDefinition)
{
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform transform(order);
        const Samples samples = randomSamples(transform.size, order);

        const Samples output = transform.forward(samples);

        EXPECT_LT(errorAgainstDefinition(samples, output, stepFor(transform.size)), tolerance);
    }
}

// An impulse at sample p makes bin k exp(-2 * pi * i * k * p / n). The odd positions reach every
// way through the stages, and every bin is compared.
TEST(Transform, ImpulseTurnsFromBinToBin)
{
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        Transform transform(order);
        for (const std::size_t position :
             {std::size_t{0}, std::size_t{1}, transform.size / 2 - 1, transform.size - 1}) {
            SCOPED_TRACE(testing::Message() << "order " << order << " position " << position);

            const Samples output = transform.forward(impulse(transform.size, position));

            long double greatest = 0.0L;
            for (std::size_t k = 0; k < transform.size / 2; ++k) {
                const Bin expected = turn(k * position, transform.size);
                greatest = std::max(greatest, distance(binOf(output, k), expected));
            }
            EXPECT_LT(greatest, tolerance);
        }
    }
}

TEST(Transform, ConstantIsAllInBinZero)
{
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform transform(order);
        const Samples samples(transform.size, 0.75f);

        const Samples output = transform.forward(samples);

        const long double allowed = tolerance * rmsOfSpectrum(samples);
        // Exact in every order of summing: the partial sums are multiples of 0.75 below 2^24.
        EXPECT_EQ(output[0], 0.75f * static_cast<float>(transform.size));
        for (std::size_t k = 1; k < transform.size / 2; ++k) {
            EXPECT_LT(distance(binOf(output, k), 0.0L), allowed) << k;
        }
    }
}

// A cosine of three periods has n / 2 in the real part of bin 3, since half of it turns one way and
// half the other.
TEST(Transform, CosineIsRealInItsBin)
{
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform transform(order);
        const Samples samples = cosine(transform.size, 3);

        const Samples output = transform.forward(samples);

        const long double height = static_cast<long double>(transform.size) / 2.0L;
        for (std::size_t k = 0; k < transform.size / 2; ++k) {
            const Bin expected(k == 3 ? height : 0.0L, 0.0L);
            EXPECT_LT(distance(binOf(output, k), expected), tolerance * height) << k;
        }
    }
}

// The sign tells a forward transform from a backward one.
TEST(Transform, SineIsNegativeImaginaryInItsBin)
{
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform transform(order);
        const Samples samples = sine(transform.size, 3);

        const Samples output = transform.forward(samples);

        const long double height = static_cast<long double>(transform.size) / 2.0L;
        for (std::size_t k = 0; k < transform.size / 2; ++k) {
            const Bin expected(0.0L, k == 3 ? -height : 0.0L);
            EXPECT_LT(distance(binOf(output, k), expected), tolerance * height) << k;
        }
    }
}

// Alternating samples are all in the bin at half the rate, which some layouts keep in the second
// float.
TEST(Transform, BinAtHalfTheRateIsNotDelivered)
{
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform transform(order);
        Samples samples(transform.size, 1.0f);
        for (std::size_t i = 1; i < transform.size; i += 2) {
            samples[i] = -1.0f;
        }

        const Samples output = transform.forward(samples);

        const long double allowed = tolerance * rmsOfSpectrum(samples);
        for (std::size_t k = 0; k < transform.size / 2; ++k) {
            EXPECT_LT(distance(binOf(output, k), 0.0L), allowed) << k;
        }
    }
}

TEST(Transform, ImaginaryPartOfBinZeroIsZero)
{
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform transform(order);

        const Samples output = transform.forward(randomSamples(transform.size, 5));

        EXPECT_EQ(output[1], 0.0f);
    }
}

TEST(Transform, SilenceGivesPlusZeroThroughout)
{
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform transform(order);

        const Samples output = transform.forward(Samples(transform.size));

        EXPECT_TRUE(std::all_of(output.begin(), output.end(), isPlusZero));
    }
}

// Doubling is exact in every operation of a transform.
TEST(Transform, TwiceTheInputIsTwiceTheOutput)
{
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform transform(order);
        Samples samples = randomSamples(transform.size, 11);
        Samples expected = transform.forward(samples);
        for (float& value : expected) {
            value *= 2.0f;
        }

        for (float& sample : samples) {
            sample *= 2.0f;
        }
        const Samples output = transform.forward(samples);

        EXPECT_EQ(output, expected);
    }
}

TEST(Transform, SumOfInputsGivesSumOfOutputs)
{
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform transform(order);
        const Samples left = randomSamples(transform.size, 21);
        const Samples right = randomSamples(transform.size, 22);
        Samples both(transform.size);
        for (std::size_t i = 0; i < both.size(); ++i) {
            both[i] = left[i] + right[i];
        }

        const Samples leftOutput = transform.forward(left);
        const Samples rightOutput = transform.forward(right);
        const Samples output = transform.forward(both);

        // Three transforms, each with its own error.
        const long double allowed = 3.0L * tolerance * rmsOfSpectrum(both);
        for (std::size_t k = 0; k < transform.size / 2; ++k) {
            const Bin expected = binOf(leftOutput, k) + binOf(rightOutput, k);
            EXPECT_LT(distance(binOf(output, k), expected), allowed) << k;
        }
    }
}

// What comes s samples later, going round, has bin k turned by exp(-2 * pi * i * k * s / n).
TEST(Transform, LaterInputTurnsTheBins)
{
    constexpr std::size_t shift = 3;
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform transform(order);
        const Samples samples = randomSamples(transform.size, 31);
        Samples later(transform.size);
        for (std::size_t i = 0; i < samples.size(); ++i) {
            later[(i + shift) % later.size()] = samples[i];
        }

        const Samples output = transform.forward(samples);
        const Samples laterOutput = transform.forward(later);

        // Two transforms, each with its own error.
        const long double allowed = 2.0L * tolerance * rmsOfSpectrum(samples);
        for (std::size_t k = 0; k < transform.size / 2; ++k) {
            const Bin expected = binOf(output, k) * turn(k * shift, transform.size);
            EXPECT_LT(distance(binOf(laterOutput, k), expected), allowed) << k;
        }
    }
}

// A cosine whose frequency falls on a bin: half its height times n there, nothing elsewhere.
TEST(Transform, MillionSamplesOfCosineAreInOneBin)
{
    Transform transform(millionOrder);
    constexpr std::size_t periods = 123457;
    const Samples samples = cosine(transform.size, periods);

    const Samples output = transform.forward(samples);

    const long double height = static_cast<long double>(transform.size) / 2.0L;
    long double greatest = 0.0L;
    for (std::size_t k = 0; k < transform.size / 2; ++k) {
        const Bin expected(k == periods ? height : 0.0L, 0.0L);
        greatest = std::max(greatest, distance(binOf(output, k), expected));
    }
    EXPECT_LT(greatest, tolerance * height);
}

// All n squared magnitudes add up to n times the squared samples. Bins 1 to n / 2 - 1 count twice,
// for their mirror images, and the one at half the rate is the alternating sum of the samples.
TEST(Transform, MillionRandomSamplesKeepTheirEnergy)
{
    Transform transform(millionOrder);
    const Samples samples = randomSamples(transform.size, 41);

    const Samples output = transform.forward(samples);

    double alternating = 0.0;
    double energy = 0.0;
    for (std::size_t i = 0; i < samples.size(); ++i) {
        const double sample = static_cast<double>(samples[i]);
        alternating += i % 2 == 0 ? sample : -sample;
        energy += sample * sample;
    }
    double squares = alternating * alternating;
    for (std::size_t i = 0; i < output.size(); ++i) {
        const double part = static_cast<double>(output[i]);
        squares += i < 2 ? part * part : 2.0 * part * part;
    }
    const double expected = energy * static_cast<double>(transform.size);
    // The energy is of second degree, so a relative error counts twice.
    EXPECT_NEAR(squares / expected, 1.0, 2.0 * static_cast<double>(tolerance));
}

TEST(Transform, NothingIsWrittenOutsideTheOutput)
{
    constexpr std::size_t margin = 64;
    constexpr float untouched = 12345.5f;
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform transform(order);
        const Samples samples = randomSamples(transform.size, 51);
        Samples output(margin + transform.size + margin, untouched);

        FFTFwd(samples.data(), output.data() + margin, transform.state, transform.buffer.get());

        const auto begin = output.begin() + margin;
        const auto end = output.end() - margin;
        const auto isUntouched = [](float value) { return value == untouched; };
        EXPECT_TRUE(std::all_of(output.begin(), begin, isUntouched));
        EXPECT_TRUE(std::all_of(end, output.end(), isUntouched));
        EXPECT_TRUE(std::none_of(begin, end, isUntouched));
    }
}

TEST(Transform, NothingIsWrittenOutsideTheBuffer)
{
    constexpr std::size_t margin = 64;
    constexpr unsigned char untouched = 0xA7;
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform transform(order);
        const std::size_t bytes = transform.bufferBytes;
        const std::unique_ptr<unsigned char[]> block(new unsigned char[margin + bytes + margin]);
        std::fill_n(block.get(), margin + bytes + margin, untouched);

        transform.forward(randomSamples(transform.size, 52), block.get() + margin);

        const auto isUntouched = [](unsigned char value) { return value == untouched; };
        const unsigned char* const end = block.get() + margin + bytes;
        EXPECT_TRUE(std::all_of(block.get(), block.get() + margin, isUntouched));
        EXPECT_TRUE(std::all_of(end, end + margin, isUntouched));
    }
}

// The values beyond would show in every bin if they were read.
TEST(Transform, NothingIsReadOutsideTheInput)
{
    constexpr std::size_t margin = 64;
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform transform(order);
        const Samples samples = randomSamples(transform.size, 53);
        const Samples expected = transform.forward(samples);
        Samples surrounded(margin + transform.size + margin, 1e30f);
        std::copy(samples.begin(), samples.end(), surrounded.begin() + margin);
        Samples output(transform.size);

        FFTFwd(surrounded.data() + margin, output.data(), transform.state, transform.buffer.get());

        EXPECT_TRUE(haveSameBits(output, expected));
    }
}

TEST(Transform, InputIsNotChanged)
{
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform transform(order);
        const Samples samples = randomSamples(transform.size, 54);
        const Samples copy = samples;

        transform.forward(samples);

        EXPECT_TRUE(haveSameBits(samples, copy));
    }
}

// All bits set is NaN in every float of the buffer.
TEST(Transform, FormerContentOfTheBufferHasNoInfluence)
{
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform transform(order);
        const Samples samples = randomSamples(transform.size, 55);
        std::fill_n(transform.buffer.get(), transform.bufferBytes, static_cast<unsigned char>(0));
        const Samples expected = transform.forward(samples);

        std::fill_n(transform.buffer.get(), transform.bufferBytes,
                    static_cast<unsigned char>(0xFF));
        const Samples output = transform.forward(samples);

        EXPECT_TRUE(haveSameBits(output, expected));
    }
}

TEST(Transform, FormerContentOfTheOutputHasNoInfluence)
{
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform transform(order);
        const Samples samples = randomSamples(transform.size, 56);
        const Samples expected = transform.forward(samples);
        Samples output(transform.size, std::numeric_limits<float>::quiet_NaN());

        FFTFwd(samples.data(), output.data(), transform.state, transform.buffer.get());

        EXPECT_TRUE(haveSameBits(output, expected));
    }
}

// operator new promises no more than 16 bytes on the usual machines, so that is all that may count,
// for the buffer as for input and output.
TEST(Transform, PlaceInMemoryHasNoInfluence)
{
    constexpr std::size_t newAlignment = __STDCPP_DEFAULT_NEW_ALIGNMENT__;
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        Transform transform(order);
        const std::size_t size = transform.size;
        const Samples samples = randomSamples(size, 57);
        const Samples expected = transform.forward(samples);
        for (std::size_t place = 0; place < 8; ++place) {
            SCOPED_TRACE(testing::Message() << "order " << order << " place " << place);
            const std::size_t bytes = place * newAlignment;
            const std::size_t floats = bytes / sizeof(float);
            const std::unique_ptr<unsigned char[]> buffer(
                new unsigned char[bytes + transform.bufferBytes]);
            Samples input(floats, 0.0f);
            input.insert(input.end(), samples.begin(), samples.end());
            Samples output(floats + size);

            FFTFwd(input.data() + floats, output.data() + floats, transform.state,
                   buffer.get() + bytes);

            EXPECT_EQ(std::memcmp(output.data() + floats, expected.data(), size * sizeof(float)),
                      0);
        }
    }
}

TEST(Transform, NotANumberSpreadsAndLeavesNothingBehind)
{
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform transform(order);
        const Samples samples = randomSamples(transform.size, 61);
        const Samples expected = transform.forward(samples);
        Samples broken = samples;
        broken[5] = std::numeric_limits<float>::quiet_NaN();

        const Samples brokenOutput = transform.forward(broken);
        const Samples output = transform.forward(samples);

        EXPECT_TRUE(std::isnan(brokenOutput[0]));
        EXPECT_TRUE(haveSameBits(output, expected));
    }
}

TEST(Transform, InfinityDoesNotStayFinite)
{
    for (unsigned int order = smallestOrder; order <= greatestOrder; ++order) {
        SCOPED_TRACE(order);
        Transform transform(order);
        Samples samples = randomSamples(transform.size, 62);
        samples[6] = std::numeric_limits<float>::infinity();

        const Samples output = transform.forward(samples);

        EXPECT_FALSE(std::isfinite(output[0]));
    }
}

TEST(Transform, StatesOfOneSizeAreIndependent)
{
    const Samples samples = randomSamples(std::size_t{1} << usualOrder, 71);
    Transform kept(usualOrder);
    const Samples expected = kept.forward(samples);

    {
        Transform other(usualOrder);
        other.forward(randomSamples(other.size, 72));
    }
    const Samples output = kept.forward(samples);

    EXPECT_TRUE(haveSameBits(output, expected));
}

TEST(Transform, SeparateStatesServeSeparateThreads)
{
    struct Task {
        unsigned int order;
        Samples samples;
        Samples expected;
        int failures;
    };
    std::vector<Task> tasks;
    for (const unsigned int order : {5u, usualOrder, usualOrder, greatestOrder}) {
        Transform transform(order);
        const std::uint32_t seed = 80u + static_cast<std::uint32_t>(tasks.size());
        const Samples samples = randomSamples(transform.size, seed);
        tasks.push_back({order, samples, transform.forward(samples), 0});
    }

    std::vector<std::thread> threads;
    for (Task& task : tasks) {
        threads.emplace_back([&task] {
            for (int round = 0; round < 20; ++round) {
                Transform transform(task.order);
                if (!haveSameBits(transform.forward(task.samples), task.expected)) ++task.failures;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    for (const Task& task : tasks) {
        EXPECT_EQ(task.failures, 0) << "order " << task.order;
    }
}

TEST(Transform, OneStateServesThreadsWithBuffersOfTheirOwn)
{
    struct Task {
        Samples samples;
        Samples expected;
        int failures;
    };
    Transform transform(usualOrder);
    std::vector<Task> tasks;
    for (std::uint32_t seed = 91; seed <= 94; ++seed) {
        const Samples samples = randomSamples(transform.size, seed);
        tasks.push_back({samples, transform.forward(samples), 0});
    }

    std::vector<std::thread> threads;
    for (Task& task : tasks) {
        threads.emplace_back([&task, &transform] {
            const std::unique_ptr<unsigned char[]> buffer(new unsigned char[transform.bufferBytes]);
            for (int round = 0; round < 200; ++round) {
                const Samples output = transform.forward(task.samples, buffer.get());
                if (!haveSameBits(output, task.expected)) ++task.failures;
            }
        });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }

    for (const Task& task : tasks) {
        EXPECT_EQ(task.failures, 0);
    }
}

} // namespace
