#include "LandmarkGroups.h"

#include <gmock/gmock.h>

#include <vxl_audio/VXFile.h>

#include "ConsoleRedirect.h"
#include "Signals.h"
#include "Sounds.h"

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using vxlsync::Landmarks;

// Samples of the event as the program reads them from its WAV file.
std::vector<float> samplesOf(std::size_t startFrame)
{
    const wave::TempFolder folder;
    const vxlsync::NativeSound sound =
        vxlsync::readNative(folder.write("take.wav", sounds::recordingOf(12345, startFrame, 20)));
    return sound.samples;
}

TEST(LandmarkGroups, TellWholeFramesBetweenTwoRecordings)
{
    std::vector<Landmarks> landmarks;
    landmarks.push_back(vxlsync::extractLandmarks(samplesOf(75), 0));
    landmarks.push_back(vxlsync::extractLandmarks(samplesOf(0), 1));

    const auto groups = vxlsync::groupByLandmarks(std::move(landmarks), {"late", "early"}, nullptr);

    ASSERT_EQ(groups.size(), 1u);
    EXPECT_THAT(groups[0].members, ElementsAre(0, 1));
    // 75 frames of 0.032 s.
    EXPECT_THAT(groups[0].starts, ElementsAre(testing::DoubleEq(static_cast<double>(2.4F)), 0.0));
}

TEST(LandmarkGroups, GiveThePairsOffsetsFromFirstToSecond)
{
    const auto offsets = vxlsync::offsetsOf({{{2, 5, 6}, {0.0, 1.5, 4.0}}});

    ASSERT_EQ(offsets.size(), 3u);
    EXPECT_EQ(offsets[0].offset, 1.5);
    EXPECT_EQ(offsets[1].offset, 4.0);
    EXPECT_EQ(offsets[2].first, 5u);
    EXPECT_EQ(offsets[2].second, 6u);
    EXPECT_EQ(offsets[2].offset, 2.5);
}

TEST(LandmarkGroups, LeaveStrangersOut)
{
    std::vector<Landmarks> landmarks;
    landmarks.push_back(vxlsync::extractLandmarks(signals::noise(1, 80000), 0));
    landmarks.push_back(nullptr);
    landmarks.push_back(vxlsync::extractLandmarks(signals::noise(2, 80000), 2));

    EXPECT_THAT(vxlsync::groupByLandmarks(std::move(landmarks), {"a", "b", "c"}, nullptr),
                IsEmpty());
}

TEST(LandmarkGroups, ReadAllSamplesOfAWavFile)
{
    const wave::TempFolder folder;
    std::vector<int> samples(5000, 0);
    samples[0] = 16384;
    samples[4999] = -16384;

    const auto sound = vxlsync::readNative(folder.write("a.wav", wave::file16(samples)));

    ASSERT_EQ(sound.samples.size(), 5000u);
    EXPECT_EQ(sound.samples[0], -sound.samples[4999]);
    EXPECT_GT(sound.samples[0], 0.0F);
    EXPECT_EQ(sound.samples[1], 0.0F);
}

TEST(LandmarkGroups, SayWhyAFileCannotBeRead)
{
    const wave::TempFolder folder;
    const vxlsync::ConsoleRedirect redirect([](const std::string&) {});

    EXPECT_EQ(vxlsync::readNative(folder / "gone.wav").failure, "does not exist");
}

} // namespace
