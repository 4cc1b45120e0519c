#ifndef VXS_VXFLOATINGPOINT_H
#define VXS_VXFLOATINGPOINT_H

#include <cfenv>

namespace VXS
{

// Puts the thread's floating-point environment to its default for as long as it lives: rounding to
// nearest, the numbers below the normal ones kept, nothing trapped. Hosts of audio run with other
// settings, under which the same recording would give other landmarks. At the end the host has its
// own settings and flags again.
//
// Compilers know nothing of the environment and may move arithmetic past its change. What is read
// from memory that others reach, or written there, stays in its place; a number that is neither has
// to be held in a volatile variable.
class DefaultFloatingPoint
{
public:
    DefaultFloatingPoint()
    {
        std::fegetenv(&former);
        std::fesetenv(FE_DFL_ENV);
    }
    ~DefaultFloatingPoint() { std::fesetenv(&former); }
    DefaultFloatingPoint(const DefaultFloatingPoint&) = delete;
    DefaultFloatingPoint& operator=(const DefaultFloatingPoint&) = delete;

private:
    std::fenv_t former;
};

} // namespace VXS

#endif
