#include <algorithm>
#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <ostream>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "Clean.h"
#include "Console.h"
#include "Landmarks.h"
#include "Limits.h"
#include "Rows.h"
#include "VXClusterSync.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXLandmarkExtract.h"
#include "twin/Source.h"

// Hosts whose sources and progress do what no source and no progress should.

namespace
{

using hostile::Landmarks;
using hostile::Samples;
using VXS::VXExtractParams;
using VXS::VXFile;
using VXS::VXFileSet;
using VXS::VXLandmarkExtract;
using VXS::support::Cluster;
using VXS::support::KeyAtFrame;
using VXS::support::ProgressEvent;
using VXS::support::RecordingProgress;
using VXS::support::resultOf;

using Block = VXS::array<float>;

constexpr std::uint32_t hop = 256;

template <typename AnyRow>
std::string nameOf(const testing::TestParamInfo<AnyRow>& row)
{
    return row.param.name;
}

// The clean sound, of which a row spoils an operation.
using Source = signals::SignalInput;

struct SourceRow {
    std::string name;
    std::function<void(Source&, VXLandmarkExtract&)> spoil;
    std::function<Landmarks()> found;
};

std::ostream& operator<<(std::ostream& stream, const SourceRow& row)
{
    return stream << row.name;
}

class HostileSource : public testing::TestWithParam<SourceRow>
{
};

Landmarks nothing()
{
    return {};
}

Landmarks twinOf(const Samples& samples, std::uint32_t claim)
{
    twins::Source twin(samples, claim);
    return hostile::twinLandmarks(VXExtractParams(), twin);
}

std::function<Landmarks()> claimed(std::uint32_t claim)
{
    return [claim] { return twinOf(hostile::cleanSamples(), claim); };
}

// Of every `step` samples the first `heard` are heard, in hops of their own with silence behind.
std::function<Landmarks()> firstOfEach(std::size_t step, std::size_t heard)
{
    return [step, heard] {
        const Samples& samples = hostile::cleanSamples();
        Samples result;
        for (std::size_t first = 0; result.size() < samples.size(); first += step) {
            for (std::size_t i = 0; i < hop; ++i) {
                const bool isHeard = i < heard && first + i < samples.size();
                result.push_back(isHeard ? samples[first + i] : 0.0f);
            }
        }
        return twinOf(result, hostile::cleanCount);
    };
}

std::function<void(Source&, VXLandmarkExtract&)> claiming(std::uint32_t claim)
{
    return [claim](Source& source, VXLandmarkExtract&) {
        source.onGetFrames = [claim] { return claim; };
    };
}

// Resizes each block before it is filled.
std::function<void(Source&, VXLandmarkExtract&)> resizing(std::int32_t dim0, std::int32_t dim1)
{
    return [dim0, dim1](Source& source, VXLandmarkExtract&) { source.resizeBlocks(dim0, dim1); };
}

// Runs another extractor, and expects it to be undisturbed.
void runAnother()
{
    VXLandmarkExtract another{VXExtractParams()};
    hostile::expectUsable(another);
}

using Extractor = VXLandmarkExtract;

Landmarks clean()
{
    return hostile::cleanLandmarks();
}

// What it answers and writes.
std::vector<SourceRow> answerRows()
{
    return {
        {"AllAnswersFalse",
         [](Source& source, Extractor&) {
             source.onRead = [&source](Block& block) { return !source.deliver(block); };
             source.onRewind = [&source] { return !source.goBack(); };
         },
         clean},
        {"WritesNothing",
         [](Source& source, Extractor&) { source.onRead = [](Block&) { return true; }; }, nothing},
        {"WritesNothingAndAnswersFalse",
         [](Source& source, Extractor&) { source.onRead = [](Block&) { return false; }; }, nothing},
        {"WritesOnlyInTheOpening",
         [](Source& source, Extractor&) {
             source.onRead = [&source](Block& block) {
                 return source.reads > 10 || source.deliver(block);
             };
         },
         nothing},
        // What is left in the block would be heard for ever if it were not emptied for each read.
        {"WritesOnlyTheFirstBlockOfEachPass",
         [](Source& source, Extractor&) {
             source.onRead = [&source](Block& block) {
                 return source.position > 0 || source.deliver(block);
             };
         },
         firstOfEach(hostile::cleanCount, hop)},
    };
}

// What it says that it has.
std::vector<SourceRow> claimRows()
{
    return {
        {"ClaimsNothing", claiming(0), nothing},
        {"ClaimsOne", claiming(1), nothing},
        // 2303 / 256 is below 9, and 8 + 2 - 1 frames are fewer than the opening ones.
        {"ClaimsOneTooFewForTheOpening", claiming(2303), nothing},
        {"ClaimsJustTheOpening", claiming(2304), claimed(2304)},
        {"ClaimsHalf", claiming(4000), claimed(4000)},
        {"ClaimsTwice", claiming(16000), claimed(16000)},
        {"ClaimsTenTimes", claiming(80000), claimed(80000)},
        {"ClaimsMoreEachTime",
         [](Source& source, Extractor&) {
             source.onGetFrames = [claim = hostile::cleanCount]() mutable {
                 return std::exchange(claim, claim * 2);
             };
         },
         clean},
    };
}

// What it makes of the block.
std::vector<SourceRow> blockRows()
{
    return {
        {"EmptiesTheBlock", resizing(0, 1), nothing},
        {"ShrinksTheBlockToOne", resizing(1, 1), firstOfEach(1, 1)},
        {"ShrinksTheBlockByOne", resizing(255, 1), firstOfEach(255, 255)},
        {"GrowsTheBlockByOne", resizing(257, 1), firstOfEach(257, 256)},
        {"GrowsTheBlockFourTimes", resizing(1024, 1), firstOfEach(1024, 256)},
        {"GivesTheBlockTwoDimensions", resizing(16, 16), clean},
        // 65536 * 65536 is 0 in 32 bits.
        {"GivesTheBlockDimensionsThatWrap", resizing(65536, 65536), nothing},
        {"AssignsAnEmptyBlock",
         [](Source& source, Extractor&) {
             source.onRead = [](Block& block) {
                 block = Block();
                 return true;
             };
         },
         nothing},
        {"AssignsABlockOfItsOwn",
         [](Source& source, Extractor&) {
             source.onRead = [&source](Block& block) {
                 Block own(block.count());
                 std::fill(own.data, own.data + own.count(), 0.0f);
                 source.deliver(own);
                 block = own;
                 return true;
             };
         },
         clean},
        {"LendsABlockOfItsOwn",
         [](Source& source, Extractor&) {
             auto own = std::make_shared<std::vector<float>>(hop);
             source.onRead = [&source, own](Block& block) {
                 if (!block.alias) delete[] block.data;
                 block.data = own->data();
                 block.alias = true;
                 return source.deliver(block);
             };
         },
         clean},
    };
}

// Where it goes back to.
std::vector<SourceRow> rewindRows()
{
    return {
        {"DoesNotRewind", [](Source& source, Extractor&) { source.onRewind = [] { return true; }; },
         [] {
             twins::Source twin(hostile::cleanSamples(), hostile::cleanCount);
             twin.rewinds = false;
             return hostile::twinLandmarks(VXExtractParams(), twin);
         }},
        {"RewindsToTheEnd",
         [](Source& source, Extractor&) {
             source.onRewind = [&source] {
                 source.position = source.samples.size();
                 return true;
             };
         },
         nothing},
    };
}

// What it does with extractors meanwhile.
std::vector<SourceRow> nestedRows()
{
    return {
        {"RunsAnotherExtractorInGetFrames",
         [](Source& source, Extractor&) {
             source.onGetFrames = [] {
                 runAnother();
                 return hostile::cleanCount;
             };
         },
         clean},
        {"RunsAnotherExtractorInRewind",
         [](Source& source, Extractor&) {
             source.onRewind = [&source] {
                 runAnother();
                 return source.goBack();
             };
         },
         clean},
        {"RunsAnotherExtractorInEveryRead",
         [](Source& source, Extractor&) {
             source.onRead = [&source](Block& block) {
                 runAnother();
                 return source.deliver(block);
             };
         },
         clean},
        {"SetsTheTransformUpInEveryRead",
         [](Source& source, Extractor& extractor) {
             source.onRead = [&source, &extractor](Block& block) {
                 extractor.setupFFT();
                 return source.deliver(block);
             };
         },
         clean},
        {"LoadsAFileInEveryRead",
         [](Source& source, Extractor& extractor) {
             source.onRead = [&source, &extractor](Block& block) {
                 EXPECT_EQ(nullptr, extractor.loadFile("no/such/take.wav"));
                 return source.deliver(block);
             };
         },
         clean},
        {"PrintsThePeaksInEveryRead",
         [](Source& source, Extractor& extractor) {
             source.onRead = [&source, &extractor](Block& block) {
                 extractor.printPeaks();
                 return source.deliver(block);
             };
         },
         clean},
    };
}

std::vector<SourceRow> sourceRows()
{
    return hostile::together<SourceRow>(
        {answerRows(), claimRows(), blockRows(), rewindRows(), nestedRows()});
}

// Exceptions of a source.

struct ThrowRow {
    std::string name;
    std::function<void(Source&)> spoil;
    std::function<void(const std::function<void()>&)> expectThrow;
};

std::ostream& operator<<(std::ostream& stream, const ThrowRow& row)
{
    return stream << row.name;
}

class HostileThrow : public testing::TestWithParam<ThrowRow>
{
};

std::function<void(const std::function<void()>&)> throwsText(const std::string& text)
{
    return [text](const std::function<void()>& run) {
        try {
            run();
            ADD_FAILURE() << "threw nothing";
        } catch (const std::runtime_error& error) {
            EXPECT_EQ(text, error.what());
        }
    };
}

template <typename Thrown>
void throwsA(const std::function<void()>& run)
{
    EXPECT_THROW(run(), Thrown);
}

template <typename Thrown>
std::function<void(Source&)> inGetFrames(const Thrown& thrown)
{
    return [thrown](Source& source) {
        source.onGetFrames = [thrown]() -> unsigned int { throw thrown; };
    };
}

template <typename Thrown>
std::function<void(Source&)> inRewind(const Thrown& thrown)
{
    return [thrown](Source& source) { source.onRewind = [thrown]() -> bool { throw thrown; }; };
}

template <typename Thrown>
std::function<void(Source&)> inRead(int read, const Thrown& thrown)
{
    return [read, thrown](Source& source) {
        source.onRead = [&source, read, thrown](Block& block) -> bool {
            if (source.reads == read) throw thrown;
            return source.deliver(block);
        };
    };
}

std::vector<ThrowRow> throwRows()
{
    const std::runtime_error error("the tape is torn");
    const auto text = throwsText("the tape is torn");
    constexpr int number = 42;
    // 10 reads for the threshold and 8000 / 256 = 31 for the peaks.
    return {
        {"ErrorInGetFrames", inGetFrames(error), text},
        {"ErrorInTheFirstRead", inRead(1, error), text},
        {"ErrorInTheLastReadOfTheOpening", inRead(10, error), text},
        {"ErrorInRewind", inRewind(error), text},
        {"ErrorInTheFirstReadOfThePeaks", inRead(11, error), text},
        {"ErrorInTheMiddle", inRead(25, error), text},
        {"ErrorInTheLastRead", inRead(41, error), text},
        {"NumberInGetFrames", inGetFrames(number), throwsA<int>},
        {"NumberInRead", inRead(20, number), throwsA<int>},
        {"NumberInRewind", inRewind(number), throwsA<int>},
        {"BadAllocInGetFrames", inGetFrames(std::bad_alloc()), throwsA<std::bad_alloc>},
        {"BadAllocInRead", inRead(20, std::bad_alloc()), throwsA<std::bad_alloc>},
        {"BadAllocInRewind", inRewind(std::bad_alloc()), throwsA<std::bad_alloc>},
        {"BlockOfNegativeSize",
         [](Source& source) {
             source.onRead = [](Block& block) {
                 block.resize(-1, 1, 1);
                 return true;
             };
         },
         throwsText("array::resize(): Error allocating memory")},
        // The library has no right to resize what is lent to it.
        {"LentBlockOfAnotherSize",
         [](Source& source) {
             auto own = std::make_shared<std::vector<float>>(hop);
             source.onRead = [own](Block& block) {
                 if (!block.alias) delete[] block.data;
                 block.data = own->data();
                 block.dim0 = static_cast<std::int32_t>(hop) - 1;
                 block.alias = true;
                 return true;
             };
         },
         throwsText("array::resize(): Cannot resize alias array")},
    };
}

// A source that runs the very extractor that reads it.

struct AgainRow {
    std::string name;
    // The read in which it does so; 0 in getFrames and -1 in rewind.
    int read;
};

std::ostream& operator<<(std::ostream& stream, const AgainRow& row)
{
    return stream << row.name;
}

class HostileAgain : public testing::TestWithParam<AgainRow>
{
};

// Progress.

// One event of five keys over 400 frames, which file 2 hears 100 frames before file 1 does.
std::vector<KeyAtFrame> eventFrom(std::int32_t frame)
{
    return {{1, frame}, {2, frame + 100}, {3, frame + 200}, {4, frame + 300}, {5, frame + 400}};
}

void addMatchingFiles(VXFileSet& fileSet)
{
    VXS::support::addFileWith(fileSet, 1, eventFrom(100));
    VXS::support::addFileWith(fileSet, 2, eventFrom(0));
}

// 100 frames are 3.2 seconds.
std::vector<Cluster> matchingClusters()
{
    return {{{1, 0.0f, ""}, {2, 3.2f, ""}}};
}

VXS::VXClusterSync defaultSync()
{
    return VXS::VXClusterSync(VXS::VXClusterSyncParams(VXExtractParams()));
}

// Stages 0 and 1, fractions for none, one and two files, fractions for none to five keys, stages 2
// to 5.
constexpr std::size_t progressCalls = 15;

struct ProgressRow {
    std::string name;
    std::size_t call;
};

std::ostream& operator<<(std::ostream& stream, const ProgressRow& row)
{
    return stream << row.name;
}

class HostileProgress : public testing::TestWithParam<ProgressRow>
{
};

std::vector<ProgressRow> progressRows()
{
    const std::vector<std::string> names = {"Stage0",
                                            "Stage1",
                                            "FractionOfNoFile",
                                            "FractionOfOneFile",
                                            "FractionOfAllFiles",
                                            "FractionOfNoKey",
                                            "FractionOfOneKey",
                                            "FractionOfTwoKeys",
                                            "FractionOfThreeKeys",
                                            "FractionOfFourKeys",
                                            "FractionOfAllKeys",
                                            "Stage2",
                                            "Stage3",
                                            "Stage4",
                                            "Stage5"};
    std::vector<ProgressRow> rows;
    for (std::size_t i = 0; i < names.size(); ++i)
        rows.push_back({names[i], i + 1});
    return rows;
}

// Calls `act` at the call, once.
void actAt(RecordingProgress& progress, std::size_t call, const std::function<void()>& act)
{
    progress.onEvent = [&progress, call, act](const ProgressEvent&) {
        if (progress.events.size() == call) act();
    };
}

} // namespace

