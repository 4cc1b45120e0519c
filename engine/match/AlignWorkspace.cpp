#include "match/AlignWorkspace.h"

namespace vxlsync
{

Transform& AlignWorkspace::transform(std::size_t length)
{
    std::unique_ptr<Transform>& held = transforms[length];
    if (!held) held = std::make_unique<Transform>(length);
    return *held;
}

std::vector<Spectrum>& AlignWorkspace::spectraOf(std::size_t windowLength, std::size_t windows)
{
    if (windowLength != cutLength || firstSpectra.size() != windows) firstSpectra.clear();
    cutLength = windowLength;
    firstSpectra.resize(windows);
    return firstSpectra;
}

} // namespace vxlsync
