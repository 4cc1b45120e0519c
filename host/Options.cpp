#include "Options.h"

#include <ostream>

#include <CLI/CLI.hpp>

namespace vxlsync
{

namespace
{

constexpr const char* description =
    "Lines up recordings of one event by their sound. Prints for each group of recordings that\n"
    "belong together how many seconds after the earliest one each of them begins.";

constexpr const char* notes =
    "Recordings are WAV files of 8000 Hz whose names end in .wav. Of several channels the first\n"
    "one counts. A file that is given twice is taken once.\n"
    "\n"
    "Groups stand in the order of their first file on the command line, the members of a group in\n"
    "the order in which they begin. The result goes to standard output, all else to standard\n"
    "error.\n"
    "\n"
    "Exit codes:\n"
    "  0  every file is in a group; also if some are and the rest are listed as alone\n"
    "  1  internal error, or the result could not be written\n"
    "  2  the command line was not understood\n"
    "  3  some file could not be read\n"
    "  4  all files could be read, but nothing matched\n"
    "The first of 2, 3 and 4 that holds is the one given.";

// An argument in brackets would be taken for a list and split at its commas.
std::string withoutListMeaning(const std::string& argument)
{
    const bool bracketed =
        argument.size() >= 2 && argument.front() == '[' && argument.back() == ']';
    return bracketed ? "./" + argument : argument;
}

} // namespace

std::variant<Options, ExitCode> parseOptions(const std::vector<std::string>& arguments,
                                             std::ostream& out, std::ostream& err)
{
    Options options;
    CLI::App app(description, "vxl-sync");
    app.footer(notes);
    app.set_version_flag("--version", "vxl-sync " VXL_SYNC_VERSION);
    std::string format = "text";
    app.add_option("--format", format, "How the result is printed: text (default) or json")
        ->option_text("text|json")
        ->check(CLI::IsMember({"text", "json"}));
    app.add_option("FILE", options.paths, "Recordings")->option_text("...")->required();

    // The parser takes its arguments from the back.
    std::vector<std::string> reversed;
    for (auto argument = arguments.rbegin(); argument != arguments.rend(); ++argument)
        reversed.push_back(withoutListMeaning(*argument));
    try {
        app.parse(reversed);
    } catch (const CLI::ParseError& error) {
        return app.exit(error, out, err) == 0 ? ExitCode::grouped : ExitCode::usage;
    }
    options.format = format == "json" ? Format::json : Format::text;
    return options;
}

} // namespace vxlsync
