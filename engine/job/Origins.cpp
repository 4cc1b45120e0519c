#include "job/Origins.h"

#include <optional>
#include <string>
#include <utility>

#include "decide/Devices.h"

namespace vxlsync
{

std::vector<Origin> findOrigins(const std::vector<Source>& sources,
                                const std::vector<Recording>& recordings, const Options& options)
{
    Takes takes;
    for (std::size_t i = 0; i < sources.size(); ++i) {
        Take take;
        take.path = sources[i].path;
        take.device = sources[i].device;
        take.seconds = recordings[i].durationSeconds;
        take.facts = recordings[i].facts;
        if (options.ignoreClocks) {
            take.facts.created.reset();
            take.facts.started.reset();
        }
        takes.push_back(std::move(take));
    }
    return originsOf(takes);
}

void addOrigins(const std::vector<Origin>& origins, Constraints& constraints)
{
    for (const Origin& origin : origins) {
        const bool isStated = origin.knownBy == DeviceEvidence::stated;
        constraints.likelyDevices.push_back(isStated ? std::string() : origin.device);
        constraints.clockStarts.push_back(origin.clockStart);
    }
}

} // namespace vxlsync
