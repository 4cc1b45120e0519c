#include <array>
#include <cstddef>
#include <cstdint>
#include <iostream>
#include <map>
#include <memory>
#include <streambuf>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Allocations.h"
#include "FixedConsole.h"
#include "Job.h"
#include "Signals.h"
#include "Sweep.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXLandmarkExtract.h"
#include "Wave.h"
#include "wavfile.h"

// Extraction that gets no memory, from samples and from WAV files.

namespace
{

using allocation::FixedConsole;
using signals::Samples;
using signals::SignalInput;
using VXS::array;
using VXS::VXExtractParams;
using VXS::VXFile;
using VXS::VXFileSet;
using VXS::VXLandmarkExtract;
using VXS::wavfile_t;

using Rows = std::vector<signals::LandmarkRow>;
using FileHolder = std::unique_ptr<VXFile>;

constexpr std::size_t soundCount = 1600;

const Samples& someSound()
{
    static const Samples sound = signals::noise(7, soundCount);
    return sound;
}

const Rows& landmarksOfSound()
{
    static const Rows rows = signals::extractLandmarks(job::smallParams(), someSound());
    return rows;
}

// Leaves samples in a block of another size at each third read, with ones behind what was asked
// for.
void resizeEachThird(SignalInput& input)
{
    input.onRead = [&input](array<float>& block) {
        const std::int32_t wanted = block.count();
        if (input.reads % 3 == 0) block.resize(block.dim0 + 5, 1, 1);
        std::fill(block.data, block.data + wanted, 0.0f);
        std::fill(block.data + wanted, block.data + block.count(), 1.0f);
        array<float> asked;
        asked.alias = true;
        asked.data = block.data;
        asked.dim0 = wanted;
        asked.dim1 = 1;
        asked.dim2 = 1;
        return input.deliver(asked);
    };
}

// The landmarks of a file, or the one row {-1, 0} for none.
Rows rowsOf(const FileHolder& file)
{
    return file == nullptr ? Rows{{-1, 0}} : signals::landmarksOf(*file);
}

std::uint64_t sweepOfSamples(const VXExtractParams& params, const Samples& sound)
{
    const Rows expected = signals::extractLandmarks(params, sound);
    EXPECT_LT(10u, expected.size());
    SignalInput input(sound);
    return allocation::sweep(
        expected, [&params] { return std::make_unique<VXLandmarkExtract>(params); },
        [&input](VXLandmarkExtract& extractor) {
            input.rewind();
            return FileHolder(extractor.run(&input, 1));
        },
        [](VXLandmarkExtract&, const FileHolder& file) { return rowsOf(file); });
}

// What loading has told besides its value.
struct Loaded {
    Rows rows;
    std::string printed;
};

bool operator==(const Loaded& left, const Loaded& right)
{
    return left.rows == right.rows && left.printed == right.printed;
}

std::ostream& operator<<(std::ostream& stream, const Loaded& loaded)
{
    return stream << testing::PrintToString(loaded.rows) << " after '" << loaded.printed << "'";
}

// The fields of the header and the first two samples.
using Header = std::array<float, 5>;

Header headerOf(wavfile_t& file)
{
    array<float> block(2);
    file.read_mono<float>(block);
    return {static_cast<float>(file.channels), static_cast<float>(file.sampleRate),
            static_cast<float>(file.frames), block.data[0], block.data[1]};
}

class ExtractionAllocationOfFiles : public testing::Test
{
protected:
    const wave::TempFolder folder;
    const std::string path = folder.write("take.wav", wave::file16(signals::as16Bit(someSound())));
    const std::string couldNotLoad = "[ERROR]: Could not load: " + path + "\n";
};

} // namespace

TEST(ExtractionAllocation, ASourceIsExtractedAgainWithTheSameExtractor)
{
    EXPECT_LT(100u, sweepOfSamples(job::smallParams(), someSound()));
}

TEST(ExtractionAllocation, SoundAndSilenceByTurnsAreExtractedAgain)
{
    const Samples sound(someSound().begin(), someSound().begin() + 400);

    EXPECT_LT(60u, sweepOfSamples(job::smallParams(),
                                  signals::join({sound, signals::silence(600), sound})));
}

TEST(ExtractionAllocation, ALongTransformIsMadeAgain)
{
    VXExtractParams params = job::smallParams();
    // Short ones are made in another way.
    params.setFftSize(1024);
    params.setHopSize(512);
    params.initialFrames = 2;

    EXPECT_LT(50u, sweepOfSamples(params, signals::noise(3, 5000)));
}

