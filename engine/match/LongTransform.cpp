#include "match/LongTransform.h"

#include <algorithm>

#include "match/ComplexPlan.h"

namespace vxlsync
{

namespace
{

// Columns that are gathered at once: as many as make two lines of a cache, 128 bytes.
constexpr std::size_t columnsPerBatch = 16;
// Between the columns of a batch lies a line of a cache, or all of them would compete for one place
// in it where their length is a power of two.
constexpr std::size_t columnGap = 8;
// Side of the squares that a transposition copies at once, of two lines of a cache each row.
constexpr std::size_t tileSide = 16;
// Numbers that are unpacked between two questions whether the job shall end: a millisecond or less.
constexpr std::size_t unpackedPerQuestion = std::size_t{1} << 16U;

// The greatest power of two whose square divides `count`.
std::size_t rootOfSquareIn(std::size_t count)
{
    std::size_t root = 1;
    for (; count % 4 == 0; count /= 4)
        root *= 2;
    return root;
}

// A square part of a square, turned at the diagonal.
struct Tile {
    std::complex<float> values[tileSide][tileSide];
    std::size_t height;
    std::size_t width;

    Tile(const std::complex<float>* from, std::size_t side, std::size_t newHeight,
         std::size_t newWidth)
        : height(newHeight), width(newWidth)
    {
        for (std::size_t i = 0; i < height; ++i)
            std::copy(from + i * side, from + i * side + width, values[i]);
    }

