#include "VXLandmarkExtract.h"

#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstring>
#include <exception>
#include <functional>
#include <iostream>
#include <iterator>
#include <memory>
#include <string_view>

#include "VXFile.h"
#include "VXFileSet.h"
#include "VXFloatingPoint.h"
#include "VXLandmark.h"
#include "VXMath.h"
#include "VXMultiversion.h"
#include "vxaccelerate/transform.h"
#include "wavfile.h"

namespace VXS
{

template class array<float>;
template class array<unsigned char>;

namespace
{

// Louder first and, of equal ones, the lower bin first, so that every list has one order on every
// platform. A stable sort stays within the list whatever the amplitudes are.
void sortByAmplitude(std::vector<Peak*>& peaks)
{
    std::stable_sort(peaks.begin(), peaks.end(), [](Peak* left, Peak* right) {
        if (VXLandmarkExtract::sortByAmplitudeComparitor(left, right)) return true;
        if (VXLandmarkExtract::sortByAmplitudeComparitor(right, left)) return false;
        return left->frequency < right->frequency;
    });
}

void deletePeaks(std::vector<Peak*>& peaks)
{
    for (Peak* peak : peaks)
        delete peak;
    peaks.clear();
}

// The passes over one frame. Each is a loop over arrays and nothing else, so that compilers
// vectorise it.

VXS_MULTIVERSION void powersOf(const float* __restrict spectrum, float* __restrict powers,
                               float* __restrict greatest, std::ptrdiff_t bins)
{
    for (std::ptrdiff_t i = 0; i < bins; ++i) {
        const float real = spectrum[2 * i] * spectrum[2 * i];
        const float imaginary = spectrum[2 * i + 1] * spectrum[2 * i + 1];
        const float power = real + imaginary;
        powers[i] = power;
        greatest[i] = power >= greatest[i] ? power : greatest[i];
    }
}

// Bounds of each bin's excess over the threshold, from the bits of its power: read as a whole
// number they are its logarithm but for 0.0861 of a power of two at most, which is 0.26 dB. What is
// known to be no peak by these bounds needs no logarithm. Returns the greatest bits; from those of
// infinity on there are no bounds.
VXS_MULTIVERSION std::int32_t boundExcess(const float* __restrict powers,
                                          const float* __restrict threshold,
                                          float* __restrict lower, float* __restrict upper,
                                          std::ptrdiff_t bins)
{
    constexpr float levelOfTwo = 3.01029996f;
    constexpr float scale = levelOfTwo / 8388608.0f;
    constexpr float rounding = 0.01f;
    constexpr float lowerConstant = levelOfTwo * -127.0f - rounding;
    constexpr float upperConstant = levelOfTwo * (-127.0f + 0.0861f) + rounding;
    // The bits of 1e-24, a level of -240 dB: below, the addend of the level counts.
    constexpr std::int32_t leastPower = 0x179ABE15;
    std::int32_t greatest = 0;
    for (std::ptrdiff_t i = 0; i < bins; ++i) {
        std::int32_t bits;
        std::memcpy(&bits, powers + i, sizeof(bits));
        const std::int32_t raised = bits < leastPower ? leastPower : bits;
        const std::int32_t withoutSign = bits & 0x7FFFFFFF;
        greatest = withoutSign > greatest ? withoutSign : greatest;
        lower[i] = static_cast<float>(bits) * scale + lowerConstant - threshold[i];
        upper[i] = static_cast<float>(raised) * scale + upperConstant - threshold[i];
    }
    return greatest;
}

VXS_MULTIVERSION void excessOf(float level, const float* __restrict threshold,
                               float* __restrict excess, std::ptrdiff_t bins)
{
    for (std::ptrdiff_t i = 0; i < bins; ++i)
        excess[i] = level - threshold[i];
}

// Marks the bins that may be a strict maximum of the excess above 0.
VXS_MULTIVERSION void markMaxima(const float* lower, const float* upper,
                                 std::uint8_t* __restrict marks, std::ptrdiff_t bins)
{
    for (std::ptrdiff_t i = 1; i < bins - 1; ++i) {
        const bool isAbove = upper[i] > 0.0f;
        const bool exceedsLeft = upper[i] > lower[i - 1];
        const bool exceedsRight = upper[i] > lower[i + 1];
        marks[i] = static_cast<std::uint8_t>(isAbove & exceedsLeft & exceedsRight);
    }
}

VXS_MULTIVERSION void lowerBy(float* __restrict threshold, float decay, std::ptrdiff_t bins)
{
    for (std::ptrdiff_t i = 0; i < bins; ++i)
        threshold[i] -= decay;
}

// Each level keeps its value or takes that of the mask, if that is not less.
VXS_MULTIVERSION void raiseTo(float* __restrict levels, const float* __restrict mask,
                              float amplitude, std::ptrdiff_t count)
{
    for (std::ptrdiff_t i = 0; i < count; ++i) {
        const float raised = amplitude + mask[i];
        levels[i] = raised < levels[i] ? levels[i] : raised;
    }
}

// Also of negative zeros.
VXS_MULTIVERSION bool areZero(const float* __restrict samples, std::size_t count)
{
    std::uint32_t anyBit = 0;
    for (std::size_t i = 0; i < count; ++i)
        anyBit |= bitsOf(samples[i]);
    return anyBit << 1u == 0;
}

bool areEqual(const array<float>& levels)
{
    const float* begin = levels.data;
    const float* end = begin + levels.count();
    return std::adjacent_find(begin, end, std::not_equal_to<float>()) == end;
}

// Writes to standard output as it stands: a width, a format or a locale that the host has set on
// the stream is for what the host writes.
void write(std::string_view text)
{
    std::cout.write(text.data(), static_cast<std::streamsize>(text.size()));
}

// Six digits, as a stream writes a number by itself.
void write(float number)
{
    constexpr int digits = 6;
    char text[32];
    const std::to_chars_result end =
        std::to_chars(std::begin(text), std::end(text), number, std::chars_format::general, digits);
    write(std::string_view(text, static_cast<std::size_t>(end.ptr - text)));
}

void endLine()
{
    write("\n");
    std::cout.flush();
}

std::string extensionOf(const std::string& path)
{
    const std::size_t dot = path.rfind('.');
    return dot == std::string::npos ? std::string() : path.substr(dot + 1);
}

// Of a path that is kept, which has a dot behind its last slash.
std::string shortNameOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    const std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
    return base.substr(0, base.rfind('.'));
}

} // namespace

