#include "Sandbox.h"

#include <signal.h>

#include <filesystem>
#include <fstream>
#include <map>
#include <set>
#include <sstream>

#include <gmock/gmock.h>

#include "Program.h"
#include "Sounds.h"
#include "Wave.h"

namespace
{

using testing::IsEmpty;

// What Landlock refuses depends on the kernel: truncating since this version, the network since the
// second, signals to others since the third.
constexpr int truncatingVersion = 3;
constexpr int networkVersion = 4;
constexpr int signalsVersion = 6;

const std::set<std::string> everyKind{"files",   "facts",    "young",     "network", "sockets",
                                      "signals", "programs", "processes", "needed"};

// What a process that gave up `kind` met, by kinds of attempts.
class Probe
{
public:
    explicit Probe(const std::string& kind)
    {
        for (const char* name : {"file", "first", "second", "third"})
            folder.write(name, {'a', 'b'});
        folder.write("kept", {'k', 'e', 'p', 't'});
        // Executable, and of no format that the kernel knows.
        std::filesystem::permissions(folder.write("script", {1, 2, 3, 4}),
                                     std::filesystem::perms::owner_all);
        std::filesystem::create_directories(folder / "folder");
        std::filesystem::create_directories(folder / "empty");

        const program::Outcome run =
            program::runProgram(VXL_SYNC_SANDBOX_PROBE, {kind, folder.path});
        EXPECT_EQ(run.exitCode, 0) << run.err;
        std::istringstream lines(run.out);
        lines >> landlockVersion >> callsFiltered >> std::ws;
        for (std::string line; std::getline(lines, line);) {
            const std::string attempted = line.substr(0, line.find('/'));
            const bool works = line.substr(line.find(": ")) == ": works";
            (works ? working : refused).emplace(attempted, line);
        }
    }

    // The attempts of these kinds that were not refused, or were.
    std::vector<std::string> workingOf(const std::set<std::string>& kinds) const
    {
        return linesOf(working, kinds);
    }
    std::vector<std::string> refusedOf(const std::set<std::string>& kinds) const
    {
        return linesOf(refused, kinds);
    }

    int landlockVersion = 0;
    bool callsFiltered = false;

private:
    using Lines = std::multimap<std::string, std::string>;

    static std::vector<std::string> linesOf(const Lines& lines, const std::set<std::string>& kinds)
    {
        std::vector<std::string> result;
        for (const auto& [kind, line] : lines) {
            if (kinds.count(kind) > 0) result.push_back(line);
        }
        return result;
    }

    const wave::TempFolder folder;
    Lines working;
    Lines refused;
};

std::set<std::string> without(std::set<std::string> kinds, const std::set<std::string>& left)
{
    for (const std::string& kind : left)
        kinds.erase(kind);
    return kinds;
}

// Shows that a refusal in the other tests is the sandbox's.
TEST(Sandbox, IsWhatRefuses)
{
    const Probe probe("none");

    EXPECT_THAT(probe.refusedOf(without(everyKind, {"young"})), IsEmpty());
    EXPECT_EQ(probe.workingOf({"files"}).size(), 18u);
}

TEST(Sandbox, LeavesNothingOpenThatIsNotNeeded)
{
    const Probe probe("all");
    if (!probe.callsFiltered) GTEST_SKIP() << "no filter of calls here";

    EXPECT_THAT(probe.workingOf(without(everyKind, {"needed"})), IsEmpty());
    EXPECT_THAT(probe.refusedOf({"needed"}), IsEmpty());
    EXPECT_EQ(probe.workingOf({"needed"}).size(), 7u);
}

TEST(Sandbox, ClosesFilesByLandlockAlone)
{
    const Probe probe("landlock");
    if (probe.landlockVersion < truncatingVersion) GTEST_SKIP() << "no Landlock that closes files";

    EXPECT_THAT(probe.workingOf({"files", "programs"}), IsEmpty());
    EXPECT_THAT(probe.refusedOf({"needed"}), IsEmpty());
}

TEST(Sandbox, ClosesTheNetworkByLandlockAlone)
{
    const Probe probe("landlock");
    if (probe.landlockVersion < networkVersion) GTEST_SKIP() << "no Landlock that closes networks";

    EXPECT_THAT(probe.workingOf({"network"}), IsEmpty());
}

TEST(Sandbox, KeepsSignalsFromOthersByLandlockAlone)
{
    const Probe probe("landlock");
    if (probe.landlockVersion < signalsVersion) GTEST_SKIP() << "no Landlock that stops signals";

    EXPECT_THAT(probe.workingOf({"signals"}), IsEmpty());
}

TEST(Sandbox, ClosesAllByTheFilterAlone)
{
    const Probe probe("filter");
    if (!probe.callsFiltered) GTEST_SKIP() << "no filter of calls here";

    EXPECT_THAT(probe.workingOf(without(everyKind, {"needed"})), IsEmpty());
    EXPECT_THAT(probe.refusedOf({"needed"}), IsEmpty());
}

// The fields of a status file of the kernel.
std::map<std::string, std::string> statusOf(const std::string& path)
{
    std::map<std::string, std::string> fields;
    std::ifstream file(path);
    for (std::string line; std::getline(file, line);) {
        const std::size_t colon = line.find(":\t");
        if (colon != std::string::npos) fields[line.substr(0, colon)] = line.substr(colon + 2);
    }
    return fields;
}

// Folders of the kernel on the threads of a process.
std::vector<std::string> threadsOf(pid_t id)
{
    std::vector<std::string> threads;
    for (const auto& entry :
         std::filesystem::directory_iterator("/proc/" + std::to_string(id) + "/task"))
        threads.push_back(entry.path());
    return threads;
}

TEST(Sandbox, HoldsForEveryThreadOfTheProgram)
{
    const wave::TempFolder folder;
    std::vector<std::string> arguments{"--jobs", "4", "--progress", "plain"};
    for (std::uint32_t event = 1; event <= 8; ++event) {
        arguments.push_back(
            folder.write(std::to_string(event) + ".wav", sounds::recordingOf(event, 0, 120)));
    }
    const Probe probe("all");
    program::Running running(arguments);

    std::vector<std::string> threads = threadsOf(running.id);
    while (threads.size() < 2 && running.isRunning())
        threads = threadsOf(running.id);
    // They stand still while they are looked at.
    kill(running.id, SIGSTOP);

    EXPECT_GE(threads.size(), 2u);
    const bool confined = probe.landlockVersion > 0 || probe.callsFiltered;
    for (const std::string& thread : threads) {
        const auto status = statusOf(thread + "/status");
        EXPECT_EQ(status.at("NoNewPrivs"), confined ? "1" : "0");
        EXPECT_EQ(status.at("Seccomp"), probe.callsFiltered ? "2" : "0");
    }
}

} // namespace
