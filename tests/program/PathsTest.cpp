#include "Paths.h"

#include <filesystem>

#include <gmock/gmock.h>

#include "Wave.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using vxlsync::host::distinctPaths;

TEST(Paths, KeepsDifferentFilesInTheirOrder)
{
    const auto distinct = distinctPaths({"z.wav", "a.wav", "m.wav"});

    EXPECT_THAT(distinct.kept, ElementsAre("z.wav", "a.wav", "m.wav"));
    EXPECT_THAT(distinct.repeats, IsEmpty());
}

TEST(Paths, TakesAPathThatIsGivenTwiceOnce)
{
    const auto distinct = distinctPaths({"gone.wav", "b.wav", "gone.wav"});

    EXPECT_THAT(distinct.kept, ElementsAre("gone.wav", "b.wav"));
    ASSERT_EQ(distinct.repeats.size(), 1u);
    EXPECT_EQ(distinct.repeats[0].path, "gone.wav");
    EXPECT_EQ(distinct.repeats[0].first, "gone.wav");
}

TEST(Paths, TakesAFileOnceThatIsSpeltInTwoWays)
{
    const wave::TempFolder folder;
    const std::string path = folder.write("a.wav", {});
    const std::string detour = folder.path + "/./a.wav";

    const auto distinct = distinctPaths({detour, path});

    EXPECT_THAT(distinct.kept, ElementsAre(detour));
    ASSERT_EQ(distinct.repeats.size(), 1u);
    EXPECT_EQ(distinct.repeats[0].path, path);
    EXPECT_EQ(distinct.repeats[0].first, detour);
}

TEST(Paths, FollowsALinkToTheFile)
{
    const wave::TempFolder folder;
    const std::string path = folder.write("a.wav", {});
    const std::string link = folder / "link.wav";
    std::filesystem::create_symlink(path, link);

    EXPECT_THAT(distinctPaths({path, link}).kept, ElementsAre(path));
}

TEST(Paths, FindsAFileByPathByDetourAndByName)
{
    const wave::TempFolder folder;
    const std::vector<std::string> paths{folder.write("a.wav", {}), folder.write("b.mp3", {})};

    EXPECT_EQ(vxlsync::host::findPath(paths, paths[1]), 1u);
    EXPECT_EQ(vxlsync::host::findPath(paths, folder.path + "/./b.mp3"), 1u);
    EXPECT_EQ(vxlsync::host::findPath(paths, "b.mp3"), 1u);
    EXPECT_EQ(vxlsync::host::findPath(paths, "a"), 0u);
}

TEST(Paths, FindsNothingForANameThatTwoFilesHave)
{
    EXPECT_EQ(vxlsync::host::findPath({"one/take.wav", "two/take.wav"}, "take"), 2u);
    EXPECT_EQ(vxlsync::host::findPath({"one/take.wav", "two/take.wav"}, "two/take.wav"), 1u);
}

TEST(Paths, FindsNothingForAStranger)
{
    EXPECT_EQ(vxlsync::host::findPath({"a.wav"}, "b.wav"), 1u);
}

} // namespace