// The mask of a peak, mirrored at its middle, so that raising levels by it is one pass over two
// arrays. Distances that the shape does not reach raise nothing.
class VXLandmarkExtract::Mask
{
public:
    explicit Mask(const std::vector<float>& shape)
        : reach(static_cast<std::ptrdiff_t>(shape.size())), mirrored(shape.rbegin(), shape.rend())
    {
        if (reach > 1) mirrored.insert(mirrored.end(), shape.begin() + 1, shape.end());
    }

    void raise(float* levels, std::ptrdiff_t count, std::ptrdiff_t center, float amplitude) const
    {
        const std::ptrdiff_t first = std::max<std::ptrdiff_t>(0, center - reach + 1);
        const std::ptrdiff_t end = std::min(count, center + reach);
        if (first >= end) return;
        raiseTo(levels + first, mirrored.data() + (first - center + reach - 1), amplitude,
                end - first);
    }

private:
    std::ptrdiff_t reach;
    std::vector<float> mirrored;
};

// The samples of one frame, and the block that the next ones are read into.
struct VXLandmarkExtract::SlidingFrame {
    explicit SlidingFrame(const VXExtractParams& params)
        : block(static_cast<std::int32_t>(params.getHopSize())),
          frame(static_cast<std::int32_t>(params.getFftSize())),
          silentSamples(params.getFftSize())
    {
        std::fill(frame.data, frame.data + frame.count(), 0.0f);
    }

    bool isSilent() const { return silentSamples >= static_cast<std::size_t>(frame.count()); }

    array<float> block;
    array<float> frame;
    // How many samples at the end of the frame are known to be 0.
    std::size_t silentSamples;
};

// The powers of one frame's bins, and what is worked out from them.
struct VXLandmarkExtract::Spectrum {
    explicit Spectrum(std::size_t bins)
        : powers(bins),
          greatest(bins),
          lower(bins),
          upper(bins),
          marks((bins / markGroup + 1) * markGroup)
    {
    }

