#include "running/Parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace vxlsync
{

namespace
{

// Ends them before they go, whatever is thrown meanwhile.
class Threads
{
public:
    Threads() = default;
    Threads(const Threads&) = delete;
    Threads& operator=(const Threads&) = delete;
    ~Threads()
    {
        for (std::thread& thread : running)
            thread.join();
    }

    // Starts up to `count` threads. A limit of the system on threads or memory ends the attempt:
    // the work is done by those that could be started.
    template <typename Work>
    void start(std::size_t count, const Work& work)
    {
        try {
            running.reserve(count);
            while (running.size() < count)
                running.emplace_back(work, running.size() + 1);
        } catch (const std::exception&) {
            return;
        }
    }

private:
    std::vector<std::thread> running;
};

} // namespace

void runParallel(std::size_t count, std::size_t workers,
                 const std::function<void(std::size_t index, std::size_t worker)>& task)
{
    std::atomic<std::size_t> next{0};
    std::mutex guard;
    std::exception_ptr failure;
    std::size_t failedIndex = count;
    const auto work = [&](std::size_t worker) {
        for (std::size_t index = next++; index < count; index = next++) {
            try {
                task(index, worker);
            } catch (...) {
                const std::lock_guard<std::mutex> lock(guard);
                if (index < failedIndex) {
                    failedIndex = index;
                    failure = std::current_exception();
                }
            }
        }
    };
    {
        Threads threads;
        threads.start(std::max<std::size_t>(1, std::min(workers, count)) - 1, work);
        work(0);
    }
    if (failure) std::rethrow_exception(failure);
}

} // namespace vxlsync
