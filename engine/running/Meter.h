#ifndef VXL_SYNC_METER_H
#define VXL_SYNC_METER_H

#include <cstddef>
#include <functional>
#include <mutex>
#include <optional>

#include "vxl_sync/Sync.h"

namespace vxlsync
{

// A part of a stage that is counted by itself: between two shares of the stage, in equal steps.
struct StagePart {
    double begin = 0.0;
    double end = 1.0;
    std::size_t steps = 0;
};

// Tells the host how far the job is. Any thread may report; the host is told by one at a time.
class Meter
{
public:
    explicit Meter(std::function<void(const Progress&)> newListener = {});
    Meter(const Meter&) = delete;
    Meter& operator=(const Meter&) = delete;

    // The stage begins, in `steps` equal steps; 0 for one that cannot be counted.
    void begin(Stage stage, std::size_t steps);
    // The next part of the stage begins, where its steps are known only part by part.
    void part(const StagePart& newPart);
    // One more step of the stage is done; with the index of the source that was read by it.
    void step(std::optional<std::size_t> finishedSource = std::nullopt);
    // The job is done, whatever stages it went without.
    void finish();

private:
    // Requires the guard, as tell does.
    void enter(const StagePart& newPart);
    void tell(double stageShare, std::optional<std::size_t> finishedSource);

    std::function<void(const Progress&)> listener;
    std::mutex guard;
    Stage stage = Stage::reading;
    StagePart stagePart;
    std::size_t done = 0;
};

} // namespace vxlsync

#endif
