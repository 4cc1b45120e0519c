// What a folder holds beside files, on systems whose folders hold pipes, devices and links.
#include <sys/stat.h>

#include <filesystem>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "VXLandmarkExtract.h"
#include "Wave.h"
#include "wavfile.h"

namespace
{

using VXS::wavfile_t;

constexpr unsigned int forReading = 8;
constexpr unsigned int forWriting = 16;

const char* const noRiff = "wavfile_t::wavfile_t() : File doesn't start with 'RIFF'";

// What opening the file throws, or "opened".
std::string openingPath(const std::string& path)
{
    try {
        const wavfile_t file(path, forReading, 1, 16000);
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "opened";
}

class WavfileNode : public testing::Test
{
protected:
    wave::TempFolder folder;
};

} // namespace

TEST_F(WavfileNode, PipeWithoutAWriterRaisesTheRiffMessageAndDoesNotBlock)
{
    const std::string path = folder / "pipe.wav";
    ASSERT_EQ(0, mkfifo(path.c_str(), 0600));

    EXPECT_EQ(noRiff, openingPath(path));
}

TEST_F(WavfileNode, PipeWithoutAReaderDoesNotBlockAWriter)
{
    const std::string path = folder / "pipe.wav";
    ASSERT_EQ(0, mkfifo(path.c_str(), 0600));

    EXPECT_NO_THROW({ const wavfile_t file(path, forWriting, 1, 8000); });
}

TEST_F(WavfileNode, DeviceRaisesTheRiffMessage)
{
    EXPECT_EQ(noRiff, openingPath("/dev/zero"));
}

TEST_F(WavfileNode, LinkToARegularFileOpens)
{
    folder.write("take.wav", wave::file16({1, 2, 3}));
    std::filesystem::create_symlink("take.wav", folder / "link.wav");

    EXPECT_EQ("opened", openingPath(folder / "link.wav"));
}
