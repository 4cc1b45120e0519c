#include "read/Limits.h"

#include <gtest/gtest.h>

namespace
{

using vxlsync::ReadLimits;
using vxlsync::StallWatch;

TEST(StallWatch, GivesUpAfterMoreThanTenSecondsWithoutAMove)
{
    double now = 5.0;
    ReadLimits limits;
    limits.clock = [&now] { return now; };
    const StallWatch watch(limits);

    now = 15.0;
    EXPECT_FALSE(watch.isStalled());
    now = 15.001;
    EXPECT_TRUE(watch.isStalled());
}

TEST(StallWatch, CountsFromTheLastMove)
{
    double now = 5.0;
    ReadLimits limits;
    limits.clock = [&now] { return now; };
    StallWatch watch(limits);
    now = 14.0;

    watch.move();

    now = 24.0;
    EXPECT_FALSE(watch.isStalled());
    now = 24.001;
    EXPECT_TRUE(watch.isStalled());
}

TEST(SteadySeconds, NeverGoBack)
{
    const double first = vxlsync::steadySeconds();

    EXPECT_GE(vxlsync::steadySeconds(), first);
}

} // namespace
