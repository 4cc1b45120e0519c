#include "read/Intake.h"

#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "Reading.h"
#include "read/Failure.h"

namespace
{

using reading::samplesOf;
using testing::ElementsAre;
using vxlsync::Intake;
using vxlsync::ReadFailure;
using vxlsync::ReadLimits;
using vxlsync::Recording;

class IntakeTest : public testing::Test
{
protected:
    template <typename Act>
    static std::string failureOf(Act&& act)
    {
        try {
            act();
        } catch (const ReadFailure& failure) {
            return failure.what();
        }
        return "";
    }

    // A second of sound at 8000 Hz.
    const std::vector<double> second = std::vector<double>(8000, 0.5);
    vxlsync::Run run{1, reading::plenty, {}};
    ReadLimits limits;
    Recording recording;
};

TEST_F(IntakeTest, MeasuresLengthAndLoudnessWithoutAConstantPart)
{
    std::vector<double> samples;
    for (int i = 0; i < 16000; ++i)
        samples.push_back(i % 2 == 0 ? 0.75 : 0.25);
    Intake intake(recording, run, limits);

    intake.setRate(8000);
    intake.append(samples.data(), samples.size());
    intake.finish();

    EXPECT_DOUBLE_EQ(recording.durationSeconds, 2.0);
    // 0.25 on either side of 0.5.
    EXPECT_NEAR(recording.meanSquare, 0.0625, 1e-9);
}

TEST_F(IntakeTest, MeasuresSilenceAsPartOfTheWhole)
{
    Intake intake(recording, run, limits);

    intake.setRate(8000);
    intake.append(second.data(), second.size());
    intake.appendSilence(8000);
    intake.finish();

    // 0.25 on either side of 0.25.
    EXPECT_NEAR(recording.meanSquare, 0.0625, 1e-9);
}

TEST_F(IntakeTest, IsEmptyAndSilentWithoutSamples)
{
    Intake intake(recording, run, limits);

    intake.finish();

    EXPECT_EQ(intake.seconds(), 0.0);
    EXPECT_EQ(recording.durationSeconds, 0.0);
    EXPECT_EQ(recording.meanSquare, 0.0);
}

TEST_F(IntakeTest, RefusesRatesThatCannotBeCompared)
{
    Intake intake(recording, run, limits);

    EXPECT_EQ(failureOf([&] { intake.setRate(1999); }),
              "sampled 1999 times a second; 2000 are the least that can be compared");
    EXPECT_EQ(failureOf([&] { intake.setRate(0x80000000); }),
              "sampled 2147483648 times a second; 768000 are the most that can be compared");
    EXPECT_EQ(failureOf([&] { intake.setRate(2000); }), "");
    EXPECT_EQ(failureOf([&] { intake.setRate(768000); }), "");
}

TEST_F(IntakeTest, FollowsAHundredChangesOfTheRate)
{
    Intake intake(recording, run, limits);
    for (int i = 0; i < 100; ++i)
        intake.setRate(8000 + i % 2);

    EXPECT_EQ(failureOf([&] { intake.setRate(8000); }),
              "changes its sample rate too often to be followed");
}

TEST_F(IntakeTest, TakesBrokenAndAbsurdSamplesAsSilence)
{
    constexpr double infinity = std::numeric_limits<double>::infinity();
    const std::vector<double> samples{0.5, infinity, -infinity, std::nan(""),
                                      1e5, -1.1e5,   3e38,      0.0};
    Intake intake(recording, run, limits);

    intake.setRate(8000);
    intake.append(samples.data(), samples.size());
    intake.finish();

    EXPECT_THAT(samplesOf(recording), ElementsAre(0.5f, 0.0f, 0.0f, 0.0f, 1e5f, 0.0f, 0.0f, 0.0f));
    EXPECT_EQ(intake.oddities().sound, 2);
    EXPECT_EQ(intake.oddities().broken, 3);
    EXPECT_EQ(intake.oddities().absurd, 2);
    EXPECT_EQ(intake.oddities().peak, 3e38);
}

TEST_F(IntakeTest, ScalesByItsGain)
{
    const std::vector<double> samples{1e300, -5e299};
    Intake intake(recording, run, limits, 1e-300);

    intake.setRate(8000);
    intake.append(samples.data(), samples.size());
    intake.finish();

    EXPECT_THAT(samplesOf(recording), ElementsAre(1.0f, -0.5f));
}

TEST_F(IntakeTest, StopsAtTheLimitsOfTheFile)
{
    limits.longestSeconds = 3.0;
    Intake intake(recording, run, limits);
    intake.limitSamples(16000);
    intake.setRate(8000);
    intake.append(second.data(), second.size());
    intake.append(second.data(), second.size());

    EXPECT_EQ(failureOf([&] { intake.append(second.data(), 1); }),
              "decodes to more than 2.0 s of sound, which no recording of its size and kind holds");
    EXPECT_EQ(failureOf([&] { intake.appendSilence(8000); }), "");
    EXPECT_EQ(failureOf([&] { intake.appendSilence(1); }),
              "decodes to more than 3.0 s of sound, which no recording of its size and kind holds");
}

TEST_F(IntakeTest, TakesFromTheMemoryOfTheJobWhatItNeeds)
{
    Intake intake(recording, run, limits);
    intake.setRate(8000);
    intake.append(second.data(), second.size());
    intake.appendSilence(std::int64_t{8000} * 3600);
    intake.finish();

    // Two whole seconds touched, of 4 bytes a sample and 80,000 for the steps to come, and an hour
    // and a second of 128.
    EXPECT_EQ(intake.bytesNeeded(), 2u * (32000u + 80000u) + 3601u * 128u);
    EXPECT_EQ(run.memory.remaining(), reading::plenty - intake.bytesNeeded());
    EXPECT_TRUE(intake.isKept());
}

TEST_F(IntakeTest, NeedsMoreForWhatTheRefinementKeeps)
{
    const std::vector<double> samples(44100, 0.5);
    Intake intake(recording, run, limits);
    intake.setRate(44100);
    intake.append(samples.data(), 22050);
    intake.append(samples.data(), 22049);
    intake.finish();

    // 16000 samples of 2 bytes on top.
    EXPECT_EQ(intake.bytesNeeded(), 32000u + 80000u + 32000u);
}

TEST_F(IntakeTest, GivesBackWhatItTookIfItIsNotFinished)
{
    {
        Intake intake(recording, run, limits);
        intake.setRate(8000);
        intake.append(second.data(), second.size());
        ASSERT_LT(run.memory.remaining(), reading::plenty);
    }

    EXPECT_EQ(run.memory.remaining(), reading::plenty);
}

TEST_F(IntakeTest, GoesOnCountingWhereMemoryRunsOut)
{
    constexpr std::size_t little = 400'000;
    vxlsync::Run tight(1, little, {});
    Intake intake(recording, tight, limits);
    intake.setRate(8000);
    for (int i = 0; i < 10; ++i)
        intake.append(second.data(), second.size());
    intake.appendSilence(8000);
    intake.finish();

    EXPECT_FALSE(intake.isKept());
    // 10 seconds and the one that the last of them touches.
    EXPECT_EQ(intake.bytesNeeded(), 11u * 112000u + 11u * 128u);
    EXPECT_EQ(tight.memory.remaining(), little);
    EXPECT_EQ(recording.samples.size(), 0u);
    EXPECT_DOUBLE_EQ(recording.durationSeconds, 11.0);
}

TEST_F(IntakeTest, AsksWhetherToGoOn)
{
    vxlsync::Callbacks callbacks;
    callbacks.isCancelled = [] { return true; };
    vxlsync::Run cancelled(1, reading::plenty, callbacks);
    Intake intake(recording, cancelled, limits);
    intake.setRate(8000);

    EXPECT_THROW(intake.append(second.data(), 1), vxlsync::Cancelled);
}

} // namespace
