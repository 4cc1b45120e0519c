#ifndef VXS_TESTS_SUPPORT_TWIN_JOB_H
#define VXS_TESTS_SUPPORT_TWIN_JOB_H

#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "VXFile.h"
#include "VXFileSet.h"
#include "VXLandmark.h"
#include "plain/Recording.h"

namespace twins
{

// The same recordings for the library and for its twin.
class Job
{
public:
    void addFile(std::int64_t id);
    // An id whose entry holds no file.
    void addNothing(std::int64_t id);
    void addLandmark(std::int64_t id, std::int32_t offset, std::uint32_t key);
    // A file that landmarks may name, but which is not in the set. Once for an id is enough.
    void addOutsider(std::int64_t id);
    // A landmark that lies in the list of one file and names another, or none, as its own.
    void addStray(std::int64_t id, std::int32_t offset, std::uint32_t key,
                  std::optional<std::int64_t> owner);
    // Of one file, or of all.
    void countUp(std::int64_t id);
    void countUp();

    // The twin's landmark of each of the library's. Requires: every landmark has been added.
    std::map<const VXS::VXLandmark*, const plain::Landmark*> twins();

    VXS::VXFileSet fileSet;
    plain::RecordingSet recordings;

private:
    std::vector<std::unique_ptr<plain::Recording>> owned;
    std::map<std::int64_t, std::unique_ptr<VXS::VXFile>> outsiders;
};

} // namespace twins

#endif
