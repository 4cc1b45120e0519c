#ifndef VXL_SYNC_ALIGNMENT_H
#define VXL_SYNC_ALIGNMENT_H

#include <vector>

namespace vxlsync
{

// Shortest shared time at which two recordings can be tied: below, music of any two bars agrees.
constexpr double shortestOverlapSeconds = 2.0;

// One stretch of the time that two recordings share.
struct AlignmentWindow {
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
    // Seconds of the shared time in which both have sound of their own. A click lasts a tenth of a
    // second, however high it stands out of an evening of silence.
    double heardSeconds = 0.0;
    // Empty if the two share too little time to be compared.
    std::vector<AlignmentWindow> windows;

    double overlap() const { return end - start; }
    double offsetAt(double time) const { return offset + slope * (time - middle); }
};

} // namespace vxlsync

#endif
