#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "Reading.h"
#include "Wave.h"

namespace
{

using reading::samplesOf;
using testing::ElementsAre;

vxlsync::Recording readNatively(const std::string& path)
{
    vxlsync::Options options;
    options.nativeReader = true;
    return reading::readFile(path, options);
}

TEST(NativeReader, ReadsAsTheLandmarkLibraryDoes)
{
    const wave::TempFolder folder;

    EXPECT_THAT(samplesOf(readNatively(folder.write("a.wav", wave::file16({16384, -8192, 0})))),
                ElementsAre(0.5f, -0.25f, 0.0f));
    // Which takes bytes as signed.
    EXPECT_THAT(samplesOf(readNatively(
                    folder.write("b.wav", wave::file(wave::format(1, 1, 8), {0x40, 0x80})))),
                ElementsAre(0.5f, -1.0f));
    EXPECT_THAT(samplesOf(readNatively(folder.write(
                    "c.wav", wave::file(wave::format(1, 2, 16), wave::samples16({16384, -8192}))))),
                ElementsAre(0.5f));
}

TEST(NativeReader, ReadsMoreThanABlock)
{
    const wave::TempFolder folder;
    std::vector<int> samples;
    for (int i = 0; i < 10000; ++i)
        samples.push_back(i);

    const std::vector<float> read =
        samplesOf(readNatively(folder.write("a.wav", wave::file16(samples))));

    ASSERT_EQ(read.size(), 10000u);
    for (int i = 0; i < 10000; ++i)
        ASSERT_EQ(read[static_cast<std::size_t>(i)], static_cast<float>(i) / 32768.0f);
}

TEST(NativeReader, ReadsNoMoreThanThereIs)
{
    const wave::TempFolder folder;
    const wave::Bytes bytes =
        wave::fileClaiming(wave::format(1, 1, 16), 0xFFFFFFF0u, wave::samples16({16384}));

    EXPECT_LE(readNatively(folder.write("a.wav", bytes)).samples.size(), bytes.size());
}

TEST(NativeReader, SaysWhyItCannotRead)
{
    const wave::TempFolder folder;

    EXPECT_EQ(readNatively(folder.write("a.wave", wave::file16({1}))).failure,
              "name does not end in .wav");
    EXPECT_EQ(readNatively(folder.write("wav", wave::file16({1}))).failure,
              "name does not end in .wav");
    EXPECT_EQ(readNatively("wav").failure, "name does not end in .wav");
    EXPECT_EQ(readNatively(folder / "gone.wav").failure, "does not exist");
    EXPECT_EQ(readNatively(folder.write("text.wav", {'t', 'e', 'x', 't'})).failure,
              "is not a WAV file that can be read");
    EXPECT_EQ(readNatively(folder.write("b.wav", wave::file16({1}, 7999))).failure,
              "sample rate 7999 Hz, expected 8000 Hz");
}

} // namespace
