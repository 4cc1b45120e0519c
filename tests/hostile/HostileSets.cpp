#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <new>
#include <ostream>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Clean.h"
#include "Console.h"
#include "Landmarks.h"
#include "Limits.h"
#include "Rows.h"
#include "VXClusterSync.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXHistogram.h"
#include "VXHistogramSetProcessor.h"
#include "VXLandmark.h"
#include "VXLandmarkExtract.h"

// Sets of recordings whose ids, files or landmarks are not what extraction makes.

namespace
{

using VXS::VXExtractParams;
using VXS::VXFile;
using VXS::VXFileSet;
using VXS::VXLandmark;
using VXS::support::addFileWith;
using VXS::support::Cluster;
using VXS::support::KeyAtFrame;
using VXS::support::resultOf;

using Clusters = std::vector<Cluster>;

constexpr std::int64_t least64 = std::numeric_limits<std::int64_t>::min();
constexpr std::int64_t most64 = std::numeric_limits<std::int64_t>::max();
constexpr std::int64_t least32 = std::numeric_limits<std::int32_t>::min();
constexpr std::int64_t most32 = std::numeric_limits<std::int32_t>::max();
constexpr std::int64_t fourGiga = std::int64_t{1} << 32u;

template <typename AnyRow>
std::string nameOf(const testing::TestParamInfo<AnyRow>& row)
{
    return row.param.name;
}

// Five keys over 400 frames, from the given one on, or over as many as four steps make.
std::vector<KeyAtFrame> eventFrom(std::int32_t frame, std::uint32_t firstKey = 1,
                                  std::int32_t step = 100)
{
    std::vector<KeyAtFrame> marks;
    for (std::uint32_t i = 0; i < 5; ++i)
        marks.push_back({firstKey + i, frame + step * static_cast<std::int32_t>(i)});
    return marks;
}

Clusters synchronise(VXFileSet& fileSet)
{
    const VXS::VXClusterSyncParams params{VXExtractParams()};
    return resultOf(VXS::VXClusterSync(params).run(&fileSet, nullptr));
}

// Two recordings of one event, of which the second began 100 frames or 3.2 seconds later.

struct IdRow {
    std::string name;
    std::int64_t first;
    std::int64_t second;
    Cluster cluster;
};

std::ostream& operator<<(std::ostream& stream, const IdRow& row)
{
    return stream << row.name;
}

class HostileIds : public testing::TestWithParam<IdRow>
{
};

std::vector<IdRow> idRows()
{
    // Of a wider id the low 32 bits come out, with their sign. Where two come out alike, the member
    // of the lower id stays.
    return {
        {"Zero", 0, 1, {{0, 0.0f, ""}, {1, 3.2f, ""}}},
        {"Negative", -5, -3, {{-5, 0.0f, ""}, {-3, 3.2f, ""}}},
        {"NegativeSecond", 5, -3, {{-3, 3.2f, ""}, {5, 0.0f, ""}}},
        {"LeastOf32Bits", least32, 1, {{least32, 0.0f, ""}, {1, 3.2f, ""}}},
        {"MostOf32Bits", 1, most32, {{1, 0.0f, ""}, {most32, 3.2f, ""}}},
        {"JustBeyond32Bits", 1, most32 + 1, {{least32, 3.2f, ""}, {1, 0.0f, ""}}},
        {"JustBelow32Bits", least32 - 1, 1, {{1, 3.2f, ""}, {most32, 0.0f, ""}}},
        {"AllLow32Bits", 1, fourGiga - 1, {{-1, 3.2f, ""}, {1, 0.0f, ""}}},
        {"BothBeyond32Bits", fourGiga + 2, 5 * fourGiga + 1, {{1, 3.2f, ""}, {2, 0.0f, ""}}},
        {"LeastOf64Bits", least64, 1, {{0, 0.0f, ""}, {1, 3.2f, ""}}},
        {"MostOf64Bits", 1, most64, {{-1, 3.2f, ""}, {1, 0.0f, ""}}},
        {"BothExtremes", least64, most64, {{-1, 3.2f, ""}, {0, 0.0f, ""}}},
        {"NextToTheLeast", least64, least64 + 1, {{0, 0.0f, ""}, {1, 3.2f, ""}}},
        {"NextToTheMost", most64 - 1, most64, {{-2, 0.0f, ""}, {-1, 3.2f, ""}}},
        {"AlikeInTheLowBits", 1, fourGiga + 1, {{1, 0.0f, ""}}},
        {"AlikeInTheLowBitsTurned", fourGiga + 1, 1, {{1, 3.2f, ""}}},
        {"AlikeInTheLowBitsNegative", -1, fourGiga - 1, {{-1, 0.0f, ""}}},
        {"ZeroAndTheLeast", 0, least64, {{0, 3.2f, ""}}},
    };
}

// Whole sets.

struct SetRow {
    std::string name;
    // Files that the set does not own go to the list.
    std::function<void(VXFileSet&, std::vector<std::unique_ptr<VXFile>>&)> fill;
    Clusters clusters;
};

std::ostream& operator<<(std::ostream& stream, const SetRow& row)
{
    return stream << row.name;
}

class HostileSet : public testing::TestWithParam<SetRow>
{
};

using Others = std::vector<std::unique_ptr<VXFile>>;

void addMatching(VXFileSet& fileSet)
{
    addFileWith(fileSet, 1, eventFrom(100));
    addFileWith(fileSet, 2, eventFrom(0));
}

// Moves a file of the set to another id, without telling the file.
void moveEntry(VXFileSet& fileSet, std::int64_t from, std::int64_t to)
{
    auto& files = fileSet.getFiles();
    files[to] = files.at(from);
    files.erase(from);
}

const Cluster& matching()
{
    static const Cluster cluster = {{1, 0.0f, ""}, {2, 3.2f, ""}};
    return cluster;
}

Cluster alone(std::int64_t id)
{
    return {{id, 0.0f, ""}};
}

// What stands under the ids.
std::vector<SetRow> entryRows()
{
    return {
        {"WithoutFiles", [](VXFileSet&, Others&) {}, {}},
        {"AddedNull",
         [](VXFileSet& fileSet, Others&) {
             EXPECT_EQ(nullptr, fileSet.addFile(nullptr));
             addMatching(fileSet);
             EXPECT_EQ(nullptr, fileSet.addFile(nullptr));
         },
         {matching()}},
        {"OnlyNullFiles",
         [](VXFileSet& fileSet, Others&) {
             fileSet.getFiles() = {{1, nullptr}, {2, nullptr}};
         },
         {alone(1), alone(2)}},
        {"NullFilesAround",
         [](VXFileSet& fileSet, Others&) {
             addMatching(fileSet);
             fileSet.getFiles()[-9] = nullptr;
             fileSet.getFiles()[9] = nullptr;
         },
         {alone(-9), matching(), alone(9)}},
        {"NullFileInsteadOfAMatch",
         [](VXFileSet& fileSet, Others&) {
             addFileWith(fileSet, 1, eventFrom(0));
             fileSet.getFiles()[2] = nullptr;
         },
         {alone(1), alone(2)}},
        {"SecondFileOfOneId",
         [](VXFileSet& fileSet, Others& others) {
             addMatching(fileSet);
             others.push_back(VXS::support::fileWith({5, 6, 7}, 2));
             EXPECT_EQ(others.back().get(), fileSet.addFile(others.back().get()));
             EXPECT_NE(others.back().get(), fileSet.getFiles().at(2));
         },
         {matching()}},
        {"SameFileTwice",
         [](VXFileSet& fileSet, Others&) {
             addMatching(fileSet);
             EXPECT_EQ(2u, fileSet.getFiles().size());
             fileSet.addFile(fileSet.getFiles().at(1));
         },
         {matching()}},
        {"EmptyFiles",
         [](VXFileSet& fileSet, Others&) {
             VXS::support::addEmptyFiles(fileSet, {1, 2, 3});
         },
         {alone(1), alone(2), alone(3)}},
    };
}

// What landmarks name as their file.
std::vector<SetRow> ownerRows()
{
    return {
        // The votes are those of files 1 and 2, which the set does not have: their ids get entries
        // without a file, and with them clusters.
        {"FilesUnderOtherIds",
         [](VXFileSet& fileSet, Others&) {
             addMatching(fileSet);
             moveEntry(fileSet, 1, 11);
             moveEntry(fileSet, 2, 12);
         },
         {alone(1), alone(2), alone(11), alone(12)}},
        // The pair is of files 1 and 9. Without file 9 their overlap is 0, which refuses them.
        {"LandmarksOfAFileThatIsNotThere",
         [](VXFileSet& fileSet, Others& others) {
             addMatching(fileSet);
             others.push_back(std::make_unique<VXFile>(9));
             for (auto& frame : fileSet.getFiles().at(2)->getLandmarkMap()) {
                 for (VXLandmark* landmark : frame.second)
                     landmark->file = others.back().get();
             }
         },
         {alone(1), alone(2), alone(9)}},
        {"LandmarksWithoutAFile",
         [](VXFileSet& fileSet, Others&) {
             addMatching(fileSet);
             for (const KeyAtFrame& mark : eventFrom(300))
                 fileSet.getFiles().at(1)->addLandmark(
                     new VXLandmark(mark.frame, nullptr, mark.key));
         },
         {matching()}},
        {"OnlyLandmarksWithoutAFile",
         [](VXFileSet& fileSet, Others&) {
             addMatching(fileSet);
             for (auto& entry : fileSet.getFiles()) {
                 for (auto& frame : entry.second->getLandmarkMap())
                     frame.second.front()->file = nullptr;
             }
         },
         {alone(1), alone(2)}},
        {"NullLandmarks",
         [](VXFileSet& fileSet, Others&) {
             addMatching(fileSet);
             fileSet.getFiles().at(1)->addLandmark(nullptr);
         },
         {matching()}},
    };
}

// Keys and frames.
std::vector<SetRow> markRows()
{
    constexpr std::int32_t leastFrame = std::numeric_limits<std::int32_t>::min();
    constexpr std::int32_t mostFrame = std::numeric_limits<std::int32_t>::max();
    return {
        {"KeysOfAllBits",
         [](VXFileSet& fileSet, Others&) {
             // The last key is 2^32 - 1.
             addFileWith(fileSet, 1, eventFrom(100, 0xFFFFFFFBu));
             addFileWith(fileSet, 2, eventFrom(0, 0xFFFFFFFBu));
         },
         {matching()}},
        {"KeysThatWrapToZero",
         [](VXFileSet& fileSet, Others&) {
             addFileWith(fileSet, 1, eventFrom(100, 0xFFFFFFFEu));
             addFileWith(fileSet, 2, eventFrom(0, 0xFFFFFFFEu));
         },
         {matching()}},
        {"NegativeFrames",
         [](VXFileSet& fileSet, Others&) {
             addFileWith(fileSet, 1, eventFrom(-200));
             addFileWith(fileSet, 2, eventFrom(-300));
         },
         {matching()}},
        // One vote each, at an offset of 2^32 - 1 frames.
        {"FramesAtBothEnds",
         [](VXFileSet& fileSet, Others&) {
             addFileWith(fileSet, 1, {{7, mostFrame}});
             addFileWith(fileSet, 2, {{7, leastFrame}});
         },
         {alone(1), alone(2)}},
        // 5 landmarks of one frame span no time.
        {"AllInOneFrame",
         [](VXFileSet& fileSet, Others&) {
             const std::vector<KeyAtFrame> marks = {{1, 0}, {2, 0}, {3, 0}, {4, 0}, {5, 0}};
             addFileWith(fileSet, 1, marks);
             addFileWith(fileSet, 2, marks);
         },
         {alone(1), alone(2)}},
        {"OneLandmarkEach",
         [](VXFileSet& fileSet, Others&) {
             addFileWith(fileSet, 1, {{1, 0}});
             addFileWith(fileSet, 2, {{1, 0}});
         },
         {alone(1), alone(2)}},
        // 126 landmarks of a key in each file are 252.
        {"OneKeyTooOften",
         [](VXFileSet& fileSet, Others&) {
             const std::vector<KeyAtFrame> marks(126, {1, 0});
             addFileWith(fileSet, 1, marks);
             addFileWith(fileSet, 2, marks);
         },
         {alone(1), alone(2)}},
    };
}

std::vector<SetRow> setRows()
{
    return hostile::together<SetRow>({entryRows(), ownerRows(), markRows()});
}

// Many recordings.

struct ManyRow {
    std::string name;
    std::int32_t files;
    // Every so many of them hold one event; the others nothing that another holds.
    std::int32_t ofOneEvent;
    // Frames from one landmark to the next.
    std::int32_t step;
    std::size_t clusters;
    std::size_t largest;
    hostile::Limits limits = {};
};

std::ostream& operator<<(std::ostream& stream, const ManyRow& row)
{
    return stream << row.name;
}

class HostileMany : public testing::TestWithParam<ManyRow>
{
};

std::vector<ManyRow> manyRows()
{
    // Five votes stand out of the noise of 104 frames, and each frame takes some 128 bytes.
    constexpr std::int32_t shortStep = 26;
    constexpr hostile::Limits manyFrames = {2.0, std::size_t{320} << 20u};
    return {
        // A key that more than 250 landmarks hold casts no vote.
        {"Identical250", 250, 250, 100, 1, 250},
        {"Identical251", 251, 251, 100, 251, 1},
        {"Identical1000", 1000, 1000, 100, 1000, 1},
        {"Different10000", 10000, 1, 1, 10000, 1},
        {"TenThousandInPairs", 10000, 2, shortStep, 5000, 2, manyFrames},
        {"TenThousandInTens", 10000, 10, shortStep, 1000, 10, manyFrames},
    };
}

constexpr const char* fatalLine = "[ERROR]: error in computing the region of overlap between "
                                  "proposed histogram points\n";

} // namespace

