#include <cstdint>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Console.h"
#include "Signals.h"
#include "VXFile.h"
#include "VXLandmarkExtract.h"
#include "Wave.h"
#include "wavfile.h"

// Recordings by their path: what is opened, what is refused, and what is printed.

namespace
{

using signals::SignalInput;
using VXS::VXExtractParams;
using VXS::VXFile;
using VXS::VXLandmarkExtract;

using FileHolder = std::unique_ptr<VXFile>;

// Two seconds with peaks in plenty.
signals::Samples someSound()
{
    return signals::noise(7, 16000);
}

} // namespace

TEST(LoadFile, RunOfAPathGivesWhatTheSamplesGive)
{
    const wave::TempFolder folder;
    const std::vector<int> samples = signals::as16Bit(someSound());
    const std::string path = folder.write("take.wav", wave::file16(samples));
    VXLandmarkExtract extractor{VXExtractParams()};

    const FileHolder file(extractor.run(path, 4));

    ASSERT_NE(nullptr, file);
    EXPECT_EQ(4, file->getFileID());
    EXPECT_FALSE(signals::landmarksOf(*file).empty());
    EXPECT_EQ(signals::extractLandmarks(VXExtractParams(), signals::asRead(samples)),
              signals::landmarksOf(*file));
}

TEST(LoadFile, UnfinishedRecordingGivesAnEmptyFile)
{
    const wave::TempFolder folder;
    const std::string path = folder.write(
        "take.wav",
        wave::fileClaiming(wave::Format(), 0, wave::samples16(signals::as16Bit(someSound()))));
    VXLandmarkExtract extractor{VXExtractParams()};

    const FileHolder file(extractor.run(path, 1));

    ASSERT_NE(nullptr, file);
    EXPECT_TRUE(signals::landmarksOf(*file).empty());
}

TEST(LoadFile, RecordingOf24BitsIsSilence)
{
    const wave::TempFolder folder;
    const std::string path =
        folder.write("take.wav", wave::file(wave::format(1, 1, 24), wave::Bytes(30000, 17)));
    VXLandmarkExtract extractor{VXExtractParams()};

    const FileHolder file(extractor.run(path, 1));

    ASSERT_NE(nullptr, file);
    EXPECT_TRUE(signals::landmarksOf(*file).empty());
    // 10000 samples / 256 = 39.06, so 39 + 2 - 1 frames.
    EXPECT_EQ(40u, extractor.frames->size());
}

// A header that claims 16000 samples where the file holds 8000: what is missing is silence.
TEST(LoadFile, RecordingThatClaimsTooMuchEndsInSilence)
{
    const wave::TempFolder folder;
    std::vector<int> samples = signals::as16Bit(signals::noise(7, 8192));
    const std::string path = folder.write(
        "take.wav", wave::fileClaiming(wave::Format(), 32000, wave::samples16(samples)));
    samples.resize(16000);
    VXLandmarkExtract extractor{VXExtractParams()};

    const FileHolder file(extractor.run(path, 1));

    EXPECT_EQ(63u, extractor.frames->size());
    EXPECT_FALSE(signals::landmarksOf(*file).empty());
    EXPECT_EQ(signals::extractLandmarks(VXExtractParams(), signals::asRead(samples)),
              signals::landmarksOf(*file));
}

TEST(LoadFile, MissingFilePrintsItsLineAndGivesNull)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    const Console console;

    const FileHolder file(extractor.run("no/such take.wav", 1));

    EXPECT_EQ(nullptr, file);
    EXPECT_EQ("[ERROR]: Could not load: no/such take.wav\n", console.text());
    EXPECT_EQ((std::vector<std::string>{console.text()}), console.flushed());
}

TEST(LoadFile, DirectoryPrintsTheSameLine)
{
    const wave::TempFolder folder;
    VXLandmarkExtract extractor{VXExtractParams()};
    const Console console;

    EXPECT_EQ(nullptr, extractor.loadFile(folder.path));

    EXPECT_EQ("[ERROR]: Could not load: " + folder.path + "\n", console.text());
}

TEST(LoadFile, FileWithoutChannelsPrintsTheSameLine)
{
    const wave::TempFolder folder;
    const std::string path =
        folder.write("take.wav", wave::file(wave::format(1, 0, 16), wave::Bytes(8)));
    VXLandmarkExtract extractor{VXExtractParams()};
    const Console console;

    EXPECT_EQ(nullptr, extractor.loadFile(path));

    EXPECT_EQ("[ERROR]: Could not load: " + path + "\n", console.text());
}

TEST(LoadFile, OtherSampleRatePrintsItsLineAndGivesNull)
{
    const wave::TempFolder folder;
    const std::string path = folder.write("take.wav", wave::file16({1, 2, 3}, 44100));
    VXLandmarkExtract extractor{VXExtractParams()};
    const Console console;

    const FileHolder file(extractor.run(path, 1));

    EXPECT_EQ(nullptr, file);
    EXPECT_EQ("[ERROR]:" + path + " has an incorrect sample rate\n", console.text());
    EXPECT_EQ((std::vector<std::string>{console.text()}), console.flushed());
}

TEST(LoadFile, SampleRateHasNoTolerance)
{
    const wave::TempFolder folder;
    const std::string lower = folder.write("lower.wav", wave::file16({1}, 7999));
    const std::string higher = folder.write("higher.wav", wave::file16({1}, 8001));
    VXLandmarkExtract extractor{VXExtractParams()};
    const Console console;

    EXPECT_EQ(nullptr, extractor.loadFile(lower));
    EXPECT_EQ(nullptr, extractor.loadFile(higher));
}

TEST(LoadFile, LoadFileTakesTheRateOfTheParameters)
{
    const wave::TempFolder folder;
    const std::string path = folder.write("take.wav", wave::file16({1, 2, 3}, 44100));
    VXExtractParams params;
    params.setSampleRate(44100);
    VXLandmarkExtract extractor(params);
    const Console console;

    const std::unique_ptr<VXS::wavfile_t> file(extractor.loadFile(path));

    ASSERT_NE(nullptr, file);
    EXPECT_EQ(3u, file->frames);
    EXPECT_EQ("", console.text());
}

TEST(LoadFile, FileThatCannotBeLoadedLeavesThePeaksOfTheRunBefore)
{
    VXLandmarkExtract extractor{VXExtractParams()};
    SignalInput input(someSound());
    const FileHolder first(extractor.run(&input, 1));
    const Console console;

    const FileHolder second(extractor.run("missing.wav", 2));

    EXPECT_EQ(63u, extractor.frames->size());
}
// The file of the path form is closed although the extraction throws; the sanitizers see it.
TEST(LoadFile, ExceptionPassesThroughTheRunOfAPath)
{
    const wave::TempFolder folder;
    const std::string path = folder.write("take.wav", wave::file16({1, 2, 3}));
    VXExtractParams params;
    ASSERT_TRUE(params.setFftSize(1u << 31u));
    VXLandmarkExtract extractor(params);

    EXPECT_THROW(FileHolder(extractor.run(path, 1)), std::runtime_error);
}
