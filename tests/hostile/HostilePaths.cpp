#include <algorithm>
#include <csignal>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <functional>
#include <memory>
#include <ostream>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <sys/resource.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include "Clean.h"
#include "Console.h"
#include "Limits.h"
#include "Outcome.h"
#include "Rows.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXLandmarkExtract.h"
#include "Wave.h"
#include "plain/Reader.h"
#include "wavfile.h"

// Paths that lead to no recording, to none that may be read, or to one that changes under the
// reader's hands.

namespace
{

using hostile::clean;
using hostile::noRiff;
using hostile::Outcome;
using hostile::refused;
using VXS::VXExtractParams;
using VXS::VXFile;
using VXS::VXLandmarkExtract;
using wave::Bytes;
using wave::TempFolder;

namespace filesystem = std::filesystem;

constexpr unsigned int openForWriting = 16;

struct Row {
    std::string name;
    // Makes what is there and returns the path.
    std::function<std::string(const TempFolder&)> make;
    Outcome outcome;
};

std::ostream& operator<<(std::ostream& stream, const Row& row)
{
    return stream << row.name;
}

template <typename AnyRow>
std::string nameOf(const testing::TestParamInfo<AnyRow>& row)
{
    return row.param.name;
}

class HostilePath : public testing::TestWithParam<Row>
{
};

// The rights of the superuser, to whom everything is readable, are given up for these.
class HostileRights : public testing::TestWithParam<Row>
{
};

std::string writeClean(const TempFolder& folder, const std::string& name = "take.wav")
{
    return folder.write(name, hostile::cleanFile());
}

std::string linkTo(const TempFolder& folder, const std::string& target,
                   const std::string& name = "link.wav")
{
    filesystem::create_symlink(target, folder / name);
    return folder / name;
}

std::string makePipe(const TempFolder& folder)
{
    const std::string path = folder / "pipe.wav";
    EXPECT_EQ(0, mkfifo(path.c_str(), 0600));
    return path;
}

std::string makeSocket(const TempFolder& folder)
{
    const std::string path = folder / "socket.wav";
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, sizeof(address.sun_path) - 1);
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    EXPECT_EQ(0, bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof(address)));
    close(descriptor);
    return path;
}

// Links of which each leads to the next, and the last to a recording.
std::string linkChain(const TempFolder& folder, int links)
{
    std::string path = writeClean(folder);
    for (int i = 0; i < links; ++i)
        path = linkTo(folder, path, "link" + std::to_string(i) + ".wav");
    return path;
}

std::function<std::string(const TempFolder&)> fixed(const std::string& path)
{
    return [path](const TempFolder&) { return path; };
}

std::function<std::string(const TempFolder&)> inFolder(const std::string& name)
{
    return [name](const TempFolder& folder) { return folder / name; };
}

std::function<std::string(const TempFolder&)> cleanNamed(const std::string& name)
{
    return [name](const TempFolder& folder) { return writeClean(folder, name); };
}

std::string repeat(const std::string& letters, int times)
{
    std::string text;
    for (int i = 0; i < times; ++i)
        text += letters;
    return text;
}

