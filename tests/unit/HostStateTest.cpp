// What a host can change in its process, on its thread or on the standard output stream. None of it
// may change a result or a line.
#include <cfenv>
#include <cmath>
#include <cstdint>
#include <cwchar>
#include <iomanip>
#include <iostream>
#include <limits>
#include <locale>
#include <memory>
#include <memory_resource>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Console.h"
#include "Landmarks.h"
#include "Signals.h"
#include "VXClusterSync.h"
#include "VXClusterSyncParams.h"
#include "VXFile.h"
#include "VXFileSet.h"
#include "VXLandmarkExtract.h"
#include "Wave.h"

namespace VXS
{
namespace
{

using signals::LandmarkRow;

// Everything that a job gives.
struct Outcome {
    std::vector<std::vector<LandmarkRow>> landmarks;
    std::vector<support::Cluster> clusters;
    std::string printed;
};

bool operator==(const Outcome& left, const Outcome& right)
{
    return left.landmarks == right.landmarks && left.clusters == right.clusters &&
           left.printed == right.printed;
}

// Two recordings of one sound, the second from its fourth second on, by path.
class HostState : public testing::Test
{
protected:
    HostState()
    {
        const std::vector<int> samples = signals::as16Bit(signals::noise(7, 128000));
        const std::vector<int> early(samples.begin(), samples.begin() + 96000);
        const std::vector<int> late(samples.begin() + 32000, samples.end());
        paths = {folder.write("early.wav", wave::file16(early)),
                 folder.write("late.wav", wave::file16(late)), folder / "missing.wav"};
    }

    Outcome run() const
    {
        const Console console;
        const VXExtractParams params;
        VXLandmarkExtract extractor(params);
        const std::unique_ptr<VXFileSet> fileSet(extractor.runAll(paths));
        Outcome outcome;
        for (const auto& file : fileSet->getFiles())
            outcome.landmarks.push_back(signals::landmarksOf(*file.second));
        extractor.printPeaks();
        VXClusterSync sync{VXClusterSyncParams(params)};
        outcome.clusters = support::resultOf(sync.run(fileSet.get(), nullptr));
        outcome.printed = console.text();
        return outcome;
    }

