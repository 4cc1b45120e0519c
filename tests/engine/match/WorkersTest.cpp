#include "match/Workers.h"

#include <gtest/gtest.h>

namespace
{

TEST(Workers, AreAsManyAsFitButOneAtLeast)
{
    EXPECT_EQ(vxlsync::workersWithin(100, 30, 8), 3u);
    EXPECT_EQ(vxlsync::workersWithin(100, 30, 2), 2u);
    EXPECT_EQ(vxlsync::workersWithin(29, 30, 8), 1u);
    EXPECT_EQ(vxlsync::workersWithin(0, 30, 8), 1u);
}

} // namespace