// What lies there, if anything.
std::vector<Row> nodeRows()
{
    return {
        {"Empty", fixed(""), refused(noRiff)},
        {"Blank", fixed(" "), refused(noRiff)},
        {"Missing", inFolder("missing.wav"), refused(noRiff)},
        {"MissingFolder", inFolder("missing/take.wav"), refused(noRiff)},
        {"Directory", [](const TempFolder& folder) { return folder.path; }, refused(noRiff)},
        {"DirectoryNamedAsARecording",
         [](const TempFolder& folder) {
             filesystem::create_directory(folder / "take.wav");
             return folder / "take.wav";
         },
         refused(noRiff)},
        {"Root", fixed("/"), refused(noRiff)},
        {"Dot", fixed("."), refused(noRiff)},
        {"SlashBehindAFile", [](const TempFolder& folder) { return writeClean(folder) + "/"; },
         refused(noRiff)},
        {"FileTakenForAFolder",
         [](const TempFolder& folder) { return writeClean(folder) + "/take.wav"; },
         refused(noRiff)},
        {"PipeWithoutAWriter", makePipe, refused(noRiff)},
        {"LinkToAPipeWithoutAWriter",
         [](const TempFolder& folder) { return linkTo(folder, makePipe(folder)); },
         refused(noRiff)},
        {"Socket", makeSocket, refused(noRiff)},
        {"ZeroDevice", fixed("/dev/zero"), refused(noRiff)},
        {"NullDevice", fixed("/dev/null"), refused(noRiff)},
        {"RandomDevice", fixed("/dev/urandom"), refused(noRiff)},
        {"FullDevice", fixed("/dev/full"), refused(noRiff)},
        {"Terminal", fixed("/dev/tty"), refused(noRiff)},
        {"LinkToTheZeroDevice",
         [](const TempFolder& folder) { return linkTo(folder, "/dev/zero"); }, refused(noRiff)},
        {"MemoryOfTheProcess", fixed("/proc/self/mem"), refused(noRiff)},
        {"ArgumentsOfTheProcess", fixed("/proc/self/cmdline"), refused(noRiff)},
    };
}

std::vector<Row> linkRows()
{
    // More links than these no system call follows.
    constexpr int fewLinks = 30;
    constexpr int manyLinks = 100;
    return {
        {"LinkToItself",
         [](const TempFolder& folder) { return linkTo(folder, folder / "link.wav"); },
         refused(noRiff)},
        {"TwoLinksToEachOther",
         [](const TempFolder& folder) {
             linkTo(folder, folder / "link.wav", "other.wav");
             return linkTo(folder, folder / "other.wav");
         },
         refused(noRiff)},
        {"LinkToItsOwnFolder", [](const TempFolder& folder) { return linkTo(folder, folder.path); },
         refused(noRiff)},
        {"LinkToNothing",
         [](const TempFolder& folder) { return linkTo(folder, folder / "missing.wav"); },
         refused(noRiff)},
        {"ThirtyLinksToARecording",
         [](const TempFolder& folder) { return linkChain(folder, fewLinks); }, clean()},
        {"HundredLinksToARecording",
         [](const TempFolder& folder) { return linkChain(folder, manyLinks); }, refused(noRiff)},
        {"HardLinkToARecording",
         [](const TempFolder& folder) {
             filesystem::create_hard_link(writeClean(folder), folder / "link.wav");
             return folder / "link.wav";
         },
         clean()},
        {"FolderThatLinksToItself",
         [](const TempFolder& folder) {
             writeClean(folder);
             linkTo(folder, ".", "again");
             return folder / (repeat("again/", 20) + "take.wav");
         },
         clean()},
        {"WayThroughTheParent",
         [](const TempFolder& folder) {
             writeClean(folder);
             return folder /
                    (".././" + filesystem::path(folder.path).filename().string() + "/./take.wav");
         },
         clean()},
    };
}

// Longer names and longer paths than these no system call follows.
std::vector<Row> lengthRows()
{
    const std::string longestName = repeat("a", 251) + ".wav";
    return {
        {"NameOf5000Letters", inFolder(repeat("a", 5000)), refused(noRiff)},
        {"FoldersOf5000Letters", inFolder(repeat("folder/", 714) + "a"), refused(noRiff)},
        {"5000LettersThatLeadToARecording",
         [](const TempFolder& folder) {
             writeClean(folder);
             return folder / (repeat("./", 2500) + "take.wav");
         },
         refused(noRiff)},
        {"3000LettersThatLeadToARecording",
         [](const TempFolder& folder) {
             writeClean(folder);
             return folder / (repeat("./", 1500) + "take.wav");
         },
         clean()},
        {"NameOf255Letters", cleanNamed(longestName), clean()},
        {"NameOf256Letters", inFolder("a" + longestName), refused(noRiff)},
    };
}

