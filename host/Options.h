#ifndef VXL_SYNC_OPTIONS_H
#define VXL_SYNC_OPTIONS_H

#include <iosfwd>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "Decode.h"
#include "ExitCode.h"

namespace vxlsync
{

enum class Format { text, json, csv };
enum class ProgressChoice { automatic, bar, plain, json, none };

// What the command line asks for.
struct Options {
    Format format = Format::text;
    ProgressChoice progress = ProgressChoice::automatic;
    std::vector<std::string> paths;
    DecodeOptions decode;
    bool native = false;
    bool landmarksOnly = false;
    // 0 for as many as the machine has processors.
    std::size_t jobs = 0;
    std::vector<std::pair<std::string, double>> fixed;
    std::vector<std::pair<std::string, std::string>> apart;
    std::string reference;
};

// Reads the arguments, the program's name not among them. If they ask for the help or the version
// or cannot be understood, what there is to say has been written, to `out` or to `err`, and the
// result is the code to end with.
std::variant<Options, ExitCode> parseOptions(const std::vector<std::string>& arguments,
                                             std::ostream& out, std::ostream& err);

} // namespace vxlsync

#endif
