// Prints digests of what the library makes of a signal worked out here, of the example recordings
// and of random signals under random parameters: the landmarks, the statistics of every pair, and
// the result. The output is the same for every compiler, build type and processor, or something
// rounds differently.
//
//   vxs_digest [EXPECTED]   with a file: compares the output with it and ends with status 1 if it
//                           differs
#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <random>
#include <sstream>
#include <string>
#include <system_error>
#include <vector>

#include "SignalInput.h"
#include "VXClusterSync.h"
#include "VXExtractParams.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXFileSetProcessor.h"
#include "VXHistogram.h"
#include "VXHistogramSetProcessor.h"
#include "VXLandmark.h"
#include "VXLandmarkExtract.h"
#include "VXMergeStats.h"
#include "VXMergeStatsSetProcessor.h"
#include "property/Random.h"

namespace
{

// FNV-1a with 64 bits over values laid out from the lowest byte up.
class Digest
{
public:
    void add(std::uint64_t value)
    {
        for (unsigned int shift = 0; shift < 64u; shift += 8u)
            addByte(static_cast<std::uint8_t>(value >> shift));
    }

    void add(std::int64_t value) { add(static_cast<std::uint64_t>(value)); }

    void add(float value)
    {
        // Processors differ in the sign of the NaN that they make, which no comparison can see.
        std::uint32_t bits = 0x7fc00000u;
        if (!std::isnan(value)) std::memcpy(&bits, &value, sizeof bits);
        add(std::uint64_t{bits});
    }

    void add(const std::string& text)
    {
        add(std::uint64_t{text.size()});
        for (const char letter : text)
            addByte(static_cast<std::uint8_t>(letter));
    }

    std::uint64_t value() const { return state; }

private:
    void addByte(std::uint8_t byte)
    {
        state ^= byte;
        state *= 0x100000001b3u;
    }

    std::uint64_t state = 0xcbf29ce484222325u;
};

// Something extracted, lined up and told in three lines. A group may take several jobs.
class Group
{
public:
    explicit Group(const std::string& newName) : name(newName) {}

    // The recordings that `fileSet` holds, which `params` made.
    void add(VXS::VXFileSet& fileSet, const VXS::VXExtractParams& params)
    {
        const VXS::VXClusterSyncParams syncParams(params);
        addLandmarks(fileSet);
        addStatistics(fileSet, syncParams);
        addResult(fileSet, syncParams);
    }

    void print(std::ostream& out) const
    {
        printLine(out, "landmarks", landmarkCount, landmarks);
        printLine(out, "statistics", recordCount, statistics);
        printLine(out, "result", clusterCount, result);
    }

private:
    void addLandmarks(VXS::VXFileSet& fileSet)
    {
        for (const auto& file : fileSet.getFiles()) {
            landmarks.add(file.first);
            for (const auto& frame : file.second->getLandmarkMap()) {
                for (const VXS::VXLandmark* landmark : frame.second) {
                    landmarks.add(landmark->getOffset());
                    landmarks.add(std::uint64_t{landmark->key});
                    ++landmarkCount;
                }
            }
        }
    }

    void addStatistics(VXS::VXFileSet& fileSet, const VXS::VXClusterSyncParams& params)
    {
        fileSet.computeAllCLFs();
        VXS::VXFileSetProcessor indexer(params.getMaxLandmarkCount());
        const VXS::VXHistogramSetHolder histograms(indexer.run(&fileSet, nullptr));
        VXS::VXHistogramSetProcessor evaluation;
        const VXS::VXMergeStatsSetHolder stats(evaluation.run(&fileSet, histograms.get()));
        VXS::VXMergeStatsSetProcessor decision(params);
        // Tells in each record whether its pair was merged.
        const VXS::VXClusterResultHolder clusters(decision.run(&fileSet, stats.get()));

        recordCount += stats->size();
        for (const auto& entry : *stats) {
            const VXS::VXMergeStats* record = entry.second;
            if (record == nullptr) continue;
            statistics.add(record->fileA);
            statistics.add(record->fileB);
            for (const float value :
                 {record->peakCount, record->overlapLength, record->percentMatchA,
                  record->percentMatchB, record->landmarksInOverlapA, record->landmarksInOverlapB,
                  record->templateMatchLength, record->meanCount, record->stdDevCount,
                  record->bestOffset})
                statistics.add(value);
            statistics.add(std::uint64_t{record->merged});
        }
    }

