#include "read/Limits.h"

#include <chrono>

namespace vxlsync
{

double steadySeconds()
{
    const auto now = std::chrono::steady_clock::now().time_since_epoch();
    return std::chrono::duration<double>(now).count();
}

} // namespace vxlsync
