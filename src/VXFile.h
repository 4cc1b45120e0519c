#ifndef VXS_VXFILE_H
#define VXS_VXFILE_H

#include <cstdint>
#include <limits>
#include <map>
#include <memory_resource>
#include <vector>

#include "VXExport.h"

namespace VXS
{

class VXLandmark;

// The landmarks of one recording by frame, with the CLF, the cumulative landmark function: a table
// that tells for each frame how many landmarks stand at that frame or before it. Time is counted in
// frames. A VXFile owns its landmarks. Hosts receive one from VXLandmarkExtract::run and either
// delete it or give it to a VXFileSet; what is in it is the library's business.
//
// The CLF is stale from construction until computeCLF has run, and again after each landmark added.
// One thread at a time may use a VXFile, also for its queries.
class VXFile
{
public:
    // An id alone makes a file of that id without landmarks, and converts to it.
    VXFile(std::int64_t newFileID) : fileID(newFileID) {}
    VXS_API ~VXFile();
    VXFile(const VXFile&) = delete;
    VXFile& operator=(const VXFile&) = delete;

    // Takes ownership, also when it throws. Null changes nothing.
    VXS_INTERNAL void addLandmark(VXLandmark* landmark);

    // Fills the CLF, and gives the landmark map an entry for every frame from the first landmark to
    // the last. Does nothing if the CLF is up to date. It asks for the memory of all these entries
    // first, some hundred bytes a frame, and throws std::bad_alloc before it changes anything where
    // that is refused. Should memory run out all the same, it throws with the CLF still stale, and
    // another call completes it.
    // VXClusterSync::run calls it for every recording, so a host need not.
    VXS_API void computeCLF();

    // Landmarks from frame `start` to frame `end`, both included and clipped to the recording, or
    // -1 while the CLF is stale. Requires: computeCLF has run.
    VXS_INTERNAL std::int64_t queryNumberLandmarksInBetween(std::int64_t start, std::int64_t end);

    // The landmarks by frame, for direct use. Still owned by the file.
    std::pmr::map<std::int64_t, std::vector<VXLandmark*>>& getLandmarkMap() { return landmarks; }

    std::int64_t getFileID() const { return fileID; }
    // Frame of the last landmark; lower than the first while there is none.
    std::int64_t getMaxLandmarkOffsetTime() const { return maxLandmarkOffsetTime; }
    // Frame of the first landmark.
    std::int64_t getMinLandmarkOffsetTime() const { return minLandmarkOffsetTime; }

private:
    // The nodes of both tables, each in one piece: among the landmarks, a walk by frame would wait
    // for memory at every node. Not from the default resource, which is the host's: it may refuse,
    // and it may go before the file.
    std::pmr::monotonic_buffer_resource nodes{std::pmr::new_delete_resource()};
    // Owns the landmarks. Within one frame they stand in the order in which they were added.
    std::pmr::map<std::int64_t, std::vector<VXLandmark*>> landmarks{&nodes};
    std::pmr::map<std::int64_t, std::int64_t> clf{&nodes};
    std::int64_t fileID;
    std::int64_t maxLandmarkOffsetTime = std::numeric_limits<std::int64_t>::min();
    std::int64_t minLandmarkOffsetTime = std::numeric_limits<std::int64_t>::max();
    bool clfDirty = true;
};

} // namespace VXS

#endif
