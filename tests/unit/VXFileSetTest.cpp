#include "VXFileSet.h"

#include <cstdint>
#include <map>
#include <memory>
#include <type_traits>
#include <vector>

#include <gtest/gtest.h>

#include "Landmarks.h"
#include "VXFile.h"
#include "VXLandmark.h"

namespace VXS
{
namespace
{

using support::fileWith;

TEST(VXFileSet, NewSetIsEmpty)
{
    VXFileSet fileSet;

    EXPECT_TRUE(fileSet.getFiles().empty());
    EXPECT_TRUE(fileSet.nameToId.empty());
    EXPECT_TRUE(fileSet.idToName.empty());
    EXPECT_TRUE(fileSet.idToPath.empty());
    EXPECT_EQ(fileSet.lastFileID, 0);
}

TEST(VXFileSet, IsNotCopied)
{
    EXPECT_FALSE(std::is_copy_constructible_v<VXFileSet>);
    EXPECT_FALSE(std::is_copy_assignable_v<VXFileSet>);
}

TEST(VXFileSet, AddFileStoresTheFileUnderItsOwnIdAndReturnsIt)
{
    VXFileSet fileSet;
    auto* file = new VXFile(7);

    VXFile* returned = fileSet.addFile(file);

    EXPECT_EQ(returned, file);
    EXPECT_EQ(fileSet.getFiles(), (std::map<std::int64_t, VXFile*>{{7, file}}));
    EXPECT_EQ(fileSet.lastFileID, 7);
}

TEST(VXFileSet, AddFileOfNullReturnsNullAndChangesNothing)
{
    VXFileSet fileSet;
    fileSet.addFile(new VXFile(7));

    EXPECT_EQ(fileSet.addFile(nullptr), nullptr);
    EXPECT_EQ(fileSet.getFiles().size(), 1u);
    EXPECT_EQ(fileSet.lastFileID, 7);
}

TEST(VXFileSet, AddFileTouchesNoName)
{
    VXFileSet fileSet;

    fileSet.addFile(new VXFile(7));

    EXPECT_TRUE(fileSet.nameToId.empty());
    EXPECT_TRUE(fileSet.idToName.empty());
    EXPECT_TRUE(fileSet.idToPath.empty());
}

TEST(VXFileSet, SecondFileOfOneIdIsReturnedButNotStored)
{
    VXFileSet fileSet;
    auto* first = new VXFile(7);
    fileSet.addFile(first);
    VXFile second(7);

    VXFile* returned = fileSet.addFile(&second);

    EXPECT_EQ(returned, &second);
    EXPECT_EQ(fileSet.getFiles().at(7), first);
    EXPECT_EQ(fileSet.getFiles().size(), 1u);
}

TEST(VXFileSet, DestroyingFreesOnlyTheFirstFileOfAnId)
{
    auto fileSet = std::make_unique<VXFileSet>();
    fileSet->addFile(fileWith({1}, 7).release());
    const auto second = fileWith({1, 2}, 7);
    fileSet->addFile(second.get());

    fileSet.reset();

    EXPECT_EQ(second->getMaxLandmarkOffsetTime(), 2);
}

TEST(VXFileSet, LastFileIdIsSetAlsoForAFileThatIsNotStored)
{
    VXFileSet fileSet;
    fileSet.addFile(new VXFile(7));
    fileSet.addFile(new VXFile(-2));
    VXFile again(7);

    fileSet.addFile(&again);

    EXPECT_EQ(fileSet.lastFileID, 7);
}

TEST(VXFileSet, NullEntryOfAnIdStays)
{
    VXFileSet fileSet;
    fileSet.getFiles()[7] = nullptr;
    VXFile file(7);

    EXPECT_EQ(fileSet.addFile(&file), &file);
    EXPECT_EQ(fileSet.getFiles().at(7), nullptr);
}

TEST(VXFileSet, FilesStandInSignedOrderOfId)
{
    VXFileSet fileSet;
    for (const std::int64_t fileID : {INT64_C(3), INT64_C(5000000000), INT64_C(-1)})
        fileSet.addFile(new VXFile(fileID));

    std::vector<std::int64_t> fileIDs;
    for (const auto& entry : fileSet.getFiles())
        fileIDs.push_back(entry.first);

    EXPECT_EQ(fileIDs, (std::vector<std::int64_t>{-1, 3, INT64_C(5000000000)}));
}

TEST(VXFileSet, ComputeAllClfsMakesEveryFileClean)
{
    VXFileSet fileSet;
    VXFile* first = fileSet.addFile(fileWith({10, 10, 13}, 1).release());
    VXFile* second = fileSet.addFile(fileWith({}, 2).release());

    fileSet.computeAllCLFs();

    EXPECT_EQ(first->queryNumberLandmarksInBetween(0, 100), 3);
    EXPECT_EQ(second->queryNumberLandmarksInBetween(0, 100), 0);
}

TEST(VXFileSet, ComputeAllClfsOfAnEmptySetDoesNothing)
{
    VXFileSet fileSet;

    fileSet.computeAllCLFs();

    EXPECT_TRUE(fileSet.getFiles().empty());
}

TEST(VXFileSet, ComputeAllClfsPassesOverNull)
{
    VXFileSet fileSet;
    fileSet.getFiles()[1] = nullptr;
    VXFile* file = fileSet.addFile(fileWith({10}, 2).release());

    fileSet.computeAllCLFs();

    EXPECT_FALSE(file->clfDirty);
    EXPECT_EQ(fileSet.getFiles().at(1), nullptr);
}

TEST(VXFileSet, DestroyingPassesOverNullEntries)
{
    auto fileSet = std::make_unique<VXFileSet>();
    fileSet->getFiles()[1] = nullptr;
    fileSet->addFile(fileWith({1, 2, 3}, 2).release());

    fileSet.reset();

    EXPECT_EQ(fileSet, nullptr);
}

TEST(VXFileSet, FieldsStandInTheirOrder)
{
    const VXFileSet fileSet;
    const auto address = [](const auto& field) { return static_cast<const void*>(&field); };

    EXPECT_LT(address(fileSet.nameToId), address(fileSet.idToName));
    EXPECT_LT(address(fileSet.idToName), address(fileSet.idToPath));
    EXPECT_LT(address(fileSet.idToPath), address(fileSet.files));
    EXPECT_LT(address(fileSet.files), address(fileSet.lastFileID));
}

} // namespace
} // namespace VXS
