#include "Parallel.h"

#include <algorithm>
#include <atomic>
#include <exception>
#include <mutex>
#include <thread>
#include <vector>

namespace vxlsync
{

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

    std::vector<std::thread> threads;
    const std::size_t wanted = std::max<std::size_t>(1, std::min(workers, count));
    for (std::size_t worker = 1; worker < wanted; ++worker)
        threads.emplace_back(work, worker);
    work(0);
    for (std::thread& thread : threads)
        thread.join();
    if (failure) std::rethrow_exception(failure);
}

} // namespace vxlsync