    wave::TempFolder folder;
    std::vector<std::string> paths;
};

TEST_F(HostState, JobFindsThePair)
{
    const Outcome outcome = run();

    // 32000 samples at 8000 a second.
    const std::vector<support::Cluster> expected = {{{1, 0.0f, "early"}, {2, 4.0f, "late"}}};
    EXPECT_EQ(expected, outcome.clusters);
}

class DefaultResource
{
public:
    explicit DefaultResource(std::pmr::memory_resource* resource)
        : former(std::pmr::set_default_resource(resource))
    {
    }
    ~DefaultResource() { std::pmr::set_default_resource(former); }
    DefaultResource(const DefaultResource&) = delete;
    DefaultResource& operator=(const DefaultResource&) = delete;

private:
    std::pmr::memory_resource* former;
};

TEST_F(HostState, DefaultMemoryResourceIsNotAsked)
{
    const Outcome expected = run();
    const DefaultResource refusal(std::pmr::null_memory_resource());

    EXPECT_EQ(expected, run());
}

TEST(HostStateOfAFile, DefaultMemoryResourceMayGoBeforeIt)
{
    char block[16384];
    auto resource = std::make_unique<std::pmr::monotonic_buffer_resource>(block, sizeof(block));
    std::unique_ptr<VXFile> file;
    {
        const DefaultResource passing(resource.get());
        file = support::fileWith({10, 12});
    }
    resource.reset();

    file->computeCLF();

    EXPECT_EQ(2, file->queryNumberLandmarksInBetween(10, 12));
}

// Commas in numbers, and dots between all digits.
class Punctuation : public std::numpunct<char>
{
protected:
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\1"; }
};

// Turns every bit of what a file stream reads or writes.
class TurnedBytes : public std::codecvt<char, char, std::mbstate_t>
{
protected:
    bool do_always_noconv() const noexcept override { return false; }
    result do_in(std::mbstate_t&, const char* from, const char* fromEnd, const char*& fromNext,
                 char* to, char* toEnd, char*& toNext) const override
    {
        return turn(from, fromEnd, fromNext, to, toEnd, toNext);
    }
    result do_out(std::mbstate_t&, const char* from, const char* fromEnd, const char*& fromNext,
                  char* to, char* toEnd, char*& toNext) const override
    {
        return turn(from, fromEnd, fromNext, to, toEnd, toNext);
    }

private:
    static result turn(const char* from, const char* fromEnd, const char*& fromNext, char* to,
                       char* toEnd, char*& toNext)
    {
        while (from != fromEnd && to != toEnd)
            *to++ = static_cast<char>(~*from++);
        fromNext = from;
        toNext = to;
        return from == fromEnd ? ok : partial;
    }
};

class Locale
{
public:
    explicit Locale(const std::locale& locale)
        : formerGlobal(std::locale::global(locale)), formerOutput(std::cout.imbue(locale))
    {
    }
    ~Locale()
    {
        std::cout.imbue(formerOutput);
        std::locale::global(formerGlobal);
    }
    Locale(const Locale&) = delete;
    Locale& operator=(const Locale&) = delete;

private:
    std::locale formerGlobal;
    std::locale formerOutput;
};

TEST_F(HostState, LocaleChangesNoNumber)
{
    const Outcome expected = run();
    const Locale locale(std::locale(std::locale::classic(), new Punctuation));

    EXPECT_EQ(expected, run());
}

TEST_F(HostState, LocaleChangesNoByteOfAFile)
{
    const Outcome expected = run();
    const Locale locale(std::locale(std::locale::classic(), new TurnedBytes));

    EXPECT_EQ(expected, run());
}

TEST_F(HostState, FormatOfTheStreamChangesNoLine)
{
    const Outcome expected = run();
    std::ios kept(nullptr);
    kept.copyfmt(std::cout);

    std::cout << std::hex << std::showbase << std::showpos << std::uppercase << std::scientific
              << std::setprecision(2) << std::setfill('*') << std::setw(400);
    const Outcome outcome = run();
    const std::streamsize width = std::cout.width();
    std::cout.copyfmt(kept);

    EXPECT_EQ(expected, outcome);
    // It is for what the host writes next.
    EXPECT_EQ(400, width);
}

// The floating-point environment, put back at the end.
class Environment
{
public:
    Environment() { std::fegetenv(&former); }
    ~Environment() { std::fesetenv(&former); }
    Environment(const Environment&) = delete;
    Environment& operator=(const Environment&) = delete;

private:
    std::fenv_t former;
};

class HostStateRounding : public HostState, public testing::WithParamInterface<int>
{
};

TEST_P(HostStateRounding, ChangesNoResultAndStays)
{
    const Outcome expected = run();
    const Environment environment;
    std::fesetround(GetParam());

    const Outcome outcome = run();
    const int rounding = std::fegetround();

    EXPECT_EQ(GetParam(), rounding);
    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(expected, outcome);
}

TEST_P(HostStateRounding, ChangesNoLevelAndNoRate)
{
    // A rate that is no multiple of a power of two of the hop.
    VXExtractParams params;
    ASSERT_TRUE(params.setHopSize(300));
    VXLandmarkExtract extractor(params);
    std::vector<float> expected = {VXClusterSyncParams(params).getAudioFramesPerSecond()};
    for (int i = 1; i < 100; ++i)
        expected.push_back(extractor.dB(static_cast<float>(i)));
    const Environment environment;
    std::fesetround(GetParam());

    std::vector<float> found = {VXClusterSyncParams(params).getAudioFramesPerSecond()};
    for (int i = 1; i < 100; ++i)
        found.push_back(extractor.dB(static_cast<float>(i)));

    std::fesetround(FE_TONEAREST);
    EXPECT_EQ(expected, found);
}

INSTANTIATE_TEST_SUITE_P(Modes, HostStateRounding,
                         testing::Values(FE_UPWARD, FE_DOWNWARD, FE_TOWARDZERO));

TEST_F(HostState, RoundingStaysWhereASourceThrows)
{
    const Environment environment;
    VXLandmarkExtract extractor{VXExtractParams()};
    signals::SignalInput input(signals::silence(8000));
    input.throwIn("read_mono", 1);
    std::fesetround(FE_UPWARD);

    EXPECT_THROW(delete extractor.run(&input, 1), std::domain_error);

    EXPECT_EQ(FE_UPWARD, std::fegetround());
}

#if defined(__x86_64__)
void setControl(unsigned int bits)
{
    __builtin_ia32_ldmxcsr(bits);
}
// Numbers below the normal ones become 0 in what is read and in what is written.
constexpr unsigned int lossOfTheLeast = 0x1F80u | 0x8040u;
// An invalid operation, a division by zero and an overflow end the process.
constexpr unsigned int traps = 0x1F80u & ~0x0680u;

// Powers of a sound this quiet are below the normal numbers, and still above the addend of the
// level.
TEST_F(HostState, LossOfTheLeastNumbersChangesNoLandmark)
{
    signals::Samples sound = signals::noise(3, 40000);
    for (float& sample : sound)
        sample *= 2e-21f;
    const std::vector<LandmarkRow> expected = signals::extractLandmarks(VXExtractParams(), sound);
    const Environment environment;
    setControl(lossOfTheLeast);

    const std::vector<LandmarkRow> found = signals::extractLandmarks(VXExtractParams(), sound);

    setControl(0x1F80u);
    EXPECT_FALSE(expected.empty());
    EXPECT_EQ(expected, found);
}

// The transform of an infinite sample subtracts infinities from one another.
TEST_F(HostState, TrapsAreNotSprung)
{
    signals::Samples sound = signals::noise(3, 40000);
    sound[20000] = std::numeric_limits<float>::infinity();
    const std::vector<LandmarkRow> expected = signals::extractLandmarks(VXExtractParams(), sound);
    const Environment environment;
    setControl(traps);

    const std::vector<LandmarkRow> found = signals::extractLandmarks(VXExtractParams(), sound);

    setControl(0x1F80u);
    EXPECT_EQ(expected, found);
}
#endif

} // namespace
} // namespace VXS