TEST_P(HostileIds, ComeOutCut)
{
    hostile::withinLimits([] {
        const IdRow& row = GetParam();
        VXFileSet fileSet;
        addFileWith(fileSet, row.first, eventFrom(100));
        addFileWith(fileSet, row.second, eventFrom(0));

        EXPECT_EQ(Clusters{row.cluster}, synchronise(fileSet));
    });
}

TEST_P(HostileIds, AreKeptByExtraction)
{
    hostile::withinLimits([] {
        VXS::VXLandmarkExtract extractor{VXExtractParams()};
        signals::SignalInput input(hostile::cleanSamples());

        const std::unique_ptr<VXFile> file(extractor.run(&input, GetParam().second));

        EXPECT_EQ(GetParam().second, file->getFileID());
        EXPECT_EQ(hostile::cleanLandmarks(), signals::landmarksOf(*file));
    });
}

INSTANTIATE_TEST_SUITE_P(Of, HostileIds, testing::ValuesIn(idRows()), nameOf<IdRow>);

TEST_P(HostileSet, HasItsClusters)
{
    hostile::withinLimits([] {
        Others others;
        VXFileSet fileSet;
        GetParam().fill(fileSet, others);

        EXPECT_EQ(GetParam().clusters, synchronise(fileSet));
        // What a run leaves in a set is no trap for the next one.
        EXPECT_EQ(GetParam().clusters, synchronise(fileSet));
    });
}

