#include "match/LandmarkFiles.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <stdexcept>

#include <vxl_audio/VXExtractParams.h>
#include <vxl_audio/VXFile.h>
#include <vxl_audio/VXLandmarkExtract.h>

#include "running/Parallel.h"

namespace vxlsync
{

namespace
{

// Hands the library a recording's samples and ends the extraction if the job is to end.
class SampleInput final : public VXS::VXInput
{
public:
    SampleInput(const SampleStore<float>& newSamples, const Interrupt& newInterrupt)
        : samples(newSamples), interrupt(newInterrupt)
    {
    }

    unsigned int getFrames() override { return static_cast<unsigned int>(samples.size()); }

    bool read_mono(VXS::array<float>& block) override
    {
        isAsking = true;
        interrupt.check();
        isAsking = false;
        const auto wanted = static_cast<std::size_t>(block.count());
        const std::size_t count = std::min(wanted, samples.size() - position);
        samples.copy(position, count, block.data);
        std::fill(block.data + count, block.data + wanted, 0.0f);
        position += count;
        return true;
    }

    bool rewind() override
    {
        position = 0;
        return true;
    }

    // True if what ends the extraction comes from the host.
    bool isInterrupted() const { return isAsking; }

private:
    const SampleStore<float>& samples;
    const Interrupt& interrupt;
    bool isAsking = false;
    std::size_t position = 0;
};

LandmarkFile extract(const SampleStore<float>& samples, std::int64_t id, const Interrupt& interrupt)
{
    SampleInput input(samples, interrupt);
    try {
        VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};
        return LandmarkFile(extractor.run(&input, id));
    } catch (const std::runtime_error&) {
        if (input.isInterrupted()) throw;
        // The library's own word for it.
        throw std::bad_alloc();
    }
}

} // namespace

void DeleteLandmarkFile::operator()(VXS::VXFile* file) const
{
    delete file;
}

std::vector<LandmarkFile> extractLandmarks(const std::vector<Recording>& recordings, Run& run)
{
    std::vector<LandmarkFile> files(recordings.size());
    runParallel(recordings.size(), run.threads, [&](std::size_t index, std::size_t) {
        const SampleStore<float>& samples = recordings[index].samples;
        // The library counts its files from 1.
        const auto id = static_cast<std::int64_t>(index) + 1;
        if (samples.size() > 0) files[index] = extract(samples, id, run.interrupt);
        run.meter.step();
    });
    return files;
}

} // namespace vxlsync
