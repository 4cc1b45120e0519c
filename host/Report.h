#ifndef VXL_SYNC_REPORT_H
#define VXL_SYNC_REPORT_H

#include <cstdint>
#include <string>
#include <vector>

namespace vxlsync
{

// One recording in the place that the library found for it. Ids rise with the order of the files on
// the command line.
struct Member {
    std::int64_t id;
    std::string name;
    std::string path;
    // Seconds from the start of the earliest recording of the group.
    float offsetSeconds;
};

using Group = std::vector<Member>;

struct Recording {
    std::string name;
    std::string path;
};

struct Failure {
    std::string path;
    std::string reason;
};

// What one run of the program found out, in the order in which it is told.
struct Report {
    // Two or more members each.
    std::vector<Group> groups;
    std::vector<Recording> alone;
    std::vector<Failure> failed;
};

// Orders the members of a group by offset, and groups, lone recordings and equal offsets by the
// order of the command line; a group stands where the first of its files stands. `failed` keeps its
// order.
Report makeReport(std::vector<Group> clusters, std::vector<Failure> failed);

} // namespace vxlsync

#endif