TEST_P(HostileSource, HasItsLandmarks)
{
    hostile::withinLimits([] {
        const SourceRow& row = GetParam();
        VXLandmarkExtract extractor{VXExtractParams()};
        Source source(hostile::cleanSamples());
        row.spoil(source, extractor);
        const Landmarks expected = row.found();
        const Console console;

        const std::unique_ptr<VXFile> file(extractor.run(&source, 1));

        EXPECT_EQ(expected, signals::landmarksOf(*file));
        hostile::expectUsable(extractor);
    });
}

INSTANTIATE_TEST_SUITE_P(That, HostileSource, testing::ValuesIn(sourceRows()), nameOf<SourceRow>);

TEST_P(HostileThrow, PassesThroughAndLeavesTheExtractorUsable)
{
    hostile::withinLimits([] {
        const ThrowRow& row = GetParam();
        VXLandmarkExtract extractor{VXExtractParams()};
        for (int run = 0; run < 2; ++run) {
            Source source(hostile::cleanSamples());
            row.spoil(source);
            row.expectThrow([&] { delete extractor.run(&source, 1); });
        }
        hostile::expectUsable(extractor);
    });
}

INSTANTIATE_TEST_SUITE_P(Of, HostileThrow, testing::ValuesIn(throwRows()), nameOf<ThrowRow>);

