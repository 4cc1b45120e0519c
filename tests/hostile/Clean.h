#ifndef HOSTILE_CLEAN_H
#define HOSTILE_CLEAN_H

#include <cstdint>
#include <string>
#include <vector>

#include "Signals.h"
#include "VXLandmarkExtract.h"
#include "Wave.h"
#include "plain/Source.h"

// The sound input that hostile input is made from, and what must come of both.
namespace hostile
{

using signals::Samples;
using Landmarks = std::vector<signals::LandmarkRow>;

constexpr std::uint32_t cleanCount = 8000;

// One second of sound with peaks in plenty, as 16-bit samples and as the reader delivers them.
const std::vector<int>& cleanSamples16();
const Samples& cleanSamples();
// A 44-byte header and the samples: 16000 bytes of data.
wave::Bytes cleanFile();
// What the default parameters find in it.
const Landmarks& cleanLandmarks();

// The slow and plain twin of the extractor over the same parameters.
Landmarks twinLandmarks(const VXS::VXExtractParams& params, plain::Source& source);

// Nothing that came before may show in what an extractor makes of sound input.
void expectUsable(VXS::VXLandmarkExtract& extractor);

} // namespace hostile

#endif
