#include <string>

#include <gtest/gtest.h>

#include "Reading.h"
#include "Signals.h"
#include "Wave.h"

// What files of cameras, phones and recorders say of themselves, as ffmpeg writes it.
namespace
{

using vxlsync::FileFacts;
using vxlsync::FrameRate;

// Three seconds of a picture and of a tone.
const std::string film = "-f lavfi -i color=size=16x16:rate=30000/1001:duration=3 "
                         "-f lavfi -i sine=duration=3 -c:v mpeg4 ";
const std::string sound = "-f lavfi -i sine=duration=3 ";

class MediaFacts : public testing::Test
{
protected:
    FileFacts factsOf(const std::string& arguments, const std::string& name) const
    {
        EXPECT_TRUE(reading::encode(arguments + " " + (folder / name))) << arguments;
        const vxlsync::Recording recording = reading::readFile(folder / name, options);
        EXPECT_EQ(recording.failure, "");
        return recording.facts;
    }

    vxlsync::Options options;
    const wave::TempFolder folder;
};

std::string createdIn(const FileFacts& facts)
{
    return facts.created ? vxlsync::textOf(*facts.created) : "";
}

TEST_F(MediaFacts, ACameraSaysWhatItIsAndWhenItBegan)
{
    const FileFacts facts =
        factsOf(film + "-movflags use_metadata_tags -metadata make=Maker -metadata model=One "
                       "-metadata serial_number=C123 -metadata creation_time=2026-06-01T10:00:37Z "
                       "-timecode 10:00:37:12",
                "a.mov");

    EXPECT_EQ(facts.make, "Maker");
    EXPECT_EQ(facts.model, "One");
    EXPECT_EQ(facts.serialNumber, "C123");
    EXPECT_EQ(createdIn(facts), "2026-06-01T10:00:37Z");
    EXPECT_FALSE(facts.isCreatedAtEnd);
    EXPECT_EQ(facts.timecode, "10:00:37:12");
    // (36,037 x 30 + 12) frames of 1001/30000 s.
    ASSERT_TRUE(facts.started);
    EXPECT_NEAR(facts.started->seconds, 1081122.0 * 1001 / 30000, 1e-6);
    ASSERT_TRUE(facts.frameRate);
    EXPECT_EQ(facts.frameRate->numerator, 30000);
    EXPECT_EQ(facts.frameRate->denominator, 1001);
    EXPECT_EQ(facts.pictureStart, 0.0);
    EXPECT_NEAR(facts.fileSeconds.value(), 3.0, 0.1);
    EXPECT_EQ(facts.stream, 1);
    EXPECT_EQ(facts.channel, 1);
}

TEST_F(MediaFacts, NumbersThatATimecodeLeavesOutAreCounted)
{
    const FileFacts facts = factsOf(film + "-timecode '10:00:00;00'", "a.mov");

    EXPECT_EQ(facts.timecode, "10:00:00;00");
    ASSERT_TRUE(facts.started);
    EXPECT_NEAR(facts.started->seconds, 1078920.0 * 1001 / 30000, 1e-6);
}

TEST_F(MediaFacts, TimesWithAZoneGoFirst)
{
    const FileFacts facts = factsOf(
        sound +
            "-movflags use_metadata_tags -metadata creation_time=2026-06-02T10:00:37Z -metadata "
            "com.apple.quicktime.creationdate=2026-06-01T12:00:37+0200",
        "a.mov");

    EXPECT_EQ(createdIn(facts), "2026-06-01T12:00:37+02:00");
}

TEST_F(MediaFacts, PhonesThatNoteTheEndAreKnown)
{
    const FileFacts facts =
        factsOf(sound + "-movflags use_metadata_tags -metadata com.android.version=14", "a.mp4");

    EXPECT_TRUE(facts.isCreatedAtEnd);
}

TEST_F(MediaFacts, AFilmMayBeginWithItsSound)
{
    const FileFacts facts =
        factsOf("-f lavfi -i sine=duration=3 -itsoffset 0.48 -f lavfi -i "
                "color=size=16x16:rate=25:duration=2 -c:v mpeg4 -c:a pcm_s16le -metadata "
                "creation_time=2026-06-01T10:00:37Z",
                "a.mkv");

    EXPECT_NEAR(facts.pictureStart.value(), 0.48, 0.002);
    EXPECT_NEAR(facts.frameRate.value().perSecond(), 25.0, 1e-9);
    EXPECT_EQ(createdIn(facts), "2026-06-01T10:00:37Z");
}

TEST_F(MediaFacts, ARecorderSaysItsNameAndWhenItBegan)
{
    const FileFacts facts =
        factsOf(sound + "-ar 48000 -write_bext 1 -metadata originator='Recorder 5' -metadata "
                        "originator_reference=R77 -metadata origination_date=2026-06-01 -metadata "
                        "origination_time=10:00:37 -metadata time_reference=1729776000",
                "a.wav");

    EXPECT_EQ(facts.originator, "Recorder 5");
    EXPECT_EQ(facts.originatorReference, "R77");
    EXPECT_EQ(createdIn(facts), "2026-06-01T10:00:37");
    // 36,037 times 48,000 samples.
    EXPECT_EQ(facts.timeReference, 36037.0);
    EXPECT_EQ(facts.started.value().seconds, 36037.0);
    EXPECT_EQ(facts.timecode, "");
    EXPECT_FALSE(facts.frameRate);
    EXPECT_FALSE(facts.pictureStart);
}

TEST_F(MediaFacts, TheCoverOfASongIsNoPicture)
{
    const FileFacts facts = factsOf("-f lavfi -i sine=duration=3 -f lavfi -i "
                                    "color=size=16x16:duration=1:rate=1 -map 0 -map 1 -c:v png "
                                    "-disposition:v attached_pic",
                                    "a.m4a");

    EXPECT_FALSE(facts.frameRate);
    EXPECT_FALSE(facts.pictureStart);
}

TEST_F(MediaFacts, ATimecodeIsCountedWithTheRateOfItsStreamOrOfThePicture)
{
    const std::string slow = "-f lavfi -i sine=duration=1 -f lavfi -i "
                             "color=size=16x16:rate=25:duration=1 -c:v mpeg4 ";
    EXPECT_NEAR(factsOf(slow + "-metadata timecode=10:00:00:12", "a.mkv").started.value().seconds,
                36000.48, 1e-6);
    EXPECT_NEAR(
        factsOf(slow + "-metadata:s:a timecode=10:00:00:12", "b.mkv").started.value().seconds,
        36000.48, 1e-6);
}

TEST_F(MediaFacts, ATimecodeThatCannotBeCountedIsToldAndNoMore)
{
    const FileFacts facts = factsOf(sound + "-metadata timecode=10:00:00:12", "a.mkv");

    EXPECT_EQ(facts.timecode, "10:00:00:12");
    EXPECT_FALSE(facts.started);
    EXPECT_FALSE(factsOf(film + "-metadata timecode=10:00:00:99", "b.mkv").started);
}

TEST_F(MediaFacts, WhatIsNoTimecodeIsNotTold)
{
    EXPECT_EQ(factsOf(film + "-metadata timecode=noon", "a.mkv").timecode, "");
}

TEST_F(MediaFacts, RatesThatNoPictureHasAreNone)
{
    const std::string picture = "-f lavfi -i sine=duration=4 -f lavfi -i color=size=16x16:";
    EXPECT_FALSE(factsOf(picture + "rate=1/2:duration=4 -c:v mpeg4", "a.mov").frameRate);
    EXPECT_FALSE(factsOf(picture + "rate=2000:duration=0.1 -c:v mpeg4", "b.mov").frameRate);
}

TEST_F(MediaFacts, ATagOfBlanksSaysNothing)
{
    const FileFacts facts =
        factsOf(sound + "-metadata 'make= ' -metadata manufacturer=Maker", "a.mkv");

    EXPECT_EQ(facts.make, "Maker");
}

TEST_F(MediaFacts, AGuessedLengthIsNone)
{
    EXPECT_FALSE(factsOf(sound, "a.aac").fileSeconds);
}

TEST_F(MediaFacts, TellWhichStreamWasRead)
{
    const std::string two = "-f lavfi -i color=size=16x16:duration=1 -f lavfi -i sine=duration=1 "
                            "-f lavfi -i sine=duration=1 -map 0 -map 1 -map 2 -c:v mpeg4";
    options.stream = 2;
    options.channel = vxlsync::Channel::mix;
    const FileFacts facts = factsOf(two, "a.mkv");

    EXPECT_EQ(facts.stream, 2);
    EXPECT_EQ(facts.channel, 0);
}

TEST_F(MediaFacts, AFileThatSaysNothingHasNone)
{
    const FileFacts facts = factsOf(sound + "-bitexact", "a.mp3");

    EXPECT_EQ(facts.make + facts.model + facts.serialNumber + facts.originator, "");
    EXPECT_FALSE(facts.created);
    EXPECT_FALSE(facts.started);
    EXPECT_EQ(facts.stream, 1);
}

} // namespace