std::vector<Row> letterRows()
{
    return {
        {"NewlineInTheName", cleanNamed("two\nlines.wav"), clean()},
        {"NewlineInAMissingName", inFolder("two\nlines.wav"), refused(noRiff)},
        {"ControlLettersInAMissingName", inFolder("\a\b\t\v\f\r\x1b[2J.wav"), refused(noRiff)},
        {"NotUtf8", cleanNamed("\xff\xfe\xc3\x28.wav"), clean()},
        {"NotUtf8AndMissing", inFolder("\xff\xfe\xc3\x28.wav"), refused(noRiff)},
        {"CutUtf8AndMissing", inFolder("\xe2\x82"), refused(noRiff)},
        {"PlaceholdersAndMissing", inFolder("%s%n%100000d.wav"), refused(noRiff)},
        {"NameOfBlanks", cleanNamed("   "), clean()},
        {"NameThatLooksLikeAnOption", cleanNamed("--help"), clean()},
        {"QuotesAndBackslashes", cleanNamed("\"'\\`$(x);.wav"), clean()},
        // As in every interface of the system, the path ends there.
        {"NullLetterAfterTheName",
         [](const TempFolder& folder) {
             return writeClean(folder) + std::string("\0.missing.wav", 13);
         },
         clean()},
        {"NullLetterInFront", fixed(std::string("\0take.wav", 9)), refused(noRiff)},
    };
}

std::vector<Row> pathRows()
{
    return hostile::together<Row>({nodeRows(), linkRows(), lengthRows(), letterRows()});
}

std::vector<Row> rightsRows()
{
    return {
        {"UnreadableFile",
         [](const TempFolder& folder) {
             const std::string path = writeClean(folder);
             EXPECT_EQ(0, chmod(path.c_str(), 0));
             return path;
         },
         refused(noRiff)},
        {"FileForWritingOnly",
         [](const TempFolder& folder) {
             const std::string path = writeClean(folder);
             EXPECT_EQ(0, chmod(path.c_str(), 0222));
             return path;
         },
         refused(noRiff)},
        {"FileInAnUnsearchableFolder",
         [](const TempFolder& folder) {
             filesystem::create_directory(folder / "closed");
             const std::string path = writeClean(folder, "closed/take.wav");
             EXPECT_EQ(0, chmod((folder / "closed").c_str(), 0644));
             return path;
         },
         refused(noRiff)},
        {"LinkToAnUnreadableFile",
         [](const TempFolder& folder) {
             const std::string path = writeClean(folder);
             EXPECT_EQ(0, chmod(path.c_str(), 0));
             return linkTo(folder, path);
         },
         refused(noRiff)},
        {"FileForReadingOnly",
         [](const TempFolder& folder) {
             const std::string path = writeClean(folder);
             EXPECT_EQ(0, chmod(path.c_str(), 0444));
             return path;
         },
         clean()},
    };
}

// Takes the rights of the superuser from this process for as long as it lives.
class WithoutRights
{
public:
    WithoutRights() : group(getegid()), user(geteuid())
    {
        if (user != 0) return;
        EXPECT_EQ(0, setegid(nobody));
        EXPECT_EQ(0, seteuid(nobody));
    }
    ~WithoutRights()
    {
        EXPECT_EQ(0, seteuid(user));
        EXPECT_EQ(0, setegid(group));
    }
    WithoutRights(const WithoutRights&) = delete;
    WithoutRights& operator=(const WithoutRights&) = delete;

private:
    static constexpr unsigned int nobody = 65534;

    gid_t group;
    uid_t user;
};

void openToAll(const TempFolder& folder)
{
    ASSERT_EQ(0, chmod(folder.path.c_str(), 0777));
}

// Recordings that change between the two passes of an extraction.

struct ChangeRow {
    std::string name;
    std::function<void(const std::string& path)> change;
    // Of the recording that the main pass must have found.
    std::function<Bytes()> found;
};

std::ostream& operator<<(std::ostream& stream, const ChangeRow& row)
{
    return stream << row.name;
}

class HostileChange : public testing::TestWithParam<ChangeRow>
{
};

// Reads one file for the threshold and another for the peaks.
class TwoFiles : public plain::Source
{
public:
    TwoFiles(const std::string& first, const std::string& second)
        : opening(first), main(second), current(&opening)
    {
    }