    // Marks every bin that can be a peak, and few others.
    void markPeaks(const array<float>& threshold)
    {
        const auto bins = static_cast<std::ptrdiff_t>(powers.size());
        if (isSilent) {
            excessOf(levelAt(0), threshold.data, upper.data(), bins);
            markMaxima(upper.data(), upper.data(), marks.data(), bins);
            return;
        }
        const std::int32_t greatestBits =
            boundExcess(powers.data(), threshold.data, lower.data(), upper.data(), bins);
        if (static_cast<std::uint32_t>(greatestBits) >= infinityBits) {
            for (std::size_t i = 0; i < powers.size(); ++i) {
                lower[i] = levelAt(i) - threshold.data[i];
            }
            upper = lower;
        }
        markMaxima(lower.data(), upper.data(), marks.data(), bins);
    }

    void clearMarks() { std::fill(marks.begin(), marks.end(), std::uint8_t{0}); }

    float magnitudeAt(std::size_t bin) const { return std::sqrt(powers[bin]); }
    float levelAt(std::size_t bin) const { return levelOf(magnitudeAt(bin)); }

    // Marks are looked through this many at a time.
    static constexpr std::size_t markGroup = sizeof(std::uint64_t);

    std::vector<float> powers;
    // The greatest power of each bin in the recording so far.
    std::vector<float> greatest;
    std::vector<float> lower;
    std::vector<float> upper;
    std::vector<std::uint8_t> marks;
    // The bins that are peaks unless a louder one masks them. Refilled for each frame.
    std::vector<Peak> candidates;
    bool isSilent = true;
    // Some frame has been analysed.
    bool isAnalysed = false;
};

// Leaves one number for each bin of the latest frame in `numbers` when the pass over the frames
// ends, also when it ends because the source throws: what a host then prunes by hand starts there.
class VXLandmarkExtract::LatestFrame
{
public:
    using Number = float (Spectrum::*)(std::size_t bin) const;

    LatestFrame(const Spectrum& newSpectrum, Number newNumber, array<float>& newNumbers)
        : spectrum(newSpectrum), number(newNumber), numbers(newNumbers)
    {
    }
    ~LatestFrame()
    {
        if (!spectrum.isAnalysed) return;
        for (std::size_t bin = 0; bin < spectrum.powers.size(); ++bin)
            numbers.data[bin] = (spectrum.*number)(bin);
    }
    LatestFrame(const LatestFrame&) = delete;
    LatestFrame& operator=(const LatestFrame&) = delete;

private:
    const Spectrum& spectrum;
    Number number;
    array<float>& numbers;
};

WavInput::WavInput(wavfile_t* newFile) : file(newFile) {}

WavInput::~WavInput()
{
    delete file;
}

unsigned int WavInput::getFrames()
{
    return file == nullptr ? 0u : file->frames;
}

bool WavInput::read_mono(array<float>& block)
{
    if (file != nullptr) file->read_mono<float>(block);
    return true;
}

bool WavInput::rewind()
{
    if (file != nullptr) file->rewind();
    return true;
}

void Peak::print()
{
    write("f: ");
    write(std::to_string(frequency));
    write(" a: ");
    write(amplitude);
    write(" t:");
    write(std::to_string(time));
    endLine();
}

VXLandmarkExtract::VXLandmarkExtract(VXExtractParams newParams)
    : params(newParams), frames(new std::vector<std::vector<Peak*>*>())
{
}

VXLandmarkExtract::~VXLandmarkExtract()
{
    deletePeaks(spentPeaks);
    clearFrames();
    delete frames;
    if (fftState != nullptr) vxaccelerate::transform::FFTFree(fftState);
}

void VXLandmarkExtract::clearFrames()
{
    if (frames == nullptr) return;
    for (std::vector<Peak*>* peaks : *frames) {
        if (peaks != nullptr) deletePeaks(*peaks);
        delete peaks;
    }
    frames->clear();
}

VXFileSet* VXLandmarkExtract::runAll(const std::vector<std::string>& paths)
{
    std::vector<std::string> kept;
    for (const std::string& path : paths) {
        if (extensionOf(path) == "wav") kept.push_back(path);
    }

    std::vector<std::unique_ptr<VXFile>> files(kept.size());
    for (std::size_t i = 0; i < kept.size(); ++i) {
        const auto id = static_cast<std::int64_t>(i) + 1;
        write("STARTING: ");
        write(kept[i]);
        write(" (id ");
        write(std::to_string(id));
        write(")\n");
        files[i].reset(run(kept[i], id));
        write("FEATURE EXTRACTION COMPLETE: ");
        write(kept[i]);
        endLine();
    }

    auto fileSet = std::make_unique<VXFileSet>();
    for (std::size_t i = 0; i < kept.size(); ++i) {
        if (files[i] == nullptr) continue;
        const std::string name = shortNameOf(kept[i]);
        const std::int64_t id = files[i]->getFileID();
        fileSet->nameToId[name] = id;
        fileSet->idToName[id] = name;
        fileSet->idToPath[id] = kept[i];
        fileSet->addFile(files[i].get());
        files[i].release();
    }
    return fileSet.release();
}

