#ifndef HOSTILE_LIMITS_H
#define HOSTILE_LIMITS_H

#include <cstddef>
#include <functional>

namespace hostile
{

// What a test may use: seconds of processor time, and bytes of memory beyond those of the test
// program itself.
struct Limits {
    double seconds = 1.0;
    std::size_t bytes = std::size_t{64} << 20u;
};

// Runs `body` in a process of its own, so that a crash, a hang, a leak or an exception of its ends
// this test alone. Its failed expectations, and what it uses beyond the limits, fail this test.
// Memory beyond the limit is refused to it, as on a machine that has no more. Sanitizers, builds
// without optimisation and emulators distort both figures, which are not held against it there.
void withinLimits(const std::function<void()>& body);
void withinLimits(const Limits& limits, const std::function<void()>& body);

// Whether the figures are held against a test. Where they are not, what takes a second here takes
// minutes, and what is large is better left out.
bool isMeasured();

// Whether memory beyond the limit is refused here. A test that rests on it is skipped elsewhere.
bool refusesMemory();

} // namespace hostile

#endif
