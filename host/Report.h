#ifndef VXL_SYNC_REPORT_H
#define VXL_SYNC_REPORT_H

#include <cstddef>
#include <string>
#include <vector>

namespace vxlsync
{

// One recording in its place. It starts `offsetSeconds` after the earliest recording of its group,
// on the clock of the group's reference; its sound at time t of its own happened at
// offsetSeconds + t * (1 + driftPpm / 1e6).
struct Member {
    std::size_t index = 0;
    std::string name;
    std::string path;
    double offsetSeconds = 0.0;
    double offsetUncertaintySeconds = 0.0;
    double driftPpm = 0.0;
    double driftUncertaintyPpm = 0.0;
    double durationSeconds = 0.0;
    std::vector<std::string> notes;
};

// Sound that one of two recordings lacks: from `atSeconds` of the first recording on, the offset is
// greater by `sizeSeconds`.
struct Jump {
    double atSeconds = 0.0;
    double sizeSeconds = 0.0;
};

// What was measured between two recordings. The offset is how much later the second started than
// the first, told at start, middle and end of the shared time, since clocks may differ.
struct ReportedLink {
    std::size_t first = 0;
    std::size_t second = 0;
    std::string firstName;
    std::string secondName;
    std::string method;
    double offsetSeconds = 0.0;
    double offsetAtStartSeconds = 0.0;
    double offsetAtEndSeconds = 0.0;
    double uncertaintySeconds = 0.0;
    double driftPpm = 0.0;
    double driftUncertaintyPpm = 0.0;
    double overlapSeconds = 0.0;
    // How far the correlation stands out of its own noise.
    double peakRatio = 0.0;
    double coherence = 0.0;
    double agreement = 0.0;
    // Coherence of the next best offset against that of this one.
    double secondBest = 0.0;
    bool inverted = false;
    std::string verdict;
    std::string reason;
    std::vector<Jump> jumps;
};

struct Group {
    std::size_t reference = 0;
    std::vector<Member> members;
    std::vector<ReportedLink> links;
};

struct LoneRecording {
    std::size_t index = 0;
    std::string name;
    std::string path;
    double durationSeconds = 0.0;
    std::string reason;
};

struct Failure {
    std::string path;
    std::string reason;
};

// What one run of the program found out, in the order in which it is told.
struct Report {
    // Two or more members each.
    std::vector<Group> groups;
    std::vector<LoneRecording> alone;
    // Links between recordings that are not in one group, and why they were not believed.
    std::vector<ReportedLink> refused;
    std::vector<Failure> failed;
};

// Orders the members of a group by offset, and groups, lone recordings and equal offsets by the
// order of the command line; a group stands where the first of its files stands. Links and failures
// keep their order.
void arrange(Report& report);

} // namespace vxlsync

#endif
