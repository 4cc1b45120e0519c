#include <gtest/gtest.h>

#include "model/DateTime.h"

namespace
{

using vxlsync::DateTime;
using vxlsync::parseDateTime;
using vxlsync::textOf;

double secondsOf(const std::string& text)
{
    return parseDateTime(text).value().seconds;
}

// 20,454 days before the first of January 2026 (56 years, 14 of them leap), 151 before June.
constexpr double firstOfJune2026 = (56 * 365 + 14 + 151) * 86400.0;

TEST(DateTime, ATimeWithoutAZoneIsOnTheDevicesClock)
{
    const DateTime time = parseDateTime("2026-06-01T10:00:37").value();

    EXPECT_EQ(time.seconds, firstOfJune2026 + 36037.0);
    EXPECT_FALSE(time.zoneMinutes);
}

TEST(DateTime, ATimeWithAZoneIsTurnedIntoUniversalTime)
{
    EXPECT_EQ(secondsOf("2026-06-01T10:00:37Z"), firstOfJune2026 + 36037.0);
    EXPECT_EQ(secondsOf("2026-06-01T10:00:37+02:00"), firstOfJune2026 + 28837.0);
    EXPECT_EQ(secondsOf("2026-06-01T10:00:37-0330"), firstOfJune2026 + 48637.0);
    EXPECT_EQ(secondsOf("2026-06-01T10:00:37+02"), firstOfJune2026 + 28837.0);
}

TEST(DateTime, AFractionOfTheSecondCounts)
{
    EXPECT_EQ(secondsOf("2026-06-01T10:00:37.250000Z"), firstOfJune2026 + 36037.25);
    EXPECT_EQ(secondsOf("2026-06-01T10:00:37.25+00:00"), firstOfJune2026 + 36037.25);
}

TEST(DateTime, AnySignStandsBetweenTheNumbers)
{
    EXPECT_EQ(secondsOf("2026:06:01 10:00:37"), firstOfJune2026 + 36037.0);
    EXPECT_EQ(secondsOf("2026/06/01 10-00-37"), firstOfJune2026 + 36037.0);
}

TEST(DateTime, LeapYearsHaveADayMore)
{
    EXPECT_EQ(secondsOf("2024-03-01T00:00:00") - secondsOf("2024-02-28T00:00:00"), 2 * 86400.0);
    EXPECT_EQ(secondsOf("2100-03-01T00:00:00") - secondsOf("2100-02-28T00:00:00"), 86400.0);
    EXPECT_EQ(secondsOf("2000-03-01T00:00:00") - secondsOf("2000-02-28T00:00:00"), 2 * 86400.0);
    EXPECT_FALSE(parseDateTime("2026-02-29T10:00:00"));
}

TEST(DateTime, WhatIsNoTimeGivesNothing)
{
    for (const char* text : {"", "2026", "2026-06-01", "2026-06-01T10:00", "2026-13-01T10:00:00",
                             "2026-00-01T10:00:00", "2026-06-00T10:00:00", "2026-06-31T10:00:00",
                             "2026-06-01T24:00:00", "2026-06-01T10:60:00", "2026-06-01T10:00:61",
                             "June 1st 2026", "20x6-06-01T10:00:00", "2026-06-01T10:0/:00"})
        EXPECT_FALSE(parseDateTime(text)) << text;
}

TEST(DateTime, TheZerosOfClocksAreNoTimes)
{
    EXPECT_FALSE(parseDateTime("1904-01-01T00:00:00Z"));
    EXPECT_FALSE(parseDateTime("1970-01-01T00:12:00Z"));
    EXPECT_FALSE(parseDateTime("1989-12-31T23:59:59Z"));
    EXPECT_TRUE(parseDateTime("1990-01-01T00:00:00Z"));
    EXPECT_TRUE(parseDateTime("2199-12-31T23:59:59Z"));
    EXPECT_FALSE(parseDateTime("2200-01-01T00:00:00Z"));
}

TEST(DateTime, AZoneThatIsNoneIsNotBelieved)
{
    for (const char* zone : {"+16:00", "+x2", "+02:60", "+02:x", "*"}) {
        const auto time = parseDateTime("2026-06-01T10:00:37" + std::string(zone));
        ASSERT_TRUE(time) << zone;
        EXPECT_FALSE(time->zoneMinutes) << zone;
        EXPECT_EQ(time->seconds, firstOfJune2026 + 36037.0) << zone;
    }
}

TEST(DateTime, IsWrittenAsItWasRead)
{
    for (const char* text :
         {"2026-06-01T10:00:37", "2026-06-01T10:00:37Z", "2026-06-01T10:00:37+02:00",
          "2026-06-01T00:30:00+02:00", "2024-12-31T23:59:59-03:30", "1990-01-01T00:00:00+14:00"})
        EXPECT_EQ(textOf(parseDateTime(text).value()), text);
}

TEST(DateTime, IsWrittenToTheSecond)
{
    EXPECT_EQ(textOf(parseDateTime("2026-06-01T10:00:37.9Z").value()), "2026-06-01T10:00:37Z");
}

} // namespace
