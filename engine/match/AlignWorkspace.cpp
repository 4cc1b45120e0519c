#include "match/AlignWorkspace.h"

namespace vxlsync
{

Transform& AlignWorkspace::transform(std::size_t length)
{
    std::unique_ptr<Transform>& held = transforms[length];
    if (!held) held = std::make_unique<Transform>(length);
    return *held;
}

} // namespace vxlsync