TEST(ExtractionAllocation, ASourceThatResizesTheBlockIsExtractedAgain)
{
    SignalInput input(someSound());
    resizeEachThird(input);

    const std::uint64_t allocations = allocation::sweep(
        landmarksOfSound(), [] { return std::make_unique<VXLandmarkExtract>(job::smallParams()); },
        [&input](VXLandmarkExtract& extractor) {
            input.reads = 0;
            input.rewind();
            return FileHolder(extractor.run(&input, 1));
        },
        [](VXLandmarkExtract&, const FileHolder& file) { return rowsOf(file); });

    EXPECT_LT(100u, allocations);
}

TEST(ExtractionAllocation, AnExtractorWithResultsIsUsedAgain)
{
    const auto makeUsed = [] {
        auto extractor = std::make_unique<VXLandmarkExtract>(job::smallParams());
        SignalInput input(signals::noise(8, soundCount));
        const FileHolder earlier(extractor->run(&input, 2));
        return extractor;
    };
    SignalInput input(someSound());

    const std::uint64_t allocations = allocation::sweep(
        landmarksOfSound(), makeUsed,
        [&input](VXLandmarkExtract& extractor) {
            input.rewind();
            return FileHolder(extractor.run(&input, 1));
        },
        [](VXLandmarkExtract&, const FileHolder& file) { return rowsOf(file); });

    EXPECT_LT(100u, allocations);
}

TEST(ExtractionAllocation, AnExtractorIsMadeOrNotAtAll)
{
    const std::uint64_t allocations = allocation::sweep(
        landmarksOfSound(), [] { return std::make_unique<VXExtractParams>(job::smallParams()); },
        [](VXExtractParams& params) { return std::make_unique<VXLandmarkExtract>(params); },
        [](VXExtractParams&, const std::unique_ptr<VXLandmarkExtract>& extractor) {
            SignalInput input(someSound());
            return rowsOf(FileHolder(extractor->run(&input, 1)));
        });

    EXPECT_LE(2u, allocations);
}

TEST(ExtractionAllocation, AnExtractorIsDestroyedWithoutMemory)
{
    auto extractor = std::make_unique<VXLandmarkExtract>(job::smallParams());
    SignalInput input(someSound());
    FileHolder(extractor->run(&input, 1)).reset();
    const allocation::Refusal refusal(0, allocation::Refused::AllFromThere);

    extractor.reset();

    EXPECT_FALSE(refusal.hasHappened());
}

TEST(ExtractionAllocation, AStageAfterOneThatGotNoMemoryDoesNoHarm)
{
    // Each allocation of the first stage is refused, and the others are called all the same.
    const auto makeRefused = [](std::uint64_t number) {
        auto extractor = std::make_unique<VXLandmarkExtract>(job::smallParams());
        allocation::Refusal refusal(number, allocation::Refused::One);
        try {
            extractor->setupFFT();
        } catch (const std::exception&) {
        }
        refusal.end();
        return std::make_pair(std::move(extractor), refusal.hasHappened());
    };

    bool isRefused = true;
    for (std::uint64_t number = 0; isRefused; ++number) {
        const auto made = makeRefused(number);
        isRefused = made.second;
        VXLandmarkExtract& extractor = *made.first;
        SignalInput input(someSound());
        extractor.findFreqPeaks(&input);
        extractor.prune();
        VXFile file(1);
        extractor.combine(&file);

        EXPECT_EQ(isRefused ? Rows() : landmarksOfSound(), signals::landmarksOf(file)) << number;
    }
}

TEST(ExtractionAllocation, AThresholdIsSmoothedAgain)
{
    const auto makeReady = [] {
        auto extractor = std::make_unique<VXLandmarkExtract>(job::smallParams());
        SignalInput input(someSound());
        FileHolder(extractor->run(&input, 1)).reset();
        return extractor;
    };
    const Samples envelope = {0.0f, 9.0f, 1.0f, 3.0f, 2.0f, 8.0f};
    const auto smoothed = [&envelope](VXLandmarkExtract& extractor) {
        auto levels = std::make_unique<array<float>>(static_cast<std::int32_t>(envelope.size()));
        std::copy(envelope.begin(), envelope.end(), levels->data);
        extractor.smooth(*levels);
        return levels;
    };
    const auto samplesOf = [](VXLandmarkExtract&, const std::unique_ptr<array<float>>& levels) {
        return Samples(levels->data, levels->data + levels->count());
    };
    const auto ready = makeReady();
    const Samples expected = samplesOf(*ready, smoothed(*ready));
    ASSERT_LT(envelope[2], expected[2]);

    EXPECT_LE(4u, allocation::sweep(expected, makeReady, smoothed, samplesOf));
}

