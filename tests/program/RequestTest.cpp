#include "Request.h"

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using vxlsync::host::Options;
using vxlsync::host::Request;
using vxlsync::host::requestOf;

const std::vector<std::string> three{"a.wav", "b.wav", "c.wav"};

// The sentence that the options are refused with; empty if they are taken.
std::string refusalOf(const Options& options)
{
    try {
        requestOf(options, three);
    } catch (const vxlsync::host::UsageError& error) {
        return error.what();
    }
    return std::string();
}

TEST(Request, HasASourceForEachPathInOrder)
{
    const Request request = requestOf(Options(), three);

    ASSERT_EQ(request.sources.size(), 3u);
    EXPECT_EQ(request.sources[0].path, "a.wav");
    EXPECT_EQ(request.sources[2].path, "c.wav");
    EXPECT_FALSE(request.sources[0].knownStartSeconds.has_value());
    EXPECT_THAT(request.options.apart, IsEmpty());
    EXPECT_FALSE(request.options.reference.has_value());
}

// A variable of a script that was never set.
TEST(Request, RefusesAnEmptyName)
{
    EXPECT_THROW(requestOf(Options(), {"a.wav", ""}), vxlsync::host::UsageError);
}

TEST(Request, PassesOnWhatTheEngineUnderstands)
{
    Options options;
    options.engine.stream = 2;
    options.engine.memoryBytes = vxlsync::leastMemoryBytes;

    const Request request = requestOf(options, three);

    EXPECT_EQ(request.options.stream, 2);
    EXPECT_EQ(request.options.memoryBytes, vxlsync::leastMemoryBytes);
}

TEST(Request, NamesRecordingsByIndex)
{
    Options options;
    options.knownStarts = {{"b", -1.5}};
    options.apart = {{"c.wav", "a"}};
    options.reference = "c";

    const Request request = requestOf(options, three);

    EXPECT_EQ(request.sources[1].knownStartSeconds, -1.5);
    EXPECT_THAT(request.options.apart, ElementsAre(Pair(2u, 0u)));
    EXPECT_EQ(request.options.reference, 2u);
}

TEST(Request, RefusesAFileThatIsNotAmongTheRecordings)
{
    Options fixed;
    fixed.knownStarts = {{"d\x1b.wav", 1.0}};
    Options apart;
    apart.apart = {{"a.wav", "d.wav"}};
    Options reference;
    reference.reference = "d.wav";

    EXPECT_EQ(refusalOf(fixed), "--fix: d\\x1b.wav: not one of the recordings, or more than one");
    EXPECT_EQ(refusalOf(apart), "--apart: d.wav: not one of the recordings, or more than one");
    EXPECT_EQ(refusalOf(reference),
              "--reference: d.wav: not one of the recordings, or more than one");
}

TEST(Request, RefusesTwoStartsOfOneRecordingThatDiffer)
{
    Options options;
    options.knownStarts = {{"a", 1.0}, {"a.wav", 1.0}};
    EXPECT_EQ(refusalOf(options), "");

    options.knownStarts = {{"a", 1.0}, {"a.wav", 2.0}};
    EXPECT_EQ(refusalOf(options), "--fix: a.wav: given two starts that differ");
}

TEST(Request, SaysWhatRecordedAFile)
{
    Options options;
    options.devices = {{"camera", {"a", "c.wav"}}, {"recorder", {"b.wav"}}};

    const Request request = requestOf(options, three);

    EXPECT_EQ(request.sources[0].device, "camera");
    EXPECT_EQ(request.sources[1].device, "recorder");
    EXPECT_EQ(request.sources[2].device, "camera");
}

TEST(Request, SaysWhichSoundOfAFileCounts)
{
    Options options;
    options.streams = {{"b", 2}, {"c.wav", 4}, {"c", 3}};
    options.channels = {{"a.wav", {vxlsync::Channel::mix, 1}},
                        {"b.wav", {vxlsync::Channel::numbered, 5}}};

    const Request request = requestOf(options, three);

    EXPECT_FALSE(request.sources[0].stream.has_value());
    EXPECT_EQ(request.sources[0].channel, vxlsync::Channel::mix);
    EXPECT_EQ(request.sources[1].stream, 2);
    EXPECT_EQ(request.sources[1].channel, vxlsync::Channel::numbered);
    EXPECT_EQ(request.sources[1].channelNumber, 5);
    EXPECT_EQ(request.sources[2].stream, 3);
    EXPECT_FALSE(request.sources[2].channel.has_value());

    options.streams = {{"d.wav", 2}};
    EXPECT_EQ(refusalOf(options), "--stream: d.wav: not one of the recordings, or more than one");
    options.streams.clear();
    options.channels = {{"d.wav", {}}};
    EXPECT_EQ(refusalOf(options), "--channel: d.wav: not one of the recordings, or more than one");
}

TEST(Request, RefusesTwoDevicesOfOneRecording)
{
    Options options;
    options.devices = {{"camera", {"a", "a.wav"}}, {"camera", {"a"}}};
    EXPECT_EQ(refusalOf(options), "");

    options.devices = {{"camera", {"a"}}, {"recorder", {"b", "a.wav"}}};
    EXPECT_EQ(refusalOf(options), "--device: a.wav: given two devices");

    options.devices = {{"camera", {"d.wav"}}};
    EXPECT_EQ(refusalOf(options), "--device: d.wav: not one of the recordings, or more than one");
}

TEST(Request, RefusesToKeepARecordingApartFromItself)
{
    Options options;
    options.apart = {{"a", "a.wav"}};

    EXPECT_EQ(refusalOf(options), "--apart: a and a.wav are the same recording");
}

} // namespace
