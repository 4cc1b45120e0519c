#include "match/Judge.h"

#include <cmath>

#include <gtest/gtest.h>

#include "Peaked.h"

namespace
{

using vxlsync::Alignment;

const vxlsync::FittedLine fitted{{5.0, 1.0, 10e-6, -1.0}, 2e-6, 3e-6};

Alignment judged(const vxlsync::Rows& rows)
{
    return vxlsync::judgeLine(rows, peaked::windowsFor(rows.count()), fitted);
}

TEST(Judge, TellsTheLineAndItsErrors)
{
    const Alignment alignment = judged(peaked::rowsWith(std::vector<double>(10, 0.0)));

    EXPECT_EQ(alignment.middle, 5.0);
    EXPECT_EQ(alignment.offset, 1.0);
    EXPECT_EQ(alignment.slope, 10e-6);
    EXPECT_EQ(alignment.sign, -1.0);
    EXPECT_EQ(alignment.offsetError, 2e-6);
    EXPECT_EQ(alignment.slopeError, 3e-6);
    EXPECT_EQ(alignment.start, 0.0);
    EXPECT_EQ(alignment.end, 10.0);
}

TEST(Judge, TakesTheWindowsTogether)
{
    const Alignment alignment = judged(peaked::rowsWith(std::vector<double>(10, 0.0)));

    EXPECT_NEAR(alignment.coherence, 0.5, 1e-6);
    EXPECT_EQ(alignment.agreement, 1.0);
    // 10 windows of 0.5, and of 1 at the most, against 0.01 times the root of 15.
    EXPECT_NEAR(alignment.significance, 5.0 / (0.01 * std::sqrt(15.0)), 1e-3);
    EXPECT_NEAR(alignment.fullSignificance, 10.0 / (0.01 * std::sqrt(15.0)), 1e-3);
    // Nothing beside it.
    EXPECT_EQ(alignment.sharpness, 0.0);
}

TEST(Judge, ComparesWithTheHighestBeside)
{
    vxlsync::Rows rows = peaked::rowsWith(std::vector<double>(10, 0.0));
    // 20 samples away, 2.5 ms, upside down.
    for (std::size_t k = 0; k < 10; ++k)
        rows.values[k * rows.width() + 420] = -0.25f;

    EXPECT_NEAR(judged(rows).sharpness, 2.0, 1e-6);
}

TEST(Judge, AsksEachWindowWhetherItAgrees)
{
    // One peak 7.5 samples away is on the line, one 9 samples away is off; one is too low.
    vxlsync::Rows rows = peaked::rowsWith({0.0, 7.5, 9.0, 0.0});
    for (std::size_t i = 0; i < rows.width(); ++i)
        rows.values[3 * rows.width() + i] *= 0.06f;
    // On the line, the second and third have a little of their own.
    rows.values[rows.width() + 400] = 0.1f;
    rows.values[2 * rows.width() + 400] = 0.1f;

    const Alignment alignment = judged(rows);

    ASSERT_EQ(alignment.windows.size(), 4u);
    EXPECT_TRUE(alignment.windows[0].agrees);
    EXPECT_TRUE(alignment.windows[1].agrees);
    EXPECT_FALSE(alignment.windows[2].agrees);
    EXPECT_FALSE(alignment.windows[3].agrees);
    EXPECT_DOUBLE_EQ(alignment.agreement, 0.5);
    EXPECT_NEAR(alignment.windows[2].deviation, 9.0 / peaked::rate, 1e-7);
    EXPECT_NEAR(alignment.windows[2].ownCoherence, 0.5, 1e-3);
    EXPECT_NEAR(alignment.windows[2].coherence, 0.1, 1e-3);
    EXPECT_EQ(alignment.windows[2].time, 2.5);
}

TEST(Judge, AsksNoPauses)
{
    const vxlsync::Rows rows = peaked::rowsWith({0.0, 0.0});
    vxlsync::Windows windows = peaked::windowsFor(2);
    windows.weights = {0.1, 0.02};

    EXPECT_EQ(vxlsync::judgeLine(rows, windows, fitted).agreement, 0.0);
}

TEST(Judge, CountsTheBandsThatAgree)
{
    vxlsync::Rows rows = peaked::rowsWith({0.0});
    // The line is upside down, so that a negative sum agrees; 4 times the root of 0.75 times 100 is
    // 34.6.
    rows.bands = {{-34.7, 100.0}, {-34.6, 100.0}, {34.7, 100.0}};

    EXPECT_EQ(judged(rows).bands, 1);
    EXPECT_EQ(judged(rows).allBands, 3);
}

TEST(Judge, DescribesALineWithoutEvidence)
{
    vxlsync::Windows windows = peaked::windowsFor(2);
    windows.activity = 0.25;

    const Alignment alignment = vxlsync::describeLine(windows, fitted.line);

    EXPECT_EQ(alignment.offset, 1.0);
    EXPECT_EQ(alignment.activity, 0.25);
    ASSERT_EQ(alignment.windows.size(), 2u);
    EXPECT_EQ(alignment.windows[1].time, 1.5);
    EXPECT_EQ(alignment.windows[1].weight, 1.0);
    EXPECT_EQ(alignment.coherence, 0.0);
}

} // namespace