// An extractor serves one recording at a time: the inner run gives what it gives alone, the outer
// one a file with its id, and the extractor is usable afterwards.
TEST_P(HostileAgain, GivesTheInnerRunItsLandmarksAndTheOuterItsFile)
{
    hostile::withinLimits([] {
        const int read = GetParam().read;
        VXLandmarkExtract extractor{VXExtractParams()};
        int innerRuns = 0;
        const auto runInner = [&] {
            ++innerRuns;
            hostile::expectUsable(extractor);
        };
        Source source(hostile::cleanSamples());
        source.onGetFrames = [&] {
            if (read == 0) runInner();
            return hostile::cleanCount;
        };
        source.onRead = [&](Block& block) {
            if (source.reads == read) runInner();
            return source.deliver(block);
        };
        source.onRewind = [&] {
            if (read == -1) runInner();
            return source.goBack();
        };

        const std::unique_ptr<VXFile> file(extractor.run(&source, 9));

        EXPECT_EQ(1, innerRuns);
        EXPECT_EQ(9, file->getFileID());
        hostile::expectUsable(extractor);
    });
}

INSTANTIATE_TEST_SUITE_P(In, HostileAgain,
                         testing::ValuesIn(std::vector<AgainRow>{{"GetFrames", 0},
                                                                 {"Rewind", -1},
                                                                 {"TheFirstRead", 1},
                                                                 {"TheLastReadOfTheOpening", 10},
                                                                 {"TheFirstReadOfThePeaks", 11},
                                                                 {"TheMiddle", 25},
                                                                 {"TheLastRead", 41}}),
                         nameOf<AgainRow>);

