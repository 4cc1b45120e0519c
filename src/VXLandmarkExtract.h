#ifndef VXS_VXLANDMARKEXTRACT_H
#define VXS_VXLANDMARKEXTRACT_H

#include <algorithm>
#include <cstdint>
#include <limits>
#include <new>
#include <stdexcept>
#include <string>
#include <vector>

#include "VXExport.h"
#include "VXExtractParams.h"

namespace vxaccelerate
{
struct FFTState_Float;
}

namespace VXS
{

class VXFile;
class VXFileSet;
class wavfile_t;

// A buffer of signal data: a flat block of elements with three dimensions, of which the library
// uses one. It owns its block unless `alias` is true. No operation initialises new elements, and
// nothing checks bounds.
template <typename T>
class array
{
public:
    array() = default;

    // A number alone does not convert: assigning one would mean to drop the block.
    explicit array(std::int32_t newDim0) : array(newDim0, 1, 1) {}

    array(std::int32_t newDim0, std::int32_t newDim1, std::int32_t newDim2)
        : dim0(newDim0), dim1(newDim1), dim2(newDim2)
    {
        if (count() != 0) data = allocate(count());
    }

    // A copy always owns its block, also that of an alias. Throws std::runtime_error if memory runs
    // out.
    array(const array& other) : dim0(other.dim0), dim1(other.dim1), dim2(other.dim2)
    {
        try {
            data = allocate(count());
        } catch (const std::bad_alloc&) {
            throw std::runtime_error("array::array(): Error allocating memory");
        }
        copyFrom(other);
    }

    ~array()
    {
        if (!alias) delete[] data;
    }

    // Throws what resize throws.
    array& operator=(const array& other)
    {
        if (this == &other) return *this;
        resize(other.dim0, other.dim1, other.dim2);
        copyFrom(other);
        return *this;
    }

    // Keeps the block if the dimensions are the same; otherwise the contents are lost, also where
    // the number of elements stays. Throws std::runtime_error for an alias array of other
    // dimensions and if memory runs out.
    void resize(std::int32_t newDim0, std::int32_t newDim1, std::int32_t newDim2)
    {
        const bool same = dim0 == newDim0 && dim1 == newDim1 && dim2 == newDim2;
        // Dimensions without a block are what a failed allocation leaves; they are tried again.
        if (same && (data != nullptr || count() == 0)) return;
        if (alias) throw std::runtime_error("array::resize(): Cannot resize alias array");
        dim0 = newDim0;
        dim1 = newDim1;
        dim2 = newDim2;
        delete[] data;
        data = nullptr;
        try {
            data = allocate(count());
        } catch (const std::bad_alloc&) {
            throw std::runtime_error("array::resize(): Error allocating memory");
        }
    }

    // Elements: the product of the dimensions in 32 bits.
    std::int32_t count() const
    {
        return static_cast<std::int32_t>(static_cast<std::uint32_t>(dim0) *
                                         static_cast<std::uint32_t>(dim1) *
                                         static_cast<std::uint32_t>(dim2));
    }

    T* data = nullptr;
    std::int32_t dim0 = 0;
    std::int32_t dim1 = 0;
    std::int32_t dim2 = 0;
    bool alias = false;

private:
    // A product that went negative asks for more than there can be, so that it fails.
    static T* allocate(std::int32_t elements)
    {
        if (elements < 0) throw std::bad_alloc();
        return new T[static_cast<std::size_t>(elements)];
    }

    void copyFrom(const array& other)
    {
        if (count() > 0) std::copy(other.data, other.data + other.count(), data);
    }
};

// A source of samples. A host derives its own to feed audio that is not in a WAV file. Samples are
// floats of one channel, full scale being -1.0 to 1.0, at the rate that the extractor's parameters
// name. The library calls a source on the thread that called run, never deletes it, and ignores the
// results of the last two operations. What a source throws passes through run. It is called in the
// default floating-point environment, and leaves it so.
class VXS_API VXInput
{
public:
    // Samples in the source.
    virtual unsigned int getFrames() = 0;
    // Fills block.data[0] to block.data[block.dim0 - 1] with the next samples. What is not written
    // at the end of the source is heard as silence.
    virtual bool read_mono(array<float>& block) = 0;
    // Back to the first sample.
    virtual bool rewind() = 0;

protected:
    ~VXInput() = default;
};

// The samples of a WAV file: its first channel, 8-bit (taken as signed), 16-bit or 32-bit float.
class VXS_API WavInput : public VXInput
{
public:
    // Takes ownership of what VXLandmarkExtract::loadFile returned.
    explicit WavInput(wavfile_t* newFile);
    ~WavInput();
    WavInput(const WavInput&) = delete;
    WavInput& operator=(const WavInput&) = delete;

    unsigned int getFrames() override;
    bool read_mono(array<float>& block) override;
    bool rewind() override;

private:
    wavfile_t* file;
};

// One spectral peak: a bin that stands out of its frame.
struct Peak {
    // Writes the peak to standard output, on a line of its own.
    VXS_INTERNAL void print();

