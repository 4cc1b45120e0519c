#include "read/Read.h"

#include <cmath>
#include <stdexcept>
#include <string>
#include <vector>

#include <gmock/gmock.h>

#include "Reading.h"
#include "Signals.h"
#include "Wave.h"

namespace
{

using reading::fileSource;
using reading::plenty;
using reading::readSource;
using reading::samplesOf;
using reading::sampleSource;
using testing::ElementsAre;
using testing::IsEmpty;
using vxlsync::readAll;
using vxlsync::Recording;
using vxlsync::Source;

TEST(Read, GivesEachSourceItsRecording)
{
    const wave::TempFolder folder;
    const std::vector<Source> sources{
        fileSource(folder.write("a.wav", wave::file16({16384, -8192}))),
        fileSource(folder / "gone.wav"), sampleSource({0.25f}, 8000)};
    vxlsync::Run run(3, plenty, {});

    const std::vector<Recording> recordings = readAll(sources, {}, run);

    ASSERT_EQ(recordings.size(), 3u);
    EXPECT_THAT(samplesOf(recordings[0]), ElementsAre(0.5f, -0.25f));
    EXPECT_EQ(recordings[1].failure, "does not exist");
    EXPECT_EQ(recordings[1].samples.size(), 0u);
    EXPECT_THAT(samplesOf(recordings[2]), ElementsAre(0.25f));
}

TEST(Read, TakesStreamAndChannelOfASourceBeforeThoseOfTheJob)
{
    const wave::TempFolder folder;
    const wave::Bytes stereo = wave::file(wave::format(1, 2, 16), wave::samples16({16384, -8192}));
    Source left = fileSource(folder.write("left.wav", stereo));
    left.channel = vxlsync::Channel::left;
    Source numbered = fileSource(folder.write("numbered.wav", stereo));
    numbered.channel = vxlsync::Channel::numbered;
    numbered.channelNumber = 3;
    Source otherStream = fileSource(folder.write("other.wav", stereo));
    otherStream.stream = 2;
    Source first = fileSource(folder.write("first.wav", stereo));
    first.stream = 0;
    vxlsync::Options options;
    options.channel = vxlsync::Channel::numbered;
    options.channelNumber = 2;
    vxlsync::Run run(1, plenty, {});

    const std::vector<Recording> recordings =
        readAll({left, numbered, otherStream, first}, options, run);

    EXPECT_THAT(samplesOf(recordings[0]), ElementsAre(0.5f));
    EXPECT_EQ(recordings[1].failure, "no channel 3 among 2");
    EXPECT_EQ(recordings[2].failure, "no audio stream 2");
    EXPECT_THAT(samplesOf(recordings[3]), ElementsAre(-0.25f));

    options.stream = 2;
    EXPECT_THAT(samplesOf(readAll({first}, options, run)[0]), ElementsAre(-0.25f));
}

TEST(Read, TakesSamplesOfAnyLengthAndRate)
{
    const std::vector<float> samples = signals::noise(5, 150000);

    EXPECT_EQ(samplesOf(readSource(sampleSource(samples, 8000))), samples);
    EXPECT_EQ(readSource(sampleSource(samples, 2000)).samples.size(), 600000u);
    EXPECT_EQ(readSource(sampleSource({}, 48000)).failure, "");
}

TEST(Read, MendsBytesThatAreSignedAgainstTheRule)
{
    const wave::TempFolder folder;
    // 0, 1, -1 and 64 as signed bytes.
    const Recording recording = reading::readFile(
        folder.write("bytes.wav", wave::file(wave::format(1, 1, 8), {0x00, 0x01, 0xFF, 0x40})));

    EXPECT_THAT(samplesOf(recording), ElementsAre(0.0f, 1.0f / 128.0f, -1.0f / 128.0f, 0.5f));
    EXPECT_THAT(recording.notes, ElementsAre("eight-bit samples are signed"));
}

TEST(Read, LeavesBytesAsTheyAreByTheRule)
{
    const wave::TempFolder folder;
    const Recording recording = reading::readFile(
        folder.write("bytes.wav", wave::file(wave::format(1, 1, 8), {0x80, 0x81, 0x7F, 0xC0})));

    EXPECT_THAT(samplesOf(recording), ElementsAre(0.0f, 1.0f / 128.0f, -1.0f / 128.0f, 0.5f));
    EXPECT_THAT(recording.notes, IsEmpty());
}

TEST(Read, ScalesDownSamplesNearTheLargestFloat)
{
    const wave::TempFolder folder;
    const Recording recording = reading::readFile(folder.write(
        "a.wav", wave::file(wave::format(3, 1, 32), wave::samplesFloat({3e38f, -1.5e38f, 0.0f}))));

    EXPECT_THAT(samplesOf(recording), ElementsAre(1.0f, -0.5f, 0.0f));
    EXPECT_THAT(recording.notes,
                ElementsAre("samples go beyond full scale by about 10 to the power of "
                            "38; they are scaled down"));
}

TEST(Read, TakesFewAbsurdSamplesAsBroken)
{
    std::vector<float> samples(2000, 0.5f);
    samples[1000] = 3e38f;
    samples[1001] = std::nanf("");

    const Recording recording = readSource(sampleSource(samples, 8000));

    EXPECT_EQ(samplesOf(recording)[999], 0.5f);
    EXPECT_EQ(samplesOf(recording)[1000], 0.0f);
    EXPECT_THAT(recording.notes, ElementsAre("2 samples are broken and taken as silence"));
}

TEST(Read, WorksWithIntegersThatAreWrittenAsFloats)
{
    const Recording recording = readSource(sampleSource({32767.0f, -32768.0f}, 8000));

    EXPECT_THAT(samplesOf(recording), ElementsAre(32767.0f, -32768.0f));
    EXPECT_THAT(recording.notes, IsEmpty());
}

// Each second of the sources needs 112,128 bytes, and each file touches one more second.
class Memory : public testing::Test
{
protected:
    std::vector<Source> sourcesOf(const std::vector<std::size_t>& lengths) const
    {
        std::vector<Source> sources;
        for (std::size_t i = 0; i < lengths.size(); ++i) {
            const std::vector<int> samples(lengths[i] * 8000, 5000);
            sources.push_back(
                fileSource(folder.write(std::to_string(i) + ".wav", wave::file16(samples))));
        }
        return sources;
    }