TEST_P(HostileProgress, ThatThrowsEndsTheRunThere)
{
    hostile::withinLimits([] {
        VXFileSet fileSet;
        addMatchingFiles(fileSet);
        VXS::VXClusterSync sync = defaultSync();
        for (const bool isNumber : {false, true}) {
            RecordingProgress progress;
            actAt(progress, GetParam().call, [isNumber] {
                if (isNumber) throw 42;
                throw std::runtime_error("stopped by the host");
            });

            if (isNumber) {
                EXPECT_THROW(sync.run(&fileSet, &progress), int);
            } else {
                throwsText("stopped by the host")([&] { sync.run(&fileSet, &progress); });
            }

            EXPECT_EQ(GetParam().call, progress.events.size());
        }
        EXPECT_EQ(matchingClusters(), resultOf(sync.run(&fileSet, nullptr)));
    });
}

TEST_P(HostileProgress, ThatRunsTheSameAgainGivesBothTheirResult)
{
    hostile::withinLimits([] {
        VXFileSet fileSet;
        addMatchingFiles(fileSet);
        VXS::VXClusterSync sync = defaultSync();
        RecordingProgress progress;
        std::vector<Cluster> inner;
        actAt(progress, GetParam().call, [&] { inner = resultOf(sync.run(&fileSet, nullptr)); });

        const std::vector<Cluster> outer = resultOf(sync.run(&fileSet, &progress));

        EXPECT_EQ(matchingClusters(), inner);
        EXPECT_EQ(matchingClusters(), outer);
        EXPECT_EQ(progressCalls, progress.events.size());
    });
}

TEST_P(HostileProgress, ThatRunsAnExtractionAndAnotherSetGivesAllTheirResult)
{
    hostile::withinLimits([] {
        VXFileSet fileSet;
        addMatchingFiles(fileSet);
        VXFileSet otherSet;
        VXS::support::addFileWith(otherSet, 5, eventFrom(0));
        RecordingProgress progress;
        std::vector<Cluster> inner;
        actAt(progress, GetParam().call, [&] {
            runAnother();
            inner = resultOf(defaultSync().run(&otherSet, nullptr));
        });

        const std::vector<Cluster> outer = resultOf(defaultSync().run(&fileSet, &progress));

        EXPECT_EQ((std::vector<Cluster>{{{5, 0.0f, ""}}}), inner);
        EXPECT_EQ(matchingClusters(), outer);
    });
}

INSTANTIATE_TEST_SUITE_P(In, HostileProgress, testing::ValuesIn(progressRows()),
                         nameOf<ProgressRow>);
