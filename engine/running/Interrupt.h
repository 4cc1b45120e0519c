#ifndef VXL_SYNC_INTERRUPT_H
#define VXL_SYNC_INTERRUPT_H

#include <atomic>
#include <cstdint>
#include <exception>
#include <functional>
#include <mutex>

namespace vxlsync
{

// Asks the host whether the job shall end. Any thread may ask as often as it likes: the host is
// asked by one thread at a time, and every few hundredths of a second only.
class Interrupt
{
public:
    // `newIsCancelled` may be empty, and then nothing ever ends.
    explicit Interrupt(std::function<bool()> newIsCancelled = {});
    Interrupt(const Interrupt&) = delete;
    Interrupt& operator=(const Interrupt&) = delete;

    // Throws Cancelled, now and ever after, once the host has said so. To be called at least every
    // tenth of a second of work.
    void check() const;
    // The same as an answer, for callers that must not throw. What the host throws counts as yes,
    // and the next check() throws it.
    bool isRaised() const noexcept;

private:
    bool ask() const;

    std::function<bool()> isCancelled;
    mutable std::mutex guard;
    mutable std::atomic<bool> raised{false};
    mutable std::atomic<std::int64_t> nextQuestion{0};
    // What the host threw where it could not be passed on; guarded.
    mutable std::exception_ptr thrown;
};

} // namespace vxlsync

#endif
