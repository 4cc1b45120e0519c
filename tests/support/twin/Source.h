#ifndef VXS_TESTS_SUPPORT_TWIN_SOURCE_H
#define VXS_TESTS_SUPPORT_TWIN_SOURCE_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "plain/Source.h"

namespace twins
{

// Samples in memory for the twin, as signals::SignalInput delivers them to the library. What a
// source claims need not be what it has, and of a block size other than 0 every block becomes that
// long.
class Source : public plain::Source
{
public:
    Source(const std::vector<float>& newSamples, std::uint32_t newClaim,
           std::size_t newBlockSize = 0)
        : samples(newSamples), claim(newClaim), blockSize(newBlockSize)
    {
    }

    std::uint32_t frames() override { return claim; }
    void read(std::vector<float>& block) override
    {
        if (blockSize > 0) block.assign(blockSize, 0.0f);
        for (std::size_t i = 0; i < block.size() && position < samples.size(); ++i)
            block[i] = samples[position++];
    }
    void rewind() override
    {
        if (rewinds) position = 0;
    }

    // False of a source that goes on where it stands instead of beginning anew.
    bool rewinds = true;

private:
    const std::vector<float>& samples;
    std::uint32_t claim;
    std::size_t blockSize;
    std::size_t position = 0;
};

} // namespace twins

#endif
