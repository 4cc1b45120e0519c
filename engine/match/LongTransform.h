#ifndef VXL_SYNC_LONGTRANSFORM_H
#define VXL_SYNC_LONGTRANSFORM_H

#include <complex>
#include <cstddef>
#include <memory>
#include <vector>

#include "match/RealPlan.h"
#include "match/Rotations.h"
#include "running/Interrupt.h"

namespace vxlsync
{

// So that a row and a column are as long as a plan must be.
constexpr std::size_t shortestLongTransform = 2 * shortestPlan * shortestPlan;

// Real transform of one length that is far larger than a processor's cache. The samples, two to a
// complex number, are taken as rows and columns of a matrix: the columns are transformed, turned,
// then the rows, and the matrix is transposed (D. Bailey, "FFTs in external or hierarchical
// memory", The Journal of Supercomputing, 1990). Each row or column is short enough for the cache,
// and between batches of them the work can be ended. Needs next to no memory of its own.
class LongTransform
{
public:
    // Requires a power of two of at least shortestLongTransform. `newInterrupt` may be null, and is
    // borrowed.
    LongTransform(std::size_t newLength, const Interrupt* newInterrupt);
    ~LongTransform();
    LongTransform(const LongTransform&) = delete;
    LongTransform& operator=(const LongTransform&) = delete;

    // As Transform has them. Throws Cancelled, and leaves anything in `out` then.
    void forward(const float* in, std::complex<float>* out);
    void inverse(const std::complex<float>* in, float* out);

private:
    struct Direction;

    template <typename Load>
    void run(Direction& direction, const Load& load, std::complex<float>* out);
    template <typename Load>
    void transformColumns(Direction& direction, const Load& load, std::complex<float>* out);
    void turnColumn(const Direction& direction, std::size_t column,
                    std::complex<float>* turned) const;
    void transformRows(Direction& direction, std::complex<float>* out);
    void transposeSquares(std::complex<float>* out) const;
    void unpack(std::complex<float>* out) const;
    std::complex<float> packed(const std::complex<float>* in, std::size_t index) const;
    Direction& directionOf(std::unique_ptr<Direction>& direction, bool isInverse);
    void check() const;

    // Complex numbers, and the matrix that they are: so many rows, and as many columns or twice
    // as many, so that one square or two make it up.
    std::size_t count;
    std::size_t rows;
    std::size_t columns;
    const Interrupt* interrupt;
    // Of the order of the length.
    Rotations rotations;
    std::unique_ptr<Direction> ahead;
    std::unique_ptr<Direction> back;
    // A batch of columns or one row, and one row or column more.
    std::vector<std::complex<float>> batch;
    std::vector<std::complex<float>> single;
};

} // namespace vxlsync

#endif
