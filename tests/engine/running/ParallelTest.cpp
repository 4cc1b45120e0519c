#include "running/Parallel.h"

#include <pthread.h>

#include <stdexcept>
#include <string>
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

// Stacks of new threads, larger than any address space.
class HugeStacks
{
public:
    HugeStacks()
    {
        pthread_getattr_default_np(&former);
        pthread_attr_t huge;
        pthread_attr_init(&huge);
        EXPECT_EQ(pthread_attr_setstacksize(&huge, std::size_t{1} << 60U), 0);
        EXPECT_EQ(pthread_setattr_default_np(&huge), 0);
        pthread_attr_destroy(&huge);
    }
    ~HugeStacks()
    {
        pthread_setattr_default_np(&former);
        pthread_attr_destroy(&former);
    }
    HugeStacks(const HugeStacks&) = delete;
    HugeStacks& operator=(const HugeStacks&) = delete;

private:
    pthread_attr_t former{};
};

TEST(Parallel, DoesTheWorkWithTheThreadsThatCanBeStarted)
{
    std::vector<int> calls(1000, 0);
    std::vector<std::size_t> workers(1000, 99);
    {
        const HugeStacks noThreads;

        runParallel(calls.size(), 64, [&](std::size_t index, std::size_t worker) {
            ++calls[index];
            workers[index] = worker;
        });
    }

    EXPECT_EQ(calls, std::vector<int>(1000, 1));
    EXPECT_THAT(workers, testing::Each(0u));
}

TEST(Parallel, DoesNothingForNoTasks)
{
    runParallel(0, 4, [](std::size_t, std::size_t) { FAIL(); });
}

} // namespace
