#ifndef VXL_SYNC_TESTS_READING_H
#define VXL_SYNC_TESTS_READING_H

#include <cstdlib>
#include <string>
#include <utility>
#include <vector>

#include "read/ReadWithin.h"
#include "read/Reader.h"

// What the tests of reading share.
namespace reading
{

constexpr std::size_t plenty = std::size_t{4} << 30U;

inline vxlsync::Source fileSource(const std::string& path)
{
    vxlsync::Source source;
    source.path = path;
    return source;
}

inline vxlsync::Source sampleSource(std::vector<float> samples, int rate)
{
    vxlsync::Source source;
    source.samples = std::move(samples);
    source.sampleRate = rate;
    return source;
}

inline vxlsync::Recording readSource(const vxlsync::Source& source,
                                     const vxlsync::Options& options = {},
                                     const vxlsync::ReadLimits& limits = {})
{
    vxlsync::Run run(1, plenty, {});
    return std::move(vxlsync::readWithin({source}, options, run, limits).front());
}

inline vxlsync::Recording readFile(const std::string& path, const vxlsync::Options& options = {},
                                   const vxlsync::ReadLimits& limits = {})
{
    return readSource(fileSource(path), options, limits);
}

// What one reader makes of a file by itself.
struct Direct {
    vxlsync::Recording recording;
    vxlsync::ReadFindings findings;
};

template <typename Reader>
Direct readWith(Reader&& reader, const std::string& path, const vxlsync::Options& options = {},
                bool bytesAsSigned = false)
{
    Direct result;
    vxlsync::Run run(1, plenty, {});
    const vxlsync::ReadLimits limits;
    vxlsync::Intake intake(result.recording, run, limits);
    result.findings = reader({path, options, limits, run.interrupt, bytesAsSigned}, intake);
    intake.finish();
    return result;
}

template <typename Stored>
std::vector<float> allOf(const vxlsync::SampleStore<Stored>& store)
{
    std::vector<float> samples(store.size());
    store.copy(0, samples.size(), samples.data());
    return samples;
}

inline std::vector<float> samplesOf(const vxlsync::Recording& recording)
{
    return allOf(recording.samples);
}

// True if the program ffmpeg did it.
inline bool encode(const std::string& arguments)
{
    const std::string command =
        VXL_SYNC_FFMPEG_PROGRAM " -v error -nostdin -y " + arguments + " 2>/dev/null";
    return std::system(command.c_str()) == 0;
}

} // namespace reading

#endif
