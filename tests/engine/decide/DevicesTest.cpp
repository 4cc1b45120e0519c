#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "TestTakes.h"
#include "decide/Devices.h"

namespace
{

using takes::created;
using takes::take;
using takes::ten;
using testing::ElementsAre;
using testing::Optional;
using vxlsync::DeviceEvidence;
using vxlsync::Origin;
using vxlsync::originsOf;
using vxlsync::Take;
using vxlsync::Takes;

Take ofModel(Take take, const std::string& make, const std::string& model)
{
    take.facts.make = make;
    take.facts.model = model;
    return take;
}

Take ofSerial(Take take, const std::string& serial)
{
    take.facts.serialNumber = serial;
    return take;
}

Take ofOriginator(Take take, const std::string& originator)
{
    take.facts.originator = originator;
    return take;
}

Take stated(Take take, const std::string& device)
{
    take.device = device;
    return take;
}

std::vector<std::string> namesOf(const Takes& takes)
{
    std::vector<std::string> names;
    for (const Origin& origin : originsOf(takes))
        names.push_back(origin.device);
    return names;
}

DeviceEvidence evidenceOf(const Takes& takes)
{
    return originsOf(takes).front().knownBy;
}

TEST(Devices, WhatIsStatedHolds)
{
    // Also where its clocks say that two takes ran at the same time.
    const Takes takes{stated(ofModel(created(0, 30), "Maker", "One"), "mine"),
                      stated(created(10, 30), "mine"), take("b.wav", 30)};

    EXPECT_THAT(namesOf(takes), ElementsAre("mine", "mine", ""));
    EXPECT_EQ(evidenceOf(takes), DeviceEvidence::stated);
    EXPECT_FALSE(originsOf(takes).front().clockStart);
}

TEST(Devices, TakesOfAStatedDeviceHaveItsClock)
{
    const std::vector<Origin> origins =
        originsOf({stated(created(0, 30), "mine"), stated(created(40, 30), "mine")});

    EXPECT_THAT(origins[0].clockStart, Optional(ten));
    EXPECT_THAT(origins[1].clockStart, Optional(ten + 40));
}

TEST(Devices, WhatIsNotKnownHasNoNameAndNoClock)
{
    const Origin origin =
        originsOf({created(0, 30, "clip_3.wav"), created(40, 30, "clip_4.wav")})[0];

    EXPECT_EQ(origin.device, "");
    EXPECT_EQ(origin.knownBy, DeviceEvidence::none);
    EXPECT_FALSE(origin.clockStart);
}

TEST(Devices, ASerialNumberIsOfOneDeviceInAllFolders)
{
    const Takes takes{ofSerial(ofModel(created(0, 30, "a/1.mov"), "Maker", "One"), "C1"),
                      ofSerial(ofModel(created(10, 30, "b/2.mov"), "Maker", "One"), "C1")};

    EXPECT_THAT(namesOf(takes), ElementsAre("Maker One", "Maker One"));
    EXPECT_EQ(evidenceOf(takes), DeviceEvidence::serialNumber);
}

TEST(Devices, SerialNumbersTellDevicesOfOneModelApart)
{
    EXPECT_THAT(namesOf({ofSerial(ofModel(take("a.mov", 30), "Maker", "One"), "C1"),
                         ofSerial(ofModel(take("b.mov", 30), "Maker", "One"), "C2")}),
                ElementsAre("Maker One (C1)", "Maker One (C2)"));
    EXPECT_THAT(namesOf({ofSerial(take("a.mov", 30), "C1")}), ElementsAre("C1"));
}

TEST(Devices, MakeAndModelAreOfOneDeviceInAFolder)
{
    const Takes takes{ofModel(take("card/a.mov", 30), "Maker", "One"),
                      ofModel(take("./card/b.mov", 30), "Maker", "One"),
                      ofModel(take("card/c.mov", 30), "Maker", "Two")};

    EXPECT_THAT(namesOf(takes), ElementsAre("Maker One", "Maker One", "Maker Two"));
    EXPECT_EQ(evidenceOf(takes), DeviceEvidence::model);
}

TEST(Devices, OneModelInTwoFoldersIsTwoDevices)
{
    EXPECT_THAT(namesOf({ofModel(take("a/1.mov", 30), "Maker", "One"),
                         ofModel(take("b/1.mov", 30), "Maker", "One")}),
                ElementsAre("Maker One (a)", "Maker One (b)"));
}

TEST(Devices, TheMakeIsNotNamedTwice)
{
    EXPECT_THAT(namesOf({ofModel(take("a.mov", 30), "Maker", "Maker One")}),
                ElementsAre("Maker One"));
    EXPECT_THAT(namesOf({ofModel(take("a.mov", 30), "Maker", "")}), ElementsAre("Maker"));
    EXPECT_THAT(namesOf({ofModel(take("a.mov", 30), "", "One")}), ElementsAre("One"));
}

TEST(Devices, ARecorderSaysItsName)
{
    const Takes takes{ofOriginator(created(0, 30), "camera a"),
                      ofOriginator(created(40, 30), "camera a"),
                      ofOriginator(created(0, 30), "camera b")};

    EXPECT_THAT(namesOf(takes), ElementsAre("camera a", "camera a", "camera b"));
    EXPECT_EQ(evidenceOf(takes), DeviceEvidence::originator);
    EXPECT_THAT(originsOf(takes)[1].clockStart, Optional(ten + 40));
}

TEST(Devices, EqualCamerasThatRanAtTheSameTimeAreKeptApartByTheirNames)
{
    const auto one = [](double seconds, const std::string& path) {
        return ofModel(created(seconds, 30, path), "Maker", "One");
    };
    EXPECT_THAT(namesOf({one(0, "MVI_0101.MOV"), one(10, "MVI_7001.MOV"), one(40, "MVI_0102.MOV"),
                         one(50, "MVI_7003.MOV")}),
                ElementsAre("Maker One (MVI_)", "Maker One (MVI_) 2", "Maker One (MVI_)",
                            "Maker One (MVI_) 2"));
    EXPECT_THAT(namesOf({one(0, "card/A_0101.MOV"), one(10, "card/B_0101.MOV")}),
                ElementsAre("Maker One (card/A_)", "Maker One (card/B_)"));
}

TEST(Devices, EqualCamerasWhoseNamesInterleaveAreNotKnown)
{
    const auto one = [](double seconds, const std::string& path) {
        return ofModel(created(seconds, 30, path), "Maker", "One");
    };
    EXPECT_THAT(namesOf({one(0, "MVI_0101.MOV"), one(10, "MVI_0102.MOV"), one(40, "MVI_0103.MOV")}),
                ElementsAre("", "", ""));
    EXPECT_THAT(namesOf({one(0, "left.mov"), one(10, "right.mov")}), ElementsAre("", ""));
}

TEST(Devices, NamesThatCountOnAreOfOneDevice)
{
    const Takes takes{take("card/MVI_0101.MOV", 30), take("card/MVI_0102.MOV", 30),
                      take("card/00001.MTS", 30),    take("card/00002.MTS", 30),
                      take("GX010042.MP4", 30),      take("GX020042.MP4", 30)};

    EXPECT_THAT(namesOf(takes),
                ElementsAre("card/MVI_", "card/MVI_", "card/*.mts", "card/*.mts", "GX", "GX"));
    EXPECT_EQ(evidenceOf(takes), DeviceEvidence::names);
}

TEST(Devices, OneNameDoesNotCountOn)
{
    EXPECT_THAT(namesOf({take("a/MVI_0101.MOV", 30), take("b/MVI_0102.MOV", 30)}),
                ElementsAre("", ""));
}

TEST(Devices, NamesThatLeapAreOfTwoCards)
{
    EXPECT_THAT(namesOf({take("MVI_0101.MOV", 30), take("MVI_0201.MOV", 30),
                         take("MVI_0302.MOV", 30), take("MVI_0303.MOV", 30)}),
                ElementsAre("MVI_", "MVI_", "MVI_ 2", "MVI_ 2"));
}

TEST(Devices, NamesCountOnlyWhereOneProgramWroteTheFiles)
{
    Takes takes{take("MVI_0101.MOV", 30), take("MVI_0102.MOV", 30), take("MVI_0103.MOV", 30)};
    takes[0].facts.encoder = "One";
    takes[1].facts.encoder = "One";
    takes[2].facts.encoder = "Two";
    EXPECT_THAT(namesOf(takes), ElementsAre("MVI_", "MVI_", ""));

    takes[2].facts.encoder = "One";
    takes[2].facts.frameRate = vxlsync::FrameRate{25, 1};
    EXPECT_THAT(namesOf(takes), ElementsAre("MVI_", "MVI_", ""));
}

TEST(Devices, NamesThatCountOnAreNotBelievedAgainstTheClocks)
{
    EXPECT_THAT(namesOf({created(0, 30, "MVI_0101.MOV"), created(10, 30, "MVI_0102.MOV")}),
                ElementsAre("", ""));
}

TEST(Devices, AStatedNameIsNotThatOfAnother)
{
    EXPECT_THAT(namesOf({ofModel(take("a.mov", 30), "Maker", "One"),
                         stated(take("b.mov", 30), "Maker One")}),
                ElementsAre("Maker One 2", "Maker One"));
}

TEST(Devices, SamplesOfAHostAreOfNoKnownDevice)
{
    EXPECT_THAT(namesOf({take("", 30), take("", 30)}), ElementsAre("", ""));
}

} // namespace
