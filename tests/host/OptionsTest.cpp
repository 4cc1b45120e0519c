#include "Options.h"

#include <sstream>

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using vxlsync::ExitCode;
using vxlsync::Format;

struct Parsed {
    std::variant<vxlsync::Options, ExitCode> result;
    std::string out;
    std::string err;

    const vxlsync::Options& options() const { return std::get<vxlsync::Options>(result); }
    ExitCode code() const { return std::get<ExitCode>(result); }
};

Parsed parse(const std::vector<std::string>& arguments)
{
    std::ostringstream out;
    std::ostringstream err;
    auto result = vxlsync::parseOptions(arguments, out, err);
    return {std::move(result), out.str(), err.str()};
}

TEST(Options, KeepsThePathsInTheirOrder)
{
    EXPECT_THAT(parse({"z.wav", "a.wav"}).options().paths, ElementsAre("z.wav", "a.wav"));
}

TEST(Options, AsksForTextUnlessToldOtherwise)
{
    EXPECT_EQ(parse({"a.wav"}).options().format, Format::text);
    EXPECT_EQ(parse({"--format", "text", "a.wav"}).options().format, Format::text);
}

TEST(Options, TakesTheFormatBeforeOrAfterTheFiles)
{
    EXPECT_EQ(parse({"--format", "json", "a.wav"}).options().format, Format::json);
    EXPECT_EQ(parse({"a.wav", "--format=json", "b.wav"}).options().format, Format::json);
}

TEST(Options, TakesNamesThatBeginWithADashAfterADoubleDash)
{
    EXPECT_THAT(parse({"--", "-a.wav", "--help"}).options().paths, ElementsAre("-a.wav", "--help"));
}

TEST(Options, TakesOddNamesAsTheyAre)
{
    EXPECT_THAT(parse({"a b,c.wav", "", "%%", "x=y", "[1].wav"}).options().paths,
                ElementsAre("a b,c.wav", "", "%%", "x=y", "[1].wav"));
}

TEST(Options, DoesNotSplitANameInBrackets)
{
    EXPECT_THAT(parse({"[a,b]"}).options().paths, ElementsAre("./[a,b]"));
}

TEST(Options, RefusesACommandLineWithoutFiles)
{
    const Parsed parsed = parse({"--format", "json"});

    EXPECT_EQ(parsed.code(), ExitCode::usage);
    EXPECT_THAT(parsed.err, HasSubstr("FILE is required"));
    EXPECT_EQ(parsed.out, "");
}

TEST(Options, RefusesAnUnknownFormatByItsName)
{
    const Parsed parsed = parse({"--format", "xml", "a.wav"});

    EXPECT_EQ(parsed.code(), ExitCode::usage);
    EXPECT_THAT(parsed.err, HasSubstr("--format: xml"));
}

TEST(Options, RefusesAnUnknownOptionByItsName)
{
    const Parsed parsed = parse({"--loud", "a.wav"});

    EXPECT_EQ(parsed.code(), ExitCode::usage);
    EXPECT_THAT(parsed.err, HasSubstr("--loud"));
}

TEST(Options, TakesTheChannel)
{
    using Channel = vxlsync::DecodeOptions::Channel;
    EXPECT_EQ(parse({"a.wav"}).options().decode.channel, Channel::left);
    EXPECT_EQ(parse({"--channel", "mix", "a.wav"}).options().decode.channel, Channel::mix);
    const Parsed third = parse({"--channel", "3", "a.wav"});
    EXPECT_EQ(third.options().decode.channel, Channel::numbered);
    EXPECT_EQ(third.options().decode.channelNumber, 3);
}

TEST(Options, RefusesAChannelThatIsNone)
{
    EXPECT_EQ(parse({"--channel", "0", "a.wav"}).code(), ExitCode::usage);
    EXPECT_EQ(parse({"--channel", "right", "a.wav"}).code(), ExitCode::usage);
}

TEST(Options, TakesStartsThatAreKnown)
{
    const auto fixed =
        parse({"--fix", "a=b.wav=-1.5", "--fix", "c.wav=2", "c.wav"}).options().fixed;

    EXPECT_THAT(fixed, ElementsAre(testing::Pair("a=b.wav", -1.5), testing::Pair("c.wav", 2.0)));
}

TEST(Options, RefusesAStartWithoutSeconds)
{
    EXPECT_EQ(parse({"--fix", "a.wav", "a.wav"}).code(), ExitCode::usage);
    EXPECT_EQ(parse({"--fix", "a.wav=soon", "a.wav"}).code(), ExitCode::usage);
}

TEST(Options, TakesPairsThatMustBeApart)
{
    EXPECT_THAT(parse({"--apart", "a.wav,b.wav", "a.wav", "b.wav"}).options().apart,
                ElementsAre(testing::Pair("a.wav", "b.wav")));
    EXPECT_EQ(parse({"--apart", "a.wav", "a.wav"}).code(), ExitCode::usage);
}

TEST(Options, RefusesAnUnknownWayToTellProgress)
{
    EXPECT_EQ(parse({"--progress", "loud", "a.wav"}).code(), ExitCode::usage);
}

TEST(Options, RefusesZeroJobsAndStreams)
{
    EXPECT_EQ(parse({"--jobs", "0", "a.wav"}).code(), ExitCode::usage);
    EXPECT_EQ(parse({"--stream", "0", "a.wav"}).code(), ExitCode::usage);
}

TEST(Options, ListsEveryExitCodeInTheHelp)
{
    const Parsed parsed = parse({"--help"});

    EXPECT_EQ(parsed.code(), ExitCode::grouped);
    for (const char* code : {"\n  0  ", "\n  1  ", "\n  2  ", "\n  3  ", "\n  4  "})
        EXPECT_THAT(parsed.out, HasSubstr(code));
    EXPECT_EQ(parsed.err, "");
}

TEST(Options, NamesItselfWithTheVersion)
{
    const Parsed parsed = parse({"--version"});

    EXPECT_EQ(parsed.code(), ExitCode::grouped);
    EXPECT_THAT(parsed.out, testing::MatchesRegex("vxl-sync [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

} // namespace
