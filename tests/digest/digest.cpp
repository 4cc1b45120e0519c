// Prints digests of what the library makes of a signal worked out here and of the example
// recordings: the landmarks, the statistics of every pair, and the result. The output is the same
// for every compiler, build type and processor, or something rounds differently.
//
//   vxs_digest [EXPECTED]   with a file: compares the output with it and ends with status 1 if it
//                           differs
#include <algorithm>
#include <cinttypes>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

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

void printLine(std::ostream& out, const std::string& signal, const std::string& what,
               std::size_t count, const Digest& digest)
{
    char line[128];
    std::snprintf(line, sizeof line, "%-8s %-10s %7zu %016" PRIx64 "\n", signal.c_str(),
                  what.c_str(), count, digest.value());
    out << line;
}

void printLandmarks(std::ostream& out, const std::string& signal, VXS::VXFileSet& fileSet)
{
    Digest digest;
    std::size_t count = 0;
    for (const auto& file : fileSet.getFiles()) {
        digest.add(file.first);
        for (const auto& frame : file.second->getLandmarkMap()) {
            for (const VXS::VXLandmark* landmark : frame.second) {
                digest.add(landmark->getOffset());
                digest.add(std::uint64_t{landmark->key});
                ++count;
            }
        }
    }
    printLine(out, signal, "landmarks", count, digest);
}

void printStatistics(std::ostream& out, const std::string& signal, VXS::VXFileSet& fileSet,
                     const VXS::VXClusterSyncParams& params)
{
    fileSet.computeAllCLFs();
    VXS::VXFileSetProcessor indexer(params.getMaxLandmarkCount());
    const VXS::VXHistogramSetHolder histograms(indexer.run(&fileSet, nullptr));
    VXS::VXHistogramSetProcessor evaluation;
    const VXS::VXMergeStatsSetHolder stats(evaluation.run(&fileSet, histograms.get()));
    const std::size_t count = stats->size();
    VXS::VXMergeStatsSetProcessor decision(params);
    const VXS::VXClusterResultHolder result(decision.run(&fileSet, stats.get()));

    Digest digest;
    for (const auto& entry : *stats) {
        const VXS::VXMergeStats* record = entry.second;
        if (record == nullptr) continue;
        digest.add(record->fileA);
        digest.add(record->fileB);
        for (const float value : {record->peakCount, record->overlapLength, record->percentMatchA,
                                  record->percentMatchB, record->landmarksInOverlapA,
                                  record->landmarksInOverlapB, record->templateMatchLength,
                                  record->meanCount, record->stdDevCount, record->bestOffset})
            digest.add(value);
        digest.add(std::uint64_t{record->merged});
    }
    printLine(out, signal, "statistics", count, digest);
}

// The clusters stand in no order of their own, so they are taken by their lowest id.
void printResult(std::ostream& out, const std::string& signal, VXS::VXFileSet& fileSet,
                 const VXS::VXClusterSyncParams& params)
{
    VXS::VXClusterSync sync(params);
    const VXS::VXClusterResultHolder result(sync.run(&fileSet, nullptr));
    std::map<std::int64_t, const VXS::VXClusterMembers*> byLowestID;
    for (const VXS::VXClusterMembers* members : *result)
        byLowestID[(*members->begin())->fileID] = members;

    Digest digest;
    for (const auto& entry : byLowestID) {
        digest.add(std::uint64_t{entry.second->size()});
        for (const VXS::VXClusterMember* member : *entry.second) {
            digest.add(member->fileID);
            digest.add(member->name);
            digest.add(member->offsetSeconds);
        }
    }
    printLine(out, signal, "result", result->size(), digest);
}

void printDigests(std::ostream& out, const std::string& signal,
                  const std::vector<std::filesystem::path>& paths)
{
    const VXS::VXExtractParams params;
    VXS::VXLandmarkExtract extractor(params);
    VXS::VXFileSet fileSet;
    std::int64_t id = 0;
    for (const std::filesystem::path& path : paths) {
        ++id;
        std::unique_ptr<VXS::VXFile> file(extractor.run(path.string(), id));
        if (file == nullptr) continue;
        fileSet.idToName[id] = path.stem().string();
        fileSet.addFile(file.release());
    }

    const VXS::VXClusterSyncParams syncParams(params);
    printLandmarks(out, signal, fileSet);
    printStatistics(out, signal, fileSet, syncParams);
    printResult(out, signal, fileSet, syncParams);
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

// Two recordings of that noise, the second 160100 samples later.
void printNoiseDigests(std::ostream& out)
{
    std::string folderName =
        (std::filesystem::temp_directory_path() / "vxs-digest-XXXXXX").string();
    if (mkdtemp(folderName.data()) == nullptr) {
        std::cerr << folderName << ": cannot be made\n";
        return;
    }
    const std::filesystem::path folder(folderName);
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

} // namespace

int main(int argc, char** argv)
{
    std::ostringstream out;
    printNoiseDigests(out);
    printExampleDigests(out);
    std::cout << out.str();
    if (argc < 2) return 0;

    std::ifstream file(argv[1], std::ios::binary);
    const std::string expected((std::istreambuf_iterator<char>(file)),
                               std::istreambuf_iterator<char>());
    if (out.str() == expected) return 0;
    std::cerr << argv[1] << ": expected\n" << expected;
    return 1;
}
