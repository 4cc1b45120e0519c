#include "read/Failure.h"

#include <cerrno>
#include <cmath>
#include <system_error>

#include "vxl_sync/Sync.h"

namespace vxlsync
{

namespace
{

// With one decimal; by hand, since the library's own ways follow the language of the host.
std::string withDecimal(double value)
{
    const std::int64_t tenths = std::llround(value * 10.0);
    return std::to_string(tenths / 10) + "." + std::to_string(tenths % 10);
}

std::string bytesText(std::size_t bytes)
{
    constexpr double megabyte = 1e6;
    constexpr double gigabyte = 1e9;
    const auto value = static_cast<double>(bytes);
    if (value < gigabyte) return std::to_string(std::llround(value / megabyte)) + " MB";
    return withDecimal(value / gigabyte) + " GB";
}

std::string counted(std::int64_t count, const char* single, const char* several)
{
    return std::to_string(count) + " " + (count == 1 ? single : several);
}

std::string clockJump(const char* direction, double bySeconds, double atSeconds, std::int64_t times)
{
    std::string how = "by " + withDecimal(bySeconds) + " s at " + withDecimal(atSeconds) + " s";
    if (times > 1) how = std::to_string(times) + " times, first " + how;
    return std::string("its clock jumps ") + direction + ' ' + how +
           "; the sound goes on without a gap";
}

} // namespace

namespace failures
{

std::string notOpened(int error)
{
    if (error == ENOENT || error == ENOTDIR) return missing;
    // What opening a socket is answered with.
    if (error == ENXIO) return notRegular;
    return "cannot be opened: " + std::generic_category().message(error);
}

std::string noStream(int number)
{
    if (number == 0) return "no audio stream";
    return "no audio stream " + std::to_string(number);
}

std::string noChannel(int number, int channels)
{
    return "no channel " + std::to_string(number) + " among " + std::to_string(channels);
}

std::string rateOutOfRange(std::int64_t rate)
{
    const bool isLow = rate < leastSampleRate;
    return "sampled " + std::to_string(rate) + " times a second; " +
           std::to_string(isLow ? leastSampleRate : greatestSampleRate) + " are the " +
           (isLow ? "least" : "most") + " that can be compared";
}

std::string wrongRate(std::int64_t rate, int expected)
{
    return "sample rate " + std::to_string(rate) + " Hz, expected " + std::to_string(expected) +
           " Hz";
}

std::string tooLong(double seconds)
{
    return "decodes to more than " + withDecimal(seconds) +
           " s of sound, which no recording of its size and kind holds";
}

std::string tooMuchMemory(std::size_t needed, std::size_t limit)
{
    if (needed > limit)
        return "needs " + bytesText(needed) + " of memory, more than the " + bytesText(limit) +
               " that this job may take";
    return "needs " + bytesText(needed) +
           " of memory, and the shorter recordings leave less of the " + bytesText(limit) +
           " that this job may take";
}

} // namespace failures

namespace notes
{

std::string endsEarly(double readSeconds, double statedSeconds)
{
    return "ends early: " + withDecimal(readSeconds) + " of " + withDecimal(statedSeconds) +
           " s could be read";
}

std::string brokenSamples(std::int64_t count)
{
    return counted(count, "sample is", "samples are") + " broken and taken as silence";
}

std::string scaledDown(double peak)
{
    const auto exponent = static_cast<int>(std::floor(std::log10(peak)));
    return "samples go beyond full scale by about 10 to the power of " + std::to_string(exponent) +
           "; they are scaled down";
}

std::string undecodedPieces(std::int64_t count)
{
    return counted(count, "piece", "pieces") + " of the sound could not be decoded";
}

std::string clockJumpsBack(double bySeconds, double atSeconds, std::int64_t times)
{
    return clockJump("back", bySeconds, atSeconds, times);
}

std::string clockJumpsAhead(double bySeconds, double atSeconds, std::int64_t times)
{
    return clockJump("ahead", bySeconds, atSeconds, times);
}

std::string filledGaps(std::int64_t count, double seconds)
{
    if (count == 1) return "1 gap of " + withDecimal(seconds) + " s is filled with silence";
    return std::to_string(count) + " gaps, " + withDecimal(seconds) +
           " s in all, are filled with silence";
}

} // namespace notes

} // namespace vxlsync
