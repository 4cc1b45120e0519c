#include <gtest/gtest.h>

#include "model/Timecode.h"

namespace
{

using vxlsync::dayTimeOf;
using vxlsync::FrameRate;

constexpr FrameRate film{25, 1};
constexpr FrameRate broadcast{30000, 1001};
constexpr FrameRate fast{60000, 1001};

TEST(Timecode, CountsFramesSinceMidnight)
{
    // 36,000 s and 12 of 25 frames.
    EXPECT_DOUBLE_EQ(dayTimeOf("10:00:00:12", film)->seconds, 36000.48);
    EXPECT_DOUBLE_EQ(dayTimeOf("10:00:00:12", film)->daySeconds, 86400.0);
}

TEST(Timecode, FramesThatAreLongerThanTheirNumbersMakeALongerDay)
{
    // 36,000 times 30 frames of 1001/30000 s.
    EXPECT_DOUBLE_EQ(dayTimeOf("10:00:00:00", broadcast)->seconds, 36036.0);
    EXPECT_DOUBLE_EQ(dayTimeOf("10:00:00:00", broadcast)->daySeconds, 86486.4);
}

TEST(Timecode, NumbersThatAreLeftOutKeepToTheClock)
{
    // Two numbers in each of 540 minutes are left out: 1,080,000 - 1,080 frames.
    EXPECT_DOUBLE_EQ(dayTimeOf("10:00:00;00", broadcast)->seconds, 1078920.0 * 1001 / 30000);
    // 2,592,000 - 2 x 1,296 frames.
    EXPECT_DOUBLE_EQ(dayTimeOf("10:00:00;00", broadcast)->daySeconds, 2589408.0 * 1001 / 30000);
    // One frame lies between the last of a minute and the first number of the next.
    EXPECT_NEAR(dayTimeOf("00:01:00;02", broadcast)->seconds -
                    dayTimeOf("00:00:59;29", broadcast)->seconds,
                1001.0 / 30000, 1e-9);
    EXPECT_NEAR(dayTimeOf("00:10:00;00", broadcast)->seconds -
                    dayTimeOf("00:09:59;29", broadcast)->seconds,
                1001.0 / 30000, 1e-9);
    EXPECT_NEAR(dayTimeOf("00:01:00;04", fast)->seconds - dayTimeOf("00:00:59;59", fast)->seconds,
                1001.0 / 60000, 1e-9);
}

TEST(Timecode, RatesThatLeaveNothingOutTakeTheSignAsAColon)
{
    EXPECT_EQ(dayTimeOf("10:00:00;12", film)->seconds, dayTimeOf("10:00:00:12", film)->seconds);
}

TEST(Timecode, WhatIsNoneGivesNothing)
{
    for (const char* text :
         {"", "10:00:00", "10:00:00:25", "24:00:00:00", "10:60:00:00", "10:00:60:00", "-1:00:00:00",
          "10:-1:00:00", "10:00:-1:00", "10:00:00:-1", "10:00:00:00x", "noon"})
        EXPECT_FALSE(dayTimeOf(text, film)) << text;
}

} // namespace
