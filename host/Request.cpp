#include "Request.h"

#include <cstddef>
#include <utility>

#include "Paths.h"
#include "Printable.h"

namespace vxlsync::host
{

namespace
{

std::size_t indexOf(const std::vector<std::string>& paths, const std::string& option,
                    const std::string& file)
{
    const std::size_t index = findPath(paths, file);
    if (index == paths.size())
        throw UsageError(option + ": " + printable(file) +
                         ": not one of the recordings, or more than one");
    return index;
}

} // namespace

Request requestOf(const Options& options, const std::vector<std::string>& paths)
{
    Request request;
    request.options = options.engine;
    for (const std::string& path : paths) {
        if (path.empty()) throw UsageError("a file with an empty name cannot be read");
        Source source;
        source.path = path;
        request.sources.push_back(std::move(source));
    }
    for (const auto& [file, seconds] : options.knownStarts) {
        Source& source = request.sources[indexOf(paths, "--fix", file)];
        if (source.knownStartSeconds.value_or(seconds) != seconds)
            throw UsageError("--fix: " + printable(file) + ": given two starts that differ");
        source.knownStartSeconds = seconds;
    }
    for (const auto& [file, stream] : options.streams)
        request.sources[indexOf(paths, "--stream", file)].stream = stream;
    for (const auto& [file, choice] : options.channels) {
        Source& source = request.sources[indexOf(paths, "--channel", file)];
        source.channel = choice.channel;
        source.channelNumber = choice.number;
    }
    for (const auto& [left, right] : options.apart) {
        const std::size_t first = indexOf(paths, "--apart", left);
        const std::size_t second = indexOf(paths, "--apart", right);
        if (first == second)
            throw UsageError("--apart: " + printable(left) + " and " + printable(right) +
                             " are the same recording");
        request.options.apart.emplace_back(first, second);
    }
    for (const auto& [device, files] : options.devices) {
        for (const std::string& file : files) {
            Source& source = request.sources[indexOf(paths, "--device", file)];
            if (!source.device.empty() && source.device != device)
                throw UsageError("--device: " + printable(file) + ": given two devices");
            source.device = device;
        }
    }
    if (!options.reference.empty())
        request.options.reference = indexOf(paths, "--reference", options.reference);
    return request;
}

} // namespace vxlsync::host
