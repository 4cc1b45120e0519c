#include <algorithm>
#include <ios>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VXLandmarkExtract.h"
#include "Wave.h"
#include "wavfile.h"

// Blocks that the file does not fill, in each width.

namespace
{

using VXS::array;
using VXS::wavfile_t;

constexpr unsigned int forReading = 8;
constexpr float untouched = -77.0f;

class WavfileShortRead : public testing::Test
{
protected:
    std::string write(const wave::Format& format, const wave::Bytes& data) const
    {
        return folder.write("take.wav", wave::file(format, data));
    }

    wave::TempFolder folder;
};

std::vector<float> read(wavfile_t& file, int count)
{
    array<float> block(count);
    std::fill_n(block.data, count, untouched);
    EXPECT_TRUE(file.read_mono(block));
    return std::vector<float>(block.data, block.data + count);
}

} // namespace

TEST_F(WavfileShortRead, EndOf8BitSamplesRepeatsTheLastOnce)
{
    wavfile_t file(write(wave::format(1, 1, 8), {0x40, 0x20}), forReading, 1, 8000);

    EXPECT_EQ((std::vector<float>{0.5f, 0.25f, 0.25f, untouched}), read(file, 4));
}

TEST_F(WavfileShortRead, EndOfFloatSamplesRepeatsTheLastOnce)
{
    wavfile_t file(write(wave::format(3, 1, 32), wave::samplesFloat({0.5f, 0.75f})), forReading, 1,
                   8000);

    EXPECT_EQ((std::vector<float>{0.5f, 0.75f, 0.75f, untouched}), read(file, 4));
}

TEST_F(WavfileShortRead, ErrorIn8BitSamplesFillsTheBlockWithSilence)
{
    wavfile_t file(write(wave::format(1, 1, 8), {0x40, 0x20}), forReading, 1, 8000);
    file.stream.setstate(std::ios::failbit);

    EXPECT_EQ((std::vector<float>{0.0f, 0.0f, 0.0f}), read(file, 3));
}

TEST_F(WavfileShortRead, ErrorInFloatSamplesFillsTheBlockWithSilence)
{
    wavfile_t file(write(wave::format(3, 1, 32), wave::samplesFloat({0.5f, 0.75f})), forReading, 1,
                   8000);
    file.stream.setstate(std::ios::failbit);

    EXPECT_EQ((std::vector<float>{0.0f, 0.0f, 0.0f}), read(file, 3));
}
