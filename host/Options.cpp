#include "Options.h"

#include <cmath>
#include <cstdlib>
#include <map>
#include <ostream>

#include <CLI/CLI.hpp>

namespace vxlsync
{

namespace
{

constexpr const char* description =
    "Lines up recordings of one event by their sound. Prints for each group of recordings that\n"
    "belong together how many seconds after the earliest one each of them starts, how far its "
    "clock\n"
    "drifts from that of the group's reference, and for each recording that stays alone why.";

constexpr const char* notes =
    "Any file that holds sound can be given, videos included. A file that is given twice is taken\n"
    "once. Groups stand in the order of their first file on the command line, the members of a\n"
    "group in the order in which they start. The result goes to standard output, all else to\n"
    "standard error.\n"
    "\n"
    "Exit codes:\n"
    "  0    every file is in a group; also if some are and the rest are listed as alone\n"
    "  1    internal error, or the result could not be written\n"
    "  2    the command line was not understood\n"
    "  3    some file could not be read\n"
    "  4    all files could be read, but nothing matched\n"
    "  130  interrupted\n"
    "The first of 2, 3 and 4 that holds is the one given.";

constexpr std::size_t mostJobs = 256;

// An argument in brackets would be taken for a list and split at its commas.
std::string withoutListMeaning(const std::string& argument)
{
    const bool bracketed =
        argument.size() >= 2 && argument.front() == '[' && argument.back() == ']';
    return bracketed ? "./" + argument : argument;
}

void readChannel(const std::string& text, DecodeOptions& decode)
{
    if (text == "left") {
        decode.channel = DecodeOptions::Channel::left;
        return;
    }
    if (text == "mix") {
        decode.channel = DecodeOptions::Channel::mix;
        return;
    }
    char* end = nullptr;
    const long number = std::strtol(text.c_str(), &end, 10);
    if (text.empty() || *end != '\0' || number < 1 || number > 1024)
        throw CLI::ValidationError("--channel", "left, mix or a number from 1, not " + text);
    decode.channel = DecodeOptions::Channel::numbered;
    decode.channelNumber = static_cast<int>(number);
}

void readFixed(const std::vector<std::string>& texts, Options& options)
{
    for (const std::string& text : texts) {
        const std::size_t sign = text.rfind('=');
        const std::string number = sign == std::string::npos ? "" : text.substr(sign + 1);
        char* end = nullptr;
        const double seconds = std::strtod(number.c_str(), &end);
        if (number.empty() || *end != '\0' || !std::isfinite(seconds) || sign == 0)
            throw CLI::ValidationError("--fix", "FILE=SECONDS, not " + text);
        options.fixed.emplace_back(text.substr(0, sign), seconds);
    }
}

void readApart(const std::vector<std::string>& texts, Options& options)
{
    for (const std::string& text : texts) {
        const std::size_t comma = text.find(',');
        if (comma == std::string::npos || comma == 0 || comma + 1 == text.size())
            throw CLI::ValidationError("--apart", "FILE,FILE, not " + text);
        options.apart.emplace_back(text.substr(0, comma), text.substr(comma + 1));
    }
}

} // namespace

std::variant<Options, ExitCode> parseOptions(const std::vector<std::string>& arguments,
                                             std::ostream& out, std::ostream& err)
{
    Options options;
    std::string channel = "left";
    std::vector<std::string> fixed;
    std::vector<std::string> apart;
    CLI::App app(description, "vxl-sync");
    app.footer(notes);
    app.set_version_flag("--version", "vxl-sync " VXL_SYNC_VERSION);
    std::string format = "text";
    app.add_option("--format", format, "How the result is printed: text (default), json or csv")
        ->option_text("text|json|csv")
        ->check(CLI::IsMember({"text", "json", "csv"}));
    std::string progress = "auto";
    app.add_option(
           "--progress", progress,
           "What is told on standard error meanwhile; auto (default) is a bar on a terminal "
           "and nothing elsewhere")
        ->option_text("auto|bar|plain|json|none")
        ->check(CLI::IsMember({"auto", "bar", "plain", "json", "none"}));
    app.add_option("--channel", channel, "Channel that counts: left (default), mix, or its number")
        ->option_text("left|mix|N");
    app.add_option("--stream", options.decode.stream,
                   "Audio stream of each file, from 1; by default the one that players take")
        ->option_text("N")
        ->check(CLI::Range(1, 10000));
    app.add_flag("--native", options.native,
                 "Read with the library's own reader: WAV files of 8000 Hz only");
    app.add_flag("--landmarks-only", options.landmarksOnly,
                 "Tell what the landmarks say, to the frame, and nothing more");
    app.add_option("--jobs", options.jobs, "Threads; by default one for each processor")
        ->option_text("N")
        ->check(CLI::Range(std::size_t{1}, mostJobs));
    app.add_option("--reference", options.reference,
                   "Recording whose clock the drifts refer to; by default the one best tied")
        ->option_text("FILE");
    app.add_option("--fix", fixed, "A start that is known, in seconds on a clock of your own")
        ->option_text("FILE=SECONDS")
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option("--apart", apart, "Two recordings that must not share a group")
        ->option_text("FILE,FILE")
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option("FILE", options.paths, "Recordings")->option_text("...")->required();

    // The parser takes its arguments from the back.
    std::vector<std::string> reversed;
    for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument)
        reversed.push_back(withoutListMeaning(*argument));
    try {
        app.parse(reversed);
        const std::map<std::string, Format> formats{
            {"text", Format::text}, {"json", Format::json}, {"csv", Format::csv}};
        const std::map<std::string, ProgressChoice> choices{{"auto", ProgressChoice::automatic},
                                                            {"bar", ProgressChoice::bar},
                                                            {"plain", ProgressChoice::plain},
                                                            {"json", ProgressChoice::json},
                                                            {"none", ProgressChoice::none}};
        options.format = formats.at(format);
        options.progress = choices.at(progress);
        readChannel(channel, options.decode);
        readFixed(fixed, options);
        readApart(apart, options);
    } catch (const CLI::ParseError& error) {
        return app.exit(error, out, err) == 0 ? ExitCode::grouped : ExitCode::usage;
    }
    return options;
}

} // namespace vxlsync
