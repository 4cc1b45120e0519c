#include "ProgressBar.h"

#include <cmath>
#include <sstream>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace
{

using testing::EndsWith;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;
using vxlsync::Progress;
using vxlsync::Stage;
using vxlsync::host::eraseLine;
using vxlsync::host::ProgressBar;
using vxlsync::host::ProgressMode;

Progress at(Stage stage, double stageShare, double share)
{
    Progress progress;
    progress.stage = stage;
    progress.stageShare = stageShare;
    progress.share = share;
    return progress;
}

Progress finished(std::size_t source, double stageShare, double share)
{
    Progress progress = at(Stage::reading, stageShare, share);
    progress.finishedSource = source;
    return progress;
}

constexpr std::size_t usualColumns = 80;

std::string barText(const std::string& label, double share, double secondsLeft,
                    std::size_t columns = usualColumns)
{
    return vxlsync::host::barText(label, share, secondsLeft, columns);
}

// What one after the other leaves on the stream.
std::string shown(ProgressMode mode, const std::vector<Progress>& steps,
                  const std::vector<std::string>& paths = {"a.wav"},
                  std::size_t columns = usualColumns)
{
    std::ostringstream out;
    {
        ProgressBar bar(out, mode, paths, [columns] { return columns; });
        for (const Progress& step : steps)
            bar.show(step);
    }
    return out.str();
}

TEST(ProgressBar, DrawsAShareOfTheBar)
{
    // Half of 40.
    EXPECT_EQ(barText("Reading", 0.5, -1.0),
              "Reading     [" + std::string(20, '#') + std::string(20, '.') + "]  50 %");
}

TEST(ProgressBar, TellsTheSecondsLeftRoundedUp)
{
    EXPECT_THAT(barText("Reading", 0.5, 2.1), EndsWith("  50 %  3 s left"));
}

TEST(ProgressBar, TakesSharesOutsideForTheNearerEnd)
{
    EXPECT_THAT(barText("x", -1.0, -1.0), HasSubstr("   0 %"));
    EXPECT_THAT(barText("x", 7.0, -1.0), HasSubstr(" 100 %"));
    EXPECT_THAT(barText("x", std::nan(""), -1.0), HasSubstr("   0 %"));
}

TEST(ProgressBar, KeepsToTheWidthOfATerminal)
{
    for (std::size_t columns = 0; columns < 200; ++columns)
        EXPECT_LE(barText("Landmarks...", 1.0, 999999.0, columns).size(), columns - (columns > 0));
    EXPECT_THAT(barText("x", 0.5, 999999.0), EndsWith("  999999 s left"));
    EXPECT_THAT(barText("x", 0.5, 999999.5), EndsWith("  50 %"));
}

TEST(ProgressBar, GivesUpItsLettersWhereColumnsAreFew)
{
    EXPECT_EQ(barText("Reading", 0.5, 2.0, 45), "Reading     [#####.....]  50 %  2 s left");
    EXPECT_EQ(barText("Reading", 0.5, 2.0, 39), "Reading       50 %  2 s left");
    EXPECT_EQ(barText("Reading", 0.5, 2.0, 20), "Reading       50 % ");
    EXPECT_EQ(shown(ProgressMode::bar, {at(Stage::reading, 0.5, 0.5)}, {"a.wav"}, 20).size(),
              19 + std::string(eraseLine).size());
}

TEST(ProgressBar, NamesTheStageAndItsPlaceOfTheWhole)
{
    const std::string lines = shown(
        ProgressMode::plain, {at(Stage::comparing, 0.0, 0.02), at(Stage::comparing, 0.5, 0.04)});

    EXPECT_EQ(lines, "Comparing: 0 %, whole 2 %\nComparing: 50 %, whole 4 %\n");
}

TEST(ProgressBar, TellsTheSecondsLeftOnceTheyCanBeKnown)
{
    EXPECT_THAT(shown(ProgressMode::plain, {at(Stage::comparing, 0.5, 0.5)}),
                MatchesRegex("Comparing: 50 %, whole 50 %, [0-9]+ s left\n"));
}

TEST(ProgressBar, WritesALineForEachTenthOfAStage)
{
    const std::string lines = shown(ProgressMode::plain, {at(Stage::comparing, 0.10, 0.01),
                                                          at(Stage::comparing, 0.19, 0.02),
                                                          at(Stage::comparing, 0.20, 0.02)});

    EXPECT_EQ(lines, "Comparing: 10 %, whole 1 %\nComparing: 20 %, whole 2 %\n");
}

TEST(ProgressBar, WritesALineForEachStage)
{
    const std::string lines =
        shown(ProgressMode::plain, {at(Stage::reading, 0.0, 0.0), at(Stage::landmarks, 0.0, 0.01)});

    EXPECT_EQ(lines, "Reading: 0 %, whole 0 %\nLandmarks: 0 %, whole 1 %\n");
}

TEST(ProgressBar, NamesTheFilesThatAreDone)
{
    const std::string lines =
        shown(ProgressMode::plain, {finished(1, 0.01, 0.0), finished(0, 0.02, 0.0)},
              {"a\n.wav", "b.wav"});

    EXPECT_EQ(lines, "Reading: 1 %, whole 0 %, done: b.wav\n"
                     "Reading: 2 %, whole 0 %, done: a\\x0a.wav\n");
}

TEST(ProgressBar, WritesOneObjectALineForPrograms)
{
    const std::string out =
        shown(ProgressMode::json,
              {at(Stage::reading, 0.0, 0.0), at(Stage::reading, 0.004, 0.0), finished(0, 1.0, 0.5)},
              {"a\nb.wav"});

    std::istringstream lines(out);
    std::string line;
    std::getline(lines, line);
    EXPECT_EQ(line, R"({"stage":"Reading","stageShare":0.0,"share":0.0,"secondsLeft":null})");
    std::getline(lines, line);
    const auto last = nlohmann::json::parse(line);
    EXPECT_EQ(last.at("share"), 0.5);
    EXPECT_EQ(last.at("stageShare"), 1.0);
    EXPECT_EQ(last.at("file"), "a\nb.wav");
    EXPECT_EQ(last.at("fileIndex"), 0);
    EXPECT_GE(last.at("secondsLeft").get<double>(), 0.0);
    EXPECT_FALSE(std::getline(lines, line));
}

TEST(ProgressBar, CanBeSilent)
{
    EXPECT_EQ(shown(ProgressMode::none, {finished(0, 1.0, 1.0)}), "");
}

TEST(ProgressBar, DrawsOverTheBarBefore)
{
    const std::string text =
        shown(ProgressMode::bar, {at(Stage::reading, 0.0, 0.0), at(Stage::landmarks, 0.0, 0.025)});

    const std::string first = barText("Reading", 0.0, -1.0);
    const std::string second = barText("Landmarks", 0.025, -1.0);
    EXPECT_EQ(text, first + eraseLine + second + eraseLine);
}

TEST(ProgressBar, DrawsNothingWhereNothingHasChanged)
{
    const Progress same = at(Stage::reading, 0.0, 0.0);

    EXPECT_EQ(shown(ProgressMode::bar, {same, same}), shown(ProgressMode::bar, {same}));
}

TEST(ProgressBar, LeavesNothingOfTheBarBehind)
{
    EXPECT_THAT(shown(ProgressMode::bar, {at(Stage::reading, 0.0, 0.0)}), EndsWith(eraseLine));
}

} // namespace
