#ifndef VXL_SYNC_LIMITS_H
#define VXL_SYNC_LIMITS_H

#include <cstdint>
#include <functional>

namespace vxlsync
{

// Seconds of a clock that never goes back.
double steadySeconds();

// What a file may ask of the reader. Tests set their own.
struct ReadLimits {
    std::function<double()> clock = steadySeconds;
    // A file that gives neither sound nor bytes for so long gives none any more.
    double stallSeconds = 10.0;
    // Samples that one byte of a compressed file may stand for. The silence of lossless formats
    // comes closest, with some 30,000: a block of 300,000 samples in a dozen bytes.
    std::int64_t compressedSamplesPerByte = 65536;
    // A recorder that was left running over a long weekend.
    double longestSeconds = 4.0 * 24.0 * 3600.0;
};

// Watches a file that may have come to a stop without an end.
class StallWatch
{
public:
    // `newLimits` is borrowed.
    explicit StallWatch(const ReadLimits& newLimits)
        : limits(newLimits), lastMove(newLimits.clock())
    {
    }

    // Something was read or decoded.
    void move() { lastMove = limits.clock(); }
    bool isStalled() const { return limits.clock() - lastMove > limits.stallSeconds; }

private:
    const ReadLimits& limits;
    double lastMove;
};

} // namespace vxlsync

#endif
