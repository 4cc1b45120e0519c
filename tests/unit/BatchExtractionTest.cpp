#include <cstdint>
#include <map>
#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Console.h"
#include "Signals.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXLandmarkExtract.h"
#include "Wave.h"

namespace
{

using VXS::Peak;
using VXS::VXExtractParams;
using VXS::VXFileSet;
using VXS::VXLandmarkExtract;

using Names = std::map<std::int64_t, std::string>;

wave::Bytes recording(std::uint32_t seed)
{
    return wave::file16(signals::as16Bit(signals::noise(seed, 8000)));
}

// The two lines of a file, with what comes between them.
std::string linesOf(const std::string& path, int id, const std::string& between = "")
{
    return "STARTING: " + path + " (id " + std::to_string(id) + ")\n" + between +
           "FEATURE EXTRACTION COMPLETE: " + path + "\n";
}

class BatchExtraction : public testing::Test
{
protected:
    BatchExtraction() : extractor(VXExtractParams()) {}

    // Runs the batch and keeps what it printed.
    std::unique_ptr<VXFileSet> runAll(const std::vector<std::string>& paths)
    {
        const Console console;
        std::unique_ptr<VXFileSet> fileSet(extractor.runAll(paths));
        printed = console.text();
        flushed = console.flushed();
        return fileSet;
    }

    std::vector<signals::LandmarkRow> extract(const std::string& path)
    {
        VXLandmarkExtract fresh{VXExtractParams()};
        const std::unique_ptr<VXS::VXFile> file(fresh.run(path, 1));
        return signals::landmarksOf(*file);
    }

    std::string printPeaks()
    {
        const Console console;
        extractor.printPeaks();
        flushed = console.flushed();
        return console.text();
    }

    VXLandmarkExtract extractor;
    wave::TempFolder folder;
    std::string printed;
    std::vector<std::string> flushed;
};

std::vector<std::int64_t> idsOf(VXFileSet& fileSet)
{
    std::vector<std::int64_t> ids;
    for (const auto& entry : fileSet.getFiles())
        ids.push_back(entry.first);
    return ids;
}

using Ids = std::vector<std::int64_t>;

} // namespace

TEST_F(BatchExtraction, KeepsThePathsWhoseExtensionIsExactlyWav)
{
    const std::string b = folder.write("b.wav", recording(1));
    const std::string c = folder.write("c.WAV", recording(2));
    const std::string d = folder.write("d.wav", recording(3));

    const auto fileSet = runAll({folder / "x.mp3", b, c, d});

    EXPECT_EQ((Ids{1, 2}), idsOf(*fileSet));
    EXPECT_EQ((Names{{1, "b"}, {2, "d"}}), fileSet->idToName);
    EXPECT_EQ((Names{{1, b}, {2, d}}), fileSet->idToPath);
    EXPECT_EQ((std::map<std::string, std::int64_t>{{"b", 1}, {"d", 2}}), fileSet->nameToId);
    EXPECT_EQ(linesOf(b, 1) + linesOf(d, 2), printed);
}

TEST_F(BatchExtraction, DropsOtherExtensionsSilently)
{
    const std::string mixed = folder.write("mixed.Wav", recording(1));
    const std::string bare = folder.write("wav", recording(1));
    const std::string longer = folder.write("a.wave", recording(1));
    const std::string after = folder.write("a.wav.bak", recording(1));

    const auto fileSet = runAll({mixed, bare, longer, after, "", "."});

    EXPECT_TRUE(fileSet->getFiles().empty());
    EXPECT_EQ("", printed);
}

TEST_F(BatchExtraction, EmptyListGivesAnEmptySet)
{
    const auto fileSet = runAll({});

    ASSERT_NE(nullptr, fileSet);
    EXPECT_TRUE(fileSet->getFiles().empty());
    EXPECT_TRUE(fileSet->idToName.empty());
    EXPECT_TRUE(fileSet->idToPath.empty());
    EXPECT_TRUE(fileSet->nameToId.empty());
    EXPECT_EQ("", printed);
}

