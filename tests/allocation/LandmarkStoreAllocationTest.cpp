#include <cstdint>
#include <map>
#include <memory>
#include <new>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Allocations.h"
#include "Landmarks.h"
#include "Signals.h"
#include "Sweep.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXLandmark.h"

// Files and file sets that get no memory.

namespace
{

using VXS::VXFile;
using VXS::VXFileSet;
using VXS::VXLandmark;

using Rows = std::vector<signals::LandmarkRow>;
using Counts = std::map<std::int64_t, std::int64_t>;

// Landmarks of key 0 at frames 3, 3 and 6, without counts.
std::unique_ptr<VXFile> someFile()
{
    return VXS::support::fileWith({3, 3, 6});
}

// The landmarks with the least and the greatest frame in front.
std::pair<Counts, Rows> contentOf(VXFile& file)
{
    return {{{file.getMinLandmarkOffsetTime(), file.getMaxLandmarkOffsetTime()}},
            signals::landmarksOf(file)};
}

// Landmarks at frames 3, 3 and 300: more frames than any store of spare nodes would hold.
std::unique_ptr<VXFile> wideFile(std::int64_t fileID = 1)
{
    return VXS::support::fileWith({3, 3, 300}, fileID);
}

Counts countsOfWideFile()
{
    Counts counts;
    for (std::int64_t frame = 3; frame < 300; ++frame)
        counts[frame] = 2;
    counts[300] = 3;
    return counts;
}

Counts countsOf(const VXFile& file)
{
    return {file.clf.begin(), file.clf.end()};
}

// What the operation does, in all the places where it may need memory: in a new frame at the end,
// within a frame, and before the first.
std::uint64_t sweepOfAdding(std::int32_t frame, const std::pair<Counts, Rows>& expected)
{
    return allocation::sweep(
        expected, someFile,
        [frame](VXFile& file) {
            file.addLandmark(new VXLandmark(frame, &file, 7));
            return 0;
        },
        [](VXFile& file, int) { return contentOf(file); });
}

} // namespace

TEST(VXFileAllocation, ALandmarkBehindAllOthersCanBeAddedAgain)
{
    EXPECT_LT(1u, sweepOfAdding(9, {{{3, 9}}, {{3, 0}, {3, 0}, {6, 0}, {9, 7}}}));
}

TEST(VXFileAllocation, ALandmarkBeforeAllOthersCanBeAddedAgain)
{
    EXPECT_LT(1u, sweepOfAdding(1, {{{1, 6}}, {{1, 7}, {3, 0}, {3, 0}, {6, 0}}}));
}

TEST(VXFileAllocation, ALandmarkOfTheLastFrameCanBeAddedAgain)
{
    EXPECT_LE(1u, sweepOfAdding(6, {{{3, 6}}, {{3, 0}, {3, 0}, {6, 0}, {6, 7}}}));
}

TEST(VXFileAllocation, AFullFrameCanBeAddedToAgain)
{
    const auto makeFull = [] {
        auto file = someFile();
        for (int i = 0; i < 5; ++i)
            file->addLandmark(new VXLandmark(6, file.get(), 0));
        file->getLandmarkMap().at(6).shrink_to_fit();
        return file;
    };

    const std::uint64_t allocations = allocation::sweep(
        std::size_t{7}, makeFull,
        [](VXFile& file) {
            file.addLandmark(new VXLandmark(6, &file, 7));
            return 0;
        },
        [](VXFile& file, int) { return file.getLandmarkMap().at(6).size(); });

    // The landmark and the list, which grows.
    EXPECT_LE(2u, allocations);
}

TEST(VXFileAllocation, TheFirstLandmarkCanBeAddedAgain)
{
    const std::uint64_t allocations = allocation::sweep(
        std::pair<Counts, Rows>{{{4, 4}}, {{4, 7}}}, [] { return std::make_unique<VXFile>(1); },
        [](VXFile& file) {
            file.addLandmark(new VXLandmark(4, &file, 7));
            return 0;
        },
        [](VXFile& file, int) { return contentOf(file); });

    EXPECT_LT(1u, allocations);
}

TEST(VXFileAllocation, ALandmarkThatGotNoMemoryIsNotCounted)
{
    const auto file = someFile();
    auto* landmark = new VXLandmark(40, file.get(), 0);
    allocation::Refusal refusal(0, allocation::Refused::One);

    EXPECT_THROW(file->addLandmark(landmark), std::bad_alloc);
    refusal.end();
    file->computeCLF();

    EXPECT_EQ(6, file->getMaxLandmarkOffsetTime());
    EXPECT_EQ(3, file->queryNumberLandmarksInBetween(0, 100));
}

TEST(VXFileAllocation, AFrameThatGotNoMemoryBeforeTheFirstDisturbsNoCount)
{
    bool isRefused = true;
    for (std::uint64_t number = 0; isRefused; ++number) {
        const auto file = someFile();
        auto* landmark = new VXLandmark(1, file.get(), 0);
        allocation::Refusal refusal(number, allocation::Refused::One);
        try {
            file->addLandmark(landmark);
        } catch (const std::bad_alloc&) {
        }
        refusal.end();
        isRefused = refusal.hasHappened();
        file->computeCLF();

        EXPECT_EQ(isRefused ? Counts({{3, 2}, {4, 2}, {5, 2}, {6, 3}})
                            : Counts({{1, 1}, {2, 1}, {3, 3}, {4, 3}, {5, 3}, {6, 4}}),
                  countsOf(*file))
            << number;
    }
}

TEST(VXFileAllocation, CountsCanBeComputedAgain)
{
    const std::uint64_t allocations = allocation::sweep(
        countsOfWideFile(), [] { return wideFile(); },
        [](VXFile& file) {
            file.computeCLF();
            return 0;
        },
        [](VXFile& file, int) { return countsOf(file); });

    EXPECT_LE(1u, allocations);
}

