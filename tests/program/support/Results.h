#ifndef VXL_SYNC_TESTS_RESULTS_H
#define VXL_SYNC_TESTS_RESULTS_H

#include <string>

#include <vxl_sync/Result.h>

// Results for the units that write them.
namespace results
{

inline vxlsync::SourceFacts source(const std::string& name, const std::string& path,
                                   double durationSeconds = 0.0)
{
    vxlsync::SourceFacts facts;
    facts.name = name;
    facts.path = path;
    facts.durationSeconds = durationSeconds;
    return facts;
}

// A group of two, one alone, and one failure.
inline vxlsync::Result everything()
{
    vxlsync::Result result;
    result.sources = {source("first", "dir/first.wav", 20.0), source("b", "a, \"b\".mp3", 20.0),
                      source("alone", "alone.ogg", 5.0), source("gone", "gone.wav")};
    result.sources[1].notes = {"eight-bit samples are signed"};
    vxlsync::Group group;
    group.reference = 0;
    group.members = {{0, 0.0, 0.0, 0.0, 0.0}, {1, 1.25, 0.0001, -20.5, 0.25}};
    result.groups = {group};
    result.alone = {{2, "silent"}};
    result.failed = {{3, "could not be read: does not exist"}};
    return result;
}

} // namespace results

#endif
