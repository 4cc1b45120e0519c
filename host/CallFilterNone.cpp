#include "Sandbox.h"

namespace vxlsync::host
{

// For systems without it, builds without the library that writes filters, and builds that a sandbox
// would disturb.
bool filterCalls()
{
    return false;
}

} // namespace vxlsync::host
