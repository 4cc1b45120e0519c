#include <malloc.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "vxl_audio/VXClusterSync.h"
#include "vxl_audio/VXFile.h"
#include "vxl_audio/VXFileSet.h"
#include "vxl_audio/VXLandmarkExtract.h"

// The library in a process that lives long.
//   vxs_soak jobs COUNT      small jobs one after the other; memory must stay within 1 %
//   vxs_soak threads MINUTES sixteen threads, each with objects of its own, for a sanitizer
// Every job must give what it gave the first time. The library's own lines go to standard output,
// the report goes to the error stream. The status is 1 if something was wrong.

namespace
{

using Samples = std::vector<float>;

constexpr std::size_t threadCount = 16;
constexpr unsigned int sampleRate = 4000;

// Noise whose loudness changes five times a second.
Samples noise(std::uint32_t seed, std::size_t count)
{
    Samples samples;
    samples.reserve(count);
    std::uint32_t state = seed;
    float loudness = 0.0f;
    for (std::size_t i = 0; i < count; ++i) {
        state = state * 1664525u + 1013904223u;
        if (i % 800 == 0) loudness = static_cast<float>((state >> 20u) % 64u + 1u) / 64.0f;
        const auto level = static_cast<float>(state >> 16u) / 32768.0f - 1.0f;
        samples.push_back(level * loudness * 0.5f);
    }
    return samples;
}

Samples partOf(const Samples& whole, std::size_t begin, std::size_t count)
{
    const auto first = whole.begin() + static_cast<std::ptrdiff_t>(begin);
    return {first, first + static_cast<std::ptrdiff_t>(count)};
}

class SampleInput final : public VXS::VXInput
{
public:
    explicit SampleInput(const Samples& newSamples) : samples(newSamples) {}

    unsigned int getFrames() override { return static_cast<unsigned int>(samples.size()); }

    bool read_mono(VXS::array<float>& block) override
    {
        const std::size_t wanted = static_cast<std::size_t>(block.count());
        const std::size_t count = std::min(wanted, samples.size() - position);
        std::copy_n(samples.data() + position, count, block.data);
        position += count;
        return true;
    }

    bool rewind() override
    {
        position = 0;
        return true;
    }

private:
    const Samples& samples;
    std::size_t position = 0;
};

class QuietProgress final : public VXS::VXProgress
{
public:
    void setStage(int) override {}
    void setFraction(float) override {}
};

void write32(std::ofstream& stream, std::uint32_t value)
{
    for (unsigned int shift = 0; shift < 32; shift += 8)
        stream.put(static_cast<char>(value >> shift & 0xFFu));
}

void writeWave(const std::string& path, const Samples& samples)
{
    constexpr std::uint32_t bytesPerSample = 4;
    const auto dataBytes = static_cast<std::uint32_t>(samples.size()) * bytesPerSample;
    std::ofstream stream(path, std::ios::binary);
    stream << "RIFF";
    write32(stream, 36 + dataBytes);
    stream << "WAVEfmt ";
    write32(stream, 16);
    // Float samples of one channel.
    write32(stream, 3u | 1u << 16u);
    write32(stream, sampleRate);
    write32(stream, sampleRate * bytesPerSample);
    write32(stream, bytesPerSample | 32u << 16u);
    stream << "data";
    write32(stream, dataBytes);
    for (const float sample : samples) {
        std::uint32_t bits;
        std::memcpy(&bits, &sample, sizeof(bits));
        write32(stream, bits);
    }
    if (!stream.flush()) throw std::runtime_error(path + ": cannot be written");
}

// Removed with the files in it.
class Folder
{
public:
    Folder()
    {
        std::string name = (std::filesystem::temp_directory_path() / "vxs_soak_XXXXXX").string();
        if (::mkdtemp(name.data()) == nullptr) throw std::runtime_error(name + ": cannot be made");
        path = name;
    }
    ~Folder()
    {
        std::error_code error;
        std::filesystem::remove_all(path, error);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string path;
};

// What all jobs are made of. The same for all threads, and only read.
struct Material {
    Material()
    {
        for (const char* name : {"first", "second"})
            paths.push_back(folder.path + "/" + name + ".wav");
        writeWave(paths[0], partOf(event, 3000, 4000));
        writeWave(paths[1], partOf(event, 4000, 2000));
        paths.push_back(folder.path + "/missing.wav");
    }

