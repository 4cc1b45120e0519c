#include "match/LandmarkFiles.h"

#include <cstdint>
#include <stdexcept>
#include <utility>
#include <vector>

#include <gmock/gmock.h>

#include "Events.h"
#include "Measuring.h"
#include "SignalInput.h"
#include "Signals.h"
#include "VXExtractParams.h"
#include "VXFile.h"
#include "VXLandmark.h"

namespace
{

using events::recordingOf;
using testing::ElementsAre;
using testing::IsEmpty;
using vxlsync::LandmarkFile;
using vxlsync::Recording;

// By frame, and within one as they stand.
std::vector<std::pair<std::int64_t, std::uint32_t>> keysOf(const LandmarkFile& file)
{
    std::vector<std::pair<std::int64_t, std::uint32_t>> keys;
    for (const auto& [at, landmarks] : file->getLandmarkMap()) {
        for (const VXS::VXLandmark* landmark : landmarks)
            keys.emplace_back(at, landmark->key);
    }
    return keys;
}

std::vector<LandmarkFile> filesOf(const std::vector<Recording>& recordings, std::size_t threads = 1)
{
    vxlsync::Run run(threads, measuring::plenty, {});
    return vxlsync::extractLandmarks(recordings, run);
}

TEST(LandmarkFiles, AreOfTheRecordingsByIndex)
{
    std::vector<Recording> recordings(3);
    recordings[0] = recordingOf(events::eventFrom(0));
    recordings[2] = recordingOf(events::eventFrom(75));

    const std::vector<LandmarkFile> files = filesOf(recordings);

    ASSERT_EQ(files.size(), 3u);
    EXPECT_EQ(files[0]->getFileID(), 1);
    EXPECT_EQ(files[1], nullptr);
    EXPECT_EQ(files[2]->getFileID(), 3);
    EXPECT_NE(keysOf(files[0]), keysOf(files[2]));
}

TEST(LandmarkFiles, AreOfTheWholeRecording)
{
    // 625 frames, and not a whole number of the blocks that are read.
    std::vector<Recording> recordings;
    recordings.push_back(recordingOf(events::eventFrom(0)));

    const std::vector<LandmarkFile> files = filesOf(recordings);

    EXPECT_LT(files[0]->getMinLandmarkOffsetTime(), 25);
    EXPECT_GT(files[0]->getMaxLandmarkOffsetTime(), 575);
    EXPECT_LT(files[0]->getMaxLandmarkOffsetTime(), 625);
}

// The last block is not full, and what follows the last sample is silence.
TEST(LandmarkFiles, AreWhatTheLibraryMakesOfTheSamples)
{
    std::vector<float> samples = events::eventFrom(0);
    samples.resize(samples.size() - 1000);
    signals::SignalInput input(samples);
    const LandmarkFile alone(VXS::VXLandmarkExtract{VXS::VXExtractParams()}.run(&input, 7));
    std::vector<Recording> recordings;
    recordings.push_back(recordingOf(samples));

    const std::vector<LandmarkFile> files = filesOf(recordings);

    EXPECT_GT(keysOf(alone).size(), 1000u);
    EXPECT_EQ(keysOf(files[0]), keysOf(alone));
}

TEST(LandmarkFiles, OfSilenceHaveNoLandmarks)
{
    std::vector<Recording> recordings;
    recordings.push_back(recordingOf(std::vector<float>(10 * signals::rate)));
    recordings.push_back(recordingOf({0.5f}));

    for (const LandmarkFile& file : filesOf(recordings)) {
        ASSERT_NE(file, nullptr);
        EXPECT_THAT(keysOf(file), IsEmpty());
    }
}

TEST(LandmarkFiles, DoNotDependOnThreads)
{
    std::vector<Recording> recordings;
    for (const std::size_t start : {0u, 100u, 200u, 300u})
        recordings.push_back(recordingOf(events::eventFrom(start)));

    const std::vector<LandmarkFile> byOne = filesOf(recordings, 1);
    const std::vector<LandmarkFile> byThree = filesOf(recordings, 3);

    for (std::size_t i = 0; i < recordings.size(); ++i) {
        EXPECT_EQ(keysOf(byOne[i]), keysOf(byThree[i])) << i;
        EXPECT_EQ(byThree[i]->getFileID(), static_cast<std::int64_t>(i) + 1);
    }
}

TEST(LandmarkFiles, MakeAStepForEachRecordingWithSamplesOrWithout)
{
    std::vector<double> shares;
    vxlsync::Callbacks callbacks;
    callbacks.progress = [&](const vxlsync::Progress& progress) {
        shares.push_back(progress.stageShare);
    };
    vxlsync::Run run(1, measuring::plenty, callbacks);
    run.meter.begin(vxlsync::Stage::landmarks, 2);
    std::vector<Recording> recordings(2);
    recordings[0] = recordingOf(std::vector<float>(signals::rate));

    vxlsync::extractLandmarks(recordings, run);

    EXPECT_THAT(shares, ElementsAre(0.0, 0.5, 1.0));
}

// Of one recording, so that only the extraction itself can ask.
std::vector<Recording> tenHours()
{
    std::vector<Recording> recordings(1);
    recordings[0].samples.appendSilence(36000u * signals::rate);
    return recordings;
}

TEST(LandmarkFiles, CanBeEndedWhileTheyAreExtracted)
{
    vxlsync::Run run(1, measuring::plenty, measuring::cancelling());

    EXPECT_THROW(vxlsync::extractLandmarks(tenHours(), run), vxlsync::Cancelled);
}

// The library's own errors of that kind mean that there is no memory.
TEST(LandmarkFiles, PassOnWhatTheHostThrows)
{
    vxlsync::Callbacks callbacks;
    callbacks.isCancelled = []() -> bool { throw std::runtime_error("of the host"); };
    vxlsync::Run run(1, measuring::plenty, callbacks);

    EXPECT_THAT([&] { vxlsync::extractLandmarks(tenHours(), run); },
                testing::ThrowsMessage<std::runtime_error>("of the host"));
}

} // namespace
