#ifndef VXL_SYNC_ALIGN_H
#define VXL_SYNC_ALIGN_H

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <vector>

#include "Transform.h"

namespace vxlsync
{

// Transforms by length and buffers, for one thread.
class AlignWorkspace
{
public:
    Transform& transform(std::size_t length);

    std::vector<float> firstPart;
    std::vector<float> secondPart;
    Spectrum firstSpectrum;
    Spectrum secondSpectrum;
    std::vector<float> correlation;

private:
    std::map<std::size_t, std::unique_ptr<Transform>> transforms;
};

// A recording as it is compared: what highPassed gave, with its loudness over time.
struct Prepared {
    std::vector<float> samples;
    int rate = 0;
    // Mean square in steps of a tenth of a second.
    std::vector<float> energy;
    // Mean square of what is there when nothing happens.
    double floor = 0.0;

    double seconds() const { return static_cast<double>(samples.size()) / rate; }
};

Prepared prepare(const std::vector<float>& samples, int rate);

// One stretch of the shared time.
struct AlignWindow {
    // Middle, in seconds of the first recording.
    double time = 0.0;
    // Share of the phases that agree on the line, 1 for all.
    double coherence = 0.0;
    // Seconds from the line to the window's own peak nearby, and the share that agrees there.
    double deviation = 0.0;
    double ownCoherence = 0.0;
    // True if the peak of the whole range searched lies on the line.
    bool agrees = false;
    // What the window counts: 0 for nothing above the noise floor, 1 for sound well above.
    double weight = 0.0;
};

// How two recordings lie to each other and what speaks for it. The offset is the position of a
// sound in the first minus its position in the second; it changes along the line
// offset + slope * (time - middle), with time and middle in seconds of the first recording.
struct Alignment {
    double middle = 0.0;
    double offset = 0.0;
    double slope = 0.0;
    double offsetError = 0.0;
    double slopeError = 0.0;
    // Start and end of the shared time in seconds of the first recording.
    double start = 0.0;
    double end = 0.0;
    // 1, or -1 where one recording is the other upside down.
    double sign = 1.0;
    // Weighted mean of the windows' coherence on the line.
    double coherence = 0.0;
    // Coherence of the stack of all windows in units of what chance gives.
    double significance = 0.0;
    // What full coherence would give there.
    double fullSignificance = 0.0;
    // Stack on the line against the highest of the stack 1.5 to 50 ms away.
    double sharpness = 0.0;
    // Weighted share, among the windows with sound, of those whose peak lies on the line.
    double agreement = 0.0;
    // Bands of 100 Hz in which the phases agree beyond chance, of `allBands`.
    int bands = 0;
    int allBands = 0;
    // How much sound above their own noise both recordings have in the shared time, from 0 to 1.
    double activity = 0.0;
    std::vector<AlignWindow> windows;

    double overlap() const { return end - start; }
    double offsetAt(double time) const { return offset + slope * (time - middle); }
};

struct AlignRequest {
    // Offset about which is searched, in seconds, and at which time of the first recording; slope
    // is searched too unless it is given as known.
    double offset = 0.0;
    double slope = 0.0;
    double slopeReach = 170e-6;
    double reach = 0.04;
    // 1 or -1 if it is known, 0 to find out.
    double sign = 0.0;
    std::size_t mostWindows = 40;
    // Upper end of the band that counts, in Hz.
    double highest = 3600.0;
    // A line that stands out by less is not looked at further.
    double leastSignificance = 6.0;
};

Alignment align(const Prepared& first, const Prepared& second, const AlignRequest& request,
                AlignWorkspace& work);

} // namespace vxlsync

#endif
