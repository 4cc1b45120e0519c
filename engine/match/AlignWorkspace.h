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
    // Those of the first recording's windows, by window, while one alignment measures about several
    // lines; empty where they are not known. Forgets what it holds of windows cut otherwise.
    std::vector<Spectrum>& spectraOf(std::size_t windowLength, std::size_t windows);
    void forgetSpectra() { firstSpectra.clear(); }

    Cutter cutter;
    std::vector<float> firstPart;
    std::vector<float> secondPart;
    // Of the product, and of the second recording's window.
    Spectrum product;
    Spectrum secondSpectrum;
    std::vector<float> correlation;

private:
    std::size_t cutLength = 0;
    std::vector<Spectrum> firstSpectra;
    std::map<std::size_t, std::unique_ptr<Transform>> transforms;
};

} // namespace vxlsync

#endif
