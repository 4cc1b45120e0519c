#ifndef FUZZ_SOUND_H
#define FUZZ_SOUND_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Bytes.h"
#include "VXLandmarkExtract.h"
#include "plain/Extractor.h"
#include "plain/Source.h"

namespace fuzz
{

using Samples = std::vector<float>;

// Reads a piece of sound, of a few dozen bytes at most: silence, a tone, noise, a square wave,
// levels that grow, or the bytes themselves as samples, up to what is not a number.
Samples soundOf(Bytes& bytes, std::size_t mostSamples);

// Reads parameters, from the usual ones to those that only the fields allow, not the setters.
plain::Parameters parametersOf(Bytes& bytes);

// The most samples that a source may claim with these parameters without taking too long. Peaks are
// compared with peaks and bins, so that the length alone does not tell.
std::uint32_t affordableClaim(const plain::Parameters& parameters);

// One row of samples for the library and for its twin. What it claims need not be what it has, and
// of a block size other than 0 every block becomes that long.
class LibrarySource : public VXS::VXInput
{
public:
    LibrarySource(const Samples& newSamples, std::uint32_t newClaim, std::size_t newBlockSize = 0)
        : samples(newSamples), claim(newClaim), blockSize(newBlockSize)
    {
    }

    unsigned int getFrames() override { return claim; }
    bool read_mono(VXS::array<float>& block) override;
    bool rewind() override;

private:
    const Samples& samples;
    std::uint32_t claim;
    std::size_t blockSize;
    std::size_t position = 0;
};

class PlainSource : public plain::Source
{
public:
    PlainSource(const Samples& newSamples, std::uint32_t newClaim, std::size_t newBlockSize = 0)
        : samples(newSamples), claim(newClaim), blockSize(newBlockSize)
    {
    }

    std::uint32_t frames() override { return claim; }
    void read(std::vector<float>& block) override;
    void rewind() override { position = 0; }

private:
    const Samples& samples;
    std::uint32_t claim;
    std::size_t blockSize;
    std::size_t position = 0;
};

} // namespace fuzz

#endif