TEST_F(BatchExtraction, FilesHoldTheLandmarksOfTheirRecordings)
{
    const std::string a = folder.write("a.wav", recording(1));
    const std::string b = folder.write("b.wav", recording(2));

    const auto fileSet = runAll({a, b});

    EXPECT_FALSE(extract(a).empty());
    EXPECT_NE(extract(a), extract(b));
    EXPECT_EQ(extract(a), signals::landmarksOf(*fileSet->getFiles().at(1)));
    EXPECT_EQ(extract(b), signals::landmarksOf(*fileSet->getFiles().at(2)));
    EXPECT_EQ(1, fileSet->getFiles().at(1)->getFileID());
    EXPECT_EQ(2, fileSet->getFiles().at(2)->getFileID());
}

TEST_F(BatchExtraction, EqualShortNamesKeepBothFilesAndTheLaterId)
{
    const wave::TempFolder other;
    const std::string one = folder.write("take.wav", recording(1));
    const std::string two = other.write("take.wav", recording(2));

    const auto fileSet = runAll({one, two});

    EXPECT_EQ((Ids{1, 2}), idsOf(*fileSet));
    EXPECT_EQ((std::map<std::string, std::int64_t>{{"take", 2}}), fileSet->nameToId);
    EXPECT_EQ((Names{{1, "take"}, {2, "take"}}), fileSet->idToName);
    EXPECT_EQ((Names{{1, one}, {2, two}}), fileSet->idToPath);
}

TEST_F(BatchExtraction, DuplicatesAreKept)
{
    const std::string path = folder.write("take.wav", recording(1));

    const auto fileSet = runAll({path, path});

    EXPECT_EQ((Ids{1, 2}), idsOf(*fileSet));
    EXPECT_EQ(linesOf(path, 1) + linesOf(path, 2), printed);
}

TEST_F(BatchExtraction, ShortNameEndsBeforeTheLastDot)
{
    const std::string path = folder.write("b.c.wav", recording(1));

    EXPECT_EQ((Names{{1, "b.c"}}), runAll({path})->idToName);
}

TEST_F(BatchExtraction, NameThatIsNothingButTheExtensionIsEmpty)
{
    const std::string path = folder.write(".wav", recording(1));

    EXPECT_EQ((Names{{1, ""}}), runAll({path})->idToName);
}

TEST_F(BatchExtraction, MissingFileUsesUpItsIdAndPrintsItsLines)
{
    const std::string missing = folder / "missing.wav";
    const std::string present = folder.write("present.wav", recording(1));

    const auto fileSet = runAll({missing, present});

    EXPECT_EQ((Ids{2}), idsOf(*fileSet));
    EXPECT_EQ((Names{{2, "present"}}), fileSet->idToName);
    EXPECT_EQ(linesOf(missing, 1, "[ERROR]: Could not load: " + missing + "\n") +
                  linesOf(present, 2),
              printed);
}

TEST_F(BatchExtraction, PathWithoutAFolderIsPrintedAsGiven)
{
    const auto fileSet = runAll({"no such a.wav"});

    EXPECT_EQ("STARTING: no such a.wav (id 1)\n"
              "[ERROR]: Could not load: no such a.wav\n"
              "FEATURE EXTRACTION COMPLETE: no such a.wav\n",
              printed);
}

TEST_F(BatchExtraction, OtherSampleRateLeavesTheFileOut)
{
    const std::string path = folder.write("take.wav", wave::file16({1, 2, 3}, 44100));

    const auto fileSet = runAll({path});

    EXPECT_TRUE(fileSet->getFiles().empty());
    EXPECT_TRUE(fileSet->idToPath.empty());
    EXPECT_EQ(linesOf(path, 1, "[ERROR]:" + path + " has an incorrect sample rate\n"), printed);
}

TEST_F(BatchExtraction, RecordingTooShortToAnalyseIsInTheSet)
{
    const std::string path = folder.write("take.wav", wave::file16({1, 2, 3}));

    const auto fileSet = runAll({path});

    EXPECT_EQ((Ids{1}), idsOf(*fileSet));
    EXPECT_TRUE(signals::landmarksOf(*fileSet->getFiles().at(1)).empty());
}

