#include "Progress.h"

#include <sstream>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace
{

using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using vxlsync::barText;
using vxlsync::Progress;
using vxlsync::ProgressMode;

TEST(Progress, DrawsAShareOfTheBar)
{
    // Half of 40.
    EXPECT_EQ(barText("Reading", 0.5, -1.0),
              "Reading     [" + std::string(20, '#') + std::string(20, '.') + "]  50 %");
}

TEST(Progress, TellsTheSecondsLeftRoundedUp)
{
    EXPECT_THAT(barText("Reading", 0.5, 2.1), EndsWith("  50 %  3 s left"));
}

TEST(Progress, TakesSharesOutsideForTheNearerEnd)
{
    EXPECT_THAT(barText("x", -1.0, -1.0), HasSubstr("   0 %"));
    EXPECT_THAT(barText("x", 7.0, -1.0), HasSubstr(" 100 %"));
    EXPECT_THAT(barText("x", std::nan(""), -1.0), HasSubstr("   0 %"));
}

TEST(Progress, PutsAStageInItsPlaceOfTheWhole)
{
    std::ostringstream out;
    Progress progress(out, ProgressMode::plain);

    progress.stage("Comparing", 0.2, 0.6);
    progress.update(0.5);

    // 0.2 and half of 0.4.
    EXPECT_THAT(out.str(), HasSubstr("Comparing: 0 %, whole 20 %"));
    EXPECT_THAT(out.str(), HasSubstr("Comparing: 50 %, whole 40 %"));
}

TEST(Progress, NamesTheFilesThatAreDone)
{
    std::ostringstream out;
    Progress progress(out, ProgressMode::plain);

    progress.stage("Reading", 0.0, 0.5);
    progress.finishFile("a.wav", 0.5);

    EXPECT_THAT(out.str(), HasSubstr("Reading: 50 %, whole 25 %"));
    EXPECT_THAT(out.str(), EndsWith("done: a.wav\n"));
}

TEST(Progress, NeverFallsBack)
{
    std::ostringstream out;
    Progress progress(out, ProgressMode::plain);

    progress.stage("Comparing", 0.0, 1.0);
    progress.update(0.5);
    const std::string before = out.str();
    progress.update(0.3);

    EXPECT_EQ(out.str(), before);
}

TEST(Progress, WritesOneObjectALineForPrograms)
{
    std::ostringstream out;
    {
        Progress progress(out, ProgressMode::json);
        progress.stage("Reading", 0.0, 0.5);
        progress.finishFile("a\nb.wav", 1.0);
    }

    std::istringstream lines(out.str());
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(nlohmann::json::parse(line).at("stage"), "Reading");
    std::getline(lines, line);
    const auto last = nlohmann::json::parse(line);
    EXPECT_EQ(last.at("share"), 0.5);
    EXPECT_EQ(last.at("stageShare"), 1.0);
    EXPECT_EQ(last.at("file"), "a\nb.wav");
    EXPECT_TRUE(last.contains("secondsLeft"));
}

TEST(Progress, CanBeSilent)
{
    std::ostringstream out;
    {
        Progress progress(out, ProgressMode::none);
        progress.stage("Reading", 0.0, 1.0);
        progress.finishFile("a.wav", 1.0);
    }

    EXPECT_EQ(out.str(), "");
}

TEST(Progress, PrintsLinesAboveTheBar)
{
    std::ostringstream out;
    Progress progress(out, ProgressMode::bar);
    progress.stage("Reading", 0.0, 1.0);

    progress.printLine("something");

    EXPECT_THAT(out.str(), HasSubstr("\rsomething\nReading     [...."));
}

TEST(Progress, LeavesNothingOfTheBarBehind)
{
    std::ostringstream out;
    {
        Progress progress(out, ProgressMode::bar);
        progress.stage("Reading", 0.0, 1.0);
    }

    EXPECT_THAT(out.str(), EndsWith(std::string(40, ' ') + "\r"));
}

} // namespace