VXFile* VXLandmarkExtract::run(std::string path, std::int64_t fileID)
{
    wavfile_t* file = loadFile(path);
    if (file == nullptr) return nullptr;
    WavInput input(file);
    return run(&input, fileID);
}

VXFile* VXLandmarkExtract::run(VXInput* input, std::int64_t fileID)
{
    clearFrames();
    setupFFT();
    findFreqPeaks(input);
    prune();
    auto file = std::make_unique<VXFile>(fileID);
    combine(file.get());
    return file.release();
}

wavfile_t* VXLandmarkExtract::loadFile(const std::string& path)
{
    // The header replaces both numbers.
    constexpr int placeholderChannels = 1;
    constexpr unsigned int placeholderRate = 16000;
    constexpr unsigned int openForReading = 8;
    std::unique_ptr<wavfile_t> file;
    try {
        file =
            std::make_unique<wavfile_t>(path, openForReading, placeholderChannels, placeholderRate);
    } catch (const std::exception&) {
        write("[ERROR]: Could not load: ");
        write(path);
        endLine();
        return nullptr;
    }
    if (file->sampleRate != params.getSampleRate()) {
        file.reset();
        write("[ERROR]:");
        write(path);
        write(" has an incorrect sample rate");
        endLine();
        return nullptr;
    }
    return file.release();
}

void VXLandmarkExtract::setupFFT()
{
    const DefaultFloatingPoint environment;
    fftReady = false;
    const auto samples = static_cast<std::int32_t>((params.getFftSize() + 4u) & ~1u);
    fftInput.resize(samples, 1, 1);
    fftOutput.resize(samples, 1, 1);
    // A provider that cannot serve this length delivers nothing, which then is silence. What
    // fftInput holds stays: prune may follow.
    std::fill(fftOutput.data, fftOutput.data + samples, 0.0f);

    if (fftState != nullptr) vxaccelerate::transform::FFTFree(fftState);
    fftState = nullptr;
    unsigned int bufferBytes = 0;
    const auto order =
        static_cast<unsigned int>(std::log2(static_cast<float>(params.getFftSize())));
    vxaccelerate::transform::FFTInit(&fftState, order);
    vxaccelerate::transform::FFTGetBufSize(fftState, &bufferBytes);
    fftBuffer.resize(static_cast<std::int32_t>(bufferBytes), 1, 1);
    fftReady = true;
}

std::int32_t VXLandmarkExtract::binCount() const
{
    return static_cast<std::int32_t>(params.getFftSize() / 2u);
}

float VXLandmarkExtract::dB(float magnitude)
{
    const DefaultFloatingPoint environment;
    const volatile float given = magnitude;
    const volatile float level = levelOf(given);
    return level;
}

bool VXLandmarkExtract::sortByAmplitudeComparitor(Peak* left, Peak* right)
{
    return left->amplitude > right->amplitude;
}

void VXLandmarkExtract::smooth(array<float>& envelope)
{
    const std::int32_t count = envelope.count();
    if (count < 2) return;
    const DefaultFloatingPoint environment;

    // All maxima are found before the first one raises its surroundings.
    std::vector<Peak> maxima;
    for (std::int32_t c = 1; c < count; ++c) {
        const float level = envelope.data[c];
        // Past the end it is infinitely quiet, so that the last element can be a maximum.
        const float right =
            c + 1 < count ? envelope.data[c + 1] : -std::numeric_limits<float>::infinity();
        if (level > envelope.data[c - 1] && level > right) maxima.push_back({c, level, 0});
    }
    if (maxima.empty()) return;
    const Mask mask(maskShape);
    for (const Peak& peak : maxima) {
        mask.raise(envelope.data, count, peak.frequency, peak.amplitude);
    }
}

