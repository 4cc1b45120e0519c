#ifndef VXS_VXFILESET_H
#define VXS_VXFILESET_H

#include <cstdint>
#include <map>
#include <string>

#include "VXExport.h"

namespace VXS
{

class VXFile;

// The recordings of one job by id, with their names. VXLandmarkExtract::runAll makes one; a host
// that extracts its recordings one by one makes its own, gives it each VXFile through addFile, and
// enters the names in the maps itself. A set owns the files that it holds; delete frees it with all
// of them. It must outlive nothing: a result of VXClusterSync::run holds no pointer into it.
class VXFileSet
{
public:
    VXS_API VXFileSet();
    VXS_API ~VXFileSet();
    VXFileSet(const VXFileSet&) = delete;
    VXFileSet& operator=(const VXFileSet&) = delete;

    // Takes ownership of `file` under its own id and returns it. If the id is taken, the earlier
    // file stays, the new one remains the caller's, and it is returned all the same: compare with
    // getFiles() to tell. It remains the caller's as well if this throws std::bad_alloc. Null
    // changes nothing and is returned.
    VXS_API VXFile* addFile(VXFile* file);

    // The recordings by id, for direct use. Owned by the set.
    std::map<std::int64_t, VXFile*>& getFiles() { return files; }

    // Calls VXFile::computeCLF on each file in order of id.
    VXS_INTERNAL void computeAllCLFs();

    // Short name to id. Of two recordings with one name, the later id.
    std::map<std::string, std::int64_t> nameToId;
    // Id to short name. VXClusterSync::run names the members of its result from this map, and
    // enters an empty name for an id that it lacks.
    std::map<std::int64_t, std::string> idToName;
    // Id to the path as it was given to extraction.
    std::map<std::int64_t, std::string> idToPath;

private:
    std::map<std::int64_t, VXFile*> files;
    // The id last given to addFile, also of a file that was not kept. Nothing reads it; hosts
    // compile in the size of this class, so it stays as long as that does.
    std::int64_t lastFileID = 0;
};

} // namespace VXS

#endif
