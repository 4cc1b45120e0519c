#include "Comparison.h"

#include <string>

#include "Harness.h"
#include "support/twin/Comparison.h"

namespace fuzz
{

void requireSamePeaks(const VXS::VXLandmarkExtract& library, const plain::Extractor& twin)
{
    const std::string difference = twins::differenceOfPeaks(library, twin.peaks());
    require(difference.empty(), ("the twin's peaks: " + difference).c_str());
}

void requireSameLandmarks(VXS::VXFile& library, const plain::Recording& twin)
{
    const std::string difference = twins::differenceOfLandmarks(library, twin);
    require(difference.empty(), ("the twin's landmarks: " + difference).c_str());
}

} // namespace fuzz
