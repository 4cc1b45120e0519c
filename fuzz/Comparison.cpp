#include "Comparison.h"

#include <cmath>
#include <cstring>

#include "Harness.h"
#include "VXFile.h"
#include "VXLandmark.h"
#include "VXLandmarkExtract.h"

namespace fuzz
{

bool sameFloat(float left, float right)
{
    if (std::isnan(left) && std::isnan(right)) return true;
    return std::memcmp(&left, &right, sizeof left) == 0;
}

bool sameFloats(const float* left, const float* right, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        if (!sameFloat(left[i], right[i])) return false;
    }
    return true;
}

VXS::VXExtractParams toLibrary(const plain::Parameters& parameters)
{
    VXS::VXExtractParams params;
    params.frequencyRange = parameters.frequencyRange;
    params.timeRange = parameters.timeRange;
    params.initialFrames = parameters.initialFrames;
    params.maxPeaksPerFrame = parameters.maxPeaksPerFrame;
    params.maskHeight = parameters.maskHeight;
    params.peakFloor = parameters.peakFloor;
    params.thresholdDecay = parameters.thresholdDecay;
    params.maskWidth = parameters.maskWidth;
    params.fftSize = parameters.fftSize;
    params.hopSize = parameters.hopSize;
    params.sampleRate = parameters.sampleRate;
    params.maxPairsPerPeak = parameters.maxPairsPerPeak;
    return params;
}

void requireSamePeaks(const VXS::VXLandmarkExtract& library, const plain::Extractor& twin)
{
    const auto expected = twin.peaks();
    require(library.frames->size() == expected.size(), "as many frames as the twin");
    for (std::size_t f = 0; f < expected.size(); ++f) {
        const auto& peaks = *(*library.frames)[f];
        require(peaks.size() == expected[f].size(), "as many peaks in each frame as the twin");
        for (std::size_t i = 0; i < peaks.size(); ++i) {
            require(peaks[i]->frequency == expected[f][i].frequency, "peaks at the twin's bins");
            require(peaks[i]->time == expected[f][i].time, "peaks at the twin's frames");
            require(sameFloat(peaks[i]->amplitude, expected[f][i].amplitude),
                    "peaks of the twin's levels");
        }
    }
}

void requireSameLandmarks(VXS::VXFile& library, const plain::Recording& twin)
{
    require(library.getFileID() == twin.id, "the id that was asked for");
    require(library.getMinLandmarkOffsetTime() == twin.first, "the twin's first frame");
    require(library.getMaxLandmarkOffsetTime() == twin.last, "the twin's last frame");
    const auto& landmarks = library.getLandmarkMap();
    require(landmarks.size() == twin.landmarks.size(), "landmarks in as many frames as the twin");
    auto entry = landmarks.begin();
    for (const auto& [frame, list] : twin.landmarks) {
        require(entry->first == frame, "landmarks in the twin's frames");
        require(entry->second.size() == list.size(), "as many landmarks in each frame as the twin");
        for (std::size_t i = 0; i < list.size(); ++i) {
            const VXS::VXLandmark& landmark = *entry->second[i];
            require(landmark.key == list[i].key, "the twin's keys");
            require(landmark.offset == list[i].offset, "the twin's offsets");
            require(landmark.file == &library, "landmarks that name their file");
        }
        ++entry;
    }
}

} // namespace fuzz
