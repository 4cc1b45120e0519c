#include "Parallel.h"

#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>

namespace
{

using vxlsync::runParallel;

TEST(Parallel, CallsEachIndexOnce)
{
    std::vector<int> calls(100, 0);

    runParallel(calls.size(), 4, [&](std::size_t index, std::size_t) { ++calls[index]; });

    EXPECT_EQ(calls, std::vector<int>(100, 1));
}

TEST(Parallel, NumbersItsWorkersFromZero)
{
    std::vector<std::size_t> workers(50, 99);

    runParallel(workers.size(), 3,
                [&](std::size_t index, std::size_t worker) { workers[index] = worker; });

    EXPECT_THAT(workers, testing::Each(testing::Lt(3u)));
}

TEST(Parallel, ThrowsTheFirstFailureByIndex)
{
    const auto fail = [](std::size_t index, std::size_t) {
        if (index == 3 || index == 7) throw std::runtime_error(std::to_string(index));
    };

    EXPECT_THROW(
        {
            try {
                runParallel(10, 4, fail);
            } catch (const std::runtime_error& error) {
                EXPECT_STREQ(error.what(), "3");
                throw;
            }
        },
        std::runtime_error);
}

TEST(Parallel, DoesNothingForNoTasks)
{
    runParallel(0, 4, [](std::size_t, std::size_t) { FAIL(); });
}

} // namespace
