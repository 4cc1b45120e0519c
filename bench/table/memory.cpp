// memory NAME FILES...: what a synchronisation of the files takes beyond the file set, at its peak,
// by the bytes that the allocator has handed out.

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include <malloc.h>

#include "Jobs.h"
#include "Measure.h"
#include "VXClusterSync.h"
#include "VXClusterSyncParams.h"
#include "VXExtractParams.h"
#include "VXLandmark.h"
#include "VXMergeStatsSetProcessor.h"

namespace
{

// What malloc keeps in front of each block.
constexpr std::size_t blockHeader = 8;

std::size_t liveBytes = 0;
std::size_t peakBytes = 0;

} // namespace

void* operator new(std::size_t size)
{
    void* block = std::malloc(size);
    if (block == nullptr) throw std::bad_alloc();
    liveBytes += malloc_usable_size(block) + blockHeader;
    peakBytes = std::max(peakBytes, liveBytes);
    return block;
}

void operator delete(void* block) noexcept
{
    if (block == nullptr) return;
    liveBytes -= malloc_usable_size(block) + blockHeader;
    std::free(block);
}

void operator delete(void* block, std::size_t) noexcept
{
    operator delete(block);
}

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::fprintf(stderr, "usage: %s NAME FILE...\n", argv[0]);
        return 2;
    }
    try {
        const std::vector<std::string> paths(argv + 2, argv + argc);
        const std::size_t start = liveBytes;
        const std::unique_ptr<VXS::VXFileSet> fileSet = bench::extractFiles(paths);
        const auto setBytes = static_cast<double>(liveBytes - start);
        const std::size_t landmarks = bench::landmarksIn(*fileSet);
        const auto objectBytes = static_cast<double>(landmarks) *
                                 static_cast<double>(sizeof(VXS::VXLandmark) + blockHeader);

        // The cumulative counts stay in the file set, and so belong to it.
        fileSet->computeAllCLFs();
        const std::size_t before = liveBytes;
        peakBytes = liveBytes;
        VXS::VXClusterSync sync{VXS::VXClusterSyncParams(VXS::VXExtractParams())};
        const VXS::VXClusterResultHolder result(sync.run(fileSet.get(), nullptr));
        const auto beyond = static_cast<double>(peakBytes - before);

        constexpr double mebi = 1048576.0;
        bench::printRow(
            bench::text("memory beyond the file set, %s: at most its landmarks", argv[1]),
            bench::text("%.2f", beyond / setBytes),
            bench::text("%.1f MiB; landmarks %.1f MiB, of which the objects alone %.1f MiB, %.2f "
                        "million",
                        beyond / mebi, setBytes / mebi, objectBytes / mebi,
                        static_cast<double>(landmarks) * 1e-6),
            beyond <= setBytes);
    } catch (const std::exception& error) {
        std::fprintf(stderr, "%s: %s\n", argv[1], error.what());
        return 1;
    }
    return 0;
}
