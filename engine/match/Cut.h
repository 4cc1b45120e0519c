#ifndef VXL_SYNC_CUT_H
#define VXL_SYNC_CUT_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "model/SampleStore.h"

namespace vxlsync
{

// Gains from 0 up to 1 in the shape of a half cosine.
std::vector<float> cosineFade(std::size_t count);

// Cuts pieces out of recordings. What lies outside of the recording is silence. Both ends of a
// piece are faded by the gains given, of which there are at most half as many as the piece is long.
class Cutter
{
public:
    Cutter();

    // `length` samples from a whole position. False if all of them are silent; then `out` is left
    // as it is.
    bool cut(const SampleStore<float>& samples, std::int64_t start, std::size_t length,
             const std::vector<float>& fade, float* out);
    // The same at positions that are `step` apart, which follows a clock that runs faster or
    // slower. Requires a step near 1.
    bool cutStretched(const SampleStore<float>& samples, double start, double step,
                      std::size_t length, const std::vector<float>& fade, float* out);

private:
    // Of the interpolation, for many places between two samples.
    std::vector<float> taps;
    std::vector<float> around;
};

} // namespace vxlsync

#endif
