#include "read/Failure.h"

#include <cerrno>

#include <gtest/gtest.h>

namespace
{

namespace failures = vxlsync::failures;
namespace notes = vxlsync::notes;

TEST(Failure, SaysWhyAFileIsNotOpened)
{
    EXPECT_EQ(failures::notOpened(ENOENT), "does not exist");
    EXPECT_EQ(failures::notOpened(ENOTDIR), "does not exist");
    EXPECT_EQ(failures::notOpened(ENXIO), "is not a regular file");
    EXPECT_EQ(failures::notOpened(EACCES), "cannot be opened: Permission denied");
}

TEST(Failure, SaysWhatIsNotThere)
{
    EXPECT_EQ(failures::noStream(0), "no audio stream");
    EXPECT_EQ(failures::noStream(3), "no audio stream 3");
    EXPECT_EQ(failures::noChannel(3, 2), "no channel 3 among 2");
}

TEST(Failure, SaysWhichRatesThereMayBe)
{
    EXPECT_EQ(failures::rateOutOfRange(300),
              "sampled 300 times a second; 2000 are the least that can be compared");
    EXPECT_EQ(failures::rateOutOfRange(768001),
              "sampled 768001 times a second; 768000 are the most that can be compared");
    EXPECT_EQ(failures::wrongRate(44100, 8000), "sample rate 44100 Hz, expected 8000 Hz");
}

TEST(Failure, SaysHowMuchIsTooMuch)
{
    EXPECT_EQ(
        failures::tooLong(7200.0),
        "decodes to more than 7200.0 s of sound, which no recording of its size and kind holds");
    EXPECT_EQ(failures::tooMuchMemory(2'140'000'000, 1'000'000'000),
              "needs 2.1 GB of memory, more than the 1.0 GB that this job may take");
    EXPECT_EQ(
        failures::tooMuchMemory(300'000'000, 999'000'000),
        "needs 300 MB of memory, and the shorter recordings leave less of the 999 MB that this job "
        "may take");
}

TEST(Notes, SayWhatWasOddInSentences)
{
    EXPECT_EQ(notes::endsEarly(12.3, 24.6), "ends early: 12.3 of 24.6 s could be read");
    EXPECT_EQ(notes::brokenSamples(1), "1 sample is broken and taken as silence");
    EXPECT_EQ(notes::brokenSamples(2), "2 samples are broken and taken as silence");
    EXPECT_EQ(notes::scaledDown(3e38),
              "samples go beyond full scale by about 10 to the power of 38; they are scaled down");
    EXPECT_EQ(notes::undecodedPieces(1), "1 piece of the sound could not be decoded");
    EXPECT_EQ(notes::undecodedPieces(7), "7 pieces of the sound could not be decoded");
    EXPECT_EQ(notes::filledGaps(1, 0.05), "1 gap of 0.1 s is filled with silence");
}

} // namespace
