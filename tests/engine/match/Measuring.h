#ifndef VXL_SYNC_TESTS_MEASURING_H
#define VXL_SYNC_TESTS_MEASURING_H

#include <chrono>
#include <functional>
#include <thread>
#include <vector>

#include "Signals.h"
#include "match/Align.h"
#include "match/Prepared.h"
#include "running/Run.h"
#include "vxl_sync/Sync.h"

// What the units of matching run on.
namespace measuring
{

constexpr std::size_t plenty = std::size_t{1} << 40U;

inline vxlsync::Prepared preparedOf(const std::vector<float>& samples)
{
    const vxlsync::Interrupt never;
    return vxlsync::prepare(signals::stored(samples), signals::rate, never);
}

inline vxlsync::Alignment aligned(const vxlsync::Prepared& first, const vxlsync::Prepared& second,
                                  const vxlsync::AlignRequest& request)
{
    const vxlsync::Interrupt never;
    vxlsync::AlignWorkspace work;
    return vxlsync::align(first, second, request, never, work);
}

// A host that wants the job to end, from the `after`-th question on. It takes so long to answer
// that it is asked whenever there is a chance to.
inline std::function<bool()> endingAt(int after)
{
    return [after, asked = 0]() mutable {
        std::this_thread::sleep_for(std::chrono::milliseconds(after > 1 ? 45 : 0));
        return ++asked >= after;
    };
}

inline vxlsync::Callbacks cancelling(int after = 1)
{
    vxlsync::Callbacks callbacks;
    callbacks.isCancelled = endingAt(after);
    return callbacks;
}

} // namespace measuring

#endif