// Moves the frame on by one hop. Where a hop is longer than the transform, the newest samples of
// the block make the frame, so that a frame always ends with the last sample of its hop.
void VXLandmarkExtract::slide(SlidingFrame& sliding, VXInput* input, bool read) const
{
    const std::size_t fftSize = params.getFftSize();
    const std::size_t hopSize = params.getHopSize();
    array<float>& block = sliding.block;
    array<float>& frame = sliding.frame;
    std::fill(block.data, block.data + hopSize, 0.0f);
    if (read) input->read_mono(block);
    if (block.data == nullptr ||
        static_cast<std::int64_t>(block.count()) != static_cast<std::int64_t>(hopSize)) {
        // The source has resized the block: what fits is taken and the rest is silence. A resize
        // that ran out of memory leaves dimensions without elements.
        const array<float> given = block.data == nullptr ? array<float>() : block;
        block.resize(static_cast<std::int32_t>(hopSize), 1, 1);
        std::fill(block.data, block.data + hopSize, 0.0f);
        const auto filled = static_cast<std::size_t>(std::max(given.count(), 0));
        std::copy(given.data, given.data + std::min(filled, hopSize), block.data);
    }

    const std::size_t taken = std::min(hopSize, fftSize);
    const float* newest = block.data + (hopSize - taken);
    const bool isSilence = areZero(newest, taken);
    if (isSilence && sliding.isSilent()) return;
    sliding.silentSamples = isSilence ? sliding.silentSamples + taken : 0;
    std::copy(frame.data + taken, frame.data + fftSize, frame.data);
    std::copy(newest, newest + taken, frame.data + (fftSize - taken));
}

// Leaves the powers of the frame in `spectrum`. The samples are not windowed: the keys of every
// recording rest on the raw spectrum. Silence has a known one.
void VXLandmarkExtract::analyse(const SlidingFrame& sliding, Spectrum& spectrum)
{
    spectrum.isAnalysed = true;
    if (sliding.isSilent()) {
        if (!spectrum.isSilent) std::fill(spectrum.powers.begin(), spectrum.powers.end(), 0.0f);
        spectrum.isSilent = true;
        return;
    }
    vxaccelerate::transform::FFTFwd(sliding.frame.data, fftOutput.data, fftState, fftBuffer.data);
    powersOf(fftOutput.data, spectrum.powers.data(), spectrum.greatest.data(),
             static_cast<std::ptrdiff_t>(spectrum.powers.size()));
    spectrum.isSilent = false;
}

void VXLandmarkExtract::computeInitialThreshold(array<float>& threshold, VXInput* input)
{
    if (!fftReady || input == nullptr) return;
    const DefaultFloatingPoint environment;
    SlidingFrame sliding(params);
    Spectrum spectrum(static_cast<std::size_t>(binCount()));
    const std::int32_t count = std::min(binCount(), threshold.count());
    {
        const LatestFrame latest(spectrum, &Spectrum::magnitudeAt, fftInput);
        for (std::uint32_t opening = 0; opening < params.initialFrames; ++opening) {
            slide(sliding, input, true);
            analyse(sliding, spectrum);
            for (std::int32_t k = 0; k < count; ++k) {
                const float magnitude = spectrum.magnitudeAt(static_cast<std::size_t>(k));
                if (threshold.data[k] < magnitude) threshold.data[k] = magnitude;
            }
        }
    }
    std::fill(fftInput.data, fftInput.data + fftInput.count(), 0.0f);
    for (std::int32_t k = 0; k < threshold.count(); ++k) {
        threshold.data[k] = levelOf(threshold.data[k]);
    }
}

std::uint32_t VXLandmarkExtract::countFrames(std::uint32_t samples) const
{
    const auto hop = static_cast<double>(params.getHopSize());
    const double count = std::floor(static_cast<double>(samples) / hop) +
                         std::ceil(static_cast<double>(params.getFftSize()) / hop) - 1.0;
    if (count > static_cast<double>(std::numeric_limits<std::uint32_t>::max())) {
        throw std::length_error("VXLandmarkExtract::findFreqPeaks(): Too many frames");
    }
    return static_cast<std::uint32_t>(count);
}

// A bell that is 0 at distance 0 and sinks to -maskHeight: a peak masks at its own level at its own
// bin and at most maskHeight below it elsewhere.
void VXLandmarkExtract::fillMaskShape()
{
    maskShape.resize(static_cast<std::size_t>(binCount()));
    for (std::size_t i = 0; i < maskShape.size(); ++i) {
        const float deviations = static_cast<float>(i) / params.maskWidth;
        const float square = deviations * deviations;
        const float bell = exponential(square * -0.5f) * params.maskHeight;
        maskShape[i] = bell - params.maskHeight;
    }
}