INSTANTIATE_TEST_SUITE_P(Of, HostileSet, testing::ValuesIn(setRows()), nameOf<SetRow>);

TEST(HostileSpan, ThatCouldNotFitInMemoryThrowsBadAlloc)
{
    if (!hostile::refusesMemory()) GTEST_SKIP() << "nothing limits the memory here";

    hostile::withinLimits([] {
        VXFileSet fileSet;
        addFileWith(fileSet, 1, {{7, 0}, {7, std::numeric_limits<std::int32_t>::max()}});
        const VXS::VXClusterSyncParams params{VXExtractParams()};

        EXPECT_THROW(VXS::VXClusterSync(params).run(&fileSet, nullptr), std::bad_alloc);
        EXPECT_THROW(fileSet.getFiles().at(1)->computeCLF(), std::bad_alloc);
    });
}

TEST(HostileSpan, BeyondTheMemoryThrowsBadAlloc)
{
    if (!hostile::refusesMemory()) GTEST_SKIP() << "nothing limits the memory here";

    hostile::withinLimits([] {
        // 10 million frames at some 128 bytes.
        constexpr std::int32_t span = 10000000;
        const VXS::VXClusterSyncParams params{VXExtractParams()};
        VXS::VXClusterSync sync(params);
        {
            VXFileSet fileSet;
            addFileWith(fileSet, 1, {{7, 0}, {7, span}});

            EXPECT_THROW(sync.run(&fileSet, nullptr), std::bad_alloc);
            EXPECT_EQ(-1, fileSet.getFiles().at(1)->queryNumberLandmarksInBetween(0, span));
        }
        VXFileSet fileSet;
        addMatching(fileSet);
        EXPECT_EQ(1u, resultOf(sync.run(&fileSet, nullptr)).size());
    });
}

