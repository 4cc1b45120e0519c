#ifndef VXL_SYNC_TIMELINE_H
#define VXL_SYNC_TIMELINE_H

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace vxlsync
{

// Where the next frame goes.
struct FramePlace {
    // How many of its first samples are left out.
    std::int64_t dropped = 0;
    // Samples of silence before it.
    std::int64_t silence = 0;
};

// Places frames by the times that their file states. The file's clock is believed where it leaves
// out sound, and not where it takes back what was there: no sound is lost to it.
class Timeline
{
public:
    // For a frame of `count` samples at `rate`, behind `position` seconds of sound and silence;
    // `time` is what its stamp says in seconds from the start of the file.
    FramePlace place(std::optional<double> time, double position, int rate, std::int64_t count);

    // What was odd about the clock.
    std::vector<std::string> notes() const;

private:
    // Times at which the clock was set, against the sound that went on.
    struct Leaps {
        std::int64_t count = 0;
        double firstBy = 0.0;
        double firstAt = 0.0;

        void add(double by, double at);
    };

    FramePlace placeFirst(double gap, int rate, std::int64_t count);
    FramePlace fill(double gap, int rate);

    bool isStarted = false;
    std::optional<double> lastTime;
    // Seconds by which the clock was set on the way.
    double shift = 0.0;
    // Seconds of silence put into gaps, and the gaps.
    double silenceSeconds = 0.0;
    double gapSeconds = 0.0;
    std::int64_t gaps = 0;
    Leaps back;
    Leaps ahead;
};

} // namespace vxlsync

#endif
