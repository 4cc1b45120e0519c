#include "match/LineSearch.h"

#include <cmath>

#include <gtest/gtest.h>

#include "Measuring.h"
#include "Peaked.h"

namespace
{

using peaked::rate;
using vxlsync::FoundLine;
using vxlsync::Line;

const vxlsync::Interrupt never;
const Line about{5.0, 1.0, 0.0, 1.0};

TEST(LineSearch, FindsTheOffset)
{
    const FoundLine found =
        vxlsync::searchLine(peaked::rowsWith(std::vector<double>(10, 7.0)), peaked::windowsFor(10),
                            about, {0.01, 0.0, false}, never);

    EXPECT_NEAR(found.line.offset, 1.0 + 7.0 / rate, 1.0 / rate);
    EXPECT_EQ(found.line.slope, 0.0);
    EXPECT_EQ(found.line.sign, 1.0);
    // Ten windows of 0.5 against 0.01 times the root of 10 times 1.5.
    EXPECT_NEAR(found.significance, 10 * 0.5 / (0.01 * std::sqrt(15.0)), 0.01);
}

TEST(LineSearch, FindsTheSlope)
{
    // From -9 to 9 samples over 9 s about the middle: 2 samples a second.
    std::vector<double> deviations;
    for (int i = 0; i < 10; ++i)
        deviations.push_back(2.0 * (i + 0.5 - 5.0));

    const FoundLine found = vxlsync::searchLine(
        peaked::rowsWith(deviations), peaked::windowsFor(10), about, {0.01, 500e-6, false}, never);

    EXPECT_NEAR(found.line.offset, 1.0, 2.0 / rate);
    EXPECT_NEAR(found.line.slope * rate, 2.0, 0.4);
}

TEST(LineSearch, LooksUpsideDownIfItMay)
{
    const auto rows = peaked::rowsWith(std::vector<double>(10, 7.0), -0.5);

    const FoundLine upright =
        vxlsync::searchLine(rows, peaked::windowsFor(10), about, {0.01, 0.0, false}, never);
    const FoundLine either =
        vxlsync::searchLine(rows, peaked::windowsFor(10), about, {0.01, 0.0, true}, never);

    EXPECT_EQ(upright.line.sign, 1.0);
    EXPECT_NEAR(upright.significance, 0.0, 1e-6);
    EXPECT_EQ(either.line.sign, -1.0);
    EXPECT_NEAR(either.line.offset, 1.0 + 7.0 / rate, 1.0 / rate);
    EXPECT_GT(either.significance, 100.0);
}

TEST(LineSearch, StaysUprightWhereThatIsBetter)
{
    const FoundLine found =
        vxlsync::searchLine(peaked::rowsWith(std::vector<double>(10, 0.0)), peaked::windowsFor(10),
                            about, {0.01, 0.0, true}, never);

    EXPECT_EQ(found.line.sign, 1.0);
}

TEST(LineSearch, GoesOnWhereRowsEnd)
{
    // Rows that reach 10 samples, offsets of 8, and slopes that lead 25 samples off at the ends.
    const FoundLine found =
        vxlsync::searchLine(peaked::rowsWith(std::vector<double>(10, 3.0), 0.5, 10),
                            peaked::windowsFor(10), about, {0.001, 625e-6, false}, never);

    EXPECT_NEAR(found.line.offset, 1.0 + 3.0 / rate, 1.0 / rate);
    EXPECT_NEAR(found.line.slope, 0.0, 1e-9);
}

TEST(LineSearch, TakesNoNumbersForNothing)
{
    vxlsync::Rows rows = peaked::rowsWith(std::vector<double>(10, 0.0));
    std::fill(rows.values.begin(), rows.values.end(), std::nanf(""));

    const FoundLine found =
        vxlsync::searchLine(rows, peaked::windowsFor(10), about, {0.01, 0.0, true}, never);

    EXPECT_EQ(found.line.offset, 1.0);
    EXPECT_LT(found.significance, 0.0);
}

TEST(LineSearch, CanBeEnded)
{
    const vxlsync::Interrupt interrupt(measuring::endingAt(2));

    EXPECT_THROW(vxlsync::searchLine(peaked::rowsWith(std::vector<double>(10, 0.0)),
                                     peaked::windowsFor(10), about, {0.01, 100e-6, false},
                                     interrupt),
                 vxlsync::Cancelled);
}

} // namespace
