#ifndef VXL_SYNC_READER_H
#define VXL_SYNC_READER_H

#include <cstdint>
#include <string>
#include <vector>

#include "read/Intake.h"
#include "read/Limits.h"
#include "running/Interrupt.h"
#include "vxl_sync/Sync.h"

namespace vxlsync
{

// What a file may be shorter than it says without a note. Containers round their lengths and count
// what encoders put in front and behind, and recorders that are switched off lose their last block.
constexpr double shortestLossSeconds = 1.0;

// One file to be read. All is borrowed.
struct ReadRequest {
    const std::string& path;
    const Options& options;
    const ReadLimits& limits;
    const Interrupt& interrupt;
    // Take eight-bit samples as signed, against the rule of most formats.
    bool takesBytesAsSigned = false;
};

// What a reader found out besides the sound.
struct ReadFindings {
    // Eight-bit samples look signed and were not taken so: the file is to be read again.
    bool bytesLookSigned = false;
    FileFacts facts;
    std::vector<std::string> notes;
};

// The channels of a frame whose mean is taken.
struct ChannelRange {
    int first = 0;
    int count = 1;
    // True if it stands for all of a frame, however many those are.
    bool isMix = false;

    // From 1, or 0 for the mean of all.
    int number() const { return isMix ? 0 : first + 1; }
};

// Throws ReadFailure if there is no such channel among `channels`, which are at least one.
ChannelRange channelsOf(const Options& options, int channels);

// Finds out whether eight-bit samples are signed. Signed bytes read as unsigned ones lie about the
// ends of the range where they are quiet.
class ByteVotes
{
public:
    void count(double sample)
    {
        const double size = sample < 0.0 ? -sample : sample;
        (size > 0.5 ? outer : inner) += 1;
    }
    bool areSigned() const { return outer > inner; }

private:
    std::int64_t outer = 0;
    std::int64_t inner = 0;
};

// The value of a signed byte that was taken as an unsigned one.
inline double asSigned(double sample)
{
    return sample < 0.0 ? sample + 1.0 : sample - 1.0;
}

// The readers. Each gives the sound of the file to the intake and does not finish it. Each throws
// ReadFailure, std::bad_alloc and what Interrupt::check throws.
//
// Whatever container and codec FFmpeg's libraries know, of those on our lists. A sound stands where
// the file places it: gaps in the times of the packets and a late start of the audio are silence,
// and what an encoder put in front is gone.
ReadFindings readMedia(const ReadRequest& request, Intake& intake);
// WAV files, be they RIFF, RF64 or Wave64, with samples of 8, 16, 24 or 32 bits or floats.
ReadFindings readWave(const ReadRequest& request, Intake& intake);
// WAV files of analysisRate as the landmark library reads them; looks at no option.
ReadFindings readNative(const ReadRequest& request, Intake& intake);

} // namespace vxlsync

#endif
