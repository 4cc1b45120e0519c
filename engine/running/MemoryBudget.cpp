#include "running/MemoryBudget.h"

namespace vxlsync
{

MemoryBudget::MemoryBudget(std::size_t bytes) : left(bytes) {}

bool MemoryBudget::take(std::size_t bytes)
{
    const std::lock_guard<std::mutex> lock(guard);
    if (left < bytes) return false;
    left -= bytes;
    return true;
}

void MemoryBudget::giveBack(std::size_t bytes)
{
    const std::lock_guard<std::mutex> lock(guard);
    left += bytes;
}

std::size_t MemoryBudget::remaining() const
{
    const std::lock_guard<std::mutex> lock(guard);
    return left;
}

} // namespace vxlsync
