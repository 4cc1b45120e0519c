#ifndef VXL_SYNC_MEMORYBUDGET_H
#define VXL_SYNC_MEMORYBUDGET_H

#include <cstddef>
#include <mutex>

namespace vxlsync
{

// Memory that a job may still take, counted by those who take it. Any thread may ask.
class MemoryBudget
{
public:
    explicit MemoryBudget(std::size_t bytes);
    MemoryBudget(const MemoryBudget&) = delete;
    MemoryBudget& operator=(const MemoryBudget&) = delete;

    // False, and nothing is taken, if so much is not left.
    bool take(std::size_t bytes);
    void giveBack(std::size_t bytes);
    std::size_t remaining() const;

private:
    mutable std::mutex guard;
    std::size_t left;
};

} // namespace vxlsync

#endif