void VXLandmarkExtract::findFreqPeaks(VXInput* input)
{
    if (!fftReady || input == nullptr) return;
    const DefaultFloatingPoint environment;
    const std::uint32_t frameCount = countFrames(input->getFrames());
    if (params.initialFrames > frameCount) return;

    const std::int32_t bins = binCount();
    SlidingFrame sliding(params);
    array<float> threshold(bins);
    std::fill(threshold.data, threshold.data + bins, 0.0f);
    fillMaskShape();
    computeInitialThreshold(threshold, input);
    smooth(threshold);
    input->rewind();

    const Mask mask(maskShape);
    Spectrum spectrum(static_cast<std::size_t>(bins));
    frames->reserve(frameCount);
    const LatestFrame latest(spectrum, &Spectrum::levelAt, fftInput);
    bool isFlat = areEqual(threshold);
    for (std::uint32_t f = 0; f < frameCount; ++f) {
        // The last frame reads nothing: it is the frame before it with silence behind.
        slide(sliding, input, f < frameCount - 1);
        analyse(sliding, spectrum);
        if (spectrum.isSilent && isFlat) {
            // Silence is as far above a flat threshold at one bin as at the next.
            spectrum.clearMarks();
        } else {
            spectrum.markPeaks(threshold);
        }
        addPeaks(spectrum, mask, threshold, static_cast<std::int32_t>(f));
        isFlat = isFlat && frames->back()->empty();
        lowerBy(threshold.data, params.thresholdDecay, bins);
    }
    removeBelowFloor(
        std::sqrt(*std::max_element(spectrum.greatest.begin(), spectrum.greatest.end())));
}

// Appends the list of one frame: the strict local maxima of the excess that stand above the
// threshold as the louder ones of them have raised it.
void VXLandmarkExtract::addPeaks(Spectrum& spectrum, const Mask& mask, array<float>& threshold,
                                 std::int32_t time)
{
    auto list = std::make_unique<std::vector<Peak*>>();
    frames->push_back(list.get());
    std::vector<Peak*>& peaks = *list.release();

    std::vector<Peak>& candidates = spectrum.candidates;
    candidates.clear();
    const auto excessAt = [&spectrum, &threshold](std::size_t bin) {
        return spectrum.levelAt(bin) - threshold.data[bin];
    };
    const auto addCandidate = [&](std::size_t bin) {
        const float level = spectrum.levelAt(bin);
        // The threshold only rises within a frame, so what does not exceed it now never will.
        if (!(level > threshold.data[bin])) return;
        const float excess = level - threshold.data[bin];
        if (!(excess > excessAt(bin - 1) && excess > excessAt(bin + 1))) return;
        candidates.push_back({static_cast<std::int32_t>(bin), level, time});
    };
    for (std::size_t first = 0; first < spectrum.marks.size(); first += Spectrum::markGroup) {
        std::uint64_t group;
        std::memcpy(&group, spectrum.marks.data() + first, sizeof(group));
        if (group == 0) continue;
        for (std::size_t bin = first; bin < first + Spectrum::markGroup; ++bin) {
            if (spectrum.marks[bin] != 0) addCandidate(bin);
        }
    }
    // Of equal levels the lower bin comes first.
    std::sort(candidates.begin(), candidates.end(), [](const Peak& left, const Peak& right) {
        if (left.amplitude != right.amplitude) return left.amplitude > right.amplitude;
        return left.frequency < right.frequency;
    });

    peaks.reserve(std::min<std::size_t>(candidates.size(), params.maxPeaksPerFrame));
    for (const Peak& candidate : candidates) {
        if (peaks.size() >= params.maxPeaksPerFrame) break;
        if (!(candidate.amplitude > threshold.data[candidate.frequency])) continue;
        auto peak = std::make_unique<Peak>(candidate);
        peaks.push_back(peak.get());
        peak.release();
        mask.raise(threshold.data, threshold.count(), candidate.frequency, candidate.amplitude);
    }
}

