#include <cstddef>

#include "vxl_sync/Result.h"

namespace vxlsync
{

namespace
{

// In the order of DeviceEvidence, of Method and of Verdict.
constexpr const char* evidenceNames[] = {"none",  "stated",     "serial number",
                                         "model", "originator", "names"};
constexpr const char* methodNames[] = {"landmarks", "correlation"};
constexpr const char* verdictNames[] = {"accepted",  "confirmed",    "weak",
                                        "ambiguous", "contradicted", "forbidden"};

} // namespace

const char* nameOf(DeviceEvidence evidence)
{
    return evidenceNames[static_cast<std::size_t>(evidence)];
}

const char* nameOf(Method method)
{
    return methodNames[static_cast<std::size_t>(method)];
}

const char* nameOf(Verdict verdict)
{
    return verdictNames[static_cast<std::size_t>(verdict)];
}

} // namespace vxlsync
