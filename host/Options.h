#ifndef VXL_SYNC_OPTIONS_H
#define VXL_SYNC_OPTIONS_H

#include <iosfwd>
#include <string>
#include <variant>
#include <vector>

#include "ExitCode.h"

namespace vxlsync
{

enum class Format { text, json };

// What the command line asks for.
struct Options {
    Format format = Format::text;
    std::vector<std::string> paths;
};

// Reads the arguments, the program's name not among them. If they ask for the help or the version
// or cannot be understood, what there is to say has been written, to `out` or to `err`, and the
// result is the code to end with.
std::variant<Options, ExitCode> parseOptions(const std::vector<std::string>& arguments,
                                             std::ostream& out, std::ostream& err);

} // namespace vxlsync

#endif
