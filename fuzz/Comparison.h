#ifndef FUZZ_COMPARISON_H
#define FUZZ_COMPARISON_H

#include <cstddef>

#include "VXExtractParams.h"
#include "plain/Extractor.h"
#include "plain/Recording.h"

namespace VXS
{
class VXFile;
class VXLandmarkExtract;
} // namespace VXS

namespace fuzz
{

// Equal to the bit. What is not a number equals what is not a number, since its sign and payload
// are the compiler's choice.
bool sameFloat(float left, float right);
bool sameFloats(const float* left, const float* right, std::size_t count);

VXS::VXExtractParams toLibrary(const plain::Parameters& parameters);

// End the process where the library holds something else than its twin.
void requireSamePeaks(const VXS::VXLandmarkExtract& library, const plain::Extractor& twin);
void requireSameLandmarks(VXS::VXFile& library, const plain::Recording& twin);

} // namespace fuzz

#endif