TEST(VXFileAllocation, CountsAreStaleUntilTheyAreComplete)
{
    const auto file = wideFile();
    allocation::Refusal refusal(0, allocation::Refused::One);

    EXPECT_THROW(file->computeCLF(), std::bad_alloc);
    refusal.end();

    EXPECT_EQ(-1, file->queryNumberLandmarksInBetween(3, 300));
}

// 2^27 frames are three quarters of an hour at a hop of one sample. Whether they can be counted is
// for the memory to decide, which is asked before anything is entered.
TEST(VXFileAllocation, ASpanThatMemoryDoesNotHoldChangesNothing)
{
    for (const std::int32_t last : {300, 134217727, 134217728, 2147483647}) {
        SCOPED_TRACE(last);
        const auto file = VXS::support::fileWith({0, last});
        allocation::Refusal refusal(0, allocation::Refused::One);

        EXPECT_THROW(file->computeCLF(), std::bad_alloc);
        refusal.end();

        EXPECT_TRUE(refusal.hasHappened());
        EXPECT_TRUE(file->clfDirty);
        EXPECT_TRUE(file->clf.empty());
        EXPECT_EQ(2u, file->getLandmarkMap().size());
        EXPECT_EQ(-1, file->queryNumberLandmarksInBetween(0, 100));
    }
}

TEST(VXFileAllocation, AQueryNeedsNoMemory)
{
    const auto file = VXS::support::countedFileWith({3, 3, 6});
    const allocation::Refusal refusal(0, allocation::Refused::AllFromThere);

    const std::int64_t all = file->queryNumberLandmarksInBetween(-100, 100);
    const std::int64_t some = file->queryNumberLandmarksInBetween(4, 6);

    EXPECT_EQ(3, all);
    EXPECT_EQ(1, some);
    EXPECT_FALSE(refusal.hasHappened());
}

TEST(VXFileAllocation, AFileIsDestroyedWithoutMemory)
{
    auto file = VXS::support::countedFileWith({3, 3, 6});
    const allocation::Refusal refusal(0, allocation::Refused::AllFromThere);

    file.reset();

    EXPECT_FALSE(refusal.hasHappened());
}

// Wherever memory runs out, the files before are counted and those behind are not.
TEST(VXFileSetAllocation, FilesAreCountedInOrderOfId)
{
    bool isRefused = true;
    for (std::uint64_t number = 0; isRefused; ++number) {
        SCOPED_TRACE(number);
        VXFileSet fileSet;
        for (const std::int64_t fileID : {3, 1, 2})
            fileSet.addFile(wideFile(fileID).release());
        allocation::Refusal refusal(number, allocation::Refused::One);
        try {
            fileSet.computeAllCLFs();
        } catch (const std::bad_alloc&) {
        }
        refusal.end();
        isRefused = refusal.hasHappened();

        const auto& files = fileSet.getFiles();
        EXPECT_EQ(isRefused, files.at(3)->clfDirty);
        EXPECT_LE(files.at(1)->clfDirty, files.at(2)->clfDirty);
        EXPECT_TRUE(number > 0 || files.at(1)->clfDirty);
    }
}

TEST(VXFileSetAllocation, AFileThatGotNoPlaceRemainsTheCallers)
{
    VXFileSet fileSet;
    const auto file = std::make_unique<VXFile>(4);
    allocation::Refusal refusal(0, allocation::Refused::One);

    EXPECT_THROW(fileSet.addFile(file.get()), std::bad_alloc);
    refusal.end();

    EXPECT_TRUE(fileSet.getFiles().empty());
}

TEST(VXFileSetAllocation, AFileCanBeAddedAgain)
{
    const std::uint64_t allocations = allocation::sweep(
        std::vector<std::int64_t>{2, 4},
        [] {
            auto fileSet = std::make_unique<VXFileSet>();
            VXS::support::addEmptyFiles(*fileSet, {2});
            return fileSet;
        },
        [](VXFileSet& fileSet) {
            auto file = std::make_unique<VXFile>(4);
            fileSet.addFile(file.get());
            file.release();
            return 0;
        },
        [](VXFileSet& fileSet, int) {
            std::vector<std::int64_t> ids;
            for (const auto& entry : fileSet.getFiles())
                ids.push_back(entry.second->getFileID());
            return ids;
        });

    // The file and its place.
    EXPECT_LE(2u, allocations);
}

TEST(VXFileSetAllocation, AllCountsCanBeComputedAgain)
{
    const std::uint64_t allocations = allocation::sweep(
        std::vector<Counts>{countsOfWideFile(), countsOfWideFile()},
        [] {
            auto fileSet = std::make_unique<VXFileSet>();
            fileSet->addFile(wideFile(1).release());
            fileSet->addFile(wideFile(2).release());
            return fileSet;
        },
        [](VXFileSet& fileSet) {
            fileSet.computeAllCLFs();
            return 0;
        },
        [](VXFileSet& fileSet, int) {
            std::vector<Counts> counts;
            for (const auto& entry : fileSet.getFiles())
                counts.push_back(countsOf(*entry.second));
            return counts;
        });

    // At least one for each file.
    EXPECT_LE(2u, allocations);
}

TEST(VXFileSetAllocation, ASetIsDestroyedWithoutMemory)
{
    auto fileSet = std::make_unique<VXFileSet>();
    VXS::support::addCountedFile(*fileSet, 1, {1, 3});
    fileSet->idToName[1] = "a name that is too long to stand in the string itself";
    const allocation::Refusal refusal(0, allocation::Refused::AllFromThere);

    fileSet.reset();

    EXPECT_FALSE(refusal.hasHappened());
}