TEST_P(HostileMany, AreSortedOut)
{
    const ManyRow& row = GetParam();
    if (!hostile::isMeasured() && row.limits.seconds > hostile::Limits().seconds) {
        GTEST_SKIP() << "takes minutes in a slow build";
    }

    hostile::withinLimits(row.limits, [&] {
        VXFileSet fileSet;
        for (std::int32_t i = 0; i < row.files; ++i) {
            // Keys from 10 on: each event, or each recording without a partner, has its own.
            const auto event = static_cast<std::uint32_t>(i / row.ofOneEvent);
            addFileWith(fileSet, i + 1, eventFrom(0, 10 * (event + 1), row.step));
        }

        const Clusters clusters = synchronise(fileSet);

        ASSERT_EQ(row.clusters, clusters.size());
        EXPECT_EQ(row.largest, clusters.front().size());
        for (const Cluster& cluster : clusters) {
            for (const VXS::support::Member& member : cluster)
                EXPECT_EQ(0.0f, member.offsetSeconds);
        }
    });
}

INSTANTIATE_TEST_SUITE_P(Files, HostileMany, testing::ValuesIn(manyRows()), nameOf<ManyRow>);

TEST(HostileManyPaths, AreWorkedThroughInOrder)
{
    hostile::withinLimits([] {
        constexpr int paths = 10000;
        std::vector<std::string> missing;
        std::string expected;
        for (int id = 1; id <= paths; ++id) {
            const std::string path = "no/such/take" + std::to_string(id) + ".wav";
            missing.push_back(path);
            expected += "STARTING: " + path + " (id " + std::to_string(id) + ")\n" +
                        "[ERROR]: Could not load: " + path + "\n" +
                        "FEATURE EXTRACTION COMPLETE: " + path + "\n";
        }
        VXS::VXLandmarkExtract extractor{VXExtractParams()};
        const Console console;

        const std::unique_ptr<VXFileSet> fileSet(extractor.runAll(missing));

        EXPECT_TRUE(fileSet->getFiles().empty());
        EXPECT_TRUE(expected == console.text());
    });
}

// The one check that ends the process, which no set that extraction made comes to.
TEST(HostileHistogramDeathTest, BestBinWithoutVotesEndsTheProcess)
{
    VXFileSet fileSet;
    VXS::support::addCountedFile(fileSet, 1, {10});
    VXS::support::addCountedFile(fileSet, 2, {10});
    VXS::VXHistogramSet histograms;
    VXS::VXHistogram histogram;
    VXS::support::addBinWithoutVotes(histogram, 0);
    histograms[{1, 2}] = &histogram;

    EXPECT_EXIT(VXS::VXHistogramSetProcessor().run(&fileSet, &histograms),
                testing::ExitedWithCode(1),
                testing::Matcher<const std::string&>(testing::Eq(std::string(fatalLine))));
}
