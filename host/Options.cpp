#include "Options.h"

#include <algorithm>
#include <array>
#include <ostream>
#include <sstream>

#include <CLI/CLI.hpp>

#include "OptionTexts.h"
#include "Printable.h"

namespace vxlsync::host
{

namespace
{

constexpr const char* description =
    "Lines up recordings of one event by their sound. Prints for each group of\n"
    "recordings that belong together how many seconds after the earliest one each\n"
    "of them starts, how far its clock drifts from that of the group's reference,\n"
    "and for each recording that stays alone why.";

constexpr const char* anyMediaNote = "Any file that holds sound can be given, videos included.";
constexpr const char* waveOnlyNote = "This build reads WAV files only.";

constexpr const char* notes =
    "A file that is given twice is taken once. Groups stand in the order of their\n"
    "first file on the command line, the members of a group in the order in which\n"
    "they start. The result goes to standard output, all else to standard error.\n"
    "\n"
    "In text and tables, characters that could command a terminal or turn what\n"
    "follows around are written as \\x1b; in tables, what a spreadsheet would take\n"
    "for a formula stands behind an apostrophe. JSON has names as they are, and\n"
    "says where one is no UTF-8 and had to be escaped.\n"
    "\n"
    "Exit codes:\n"
    "  0    every file is in a group; also if some are and the rest are listed as\n"
    "       alone\n"
    "  1    internal error, or the result could not be written\n"
    "  2    the command line was not understood\n"
    "  3    some file could not be read\n"
    "  4    all files could be read, but nothing matched\n"
    "  130  interrupted (SIGINT)\n"
    "  141  whoever was to read the output has gone (SIGPIPE)\n"
    "  143  asked to end (SIGTERM)\n"
    "The first of 2, 3 and 4 that holds is the one given.";

// More threads than any machine of today has processors to offer to one job.
constexpr std::size_t mostThreads = 256;

template <typename Choice>
struct Named {
    const char* name;
    Choice choice;
};

constexpr std::array formats{
    Named<Format>{"text", Format::text},
    Named<Format>{"json", Format::json},
    Named<Format>{"csv", Format::csv},
};
using MaybeMode = std::optional<ProgressMode>;
constexpr std::array progressModes{
    Named<MaybeMode>{"auto", std::nullopt},         Named<MaybeMode>{"bar", ProgressMode::bar},
    Named<MaybeMode>{"plain", ProgressMode::plain}, Named<MaybeMode>{"json", ProgressMode::json},
    Named<MaybeMode>{"none", ProgressMode::none},
};

template <typename Choice, std::size_t count>
std::vector<std::string> namesOf(const std::array<Named<Choice>, count>& table)
{
    std::vector<std::string> names;
    names.reserve(count);
    for (const Named<Choice>& entry : table)
        names.emplace_back(entry.name);
    return names;
}

// Requires that the name is one of the table's.
template <typename Choice, std::size_t count>
Choice choiceOf(const std::array<Named<Choice>, count>& table, const std::string& name)
{
    return std::find_if(table.begin(), table.end(),
                        [&](const Named<Choice>& entry) { return name == entry.name; })
        ->choice;
}

// An argument in brackets would be taken for a list and split at its commas.
std::string withoutListMeaning(const std::string& argument)
{
    const bool bracketed =
        argument.size() >= 2 && argument.front() == '[' && argument.back() == ']';
    return bracketed ? "./" + argument : argument;
}

// Help lines start at the 30th column.
void addOutputOptions(CLI::App& app, OptionTexts& texts)
{
    app.add_option("--format", texts.format,
                   "How the result is printed: text (default),\njson or csv")
        ->option_text("text|json|csv")
        ->check(CLI::IsMember(namesOf(formats)));
    app.add_option("--progress", texts.progress,
                   "What standard error shows meanwhile; auto\n"
                   "(default) is a bar on a terminal and nothing\n"
                   "elsewhere")
        ->option_text("auto|bar|plain|json|none")
        ->check(CLI::IsMember(namesOf(progressModes)));
}

void addReadingOptions(CLI::App& app, Options& options, OptionTexts& texts)
{
    app.add_option("--channel", texts.channels,
                   "Channel that counts: left (default), mix, or\n"
                   "its number; behind FILE=, for that file alone")
        ->option_text("left|mix|N")
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option("--stream", texts.streams,
                   "Audio stream of each file, from 1; by default\n"
                   "the one that players take. Behind FILE=, for\n"
                   "that file alone")
        ->option_text("N")
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_flag("--native", options.engine.nativeReader,
                 "Read with the library's own reader: WAV files\nof 8000 Hz only");
    app.add_flag("--landmarks-only", options.engine.landmarksOnly,
                 "Tell what the landmarks say, to the frame, and\nnothing more");
    app.add_option("--jobs", options.engine.threads, "Threads; by default one for each processor")
        ->option_text("N")
        ->check(CLI::Range(std::size_t{1}, mostThreads));
    app.add_option("--memory", texts.memory,
                   "Memory that the job may take, in bytes or with\n"
                   "K, M or G behind the number, at least 128M; by\n"
                   "default three quarters of the machine's.\n"
                   "Recordings that do not fit fail, the longest\n"
                   "first")
        ->option_text("SIZE");
}

void addKnowledgeOptions(CLI::App& app, Options& options, OptionTexts& texts)
{
    app.add_option("--reference", options.reference,
                   "Recording whose clock the drifts refer to; by\ndefault one whose start is "
                   "known, or the one best\ntied")
        ->option_text("FILE");
    app.add_option("--fix", texts.fixed,
                   "A start that is known, in seconds on a clock of\nyour own, within 100 days of "
                   "0. All that have one\nmake one group, told on that clock with what\ntheir "
                   "sound says against it")
        ->option_text("FILE=SECONDS")
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option("--apart", texts.apart, "Two recordings that must not share a group")
        ->option_text("FILE,FILE")
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_option("--device", texts.devices,
                   "What recorded these files: it is never in two\n"
                   "places at once. By default what the files say\n"
                   "of it counts as evidence")
        ->option_text("NAME=FILE,...")
        ->allow_extra_args(false)
        ->multi_option_policy(CLI::MultiOptionPolicy::TakeAll);
    app.add_flag("--ignore-clocks", options.engine.ignoreClocks,
                 "Leave out what files say of when they were\nrecorded");
    app.add_option("FILE", options.paths, "Recordings")->option_text("...")->required();
}

// Writes what the parser has to say. Arguments that it repeats may have come from names of files.
ExitCode endWith(const CLI::App& app, const CLI::ParseError& error, std::ostream& out,
                 std::ostream& err)
{
    std::stringstream lines;
    if (app.exit(error, out, lines) == 0) return ExitCode::grouped;
    for (std::string line; std::getline(lines, line);)
        err << printable(line) << '\n';
    return ExitCode::usage;
}

} // namespace

std::variant<Options, ExitCode> parseOptions(const std::vector<std::string>& arguments,
                                             bool anyMedia, std::ostream& out, std::ostream& err)
{
    Options options;
    OptionTexts texts;
    CLI::App app(description, "vxl-sync");
    app.footer(std::string(anyMedia ? anyMediaNote : waveOnlyNote) + "\n" + notes);
    app.set_version_flag("--version", "vxl-sync " VXL_SYNC_VERSION);
    addOutputOptions(app, texts);
    addReadingOptions(app, options, texts);
    addKnowledgeOptions(app, options, texts);

    // The parser takes its arguments from the back.
    std::vector<std::string> reversed;
    std::transform(arguments.rbegin(), arguments.rend(), std::back_inserter(reversed),
                   withoutListMeaning);
    try {
        app.parse(reversed);
        options.format = choiceOf(formats, texts.format);
        options.progress = choiceOf(progressModes, texts.progress);
        texts.isMemoryGiven = app.count("--memory") > 0;
        readTexts(texts, options);
    } catch (const CLI::ParseError& error) {
        return endWith(app, error, out, err);
    }
    return options;
}

} // namespace vxlsync::host
