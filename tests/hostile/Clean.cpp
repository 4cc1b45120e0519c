#include "Clean.h"

#include <memory>

#include <gtest/gtest.h>

#include "VXFile.h"
#include "plain/Extractor.h"
#include "twin/Comparison.h"
#include "twin/Source.h"

namespace hostile
{

const std::vector<int>& cleanSamples16()
{
    static const std::vector<int> samples = signals::as16Bit(signals::noise(7, cleanCount));
    return samples;
}

const Samples& cleanSamples()
{
    static const Samples samples = signals::asRead(cleanSamples16());
    return samples;
}

wave::Bytes cleanFile()
{
    return wave::file16(cleanSamples16());
}

const Landmarks& cleanLandmarks()
{
    static const Landmarks landmarks = [] {
        twins::Source source(cleanSamples(), cleanCount);
        return twinLandmarks(VXS::VXExtractParams(), source);
    }();
    return landmarks;
}

Landmarks twinLandmarks(const VXS::VXExtractParams& params, plain::Source& source)
{
    plain::Recording recording(1);
    plain::Extractor(twins::toPlain(params)).run(source, recording);
    Landmarks rows;
    for (const auto& frame : recording.landmarks) {
        for (const plain::Landmark& landmark : frame.second)
            rows.emplace_back(landmark.offset, landmark.key);
    }
    return rows;
}

void expectUsable(VXS::VXLandmarkExtract& extractor)
{
    signals::SignalInput input(cleanSamples());
    twins::Source twin(cleanSamples(), cleanCount);
    const std::unique_ptr<VXS::VXFile> file(extractor.run(&input, 1));

    ASSERT_NE(nullptr, file);
    EXPECT_EQ(twinLandmarks(extractor.params, twin), signals::landmarksOf(*file));
}

} // namespace hostile
