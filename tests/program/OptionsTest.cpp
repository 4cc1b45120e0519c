#include "Options.h"

#include <sstream>

#include <gmock/gmock.h>

namespace
{

using testing::ElementsAre;
using testing::HasSubstr;
using vxlsync::host::ExitCode;
using vxlsync::host::Format;
using vxlsync::host::Options;
using vxlsync::host::ProgressMode;

struct Parsed {
    std::variant<Options, ExitCode> result;
    std::string out;
    std::string err;

    const Options& options() const { return std::get<Options>(result); }
    ExitCode code() const { return std::get<ExitCode>(result); }
};

Parsed parse(const std::vector<std::string>& arguments, bool anyMedia = true)
{
    std::ostringstream out;
    std::ostringstream err;
    auto result = vxlsync::host::parseOptions(arguments, anyMedia, out, err);
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
    EXPECT_EQ(parse({"--format", "csv", "a.wav"}).options().format, Format::csv);
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
    EXPECT_THAT(parse({"[", "]"}).options().paths, ElementsAre("[", "]"));
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
    using vxlsync::Channel;
    EXPECT_EQ(parse({"a.wav"}).options().engine.channel, Channel::left);
    EXPECT_EQ(parse({"--channel", "mix", "a.wav"}).options().engine.channel, Channel::mix);
    const Parsed third = parse({"--channel", "3", "a.wav"});
    EXPECT_EQ(third.options().engine.channel, Channel::numbered);
    EXPECT_EQ(third.options().engine.channelNumber, 3);
    EXPECT_EQ(parse({"--channel", "1024", "a.wav"}).options().engine.channelNumber, 1024);
}

TEST(Options, RefusesAChannelThatIsNone)
{
    for (const char* text : {"0", "-1", "1025", "99999999999", "right", "", "1x"}) {
        const Parsed parsed = parse({"--channel", text, "a.wav"});

        EXPECT_EQ(parsed.code(), ExitCode::usage);
        EXPECT_THAT(parsed.err, HasSubstr("--channel: left, mix or a number from 1 to 1024, not " +
                                          std::string(text) + "\n"));
    }
}

TEST(Options, TakesChannelsOfSingleFiles)
{
    using vxlsync::Channel;
    const Options options = parse({"--channel", "a=b.wav=mix", "--channel", "c.wav=3", "--channel",
                                   "2", "--channel", "d.wav=left", "a=b.wav"})
                                .options();

    EXPECT_EQ(options.engine.channel, Channel::numbered);
    EXPECT_EQ(options.engine.channelNumber, 2);
    ASSERT_EQ(options.channels.size(), 3u);
    EXPECT_EQ(options.channels[0].first, "a=b.wav");
    EXPECT_EQ(options.channels[0].second.channel, Channel::mix);
    EXPECT_EQ(options.channels[1].first, "c.wav");
    EXPECT_EQ(options.channels[1].second.channel, Channel::numbered);
    EXPECT_EQ(options.channels[1].second.number, 3);
    EXPECT_EQ(options.channels[2].second.channel, Channel::left);
}

TEST(Options, TakesStreamsOfSingleFiles)
{
    const Options options = parse({"--stream", "a.mov=3", "--stream", "10000", "a.mov"}).options();

    EXPECT_EQ(options.engine.stream, 10000);
    EXPECT_THAT(options.streams, ElementsAre(testing::Pair("a.mov", 3)));
    EXPECT_EQ(parse({"--stream", "a.mov=3", "a.mov"}).options().engine.stream, 0);
}

TEST(Options, TakesTheLastOfSeveralChannelsAndStreams)
{
    const Options options =
        parse({"--channel", "mix", "--channel", "left", "--stream", "4", "--stream", "5", "a.wav"})
            .options();

    EXPECT_EQ(options.engine.channel, vxlsync::Channel::left);
    EXPECT_EQ(options.engine.stream, 5);
}

TEST(Options, RefusesAChannelOrStreamOfNoFile)
{
    EXPECT_THAT(parse({"--channel", "=mix", "a.wav"}).err,
                HasSubstr("--channel: FILE=VALUE, not =mix"));
    EXPECT_THAT(parse({"--stream", "=2", "a.wav"}).err, HasSubstr("--stream: FILE=VALUE, not =2"));
    EXPECT_THAT(parse({"--channel", "a.wav=right", "a.wav"}).err,
                HasSubstr("--channel: left, mix or a number from 1 to 1024, not right"));
}

TEST(Options, RefusesAStreamThatIsNone)
{
    for (const char* text : {"0", "-1", "10001", "a.wav=0", "first", "a.wav="}) {
        const Parsed parsed = parse({"--stream", text, "a.wav"});

        EXPECT_EQ(parsed.code(), ExitCode::usage);
        EXPECT_THAT(parsed.err, HasSubstr("--stream: a number from 1 to 10000, not "));
    }
}

TEST(Options, PassesOnWhatConcernsReading)
{
    const Options options = parse({"--native", "--landmarks-only", "--jobs", "3", "--stream", "2",
                                   "--reference", "b", "a.wav"})
                                .options();

    EXPECT_TRUE(options.engine.nativeReader);
    EXPECT_TRUE(options.engine.landmarksOnly);
    EXPECT_EQ(options.engine.threads, 3u);
    EXPECT_EQ(options.engine.stream, 2);
    EXPECT_EQ(options.reference, "b");
}

TEST(Options, TakesABoundOfMemoryWithAUnit)
{
    constexpr std::size_t mega = 1024 * 1024;
    EXPECT_EQ(parse({"a.wav"}).options().engine.memoryBytes, 0u);
    EXPECT_EQ(parse({"--memory", "134217728", "a.wav"}).options().engine.memoryBytes, 128 * mega);
    EXPECT_EQ(parse({"--memory", "131073K", "a.wav"}).options().engine.memoryBytes,
              128 * mega + 1024);
    EXPECT_EQ(parse({"--memory=500m", "a.wav"}).options().engine.memoryBytes, 500 * mega);
    EXPECT_EQ(parse({"--memory", "3G", "a.wav"}).options().engine.memoryBytes, 3 * 1024 * mega);
}

TEST(Options, RefusesLessMemoryThanARecordingTakes)
{
    for (const char* text : {"0", "127M", "134217727"}) {
        const Parsed parsed = parse({"--memory", text, "a.wav"});

        EXPECT_EQ(parsed.code(), ExitCode::usage);
        EXPECT_THAT(parsed.err,
                    HasSubstr("--memory: at least 128M, not " + std::string(text) + "\n"));
    }
}

TEST(Options, RefusesMemoryThatIsNoSize)
{
    // The last two are 2 to the 64 bytes, by digits and by unit.
    for (const char* text : {"", "M", "-1", "1.5G", "many", "2T", "1GG", "0x10000000",
                             "18446744073709551616", "17179869184G"}) {
        const Parsed parsed = parse({"--memory", text, "a.wav"});

        EXPECT_EQ(parsed.code(), ExitCode::usage);
        EXPECT_THAT(parsed.err, HasSubstr("--memory: a number of bytes, or one with K, M or G "
                                          "behind it, not " +
                                          std::string(text) + "\n"));
    }
}

TEST(Options, TakesStartsThatAreKnown)
{
    const auto known =
        parse({"--fix", "a=b.wav=-1.5", "--fix", "c.wav=0x1p3", "c.wav"}).options().knownStarts;

    EXPECT_THAT(known, ElementsAre(testing::Pair("a=b.wav", -1.5), testing::Pair("c.wav", 8.0)));
}

TEST(Options, RefusesAStartWithoutSeconds)
{
    for (const char* text : {"a.wav", "a.wav=", "a.wav=soon", "a.wav=1s", "=1"}) {
        const Parsed parsed = parse({"--fix", text, "a.wav"});

        EXPECT_EQ(parsed.code(), ExitCode::usage);
        EXPECT_THAT(parsed.err, HasSubstr("--fix: FILE=SECONDS, not " + std::string(text) + "\n"));
    }
}

TEST(Options, TakesAStartOfAHundredDaysAndRefusesMore)
{
    // 100 * 24 * 3600.
    EXPECT_EQ(parse({"--fix", "a=8640000", "a"}).options().knownStarts[0].second, 8640000.0);
    EXPECT_EQ(parse({"--fix", "a=-8640000", "a"}).options().knownStarts[0].second, -8640000.0);
    for (const char* number :
         {"8640000.001", "-8640001", "1e308", "1e999", "-inf", "inf", "nan", "0x1p1000"}) {
        const Parsed parsed = parse({"--fix", std::string("a=") + number, "a"});

        EXPECT_EQ(parsed.code(), ExitCode::usage);
        EXPECT_THAT(parsed.err, HasSubstr("--fix: a: " + std::string(number) +
                                          " is no time within 100 days of 0\n"));
    }
}

TEST(Options, TakesPairsThatMustBeApart)
{
    EXPECT_THAT(parse({"--apart", "a.wav,b.wav", "a.wav", "b.wav"}).options().apart,
                ElementsAre(testing::Pair("a.wav", "b.wav")));
}

TEST(Options, RefusesAPairThatIsNone)
{
    for (const char* text : {"a.wav", ",a.wav", "a.wav,"}) {
        const Parsed parsed = parse({"--apart", text, "a.wav"});

        EXPECT_EQ(parsed.code(), ExitCode::usage);
        EXPECT_THAT(parsed.err, HasSubstr("--apart: FILE,FILE, not " + std::string(text) + "\n"));
    }
}

TEST(Options, TakesDevicesWithTheirFiles)
{
    const auto devices =
        parse({"--device", "camera a=1.wav,b=2.wav,3.wav", "--device", "b=4.wav", "1.wav"})
            .options()
            .devices;

    EXPECT_THAT(devices,
                ElementsAre(testing::Pair("camera a", ElementsAre("1.wav", "b=2.wav", "3.wav")),
                            testing::Pair("b", ElementsAre("4.wav"))));
}

TEST(Options, RefusesADeviceWithoutANameOrFiles)
{
    for (const char* text : {"a.wav", "=a.wav", "b=", "b=a.wav,", "b=,a.wav", "b=a.wav,,c.wav"}) {
        const Parsed parsed = parse({"--device", text, "a.wav"});

        EXPECT_EQ(parsed.code(), ExitCode::usage);
        EXPECT_THAT(parsed.err,
                    HasSubstr("--device: NAME=FILE,..., not " + std::string(text) + "\n"));
    }
}

TEST(Options, LeavesOutClocksWhenAsked)
{
    EXPECT_FALSE(parse({"a.wav"}).options().engine.ignoreClocks);
    EXPECT_TRUE(parse({"--ignore-clocks", "a.wav"}).options().engine.ignoreClocks);
}

TEST(Options, TakesEveryWayToTellProgress)
{
    EXPECT_EQ(parse({"a.wav"}).options().progress, std::nullopt);
    EXPECT_EQ(parse({"--progress", "auto", "a.wav"}).options().progress, std::nullopt);
    EXPECT_EQ(parse({"--progress", "bar", "a.wav"}).options().progress, ProgressMode::bar);
    EXPECT_EQ(parse({"--progress", "plain", "a.wav"}).options().progress, ProgressMode::plain);
    EXPECT_EQ(parse({"--progress", "json", "a.wav"}).options().progress, ProgressMode::json);
    EXPECT_EQ(parse({"--progress", "none", "a.wav"}).options().progress, ProgressMode::none);
}

TEST(Options, RefusesAnUnknownWayToTellProgress)
{
    EXPECT_EQ(parse({"--progress", "loud", "a.wav"}).code(), ExitCode::usage);
}

TEST(Options, RefusesZeroJobs)
{
    EXPECT_EQ(parse({"--jobs", "0", "a.wav"}).code(), ExitCode::usage);
}

TEST(Options, ListsEveryExitCodeInTheHelp)
{
    const Parsed parsed = parse({"--help"});

    EXPECT_EQ(parsed.code(), ExitCode::grouped);
    for (const char* code : {"\n  0  ", "\n  1  ", "\n  2  ", "\n  3  ", "\n  4  ", "\n  130  ",
                             "\n  141  ", "\n  143  "})
        EXPECT_THAT(parsed.out, HasSubstr(code));
    EXPECT_EQ(parsed.err, "");
}

TEST(Options, KeepsTheHelpWithinATerminal)
{
    constexpr std::size_t columns = 80;
    std::istringstream lines(parse({"--help"}).out);
    for (std::string line; std::getline(lines, line);)
        EXPECT_LE(line.size(), columns) << line;
}

TEST(Options, SaysInTheHelpWhatCanBeRead)
{
    EXPECT_THAT(parse({"--help"}, true).out, HasSubstr("\nAny file that holds sound can be given"));
    EXPECT_THAT(parse({"--help"}, false).out, HasSubstr("\nThis build reads WAV files only.\n"));
}

TEST(Options, LetsNoArgumentCommandTheTerminal)
{
    const Parsed parsed = parse({"--\x1b[2J\xC2\x9B", "a.wav"});

    EXPECT_EQ(parsed.code(), ExitCode::usage);
    EXPECT_THAT(parsed.err, HasSubstr("--\\x1b[2J\\xc2\\x9b"));
    EXPECT_THAT(parsed.err, testing::Not(HasSubstr("\x1b")));
}

TEST(Options, NamesItselfWithTheVersion)
{
    const Parsed parsed = parse({"--version"});

    EXPECT_EQ(parsed.code(), ExitCode::grouped);
    EXPECT_THAT(parsed.out, testing::MatchesRegex("vxl-sync [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

} // namespace
