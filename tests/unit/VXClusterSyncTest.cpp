#include "VXClusterSync.h"

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Landmarks.h"
#include "VXExtractParams.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXLandmark.h"

namespace VXS
{
namespace
{

using support::addFileWith;
using support::Cluster;
using support::fractionEvent;
using support::KeyAtFrame;
using support::ProgressEvent;
using support::RecordingProgress;
using support::resultOf;
using support::stageEvent;

using Clusters = std::vector<Cluster>;
using Events = std::vector<ProgressEvent>;
using Names = std::map<std::int64_t, std::string>;

VXClusterSync defaultSync()
{
    return VXClusterSync(VXClusterSyncParams(VXExtractParams()));
}

// Five keys over 400 frames from the given frame on. Two recordings that hold them agree in 5 votes
// over an overlap of 400 frames: the variance is its floor, 10 * 0.3162 + 5 / 400 = 3.17 votes, and
// 5 stand out.
std::vector<KeyAtFrame> eventFrom(std::int32_t frame)
{
    return {{1, frame}, {2, frame + 100}, {3, frame + 200}, {4, frame + 300}, {5, frame + 400}};
}

// File 1 holds the event 100 frames later than file 2, so file 2 began 100 frames, 3.2 s, later.
void addMatchingFiles(VXFileSet& fileSet)
{
    addFileWith(fileSet, 1, eventFrom(100));
    addFileWith(fileSet, 2, eventFrom(0));
}

Clusters matchingClusters()
{
    return {{{1, 0.0f, ""}, {2, 3.2f, ""}}};
}

// What one run over two matching files reports.
Events matchingEvents()
{
    return {stageEvent(0), stageEvent(1),
            // Two files ...
            fractionEvent(0.0f), fractionEvent(0.5f), fractionEvent(1.0f),
            // ... and five keys.
            fractionEvent(0.0f), fractionEvent(20.0f / 100.0f), fractionEvent(40.0f / 100.0f),
            fractionEvent(60.0f / 100.0f), fractionEvent(80.0f / 100.0f), fractionEvent(1.0f),
            stageEvent(2), stageEvent(3), stageEvent(4), stageEvent(5)};
}

TEST(VXClusterSync, TiesMatchingRecordingsWithTheirOffsetInSeconds)
{
    VXFileSet fileSet;
    addMatchingFiles(fileSet);

    const Clusters clusters = resultOf(defaultSync().run(&fileSet, nullptr));

    EXPECT_EQ(clusters, matchingClusters());
}

TEST(VXClusterSync, EarliestRecordingIsAtZeroWhicheverIdItHas)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 1, eventFrom(0));
    addFileWith(fileSet, 2, eventFrom(100));

    const Clusters clusters = resultOf(defaultSync().run(&fileSet, nullptr));

    EXPECT_EQ(clusters, (Clusters{{{1, 3.2f, ""}, {2, 0.0f, ""}}}));
}

TEST(VXClusterSync, RecordingThatMatchesNothingIsAClusterOfItsOwnAtZero)
{
    VXFileSet fileSet;
    addMatchingFiles(fileSet);
    addFileWith(fileSet, 3, {{91, 40}, {92, 500}});

    const Clusters clusters = resultOf(defaultSync().run(&fileSet, nullptr));

    EXPECT_EQ(clusters, (Clusters{{{1, 0.0f, ""}, {2, 3.2f, ""}}, {{3, 0.0f, ""}}}));
}

TEST(VXClusterSync, MembersStandInOrderOfId)
{
    VXFileSet fileSet;
    addFileWith(fileSet, 30, eventFrom(0));
    addFileWith(fileSet, -4, eventFrom(50));
    addFileWith(fileSet, 2, eventFrom(100));

    const Clusters clusters = resultOf(defaultSync().run(&fileSet, nullptr));

    // File 2 is the earliest; 50 / 31.25 = 1.6 s.
    EXPECT_EQ(clusters, (Clusters{{{-4, 1.6f, ""}, {2, 0.0f, ""}, {30, 3.2f, ""}}}));
}

