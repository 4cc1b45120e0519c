#include "Paths.h"

#include <filesystem>
#include <map>
#include <system_error>

namespace vxlsync::host
{

namespace
{

std::string identityOf(const std::string& path)
{
    std::error_code error;
    const std::filesystem::path canonical = std::filesystem::canonical(path, error);
    if (error) return path;
    return canonical.string();
}

bool hasBareName(const std::filesystem::path& path, const std::string& name)
{
    if (path.filename() == name) return true;
    return path.stem() == name;
}

} // namespace

DistinctPaths distinctPaths(const std::vector<std::string>& paths)
{
    DistinctPaths result;
    std::map<std::string, std::string> firsts;
    for (const std::string& path : paths) {
        const auto entry = firsts.emplace(identityOf(path), path);
        if (entry.second) {
            result.kept.push_back(path);
        } else {
            result.repeats.push_back({path, entry.first->second});
        }
    }
    return result;
}

std::size_t findPath(const std::vector<std::string>& paths, const std::string& wanted)
{
    const std::string identity = identityOf(wanted);
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (identityOf(paths[i]) == identity) return i;
    }
    // The bare name, where it is the only one of its kind.
    std::size_t match = paths.size();
    for (std::size_t i = 0; i < paths.size(); ++i) {
        if (!hasBareName(paths[i], wanted)) continue;
        if (match != paths.size()) return paths.size();
        match = i;
    }
    return match;
}

} // namespace vxlsync::host
