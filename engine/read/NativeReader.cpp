#include <algorithm>
#include <memory>
#include <new>
#include <stdexcept>
#include <vector>

#include <vxl_audio/VXLandmarkExtract.h>
#include <vxl_audio/wavfile.h>

#include "read/Failure.h"
#include "read/InputFile.h"
#include "read/Reader.h"

namespace vxlsync
{

namespace
{

constexpr int samplesAtOnce = 4096;

bool hasWaveName(const std::string& path)
{
    const std::string extension = ".wav";
    return path.size() >= extension.size() &&
           path.compare(path.size() - extension.size(), extension.size(), extension) == 0;
}

std::unique_ptr<VXS::wavfile_t> openNative(const std::string& path)
{
    constexpr unsigned int openForReading = 8;
    try {
        return std::make_unique<VXS::wavfile_t>(path, openForReading, 1, analysisRate);
    } catch (const std::runtime_error&) {
        throw ReadFailure(failures::notWave);
    }
}

} // namespace

ReadFindings readNative(const ReadRequest& request, Intake& intake)
{
    if (!hasWaveName(request.path)) throw ReadFailure(failures::notWaveName);
    // For the reasons that the landmark library does not tell apart, and for the size.
    const std::int64_t bytes = InputFile(request.path).size();
    const std::unique_ptr<VXS::wavfile_t> file = openNative(request.path);
    if (file->sampleRate != analysisRate)
        throw ReadFailure(failures::wrongRate(file->sampleRate, analysisRate));

    intake.setRate(analysisRate);
    VXS::array<float> block(samplesAtOnce);
    std::vector<double> samples;
    // The header may claim more than there is; no sample takes less than a byte.
    auto left = std::min<std::int64_t>(file->frames, bytes / file->channels);
    while (left > 0) {
        std::fill(block.data, block.data + samplesAtOnce, 0.0f);
        file->read_mono(block);
        const auto part = std::min<std::int64_t>(left, samplesAtOnce);
        samples.assign(block.data, block.data + part);
        intake.append(samples.data(), samples.size());
        left -= part;
    }
    ReadFindings findings;
    findings.facts.stream = 1;
    findings.facts.channel = 1;
    return findings;
}

} // namespace vxlsync
