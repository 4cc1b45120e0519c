#include "Comparison.h"

#include <cstddef>
#include <sstream>

#include "VXFile.h"
#include "VXLandmark.h"
#include "VXLandmarkExtract.h"
#include "support/Bits.h"

namespace twins
{

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

plain::Parameters toPlain(const VXS::VXExtractParams& params)
{
    plain::Parameters parameters;
    parameters.frequencyRange = params.frequencyRange;
    parameters.timeRange = params.timeRange;
    parameters.initialFrames = params.initialFrames;
    parameters.maxPeaksPerFrame = params.maxPeaksPerFrame;
    parameters.maskHeight = params.maskHeight;
    parameters.peakFloor = params.peakFloor;
    parameters.thresholdDecay = params.thresholdDecay;
    parameters.maskWidth = params.maskWidth;
    parameters.fftSize = params.fftSize;
    parameters.hopSize = params.hopSize;
    parameters.sampleRate = params.sampleRate;
    parameters.maxPairsPerPeak = params.maxPairsPerPeak;
    return parameters;
}

std::string differenceOfPeaks(const VXS::VXLandmarkExtract& library, const PeakTable& twin)
{
    std::ostringstream text;
    if (library.frames->size() != twin.size()) {
        text << library.frames->size() << " lists in the library and " << twin.size()
             << " in the twin";
        return text.str();
    }
    for (std::size_t f = 0; f < twin.size(); ++f) {
        const std::vector<VXS::Peak*>& peaks = *(*library.frames)[f];
        if (peaks.size() != twin[f].size()) {
            text << "frame " << f << ": " << peaks.size() << " peaks in the library and "
                 << twin[f].size() << " in the twin";
            return text.str();
        }
        for (std::size_t i = 0; i < peaks.size(); ++i) {
            const VXS::Peak& left = *peaks[i];
            const plain::Peak& right = twin[f][i];
            if (left.frequency == right.frequency && left.time == right.time &&
                support::sameBits(left.amplitude, right.amplitude))
                continue;
            text << "frame " << f << ", peak " << i << ": bin " << left.frequency << " level "
                 << left.amplitude << " time " << left.time << " in the library, bin "
                 << right.frequency << " level " << right.amplitude << " time " << right.time
                 << " in the twin";
            return text.str();
        }
    }
    return "";
}

std::string differenceOfLandmarks(VXS::VXFile& library, const plain::Recording& twin)
{
    std::ostringstream text;
    if (library.getFileID() != twin.id) {
        text << "id " << library.getFileID() << " in the library and " << twin.id << " in the twin";
        return text.str();
    }
    const auto& landmarks = library.getLandmarkMap();
    if (landmarks.size() != twin.landmarks.size()) {
        text << landmarks.size() << " frames in the library and " << twin.landmarks.size()
             << " in the twin";
        return text.str();
    }
    auto entry = landmarks.begin();
    for (const auto& [frame, list] : twin.landmarks) {
        if (entry->first != frame || entry->second.size() != list.size()) {
            text << "frame " << entry->first << " with " << entry->second.size()
                 << " landmarks in the library, frame " << frame << " with " << list.size()
                 << " in the twin";
            return text.str();
        }
        for (std::size_t i = 0; i < list.size(); ++i) {
            const VXS::VXLandmark& landmark = *entry->second[i];
            if (landmark.key == list[i].key && landmark.offset == list[i].offset &&
                landmark.file == &library)
                continue;
            text << "frame " << frame << ", landmark " << i << ": key " << landmark.key << " and "
                 << list[i].key;
            return text.str();
        }
        ++entry;
    }
    if (library.getMinLandmarkOffsetTime() != twin.first ||
        library.getMaxLandmarkOffsetTime() != twin.last)
        return "other bounds";
    return "";
}

} // namespace twins
