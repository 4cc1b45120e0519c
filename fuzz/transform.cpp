// A forward transform of any order and any samples, beside the sum that defines it in double
// precision.

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <memory>
#include <vector>

#include "Bytes.h"
#include "Harness.h"
#include "support/Bits.h"
#include "vxaccelerate/transform.h"

namespace
{

using fuzz::Bytes;
using fuzz::require;

constexpr unsigned int leastOrder = 3;
// Of most runs: beyond it one takes too long to be one of many.
constexpr unsigned int greatestOrder = 14;

struct StateDeleter {
    void operator()(vxaccelerate::FFTState_Float* state) const
    {
        vxaccelerate::transform::FFTFree(state);
    }
};
using State = std::unique_ptr<vxaccelerate::FFTState_Float, StateDeleter>;

float sampleOf(Bytes& bytes, std::uint32_t kind)
{
    constexpr float tiniest = std::numeric_limits<float>::denorm_min();
    switch (kind) {
    case 0:
        return bytes.raw<float>();
    case 1:
        return static_cast<float>(bytes.raw<std::int8_t>()) * 0.0078125f;
    case 2:
        return static_cast<float>(bytes.raw<std::int16_t>()) * 0.000030517578125f;
    case 3:
        return static_cast<float>(bytes.raw<std::int8_t>()) * tiniest;
    case 4:
        return static_cast<float>(bytes.raw<std::int8_t>()) * 1e35f;
    default:
        return std::ldexp(1.0f, bytes.between(-160, 130));
    }
}

// As long as the input lasts, and then again from its front, each time at another level; a level of
// 0 leaves silence behind it.
std::vector<float> samplesOf(Bytes& bytes, std::size_t count)
{
    const std::uint32_t kind = bytes.below(6);
    const float level = bytes.pick({0.0f, 1.0f, -0.75f});
    std::vector<float> samples;
    while (!bytes.empty() && samples.size() < count)
        samples.push_back(sampleOf(bytes, kind));
    const std::size_t period = samples.size();
    while (samples.size() < count) {
        samples.push_back(period == 0 ? 0.0f : level * samples[samples.size() - period]);
    }
    return samples;
}

struct Sums {
    double squares = 0.0;
    double magnitudes = 0.0;
};

Sums sumsOf(const std::vector<float>& samples)
{
    Sums sums;
    for (const float sample : samples) {
        const auto value = static_cast<double>(sample);
        sums.squares += value * value;
        sums.magnitudes += std::fabs(value);
    }
    return sums;
}

// Of the whole spectrum as a vector: each stage, which is as good as a rotation, rounds in
// proportion to its length, and denormal results lose up to a unit each.
double allowedError(const Sums& sums, unsigned int order)
{
    constexpr double roundingsPerStage = 1.0;
    constexpr double halfUlp = 0x1p-24;
    constexpr double tiniest = 0x1p-149;
    const double size = std::ldexp(1.0, static_cast<int>(order));
    const double length = std::sqrt(sums.squares * size);
    return order * (roundingsPerStage * halfUlp * length + 4.0 * tiniest * size);
}

void compareWithDefinition(const std::vector<float>& samples, const std::vector<float>& output,
                           unsigned int order)
{
    constexpr double twoPi = 6.283185307179586476925;
    constexpr std::size_t mostProducts = std::size_t{1} << 18u;
    const Sums sums = sumsOf(samples);
    // A partial sum of such samples may be infinite on the way.
    if (!(sums.magnitudes < static_cast<double>(std::numeric_limits<float>::max()) / 4.0)) return;

    const std::size_t size = samples.size();
    std::vector<double> cosines(size);
    for (std::size_t i = 0; i < size; ++i) {
        cosines[i] = std::cos(twoPi * static_cast<double>(i) / static_cast<double>(size));
    }
    // All bins, or of a large transform some.
    const std::size_t bins = size / 2;
    const std::size_t step = (bins * size / mostProducts) | 1u;
    double squaresOfErrors = 0.0;
    for (std::size_t bin = 0; bin < bins; bin += step) {
        double real = 0.0;
        double imaginary = 0.0;
        std::size_t turn = 0;
        for (std::size_t i = 0; i < size; ++i) {
            // The sine is the cosine a quarter of the circle before.
            const auto sample = static_cast<double>(samples[i]);
            real += sample * cosines[turn];
            imaginary -= sample * cosines[(turn + size - size / 4) & (size - 1)];
            turn = (turn + bin) & (size - 1);
        }
        real -= static_cast<double>(output[2 * bin]);
        imaginary -= static_cast<double>(output[2 * bin + 1]);
        squaresOfErrors += real * real + imaginary * imaginary;
    }
    require(std::sqrt(squaresOfErrors) <= allowedError(sums, order), "a spectrum within the bound");
}

// Blocks of exactly the sizes told, so that a step outside is one outside of an allocation, at
// every alignment that a float may have.
std::vector<float> transformed(const std::vector<float>& samples, const State& state,
                               std::size_t lead, unsigned char filling)
{
    unsigned int bufferBytes = 0;
    require(vxaccelerate::transform::FFTGetBufSize(state.get(), &bufferBytes) == 0,
            "a size for the buffer of a state");
    const std::size_t size = samples.size();
    const std::unique_ptr<float[]> input(new float[lead + size]);
    const std::unique_ptr<float[]> output(new float[lead + size]);
    const std::unique_ptr<unsigned char[]> buffer(new unsigned char[bufferBytes]);
    std::copy(samples.begin(), samples.end(), input.get() + lead);
    std::fill(buffer.get(), buffer.get() + bufferBytes, filling);
    std::fill(output.get(), output.get() + lead + size, -7.0f);

    require(vxaccelerate::transform::FFTFwd(input.get() + lead, output.get() + lead, state.get(),
                                            buffer.get()) == 0,
            "a transform with a state");

    require(support::sameBits(samples.data(), input.get() + lead, size), "an input that stays");
    require(
        std::all_of(output.get(), output.get() + lead, [](float value) { return value == -7.0f; }),
        "nothing written before the output");
    return std::vector<float>(output.get() + lead, output.get() + lead + size);
}

void refuse(unsigned int order)
{
    vxaccelerate::FFTState_Float* made = nullptr;
    const int answer = vxaccelerate::transform::FFTInit(&made, order);
    const State state(made);
    require((answer == 0) == (state != nullptr), "a state exactly where the answer is 0");
    unsigned int bytes = 1;
    vxaccelerate::transform::FFTGetBufSize(state.get(), &bytes);
    if (state != nullptr) return;
    require(bytes == 0, "no buffer for no state");
    const float sample = 1.0f;
    float untouched = -7.0f;
    unsigned char buffer = 0;
    vxaccelerate::transform::FFTFwd(&sample, &untouched, nullptr, &buffer);
    require(untouched == -7.0f, "nothing written without a state");
}

} // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Bytes bytes(data, size);
    const unsigned int choice = bytes.byte();
    if (choice >= 0xF0) {
        // Orders that are too small, and those that no size can have.
        refuse(bytes.pick({0u, 1u, 2u, 32u, 33u, 63u, 64u, 0x7FFFFFFFu, 0xFFFFFFFFu}));
        return 0;
    }
    // A few times an order that takes long.
    const unsigned int order = choice >= 0xE0
                                   ? greatestOrder + 1 + choice % 3
                                   : leastOrder + choice % (greatestOrder - leastOrder + 1);
    const std::size_t lead = bytes.below(16);
    const std::vector<float> samples = samplesOf(bytes, std::size_t{1} << order);

    vxaccelerate::FFTState_Float* made = nullptr;
    require(vxaccelerate::transform::FFTInit(&made, order) == 0, "a state of this order");
    const State state(made);
    const std::vector<float> output = transformed(samples, state, lead, 0xFF);

    require(output[1] == 0.0f, "an imaginary part of 0 in bin 0");
    compareWithDefinition(samples, output, order);
    const std::vector<float> again = transformed(samples, state, 0, 0);
    require(support::sameBits(output.data(), again.data(), output.size()),
            "the same outcome whatever the blocks held and wherever they stand");
    const std::vector<float> silence(samples.size(), 0.0f);
    require(support::sameBits(silence.data(), transformed(silence, state, 0, 0xFF).data(),
                              silence.size()),
            "silence of plus zeros, also after these samples");
    return 0;
}