    static std::size_t needOf(std::size_t seconds)
    {
        return (seconds + 1) * 112000 + seconds * 128;
    }

    const wave::TempFolder folder;
};

TEST_F(Memory, GoesToTheShortestWhateverTheOrderAndTheThreads)
{
    const std::size_t limit = needOf(4) + needOf(2) + needOf(3) + 1000;
    const std::vector<Source> sources = sourcesOf({6, 4, 2, 5, 3, 30});
    for (const std::size_t threads : {1u, 2u, 5u}) {
        vxlsync::Run run(threads, limit, {});

        const std::vector<Recording> recordings = readAll(sources, {}, run);

        EXPECT_EQ(
            recordings[0].failure,
            "needs 1 MB of memory, and the shorter recordings leave less of the 1 MB that this "
            "job may take");
        EXPECT_EQ(recordings[1].samples.size(), 4u * 8000u);
        EXPECT_EQ(recordings[2].samples.size(), 2u * 8000u);
        EXPECT_NE(recordings[3].failure, "");
        EXPECT_EQ(recordings[4].samples.size(), 3u * 8000u);
        EXPECT_EQ(recordings[5].failure,
                  "needs 3 MB of memory, more than the 1 MB that this job may take");
        EXPECT_EQ(recordings[5].samples.size(), 0u);
        EXPECT_EQ(run.memory.remaining(), 1000u);
    }
}

TEST_F(Memory, GoesToTheFirstByPathOfThoseThatNeedTheSame)
{
    std::vector<Source> sources = sourcesOf({3, 3});
    std::swap(sources[0], sources[1]);
    vxlsync::Run run(1, needOf(3), {});

    const std::vector<Recording> recordings = readAll(sources, {}, run);

    EXPECT_NE(recordings[0].failure, "");
    EXPECT_EQ(recordings[1].failure, "");
}

TEST_F(Memory, IsEnoughToTheByte)
{
    const std::vector<Source> sources = sourcesOf({3});
    vxlsync::Run enough(1, needOf(3), {});
    vxlsync::Run little(1, needOf(3) - 1, {});

    EXPECT_EQ(readAll(sources, {}, enough).front().failure, "");
    EXPECT_NE(readAll(sources, {}, little).front().failure, "");
    EXPECT_EQ(enough.memory.remaining(), 0u);
    EXPECT_EQ(little.memory.remaining(), needOf(3) - 1);
}

TEST(Read, TellsHowFarItIs)
{
    const wave::TempFolder folder;
    std::vector<double> shares;
    std::vector<std::size_t> finished;
    vxlsync::Callbacks callbacks;
    callbacks.progress = [&](const vxlsync::Progress& progress) {
        EXPECT_EQ(progress.stage, vxlsync::Stage::reading);
        shares.push_back(progress.stageShare);
        if (progress.finishedSource) finished.push_back(*progress.finishedSource);
    };
    vxlsync::Run run(1, plenty, callbacks);

    readAll({sampleSource({0.5f}, 8000), fileSource(folder / "gone.wav")}, {}, run);

    EXPECT_THAT(shares, ElementsAre(0.0, 0.5, 1.0));
    EXPECT_THAT(finished, ElementsAre(0u, 1u));
}

TEST(Read, EndsWhereTheHostSaysSo)
{
    vxlsync::Callbacks callbacks;
    callbacks.isCancelled = [] { return true; };
    vxlsync::Run run(2, plenty, callbacks);

    EXPECT_THROW(readAll({sampleSource({0.5f}, 8000)}, {}, run), vxlsync::Cancelled);
}

// The first question is asked before the source is read, the second while it is.
TEST(Read, PassesOnWhatTheHostThrows)
{
    vxlsync::Callbacks callbacks;
    int questions = 0;
    callbacks.isCancelled = [&questions]() -> bool {
        if (++questions > 1) throw std::bad_alloc();
        return false;
    };
    vxlsync::Run run(1, plenty, callbacks);
    const std::vector<float> samples(std::size_t{48000} * 200, 0.5f);

    EXPECT_THROW(readAll({sampleSource(samples, 48000)}, {}, run), std::bad_alloc);
}

} // namespace
