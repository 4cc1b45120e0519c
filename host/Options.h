#ifndef VXL_SYNC_OPTIONS_H
#define VXL_SYNC_OPTIONS_H

#include <iosfwd>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include <vxl_sync/Sync.h>

#include "ExitCode.h"
#include "ProgressBar.h"

namespace vxlsync::host
{

enum class Format { text, json, csv };

struct ChannelChoice {
    Channel channel = Channel::left;
    // From 1, for Channel::numbered.
    int number = 1;
};

// What the command line asks for. Recordings are named here as the user names them.
struct Options {
    Format format = Format::text;
    // A bar on a terminal and nothing elsewhere unless set.
    std::optional<ProgressMode> progress;
    std::vector<std::string> paths;
    // But for those that name recordings by index, which stay empty.
    vxlsync::Options engine;
    // In seconds, within farthestStartSeconds.
    std::vector<std::pair<std::string, double>> knownStarts;
    std::vector<std::pair<std::string, std::string>> apart;
    std::vector<std::pair<std::string, int>> streams;
    std::vector<std::pair<std::string, ChannelChoice>> channels;
    // By name of the device.
    std::vector<std::pair<std::string, std::vector<std::string>>> devices;
    std::string reference;
};

// Reads the arguments, the program's name not among them. If they ask for the help or the version
// or cannot be understood, what there is to say has been written, to `out` or to `err`, and the
// result is the code to end with. `anyMedia` is what the engine's readsAnyMedia() says, for the
// help.
std::variant<Options, ExitCode> parseOptions(const std::vector<std::string>& arguments,
                                             bool anyMedia, std::ostream& out, std::ostream& err);

} // namespace vxlsync::host

#endif
