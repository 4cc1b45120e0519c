#include "running/Interrupt.h"

#include <chrono>
#include <exception>
#include <utility>

#include "vxl_sync/Sync.h"

namespace vxlsync
{

namespace
{

// Much shorter than the half second within which a job ends, and long enough for a host that asks
// an interpreter.
constexpr std::int64_t betweenQuestionsMilliseconds = 40;

std::int64_t nowMilliseconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}

} // namespace

Cancelled::Cancelled() : std::runtime_error("the job was cancelled") {}

Cancelled::~Cancelled() = default;

Interrupt::Interrupt(std::function<bool()> newIsCancelled) : isCancelled(std::move(newIsCancelled))
{
}

bool Interrupt::ask() const
{
    if (raised) return true;
    if (!isCancelled || nowMilliseconds() < nextQuestion) return false;
    const std::unique_lock<std::mutex> lock(guard, std::try_to_lock);
    // Another thread asks just now.
    if (!lock.owns_lock()) return raised;
    nextQuestion = nowMilliseconds() + betweenQuestionsMilliseconds;
    try {
        if (isCancelled()) raised = true;
    } catch (...) {
        thrown = std::current_exception();
        raised = true;
    }
    return raised;
}

void Interrupt::check() const
{
    if (!ask()) return;
    const std::lock_guard<std::mutex> lock(guard);
    if (thrown) std::rethrow_exception(thrown);
    throw Cancelled();
}

bool Interrupt::isRaised() const noexcept
{
    return ask();
}

} // namespace vxlsync
