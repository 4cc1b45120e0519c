#ifndef ALLOCATION_ALLOCATIONS_H
#define ALLOCATION_ALLOCATIONS_H

#include <cstdint>

// The allocations of this program: every form of operator new and delete is replaced, also for the
// standard library, so that tests can count them and refuse any one.
namespace allocation
{

enum class Refused { One, AllFromThere };

// While it lives, the allocation of the given number, counted from 0, is refused on this thread,
// alone or with all that follow it. One at a time.
class Refusal
{
public:
    Refusal(std::uint64_t number, Refused kind);
    ~Refusal();
    Refusal(const Refusal&) = delete;
    Refusal& operator=(const Refusal&) = delete;

    // Whether any was refused so far. Works after end as well.
    bool hasHappened() const;
    // Allocations succeed again.
    void end();
};

// Blocks that were allocated and are not freed, on all threads.
std::int64_t liveBlocks();

} // namespace allocation

#endif