TEST(VXClusterSync, OverlapBelow100FramesNeverStandsOut)
{
    VXFileSet fileSet;
    std::vector<KeyAtFrame> marks;
    for (std::uint32_t key = 0; key < 34; ++key)
        marks.push_back({key, static_cast<std::int32_t>(3 * key)});
    addFileWith(fileSet, 1, marks);
    addFileWith(fileSet, 2, marks);

    const Clusters clusters = resultOf(defaultSync().run(&fileSet, nullptr));

    // With all n votes in one bin over L frames the limit is n / L + 10 * (n - n / L) / sqrt(L),
    // which exceeds n where sqrt(L) is below 10. Here L is 99, above the 93.75 of the other tests.
    EXPECT_EQ(clusters.size(), 2u);
}

TEST(VXClusterSync, OverlapAbove100FramesStandsOut)
{
    VXFileSet fileSet;
    std::vector<KeyAtFrame> marks;
    for (std::uint32_t key = 0; key < 35; ++key)
        marks.push_back({key, static_cast<std::int32_t>(3 * key)});
    addFileWith(fileSet, 1, marks);
    addFileWith(fileSet, 2, marks);

    const Clusters clusters = resultOf(defaultSync().run(&fileSet, nullptr));

    // L is 102, and 10 / sqrt(102) is 0.99.
    EXPECT_EQ(clusters.size(), 1u);
}

TEST(VXClusterSync, ReportsItsStagesInOrderWithTwoRampsInStageOne)
{
    VXFileSet fileSet;
    addMatchingFiles(fileSet);
    RecordingProgress progress;

    resultOf(defaultSync().run(&fileSet, &progress));

    EXPECT_EQ(progress.events, matchingEvents());
}

TEST(VXClusterSync, NullProgressChangesNothing)
{
    VXFileSet fileSet;
    addMatchingFiles(fileSet);
    RecordingProgress progress;

    const Clusters reported = resultOf(defaultSync().run(&fileSet, &progress));
    const Clusters silent = resultOf(defaultSync().run(&fileSet, nullptr));

    EXPECT_EQ(reported, silent);
    EXPECT_EQ(silent, matchingClusters());
}

TEST(VXClusterSync, EmptySetGivesAnEmptyResultAndReportsAllStages)
{
    VXFileSet fileSet;
    RecordingProgress progress;

    const Clusters clusters = resultOf(defaultSync().run(&fileSet, &progress));

    EXPECT_EQ(clusters, Clusters{});
    EXPECT_EQ(progress.events,
              (Events{stageEvent(0), stageEvent(1), fractionEvent(0.0f), fractionEvent(0.0f),
                      stageEvent(2), stageEvent(3), stageEvent(4), stageEvent(5)}));
}

TEST(VXClusterSync, NullSetGivesNull)
{
    RecordingProgress progress;

    EXPECT_EQ(defaultSync().run(nullptr, nullptr), nullptr);
    EXPECT_EQ(defaultSync().run(nullptr, &progress), nullptr);
}

TEST(VXClusterSync, SetWithoutNamesGivesEmptyNames)
{
    VXFileSet fileSet;
    addMatchingFiles(fileSet);

    const Clusters clusters = resultOf(defaultSync().run(&fileSet, nullptr));

    EXPECT_EQ(clusters.at(0).at(0).name, "");
    EXPECT_EQ(clusters.at(0).at(1).name, "");
}

TEST(VXClusterSync, MembersGetTheirShortNames)
{
    VXFileSet fileSet;
    addMatchingFiles(fileSet);
    fileSet.idToName = {{1, "left"}, {2, "right"}};
    fileSet.idToPath = {{1, "/takes/left.wav"}, {2, "/takes/right.wav"}};

    const Clusters clusters = resultOf(defaultSync().run(&fileSet, nullptr));

    EXPECT_EQ(clusters, (Clusters{{{1, 0.0f, "left"}, {2, 3.2f, "right"}}}));
}