// The first line waits for the flush of the last one.
TEST_F(BatchExtraction, FlushesOnlyAtTheEndOfAFile)
{
    const std::string a = folder.write("a.wav", recording(1));
    const std::string b = folder.write("b.wav", recording(2));

    runAll({a, b});

    EXPECT_EQ((std::vector<std::string>{linesOf(a, 1), linesOf(b, 2)}), flushed);
}

TEST_F(BatchExtraction, FlushesAnErrorAtOnce)
{
    const std::string path = folder / "missing.wav";

    runAll({path});

    EXPECT_EQ((std::vector<std::string>{"STARTING: " + path + " (id 1)\n" +
                                            "[ERROR]: Could not load: " + path + "\n",
                                        "FEATURE EXTRACTION COMPLETE: " + path + "\n"}),
              flushed);
}

// The transform of 2^31 samples does not fit. The sanitizers see that nothing is left behind.
TEST_F(BatchExtraction, ExceptionOfARunPassesOn)
{
    const std::string path = folder.write("a.wav", recording(1));
    VXExtractParams params;
    ASSERT_TRUE(params.setFftSize(1u << 31u));
    VXLandmarkExtract huge(params);
    const Console console;

    EXPECT_THROW(delete huge.runAll({path}), std::runtime_error);

    EXPECT_EQ("STARTING: " + path + " (id 1)\n", console.text());
}

TEST_F(BatchExtraction, PeaksAfterwardsAreThoseOfTheLastFileThatWasRead)
{
    const std::string a = folder.write("a.wav", recording(1));
    const std::string b = folder.write("b.wav", recording(2));
    runAll({b});
    const std::string expected = printPeaks();

    runAll({a, b, folder / "missing.wav"});

    EXPECT_FALSE(expected.empty());
    EXPECT_EQ(expected, printPeaks());
}

TEST_F(BatchExtraction, PrintPeaksOfAnExtractorThatNeverRanPrintsNothing)
{
    EXPECT_EQ("", printPeaks());
}

TEST_F(BatchExtraction, PrintPeaksShowsFramesWithPeaksAndTheirPeaksLoudestFirst)
{
    signals::setPeaks(extractor, {{}, {{3, -20.0f, 1}, {7, -1.5f, 1}}, {}, {{12, 0.0f, 3}}});

    EXPECT_EQ("FRAME: 1\n"
              "f: 7 a: -1.5 t:1\n"
              "f: 3 a: -20 t:1\n"
              "FRAME: 3\n"
              "f: 12 a: 0 t:3\n",
              printPeaks());
}

TEST_F(BatchExtraction, PrintPeaksFlushesEveryLine)
{
    signals::setPeaks(extractor, {{{3, -20.0f, 0}, {7, -30.0f, 0}}});

    printPeaks();

    EXPECT_EQ((std::vector<std::string>{"FRAME: 0\n", "f: 3 a: -20 t:0\n", "f: 7 a: -30 t:0\n"}),
              flushed);
}

TEST_F(BatchExtraction, PrintPeaksReordersTheTableItself)
{
    signals::setPeaks(extractor, {{{9, -20.0f, 0}, {7, -1.5f, 0}, {3, -20.0f, 0}}});

    printPeaks();

    EXPECT_EQ((std::vector<int>{7, 3, 9}), signals::binsOf(extractor, 0));
}

TEST(Peak, PrintsItsFieldsOnALineOfItsOwn)
{
    Peak peak{-5, -12.25f, 42};
    const Console console;

    peak.print();

    EXPECT_EQ("f: -5 a: -12.25 t:42\n", console.text());
    EXPECT_EQ((std::vector<std::string>{console.text()}), console.flushed());
}

// Six digits, as the stream writes a float by itself.
TEST(Peak, PrintsItsAmplitudeInTheDefaultFormat)
{
    Peak peak{1, -313.07138f, 0};
    Peak loud{1, 1.0e10f, 0};
    const Console console;

    peak.print();
    loud.print();

    EXPECT_EQ("f: 1 a: -313.071 t:0\nf: 1 a: 1e+10 t:0\n", console.text());
}
