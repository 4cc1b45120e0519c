#include <string>

#include <gtest/gtest.h>

#include "read/FactFields.h"

namespace
{

using vxlsync::factText;
using vxlsync::FileFacts;
using vxlsync::setTimeReference;

TEST(FactFields, ATextEndsAtItsFirstZero)
{
    EXPECT_EQ(factText(std::string("camera a\0rest", 13)), "camera a");
    EXPECT_EQ(factText(""), "");
}

TEST(FactFields, ATextHasNoControlCharactersAndNoBlanksAtItsEnds)
{
    EXPECT_EQ(factText("  \x1b[31mred\x7f one \n "), "[31mred one");
    EXPECT_EQ(factText("K\xc3\xb6ln"), "K\xc3\xb6ln");
}

TEST(FactFields, ATextHasABoundedLength)
{
    EXPECT_EQ(factText(std::string(128, 'a')).size(), 128U);
    EXPECT_EQ(factText(std::string(100000, 'a')).size(), 128U);
}

TEST(FactFields, SamplesSinceMidnightAreATimeOfDay)
{
    FileFacts facts;
    setTimeReference(48000U * 36001U, 48000, facts);

    EXPECT_EQ(facts.timeReference, 36001.0);
    ASSERT_TRUE(facts.started);
    EXPECT_EQ(facts.started->seconds, 36001.0);
    EXPECT_EQ(facts.started->daySeconds, 86400.0);
}

TEST(FactFields, WhatIsNoTimeOfDayIsLeftOut)
{
    FileFacts facts;
    setTimeReference(0, 48000, facts);
    setTimeReference(48000, 0, facts);
    setTimeReference(48000, -1, facts);
    setTimeReference(86400, 1, facts);
    setTimeReference(~std::uint64_t{0}, 48000, facts);
    EXPECT_FALSE(facts.started);
    EXPECT_FALSE(facts.timeReference);

    setTimeReference(86399, 1, facts);
    EXPECT_TRUE(facts.started);
}

} // namespace