// Peaks far below the loudest bin of the whole recording go, also those that raised the threshold
// meanwhile. The lists stay.
void VXLandmarkExtract::removeBelowFloor(float maxMagnitude)
{
    const float maxLevel = levelOf(maxMagnitude);
    for (std::vector<Peak*>* peaks : *frames) {
        const auto isBelow = [this, maxLevel](Peak* peak) {
            if (!(peak->amplitude - maxLevel < params.peakFloor)) return false;
            delete peak;
            return true;
        };
        peaks->erase(std::remove_if(peaks->begin(), peaks->end(), isBelow), peaks->end());
    }
}

void VXLandmarkExtract::prune()
{
    if (!fftReady || frames == nullptr || frames->empty()) return;
    const DefaultFloatingPoint environment;
    const std::int32_t bins = binCount();
    array<float> threshold(bins);
    std::copy(fftInput.data, fftInput.data + bins, threshold.data);
    smooth(threshold);

    const Mask mask(maskShape);
    for (auto list = frames->rbegin(); list != frames->rend(); ++list) {
        const auto isMasked = [&mask, &threshold](Peak* peak) {
            if (peak->frequency < 0 || peak->frequency >= threshold.count()) return false;
            // Strictly below goes, equal stays: in the last frame an unmasked peak is itself the
            // threshold, and would go with a test as strict as that of the forward pass.
            if (peak->amplitude < threshold.data[peak->frequency]) {
                delete peak;
                return true;
            }
            mask.raise(threshold.data, threshold.count(), peak->frequency, peak->amplitude);
            return false;
        };
        std::vector<Peak*>& peaks = **list;
        peaks.erase(std::remove_if(peaks.begin(), peaks.end(), isMasked), peaks.end());
        for (std::int32_t k = 0; k < bins; ++k)
            threshold.data[k] -= params.thresholdDecay;
    }
}

void VXLandmarkExtract::combine(VXFile* file)
{
    if (file == nullptr || frames == nullptr) return;
    std::vector<Peak*> neighbours;
    for (std::vector<Peak*>* peaks : *frames) {
        sortByAmplitude(*peaks);
        for (Peak* anchor : *peaks) {
            neighbours.clear();
            findNeighborPeaks(anchor, neighbours);
            for (const Peak* neighbour : neighbours) {
                const std::uint32_t key = VXLandmark::packKey(
                    anchor->frequency, neighbour->frequency, neighbour->time - anchor->time);
                file->addLandmark(new VXLandmark(anchor->time, file, key));
            }
        }
    }
}

void VXLandmarkExtract::findNeighborPeaks(Peak* anchor, std::vector<Peak*>& neighbours)
{
    if (anchor == nullptr || frames == nullptr || frames->empty()) return;
    const auto count = static_cast<std::int64_t>(frames->size());
    const std::int64_t t = anchor->time;
    const std::int64_t reach = t + static_cast<std::int64_t>(params.timeRange);
    const std::int64_t lastFrame = reach < count ? reach : count - 1;
    // Signed and wide: formed unsigned, the bounds of a low anchor would shut it out itself.
    const std::int64_t range = params.frequencyRange;
    const std::int64_t highBin =
        std::min<std::int64_t>(params.getFftSize() / 2u, anchor->frequency + range);
    const std::int64_t lowBin = std::max<std::int64_t>(anchor->frequency - range, 0);
    const std::uint64_t limit = params.getMaxPairsPerPeak();

    std::uint64_t found = 0;
    for (std::int64_t g = std::max<std::int64_t>(t, 0); g <= lastFrame; ++g) {
        for (Peak* candidate : *(*frames)[static_cast<std::size_t>(g)]) {
            // Looks at the anchor's own bin, so it never rejects a peak of a recording. Testing the
            // candidate instead would give other keys, and landmarks made before and after the
            // change would no longer meet.
            if (anchor->frequency < lowBin || anchor->frequency > highBin) continue;
            if (candidate == anchor) continue;
            neighbours.push_back(candidate);
            ++found;
            // Tested after the append: an anchor has one neighbour more than the limit says.
            if (found > limit) return;
        }
    }
}

void VXLandmarkExtract::printPeaks()
{
    if (frames == nullptr) return;
    for (std::size_t f = 0; f < frames->size(); ++f) {
        std::vector<Peak*>& peaks = *(*frames)[f];
        if (!peaks.empty()) {
            write("FRAME: ");
            write(std::to_string(f));
            endLine();
        }
        sortByAmplitude(peaks);
        for (Peak* peak : peaks)
            peak->print();
    }
}

} // namespace VXS
