#include "running/Meter.h"

#include <vector>

#include <gmock/gmock.h>

namespace
{

using vxlsync::Meter;
using vxlsync::Progress;
using vxlsync::Stage;

TEST(Meter, TellsTheShareOfTheStage)
{
    std::vector<Progress> heard;
    Meter meter([&](const Progress& progress) { heard.push_back(progress); });

    meter.begin(Stage::reading, 4);
    meter.step();
    meter.step(7);

    ASSERT_EQ(heard.size(), 3u);
    EXPECT_EQ(heard[0].stageShare, 0.0);
    EXPECT_EQ(heard[1].stageShare, 0.25);
    EXPECT_FALSE(heard[1].finishedSource.has_value());
    EXPECT_EQ(heard[2].stageShare, 0.5);
    EXPECT_EQ(heard[2].finishedSource, 7u);
}

TEST(Meter, NeverFallsBackFromStageToStage)
{
    std::vector<Progress> heard;
    Meter meter([&](const Progress& progress) { heard.push_back(progress); });

    for (const Stage stage :
         {Stage::reading, Stage::landmarks, Stage::comparing, Stage::deciding, Stage::refining}) {
        meter.begin(stage, 2);
        meter.step();
        meter.step();
    }

    for (std::size_t i = 1; i < heard.size(); ++i)
        EXPECT_GE(heard[i].share, heard[i - 1].share) << i;
    EXPECT_EQ(heard.front().share, 0.0);
    EXPECT_EQ(heard.back().share, 1.0);
}

TEST(Meter, CountsAPartOfAStageByItself)
{
    std::vector<double> shares;
    Meter meter([&](const Progress& progress) { shares.push_back(progress.stageShare); });

    meter.begin(Stage::comparing, 0);
    meter.part({0.5, 1.0, 2});
    meter.step();
    meter.step();

    EXPECT_EQ(shares, (std::vector<double>{0.0, 0.5, 0.75, 1.0}));
}

TEST(Meter, StaysAtTheEndOfAStageThatHasMoreSteps)
{
    Progress last;
    Meter meter([&](const Progress& progress) { last = progress; });

    meter.begin(Stage::comparing, 1);
    meter.step();
    meter.step();

    EXPECT_EQ(last.stageShare, 1.0);
}

TEST(Meter, TellsOfAStageWithoutStepsThatItHasBegun)
{
    Progress last;
    Meter meter([&](const Progress& progress) { last = progress; });

    meter.begin(Stage::deciding, 0);

    EXPECT_EQ(last.stage, Stage::deciding);
    EXPECT_EQ(last.stageShare, 0.0);
}

TEST(Meter, EndsAtTheWholeFromAnyStage)
{
    Progress last;
    Meter meter([&](const Progress& progress) { last = progress; });
    meter.begin(Stage::landmarks, 2);

    meter.finish();

    EXPECT_EQ(last.stage, Stage::refining);
    EXPECT_EQ(last.stageShare, 1.0);
    EXPECT_EQ(last.share, 1.0);
}

TEST(Meter, StaysAtTheBeginningOfAStageWithoutSteps)
{
    Progress last;
    Meter meter([&](const Progress& progress) { last = progress; });
    meter.begin(Stage::deciding, 0);

    meter.step();

    EXPECT_EQ(last.stageShare, 0.0);
}

TEST(Meter, NeedsNoHost)
{
    Meter meter;

    meter.begin(Stage::reading, 1);
    EXPECT_NO_THROW(meter.step());
}

TEST(Meter, HasAWordForEachStage)
{
    EXPECT_STREQ(vxlsync::nameOf(Stage::reading), "Reading");
    EXPECT_STREQ(vxlsync::nameOf(Stage::landmarks), "Landmarks");
    EXPECT_STREQ(vxlsync::nameOf(Stage::comparing), "Comparing");
    EXPECT_STREQ(vxlsync::nameOf(Stage::deciding), "Deciding");
    EXPECT_STREQ(vxlsync::nameOf(Stage::refining), "Refining");
}

} // namespace
