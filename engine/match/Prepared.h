#ifndef VXL_SYNC_PREPARED_H
#define VXL_SYNC_PREPARED_H

#include <cstdint>
#include <vector>

#include "model/SampleStore.h"
#include "running/Run.h"

namespace vxlsync
{

// Sounds of speech and music last about so long.
constexpr double energyStepSeconds = 0.1;

// A recording as it is compared: what highPassed gives, with its loudness over time.
struct Prepared {
    SampleStore<float> samples;
    int rate = 0;
    // Mean square in steps of energyStepSeconds; a last part of a step is left out.
    std::vector<float> energy;
    // Mean square of what is there when nothing happens.
    double floor = 0.0;

    double seconds() const { return static_cast<double>(samples.size()) / rate; }
    bool hasSound() const { return samples.hasSound(0, samples.size()); }
};

// One recording for comparing, at its own rate, which is positive. Throws Cancelled.
template <typename Stored>
Prepared prepare(const SampleStore<Stored>& samples, int rate, const Interrupt& interrupt);

extern template Prepared prepare(const SampleStore<float>& samples, int rate,
                                 const Interrupt& interrupt);
extern template Prepared prepare(const SampleStore<std::uint16_t>& samples, int rate,
                                 const Interrupt& interrupt);

// All recordings at analysisRate; each is let go of as soon as it has been prepared. Throws
// Cancelled.
std::vector<Prepared> prepareAll(std::vector<SampleStore<float>> recordings, const Run& run);

} // namespace vxlsync

#endif