    void writeTurned(std::complex<float>* to, std::size_t side) const
    {
        for (std::size_t j = 0; j < width; ++j) {
            for (std::size_t i = 0; i < height; ++i)
                to[j * side + i] = values[i][j];
        }
    }
};

// Swaps the tile at (row, column) of a square with the one mirrored at the diagonal, which may be
// itself.
void swapTiles(std::complex<float>* square, std::size_t side, std::size_t row, std::size_t column)
{
    const std::size_t height = std::min(tileSide, side - row);
    const std::size_t width = std::min(tileSide, side - column);
    std::complex<float>* upper = square + row * side + column;
    std::complex<float>* lower = square + column * side + row;
    const Tile ofUpper(upper, side, height, width);
    const Tile ofLower(lower, side, width, height);
    ofLower.writeTurned(upper, side);
    ofUpper.writeTurned(lower, side);
}

} // namespace

struct LongTransform::Direction {
    bool isInverse;
    ComplexPlan ofColumn;
    ComplexPlan ofRow;
};

LongTransform::LongTransform(std::size_t newLength, const Interrupt* newInterrupt)
    : count(newLength / 2),
      rows(rootOfSquareIn(count)),
      columns(count / rows),
      interrupt(newInterrupt),
      rotations(newLength)
{
}

LongTransform::~LongTransform() = default;

void LongTransform::check() const
{
    if (interrupt) interrupt->check();
}

LongTransform::Direction& LongTransform::directionOf(std::unique_ptr<Direction>& direction,
                                                     bool isInverse)
{
    if (!direction) {
        direction = std::make_unique<Direction>(
            Direction{isInverse, ComplexPlan(rows, isInverse), ComplexPlan(columns, isInverse)});
        batch.resize(std::max(columnsPerBatch * (rows + columnGap), columns));
        single.resize(columns);
    }
    return *direction;
}

void LongTransform::forward(const float* in, std::complex<float>* out)
{
    const auto* pairs = reinterpret_cast<const std::complex<float>*>(in);
    run(
        directionOf(ahead, false), [pairs](std::size_t index) { return pairs[index]; }, out);
    unpack(out);
}

void LongTransform::inverse(const std::complex<float>* in, float* out)
{
    run(
        directionOf(back, true), [this, in](std::size_t index) { return packed(in, index); },
        reinterpret_cast<std::complex<float>*>(out));
}

template <typename Load>
void LongTransform::run(Direction& direction, const Load& load, std::complex<float>* out)
{
    transformColumns(direction, load, out);
    transformRows(direction, out);
    transposeSquares(out);
}

// Leaves the matrix as a row of squares, one after the other, each with its own rows.
template <typename Load>
void LongTransform::transformColumns(Direction& direction, const Load& load,
                                     std::complex<float>* out)
{
    const std::size_t stride = rows + columnGap;
    for (std::size_t from = 0; from < columns; from += columnsPerBatch) {
        check();
        const std::size_t width = std::min(columnsPerBatch, columns - from);
        for (std::size_t row = 0; row < rows; ++row) {
            for (std::size_t i = 0; i < width; ++i)
                batch[i * stride + row] = load(row * columns + from + i);
        }
        std::complex<float>* places[columnsPerBatch];
        for (std::size_t i = 0; i < width; ++i) {
            const std::size_t column = from + i;
            places[i] = out + column / rows * rows * rows + column % rows;
            direction.ofColumn.transform(batch.data() + i * stride, single.data());
            turnColumn(direction, column, batch.data() + i * stride);
        }
        for (std::size_t row = 0; row < rows; ++row) {
            for (std::size_t i = 0; i < width; ++i)
                places[i][row * rows] = batch[i * stride + row];
        }
    }
}

// From the single column to `turned`.
void LongTransform::turnColumn(const Direction& direction, std::size_t column,
                               std::complex<float>* turned) const
{
    const float sense = direction.isInverse ? -1.0f : 1.0f;
    for (std::size_t i = 0; i < rows; ++i) {
        const std::complex<float> rotation = rotations.at(2 * i * column);
        turned[i] = product(single[i], {rotation.real(), sense * rotation.imag()});
    }
}

void LongTransform::transformRows(Direction& direction, std::complex<float>* out)
{
    for (std::size_t row = 0; row < rows; ++row) {
        check();
        for (std::size_t from = 0; from < columns; from += rows) {
            const std::complex<float>* part = out + (from + row) * rows;
            std::copy(part, part + rows, single.data() + from);
        }
        direction.ofRow.transform(single.data(), batch.data());
        for (std::size_t from = 0; from < columns; from += rows)
            std::copy(batch.data() + from, batch.data() + from + rows, out + (from + row) * rows);
    }
}

void LongTransform::transposeSquares(std::complex<float>* out) const
{
    for (std::size_t square = 0; square < count; square += rows * rows) {
        for (std::size_t row = 0; row < rows; row += tileSide) {
            check();
            for (std::size_t column = row; column < rows; column += tileSide)
                swapTiles(out + square, rows, row, column);
        }
    }
}

// Makes the spectrum of the samples from that of their pairs: the even samples' is its symmetric
// part, and the odd samples' its antisymmetric one.
void LongTransform::unpack(std::complex<float>* out) const
{
    const std::complex<float> first = out[0];
    out[0] = {first.real() + first.imag(), 0.0f};
    out[count] = {first.real() - first.imag(), 0.0f};
    for (std::size_t index = 1; index <= count / 2; ++index) {
        if (index % unpackedPerQuestion == 0) check();
        const std::complex<float> low = out[index];
        const std::complex<float> high = std::conj(out[count - index]);
        const std::complex<float> even = 0.5f * (low + high);
        const std::complex<float> difference = 0.5f * (low - high);
        const std::complex<float> odd(difference.imag(), -difference.real());
        const std::complex<float> turned = product(odd, rotations.at(index));
        out[index] = even + turned;
        out[count - index] = std::conj(even - turned);
    }
}

// The reverse, times two. The parts that a real signal's first and last bin do not have count for
// nothing.
std::complex<float> LongTransform::packed(const std::complex<float>* in, std::size_t index) const
{
    if (index == 0) return {in[0].real() + in[count].real(), in[0].real() - in[count].real()};
    const std::complex<float> low = in[index];
    const std::complex<float> high = std::conj(in[count - index]);
    const std::complex<float> odd = product(low - high, std::conj(rotations.at(index)));
    const std::complex<float> even = low + high;
    return {even.real() - odd.imag(), even.imag() + odd.real()};
}

} // namespace vxlsync