TEST(VXClusterSync, MemberWithoutANameGetsAnEmptyEntry)
{
    VXFileSet fileSet;
    addMatchingFiles(fileSet);
    fileSet.idToName = {{2, "right"}, {7, "other"}};

    const Clusters clusters = resultOf(defaultSync().run(&fileSet, nullptr));

    EXPECT_EQ(clusters, (Clusters{{{1, 0.0f, ""}, {2, 3.2f, "right"}}}));
    EXPECT_EQ(fileSet.idToName, (Names{{1, ""}, {2, "right"}, {7, "other"}}));
}

TEST(VXClusterSync, NameIsLookedUpUnderTheCutId)
{
    VXFileSet fileSet;
    // 2^32 + 5
    addFileWith(fileSet, INT64_C(4294967301), {});
    fileSet.idToName = {{5, "five"}, {INT64_C(4294967301), "far"}};

    const Clusters clusters = resultOf(defaultSync().run(&fileSet, nullptr));

    EXPECT_EQ(clusters, (Clusters{{{5, 0.0f, "five"}}}));
}

TEST(VXClusterSync, CutIdWithoutANameGetsAnEmptyEntry)
{
    VXFileSet fileSet;
    // 2^31
    addFileWith(fileSet, INT64_C(2147483648), {});
    fileSet.idToName = {{INT64_C(2147483648), "far"}};

    const Clusters clusters = resultOf(defaultSync().run(&fileSet, nullptr));

    EXPECT_EQ(clusters, (Clusters{{{INT64_C(-2147483648), 0.0f, ""}}}));
    EXPECT_EQ(fileSet.idToName.count(INT64_C(-2147483648)), 1u);
}

TEST(VXClusterSync, NamesAreInPlaceBetweenStagesFourAndFive)
{
    VXFileSet fileSet;
    addMatchingFiles(fileSet);
    RecordingProgress progress;
    std::map<int, std::size_t> namesAtStage;
    progress.onEvent = [&](const ProgressEvent& event) {
        if (event.kind == ProgressEvent::Stage) namesAtStage[event.stage] = fileSet.idToName.size();
    };

    resultOf(defaultSync().run(&fileSet, &progress));

    EXPECT_EQ(namesAtStage.at(4), 0u);
    EXPECT_EQ(namesAtStage.at(5), 2u);
}

TEST(VXClusterSync, CountsAreMadeBetweenStagesZeroAndOne)
{
    VXFileSet fileSet;
    addMatchingFiles(fileSet);
    RecordingProgress progress;
    std::map<int, bool> dirtyAtStage;
    progress.onEvent = [&](const ProgressEvent& event) {
        if (event.kind == ProgressEvent::Stage)
            dirtyAtStage[event.stage] = fileSet.getFiles().at(2)->clfDirty;
    };

    resultOf(defaultSync().run(&fileSet, &progress));

    EXPECT_TRUE(dirtyAtStage.at(0));
    EXPECT_FALSE(dirtyAtStage.at(1));
}

TEST(VXClusterSync, SetStaysUsableAndItsFilesAreClean)
{
    VXFileSet fileSet;
    addMatchingFiles(fileSet);

    resultOf(defaultSync().run(&fileSet, nullptr));

    // Frames 100 to 500 of file 1, a key for each.
    VXFile& file = *fileSet.getFiles().at(1);
    EXPECT_FALSE(file.clfDirty);
    EXPECT_EQ(file.getLandmarkMap().size(), 401u);
    EXPECT_EQ(file.queryNumberLandmarksInBetween(0, 1000), 5);
}

