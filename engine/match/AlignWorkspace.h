#ifndef VXL_SYNC_ALIGNWORKSPACE_H
#define VXL_SYNC_ALIGNWORKSPACE_H

#include <cstddef>
#include <map>
#include <memory>
#include <vector>

#include "match/Cut.h"
#include "match/Transform.h"

namespace vxlsync
{

// Transforms by length and buffers of alignments, for one thread at a time. Nothing in it outlives
// an alignment but the memory.
class AlignWorkspace
{
public:
    Transform& transform(std::size_t length);

    Cutter cutter;
    std::vector<float> firstPart;
    std::vector<float> secondPart;
    Spectrum firstSpectrum;
    Spectrum secondSpectrum;
    std::vector<float> correlation;

private:
    std::map<std::size_t, std::unique_ptr<Transform>> transforms;
};

} // namespace vxlsync

#endif
