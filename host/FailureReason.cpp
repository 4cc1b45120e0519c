#include "FailureReason.h"

#include <cerrno>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <system_error>

#include <vxl_audio/VXLandmarkExtract.h>

#include "ConsoleRedirect.h"
#include "Paths.h"

namespace vxlsync
{

namespace
{

// Rates that recorders use.
constexpr unsigned int usualRates[] = {8000,  11025, 12000, 16000, 22050,  24000, 32000,
                                       44100, 48000, 88200, 96000, 176400, 192000};

struct Attempt {
    bool loaded;
    // The library's lines, each with its newline.
    std::string console;
};

Attempt tryToLoad(const std::string& path, const VXS::VXExtractParams& params)
{
    Attempt attempt{false, std::string()};
    const ConsoleRedirect redirect(
        [&attempt](const std::string& line) { attempt.console += line + '\n'; });
    VXS::VXLandmarkExtract extractor(params);
    VXS::wavfile_t* file = extractor.loadFile(path);
    attempt.loaded = file != nullptr;
    const VXS::WavInput owner(file);
    return attempt;
}

// The library does not tell the rate that it saw, but it takes a file at the right one.
std::string rateComplaint(const std::string& path, const VXS::VXExtractParams& params)
{
    const std::string expected = std::to_string(params.getSampleRate()) + " Hz";
    VXS::VXExtractParams tried(params);
    for (const unsigned int rate : usualRates) {
        if (tried.setSampleRate(rate) && tryToLoad(path, tried).loaded) {
            return "sample rate " + std::to_string(rate) + " Hz, expected " + expected;
        }
    }
    return "sample rate other than " + expected;
}

} // namespace

std::string obstacleOf(const std::string& path)
{
    std::error_code error;
    const std::filesystem::file_status status = std::filesystem::status(path, error);
    if (status.type() == std::filesystem::file_type::not_found) return "does not exist";
    if (error) return "cannot be opened: " + error.message();
    if (status.type() != std::filesystem::file_type::regular) return "is not a regular file";
    const std::unique_ptr<std::FILE, int (*)(std::FILE*)> file(std::fopen(path.c_str(), "rb"),
                                                               &std::fclose);
    if (file != nullptr) return std::string();
    return "cannot be opened: " + std::generic_category().message(errno);
}

std::string failureReason(const std::string& path, const VXS::VXExtractParams& params)
{
    if (!hasWavExtension(path)) return "name does not end in .wav";
    std::string found = obstacleOf(path);
    if (!found.empty()) return found;
    const Attempt attempt = tryToLoad(path, params);
    if (attempt.console == "[ERROR]:" + path + " has an incorrect sample rate\n") {
        return rateComplaint(path, params);
    }
    return "is not a WAV file that can be read";
}

} // namespace vxlsync
