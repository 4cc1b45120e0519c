#include "Clean.h"

#include <memory>

#include <gtest/gtest.h>

#include "VXFile.h"
#include "plain/Extractor.h"

namespace hostile
{

namespace
{

plain::Parameters toTwin(const VXS::VXExtractParams& params)
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

} // namespace

const std::vector<int>& cleanSamples16()
{
    static const std::vector<int> samples = [] {
        std::vector<int> result;
        for (const float sample : signals::noise(7, cleanCount))
            result.push_back(static_cast<int>(sample * 32768.0f));
        return result;
    }();
    return samples;
}

const Samples& cleanSamples()
{
    static const Samples samples = [] {
        Samples result;
        for (const int sample : cleanSamples16())
            result.push_back(static_cast<float>(sample) / 32768.0f);
        return result;
    }();
    return samples;
}

wave::Bytes cleanFile()
{
    return wave::file16(cleanSamples16());
}

const Landmarks& cleanLandmarks()
{
    static const Landmarks landmarks = [] {
        TwinSource source(cleanSamples(), cleanCount);
        return twinLandmarks(VXS::VXExtractParams(), source);
    }();
    return landmarks;
}

Landmarks twinLandmarks(const VXS::VXExtractParams& params, plain::Source& source)
{
    plain::Recording recording(1);
    plain::Extractor(toTwin(params)).run(source, recording);
    Landmarks rows;
    for (const auto& frame : recording.landmarks) {
        for (const plain::Landmark& landmark : frame.second)
            rows.emplace_back(landmark.offset, landmark.key);
    }
    return rows;
}

void TwinSource::read(std::vector<float>& block)
{
    for (std::size_t i = 0; i < block.size() && position < samples.size(); ++i)
        block[i] = samples[position++];
}

void expectUsable(VXS::VXLandmarkExtract& extractor)
{
    signals::SignalInput input(cleanSamples());
    TwinSource twin(cleanSamples(), cleanCount);
    const std::unique_ptr<VXS::VXFile> file(extractor.run(&input, 1));

    ASSERT_NE(nullptr, file);
    EXPECT_EQ(twinLandmarks(extractor.params, twin), signals::landmarksOf(*file));
}

} // namespace hostile
