#include "match/Evidence.h"

#include <gtest/gtest.h>

namespace
{

using vxlsync::Alignment;
using vxlsync::isEvidence;

// Just enough of everything.
Alignment leastEvidence()
{
    Alignment line;
    line.significance = 9.0;
    line.bands = 6;
    line.sharpness = 1.3;
    line.agreement = 0.3;
    return line;
}

TEST(Evidence, NeedsAllOfItsParts)
{
    EXPECT_TRUE(isEvidence(leastEvidence()));
    Alignment line = leastEvidence();
    line.significance = 8.99;
    EXPECT_FALSE(isEvidence(line));
    EXPECT_FALSE(vxlsync::standsOutOfChance(line));
    line = leastEvidence();
    line.bands = 5;
    EXPECT_FALSE(isEvidence(line));
    line = leastEvidence();
    line.sharpness = 1.29;
    EXPECT_FALSE(isEvidence(line));
    line = leastEvidence();
    line.agreement = 0.29;
    EXPECT_FALSE(isEvidence(line));
}

} // namespace
