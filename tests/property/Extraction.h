#ifndef PROPERTY_EXTRACTION_H
#define PROPERTY_EXTRACTION_H

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Random.h"
#include "VXLandmarkExtract.h"
#include "plain/Extractor.h"

namespace property
{

using Samples = std::vector<float>;

// Every field from the ordinary to the odd: hops below, at and above the transform, limits of 0,
// masks turned upside down, a threshold that rises.
plain::Parameters anyParameters(Random& random);
std::string describe(const plain::Parameters& parameters);

// Sound with many peaks: tones that come and go over noise of changing loudness.
Samples sound(Random& random, std::size_t count);
constexpr int hostileKinds = 20;
// Input that no recorder delivers, or that leaves nothing to find.
Samples hostileSound(Random& random, int kind, std::size_t count);

// Of the library and of the twin.
testing::AssertionResult samePeaks(const VXS::VXLandmarkExtract& library,
                                   const plain::Extractor& twin);
testing::AssertionResult sameLandmarks(VXS::VXFile& library, const plain::Recording& twin);

// Runs both on the samples, stage by stage and as a whole, and compares what each stage leaves.
void compareExtraction(const plain::Parameters& parameters, const Samples& samples,
                       std::uint32_t claim);
void compareExtraction(const plain::Parameters& parameters, const Samples& samples);

// Paths of the example recordings, in order of name.
std::vector<std::string> exampleRecordings();

} // namespace property

#endif
