#ifndef PROPERTY_EXTRACTION_H
#define PROPERTY_EXTRACTION_H

#include <cstdint>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Random.h"
#include "VXLandmarkExtract.h"
#include "plain/Extractor.h"

namespace property
{

using Samples = std::vector<float>;

// One row of samples for both: what it claims need not be what it has. With a block size of its own
// a source resizes every block that it is given.
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

VXS::VXExtractParams toLibrary(const plain::Parameters& parameters);
// Every field from the ordinary to the odd: hops below, at and above the transform, limits of 0,
// masks turned upside down, a threshold that rises.
plain::Parameters anyParameters(Random& random);
std::string describe(const plain::Parameters& parameters);

// Sound with many peaks: tones that come and go over noise of changing loudness.
Samples sound(Random& random, std::size_t count);
constexpr int hostileKinds = 20;
// Input that no recorder delivers, or that leaves nothing to find.
Samples hostileSound(Random& random, int kind, std::size_t count);

using PeakTable = std::vector<std::vector<plain::Peak>>;
PeakTable peaksOf(const VXS::VXLandmarkExtract& extractor);
testing::AssertionResult samePeaks(const PeakTable& library, const PeakTable& twin);
// Landmarks by frame, in their order within it.
testing::AssertionResult sameLandmarks(VXS::VXFile& library, const plain::Recording& twin);

// Runs both on the samples, stage by stage and as a whole, and compares what each stage leaves.
void compareExtraction(const plain::Parameters& parameters, const Samples& samples,
                       std::uint32_t claim);
void compareExtraction(const plain::Parameters& parameters, const Samples& samples);

// Paths of the example recordings, in order of name.
std::vector<std::string> exampleRecordings();

} // namespace property

#endif