    std::uint32_t frames() override { return opening.frames(); }
    void read(std::vector<float>& block) override { current->read(block); }
    void rewind() override { current = &main; }

private:
    plain::Reader opening;
    plain::Reader main;
    plain::Reader* current;
};

void cut(const std::string& path, std::uint64_t length)
{
    filesystem::resize_file(path, length);
}

std::function<Bytes()> cleanCutAfter(std::size_t length)
{
    return [length] {
        Bytes bytes = hostile::cleanFile();
        bytes.resize(length);
        return bytes;
    };
}

std::vector<ChangeRow> changeRows()
{
    constexpr std::size_t headerBytes = 44;
    const auto unchanged = [] { return hostile::cleanFile(); };
    const auto silenced = [] { return wave::file16(std::vector<int>(hostile::cleanCount, 0)); };
    return {
        {"Deleted", [](const std::string& path) { filesystem::remove(path); }, unchanged},
        {"DeletedWithItsFolder",
         [](const std::string& path) {
             filesystem::remove_all(filesystem::path(path).parent_path());
         },
         unchanged},
        {"Renamed", [](const std::string& path) { filesystem::rename(path, path + ".old"); },
         unchanged},
        {"ReplacedByAnother",
         [](const std::string& path) {
             wave::writeFile(path + ".new", {1, 2, 3});
             filesystem::rename(path + ".new", path);
         },
         unchanged},
        {"ReplacedByADirectory",
         [](const std::string& path) {
             filesystem::remove(path);
             filesystem::create_directory(path);
         },
         unchanged},
        {"RightsTakenAway", [](const std::string& path) { chmod(path.c_str(), 0); }, unchanged},
        {"GrownBySamples",
         [](const std::string& path) {
             std::ofstream(path, std::ios::binary | std::ios::app) << std::string(50000, 'x');
         },
         unchanged},
        {"CutToHalf", [](const std::string& path) { cut(path, headerBytes + hostile::cleanCount); },
         cleanCutAfter(headerBytes + hostile::cleanCount)},
        {"CutInASample",
         [](const std::string& path) { cut(path, headerBytes + hostile::cleanCount - 1); },
         cleanCutAfter(headerBytes + hostile::cleanCount - 1)},
        {"CutByOneSample",
         [](const std::string& path) { cut(path, headerBytes + 2 * hostile::cleanCount - 2); },
         cleanCutAfter(headerBytes + 2 * hostile::cleanCount - 2)},
        {"CutToItsHeader", [](const std::string& path) { cut(path, headerBytes); },
         cleanCutAfter(headerBytes)},
        {"CutInItsHeader", [](const std::string& path) { cut(path, 10); },
         cleanCutAfter(headerBytes)},
        {"CutToNothing", [](const std::string& path) { cut(path, 0); }, cleanCutAfter(headerBytes)},
        {"Silenced",
         [silenced](const std::string& path) {
             std::fstream stream(path, std::ios::binary | std::ios::in | std::ios::out);
             const Bytes bytes = silenced();
             stream.write(reinterpret_cast<const char*>(bytes.data()),
                          static_cast<std::streamsize>(bytes.size()));
         },
         silenced},
        {"HeaderDestroyed",
         [](const std::string& path) {
             std::fstream stream(path, std::ios::binary | std::ios::in | std::ios::out);
             stream << std::string(headerBytes, 'x');
         },
         unchanged},
    };
}

// Written headers.

struct WriteRow {
    std::string name;
    // The most bytes that the disk takes for a file.
    std::uint64_t room;
    std::function<std::string(const TempFolder&)> make;
    // Bytes of the header that stand in the file; -1 if there is no regular file.
    int written;
};

std::ostream& operator<<(std::ostream& stream, const WriteRow& row)
{
    return stream << row.name;
}

class HostileWrite : public testing::TestWithParam<WriteRow>
{
};

