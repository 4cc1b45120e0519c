#ifndef FUZZ_COMPARISON_H
#define FUZZ_COMPARISON_H

#include "plain/Extractor.h"
#include "plain/Recording.h"

namespace VXS
{
class VXFile;
class VXLandmarkExtract;
} // namespace VXS

namespace fuzz
{

// End the process where the library holds something else than its twin.
void requireSamePeaks(const VXS::VXLandmarkExtract& library, const plain::Extractor& twin);
void requireSameLandmarks(VXS::VXFile& library, const plain::Recording& twin);

} // namespace fuzz

#endif
