#include "match/Jumps.h"

#include <gmock/gmock.h>

namespace
{

using vxlsync::Link;
using vxlsync::Links;

// A line with a window each second of 40, which agrees from `from` to `to`.
Link lineThatHolds(double offset, double from, double to)
{
    Link link;
    link.line.offset = offset;
    link.line.end = 40.0;
    link.line.middle = 20.0;
    link.line.significance = 100.0;
    for (int second = 0; second < 40; ++second) {
        vxlsync::AlignmentWindow window;
        window.time = second + 0.5;
        window.weight = 1.0;
        window.agrees = window.time > from && window.time < to;
        window.coherence = window.agrees ? 0.5 : 0.0;
        link.line.windows.push_back(window);
        link.line.coherence += window.coherence / 40.0;
        link.line.agreement += window.agrees ? 1.0 / 40.0 : 0.0;
    }
    return link;
}

TEST(Jumps, JoinALineThatGoesOnBesideItself)
{
    const Links links =
        vxlsync::joinJumps({lineThatHolds(3.5, 25.0, 40.0), lineThatHolds(3.0, 0.0, 25.0)});

    ASSERT_EQ(links.size(), 1u);
    EXPECT_EQ(links[0].line.offset, 3.0);
    EXPECT_NEAR(links[0].line.agreement, 1.0, 1e-9);
    EXPECT_NEAR(links[0].line.coherence, 0.5, 1e-9);
    // The two parts are as independent as two windows.
    EXPECT_NEAR(links[0].line.significance, 100.0 * std::sqrt(2.0), 1e-9);
    ASSERT_EQ(links[0].jumps.size(), 1u);
    EXPECT_NEAR(links[0].jumps[0].atSeconds, 25.5, 1.0);
    EXPECT_NEAR(links[0].jumps[0].sizeSeconds, 0.5, 1e-9);
}

TEST(Jumps, JoinTheFirstTwoAndLeaveTheOthers)
{
    const Links links =
        vxlsync::joinJumps({lineThatHolds(9.0, 0.0, 40.0), lineThatHolds(3.5, 25.0, 40.0),
                            lineThatHolds(3.0, 0.0, 25.0)});

    ASSERT_EQ(links.size(), 2u);
    EXPECT_EQ(links[0].line.offset, 9.0);
    EXPECT_EQ(links[1].line.offset, 3.0);
}

TEST(Jumps, LeaveLinesAloneThatHoldAtTheSameTime)
{
    EXPECT_EQ(
        vxlsync::joinJumps({lineThatHolds(3.0, 0.0, 40.0), lineThatHolds(3.5, 0.0, 40.0)}).size(),
        2u);
}

TEST(Jumps, LeaveLinesAloneThatAreFarApart)
{
    EXPECT_EQ(
        vxlsync::joinJumps({lineThatHolds(3.0, 0.0, 25.0), lineThatHolds(8.5, 25.0, 40.0)}).size(),
        2u);
}

TEST(Jumps, LeaveLinesAloneOfWhichOneIsUpsideDown)
{
    Links links{lineThatHolds(3.0, 0.0, 25.0), lineThatHolds(3.5, 25.0, 40.0)};
    links[1].line.sign = -1.0;

    EXPECT_EQ(vxlsync::joinJumps(links).size(), 2u);
}

TEST(Jumps, LeaveLinesAloneThatAreNotAlike)
{
    Links links{lineThatHolds(3.0, 0.0, 25.0), lineThatHolds(3.5, 25.0, 40.0)};
    for (vxlsync::AlignmentWindow& window : links[1].line.windows)
        window.coherence *= 0.4;

    EXPECT_EQ(vxlsync::joinJumps(links).size(), 2u);
}

TEST(Jumps, LeaveALineAloneThatHoldsForTwoWindowsOnly)
{
    EXPECT_EQ(
        vxlsync::joinJumps({lineThatHolds(3.0, 0.0, 38.0), lineThatHolds(3.5, 38.0, 40.0)}).size(),
        2u);
}

TEST(Jumps, LeaveALineAloneThatStaysBesideTheOther)
{
    EXPECT_EQ(
        vxlsync::joinJumps({lineThatHolds(3.0, 0.0, 25.0), lineThatHolds(3.5, 5.0, 40.0)}).size(),
        2u);
}

} // namespace
