#include "Signals.h"

#include <algorithm>
#include <cmath>
#include <memory>
#include <ostream>

#include "VXFile.h"
#include "VXLandmark.h"
#include "vxaccelerate/transform.h"

namespace signals
{

Samples silence(std::size_t count)
{
    return Samples(count, 0.0f);
}

Samples tone(int bin, float amplitude, std::size_t count, int fftSize)
{
    constexpr double turn = 6.283185307179586;
    Samples samples(count);
    for (std::size_t n = 0; n < count; ++n) {
        // The phase repeats, and reduced it stays exact however long the tone is.
        const auto step = static_cast<std::size_t>(bin) * n % static_cast<std::size_t>(fftSize);
        const double phase = turn * static_cast<double>(step) / fftSize;
        samples[n] = static_cast<float>(amplitude * std::cos(phase));
    }
    return samples;
}

Samples mix(const Samples& left, const Samples& right)
{
    Samples sum(left);
    for (std::size_t n = 0; n < sum.size(); ++n)
        sum[n] += right[n];
    return sum;
}

Samples join(const std::vector<Samples>& parts)
{
    Samples whole;
    for (const Samples& part : parts)
        whole.insert(whole.end(), part.begin(), part.end());
    return whole;
}

Samples comb(std::size_t period, float height, std::size_t count)
{
    Samples samples(count, 0.0f);
    for (std::size_t n = 0; n < count; n += period)
        samples[n] = height;
    return samples;
}

Samples noise(std::uint32_t seed, std::size_t count)
{
    constexpr std::size_t samplesPerLevel = 800;
    std::uint32_t state = seed;
    std::uint32_t level = 0;
    Samples samples(count);
    for (std::size_t n = 0; n < count; ++n) {
        state = state * 1664525u + 1013904223u;
        if (n % samplesPerLevel == 0) level = (state >> 20u) % 64u + 1u;
        const auto value = static_cast<std::int32_t>(state >> 16u) - 32768;
        samples[n] = static_cast<float>(value * static_cast<std::int32_t>(level)) / 2097152.0f;
    }
    return samples;
}

std::vector<int> as16Bit(const Samples& samples)
{
    std::vector<int> result;
    for (const float sample : samples)
        result.push_back(static_cast<int>(sample * 32768.0f));
    return result;
}

Samples asRead(const std::vector<int>& samples)
{
    Samples result;
    for (const int sample : samples)
        result.push_back(static_cast<float>(sample) / 32768.0f);
    return result;
}

Samples levelsOf(const Samples& frame)
{
    unsigned int order = 0;
    while ((std::size_t{1} << order) < frame.size())
        ++order;
    vxaccelerate::FFTState_Float* state = nullptr;
    unsigned int bufferBytes = 0;
    vxaccelerate::transform::FFTInit(&state, order);
    vxaccelerate::transform::FFTGetBufSize(state, &bufferBytes);
    Samples input(frame);
    input.resize(frame.size() + 4);
    Samples output(frame.size() + 4);
    // new[] aligns the buffer as the library's own is.
    const std::unique_ptr<unsigned char[]> buffer(new unsigned char[bufferBytes]);
    vxaccelerate::transform::FFTFwd(input.data(), output.data(), state, buffer.get());
    vxaccelerate::transform::FFTFree(state);

    VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};
    Samples levels(frame.size() / 2);
    for (std::size_t k = 0; k < levels.size(); ++k) {
        const float real = output[2 * k] * output[2 * k];
        const float imaginary = output[2 * k + 1] * output[2 * k + 1];
        levels[k] = extractor.dB(std::sqrt(real + imaginary));
    }
    return levels;
}

std::vector<LandmarkRow> landmarksOf(VXS::VXFile& file)
{
    std::vector<LandmarkRow> rows;
    for (const auto& frame : file.getLandmarkMap()) {
        for (const VXS::VXLandmark* landmark : frame.second)
            rows.emplace_back(landmark->getOffset(), landmark->key);
    }
    return rows;
}

std::vector<LandmarkRow> extractLandmarks(const VXS::VXExtractParams& params,
                                          const Samples& samples)
{
    VXS::VXLandmarkExtract extractor(params);
    SignalInput input(samples);
    const std::unique_ptr<VXS::VXFile> file(extractor.run(&input, 1));
    return landmarksOf(*file);
}

bool operator==(const PeakRow& left, const PeakRow& right)
{
    return left.frequency == right.frequency && left.amplitude == right.amplitude &&
           left.time == right.time;
}

std::ostream& operator<<(std::ostream& stream, const PeakRow& row)
{
    return stream << "bin " << row.frequency << " at " << row.amplitude << " dB in frame "
                  << row.time;
}

PeakTable peaksOf(const VXS::VXLandmarkExtract& extractor)
{
    PeakTable table;
    for (const std::vector<VXS::Peak*>* list : *extractor.frames) {
        table.emplace_back();
        for (const VXS::Peak* peak : *list)
            table.back().push_back({peak->frequency, peak->amplitude, peak->time});
    }
    return table;
}

std::vector<int> binsOf(const VXS::VXLandmarkExtract& extractor, std::size_t frame)
{
    std::vector<int> bins;
    for (const VXS::Peak* peak : *extractor.frames->at(frame))
        bins.push_back(peak->frequency);
    return bins;
}

void setPeaks(VXS::VXLandmarkExtract& extractor, const PeakTable& table)
{
    for (const std::vector<PeakRow>& rows : table) {
        extractor.frames->push_back(new std::vector<VXS::Peak*>());
        for (const PeakRow& row : rows) {
            extractor.frames->back()->push_back(
                new VXS::Peak{row.frequency, row.amplitude, row.time});
        }
    }
}

} // namespace signals
