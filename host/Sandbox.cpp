#include "Sandbox.h"

namespace vxlsync::host
{

Confinement confine()
{
    Confinement confinement;
    confinement.landlockVersion = confineByLandlock();
    confinement.callsFiltered = filterCalls();
    return confinement;
}

} // namespace vxlsync::host
