#include "vxaccelerate/transform.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <limits>
#include <memory>
#include <new>
#include <utility>

#include "VXMultiversion.h"

// The samples are taken in pairs as complex points, transformed by the complex transform of half
// the length, and the bins of the real transform are untangled from the outcome.
//
// The complex transform combines four points at a time, and two in its last stage if the length
// asks for it. Each stage reads one area and writes another, in an order from which the bins come
// out sorted: its four inputs stand a quarter of the points apart, each in `groups` groups of
// `stride` neighbours; group g gives the four groups from 4g on, multiplied by the twiddle factors
// of g. From one stage to the next there are a quarter of the groups and four times the neighbours.
// Neighbours are treated alike, so they are what a vector register takes up. At first there are too
// few: the first stage takes groups side by side instead, and the second moves its outcome in
// fours.
//
// Every operation is a single float operation in an order fixed here, and the factors do not come
// from the mathematics library. So the bits are the same wherever floats are IEEE floats and the
// compiler does not fuse multiplications with additions, however wide its vectors are.
//
// Silence comes out as +0 throughout. The first input of a combination is from the first of the
// groups before, whose factors have no negative real and no positive imaginary part, so it is +0;
// and what is added to +0 or taken from it, +0 or -0, makes +0.
namespace vxaccelerate
{

// `cosines` and `sines` are the real and imaginary parts of exp(-pi * i * k / points). In a short
// transform they serve all of it, and k counts from 0. In a long one they serve the untangling, and
// k counts from 1; `first`, `second` and `middle` are the factors of the stages.
struct FFTState_Float {
    std::ptrdiff_t points = 0;
    // What FFTFwd works in.
    std::uint64_t workBytes = 0;
    // Holds all that follows.
    std::unique_ptr<unsigned char[]> tables;
    float* cosines = nullptr;
    float* sines = nullptr;
    float* first = nullptr;
    float* second = nullptr;
    float* middle = nullptr;
};

namespace
{

using std::ptrdiff_t;

// A transform of up to so many points has fewer groups than lanes in its first stage; a plain form
// does it.
constexpr ptrdiff_t maxShortPoints = 32;
// A transform of more points, one of more than 524,288 samples, takes no buffer.
constexpr ptrdiff_t maxBufferPoints = ptrdiff_t{1} << 18;
// How many values the inner loops treat at a time: a constant, so that a compiler sees that the
// length of its vectors divides it.
constexpr ptrdiff_t lanes = 16;
// Real and imaginary parts of a group's three factors.
constexpr ptrdiff_t factorParts = 6;
// Of a vector register and a cache line, in bytes.
constexpr std::uint64_t alignment = 64;
constexpr unsigned int minOrder = 3;
constexpr unsigned int maxOrder = 31;

struct Root {
    double cosine;
    double sine;
};

// exp(-2 * pi * i * exponent / size) for a size that is a power of two from 8, by series within an
// eighth of the circle. The other eighths mirror it, so that parts which should be equal are.
Root rootOfUnity(std::uint64_t exponent, std::uint64_t size)
{
    constexpr double twoPi = 6.283185307179586476925;
    // The last terms are below 1e-17 at an eighth of the circle.
    constexpr double cosineSeries[] = {1.0 / 20922789888000.0,
                                       -1.0 / 87178291200.0,
                                       1.0 / 479001600.0,
                                       -1.0 / 3628800.0,
                                       1.0 / 40320.0,
                                       -1.0 / 720.0,
                                       1.0 / 24.0,
                                       -1.0 / 2.0,
                                       1.0};
    constexpr double sineSeries[] = {1.0 / 355687428096000.0,
                                     -1.0 / 1307674368000.0,
                                     1.0 / 6227020800.0,
                                     -1.0 / 39916800.0,
                                     1.0 / 362880.0,
                                     -1.0 / 5040.0,
                                     1.0 / 120.0,
                                     -1.0 / 6.0,
                                     1.0};

    const std::uint64_t eighth = size / 8;
    const std::uint64_t octant = exponent / eighth;
    const std::uint64_t within = exponent % eighth;
    const std::uint64_t steps = octant % 2 == 0 ? within : eighth - within;
    const double x = static_cast<double>(steps) * (twoPi / static_cast<double>(size));
    const double square = x * x;

    double cosine = 0.0;
    for (const double coefficient : cosineSeries) {
        cosine = cosine * square + coefficient;
    }
    double sine = 0.0;
    for (const double coefficient : sineSeries) {
        sine = sine * square + coefficient;
    }
    sine *= x;

    if (octant % 4 == 1 || octant % 4 == 2) std::swap(cosine, sine);
    // Subtracted rather than negated, so that a zero stays +0.
    // No exponent reaches three quarters of the circle, where it would turn positive again.
    if (octant >= 2) cosine = 0.0 - cosine;
    if (octant < 4) sine = 0.0 - sine;
    return {cosine, sine};
}

// The factors of one group of a stage with `groups` groups: those of the second to fourth outcome,
// each as real and imaginary part, written `step` floats apart.
void writeFactors(float* factors, ptrdiff_t step, ptrdiff_t group, ptrdiff_t groups, double scale)
{
    for (ptrdiff_t outcome = 1; outcome < 4; ++outcome) {
        const Root root = rootOfUnity(static_cast<std::uint64_t>(outcome * group),
                                      static_cast<std::uint64_t>(4 * groups));
        factors[0] = static_cast<float>(scale * root.cosine);
        factors[step] = static_cast<float>(scale * root.sine);
        factors += 2 * step;
    }
}

// The same for the stages that treat several groups side by side, each on `width` lanes: blocks of
// `lanes` values of each part.
void writeLaneFactors(float* factors, ptrdiff_t width, ptrdiff_t groups, double scale)
{
    for (ptrdiff_t lane = 0; lane < groups * width; ++lane) {
        float* const block = factors + lane / lanes * lanes * factorParts;
        writeFactors(block + lane % lanes, lanes, lane / width, groups, scale);
    }
}

std::uint64_t bytesFor(std::uint64_t floats)
{
    return floats * sizeof(float) + alignment;
}

std::unique_ptr<unsigned char[]> newBlock(std::uint64_t bytes)
{
    // More than there can be anywhere throws by itself.
    constexpr std::uint64_t most = std::numeric_limits<ptrdiff_t>::max();
    const auto possible = static_cast<std::size_t>(std::min(bytes, most));
    return std::unique_ptr<unsigned char[]>(new unsigned char[possible]);
}

// The first place within a block that has the alignment.
float* alignedFloats(unsigned char* block)
{
    const std::uintptr_t excess = reinterpret_cast<std::uintptr_t>(block) % alignment;
    return reinterpret_cast<float*>(excess == 0 ? block : block + (alignment - excess));
}

void prepareShort(FFTState_Float& state)
{
    const ptrdiff_t points = state.points;
    state.tables = newBlock(bytesFor(static_cast<std::uint64_t>(2 * points)));
    state.cosines = alignedFloats(state.tables.get());
    state.sines = state.cosines + points;
    for (ptrdiff_t exponent = 0; exponent < points; ++exponent) {
        const Root root = rootOfUnity(static_cast<std::uint64_t>(exponent),
                                      static_cast<std::uint64_t>(2 * points));
        state.cosines[exponent] = static_cast<float>(root.cosine);
        state.sines[exponent] = static_cast<float>(root.sine);
    }
}

void prepareLong(FFTState_Float& state)
{
    const ptrdiff_t points = state.points;
    const ptrdiff_t laneFactors = factorParts * (points / 4);
    // The middle stages have points / 64 groups, then a quarter of that, and so on.
    const std::uint64_t middleFactors = factorParts * (static_cast<std::uint64_t>(points) / 48 + 1);
    state.tables = newBlock(bytesFor(static_cast<std::uint64_t>(points) +
                                     2 * static_cast<std::uint64_t>(laneFactors) + middleFactors));
    state.cosines = alignedFloats(state.tables.get());
    state.sines = state.cosines + points / 2;
    state.first = state.sines + points / 2;
    state.second = state.first + laneFactors;
    state.middle = state.second + laneFactors;

    for (ptrdiff_t i = 0; i < points / 2; ++i) {
        const Root root =
            rootOfUnity(static_cast<std::uint64_t>(i + 1), static_cast<std::uint64_t>(2 * points));
        state.cosines[i] = static_cast<float>(root.cosine);
        state.sines[i] = static_cast<float>(root.sine);
    }
    writeLaneFactors(state.first, 1, points / 4, 1.0);
    writeLaneFactors(state.second, 4, points / 16, 0.5);
    float* factors = state.middle;
    for (ptrdiff_t groups = points / 64; groups > 1; groups /= 4) {
        for (ptrdiff_t group = 0; group < groups; ++group) {
            writeFactors(factors, 1, group, groups, 1.0);
            factors += factorParts;
        }
    }

    // Two areas of all points each.
    state.workBytes = bytesFor(4 * static_cast<std::uint64_t>(points));
}

struct FourPoints {
    float re0, im0, re1, im1, re2, im2, re3, im3;
};

// The transform of four points.
inline FourPoints butterfly(const FourPoints& in)
{
    const float sumRe02 = in.re0 + in.re2;
    const float sumIm02 = in.im0 + in.im2;
    const float sumRe13 = in.re1 + in.re3;
    const float sumIm13 = in.im1 + in.im3;
    const float differenceRe02 = in.re0 - in.re2;
    const float differenceIm02 = in.im0 - in.im2;
    const float differenceRe13 = in.re1 - in.re3;
    const float differenceIm13 = in.im1 - in.im3;
    return {sumRe02 + sumRe13,
            sumIm02 + sumIm13,
            differenceRe02 + differenceIm13,
            differenceIm02 - differenceRe13,
            sumRe02 - sumRe13,
            sumIm02 - sumIm13,
            differenceRe02 - differenceIm13,
            differenceIm02 + differenceRe13};
}

// From the samples to split real and imaginary parts. Groups of one point.
VXS_MULTIVERSION void firstStage(const float* __restrict in, float* __restrict outRe,
                                 float* __restrict outIm, const float* __restrict factors,
                                 ptrdiff_t quarter)
{
    for (ptrdiff_t block = 0; block < quarter; block += lanes) {
        const float* const in0 = in + 2 * block;
        const float* const in1 = in0 + 2 * quarter;
        const float* const in2 = in1 + 2 * quarter;
        const float* const in3 = in2 + 2 * quarter;
        const float* const f = factors + factorParts * block;
        float* const re = outRe + 4 * block;
        float* const im = outIm + 4 * block;
        for (ptrdiff_t i = 0; i < lanes; ++i) {
            const FourPoints p =
                butterfly({in0[2 * i], in0[2 * i + 1], in1[2 * i], in1[2 * i + 1], in2[2 * i],
                           in2[2 * i + 1], in3[2 * i], in3[2 * i + 1]});
            re[4 * i] = p.re0;
            im[4 * i] = p.im0;
            re[4 * i + 1] = p.re1 * f[i] - p.im1 * f[lanes + i];
            im[4 * i + 1] = p.re1 * f[lanes + i] + p.im1 * f[i];
            re[4 * i + 2] = p.re2 * f[2 * lanes + i] - p.im2 * f[3 * lanes + i];
            im[4 * i + 2] = p.re2 * f[3 * lanes + i] + p.im2 * f[2 * lanes + i];
            re[4 * i + 3] = p.re3 * f[4 * lanes + i] - p.im3 * f[5 * lanes + i];
            im[4 * i + 3] = p.re3 * f[5 * lanes + i] + p.im3 * f[4 * lanes + i];
        }
    }
}

// Takes the values of one block to the same place of four blocks, four values each.
inline void moveFours(const float* __restrict values, float* __restrict blocks)
{
    constexpr std::size_t bytes = 4 * sizeof(float);
    std::memcpy(blocks, values, bytes);
    std::memcpy(blocks + 2 * lanes, values + 4, bytes);
    std::memcpy(blocks + 4 * lanes, values + 8, bytes);
    std::memcpy(blocks + 6 * lanes, values + 12, bytes);
}

// From split parts to blocks of `lanes` real and as many imaginary parts, which keep the number of
// pointers in the middle stages within that of registers. Groups of four points. The outcome is
// halved on the way, at the one place where it costs nothing, since untangling takes half of sums.
VXS_MULTIVERSION void secondStage(const float* __restrict inRe, const float* __restrict inIm,
                                  float* __restrict out, const float* __restrict factors,
                                  ptrdiff_t quarter)
{
    for (ptrdiff_t block = 0; block < quarter; block += lanes) {
        const float* const re0 = inRe + block;
        const float* const im0 = inIm + block;
        const float* const f = factors + factorParts * block;
        float made[8][lanes];
        for (ptrdiff_t i = 0; i < lanes; ++i) {
            const FourPoints p = butterfly(
                {re0[i], im0[i], re0[i + 1 * quarter], im0[i + 1 * quarter], re0[i + 2 * quarter],
                 im0[i + 2 * quarter], re0[i + 3 * quarter], im0[i + 3 * quarter]});
            made[0][i] = p.re0 * 0.5f;
            made[1][i] = p.im0 * 0.5f;
            made[2][i] = p.re1 * f[i] - p.im1 * f[lanes + i];
            made[3][i] = p.re1 * f[lanes + i] + p.im1 * f[i];
            made[4][i] = p.re2 * f[2 * lanes + i] - p.im2 * f[3 * lanes + i];
            made[5][i] = p.re2 * f[3 * lanes + i] + p.im2 * f[2 * lanes + i];
            made[6][i] = p.re3 * f[4 * lanes + i] - p.im3 * f[5 * lanes + i];
            made[7][i] = p.re3 * f[5 * lanes + i] + p.im3 * f[4 * lanes + i];
        }
        // Four groups of four points stand side by side; each becomes one block.
        for (ptrdiff_t outcome = 0; outcome < 4; ++outcome) {
            float* const blocks = out + 8 * block + 4 * outcome;
            moveFours(made[2 * outcome], blocks);
            moveFours(made[2 * outcome + 1], blocks + lanes);
        }
    }
}

// One group, from blocks to blocks.
VXS_MULTIVERSION void middleGroup(const float* __restrict in, ptrdiff_t quarter,
                                  float* __restrict out0, float* __restrict out1,
                                  float* __restrict out2, float* __restrict out3,
                                  const float* __restrict factors, ptrdiff_t stride)
{
    const float re1 = factors[0];
    const float im1 = factors[1];
    const float re2 = factors[2];
    const float im2 = factors[3];
    const float re3 = factors[4];
    const float im3 = factors[5];
    const float* in0 = in;
    const float* in1 = in0 + 2 * quarter;
    const float* in2 = in1 + 2 * quarter;
    const float* in3 = in2 + 2 * quarter;
    for (ptrdiff_t block = 0; block < stride; block += lanes) {
        for (ptrdiff_t i = 0; i < lanes; ++i) {
            const FourPoints p = butterfly({in0[i], in0[lanes + i], in1[i], in1[lanes + i], in2[i],
                                            in2[lanes + i], in3[i], in3[lanes + i]});
            out0[i] = p.re0;
            out0[lanes + i] = p.im0;
            out1[i] = p.re1 * re1 - p.im1 * im1;
            out1[lanes + i] = p.re1 * im1 + p.im1 * re1;
            out2[i] = p.re2 * re2 - p.im2 * im2;
            out2[lanes + i] = p.re2 * im2 + p.im2 * re2;
            out3[i] = p.re3 * re3 - p.im3 * im3;
            out3[lanes + i] = p.re3 * im3 + p.im3 * re3;
        }
        in0 += 2 * lanes;
        in1 += 2 * lanes;
        in2 += 2 * lanes;
        in3 += 2 * lanes;
        out0 += 2 * lanes;
        out1 += 2 * lanes;
        out2 += 2 * lanes;
        out3 += 2 * lanes;
    }
}

// From blocks to split parts. A single group, whose factors are 1.
VXS_MULTIVERSION void lastStageOfFour(const float* __restrict in, float* __restrict re0,
                                      float* __restrict im0, float* __restrict re1,
                                      float* __restrict im1, float* __restrict re2,
                                      float* __restrict im2, float* __restrict re3,
                                      float* __restrict im3, ptrdiff_t stride)
{
    for (ptrdiff_t block = 0; block < stride; block += lanes) {
        const float* const in0 = in + 2 * block;
        const float* const in1 = in0 + 2 * stride;
        const float* const in2 = in1 + 2 * stride;
        const float* const in3 = in2 + 2 * stride;
        for (ptrdiff_t i = 0; i < lanes; ++i) {
            const FourPoints p = butterfly({in0[i], in0[lanes + i], in1[i], in1[lanes + i], in2[i],
                                            in2[lanes + i], in3[i], in3[lanes + i]});
            re0[block + i] = p.re0;
            im0[block + i] = p.im0;
            re1[block + i] = p.re1;
            im1[block + i] = p.im1;
            re2[block + i] = p.re2;
            im2[block + i] = p.im2;
            re3[block + i] = p.re3;
            im3[block + i] = p.im3;
        }
    }
}

VXS_MULTIVERSION void lastStageOfTwo(const float* __restrict in, float* __restrict re0,
                                     float* __restrict im0, float* __restrict re1,
                                     float* __restrict im1, ptrdiff_t stride)
{
    for (ptrdiff_t block = 0; block < stride; block += lanes) {
        const float* const in0 = in + 2 * block;
        const float* const in1 = in0 + 2 * stride;
        for (ptrdiff_t i = 0; i < lanes; ++i) {
            re0[block + i] = in0[i] + in1[i];
            im0[block + i] = in0[lanes + i] + in1[lanes + i];
            re1[block + i] = in0[i] - in1[i];
            im1[block + i] = in0[lanes + i] - in1[lanes + i];
        }
    }
}

// From the bins of the half-length transform, halved, to those of the real one. Bin k comes of bins
// k and `points` - k, and so does bin `points` - k. These wait in two scratch arrays of half the
// points each, since GCC does not vectorise a loop that stores pairs backward.
VXS_MULTIVERSION void untangle(const float* __restrict re, const float* __restrict im,
                               float* __restrict out, const float* __restrict cosines,
                               const float* __restrict sines, float* __restrict mirrorRe,
                               float* __restrict mirrorIm, ptrdiff_t points)
{
    // Changes nothing, but shows a compiler that the length of its vectors divides the count.
    const ptrdiff_t half = points / 2 / lanes * lanes;
    const float* const lastRe = re + points - 1;
    const float* const lastIm = im + points - 1;
    for (ptrdiff_t i = 0; i < half; ++i) {
        const float evenRe = re[i + 1] + lastRe[-i];
        const float evenIm = im[i + 1] - lastIm[-i];
        const float oddRe = im[i + 1] + lastIm[-i];
        const float oddIm = lastRe[-i] - re[i + 1];
        const float turnedRe = oddRe * cosines[i] - oddIm * sines[i];
        const float turnedIm = oddRe * sines[i] + oddIm * cosines[i];
        out[2 * i + 2] = evenRe + turnedRe;
        out[2 * i + 3] = evenIm + turnedIm;
        mirrorRe[i] = evenRe - turnedRe;
        mirrorIm[i] = turnedIm - evenIm;
    }
    out[0] = 2.0f * (re[0] + im[0]);
    out[1] = 0.0f;

    float* const upper = out + 2 * half;
    const float* const lastMirrorRe = mirrorRe + half - 1;
    const float* const lastMirrorIm = mirrorIm + half - 1;
    for (ptrdiff_t i = 0; i < half; ++i) {
        upper[2 * i] = lastMirrorRe[-i];
        upper[2 * i + 1] = lastMirrorIm[-i];
    }
}

void transformLong(const float* input, float* output, const FFTState_Float& state, float* work)
{
    const ptrdiff_t points = state.points;
    const ptrdiff_t quarter = points / 4;
    float* from = work;
    float* to = work + 2 * points;

    firstStage(input, from, from + points, state.first, quarter);
    secondStage(from, from + points, to, state.second, quarter);
    std::swap(from, to);

    const float* factors = state.middle;
    ptrdiff_t stride = 16;
    for (; 4 * stride < points; stride *= 4) {
        for (ptrdiff_t first = 0; first < quarter; first += stride) {
            float* const out = to + 8 * first;
            middleGroup(from + 2 * first, quarter, out, out + 2 * stride, out + 4 * stride,
                        out + 6 * stride, factors, stride);
            factors += factorParts;
        }
        std::swap(from, to);
    }

    float* const re = to;
    float* const im = to + points;
    if (4 * stride == points) {
        lastStageOfFour(from, re, im, re + stride, im + stride, re + 2 * stride, im + 2 * stride,
                        re + 3 * stride, im + 3 * stride, stride);
    } else {
        lastStageOfTwo(from, re, im, re + stride, im + stride, stride);
    }
    untangle(re, im, output, state.cosines, state.sines, from, from + points / 2, points);
}

// One stage of a short transform, two points at a time.
void shortStage(const float* __restrict inRe, const float* __restrict inIm, float* __restrict outRe,
                float* __restrict outIm, const FFTState_Float& state, ptrdiff_t stride)
{
    const ptrdiff_t half = state.points / 2;
    for (ptrdiff_t first = 0; first < half; first += stride) {
        const float cosine = state.cosines[2 * first];
        const float sine = state.sines[2 * first];
        for (ptrdiff_t i = first; i < first + stride; ++i) {
            const float re = inRe[i] - inRe[i + half];
            const float im = inIm[i] - inIm[i + half];
            outRe[first + i] = inRe[i] + inRe[i + half];
            outIm[first + i] = inIm[i] + inIm[i + half];
            outRe[first + stride + i] = re * cosine - im * sine;
            outIm[first + stride + i] = re * sine + im * cosine;
        }
    }
}

void transformShort(const float* input, float* output, const FFTState_Float& state)
{
    const ptrdiff_t points = state.points;
    float areas[2][2][maxShortPoints] = {};
    float(*from)[maxShortPoints] = areas[0];
    float(*to)[maxShortPoints] = areas[1];
    for (ptrdiff_t i = 0; i < points; ++i) {
        from[0][i] = input[2 * i];
        from[1][i] = input[2 * i + 1];
    }
    for (ptrdiff_t stride = 1; stride < points; stride *= 2) {
        shortStage(from[0], from[1], to[0], to[1], state, stride);
        std::swap(from, to);
    }

    output[0] = from[0][0] + from[1][0];
    output[1] = 0.0f;
    for (ptrdiff_t k = 1; k <= points / 2; ++k) {
        const ptrdiff_t mirror = points - k;
        const float evenRe = 0.5f * (from[0][k] + from[0][mirror]);
        const float evenIm = 0.5f * (from[1][k] - from[1][mirror]);
        const float oddRe = 0.5f * (from[1][k] + from[1][mirror]);
        const float oddIm = 0.5f * (from[0][mirror] - from[0][k]);
        const float turnedRe = oddRe * state.cosines[k] - oddIm * state.sines[k];
        const float turnedIm = oddRe * state.sines[k] + oddIm * state.cosines[k];
        output[2 * k] = evenRe + turnedRe;
        output[2 * k + 1] = evenIm + turnedIm;
        output[2 * mirror] = evenRe - turnedRe;
        output[2 * mirror + 1] = turnedIm - evenIm;
    }
}

// Whether the work is done in the caller's buffer. The greatest transforms work in a block of their
// own, whose size an unsigned int need not hold.
bool takesBuffer(const FFTState_Float& state)
{
    return state.points <= maxBufferPoints;
}

} // namespace

namespace transform
{

int FFTInit(FFTState_Float** state, unsigned int order)
{
    if (state == nullptr) return 1;
    *state = nullptr;
    if (order < minOrder || order > maxOrder) return 1;

    std::unique_ptr<FFTState_Float> made(new FFTState_Float);
    made->points = ptrdiff_t{1} << (order - 1);
    if (made->points <= maxShortPoints)
        prepareShort(*made);
    else
        prepareLong(*made);
    *state = made.release();
    return 0;
}

int FFTGetBufSize(const FFTState_Float* state, unsigned int* bytes)
{
    if (bytes == nullptr) return 1;
    *bytes = 0;
    if (state == nullptr) return 1;
    if (takesBuffer(*state)) *bytes = static_cast<unsigned int>(state->workBytes);
    return 0;
}

int FFTFwd(const float* input, float* output, const FFTState_Float* state, unsigned char* buffer)
{
    if (input == nullptr || output == nullptr || state == nullptr) return 1;
    if (state->points <= maxShortPoints) {
        transformShort(input, output, *state);
    } else if (!takesBuffer(*state)) {
        const std::unique_ptr<unsigned char[]> block = newBlock(state->workBytes);
        transformLong(input, output, *state, alignedFloats(block.get()));
    } else {
        if (buffer == nullptr) return 1;
        transformLong(input, output, *state, alignedFloats(buffer));
    }
    return 0;
}

int FFTFree(FFTState_Float* state)
{
    delete state;
    return 0;
}

} // namespace transform

} // namespace vxaccelerate
