#include "VXLandmarkExtract.h"

#include <cmath>
#include <cstddef>
#include <exception>
#include <iostream>
#include <memory>

#include "VXFile.h"
#include "VXFileSet.h"
#include "VXLandmark.h"
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

float magnitudeOf(const float* bin)
{
    const float real = bin[0] * bin[0];
    const float imaginary = bin[1] * bin[1];
    return std::sqrt(real + imaginary);
}

float levelOf(float magnitude)
{
    // The addend is the level of digital silence, about -313 dB, and spares the logarithm its
    // infinity.
    const float shifted = magnitude + 2.2204e-16f;
    const float natural = std::log(shifted);
    const float decades = natural / 2.3025851f;
    return decades * 20.0f;
}

std::string extensionOf(const std::string& path)
{
    const std::size_t dot = path.rfind('.');
    return dot == std::string::npos ? std::string() : path.substr(dot + 1);
}

std::string shortNameOf(const std::string& path)
{
    const std::size_t slash = path.rfind('/');
    const std::string base = slash == std::string::npos ? path : path.substr(slash + 1);
    const std::size_t dot = base.rfind('.');
    return dot == std::string::npos ? std::string() : base.substr(0, dot);
}

} // namespace

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
    return file == nullptr || file->read_mono<float>(block);
}

bool WavInput::rewind()
{
    if (file != nullptr) file->rewind();
    return true;
}

void Peak::print()
{
    std::cout << "f: " << frequency << " a: " << amplitude << " t:" << time << std::endl;
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
        std::cout << "STARTING: " << kept[i] << " (id " << id << ")\n";
        files[i].reset(run(kept[i], id));
        std::cout << "FEATURE EXTRACTION COMPLETE: " << kept[i] << std::endl;
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
        std::cout << "[ERROR]: Could not load: " << path << std::endl;
        return nullptr;
    }
    if (file->sampleRate != params.getSampleRate()) {
        file.reset();
        std::cout << "[ERROR]:" << path << " has an incorrect sample rate" << std::endl;
        return nullptr;
    }
    return file.release();
}

void VXLandmarkExtract::setupFFT()
{
    fftReady = false;
    const auto samples = static_cast<std::int32_t>((params.getFftSize() + 4u) & ~1u);
    fftInput.resize(samples, 1, 1);
    fftOutput.resize(samples, 1, 1);
    // The transform leaves the last floats alone, and the whole array is copied.
    std::fill(fftInput.data, fftInput.data + samples, 0.0f);
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
    return levelOf(magnitude);
}

bool VXLandmarkExtract::sortByAmplitudeComparitor(Peak* left, Peak* right)
{
    return left->amplitude > right->amplitude;
}

void VXLandmarkExtract::smooth(array<float>& envelope)
{
    const std::int32_t count = envelope.count();
    if (count < 2) return;

    // All maxima are found before the first one raises its surroundings.
    std::vector<Peak> maxima;
    for (std::int32_t c = 1; c < count; ++c) {
        const float level = envelope.data[c];
        // Past the end it is infinitely quiet, so that the last element can be a maximum.
        const float right =
            c + 1 < count ? envelope.data[c + 1] : -std::numeric_limits<float>::infinity();
        if (level > envelope.data[c - 1] && level > right) maxima.push_back({c, level, 0});
    }
    for (const Peak& peak : maxima) {
        raiseByMask(envelope.data, count, peak.frequency, peak.amplitude);
    }
}

// Distances that the mask does not reach raise nothing.
void VXLandmarkExtract::raiseByMask(float* levels, std::int32_t count, std::int32_t center,
                                    float amplitude) const
{
    const auto reach = static_cast<std::int64_t>(maskShape.size());
    const auto first = static_cast<std::int32_t>(std::max<std::int64_t>(0, center - reach + 1));
    const auto end = static_cast<std::int32_t>(std::min<std::int64_t>(count, center + reach));
    for (std::int32_t k = first; k < end; ++k) {
        const float raised = amplitude + maskShape[static_cast<std::size_t>(std::abs(k - center))];
        levels[k] = raised < levels[k] ? levels[k] : raised;
    }
}

// Moves the frame on by one hop. Where a hop is longer than the transform, the newest samples of
// the block make the frame, so that a frame always ends with the last sample of its hop.
void VXLandmarkExtract::slideFrame(array<float>& block, array<float>& frame, VXInput* input,
                                   bool read)
{
    const std::size_t fftSize = params.getFftSize();
    const std::size_t hopSize = params.getHopSize();
    std::fill(block.data, block.data + hopSize, 0.0f);
    if (read) input->read_mono(block);
    if (static_cast<std::int64_t>(block.count()) != static_cast<std::int64_t>(hopSize)) {
        // The source has resized the block: what fits is taken and the rest is silence.
        const array<float> given(block);
        block.resize(static_cast<std::int32_t>(hopSize), 1, 1);
        std::fill(block.data, block.data + hopSize, 0.0f);
        const auto filled = static_cast<std::size_t>(std::max(given.count(), 0));
        std::copy(given.data, given.data + std::min(filled, hopSize), block.data);
    }

    const std::size_t taken = std::min(hopSize, fftSize);
    std::copy(frame.data + taken, frame.data + fftSize, frame.data);
    std::copy(block.data + (hopSize - taken), block.data + hopSize, frame.data + (fftSize - taken));
}

// Leaves the spectrum in fftOutput and in fftInput. The samples are not windowed: the keys of every
// recording rest on the raw spectrum.
void VXLandmarkExtract::transformFrame(const array<float>& frame)
{
    std::copy(frame.data, frame.data + params.getFftSize(), fftInput.data);
    vxaccelerate::transform::FFTFwd(fftInput.data, fftOutput.data, fftState, fftBuffer.data);
    fftInput.resize(fftOutput.dim0, fftOutput.dim1, fftOutput.dim2);
    std::copy(fftOutput.data, fftOutput.data + fftOutput.count(), fftInput.data);
}

