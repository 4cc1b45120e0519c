#ifndef VXS_WAVFILE_H
#define VXS_WAVFILE_H

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "VXExport.h"

namespace VXS
{

template <typename T>
class array;

// A RIFF/WAVE file: read from its header on, or written as far as its header. Counts in sample
// frames. The stream stands at the first sample after construction; each read goes on where the
// last one stopped. One thread at a time may use it. VXLandmarkExtract::loadFile opens one with the
// rate of an extraction; a host that wants a header written, or the samples alone, makes its own.
class wavfile_t
{
public:
    // `openMode` is 8 to read and 16 to write; with any other value nothing is opened, read or
    // written. In reading, the header replaces `newChannels` and `newSampleRate`. Opening never
    // blocks: what is not a regular file counts as a file that cannot be opened. Throws
    // std::runtime_error with a fixed text when the header cannot be read. A file that cannot be
    // opened for writing raises nothing. On Windows a path is UTF-8, and one that is not throws
    // std::system_error.
    VXS_API wavfile_t(const std::string& path, unsigned int openMode, int newChannels,
                      unsigned int newSampleRate);
    // Completes the sizes in the header of a written file.
    VXS_API ~wavfile_t();
    wavfile_t(const wavfile_t&) = delete;
    wavfile_t& operator=(const wavfile_t&) = delete;

    // Fills `block` with the first channel of the next sample frames. Always answers true. At the
    // end of the file one stale or part-read sample is stored and the rest of the block keeps what
    // it held. Widths other than 8, 16 and 32 bits leave the block alone. Exists for float only,
    // whose array VXLandmarkExtract.h defines. Throws std::runtime_error on a file opened for
    // writing.
    template <typename T>
    bool read_mono(array<T>& block);

    // Back to the first sample, also from the end of the file.
    VXS_API void rewind();

    std::int32_t channels;
    // What the header claims, which may be more than the file holds. 0 for a written file.
    std::uint32_t frames = 0;
    std::uint32_t sampleRate;

private:
    void readHeader();
    void findChunk(const char* id);
    void checkFormat(std::int16_t formatTag) const;
    void writeHeader();
    void finishHeader();

    std::fstream stream;
    // 0 nothing opened, 1 reading, 2 writing.
    std::int32_t mode = 0;
    std::int32_t bitsPerSample = 0;
    std::fstream::pos_type dataStart = 0;
    std::vector<char> readBuffer;
};

template <>
VXS_API bool wavfile_t::read_mono<float>(array<float>& block);

} // namespace VXS

#endif
