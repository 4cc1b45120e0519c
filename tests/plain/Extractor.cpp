#include "plain/Extractor.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <stdexcept>

#include "vxaccelerate/transform.h"

namespace plain
{

Extractor::Extractor(const Parameters& newParameters)
    : parameters(newParameters),
      bins(newParameters.fftSize / 2),
      input(newParameters.fftSize + 4, 0.0f),
      output(newParameters.fftSize + 4, 0.0f),
      levels(bins, 0.0f)
{
    unsigned int order = 0;
    while ((1u << order) < parameters.fftSize)
        ++order;
    vxaccelerate::transform::FFTInit(&state, order);
    unsigned int size = 0;
    vxaccelerate::transform::FFTGetBufSize(state, &size);
    workBuffer.resize(size + 1);
}

Extractor::~Extractor()
{
    vxaccelerate::transform::FFTFree(state);
}

void Extractor::run(Source& source, Recording& recording)
{
    findPeaks(source);
    prune();
    pair(recording);
}

float Extractor::dB(float magnitude)
{
    float level = magnitude + 2.2204e-16f;
    level = std::log(level);
    level = level / 2.3025851f;
    return level * 20.0f;
}

// Moves the frame on by one hop. Of a hop longer than the frame the newest samples are taken.
void Extractor::slide(std::vector<float>& frame, const std::vector<float>& block) const
{
    const std::size_t size = frame.size();
    const std::size_t hop = parameters.hopSize;
    if (hop > size) {
        for (std::size_t k = 0; k < size; ++k)
            frame[k] = block[hop - size + k];
        return;
    }
    for (std::size_t k = 0; k < size - hop; ++k)
        frame[k] = frame[k + hop];
    for (std::size_t k = 0; k < hop; ++k)
        frame[size - hop + k] = block[k];
}

void Extractor::transform(const std::vector<float>& frame)
{
    for (std::size_t k = 0; k < frame.size(); ++k)
        input[k] = frame[k];
    vxaccelerate::transform::FFTFwd(input.data(), output.data(), state, workBuffer.data());
}

float Extractor::magnitude(std::size_t bin) const
{
    const float re = output[2 * bin];
    const float im = output[2 * bin + 1];
    const float power = re * re + im * im;
    return std::sqrt(power);
}

std::vector<float> Extractor::initialThreshold(Source& source)
{
    std::vector<float> threshold(bins, 0.0f);
    std::vector<float> frame(parameters.fftSize, 0.0f);
    std::vector<float> block;
    for (std::uint32_t f = 0; f < parameters.initialFrames; ++f) {
        block.assign(parameters.hopSize, 0.0f);
        source.read(block);
        // A source may have resized it.
        block.resize(parameters.hopSize, 0.0f);
        slide(frame, block);
        transform(frame);
        for (std::size_t k = 0; k < bins; ++k) {
            const float value = magnitude(k);
            if (threshold[k] < value) threshold[k] = value;
        }
    }
    for (float& level : threshold)
        level = dB(level);
    return threshold;
}

// Not "if the mask is greater": what is not a number takes the mask, and a mask that is not a
// number is taken.
void Extractor::raise(std::vector<float>& threshold, std::int32_t center, float amplitude) const
{
    for (std::size_t k = 0; k < threshold.size(); ++k) {
        const std::size_t distance =
            static_cast<std::size_t>(std::llabs(static_cast<long long>(k) - center));
        if (distance >= maskShape.size()) continue;
        const float mask = amplitude + maskShape[distance];
        if (mask < threshold[k]) continue;
        threshold[k] = mask;
    }
}

void Extractor::smooth(std::vector<float>& envelope) const
{
    const std::size_t count = envelope.size();
    if (count < 2) return;
    std::vector<Peak> maxima;
    for (std::size_t c = 1; c < count; ++c) {
        const float next =
            c + 1 < count ? envelope[c + 1] : -std::numeric_limits<float>::infinity();
        if (envelope[c] > envelope[c - 1] && envelope[c] > next) {
            maxima.push_back({static_cast<std::int32_t>(c), envelope[c], 0});
        }
    }
    for (const Peak& peak : maxima)
        raise(envelope, peak.frequency, peak.amplitude);
}

Extractor::List Extractor::candidates(const std::vector<float>& excess, std::int32_t time) const
{
    List list;
    for (std::size_t i = 1; i + 1 < bins; ++i) {
        if (excess[i] > excess[i - 1] && excess[i] > excess[i + 1]) {
            list.push_back(
                std::make_unique<Peak>(Peak{static_cast<std::int32_t>(i), levels[i], time}));
        }
    }
    return list;
}

void Extractor::sort(List& list)
{
    // Of equal levels the lower bin comes first, so that the list has one order.
    std::sort(list.begin(), list.end(),
              [](const std::unique_ptr<Peak>& left, const std::unique_ptr<Peak>& right) {
                  if (left->amplitude > right->amplitude) return true;
                  if (right->amplitude > left->amplitude) return false;
                  return left->frequency < right->frequency;
              });
}

void Extractor::findPeaks(Source& source)
{
    frames.clear();
    const double hop = static_cast<double>(parameters.hopSize);
    const double exactCount = std::floor(static_cast<double>(source.frames()) / hop) +
                              std::ceil(static_cast<double>(parameters.fftSize) / hop) - 1.0;
    if (exactCount >= 4294967296.0) throw std::length_error("too many frames");
    const std::uint32_t frameCount = static_cast<std::uint32_t>(exactCount);
    if (parameters.initialFrames > frameCount) return;

    maskShape.assign(bins, 0.0f);
    for (std::size_t i = 0; i < bins; ++i) {
        float value = static_cast<float>(i) / parameters.maskWidth;
        value = value * value;
        value = value * -0.5f;
        value = std::exp(value);
        value = value * parameters.maskHeight;
        maskShape[i] = value - parameters.maskHeight;
    }

    std::vector<float> threshold = initialThreshold(source);
    smooth(threshold);
    source.rewind();

    std::vector<float> frame(parameters.fftSize, 0.0f);
    std::vector<float> excess(bins, 0.0f);
    std::fill(levels.begin(), levels.end(), 0.0f);
    std::vector<float> block;
    float maxMagnitude = 0.0f;
    for (std::uint32_t f = 0; f < frameCount; ++f) {
        block.assign(parameters.hopSize, 0.0f);
        if (f < frameCount - 1) source.read(block);
        block.resize(parameters.hopSize, 0.0f);
        slide(frame, block);
        transform(frame);
        for (std::size_t i = 0; i < bins; ++i) {
            const float value = magnitude(i);
            if (value >= maxMagnitude) maxMagnitude = value;
            levels[i] = dB(value);
            excess[i] = levels[i] - threshold[i];
        }

        frames.push_back(candidates(excess, static_cast<std::int32_t>(f)));
        List& list = frames.back();
        sort(list);
        std::uint32_t accepted = 0;
        for (auto peak = list.begin(); peak != list.end();) {
            const std::int32_t bin = (*peak)->frequency;
            const float amplitude = (*peak)->amplitude;
            if (!(amplitude > threshold[static_cast<std::size_t>(bin)]) ||
                !(accepted < parameters.maxPeaksPerFrame)) {
                peak = list.erase(peak);
                continue;
            }
            raise(threshold, bin, amplitude);
            ++accepted;
            ++peak;
        }
        for (float& level : threshold)
            level -= parameters.thresholdDecay;
    }

    const float maxLevel = dB(maxMagnitude);
    for (List& list : frames) {
        for (auto peak = list.begin(); peak != list.end();) {
            const float below = (*peak)->amplitude - maxLevel;
            peak = below < parameters.peakFloor ? list.erase(peak) : peak + 1;
        }
    }
}

void Extractor::prune()
{
    if (frames.empty()) return;
    std::vector<float> threshold = levels;
    smooth(threshold);
    for (std::size_t f = frames.size(); f-- > 0;) {
        List& list = frames[f];
        for (auto peak = list.begin(); peak != list.end();) {
            const std::int32_t bin = (*peak)->frequency;
            const float amplitude = (*peak)->amplitude;
            if (amplitude < threshold[static_cast<std::size_t>(bin)]) {
                peak = list.erase(peak);
                continue;
            }
            raise(threshold, bin, amplitude);
            ++peak;
        }
        for (float& level : threshold)
            level -= parameters.thresholdDecay;
    }
}

std::vector<const Peak*> Extractor::neighboursOf(const Peak& anchor) const
{
    std::vector<const Peak*> neighbours;
    if (frames.empty()) return neighbours;
    const std::int64_t count = static_cast<std::int64_t>(frames.size());
    const std::int64_t time = anchor.time;
    const std::int64_t reach = time + static_cast<std::int64_t>(parameters.timeRange);
    const std::int64_t lastFrame = reach < count ? reach : count - 1;
    const std::int64_t bin = anchor.frequency;
    const std::int64_t range = static_cast<std::int64_t>(parameters.frequencyRange);
    const std::int64_t highBin = std::min(static_cast<std::int64_t>(bins), bin + range);
    const std::int64_t lowBin = std::max<std::int64_t>(bin - range, 0);
    std::uint32_t found = 0;
    for (std::int64_t g = time; g <= lastFrame; ++g) {
        for (const std::unique_ptr<Peak>& peak : frames[static_cast<std::size_t>(g)]) {
            // The anchor's own bin and frame, not those of the candidate.
            if (bin < lowBin || bin > highBin) continue;
            if (peak.get() == &anchor) continue;
            if (anchor.time < time || anchor.time > lastFrame) continue;
            neighbours.push_back(peak.get());
            ++found;
            if (found > parameters.maxPairsPerPeak) return neighbours;
        }
    }
    return neighbours;
}

void Extractor::pair(Recording& recording) const
{
    for (const List& list : frames) {
        for (const std::unique_ptr<Peak>& anchor : list) {
            for (const Peak* neighbour : neighboursOf(*anchor)) {
                const std::uint32_t between =
                    static_cast<std::uint32_t>(neighbour->time - anchor->time) % 1024;
                const std::uint32_t anchorBin =
                    static_cast<std::uint32_t>(anchor->frequency) % 1024;
                const std::uint32_t neighbourBin =
                    static_cast<std::uint32_t>(neighbour->frequency) % 1024;
                const std::uint32_t key = between * 1024 * 1024 + anchorBin * 1024 + neighbourBin;
                recording.add({anchor->time, key, recording.id, true});
            }
        }
    }
}

std::vector<std::vector<Peak>> Extractor::peaks() const
{
    std::vector<std::vector<Peak>> copies;
    for (const List& list : frames) {
        copies.emplace_back();
        for (const std::unique_ptr<Peak>& peak : list)
            copies.back().push_back(*peak);
    }
    return copies;
}

} // namespace plain