TEST(VXClusterSync, TwoRunsGiveTwoIndependentResults)
{
    VXFileSet fileSet;
    addMatchingFiles(fileSet);
    VXClusterSync sync = defaultSync();

    VXClusterResult* first = sync.run(&fileSet, nullptr);
    VXClusterResult* second = sync.run(&fileSet, nullptr);

    EXPECT_NE(first, second);
    EXPECT_EQ(resultOf(first), matchingClusters());
    EXPECT_EQ(resultOf(second), matchingClusters());
}

TEST(VXClusterSync, SecondRunReportsTheSame)
{
    VXFileSet fileSet;
    addMatchingFiles(fileSet);
    VXClusterSync sync = defaultSync();
    resultOf(sync.run(&fileSet, nullptr));
    RecordingProgress progress;

    resultOf(sync.run(&fileSet, &progress));

    EXPECT_EQ(progress.events, matchingEvents());
}

TEST(VXClusterSync, SecondRunDoesNotCountAgain)
{
    VXFileSet fileSet;
    addMatchingFiles(fileSet);
    VXClusterSync sync = defaultSync();
    resultOf(sync.run(&fileSet, nullptr));
    // A count that only a new computation would put back.
    fileSet.getFiles().at(1)->clf[500] = 77;

    resultOf(sync.run(&fileSet, nullptr));

    EXPECT_EQ(fileSet.getFiles().at(1)->clf.at(500), 77);
}

TEST(VXClusterSync, OneObjectServesSeveralSets)
{
    VXFileSet matching;
    addMatchingFiles(matching);
    VXFileSet single;
    addFileWith(single, 9, eventFrom(0));
    VXClusterSync sync = defaultSync();

    EXPECT_EQ(resultOf(sync.run(&matching, nullptr)), matchingClusters());
    EXPECT_EQ(resultOf(sync.run(&single, nullptr)), (Clusters{{{9, 0.0f, ""}}}));
}

TEST(VXClusterSync, ResultOutlivesTheSet)
{
    auto fileSet = std::make_unique<VXFileSet>();
    addMatchingFiles(*fileSet);
    fileSet->idToName = {{1, "left"}, {2, "right"}};
    VXClusterResult* result = defaultSync().run(fileSet.get(), nullptr);

    fileSet.reset();

    EXPECT_EQ(resultOf(result), (Clusters{{{1, 0.0f, "left"}, {2, 3.2f, "right"}}}));
}

TEST(VXClusterSync, KeepsACopyOfItsParameters)
{
    VXClusterSyncParams params{VXExtractParams()};
    const VXClusterSync sync(params);

    params.maxLandmarkCount = 1;

    EXPECT_EQ(sync.params.maxLandmarkCount, 250u);
    EXPECT_EQ(sync.params.minPercentMatch, 0.0025f);
    EXPECT_EQ(sync.params.minOverlapLengthInSeconds, 3.0f);
    EXPECT_EQ(sync.params.minTemplateMatchLengthInSeconds, 3.0f);
    EXPECT_EQ(sync.params.minLandmarksPerEstimate, 5u);
    EXPECT_EQ(sync.params.audioFramesPerSecond, 31.25f);
    EXPECT_EQ(sync.params.hopSize, 256u);
    EXPECT_EQ(sync.params.sampleRate, 8000u);
}

TEST(VXClusterSync, CapOfItsParametersGovernsTheVotes)
{
    VXFileSet fileSet;
    addMatchingFiles(fileSet);
    VXClusterSyncParams params{VXExtractParams()};
    params.maxLandmarkCount = 1;

    const Clusters clusters = resultOf(VXClusterSync(params).run(&fileSet, nullptr));

    EXPECT_EQ(clusters, (Clusters{{{1, 0.0f, ""}}, {{2, 0.0f, ""}}}));
}

