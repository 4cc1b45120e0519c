#ifndef PROPERTY_RANDOM_H
#define PROPERTY_RANDOM_H

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <initializer_list>
#include <random>

namespace property
{

// The same numbers for the same seed on every platform, which the distributions of the standard
// library do not promise.
class Random
{
public:
    explicit Random(std::uint64_t seed) : engine(seed) {}

    std::uint64_t bits() { return engine(); }
    std::uint64_t below(std::uint64_t limit) { return engine() % limit; }
    // From least to greatest, both included.
    std::int64_t between(std::int64_t least, std::int64_t greatest)
    {
        const std::uint64_t span =
            static_cast<std::uint64_t>(greatest) - static_cast<std::uint64_t>(least) + 1u;
        const std::uint64_t step = span == 0 ? bits() : below(span);
        return static_cast<std::int64_t>(static_cast<std::uint64_t>(least) + step);
    }
    bool oneIn(std::uint64_t chances) { return below(chances) == 0; }
    // From -1 to just below 1, in steps of 2^-23.
    float sample() { return static_cast<float>(between(-8388608, 8388607)) / 8388608.0f; }
    // Any bit pattern of a float, also infinities and what is not a number.
    float anyFloat()
    {
        const std::uint32_t pattern = static_cast<std::uint32_t>(bits());
        float value;
        std::memcpy(&value, &pattern, sizeof value);
        return value;
    }
    template <typename T>
    T pick(std::initializer_list<T> choices)
    {
        return *(choices.begin() + static_cast<std::ptrdiff_t>(below(choices.size())));
    }

private:
    std::mt19937_64 engine;
};

} // namespace property

#endif
