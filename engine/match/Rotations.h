#ifndef VXL_SYNC_ROTATIONS_H
#define VXL_SYNC_ROTATIONS_H

#include <complex>
#include <cstddef>
#include <vector>

namespace vxlsync
{

// The operator of the library looks for infinities.
inline std::complex<float> product(std::complex<float> left, std::complex<float> right)
{
    return {left.real() * right.real() - left.imag() * right.imag(),
            left.real() * right.imag() + left.imag() * right.real()};
}

// The roots of unity of one order, e^(-2 pi i k / order), right to double precision rounded once.
// Two tables of the root of the order's length each, since one of all would be as large as the
// sound that is transformed.
class Rotations
{
public:
    // Requires an order of at least 1.
    explicit Rotations(std::size_t order);

    // Requires index < order.
    std::complex<float> at(std::size_t index) const
    {
        const std::complex<double>& low = lows[index & (lows.size() - 1)];
        const std::complex<double>& high = highs[index >> lowBits];
        // Written out: the operator looks for infinities.
        return {static_cast<float>(high.real() * low.real() - high.imag() * low.imag()),
                static_cast<float>(high.real() * low.imag() + high.imag() * low.real())};
    }

private:
    unsigned lowBits = 0;
    // Of the first 2^lowBits indices, and of every 2^lowBits-th.
    std::vector<std::complex<double>> lows;
    std::vector<std::complex<double>> highs;
};

} // namespace vxlsync

#endif
