#include "match/LineFit.h"

#include <gtest/gtest.h>

#include "Peaked.h"

namespace
{

using peaked::rate;
using vxlsync::FittedLine;
using vxlsync::Line;

const Line about{10.0, 1.0, 10e-6, -1.0};

// In samples, of 20 windows.
std::vector<double> deviationsAlong(double offset, double slopePerSecond)
{
    std::vector<double> deviations;
    for (int i = 0; i < 20; ++i)
        deviations.push_back(offset + slopePerSecond * (i + 0.5 - 10.0));
    return deviations;
}

FittedLine fitted(const std::vector<double>& deviations, double height = 0.5)
{
    return vxlsync::fitLine(peaked::rowsWith(deviations, height),
                            peaked::windowsFor(deviations.size()), about);
}

TEST(LineFit, FollowsThePeaksToAFractionOfASample)
{
    // 0.4 samples later, and 0.05 samples a second steeper: 6.25 millionths.
    const FittedLine fit = fitted(deviationsAlong(0.4, 0.05));

    EXPECT_NEAR(fit.line.offset, 1.0 + 0.4 / rate, 1e-7);
    // A thousandth of the pull.
    EXPECT_NEAR(fit.line.slope, 16.25e-6, 0.05e-6);
    EXPECT_EQ(fit.line.middle, 10.0);
    EXPECT_EQ(fit.line.sign, -1.0);
    // Peaks are right to sqrt(1e-11) s at best; 20 windows, half shared: a root of ten better.
    EXPECT_NEAR(fit.offsetError, 1e-6, 0.05e-6);
    // The windows' times have a variance of 33 s squared.
    EXPECT_NEAR(fit.slopeError, 1e-6 / 5.77, 0.02e-6);
}

TEST(LineFit, DropsWindowsOffTheLine)
{
    std::vector<double> deviations = deviationsAlong(0.0, 0.0);
    deviations[3] = 6.0;
    deviations[15] = -7.0;

    const FittedLine fit = fitted(deviations);

    EXPECT_NEAR(fit.line.offset, 1.0, 1e-9);
    EXPECT_NEAR(fit.line.slope, 10e-6, 1e-9);
}

TEST(LineFit, StaysWhereNoWindowIsClear)
{
    // 3.4 times the noise.
    const FittedLine fit = fitted(deviationsAlong(3.0, 0.0), 0.034);

    EXPECT_EQ(fit.line.offset, 1.0);
    EXPECT_EQ(fit.line.slope, 10e-6);
    EXPECT_EQ(fit.offsetError, 0.001);
    EXPECT_EQ(fit.slopeError, 1.0);
}

TEST(LineFit, TakesNoSlopeFromTwoWindows)
{
    Line line = about;
    line.middle = 1.0;

    const FittedLine fit =
        vxlsync::fitLine(peaked::rowsWith({-1.0, 1.0}), peaked::windowsFor(2), line);

    EXPECT_NEAR(fit.line.offset, 1.0, 1e-6);
    EXPECT_EQ(fit.line.slope, 10e-6);
}

TEST(LineFit, IsNoSteeperThanClocksAre)
{
    // 1.6 samples a second are 200 millionths, 10 more are there, and 204 are the limit.
    std::vector<double> deviations;
    for (int i = 0; i < 8; ++i)
        deviations.push_back(1.6 * (i + 0.5 - 4.0));
    Line line = about;
    line.middle = 4.0;

    const FittedLine fit =
        vxlsync::fitLine(peaked::rowsWith(deviations), peaked::windowsFor(8), line);

    EXPECT_NEAR(fit.line.slope, 204e-6, 1e-9);
}

} // namespace