    const Folder folder;
    const Samples event = noise(1, 20000);
    const std::vector<Samples> takes = {partOf(event, 0, 17000), partOf(event, 1280, 17000),
                                        noise(2, 3000)};
    std::vector<std::string> paths;
};

VXS::VXExtractParams paramsWith(unsigned int fftSize, unsigned int hopSize)
{
    VXS::VXExtractParams params;
    params.setSampleRate(sampleRate);
    params.setFftSize(fftSize);
    params.setHopSize(hopSize);
    return params;
}

// By id: seconds, the size of the cluster, and the frames of the first and the last landmark.
using Outcome = std::map<std::int64_t, std::array<float, 4>>;

Outcome outcomeOf(VXS::VXFileSet& fileSet, std::unique_ptr<VXS::VXClusterResult> result)
{
    Outcome outcome;
    for (VXS::VXClusterMembers* members : *result) {
        for (VXS::VXClusterMember* member : *members) {
            const VXS::VXFile& file = *fileSet.getFiles().at(member->fileID);
            outcome[member->fileID] = {member->offsetSeconds, static_cast<float>(members->size()),
                                       static_cast<float>(file.getMinLandmarkOffsetTime()),
                                       static_cast<float>(file.getMaxLandmarkOffsetTime())};
            delete member;
        }
        delete members;
    }
    return outcome;
}

// One user of the library, whose objects serve job after job.
class Worker
{
public:
    explicit Worker(const Material& newMaterial) : material(newMaterial) {}

    // Does the job of that number and answers whether it gave what such a job has to give.
    bool work(std::uint64_t number)
    {
        const std::size_t kind = number % kinds;
        const Outcome outcome = kind == kinds - 1 ? newObjects() : oldObjects(kind);
        if (kind == 0 && !isAligned(outcome)) return false;
        if (expected[kind].empty()) expected[kind] = outcome;
        return !outcome.empty() && outcome == expected[kind];
    }

private:
    static constexpr std::size_t kinds = 4;

    // The second take begins 1280 samples after the first: 10 frames of 31.25 a second.
    static bool isAligned(const Outcome& outcome)
    {
        return outcome.size() == 3 && outcome.at(1)[0] == 0.0f && outcome.at(2)[0] == 0.32f &&
               outcome.at(2)[1] == 2.0f && outcome.at(3)[1] == 1.0f;
    }

    Outcome oldObjects(std::size_t kind)
    {
        if (kind == 0) return synchronise(sync, takeSet(extractor, 3));
        if (kind == 1) {
            return synchronise(sync,
                               std::unique_ptr<VXS::VXFileSet>(extractor.runAll(material.paths)));
        }
        return synchronise(longSync, takeSet(longExtractor, 2));
    }

    Outcome newObjects()
    {
        const VXS::VXExtractParams params = paramsWith(64, 64);
        VXS::VXLandmarkExtract newExtractor(params);
        VXS::VXClusterSync newSync{VXS::VXClusterSyncParams(params)};
        auto fileSet = takeSet(newExtractor, 1);
        auto file = std::unique_ptr<VXS::VXFile>(newExtractor.run(material.paths[1], 9));
        fileSet->addFile(file.get());
        file.release();
        return synchronise(newSync, std::move(fileSet));
    }

    // The last of the takes.
    std::unique_ptr<VXS::VXFileSet> takeSet(VXS::VXLandmarkExtract& by, std::size_t count) const
    {
        auto fileSet = std::make_unique<VXS::VXFileSet>();
        for (std::size_t i = material.takes.size() - count; i < material.takes.size(); ++i) {
            const auto id = static_cast<std::int64_t>(i) + 1;
            SampleInput input(material.takes[i]);
            auto file = std::unique_ptr<VXS::VXFile>(by.run(&input, id));
            fileSet->idToName[id] = "take " + std::to_string(id);
            fileSet->addFile(file.get());
            file.release();
        }
        return fileSet;
    }

