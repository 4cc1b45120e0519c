#ifndef VXS_TESTS_SUPPORT_SIGNALS_H
#define VXS_TESTS_SUPPORT_SIGNALS_H

#include <cstddef>
#include <cstdint>
#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

#include "SignalInput.h"
#include "VXLandmarkExtract.h"

namespace VXS
{
class VXFile;
}

// Sound for tests, sources that deliver it, and views of what extraction made of it.
namespace signals
{

Samples silence(std::size_t count);
// A cosine that falls exactly on a bin of a transform of `fftSize` samples. Its magnitude in that
// bin is amplitude * fftSize / 2 in every frame that it fills.
Samples tone(int bin, float amplitude, std::size_t count, int fftSize = 512);
// The sum of two signals of one length.
Samples mix(const Samples& left, const Samples& right);
// One signal after the other.
Samples join(const std::vector<Samples>& parts);
// A pulse of the given height at the start of every period. In a frame of 512 samples, a period of
// 8 gives 64 * height in bins 0, 64, 128 and 192, exactly alike, and exactly 0 in all others.
Samples comb(std::size_t period, float height, std::size_t count);
// Noise whose loudness changes ten times a second, the same for the same seed on every machine.
Samples noise(std::uint32_t seed, std::size_t count);
// The samples as 16-bit numbers, and such numbers as the reader delivers them.
std::vector<int> as16Bit(const Samples& samples);
Samples asRead(const std::vector<int>& samples);
// The levels of one frame's bins, as the transform and the conversion to dB give them.
Samples levelsOf(const Samples& frame);

// Frame and key of every landmark, by frame and in their order within it.
using LandmarkRow = std::pair<std::int64_t, std::uint32_t>;
std::vector<LandmarkRow> landmarksOf(VXS::VXFile& file);
// Extracts the samples with a new extractor.
std::vector<LandmarkRow> extractLandmarks(const VXS::VXExtractParams& params,
                                          const Samples& samples);

// The fields of a peak, comparable.
struct PeakRow {
    std::int32_t frequency;
    float amplitude;
    std::int32_t time;
};
bool operator==(const PeakRow& left, const PeakRow& right);
std::ostream& operator<<(std::ostream& stream, const PeakRow& row);

using PeakTable = std::vector<std::vector<PeakRow>>;
PeakTable peaksOf(const VXS::VXLandmarkExtract& extractor);
// The bins of one frame's peaks, in the order of its list.
std::vector<int> binsOf(const VXS::VXLandmarkExtract& extractor, std::size_t frame);
// Gives an extractor without frames these peaks, in this order.
void setPeaks(VXS::VXLandmarkExtract& extractor, const PeakTable& table);

} // namespace signals

#endif
