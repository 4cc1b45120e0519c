#ifndef VXL_SYNC_HIGHPASS_H
#define VXL_SYNC_HIGHPASS_H

#include "model/SampleStore.h"
#include "running/Interrupt.h"

namespace vxlsync
{

// The samples without what lies below 80 Hz, faded in and out over a quarter of a second: a hum
// that is cut off is a click, and a click correlates with any other. Silence stays silence and
// takes no memory. Requires a positive rate. Throws Cancelled.
template <typename Stored>
SampleStore<float> highPassed(const SampleStore<Stored>& samples, int rate,
                              const Interrupt& interrupt);

extern template SampleStore<float> highPassed(const SampleStore<float>& samples, int rate,
                                              const Interrupt& interrupt);
extern template SampleStore<float> highPassed(const SampleStore<std::uint16_t>& samples, int rate,
                                              const Interrupt& interrupt);

} // namespace vxlsync

#endif