std::vector<WriteRow> writeRows()
{
    constexpr std::uint64_t ample = 1000;
    constexpr int none = -1;
    const auto newFile = inFolder("new.wav");
    return {
        {"RoomForNothing", 0, newFile, 0},
        {"RoomForAByte", 1, newFile, 1},
        {"RoomForHalfTheHeader", 22, newFile, 22},
        {"RoomForAllButAByte", 43, newFile, 43},
        {"RoomForExactlyTheHeader", 44, newFile, 44},
        {"FullDevice", ample, fixed("/dev/full"), none},
        {"NullDevice", ample, fixed("/dev/null"), none},
        {"Empty", ample, fixed(""), none},
        {"Directory", ample, [](const TempFolder& folder) { return folder.path; }, none},
        {"MissingFolder", ample, inFolder("missing/new.wav"), none},
        {"PipeWithoutAReader", ample, makePipe, none},
        {"Socket", ample, makeSocket, none},
        {"LinkToItself", ample,
         [](const TempFolder& folder) { return linkTo(folder, folder / "link.wav"); }, none},
        {"NameOf5000Letters", ample, inFolder(repeat("a", 5000)), none},
        {"LinkToNothingMakesItsTarget", ample,
         [](const TempFolder& folder) { return linkTo(folder, folder / "new.wav"); }, 44},
        {"NewlineInTheName", ample, inFolder("two\nlines.wav"), 44},
        {"NotUtf8", ample, inFolder("\xff\xfe.wav"), 44},
        {"FileForReadingOnlyStays", ample,
         [](const TempFolder& folder) {
             const std::string path = folder.write("new.wav", {});
             chmod(path.c_str(), 0444);
             return path;
         },
         0},
    };
}

// What stands in the file of a recorder of one channel at 8000 Hz. Its sizes are filled in at the
// end, 44 - 4 and 40 - 40, and stay 0 where the disk was full before.
Bytes headerOf(int written)
{
    Bytes bytes = wave::fileClaiming(wave::Format(), 0, {});
    const Bytes size = {40, 0, 0, 0};
    const Bytes unfinished = {0, 0, 0, 0};
    const bool isFinished = static_cast<std::size_t>(written) == bytes.size();
    const Bytes& riffSize = isFinished ? size : unfinished;
    std::copy(riffSize.begin(), riffSize.end(), bytes.begin() + 4);
    bytes.resize(static_cast<std::size_t>(written));
    return bytes;
}

// No file of this process grows beyond the room for as long as it lives.
class DiskRoom
{
public:
    explicit DiskRoom(std::uint64_t room)
    {
        std::signal(SIGXFSZ, SIG_IGN);
        EXPECT_EQ(0, getrlimit(RLIMIT_FSIZE, &former));
        rlimit limit = former;
        limit.rlim_cur = room;
        EXPECT_EQ(0, setrlimit(RLIMIT_FSIZE, &limit));
    }
    ~DiskRoom() { EXPECT_EQ(0, setrlimit(RLIMIT_FSIZE, &former)); }
    DiskRoom(const DiskRoom&) = delete;
    DiskRoom& operator=(const DiskRoom&) = delete;

private:
    rlimit former{};
};

} // namespace

TEST_P(HostilePath, HasItsOutcome)
{
    const TempFolder folder;

    hostile::withinLimits(
        [&] { hostile::expectOutcome(GetParam().make(folder), GetParam().outcome); });
}

INSTANTIATE_TEST_SUITE_P(At, HostilePath, testing::ValuesIn(pathRows()), nameOf<Row>);

TEST_P(HostileRights, HaveTheirOutcome)
{
    const TempFolder folder;
    const std::string path = GetParam().make(folder);
    openToAll(folder);

    hostile::withinLimits([&] {
        const WithoutRights withoutRights;
        hostile::expectOutcome(path, GetParam().outcome);
    });
}

INSTANTIATE_TEST_SUITE_P(Of, HostileRights, testing::ValuesIn(rightsRows()), nameOf<Row>);

