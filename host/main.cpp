#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <exception>
#include <iostream>
#include <string>
#include <thread>
#include <variant>
#include <vector>

#include "Decode.h"
#include "ExitCode.h"
#include "Job.h"
#include "Options.h"
#include "Output.h"
#include "Paths.h"
#include "Progress.h"
#include "Report.h"

namespace
{

using vxlsync::ExitCode;
using vxlsync::Options;
using vxlsync::printable;

constexpr int interrupted = 130;

// Nothing is left behind by ending at once: there are no temporary files, and the result is written
// in one go at the end.
void endAtOnce(int)
{
    constexpr char newline = '\n';
    if (isatty(STDERR_FILENO) == 1) {
        const auto ignored = write(STDERR_FILENO, &newline, 1);
        static_cast<void>(ignored);
    }
    _exit(interrupted);
}

void complain(const std::string& message)
{
    std::cerr << "vxl-sync: " << message << '\n';
}

vxlsync::ProgressMode modeOf(vxlsync::ProgressChoice choice)
{
    switch (choice) {
    case vxlsync::ProgressChoice::bar:
        return vxlsync::ProgressMode::bar;
    case vxlsync::ProgressChoice::plain:
        return vxlsync::ProgressMode::plain;
    case vxlsync::ProgressChoice::json:
        return vxlsync::ProgressMode::json;
    case vxlsync::ProgressChoice::none:
        return vxlsync::ProgressMode::none;
    case vxlsync::ProgressChoice::automatic:
        break;
    }
    return isatty(STDERR_FILENO) == 1 ? vxlsync::ProgressMode::bar : vxlsync::ProgressMode::none;
}

// Names the file of an option that is not among the recordings.
struct UnknownFile {
    std::string option;
    std::string file;
};

std::size_t indexOf(const std::vector<std::string>& paths, const std::string& option,
                    const std::string& file)
{
    const std::size_t index = vxlsync::findPath(paths, file);
    if (index == paths.size()) throw UnknownFile{option, file};
    return index;
}

vxlsync::JobOptions jobOptionsOf(const Options& options, const std::vector<std::string>& paths)
{
    vxlsync::JobOptions job;
    job.decode = options.decode;
    job.native = options.native;
    job.landmarksOnly = options.landmarksOnly;
    job.jobs = options.jobs > 0 ? options.jobs
                                : std::max<std::size_t>(1, std::thread::hardware_concurrency());
    for (const auto& [file, seconds] : options.fixed)
        job.fixed.emplace_back(indexOf(paths, "--fix", file), seconds);
    for (const auto& [left, right] : options.apart)
        job.apart.emplace_back(indexOf(paths, "--apart", left), indexOf(paths, "--apart", right));
    job.reference =
        options.reference.empty() ? paths.size() : indexOf(paths, "--reference", options.reference);
    return job;
}

ExitCode run(const std::vector<std::string>& arguments)
{
    const auto parsed = vxlsync::parseOptions(arguments, std::cout, std::cerr);
    if (const auto* code = std::get_if<ExitCode>(&parsed)) return *code;
    const auto& options = std::get<Options>(parsed);

    const vxlsync::DistinctPaths distinct = vxlsync::distinctPaths(options.paths);
    for (const auto& repeat : distinct.repeats) {
        complain(printable(repeat.path) + ": the same file as " + printable(repeat.first) +
                 ", taken once");
    }
    vxlsync::Report report;
    try {
        const vxlsync::JobOptions job = jobOptionsOf(options, distinct.kept);
        vxlsync::silenceDecoders();
        vxlsync::Progress progress(std::cerr, modeOf(options.progress));
        report = vxlsync::runJob(distinct.kept, job, progress);
    } catch (const UnknownFile& unknown) {
        complain(unknown.option + ": " + printable(unknown.file) +
                 ": not one of the recordings, or more than one");
        return ExitCode::usage;
    }
    for (const auto& failure : report.failed)
        complain(printable(failure.path) + ": " + printable(failure.reason));
    switch (options.format) {
    case vxlsync::Format::text:
        vxlsync::writeText(report, std::cout);
        break;
    case vxlsync::Format::json:
        vxlsync::writeJson(report, std::cout);
        break;
    case vxlsync::Format::csv:
        vxlsync::writeCsv(report, std::cout);
        break;
    }
    return vxlsync::exitCodeOf(report);
}

} // namespace

int main(int argc, char* argv[])
{
    // Without the handler an interrupt ends the program all the same.
    static_cast<void>(signal(SIGINT, endAtOnce));
    auto code = ExitCode::internalError;
    try {
        code = run(std::vector<std::string>(argv + (argc > 0 ? 1 : 0), argv + argc));
        // A full disk or a closed output shows only now.
        if (!std::cout.flush()) {
            complain("standard output: the result could not be written");
            code = ExitCode::internalError;
        }
    } catch (const std::exception& error) {
        complain(std::string("internal error: ") + error.what());
    }
    return static_cast<int>(code);
}
