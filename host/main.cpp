#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <functional>
#include <iostream>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <vxl_sync/Sync.h>

#include "CsvResult.h"
#include "EndOnSignal.h"
#include "ExitCode.h"
#include "Guard.h"
#include "Options.h"
#include "Paths.h"
#include "Printable.h"
#include "ProgressBar.h"
#include "Request.h"
#include "Sandbox.h"
#include "TextResult.h"

namespace vxlsync::host
{

namespace
{

// As wide as most are, where it does not say.
constexpr std::size_t usualColumns = 80;

std::size_t terminalColumns()
{
    winsize size = {};
    if (ioctl(STDERR_FILENO, TIOCGWINSZ, &size) != 0 || size.ws_col == 0) return usualColumns;
    return size.ws_col;
}

// A terminal that cannot take a bar away.
bool isDumb()
{
    for (char** variable = environ; *variable != nullptr; ++variable) {
        if (std::string(*variable) == "TERM=dumb") return true;
    }
    return false;
}

Result synchronise(const Options& options, const std::vector<std::string>& paths)
{
    Request request = requestOf(options, paths);
    const bool canDrawBar = isatty(STDERR_FILENO) == 1 && !isDumb();
    const ProgressMode mode =
        options.progress.value_or(canDrawBar ? ProgressMode::bar : ProgressMode::none);
    ProgressBar bar(std::cerr, mode, paths, terminalColumns);
    endAtOnceOnSignals(mode == ProgressMode::bar);
    Callbacks callbacks;
    callbacks.progress = [&bar](const Progress& progress) { bar.show(progress); };
    return vxlsync::synchronise(std::move(request.sources), request.options, callbacks);
}

void write(const Result& result, Format format)
{
    if (format == Format::text) {
        writeText(result, std::cout);
    } else if (format == Format::csv) {
        writeCsv(result, std::cout);
    } else {
        std::cout << toJson(result);
    }
}

ExitCode run(const std::vector<std::string>& arguments)
{
    const auto parsed = parseOptions(arguments, readsAnyMedia(), std::cout, std::cerr);
    if (const auto* code = std::get_if<ExitCode>(&parsed)) return *code;
    const auto& options = std::get<Options>(parsed);

    const DistinctPaths distinct = distinctPaths(options.paths);
    for (const auto& repeat : distinct.repeats) {
        std::cerr << "vxl-sync: " << printable(repeat.path) << ": the same file as "
                  << printable(repeat.first) << ", taken once\n";
    }
    const Result result = synchronise(options, distinct.kept);
    write(result, options.format);
    return exitCodeOf(result);
}

ExitCode runConfined(int argc, char* argv[])
{
    const std::vector<std::string> arguments(argv + std::min(argc, 1), argv + argc);
    // Where the kernel refuses, the program is as right and less safe.
    static_cast<void>(confine());
    endAtOnceOnSignals(false);
    silenceDecoders();
    boundDecoders();
    const ExitCode code = run(arguments);
    // A full disk shows only now.
    if (std::cout.flush()) return code;
    std::cerr << "vxl-sync: standard output: the result could not be written\n";
    return ExitCode::internalError;
}

} // namespace

} // namespace vxlsync::host

int main(int argc, char* argv[])
{
    return static_cast<int>(
        vxlsync::host::guarded(std::bind(vxlsync::host::runConfined, argc, argv), std::cerr));
}
