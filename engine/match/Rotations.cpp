#include "match/Rotations.h"

#include <cmath>

namespace vxlsync
{

namespace
{

std::complex<double> rootOf(std::size_t order, std::size_t index)
{
    const double turns = static_cast<double>(index) / static_cast<double>(order);
    return std::polar(1.0, -2.0 * std::acos(-1.0) * turns);
}

} // namespace

Rotations::Rotations(std::size_t order)
{
    while ((std::size_t{1} << (2 * lowBits)) < order)
        ++lowBits;
    const std::size_t step = std::size_t{1} << lowBits;
    for (std::size_t index = 0; index < step; ++index)
        lows.push_back(rootOf(order, index));
    for (std::size_t index = 0; index < order; index += step)
        highs.push_back(rootOf(order, index));
}

} // namespace vxlsync
