// Runs a harness on kept inputs: every file of the folders, or the files, that the arguments name.
// Needs no fuzzer, so that any compiler builds it.

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

#include "Harness.h"

namespace
{

std::vector<std::filesystem::path> filesOf(const std::filesystem::path& place)
{
    if (!std::filesystem::is_directory(place)) return {place};
    std::vector<std::filesystem::path> files;
    for (const auto& entry : std::filesystem::directory_iterator(place)) {
        if (entry.is_regular_file()) files.push_back(entry.path());
    }
    std::sort(files.begin(), files.end());
    return files;
}

bool replay(const std::filesystem::path& file)
{
    std::ifstream stream(file, std::ios::binary);
    if (!stream) {
        std::fprintf(stderr, "%s: cannot be read\n", file.string().c_str());
        return false;
    }
    const std::vector<char> content((std::istreambuf_iterator<char>(stream)),
                                    std::istreambuf_iterator<char>());
    // A block of exactly this size, so that a step behind it is noticed.
    const std::vector<std::uint8_t> bytes(content.begin(), content.end());
    // Before the run: if the harness ends the process, this is the file.
    std::printf("%s: %zu bytes\n", file.filename().string().c_str(), bytes.size());
    std::fflush(stdout);
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
    return true;
}

} // namespace

int main(int argc, char** argv)
{
    std::size_t count = 0;
    bool isGood = true;
    for (int i = 1; i < argc; ++i) {
        for (const auto& file : filesOf(argv[i])) {
            isGood = replay(file) && isGood;
            ++count;
        }
    }
    if (count == 0) {
        std::fprintf(stderr, "no inputs\n");
        return 1;
    }
    std::printf("%zu inputs\n", count);
    return isGood ? 0 : 1;
}
