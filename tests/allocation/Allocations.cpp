#include "Allocations.h"

#include <atomic>
#include <cstddef>
#include <cstdlib>
#include <new>

namespace allocation
{

namespace
{

std::atomic<std::int64_t> live{0};

struct Plan {
    bool isActive = false;
    bool isForAll = false;
    std::uint64_t allowed = 0;
    std::uint64_t refused = 0;
};

thread_local Plan plan;

bool isRefused()
{
    if (!plan.isActive) return false;
    if (plan.allowed > 0) {
        --plan.allowed;
        return false;
    }
    if (plan.refused > 0 && !plan.isForAll) return false;
    ++plan.refused;
    return true;
}

// Null where it is refused or memory has run out.
void* allocate(std::size_t bytes)
{
    if (isRefused()) return nullptr;
    // Blocks of no bytes have an address of their own as well.
    void* block = std::malloc(bytes > 0 ? bytes : 1);
    if (block != nullptr) ++live;
    return block;
}

void* allocateAligned(std::size_t bytes, std::align_val_t alignment)
{
    if (isRefused()) return nullptr;
    const auto step = static_cast<std::size_t>(alignment);
    const std::size_t steps = bytes / step + 1;
    void* block = std::aligned_alloc(step, steps * step);
    if (block != nullptr) ++live;
    return block;
}

void* orThrow(void* block)
{
    if (block == nullptr) throw std::bad_alloc();
    return block;
}

void release(void* block)
{
    if (block != nullptr) --live;
    std::free(block);
}

} // namespace

Refusal::Refusal(std::uint64_t number, Refused kind)
{
    plan = {true, kind == Refused::AllFromThere, number, 0};
}

Refusal::~Refusal()
{
    end();
}

bool Refusal::hasHappened() const
{
    return plan.refused > 0;
}

void Refusal::end()
{
    plan.isActive = false;
}

std::int64_t liveBlocks()
{
    return live;
}

} // namespace allocation

void* operator new(std::size_t bytes)
{
    return allocation::orThrow(allocation::allocate(bytes));
}

void* operator new[](std::size_t bytes)
{
    return allocation::orThrow(allocation::allocate(bytes));
}

void* operator new(std::size_t bytes, const std::nothrow_t&) noexcept
{
    return allocation::allocate(bytes);
}

void* operator new[](std::size_t bytes, const std::nothrow_t&) noexcept
{
    return allocation::allocate(bytes);
}

void* operator new(std::size_t bytes, std::align_val_t alignment)
{
    return allocation::orThrow(allocation::allocateAligned(bytes, alignment));
}

void* operator new[](std::size_t bytes, std::align_val_t alignment)
{
    return allocation::orThrow(allocation::allocateAligned(bytes, alignment));
}

void* operator new(std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return allocation::allocateAligned(bytes, alignment);
}

void* operator new[](std::size_t bytes, std::align_val_t alignment, const std::nothrow_t&) noexcept
{
    return allocation::allocateAligned(bytes, alignment);
}

void operator delete(void* block) noexcept
{
    allocation::release(block);
}

void operator delete[](void* block) noexcept
{
    allocation::release(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    allocation::release(block);
}

void operator delete[](void* block, std::size_t) noexcept
{
    allocation::release(block);
}

void operator delete(void* block, const std::nothrow_t&) noexcept
{
    allocation::release(block);
}

void operator delete[](void* block, const std::nothrow_t&) noexcept
{
    allocation::release(block);
}

void operator delete(void* block, std::align_val_t) noexcept
{
    allocation::release(block);
}

void operator delete[](void* block, std::align_val_t) noexcept
{
    allocation::release(block);
}

void operator delete(void* block, std::size_t, std::align_val_t) noexcept
{
    allocation::release(block);
}

void operator delete[](void* block, std::size_t, std::align_val_t) noexcept
{
    allocation::release(block);
}

void operator delete(void* block, std::align_val_t, const std::nothrow_t&) noexcept
{
    allocation::release(block);
}

void operator delete[](void* block, std::align_val_t, const std::nothrow_t&) noexcept
{
    allocation::release(block);
}