TEST(VXClusterSync, TimeBaseOfItsParametersGivesTheSeconds)
{
    VXFileSet fileSet;
    addMatchingFiles(fileSet);
    VXExtractParams extractParams;
    extractParams.setSampleRate(10000);
    extractParams.setHopSize(100);

    const Clusters clusters =
        resultOf(VXClusterSync(VXClusterSyncParams(extractParams)).run(&fileSet, nullptr));

    // 100 frames at 100 frames per second
    EXPECT_EQ(clusters, (Clusters{{{1, 0.0f, ""}, {2, 1.0f, ""}}}));
}

TEST(VXClusterSync, NullFileInTheSetIsPassedOver)
{
    VXFileSet fileSet;
    addMatchingFiles(fileSet);
    fileSet.getFiles()[3] = nullptr;

    const Clusters clusters = resultOf(defaultSync().run(&fileSet, nullptr));

    // Its id still stands for a recording, which matches nothing.
    EXPECT_EQ(clusters, (Clusters{{{1, 0.0f, ""}, {2, 3.2f, ""}}, {{3, 0.0f, ""}}}));
}

TEST(VXClusterSync, LandmarkWithoutAFileDoesNotDisturbTheOthers)
{
    VXFileSet fileSet;
    addMatchingFiles(fileSet);
    fileSet.getFiles().at(1)->addLandmark(new VXLandmark(150, nullptr, 3));

    const Clusters clusters = resultOf(defaultSync().run(&fileSet, nullptr));

    EXPECT_EQ(clusters, matchingClusters());
}

TEST(VXClusterSync, ExceptionOfTheProgressPassesThroughAtEveryCall)
{
    for (std::size_t calls = 1; calls <= matchingEvents().size(); ++calls) {
        VXFileSet fileSet;
        addMatchingFiles(fileSet);
        RecordingProgress progress;
        progress.onEvent = [&](const ProgressEvent&) {
            if (progress.events.size() == calls) throw std::runtime_error("stopped by the host");
        };

        EXPECT_THROW(defaultSync().run(&fileSet, &progress), std::runtime_error) << calls;

        // Nothing is reported after it.
        EXPECT_EQ(progress.events.size(), calls);
    }
}

TEST(VXClusterSync, SetAndObjectServeANewRunAfterAnExceptionAtAnyCall)
{
    for (std::size_t calls = 1; calls <= matchingEvents().size(); ++calls) {
        VXFileSet fileSet;
        addMatchingFiles(fileSet);
        VXClusterSync sync = defaultSync();
        RecordingProgress progress;
        progress.onEvent = [&](const ProgressEvent&) {
            if (progress.events.size() == calls) throw std::runtime_error("stopped by the host");
        };
        EXPECT_THROW(sync.run(&fileSet, &progress), std::runtime_error);

        const Clusters clusters = resultOf(sync.run(&fileSet, nullptr));

        EXPECT_EQ(clusters, matchingClusters()) << calls;
    }
}

TEST(VXClusterSync, RunPrintsNothing)
{
    VXFileSet fileSet;
    addMatchingFiles(fileSet);

    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    resultOf(defaultSync().run(&fileSet, nullptr));

    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(VXClusterSync, MemberFieldsStandInTheirOrder)
{
    const VXClusterMember member{"", 0, 0.0f};
    const auto address = [](const auto& field) { return static_cast<const void*>(&field); };

    EXPECT_LT(address(member.name), address(member.fileID));
    EXPECT_LT(address(member.fileID), address(member.offsetSeconds));
}

TEST(VXClusterSync, MembersOfOneIdStandOnceInASet)
{
    VXClusterMember first{"first", 7, 0.0f};
    VXClusterMember second{"second", 7, 1.0f};
    VXClusterMember negative{"negative", -7, 1.0f};
    VXClusterMembers members;

    members.insert(&first);
    members.insert(&second);
    members.insert(&negative);

    EXPECT_EQ(std::vector<VXClusterMember*>(members.begin(), members.end()),
              (std::vector<VXClusterMember*>{&negative, &first}));
}

} // namespace
} // namespace VXS