TEST_P(HostileChange, BetweenThePassesIsReadAsItCame)
{
    const TempFolder outer;
    filesystem::create_directory(outer / "inner");
    const std::string path = writeClean(outer, "inner/take.wav");
    const std::string before = writeClean(outer, "before.wav");
    const std::string after = outer.write("after.wav", GetParam().found());

    hostile::withinLimits([&] {
        TwoFiles twin(before, after);
        VXLandmarkExtract extractor{VXExtractParams()};
        VXS::WavInput wave(extractor.loadFile(path));
        signals::SignalInput source(signals::silence(0));
        source.onGetFrames = [&wave] { return wave.getFrames(); };
        source.onRead = [&wave](VXS::array<float>& block) { return wave.read_mono(block); };
        // Just before the second pass over the file.
        source.onRewind = [&wave, &path] {
            GetParam().change(path);
            return wave.rewind();
        };

        const std::unique_ptr<VXFile> file(extractor.run(&source, 1));

        EXPECT_EQ(hostile::twinLandmarks(VXExtractParams(), twin), signals::landmarksOf(*file));
        hostile::expectUsable(extractor);
    });
}

INSTANTIATE_TEST_SUITE_P(Of, HostileChange, testing::ValuesIn(changeRows()), nameOf<ChangeRow>);

TEST_P(HostileWrite, RaisesNothingAndLeavesWhatThereIsRoomFor)
{
    const TempFolder folder;
    const WriteRow& row = GetParam();
    const std::string path = row.make(folder);
    openToAll(folder);

    hostile::withinLimits([&] {
        const WithoutRights withoutRights;
        const DiskRoom room(row.room);
        const VXS::wavfile_t file(path, openForWriting, 1, 8000);
    });

    if (row.written < 0) {
        std::error_code error;
        EXPECT_FALSE(filesystem::is_regular_file(path, error));
        return;
    }
    EXPECT_EQ(headerOf(row.written), wave::readFile(path));
}

INSTANTIATE_TEST_SUITE_P(To, HostileWrite, testing::ValuesIn(writeRows()), nameOf<WriteRow>);

// One list with all of them: each has its two lines, its report between them, and uses up its id.
TEST(HostilePathList, IsWorkedThroughToItsEnd)
{
    const TempFolder folder;
    const std::string directory = folder / "directory.wav";
    filesystem::create_directory(directory);
    const std::string good = writeClean(folder, "two\nlines.wav");
    const std::string otherRate =
        folder.write("rate.wav", wave::file16(hostile::cleanSamples16(), 44100));
    const std::vector<std::string> bad = {makePipe(folder),
                                          directory,
                                          linkTo(folder, folder / "link.wav"),
                                          folder / (repeat("a", 5000) + ".wav"),
                                          folder / "\xff\xfe.wav",
                                          "missing\n.wav",
                                          ".wav"};
    // Neither of these ends in "wav" behind its last dot.
    std::vector<std::string> paths = {"", "wav", "/dev/zero", folder.path, "take.wav/", "a.WAV"};
    paths.insert(paths.end(), bad.begin(), bad.end());
    paths.push_back(otherRate);
    paths.push_back(good);
    std::string expected;
    int id = 0;
    const auto expectLines = [&](const std::string& path, const std::string& report) {
        ++id;
        expected += "STARTING: " + path + " (id " + std::to_string(id) + ")\n" + report +
                    "FEATURE EXTRACTION COMPLETE: " + path + "\n";
    };
    for (const std::string& path : bad)
        expectLines(path, "[ERROR]: Could not load: " + path + "\n");
    expectLines(otherRate, "[ERROR]:" + otherRate + " has an incorrect sample rate\n");
    expectLines(good, "");

    hostile::withinLimits([&] {
        VXLandmarkExtract extractor{VXExtractParams()};
        const Console console;

        const std::unique_ptr<VXS::VXFileSet> fileSet(extractor.runAll(paths));

        EXPECT_EQ(expected, console.text());
        ASSERT_EQ(1u, fileSet->getFiles().size());
        EXPECT_EQ(hostile::cleanLandmarks(), signals::landmarksOf(*fileSet->getFiles().at(id)));
        EXPECT_EQ("two\nlines", fileSet->idToName.at(id));
    });
}
