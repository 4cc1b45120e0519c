#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "Program.h"
#include "Sounds.h"
#include "Wave.h"

// What the program does with less than it would like to have.
namespace
{

using nlohmann::json;
using program::Outcome;
using testing::HasSubstr;

class VxlSyncLimits : public testing::Test
{
protected:
    std::vector<std::string> with(std::vector<std::string> options) const
    {
        for (const std::string& path : {early, late})
            options.push_back(path);
        return options;
    }

    const wave::TempFolder folder;
    const std::string early = folder.write("early.wav", sounds::recordingOf(12345, 0, 10));
    const std::string late = folder.write("late.wav", sounds::recordingOf(12345, 31, 10));
};

bool canStartWithin(std::size_t kilobytes)
{
    return program::runAfter("ulimit -v " + std::to_string(kilobytes), {"--version"}).exitCode == 0;
}

// Of address space: as much as is sure to be enough, but for sanitizers.
constexpr std::size_t mostKilobytes = 2000000;

// A thread's stack is as large as the shell allows a stack to be, and so large a one has no room in
// what it allows a process.
TEST_F(VxlSyncLimits, WorkWithoutThreads)
{
    if (!canStartWithin(mostKilobytes)) GTEST_SKIP() << "a sanitizer needs room of its own";
    const Outcome free = program::run(with({"--format", "json", "--jobs", "8"}));
    const Outcome alone = program::runAfter("ulimit -s 4000000; ulimit -v 2000000",
                                            with({"--format", "json", "--jobs", "8"}));

    EXPECT_EQ(alone.exitCode, 0) << alone.err;
    EXPECT_EQ(alone.out, free.out);
    EXPECT_EQ(alone.err, "");
}

// From what the program needs to load on, in steps, it runs out of memory in one place after the
// other. Wherever that is, it ends by itself and says so.
TEST_F(VxlSyncLimits, EndInWordsWhenMemoryRunsOut)
{
    if (!canStartWithin(mostKilobytes)) GTEST_SKIP() << "a sanitizer needs room of its own";
    std::size_t tooLittle = 0;
    std::size_t enough = mostKilobytes;
    while (enough - tooLittle > 1000) {
        const std::size_t middle = (tooLittle + enough) / 2;
        (canStartWithin(middle) ? enough : tooLittle) = middle;
    }

    std::size_t refusals = 0;
    for (std::size_t kilobytes = enough; kilobytes < enough + 24000; kilobytes += 3000) {
        const Outcome run = program::runAfter("ulimit -v " + std::to_string(kilobytes),
                                              with({"--jobs", "1", "--format", "csv"}));
        refusals += run.exitCode == 1 || run.exitCode == 3;
        if (run.exitCode == 1) {
            EXPECT_EQ(run.out, "");
            EXPECT_EQ(
                run.err,
                "vxl-sync: memory ran out; give fewer files, a lower --memory or fewer --jobs\n");
        } else {
            EXPECT_THAT(run.exitCode, testing::AnyOf(0, 3, 4)) << kilobytes << run.err;
            EXPECT_EQ(run.err, "");
        }
    }

    EXPECT_GT(refusals, 0u);
}

TEST_F(VxlSyncLimits, WorkWithTheLeastMemory)
{
    const Outcome free = program::run(with({"--format", "json"}));
    const Outcome bounded = program::run(with({"--format", "json", "--memory", "128M"}));

    EXPECT_EQ(bounded.exitCode, 0);
    EXPECT_EQ(bounded.out, free.out);
}

// Two recordings fit into the least memory, and one of 1300 s does not: for a second of sound the
// samples take 32 kB and the landmarks 80 kB, which makes 146 MB, whatever rate the file has.
TEST_F(VxlSyncLimits, FailOnlyWhatDoesNotFit)
{
    constexpr std::uint32_t rate = 2000;
    wave::Bytes noise(1300 * rate);
    std::uint32_t state = 1;
    for (unsigned char& sample : noise) {
        state = state * 1664525U + 1013904223U;
        sample = static_cast<unsigned char>(state >> 24U);
    }
    wave::Format format = wave::format(1, 1, 8);
    format.sampleRate = rate;
    const std::string huge = folder.write("huge.wav", wave::file(format, noise));

    const Outcome run = program::run(with({"--format", "json", "--memory", "128M", huge}));

    EXPECT_EQ(run.exitCode, 3);
    const json result = json::parse(run.out);
    EXPECT_EQ(result.at("groups").at(0).at("members").size(), 2u);
    ASSERT_EQ(result.at("failed").size(), 1u);
    EXPECT_EQ(result.at("failed").at(0).at("path"), huge);
    EXPECT_THAT(result.at("failed").at(0).at("reason").get<std::string>(), HasSubstr("memory"));
}

} // namespace
