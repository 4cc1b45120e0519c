#ifndef VXL_SYNC_RESAMPLER_H
#define VXL_SYNC_RESAMPLER_H

#include <cstddef>
#include <functional>
#include <memory>
#include <vector>

struct soxr;

namespace vxlsync
{

// Brings one channel from one sample rate to another. Sample 0 stays sample 0, n samples become
// round(n * to / from), within one, and what lies above half of the lower rate is let through at
// less than -100 dB.
class Resampler
{
public:
    // May be called any number of times in one run, with a bounded number of samples each.
    using Sink = std::function<void(const float* samples, std::size_t count)>;

    // Throws std::runtime_error for rates that are not positive, and std::bad_alloc.
    Resampler(int newFrom, int newTo);

    // Any number of samples; they are taken up in parts.
    void run(const float* samples, std::size_t count, const Sink& sink);
    // Gives what the filter still holds. A new sound may begin after it.
    void drain(const Sink& sink);

private:
    struct Delete {
        void operator()(soxr* filter) const;
    };

    int from;
    int to;
    // Null where both rates are the same.
    std::unique_ptr<soxr, Delete> state;
    std::vector<float> buffer;
};

} // namespace vxlsync

#endif
