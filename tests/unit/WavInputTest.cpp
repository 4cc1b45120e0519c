#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "VXLandmarkExtract.h"
#include "Wave.h"
#include "wavfile.h"

namespace
{

using VXS::array;
using VXS::VXInput;
using VXS::wavfile_t;
using VXS::WavInput;

class WavInputTest : public testing::Test
{
protected:
    // The caller owns the result.
    wavfile_t* open(const wave::Bytes& bytes) const
    {
        return new wavfile_t(folder.write("take.wav", bytes), 8, 1, 16000);
    }

    wave::TempFolder folder;
};

std::vector<float> read(VXInput& input, int count)
{
    array<float> block(count);
    std::fill_n(block.data, count, -77.0f);
    EXPECT_TRUE(input.read_mono(block));
    return std::vector<float>(block.data, block.data + count);
}

} // namespace

TEST_F(WavInputTest, FramesAreThoseOfTheFile)
{
    WavInput input(open(wave::file(wave::format(1, 2, 16), wave::Bytes(12))));

    EXPECT_EQ(3u, input.getFrames());
}

TEST_F(WavInputTest, FramesAreWhatTheHeaderClaims)
{
    WavInput input(open(wave::fileClaiming(wave::Format(), 2000, {})));

    EXPECT_EQ(1000u, input.getFrames());
}

TEST_F(WavInputTest, ReadsTheSamplesOfTheFile)
{
    WavInput input(open(wave::file16({16384, -8192, 0})));

    EXPECT_EQ((std::vector<float>{0.5f, -0.25f, 0.0f}), read(input, 3));
}

TEST_F(WavInputTest, RewindAfterTheEndMakesTheSameSamplesComeAgain)
{
    WavInput input(open(wave::file16({16384, -8192})));
    const std::vector<float> first = read(input, 5);

    EXPECT_TRUE(input.rewind());

    EXPECT_EQ(first, read(input, 5));
}

TEST_F(WavInputTest, RewindAnswersTrueWhateverHappened)
{
    wavfile_t* file = open(wave::file16({16384}));
    WavInput input(file);
    file->stream.close();

    EXPECT_TRUE(input.rewind());
}

TEST_F(WavInputTest, ServesThroughTheInterface)
{
    WavInput input(open(wave::file16({16384, 0})));
    VXInput& source = input;

    EXPECT_EQ(2u, source.getFrames());
    EXPECT_EQ((std::vector<float>{0.5f}), read(source, 1));
    EXPECT_TRUE(source.rewind());
    EXPECT_EQ((std::vector<float>{0.5f}), read(source, 1));
}

TEST_F(WavInputTest, WithoutAFileItIsAnEmptySource)
{
    WavInput input(nullptr);

    EXPECT_EQ(0u, input.getFrames());
    EXPECT_EQ((std::vector<float>{-77.0f}), read(input, 1));
    EXPECT_TRUE(input.rewind());
}
