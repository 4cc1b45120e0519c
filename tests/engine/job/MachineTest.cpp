#include "job/Machine.h"

#include <gtest/gtest.h>

namespace
{

using vxlsync::leastMemoryBytes;
using vxlsync::memoryOf;
using vxlsync::Options;

constexpr std::size_t gigabyte = std::size_t{1} << 30U;

TEST(Machine, TakesTheThreadsAskedForOrThoseThatItHas)
{
    Options options;
    EXPECT_GE(vxlsync::threadsOf(options), 1u);

    options.threads = 3;
    EXPECT_EQ(vxlsync::threadsOf(options), 3u);
}

TEST(Machine, KnowsItsMemory)
{
    EXPECT_GT(vxlsync::machineMemory(), leastMemoryBytes);
}

TEST(Machine, TakesTheMemoryAskedFor)
{
    Options options;
    options.memoryBytes = leastMemoryBytes + 1;

    EXPECT_EQ(memoryOf(options, 64 * gigabyte), leastMemoryBytes + 1);
}

TEST(Machine, TakesThreeQuartersOfWhatItHas)
{
    EXPECT_EQ(memoryOf(Options(), 8 * gigabyte), 6 * gigabyte);
}

TEST(Machine, TakesThreeGigabytesWhereItDoesNotKnow)
{
    EXPECT_EQ(memoryOf(Options(), 0), 3 * gigabyte);
}

TEST(Machine, TakesEnoughForOneRecordingWhateverItHas)
{
    EXPECT_EQ(memoryOf(Options(), 1000), leastMemoryBytes);
}

} // namespace
