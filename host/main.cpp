#include <unistd.h>

#include <exception>
#include <iostream>
#include <string>
#include <variant>
#include <vector>

#include "ExitCode.h"
#include "Job.h"
#include "Options.h"
#include "Output.h"
#include "Paths.h"
#include "ProgressBar.h"
#include "Report.h"

namespace
{

using vxlsync::ExitCode;
using vxlsync::printable;

void complain(const std::string& message)
{
    std::cerr << "vxl-sync: " << message << '\n';
}

vxlsync::Report synchronise(const std::vector<std::string>& paths)
{
    const vxlsync::DistinctPaths distinct = vxlsync::distinctPaths(paths);
    for (const auto& repeat : distinct.repeats) {
        complain(printable(repeat.path) + ": the same file as " + printable(repeat.first) +
                 ", taken once");
    }
    vxlsync::ProgressBar bar(std::cerr, isatty(STDERR_FILENO) == 1);
    return vxlsync::runJob(distinct.kept, bar);
}

ExitCode run(const std::vector<std::string>& arguments)
{
    const auto parsed = vxlsync::parseOptions(arguments, std::cout, std::cerr);
    if (const auto* code = std::get_if<ExitCode>(&parsed)) return *code;
    const auto& options = std::get<vxlsync::Options>(parsed);

    const vxlsync::Report report = synchronise(options.paths);
    for (const auto& failure : report.failed)
        complain(printable(failure.path) + ": " + printable(failure.reason));
    if (options.format == vxlsync::Format::json) {
        vxlsync::writeJson(report, std::cout);
    } else {
        vxlsync::writeText(report, std::cout);
    }
    return vxlsync::exitCodeOf(report);
}

} // namespace

int main(int argc, char* argv[])
{
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
