#include <algorithm>
#include <limits>
#include <sstream>

#include <gtest/gtest.h>

#include "ProgressBar.h"
#include "SyncProgress.h"

namespace
{

using vxlsync::barText;
using vxlsync::ProgressBar;

// A label of 12 columns, 40 between the brackets, the number in 4.
const std::string half = "Working     [" + std::string(20, '#') + std::string(20, '.') + "]  50 %";

std::string erasing(const std::string& text)
{
    return '\r' + std::string(text.size(), ' ') + '\r';
}

// The percentages in the order in which they were drawn.
std::vector<int> percentagesIn(const std::string& drawn)
{
    std::vector<int> result;
    for (std::size_t end = drawn.find("] "); end != std::string::npos;
         end = drawn.find("] ", end + 1)) {
        result.push_back(std::stoi(drawn.substr(end + 1)));
    }
    return result;
}

TEST(ProgressBar, FillsAsMuchOfTheBarAsIsDone)
{
    EXPECT_EQ(barText("Working", 0.5f), half);
}

TEST(ProgressBar, StaysBetweenEmptyAndFull)
{
    EXPECT_EQ(barText("Working", -1.0f), barText("Working", 0.0f));
    EXPECT_EQ(barText("Working", 2.0f), barText("Working", 1.0f));
    EXPECT_EQ(barText("Working", std::numeric_limits<float>::quiet_NaN()),
              barText("Working", 0.0f));
    EXPECT_EQ(barText("Working", 1.0f), "Working     [" + std::string(40, '#') + "] 100 %");
}

TEST(ProgressBar, ErasesItselfAtItsEnd)
{
    std::ostringstream out;

    {
        ProgressBar bar(out, true);
        bar.show("Working", 0.5f);
    }

    EXPECT_EQ(out.str(), half + erasing(half));
}

TEST(ProgressBar, IsNotDrawnAgainWhileItLooksTheSame)
{
    std::ostringstream out;
    ProgressBar bar(out, true);

    bar.show("Working", 0.5f);
    bar.show("Working", 0.503f);

    EXPECT_EQ(out.str(), half);
}

TEST(ProgressBar, PrintsLinesAboveItself)
{
    std::ostringstream out;
    ProgressBar bar(out, true);
    bar.show("Working", 0.5f);

    bar.printLine("a line");

    EXPECT_EQ(out.str(), half + erasing(half) + "a line\n" + half);
}

TEST(ProgressBar, PrintsOnlyLinesWhenItIsNotShown)
{
    std::ostringstream out;

    {
        ProgressBar bar(out, false);
        bar.show("Working", 0.5f);
        bar.printLine("a line");
    }

    EXPECT_EQ(out.str(), "a line\n");
}

TEST(SyncProgress, NeverMovesTheBarBack)
{
    std::ostringstream out;
    ProgressBar bar(out, true);
    vxlsync::SyncProgress progress(bar);

    progress.setStage(0);
    progress.setStage(1);
    // Over the recordings, and again from 0 over the keys.
    for (const float fraction : {0.0f, 0.5f, 1.0f, 0.0f, 0.5f, 1.0f})
        progress.setFraction(fraction);
    for (int stage = 2; stage <= 5; ++stage)
        progress.setStage(stage);

    const std::vector<int> percentages = percentagesIn(out.str());
    EXPECT_TRUE(std::is_sorted(percentages.begin(), percentages.end()));
    ASSERT_GE(percentages.size(), 8u);
    EXPECT_EQ(percentages.front(), 0);
    EXPECT_GE(percentages.back(), 98);
    EXPECT_LE(percentages.back(), 100);
}

} // namespace
