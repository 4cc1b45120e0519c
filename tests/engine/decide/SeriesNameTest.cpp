#include <gtest/gtest.h>

#include "decide/SeriesName.h"

namespace
{

using vxlsync::folderOf;
using vxlsync::SeriesName;
using vxlsync::seriesNameOf;

SeriesName nameOf(const std::string& path)
{
    return seriesNameOf(path).value();
}

TEST(SeriesName, CamerasAndRecordersCountBehindCapitals)
{
    const SeriesName name = nameOf("card/MVI_0101.MOV");

    EXPECT_EQ(name.folder, "card");
    EXPECT_EQ(name.prefix, "MVI_");
    EXPECT_EQ(name.ending, ".mov");
    EXPECT_EQ(name.number, 101);
    EXPECT_EQ(name.chapter, 0);
    EXPECT_EQ(nameOf("ZOOM0007.WAV").number, 7);
    EXPECT_EQ(nameOf("A001-C0012.MP4").prefix, "A001-C");
}

TEST(SeriesName, ChaptersStandBeforeTheNumberOfTheTake)
{
    const SeriesName name = nameOf("GX020042.MP4");

    EXPECT_EQ(name.prefix, "GX");
    EXPECT_EQ(name.number, 42);
    EXPECT_EQ(name.chapter, 2);
    EXPECT_EQ(nameOf("AB0042.MP4").chapter, 0);
}

TEST(SeriesName, OneKindOfFilmHasANumberAlone)
{
    EXPECT_EQ(nameOf("card/00012.MTS").number, 12);
    EXPECT_EQ(nameOf("card/00012.m2ts").number, 12);
    EXPECT_FALSE(seriesNameOf("card/00012.MP4"));
    EXPECT_FALSE(seriesNameOf("card/0012.MTS"));
}

TEST(SeriesName, NamesByPeopleAndProgramsAreNone)
{
    for (const char* path :
         {"", "clip_3.wav", "clip_0003.wav", "rec01.wav", "REC01.WAV", "0001.MP4", "Take 0001.wav",
          "MVI_.MOV", "A1234567890.MOV", "____0001.WAV"})
        EXPECT_FALSE(seriesNameOf(path)) << path;
}

TEST(SeriesName, TheNextOneHasTheNextNumberOrTheNextChapter)
{
    EXPECT_TRUE(nameOf("MVI_0101.MOV").isFollowedBy(nameOf("MVI_0102.MOV")));
    EXPECT_FALSE(nameOf("MVI_0101.MOV").isFollowedBy(nameOf("MVI_0103.MOV")));
    EXPECT_FALSE(nameOf("MVI_0102.MOV").isFollowedBy(nameOf("MVI_0101.MOV")));
    EXPECT_TRUE(nameOf("GX010042.MP4").isFollowedBy(nameOf("GX020042.MP4")));
    EXPECT_FALSE(nameOf("GX010042.MP4").isFollowedBy(nameOf("GX030042.MP4")));
    EXPECT_FALSE(nameOf("GX010042.MP4").isFollowedBy(nameOf("GX010043.MP4")));
    EXPECT_FALSE(nameOf("GX000042.MP4").isFollowedBy(nameOf("GX010043.MP4")));
}

TEST(SeriesName, OneSeriesHasOneFolderOnePrefixAndOneEnding)
{
    const SeriesName name = nameOf("card/MVI_0101.MOV");

    EXPECT_TRUE(name.isFollowedBy(nameOf("card/MVI_0102.mov")));
    EXPECT_FALSE(name.isFollowedBy(nameOf("other/MVI_0102.MOV")));
    EXPECT_FALSE(name.isFollowedBy(nameOf("card/IMG_0102.MOV")));
    EXPECT_FALSE(name.isFollowedBy(nameOf("card/MVI_0102.MP4")));
}

TEST(SeriesName, AFolderIsTheSameHoweverThePathIsWritten)
{
    EXPECT_EQ(folderOf("card/a.mov"), "card");
    EXPECT_EQ(folderOf("./card/../card//a.mov"), "card");
    EXPECT_EQ(folderOf("a.mov"), "");
}

} // namespace
