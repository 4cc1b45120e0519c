// Compares the library's logarithm with that of the C library for every float there is, or for
// every n-th with --stride n. It has to equal the GNU C library's to the bit; with another one the
// program tells nothing about the library.

#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "VXMath.h"

namespace
{

float floatOf(std::uint32_t bits)
{
    float number;
    std::memcpy(&number, &bits, sizeof(number));
    return number;
}

std::uint32_t bitsOf(float number)
{
    std::uint32_t bits;
    std::memcpy(&bits, &number, sizeof(bits));
    return bits;
}

// What is not a number may carry any payload.
bool areSame(float left, float right)
{
    if (std::isnan(left)) return std::isnan(right);
    return bitsOf(left) == bitsOf(right);
}

} // namespace

int main(int argc, char** argv)
{
    constexpr std::uint64_t patterns = std::uint64_t{1} << 32u;
    constexpr std::uint64_t mostPrinted = 20;
    std::uint64_t stride = 1;
    if (argc == 3 && std::string(argv[1]) == "--stride") {
        stride = std::strtoull(argv[2], nullptr, 10);
    } else if (argc != 1) {
        stride = 0;
    }
    if (stride == 0) {
        std::fprintf(stderr, "usage: %s [--stride n], n from 1\n", argv[0]);
        return 2;
    }

    std::uint64_t compared = 0;
    std::uint64_t different = 0;
    for (std::uint64_t pattern = 0; pattern < patterns; pattern += stride) {
        const auto bits = static_cast<std::uint32_t>(pattern);
        const float number = floatOf(bits);
        const float own = VXS::naturalLogarithm(number);
        const float expected = logf(number);
        ++compared;
        if (areSame(own, expected)) continue;
        if (different < mostPrinted) {
            std::fprintf(stderr, "0x%08" PRIx32 ": logarithm %a, expected %a\n", bits,
                         static_cast<double>(own), static_cast<double>(expected));
        }
        ++different;
    }
    std::printf("%" PRIu64 " of %" PRIu64 " floats compared, %" PRIu64 " differ\n", compared,
                patterns, different);
    return different == 0 ? 0 : 1;
}
