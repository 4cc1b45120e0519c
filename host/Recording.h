#ifndef VXL_SYNC_RECORDING_H
#define VXL_SYNC_RECORDING_H

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace vxlsync
{

// Rate at which recordings are compared. Speech and music have nearly all that ties two recordings
// together below 4 kHz, and the landmarks are made at this rate.
constexpr int analysisRate = 8000;

// Samples that keep 8 bits of mantissa: half the memory of float at any level, which is all that a
// measurement of phases needs.
class CompactSamples
{
public:
    void append(const float* values, std::size_t count);
    std::size_t size() const { return words.size(); }
    float operator[](std::size_t index) const;
    void clear() { words.clear(); }

private:
    std::vector<std::uint16_t> words;
};

// One recording as it was read: a single channel whose sample 0 is the start of its file.
struct Recording {
    std::string path;
    std::string name;
    // Samples at analysisRate, as long as they are needed.
    std::vector<float> samples;
    // Length and loudness of the samples, from measure().
    double durationSeconds = 0.0;
    double meanSquare = 0.0;
    // The same sound at fineRate for the last refinement. Empty if the file has nothing above what
    // `samples` can hold; then fineRate equals analysisRate.
    CompactSamples fine;
    int fineRate = analysisRate;
    // Empty, or why the file could not be read.
    std::string failure;
    // Remarks for the user on what was mended while reading.
    std::vector<std::string> notes;

    // Fills durationSeconds and meanSquare, the latter without a constant part.
    void measure();
};

} // namespace vxlsync

#endif