TEST_F(ExtractionAllocationOfFiles, AHeaderIsReadOrTheReaderIsNotThere)
{
    const std::vector<int> samples = signals::as16Bit(someSound());
    const Header expected = {1.0f, 8000.0f, static_cast<float>(soundCount),
                             static_cast<float>(samples[0]) / 32768.0f,
                             static_cast<float>(samples[1]) / 32768.0f};

    const std::uint64_t allocations = allocation::sweep(
        expected, [this] { return std::make_unique<std::string>(path); },
        [](const std::string& from) { return std::make_unique<wavfile_t>(from, 8u, 1, 16000u); },
        [](const std::string&, const std::unique_ptr<wavfile_t>& file) { return headerOf(*file); });

    // The reader, the buffer of its stream and its own.
    EXPECT_LE(3u, allocations);
}

TEST_F(ExtractionAllocationOfFiles, LoadingWithoutMemoryIsToldAsAFileThatCannotBeLoaded)
{
    FixedConsole console;
    const std::vector<int> samples = signals::as16Bit(someSound());
    const std::pair<Header, std::string> expected = {{1.0f, 8000.0f, static_cast<float>(soundCount),
                                                      static_cast<float>(samples[0]) / 32768.0f,
                                                      static_cast<float>(samples[1]) / 32768.0f},
                                                     ""};
    const std::pair<Header, std::string> refused = {{}, couldNotLoad};

    const std::uint64_t allocations = allocation::sweep(
        expected, [] { return std::make_unique<VXLandmarkExtract>(job::smallParams()); },
        [this](VXLandmarkExtract& extractor) {
            return std::unique_ptr<wavfile_t>(extractor.loadFile(path));
        },
        [&console](VXLandmarkExtract&, const std::unique_ptr<wavfile_t>& file) {
            return std::make_pair(file == nullptr ? Header() : headerOf(*file), console.take());
        },
        [&refused](const auto& value) { return value == refused; });

    EXPECT_LE(3u, allocations);
}

TEST_F(ExtractionAllocationOfFiles, AFileIsExtractedAgainWithTheSameExtractor)
{
    FixedConsole console;
    const Loaded refused = {{{-1, 0}}, couldNotLoad};
    VXLandmarkExtract clean(job::smallParams());
    const Rows expected = rowsOf(FileHolder(clean.run(path, 1)));
    ASSERT_LT(10u, expected.size());

    const std::uint64_t allocations = allocation::sweep(
        Loaded{expected, ""},
        [] { return std::make_unique<VXLandmarkExtract>(job::smallParams()); },
        [this](VXLandmarkExtract& extractor) { return FileHolder(extractor.run(path, 1)); },
        [&console](VXLandmarkExtract&, const FileHolder& file) {
            return Loaded{rowsOf(file), console.take()};
        },
        [&refused](const Loaded& value) { return value == refused; });

    EXPECT_LT(100u, allocations);
}

TEST_F(ExtractionAllocationOfFiles, AWholeListIsExtractedAgainWithTheSameExtractor)
{
    const FixedConsole console;
    const std::vector<std::string> paths = {
        path, folder.write("other.wav", wave::file16(signals::as16Bit(signals::noise(9, 900)))),
        folder.write("no sound.wav", {})};
    VXLandmarkExtract clean(job::smallParams());
    const std::unique_ptr<VXFileSet> cleanSet(clean.runAll(paths));
    const job::FileSetView expected = job::viewOf(*cleanSet);
    ASSERT_EQ(2u, expected.size());

    const std::uint64_t allocations = allocation::sweep(
        expected, [] { return std::make_unique<VXLandmarkExtract>(job::smallParams()); },
        [&paths](VXLandmarkExtract& extractor) {
            return std::unique_ptr<VXFileSet>(extractor.runAll(paths));
        },
        [](VXLandmarkExtract&, const std::unique_ptr<VXFileSet>& fileSet) {
            return job::viewOf(*fileSet);
        },
        // A file that cannot be loaded is left out, and what is there is whole.
        [&expected](const job::FileSetView& value) { return job::isPartOf(value, expected); });

    EXPECT_LT(200u, allocations);
}