    // The clusters stand in no order of their own, so they are taken by their lowest id.
    void addResult(VXS::VXFileSet& fileSet, const VXS::VXClusterSyncParams& params)
    {
        VXS::VXClusterSync sync(params);
        const VXS::VXClusterResultHolder clusters(sync.run(&fileSet, nullptr));
        std::map<std::int64_t, const VXS::VXClusterMembers*> byLowestID;
        for (const VXS::VXClusterMembers* members : *clusters)
            byLowestID[(*members->begin())->fileID] = members;

        clusterCount += clusters->size();
        for (const auto& entry : byLowestID) {
            result.add(std::uint64_t{entry.second->size()});
            for (const VXS::VXClusterMember* member : *entry.second) {
                result.add(member->fileID);
                result.add(member->name);
                result.add(member->offsetSeconds);
            }
        }
    }

    void printLine(std::ostream& out, const char* what, std::size_t count,
                   const Digest& digest) const
    {
        char line[128];
        std::snprintf(line, sizeof line, "%-8s %-10s %7zu %016" PRIx64 "\n", name.c_str(), what,
                      count, digest.value());
        out << line;
    }

    std::string name;
    std::size_t landmarkCount = 0;
    std::size_t recordCount = 0;
    std::size_t clusterCount = 0;
    Digest landmarks;
    Digest statistics;
    Digest result;
};

void printDigests(std::ostream& out, const std::string& name,
                  const std::vector<std::filesystem::path>& paths)
{
    const VXS::VXExtractParams params;
    VXS::VXLandmarkExtract extractor(params);
    VXS::VXFileSet fileSet;
    std::int64_t id = 0;
    for (const std::filesystem::path& path : paths) {
        ++id;
        std::unique_ptr<VXS::VXFile> file(extractor.run(path.generic_string(), id));
        if (file == nullptr) continue;
        fileSet.idToName[id] = path.stem().string();
        fileSet.addFile(file.release());
    }

    Group group(name);
    group.add(fileSet, params);
    group.print(out);
}

void writeWave(const std::filesystem::path& path, const std::vector<std::int16_t>& samples,
               std::size_t first, std::size_t count)
{
    std::vector<char> bytes;
    const auto addNumber = [&bytes](std::uint32_t value, int size) {
        for (int i = 0; i < size; ++i)
            bytes.push_back(static_cast<char>(value >> (8 * i)));
    };
    const auto addText = [&bytes](const std::string& text) {
        bytes.insert(bytes.end(), text.begin(), text.end());
    };
    const auto dataBytes = static_cast<std::uint32_t>(count * 2);
    addText("RIFF");
    addNumber(36u + dataBytes, 4);
    addText("WAVEfmt ");
    addNumber(16, 4);
    addNumber(1, 2);
    addNumber(1, 2);
    addNumber(8000, 4);
    addNumber(16000, 4);
    addNumber(2, 2);
    addNumber(16, 2);
    addText("data");
    addNumber(dataBytes, 4);
    for (std::size_t i = first; i < first + count; ++i)
        addNumber(static_cast<std::uint16_t>(samples[i]), 2);

    std::ofstream file(path, std::ios::binary);
    file.write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    if (!file) std::cerr << path.string() << ": cannot be written\n";
}

// Noise of 90 s whose level changes ten times a second.
std::vector<std::int16_t> makeNoise()
{
    std::vector<std::int16_t> samples;
    std::uint32_t state = 12345;
    std::int32_t level = 0;
    for (std::size_t i = 0; i < 720000; ++i) {
        state = state * 1664525u + 1013904223u;
        if (i % 800 == 0) level = static_cast<std::int32_t>((state >> 20u) % 64u) + 1;
        const std::int32_t product = (static_cast<std::int32_t>(state >> 16u) - 32768) * level;
        // Toward minus infinity.
        const std::int32_t sample = product >= 0 ? product / 128 : -((127 - product) / 128);
        samples.push_back(static_cast<std::int16_t>(sample));
    }
    return samples;
}

// A folder that nothing else has, under the one for temporary files; empty if none can be made.
std::filesystem::path makeFolder()
{
    std::random_device random;
    for (int attempt = 0; attempt < 100; ++attempt) {
        const std::filesystem::path path =
            std::filesystem::temp_directory_path() / ("vxs-digest-" + std::to_string(random()));
        std::error_code error;
        if (std::filesystem::create_directory(path, error)) return path;
    }
    return {};
}

// Two recordings of that noise, the second 160100 samples later.
void printNoiseDigests(std::ostream& out)
{
    const std::filesystem::path folder = makeFolder();
    if (folder.empty()) {
        std::cerr << std::filesystem::temp_directory_path() << ": no folder can be made in it\n";
        return;
    }
    const std::vector<std::int16_t> noise = makeNoise();
    writeWave(folder / "a.wav", noise, 0, 480000);
    writeWave(folder / "b.wav", noise, 160100, 480000);
    printDigests(out, "noise", {folder / "a.wav", folder / "b.wav"});
    std::filesystem::remove_all(folder);
}

void printExampleDigests(std::ostream& out)
{
    std::vector<std::filesystem::path> paths;
    for (const auto& entry : std::filesystem::directory_iterator(VXS_EXAMPLE_RECORDINGS)) {
        if (entry.path().extension() == ".wav") paths.push_back(entry.path());
    }
    std::sort(paths.begin(), paths.end());
    printDigests(out, "examples", paths);
}

// Any parameters, those that no setter reaches among them, as long as the job stays small.
VXS::VXExtractParams anyParameters(property::Random& random)
{
    VXS::VXExtractParams params;
    const std::uint32_t size = 64u << random.below(6);
    params.fftSize = size;
    params.hopSize = random.pick<std::uint32_t>(
        {size / 4u, size / 2u, size / 2u, size / 2u + 3u, size - 1u, size, 3u * size + 1u});
    params.sampleRate = random.pick<std::uint32_t>({4000, 8000, 8000, 11025, 48000});
    params.frequencyRange = random.pick<std::uint32_t>({62, 62, 0, 1, 500});
    params.timeRange = random.pick<std::uint32_t>({126, 126, 1, 7, 2000});
    params.initialFrames = random.pick<std::uint32_t>({10, 10, 0, 1, 5});
    params.maxPeaksPerFrame = random.pick<std::uint32_t>({5, 5, 1, 2, 20});
    params.maskHeight = random.pick({40.0f, 40.0f, 40.0f, 0.1f, -10.0f, 200.0f});
    params.peakFloor = random.pick({-60.0f, -60.0f, -3.0f, -400.0f});
    params.thresholdDecay = random.pick({0.2f, 0.2f, 0.0f, -0.3f, 1e-3f, 3.0f});
    params.maskWidth = random.pick({25.0f, 25.0f, 1.0f, 0.5f, 300.0f, 1e-30f});
    params.maxPairsPerPeak = random.pick<std::uint32_t>({10, 10, 1, 3, 40});
    return params;
}

// Sawtooth tones that come and go under noise whose level changes. Made without the mathematics
// library, which differs between platforms.
std::vector<float> anyEvent(property::Random& random, std::size_t count)
{
    std::vector<float> event(count);
    std::uint32_t phase = 0;
    std::uint32_t step = 0;
    float toneLevel = 0.0f;
    float noiseLevel = 0.1f;
    for (float& sample : event) {
        if (random.oneIn(700)) noiseLevel = 0.3f * random.sample();
        if (random.oneIn(900)) {
            toneLevel = 0.5f * random.sample();
            step = static_cast<std::uint32_t>(random.below(std::uint64_t{1} << 31u));
        }
        phase += step;
        const float saw = static_cast<float>(phase >> 8u) / 8388608.0f - 1.0f;
        const float tone = toneLevel * saw;
        sample = tone + noiseLevel * random.sample();
    }
    return event;
}

// What damaged or badly scaled sources deliver.
void spoil(property::Random& random, std::vector<float>& samples)
{
    const float scale = random.pick({1.0f, 1.0f, 1.0f, 1e-30f, 1e-42f, 1e19f, 0.0f});
    for (float& sample : samples)
        sample *= scale;
    if (random.oneIn(4)) samples[random.below(samples.size())] = random.anyFloat();
}

// Three overlapping recordings of an event for each set of parameters.
void printRandomDigests(std::ostream& out)
{
    constexpr int jobs = 60;
    constexpr std::size_t eventLength = 120000;
    constexpr std::size_t recordingLength = 80000;
    property::Random random(20);
    Group group("random");
    for (int job = 0; job < jobs; ++job) {
        const VXS::VXExtractParams params = anyParameters(random);
        const std::vector<float> event = anyEvent(random, eventLength);
        VXS::VXLandmarkExtract extractor(params);
        VXS::VXFileSet fileSet;
        for (std::int64_t id = 1; id <= 3; ++id) {
            const std::size_t first = random.below(eventLength - recordingLength);
            const auto begin = event.begin() + static_cast<std::ptrdiff_t>(first);
            std::vector<float> recording(begin, begin + recordingLength);
            if (random.oneIn(3)) spoil(random, recording);
            signals::SignalInput input(recording);
            fileSet.addFile(extractor.run(&input, id));
        }
        group.add(fileSet, params);
    }
    group.print(out);
}

} // namespace

int main(int argc, char** argv)
{
    std::ostringstream out;
    printNoiseDigests(out);
    printExampleDigests(out);
    printRandomDigests(out);
    std::cout << out.str();
    if (argc < 2) return 0;

    std::ifstream file(argv[1], std::ios::binary);
    const std::string expected((std::istreambuf_iterator<char>(file)),
                               std::istreambuf_iterator<char>());
    if (out.str() == expected) return 0;
    std::cerr << argv[1] << ": expected\n" << expected;
    return 1;
}
