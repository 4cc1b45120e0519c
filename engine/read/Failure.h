#ifndef VXL_SYNC_FAILURE_H
#define VXL_SYNC_FAILURE_H

#include <cstddef>
#include <cstdint>
#include <stdexcept>
#include <string>

namespace vxlsync
{

// Why a source cannot be read: a phrase for the user that goes behind its path and a colon. It ends
// the reading of this source and of nothing else.
class ReadFailure : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

// The phrases of failures. They never hold words of a decoder, which mean nothing to who reads
// them.
namespace failures
{

constexpr const char* missing = "does not exist";
constexpr const char* folder = "is a folder; give the files in it";
constexpr const char* notRegular = "is not a regular file";
constexpr const char* unknownFormat =
    "is in no format that can be read, or has lost its start or its end";
constexpr const char* damaged = "is damaged: what it holds could not be made out";
constexpr const char* undecodable = "has sound, but none of it could be decoded";
constexpr const char* noDecoder = "no decoder for its audio";
constexpr const char* memory = "asks for more memory than there is";
constexpr const char* stalled = "gave nothing for 10 s, and was given up";
constexpr const char* rateChanges = "changes its sample rate too often to be followed";
constexpr const char* notWave = "is not a WAV file that can be read";
constexpr const char* notWaveName = "name does not end in .wav";

// From the error number of the system.
std::string notOpened(int error);
std::string noStream(int number);
std::string noChannel(int number, int channels);
std::string rateOutOfRange(std::int64_t rate);
std::string wrongRate(std::int64_t rate, int expected);
// `seconds` is the limit that a file of its size and kind has.
std::string tooLong(double seconds);
// Of a job that may take `limit` bytes.
std::string tooMuchMemory(std::size_t needed, std::size_t limit);

} // namespace failures

// Sentences on what was odd or was mended while reading.
namespace notes
{

constexpr const char* signedBytes = "eight-bit samples are signed";
constexpr const char* noSound = "holds no sound: it is empty, or ends before its sound begins";

std::string endsEarly(double readSeconds, double statedSeconds);
std::string brokenSamples(std::int64_t count);
std::string scaledDown(double peak);
std::string undecodedPieces(std::int64_t count);
std::string clockJumpsBack(double bySeconds, double atSeconds, std::int64_t times);
std::string clockJumpsAhead(double bySeconds, double atSeconds, std::int64_t times);
std::string filledGaps(std::int64_t count, double seconds);

} // namespace notes

} // namespace vxlsync

#endif
