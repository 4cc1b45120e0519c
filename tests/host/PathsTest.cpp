#include "Paths.h"

#include <filesystem>

#include <gmock/gmock.h>

#include "Wave.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using vxlsync::distinctPaths;
using vxlsync::hasWavExtension;

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

TEST(Paths, KnowsTheExtensionThatTheLibraryTakes)
{
    EXPECT_TRUE(hasWavExtension("a.wav"));
    EXPECT_TRUE(hasWavExtension("dir/.wav"));
    EXPECT_TRUE(hasWavExtension("a.b.wav"));
    EXPECT_FALSE(hasWavExtension("a.WAV"));
    EXPECT_FALSE(hasWavExtension("a.wav "));
    EXPECT_FALSE(hasWavExtension("wav"));
    EXPECT_FALSE(hasWavExtension("dir.wav/a"));
    EXPECT_FALSE(hasWavExtension(""));
}

TEST(Paths, FindsAFileByPathByDetourAndByName)
{
    const wave::TempFolder folder;
    const std::vector<std::string> paths{folder.write("a.wav", {}), folder.write("b.mp3", {})};

    EXPECT_EQ(vxlsync::findPath(paths, paths[1]), 1u);
    EXPECT_EQ(vxlsync::findPath(paths, folder.path + "/./b.mp3"), 1u);
    EXPECT_EQ(vxlsync::findPath(paths, "b.mp3"), 1u);
    EXPECT_EQ(vxlsync::findPath(paths, "a"), 0u);
}

TEST(Paths, FindsNothingForANameThatTwoFilesHave)
{
    EXPECT_EQ(vxlsync::findPath({"one/take.wav", "two/take.wav"}, "take"), 2u);
    EXPECT_EQ(vxlsync::findPath({"one/take.wav", "two/take.wav"}, "two/take.wav"), 1u);
}

TEST(Paths, FindsNothingForAStranger)
{
    EXPECT_EQ(vxlsync::findPath({"a.wav"}, "b.wav"), 1u);
}

} // namespace
