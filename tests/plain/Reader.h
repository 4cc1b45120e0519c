#ifndef PLAIN_READER_H
#define PLAIN_READER_H

#include <cstdint>
#include <fstream>
#include <string>
#include <vector>

#include "plain/Source.h"

namespace plain
{

// The first channel of a WAV file, read one sample frame at a time and with nothing kept beside
// that frame. It is slow on purpose: what it delivers, also past the end of the file, is what a
// faster reader must deliver.
class Reader final : public Source
{
public:
    // Throws std::runtime_error where the header cannot be read.
    explicit Reader(const std::string& path);

    std::uint32_t frames() override { return frameCount; }
    void read(std::vector<float>& block) override;
    void rewind() override;

    std::int32_t channels = 0;
    std::uint32_t sampleRate = 0;
    std::int32_t bitsPerSample = 0;

private:
    template <typename T>
    T field();
    std::string word();
    void skip(std::uint32_t bytes);
    void findChunk(const std::string& id);

    std::ifstream stream;
    std::ifstream::pos_type dataStart = 0;
    std::uint32_t frameCount = 0;
};

} // namespace plain

#endif
