#include <cstddef>

#include "vxl_sync/Result.h"

namespace vxlsync
{

namespace
{

// In the order of their enumerations.
constexpr const char* evidenceNames[] = {"none",  "stated",     "serial number",
                                         "model", "originator", "names"};
constexpr const char* methodNames[] = {"landmarks", "correlation"};
constexpr const char* confidenceNames[] = {"certain", "likely"};
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

const char* nameOf(Confidence confidence)
{
    return confidenceNames[static_cast<std::size_t>(confidence)];
}

const char* nameOf(Verdict verdict)
{
    return verdictNames[static_cast<std::size_t>(verdict)];
}

} // namespace vxlsync
