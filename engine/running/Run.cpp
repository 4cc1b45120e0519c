#include "running/Run.h"

namespace vxlsync
{

Run::Run(std::size_t newThreads, std::size_t memoryBytes, const Callbacks& callbacks)
    : threads(newThreads),
      interrupt(callbacks.isCancelled),
      meter(callbacks.progress),
      memory(memoryBytes)
{
}

} // namespace vxlsync