void VXLandmarkExtract::computeInitialThreshold(array<float>& threshold, VXInput* input)
{
    if (!fftReady || input == nullptr) return;
    array<float> block(static_cast<std::int32_t>(params.getHopSize()));
    array<float> frame(static_cast<std::int32_t>(params.getFftSize()));
    std::fill(frame.data, frame.data + frame.count(), 0.0f);

    const std::int32_t count = std::min(binCount(), threshold.count());
    for (std::uint32_t opening = 0; opening < params.initialFrames; ++opening) {
        slideFrame(block, frame, input, true);
        transformFrame(frame);
        for (std::int32_t k = 0; k < count; ++k) {
            const float magnitude = magnitudeOf(fftOutput.data + 2 * k);
            fftInput.data[k] = magnitude;
            if (threshold.data[k] < magnitude) threshold.data[k] = magnitude;
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
// bin and at least maskHeight below it elsewhere.
void VXLandmarkExtract::fillMaskShape()
{
    maskShape.resize(static_cast<std::size_t>(binCount()));
    for (std::size_t i = 0; i < maskShape.size(); ++i) {
        const float deviations = static_cast<float>(i) / params.maskWidth;
        const float square = deviations * deviations;
        const float bell = std::exp(square * -0.5f) * params.maskHeight;
        maskShape[i] = bell - params.maskHeight;
    }
}

void VXLandmarkExtract::findFreqPeaks(VXInput* input)
{
    if (!fftReady || input == nullptr) return;
    const std::uint32_t frameCount = countFrames(input->getFrames());
    if (params.initialFrames > frameCount) return;

    const std::int32_t bins = binCount();
    array<float> block(static_cast<std::int32_t>(params.getHopSize()));
    array<float> frame(static_cast<std::int32_t>(params.getFftSize()));
    array<float> threshold(bins);
    std::fill(frame.data, frame.data + frame.count(), 0.0f);
    std::fill(threshold.data, threshold.data + bins, 0.0f);
    fillMaskShape();
    computeInitialThreshold(threshold, input);
    smooth(threshold);
    input->rewind();

    std::vector<float> excess(static_cast<std::size_t>(bins));
    float maxMagnitude = 0.0f;
    for (std::uint32_t f = 0; f < frameCount; ++f) {
        // The last frame reads nothing: it is the frame before it with silence behind.
        slideFrame(block, frame, input, f < frameCount - 1);
        transformFrame(frame);
        for (std::int32_t i = 0; i < bins; ++i) {
            const float magnitude = magnitudeOf(fftOutput.data + 2 * i);
            if (magnitude >= maxMagnitude) maxMagnitude = magnitude;
            const float level = levelOf(magnitude);
            fftInput.data[i] = level;
            excess[static_cast<std::size_t>(i)] = level - threshold.data[i];
        }
        addPeaks(excess, threshold, static_cast<std::int32_t>(f));
        for (std::int32_t k = 0; k < bins; ++k)
            threshold.data[k] -= params.thresholdDecay;
    }
    removeBelowFloor(maxMagnitude);
}

// Appends the list of one frame: the strict local maxima of the excess that stand above the
// threshold as the louder ones of them have raised it.
void VXLandmarkExtract::addPeaks(const std::vector<float>& excess, array<float>& threshold,
                                 std::int32_t time)
{
    frames->push_back(nullptr);
    frames->back() = new std::vector<Peak*>();
    std::vector<Peak*>& peaks = *frames->back();

    std::vector<Peak> candidates;
    for (std::size_t i = 1; i + 1 < excess.size(); ++i) {
        if (!(excess[i] > excess[i - 1] && excess[i] > excess[i + 1])) continue;
        // The threshold only rises within a frame, so what does not exceed it now never will.
        if (!(fftInput.data[i] > threshold.data[i])) continue;
        candidates.push_back({static_cast<std::int32_t>(i), fftInput.data[i], time});
    }
    // Stable: of equal levels the lower bin stays first.
    std::stable_sort(candidates.begin(), candidates.end(), [](const Peak& left, const Peak& right) {
        return left.amplitude > right.amplitude;
    });

    for (const Peak& candidate : candidates) {
        if (peaks.size() >= params.maxPeaksPerFrame) break;
        if (!(candidate.amplitude > threshold.data[candidate.frequency])) continue;
        auto peak = std::make_unique<Peak>(candidate);
        peaks.push_back(peak.get());
        raiseByMask(threshold.data, threshold.count(), peak->frequency, peak->amplitude);
        peak.release();
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
    const std::int32_t bins = binCount();
    array<float> threshold(bins);
    std::copy(fftInput.data, fftInput.data + bins, threshold.data);
    smooth(threshold);

    for (auto list = frames->rbegin(); list != frames->rend(); ++list) {
        const auto isMasked = [this, &threshold](Peak* peak) {
            if (peak->frequency < 0 || peak->frequency >= threshold.count()) return false;
            // Strictly below goes, equal stays: in the last frame an unmasked peak is itself the
            // threshold, and would go with a test as strict as that of the forward pass.
            if (peak->amplitude < threshold.data[peak->frequency]) {
                delete peak;
                return true;
            }
            raiseByMask(threshold.data, threshold.count(), peak->frequency, peak->amplitude);
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
        if (!peaks.empty()) std::cout << "FRAME: " << f << std::endl;
        sortByAmplitude(peaks);
        for (Peak* peak : peaks)
            peak->print();
    }
}

} // namespace VXS
