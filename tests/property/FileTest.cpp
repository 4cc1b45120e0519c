#include <cstdint>
#include <limits>
#include <string>

#include <gmock/gmock.h>

#include "Random.h"
#include "VXFile.h"
#include "VXLandmark.h"
#include "plain/Recording.h"

using property::Random;

namespace
{

std::int64_t anyFrame(Random& random, const plain::Recording& recording)
{
    using Limits = std::numeric_limits<std::int64_t>;
    const std::int64_t near = random.between(-3, 3);
    if (recording.landmarks.empty()) return near;
    return random.pick({recording.first + near, recording.last + near,
                        random.between(recording.first, recording.last), near, Limits::min(),
                        Limits::max(), std::int64_t{1} << 32, -(std::int64_t{1} << 32)});
}

void addLandmarks(Random& random, VXS::VXFile& file, plain::Recording& recording,
                  std::int32_t start, std::int32_t span)
{
    for (std::uint64_t count = random.below(40); count > 0; --count) {
        const std::int32_t offset =
            start + static_cast<std::int32_t>(random.below(static_cast<std::uint64_t>(span)));
        const std::uint32_t key = static_cast<std::uint32_t>(random.below(9));
        file.addLandmark(new VXS::VXLandmark(offset, &file, key));
        recording.add({offset, key, recording.id, true});
    }
}

void compareQueries(Random& random, VXS::VXFile& file, plain::Recording& recording)
{
    for (int i = 0; i < 60; ++i) {
        const std::int64_t start = anyFrame(random, recording);
        const std::int64_t end = anyFrame(random, recording);
        ASSERT_EQ(file.queryNumberLandmarksInBetween(start, end),
                  recording.countBetween(start, end))
            << "from " << start << " to " << end;
    }
    ASSERT_THAT(file.clf, testing::ElementsAreArray(recording.counts));
    ASSERT_EQ(file.clfDirty, recording.stale);
    ASSERT_EQ(file.getLandmarkMap().size(), recording.landmarks.size());
}

} // namespace

TEST(VXFile, CountsAnyRangeAsThePlainTwin)
{
    for (std::uint64_t seed = 7000; seed < 7300; ++seed) {
        SCOPED_TRACE("seed " + std::to_string(seed));
        Random random(seed);
        VXS::VXFile file(1);
        plain::Recording recording(1);
        const std::int32_t start = random.pick({0, -50, 2147483000, -2147483647 - 1});
        const std::int32_t span = random.pick({1, 30, 600});
        addLandmarks(random, file, recording, start, span);
        compareQueries(random, file, recording);

        file.computeCLF();
        recording.countUp();
        compareQueries(random, file, recording);
        // A second time: frames that have a count keep it.
        addLandmarks(random, file, recording, start - start / 4 * random.pick({0, 0, 1}) / 1000000,
                     span);
        compareQueries(random, file, recording);
        file.computeCLF();
        recording.countUp();
        compareQueries(random, file, recording);

        if (HasFatalFailure()) return;
    }
}