    static Outcome synchronise(VXS::VXClusterSync& by, std::unique_ptr<VXS::VXFileSet> fileSet)
    {
        QuietProgress progress;
        std::unique_ptr<VXS::VXClusterResult> result(by.run(fileSet.get(), &progress));
        return outcomeOf(*fileSet, std::move(result));
    }

    const Material& material;
    VXS::VXLandmarkExtract extractor{paramsWith(256, 128)};
    VXS::VXClusterSync sync{VXS::VXClusterSyncParams(paramsWith(256, 128))};
    VXS::VXLandmarkExtract longExtractor{paramsWith(4096, 1024)};
    VXS::VXClusterSync longSync{VXS::VXClusterSyncParams(paramsWith(4096, 1024))};
    std::array<Outcome, kinds> expected;
};

struct Memory {
    std::size_t heap = 0;
    std::size_t resident = 0;
};

Memory memoryNow()
{
    const struct mallinfo2 heap = ::mallinfo2();
    std::ifstream statm("/proc/self/statm");
    std::size_t pages = 0;
    std::size_t residentPages = 0;
    statm >> pages >> residentPages;
    return {heap.uordblks + heap.hblkhd,
            residentPages * static_cast<std::size_t>(::sysconf(_SC_PAGESIZE))};
}

// Growth in percent.
double growth(std::size_t before, std::size_t after)
{
    return (static_cast<double>(after) / static_cast<double>(before) - 1.0) * 100.0;
}

int soakJobs(std::uint64_t count)
{
    constexpr double mostGrowth = 1.0;
    const Material material;
    Worker worker(material);
    // A tenth lets the allocator and the library reach their size.
    const std::uint64_t warmUp = std::max<std::uint64_t>(count / 10, 40);
    Memory before;
    for (std::uint64_t number = 0; number < count + warmUp; ++number) {
        if (number == warmUp) before = memoryNow();
        if (!worker.work(number)) {
            std::cerr << "job " << number << ": another result than at first\n";
            return 1;
        }
        if ((number + 1) % std::max<std::uint64_t>(count / 10, 1) == 0) {
            const Memory now = memoryNow();
            std::cerr << number + 1 << " jobs: heap " << now.heap << " bytes, resident "
                      << now.resident << " bytes\n";
        }
    }
    const Memory after = memoryNow();
    const double heapGrowth = growth(before.heap, after.heap);
    const double residentGrowth = growth(before.resident, after.resident);
    std::cerr << count << " jobs after " << warmUp << ": heap " << before.heap << " to "
              << after.heap << " bytes (" << heapGrowth << " %), resident " << before.resident
              << " to " << after.resident << " bytes (" << residentGrowth << " %)\n";
    return heapGrowth <= mostGrowth && residentGrowth <= mostGrowth ? 0 : 1;
}

int soakThreads(double minutes)
{
    const Material material;
    const auto end =
        std::chrono::steady_clock::now() + std::chrono::duration<double>(minutes * 60.0);
    std::atomic<std::uint64_t> jobs{0};
    std::atomic<std::uint64_t> failures{0};
    std::vector<std::thread> threads;
    for (std::size_t i = 0; i < threadCount; ++i) {
        threads.emplace_back([&material, &jobs, &failures, end, i] {
            Worker worker(material);
            // Begins with another kind of job than its neighbours.
            for (std::uint64_t number = i; std::chrono::steady_clock::now() < end; ++number) {
                if (!worker.work(number)) ++failures;
                ++jobs;
            }
        });
    }
    for (std::thread& thread : threads)
        thread.join();
    std::cerr << threadCount << " threads, " << minutes << " minutes: " << jobs << " jobs, "
              << failures << " with another result than at first\n";
    return failures == 0 && jobs > 0 ? 0 : 1;
}

} // namespace

int main(int argc, char** argv)
{
    const std::string part = argc == 3 ? argv[1] : "";
    try {
        if (part == "jobs") return soakJobs(std::stoull(argv[2]));
        if (part == "threads") return soakThreads(std::stod(argv[2]));
    } catch (const std::exception& error) {
        std::cerr << "vxs_soak: " << error.what() << '\n';
        return 1;
    }
    std::cerr << "vxs_soak jobs COUNT | vxs_soak threads MINUTES\n";
    return 2;
}
