// One extraction and one synchronisation of the same two recordings on every machine, for
// scripts/instructions, which counts the instructions between entry and return of the two functions
// outside the unnamed namespace.

#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <memory>
#include <string>
#include <system_error>
#include <vector>

#include "VXClusterSync.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXLandmarkExtract.h"
#include "VXMergeStatsSetProcessor.h"

// They keep their names and are not merged into their callers.
#define MEASURED extern "C" __attribute__((noinline))

MEASURED VXS::VXFile* extractRecording(VXS::VXLandmarkExtract& extractor, const std::string& path,
                                       std::int64_t fileID)
{
    return extractor.run(path, fileID);
}

MEASURED VXS::VXClusterResult* synchroniseRecordings(VXS::VXClusterSync& sync,
                                                     VXS::VXFileSet& fileSet)
{
    return sync.run(&fileSet, nullptr);
}

namespace
{

constexpr std::size_t recordingSamples = 480000;
// The second recording begins 20.0125 s after the first.
constexpr std::size_t shift = 160100;

// Removed with all that is in it.
class Folder
{
public:
    Folder()
    {
        path = (std::filesystem::temp_directory_path() / "vxs_instructions_XXXXXX").string();
        if (mkdtemp(path.data()) == nullptr) {
            std::fprintf(stderr, "%s: could not be made\n", path.c_str());
            std::exit(2);
        }
    }
    ~Folder()
    {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    Folder(const Folder&) = delete;
    Folder& operator=(const Folder&) = delete;

    std::string path;
};

// 90 s of noise whose loudness changes every tenth of a second.
std::vector<std::int16_t> makeEvent()
{
    std::vector<std::int16_t> event(720000);
    std::uint32_t state = 12345;
    std::int32_t envelope = 0;
    for (std::size_t i = 0; i < event.size(); ++i) {
        state = state * 1664525u + 1013904223u;
        if (i % 800 == 0) envelope = static_cast<std::int32_t>((state >> 20u) % 64u) + 1;
        const std::int32_t product = (static_cast<std::int32_t>(state >> 16u) - 32768) * envelope;
        // Rounds toward minus infinity.
        const std::int32_t sample = (product - ((product % 128 + 128) % 128)) / 128;
        event[i] = static_cast<std::int16_t>(sample);
    }
    return event;
}

void append(std::string& bytes, std::uint32_t value, int count)
{
    for (int i = 0; i < count; ++i)
        bytes.push_back(static_cast<char>((value >> (8 * i)) & 0xFFu));
}

void writeRecording(const std::string& path, const std::int16_t* samples)
{
    constexpr std::uint32_t dataBytes = recordingSamples * 2;
    std::string bytes = "RIFF";
    append(bytes, 36 + dataBytes, 4);
    bytes += "WAVEfmt ";
    append(bytes, 16, 4);
    append(bytes, 1, 2);
    append(bytes, 1, 2);
    append(bytes, 8000, 4);
    append(bytes, 16000, 4);
    append(bytes, 2, 2);
    append(bytes, 16, 2);
    bytes += "data";
    append(bytes, dataBytes, 4);
    for (std::size_t i = 0; i < recordingSamples; ++i)
        append(bytes, static_cast<std::uint16_t>(samples[i]), 2);
    std::ofstream(path, std::ios::binary) << bytes;
}

} // namespace

int main()
{
    const std::vector<std::int16_t> event = makeEvent();
    const Folder folder;
    const std::string paths[] = {folder.path + "/a.wav", folder.path + "/b.wav"};
    writeRecording(paths[0], event.data());
    writeRecording(paths[1], event.data() + shift);

    const VXS::VXExtractParams params;
    VXS::VXLandmarkExtract extractor(params);
    VXS::VXFileSet fileSet;
    fileSet.addFile(extractRecording(extractor, paths[0], 1));
    fileSet.addFile(extractRecording(extractor, paths[1], 2));
    VXS::VXClusterSync sync{VXS::VXClusterSyncParams(params)};
    const VXS::VXClusterResultHolder result(synchroniseRecordings(sync, fileSet));

    // Counts of another result would tell nothing.
    const bool isRight = result->size() == 1 && (*result->begin())->size() == 2 &&
                         (*(*result->begin())->rbegin())->offsetSeconds == 20.0f;
    if (!isRight) std::fprintf(stderr, "the recordings were not lined up at 20 s\n");
    return isRight ? 0 : 1;
}
