#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Signals.h"
#include "VXClusterSync.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXLandmarkExtract.h"
#include "VXMergeStatsSetProcessor.h"

// Separate objects on separate threads, to be looked at by a sanitizer for threads as well.

namespace
{

constexpr std::size_t threadCount = 8;

using Landmarks = std::vector<signals::LandmarkRow>;
using Offsets = std::map<std::int64_t, std::pair<std::string, float>>;

void runSideBySide(const std::function<void(std::size_t)>& job)
{
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < threadCount; ++i)
        threads.emplace_back(job, i);
    for (std::thread& thread : threads)
        thread.join();
}

// Twelve seconds, other ones for each number.
signals::Samples soundOf(std::size_t number)
{
    return signals::noise(static_cast<std::uint32_t>(number) + 1, 96000);
}

// Every other extractor has another transform, so that tables for one size cannot serve all.
VXS::VXExtractParams paramsOf(std::size_t number)
{
    VXS::VXExtractParams params;
    if (number % 2 == 1) params.setFftSize(1024);
    return params;
}

// Two recordings of one sound, the second a second later, and one of another.
std::unique_ptr<VXS::VXFileSet> makeFileSet(std::size_t number)
{
    const signals::Samples sound = soundOf(number);
    const std::vector<signals::Samples> recordings = {
        sound, {sound.begin() + 8000, sound.end()}, soundOf(number + 100)};
    auto fileSet = std::make_unique<VXS::VXFileSet>();
    VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};
    std::int64_t id = 0;
    for (const signals::Samples& samples : recordings) {
        signals::SignalInput input(samples);
        fileSet->addFile(extractor.run(&input, ++id));
        fileSet->idToName[id] = "take " + std::to_string(id);
    }
    return fileSet;
}

Offsets synchronise(VXS::VXFileSet& fileSet)
{
    VXS::VXClusterSync sync{VXS::VXClusterSyncParams(VXS::VXExtractParams())};
    const VXS::VXClusterResultHolder result(sync.run(&fileSet, nullptr));
    Offsets offsets;
    for (const VXS::VXClusterMembers* members : *result) {
        for (const VXS::VXClusterMember* member : *members)
            offsets[member->fileID] = {member->name, member->offsetSeconds};
    }
    return offsets;
}

} // namespace

TEST(Concurrency, EightExtractorsGiveWhatTheyGiveOneAfterTheOther)
{
    std::vector<Landmarks> expected;
    for (std::size_t i = 0; i < threadCount; ++i)
        expected.push_back(signals::extractLandmarks(paramsOf(i), soundOf(i)));
    std::vector<Landmarks> landmarks(threadCount);

    runSideBySide(
        [&](std::size_t i) { landmarks[i] = signals::extractLandmarks(paramsOf(i), soundOf(i)); });

    EXPECT_LT(1000u, expected.front().size());
    EXPECT_EQ(expected, landmarks);
}

TEST(Concurrency, EightSynchronisationsGiveWhatTheyGiveOneAfterTheOther)
{
    std::vector<Offsets> expected;
    std::vector<std::unique_ptr<VXS::VXFileSet>> fileSets;
    for (std::size_t i = 0; i < threadCount; ++i) {
        fileSets.push_back(makeFileSet(i));
        expected.push_back(synchronise(*makeFileSet(i)));
    }
    std::vector<Offsets> offsets(threadCount);

    runSideBySide([&](std::size_t i) { offsets[i] = synchronise(*fileSets[i]); });

    // 8000 samples are 31.25 frames, of which the nearest whole number is 31: 31 / 31.25 s.
    EXPECT_EQ((Offsets{{1, {"take 1", 0.0f}}, {2, {"take 2", 0.992f}}, {3, {"take 3", 0.0f}}}),
              expected.front());
    EXPECT_EQ(expected, offsets);
}

TEST(Concurrency, EightWholeJobsGiveWhatTheyGiveOneAfterTheOther)
{
    std::vector<Offsets> expected;
    for (std::size_t i = 0; i < threadCount; ++i)
        expected.push_back(synchronise(*makeFileSet(i)));
    std::vector<Offsets> offsets(threadCount);

    runSideBySide([&](std::size_t i) { offsets[i] = synchronise(*makeFileSet(i)); });

    EXPECT_EQ(expected, offsets);
}
