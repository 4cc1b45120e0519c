#include <cstdint>
#include <new>
#include <vector>

#include <gtest/gtest.h>

#include "Allocations.h"
#include "Signals.h"
#include "match/LandmarkFiles.h"

namespace
{

using allocation::Refusal;
using allocation::Refused;
using vxlsync::Recording;

// The library has an error of its own for the memory of its transform, which is among the first
// that it asks for.
TEST(LandmarkFilesAllocation, RefusedIsAlwaysTheOneError)
{
    constexpr std::uint64_t first = 100;
    std::vector<Recording> recordings(1);
    recordings[0].samples = signals::stored(signals::noise(3, signals::rate));
    vxlsync::Run run(1, std::size_t{1} << 30U, {});

    for (std::uint64_t number = 0; number < first; ++number) {
        const std::int64_t before = allocation::liveBlocks();
        bool isRefused = false;
        {
            Refusal refusal(number, Refused::One);
            try {
                vxlsync::extractLandmarks(recordings, run);
            } catch (const std::bad_alloc&) {
                isRefused = true;
            }
            refusal.end();
            EXPECT_TRUE(refusal.hasHappened()) << number;
        }
        EXPECT_TRUE(isRefused) << "allocation " << number;
        EXPECT_EQ(allocation::liveBlocks(), before) << number;
    }
}

} // namespace
