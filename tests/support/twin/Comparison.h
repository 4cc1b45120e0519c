#ifndef VXS_TESTS_SUPPORT_TWIN_COMPARISON_H
#define VXS_TESTS_SUPPORT_TWIN_COMPARISON_H

#include <string>
#include <vector>

#include "VXExtractParams.h"
#include "plain/Extractor.h"
#include "plain/Recording.h"

namespace VXS
{
class VXFile;
class VXLandmarkExtract;
} // namespace VXS

// What the library and its plain twin make of the same sound, beside each other.
namespace twins
{

VXS::VXExtractParams toLibrary(const plain::Parameters& parameters);
plain::Parameters toPlain(const VXS::VXExtractParams& params);

// What is another in the library than in the twin, in words, or nothing. Levels are compared to the
// bit, and landmarks by frame, in their order within it.
using PeakTable = std::vector<std::vector<plain::Peak>>;
std::string differenceOfPeaks(const VXS::VXLandmarkExtract& library, const PeakTable& twin);
std::string differenceOfLandmarks(VXS::VXFile& library, const plain::Recording& twin);

} // namespace twins

#endif
