#include <algorithm>
#include <cmath>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <map>
#include <memory>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Console.h"
#include "VXClusterSync.h"
#include "VXFileSet.h"
#include "VXLandmarkExtract.h"
#include "VXMergeStatsSetProcessor.h"

// Recordings whose true offsets are known, from the paths to the seconds.

namespace
{

// One frame of 256 samples. Offsets are whole frames, so an offset cannot be told to less than half
// of it, and two frame grids that lie askew add the other half.
constexpr double tolerance = 0.032;

// Name to seconds after the group's earliest recording.
using Group = std::map<std::string, double>;
using Groups = std::vector<Group>;

// Reads the groups of a truth.json: within "groups" each pair of braces holds one group.
Groups readTruth(const std::string& folder)
{
    std::ifstream stream(folder + "/truth.json");
    EXPECT_TRUE(stream.good()) << folder << ": no truth.json";
    const std::string text{std::istreambuf_iterator<char>(stream),
                           std::istreambuf_iterator<char>()};
    const std::regex groupPattern("\\{([^{}]*)\\}");
    const std::regex memberPattern("\"([^\"]+)\\.wav\": *([-0-9.]+)");
    Groups groups;
    const std::sregex_iterator end;
    for (std::sregex_iterator group(text.begin(), text.end(), groupPattern); group != end;
         ++group) {
        const std::string members = (*group)[1];
        groups.emplace_back();
        for (std::sregex_iterator member(members.begin(), members.end(), memberPattern);
             member != end; ++member) {
            groups.back()[(*member)[1]] = std::stod((*member)[2]);
        }
    }
    return groups;
}

std::vector<std::string> pathsIn(const std::string& folder)
{
    std::vector<std::string> paths;
    for (const auto& entry : std::filesystem::directory_iterator(folder))
        paths.push_back(entry.path().generic_string());
    std::sort(paths.begin(), paths.end());
    return paths;
}

Groups synchronise(const std::vector<std::string>& paths)
{
    const Console console;
    const VXS::VXExtractParams params;
    VXS::VXLandmarkExtract extractor(params);
    const std::unique_ptr<VXS::VXFileSet> fileSet(extractor.runAll(paths));
    VXS::VXClusterSync sync{VXS::VXClusterSyncParams(params)};
    const VXS::VXClusterResultHolder result(sync.run(fileSet.get(), nullptr));
    Groups groups;
    for (const VXS::VXClusterMembers* members : *result) {
        groups.emplace_back();
        for (const VXS::VXClusterMember* member : *members)
            groups.back()[member->name] = static_cast<double>(member->offsetSeconds);
    }
    return groups;
}

std::set<std::set<std::string>> namesOf(const Groups& groups)
{
    std::set<std::set<std::string>> names;
    for (const Group& group : groups) {
        std::set<std::string> members;
        for (const auto& member : group)
            members.insert(member.first);
        names.insert(members);
    }
    return names;
}

Group offsetsOf(const Groups& groups)
{
    Group offsets;
    for (const Group& group : groups)
        offsets.insert(group.begin(), group.end());
    return offsets;
}

void expectTruth(const std::string& folder)
{
    const Groups truth = readTruth(folder);
    ASSERT_FALSE(truth.empty()) << folder;

    const Groups found = synchronise(pathsIn(folder));

    EXPECT_EQ(namesOf(truth), namesOf(found));
    const Group offsets = offsetsOf(found);
    for (const auto& expected : offsetsOf(truth)) {
        ASSERT_EQ(1u, offsets.count(expected.first)) << expected.first;
        EXPECT_NEAR(expected.second, offsets.at(expected.first), tolerance) << expected.first;
    }
}

std::string testRecordings(const std::string& event)
{
    return std::string(VXS_TEST_RECORDINGS) + "/" + event;
}

} // namespace

TEST(KnownOffsets, TenSecondsOfOneSong)
{
    expectTruth(testRecordings("ten-seconds"));
}

// The first and the last recording share no time.
TEST(KnownOffsets, ChainThroughTheMiddleRecording)
{
    expectTruth(testRecordings("music-chain"));
}

TEST(KnownOffsets, ConcertAndTalkAndAStranger)
{
    expectTruth(testRecordings("two-groups"));
}

TEST(KnownOffsets, SampleFormatsOfOneSong)
{
    expectTruth(testRecordings("wave-formats"));
}

TEST(KnownOffsets, FourRecordersAndAStranger)
{
    expectTruth(VXS_EXAMPLE_RECORDINGS);
}

// Ids follow the order of the paths, and with them the sign of every offset.
TEST(KnownOffsets, OrderOfThePathsDoesNotMatter)
{
    std::vector<std::string> paths = pathsIn(testRecordings("two-groups"));
    const Groups forward = synchronise(paths);
    std::reverse(paths.begin(), paths.end());

    const Groups backward = synchronise(paths);

    EXPECT_EQ(namesOf(forward), namesOf(backward));
    EXPECT_EQ(offsetsOf(forward), offsetsOf(backward));
}