    // Bin, from 0.
    std::int32_t frequency;
    // Level in dB.
    float amplitude;
    // Frame, from 0.
    std::int32_t time;
};

// Turns recordings into landmarks. A recording is cut into frames; the peaks of each frame's
// spectrum are picked against a masking threshold that runs forward in time and then backward, and
// each peak that is left is paired with the peaks that follow it. The method is that of
// fingerprinting by landmarks (A. Wang, "An Industrial-Strength Audio Search Algorithm", ISMIR
// 2003) with a decaying, spreading threshold for the choice of the peaks.
//
// Time is counted in frames, frequency in bins, levels in dB. Frames are not windowed. An extractor
// serves one thread at a time and any number of recordings one after the other; separate extractors
// may run on separate threads at once. An exception leaves it usable for the next run. No result
// and no line depends on what the host has set for its process or thread: floating-point
// environment, locale, default memory resource, format of the standard output.
//
// Hosts call runAll or run. The operations that follow them are the stages that run consists of,
// for hosts that need one of them alone; called out of order they do nothing.
class VXLandmarkExtract
{
public:
    // Takes a copy of the parameters, which convert: they are all that makes an extractor.
    VXS_API VXLandmarkExtract(VXExtractParams newParams);
    VXS_API ~VXLandmarkExtract();
    VXLandmarkExtract(const VXLandmarkExtract&) = delete;
    VXLandmarkExtract& operator=(const VXLandmarkExtract&) = delete;

    // Extracts the WAV files among `paths`, those whose extension is exactly "wav", one after the
    // other, and returns them with their names in a set that the caller owns. Ids run from 1
    // through the kept paths; a file that cannot be used leaves its id unused. A name is what
    // stands between the last '/' and the extension; on Windows too, so give paths with '/' there.
    // Two lines a file go to standard output. Never null.
    VXS_API VXFileSet* runAll(const std::vector<std::string>& paths);

    // Extracts one WAV file. The caller owns the result. Null, after a line on standard output, if
    // the file cannot be read or has another sample rate than the parameters.
    VXS_API VXFile* run(std::string path, std::int64_t fileID);

    // Extracts one recording from a source, which is borrowed, must stand at its first sample and
    // must not use this extractor meanwhile. The caller owns the result, which is never null: a
    // recording too short to analyse gives a VXFile without landmarks, and so does a null source.
    // Throws std::length_error for more than 2^32 - 1 frames, std::bad_alloc or std::runtime_error
    // when memory runs out.
    VXS_API VXFile* run(VXInput* input, std::int64_t fileID);

    // Opens a WAV file, for a WavInput or for nothing but the check. The caller owns the result.
    // Null, after a line on standard output, if the file cannot be read or has another sample rate
    // than the parameters.
    VXS_API wavfile_t* loadFile(const std::string& path);

    // Sizes the buffers and creates the transform. Called again, it keeps what prune starts from.
    VXS_API void setupFFT();

    // Raises each element of `threshold`, one for each bin, to the greatest magnitude that its bin
    // reaches in the opening frames of the source, and converts it to dB. The elements must be 0
    // before. The source is left where the last read stopped. Requires: setupFFT has run.
    VXS_API void computeInitialThreshold(array<float>& threshold, VXInput* input);

    // Finds the peaks of the recording, frame by frame, under the threshold that runs forward.
    // Requires: setupFFT has run, and the source stands at its first sample.
    VXS_API void findFreqPeaks(VXInput* input);

    // Spreads each local maximum of the envelope over its surroundings by the shape of the mask.
    // Requires: findFreqPeaks has filled that shape; without it the envelope stays.
    VXS_API void smooth(array<float>& envelope);

    // Level in dB of a magnitude; -313.07 for 0.
    VXS_API float dB(float magnitude);

    // Louder first.
    VXS_API static bool sortByAmplitudeComparitor(Peak* left, Peak* right);

    // Removes the peaks that a later, louder peak masks.
    VXS_API void prune();

    // Pairs the peaks and gives the landmarks to `file`, which owns them.
    VXS_API void combine(VXFile* file);

    // Appends the peaks that the anchor pairs with. They stay the extractor's.
    VXS_API void findNeighborPeaks(Peak* anchor, std::vector<Peak*>& neighbours);

    // Writes the peaks of the latest extraction to standard output.
    VXS_API void printPeaks();

private:
    class LatestFrame;
    class Mask;
    struct SlidingFrame;
    struct Spectrum;

    void clearFrames();
    std::int32_t binCount() const;
    std::uint32_t countFrames(std::uint32_t samples) const;
    void fillMaskShape();
    void slide(SlidingFrame& sliding, VXInput* input, bool read) const;
    void analyse(const SlidingFrame& sliding, Spectrum& spectrum);
    void addPeaks(Spectrum& spectrum, const Mask& mask, array<float>& threshold, std::int32_t time);
    void removeBelowFloor(float maxMagnitude);

    // Null, or a transform state that is valid while fftReady is true.
    vxaccelerate::FFTState_Float* fftState = nullptr;
    array<unsigned char> fftBuffer;
    bool fftReady = false;
    // By bin, with room for an input of the transform: 0 when findFreqPeaks turns to its first
    // frame, and the levels of the latest one when it ends, also if it ends because the source
    // threw. prune starts from these. An opening that is cut off leaves magnitudes.
    array<float> fftInput;
    array<float> fftOutput;
    VXExtractParams params;
    // The peaks of the latest recording, one list for each frame. Owns the lists and the peaks.
    std::vector<std::vector<Peak*>*>* frames;
    // Mask in dB by distance in bins.
    std::vector<float> maskShape;
    // Nothing adds to it, and what it holds is freed with the extractor. Hosts compile in the size
    // of this class, so it stays as long as that does.
    std::vector<Peak*> spentPeaks;
};

} // namespace VXS

#endif
