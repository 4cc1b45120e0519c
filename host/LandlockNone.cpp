#include "Sandbox.h"

namespace vxlsync::host
{

// For systems without it, and for builds that a sandbox would disturb.
int confineByLandlock()
{
    return 0;
}

} // namespace vxlsync::host
