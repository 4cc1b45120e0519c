#include "TextResult.h"

#include <sstream>

#include <gmock/gmock.h>

#include "Results.h"

namespace
{

using testing::HasSubstr;
using testing::StartsWith;
using vxlsync::Result;

std::string textOf(const Result& result)
{
    std::ostringstream out;
    vxlsync::host::writeText(result, out);
    return out.str();
}

TEST(TextResult, TellsPeopleEverythingOnALineOfItsOwn)
{
    EXPECT_EQ(textOf(results::everything()),
              "Group 1: 2 recordings\n"
              "        0.0000 s  +-   0.00 ms       reference  certain  first  dir/first.wav\n"
              "        1.2500 s  +-   0.10 ms      -20.50 ppm  certain  b      a, \"b\".mp3\n"
              "                    eight-bit samples are signed\n"
              "\n"
              "Alone: 1 recording\n"
              "  alone  alone.ogg: silent\n"
              "\n"
              "Failed: 1 file\n"
              "  gone.wav: could not be read: does not exist\n");
}

TEST(TextResult, TellsTheDeviceWhereItIsNotInTheName)
{
    Result result = results::everything();
    result.sources[0].device = "camera\x1b a";
    result.sources[0].deviceKnownBy = vxlsync::DeviceEvidence::originator;
    result.sources[1].device = "MVI_";
    result.sources[1].deviceKnownBy = vxlsync::DeviceEvidence::names;
    result.sources[2].device = "recorder";
    result.sources[2].deviceKnownBy = vxlsync::DeviceEvidence::stated;

    const std::string text = textOf(result);

    EXPECT_THAT(text, HasSubstr("first  dir/first.wav  (camera\\x1b a)\n"));
    EXPECT_THAT(text, HasSubstr("b      a, \"b\".mp3\n"));
    EXPECT_THAT(text, HasSubstr("  alone  alone.ogg  (recorder): silent\n"));
}

TEST(TextResult, SaysThatNothingMatched)
{
    EXPECT_EQ(textOf(Result()), "Nothing matched.\n");
}

TEST(TextResult, TellsNoDriftThatNobodyMeasured)
{
    Result result = results::everything();
    result.groups[0].members[1].driftUncertaintyPpm = 0.0;
    EXPECT_THAT(textOf(result), HasSubstr("-20.50 ppm"));

    result.groups[0].members[1].driftPpm = 0.0;

    EXPECT_THAT(textOf(result),
                HasSubstr("  0.0000 s  +-   0.00 ms       reference  certain  first"));
    EXPECT_THAT(textOf(result), HasSubstr("  1.2500 s  +-   0.10 ms                  certain  b "));

    result.groups[0].members[1].driftUncertaintyPpm = 0.1;
    EXPECT_THAT(textOf(result), HasSubstr("+0.00 ppm  certain  b "));
}

TEST(TextResult, SetsGroupsApart)
{
    Result result = results::everything();
    result.groups.push_back(result.groups.front());

    EXPECT_THAT(textOf(result), HasSubstr("\n\nGroup 2: 2 recordings\n"));
}

TEST(TextResult, CountsMoreThanOne)
{
    Result result = results::everything();
    result.alone.push_back(result.alone.front());
    result.failed.push_back(result.failed.front());

    EXPECT_THAT(textOf(result), HasSubstr("Alone: 2 recordings\n"));
    EXPECT_THAT(textOf(result), HasSubstr("Failed: 2 files\n"));
}

TEST(TextResult, TellsWhatIsLikelyOnly)
{
    Result result = results::everything();
    result.groups[0].members[1].confidence = vxlsync::Confidence::likely;

    EXPECT_THAT(textOf(result), HasSubstr("ppm  likely   b "));
}

TEST(TextResult, TellsThePlacesOfWhatIsDoubtful)
{
    Result result = results::everything();
    result.alone[0].candidates = {{1, 300.0, 11.25}, {0, -4.5, 2.0}};

    EXPECT_THAT(textOf(result),
                HasSubstr("alone.ogg: silent\n"
                          "          300.0000 s after b, by 11.2 s of evidence\n"
                          "                     --fix 'a, \"b\".mp3'=1.250000"
                          " --fix alone.ogg=301.250000\n"
                          "            4.5000 s before first, by 2.0 s of evidence\n"
                          "                     --fix dir/first.wav=0.000000"
                          " --fix alone.ogg=-4.500000\n"));
}

TEST(TextResult, TellsThePlacesNextToAMemberOfALaterGroup)
{
    Result result;
    result.sources = {results::source("a", "a.wav", 20.0), results::source("b", "b.wav", 20.0),
                      results::source("c", "c.wav", 20.0)};
    result.groups.resize(2);
    result.groups[0].members = {{0, 5.0, 0.0, 0.0, 0.0}};
    result.groups[1].members = {{1, 7.0, 0.0, 0.0, 0.0}};
    result.alone = {{2, "doubtful", {{1, 3.5, 2.0}}}};

    EXPECT_THAT(textOf(result), HasSubstr("--fix b.wav=7.000000 --fix c.wav=10.500000\n"));
}

TEST(TextResult, TellsThePlacesNextToWhatIsAloneToo)
{
    Result result;
    result.sources = {results::source("a", "a.wav", 20.0), results::source("b", "b.wav", 20.0)};
    result.alone = {{0, "doubtful", {{1, 3.5, 2.0}}}, {1, "doubtful", {}}};

    EXPECT_THAT(textOf(result), HasSubstr("--fix b.wav=0.000000 --fix a.wav=3.500000\n"));
}

TEST(TextResult, TellsWhatWasOddAboutARecordingThatIsAlone)
{
    Result result;
    result.sources = {results::source("cut", "cut.mp3")};
    result.sources[0].notes = {"ends early: 12.3 of 24.6 s could be read"};
    result.alone = {{0, "too short"}};

    EXPECT_THAT(textOf(result), HasSubstr("  cut  cut.mp3: too short\n"
                                          "      ends early: 12.3 of 24.6 s could be read\n"));
}

TEST(TextResult, KeepsNamesInTheirColumns)
{
    Result result;
    // Five columns by five letters, by four letters and a mark, and by two wide letters and one.
    result.sources = {results::source("na\xC3\xAFve", "p"), results::source("longer", "q"),
                      results::source("nai\xCC\x88v", "r"),
                      results::source("\xE9\x9F\xB3\xE6\xA5\xBD!", "s")};
    result.alone = {{0, "x"}, {1, "x"}, {2, "x"}, {3, "x"}};

    EXPECT_THAT(textOf(result), HasSubstr("  na\xC3\xAFve   p: x\n"
                                          "  longer  q: x\n"
                                          "  nai\xCC\x88v    r: x\n"
                                          "  \xE9\x9F\xB3\xE6\xA5\xBD!   s: x\n"));
}

TEST(TextResult, LetsNoNameCommandTheTerminal)
{
    Result result = results::everything();
    for (vxlsync::SourceFacts& source : result.sources) {
        source.name += "\x1b[2J";
        source.path += "\xC2\x9B";
        source.notes = {"\xE2\x80\xAE"};
    }
    result.alone[0].reason += "\x07";
    result.failed[0].reason += "\xFF";

    const std::string text = textOf(result);

    EXPECT_THAT(text, HasSubstr("first\\x1b[2J  dir/first.wav\\xc2\\x9b\n"));
    EXPECT_THAT(text, HasSubstr("alone\\x1b[2J  alone.ogg\\xc2\\x9b: silent\\x07\n"));
    EXPECT_THAT(text, HasSubstr("gone.wav\\xc2\\x9b: could not be read: does not exist\\xff\n"));
    for (const char* command : {"\x1b", "\xC2\x9B", "\xE2\x80\xAE", "\x07", "\xFF"})
        EXPECT_THAT(text, testing::Not(HasSubstr(command)));
}

} // namespace
