#include "job/Plan.h"

#include <algorithm>
#include <numeric>
#include <string>
#include <tuple>
#include <utility>

namespace vxlsync
{

namespace
{

std::vector<std::size_t> canonicalOrder(const std::vector<Source>& sources)
{
    std::vector<std::size_t> order(sources.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const auto keyOf = [&](std::size_t index) {
        const Source& source = sources[index];
        return std::tie(source.path, source.name, source.device, source.sampleRate,
                        source.knownStartSeconds, source.stream, source.channel,
                        source.channelNumber, source.samples);
    };
    std::stable_sort(order.begin(), order.end(), [&](std::size_t left, std::size_t right) {
        return keyOf(left) < keyOf(right);
    });
    return order;
}

} // namespace

void Plan::letSamplesGo()
{
    for (Source& source : sources)
        source.samples = std::vector<float>();
}

Plan planOf(std::vector<Source> sources, const Options& options)
{
    Plan plan;
    plan.sourceAt = canonicalOrder(sources);
    std::vector<std::size_t> positionOf(sources.size());
    for (std::size_t position = 0; position < sources.size(); ++position) {
        const std::size_t index = plan.sourceAt[position];
        positionOf[index] = position;
        Source& source = sources[index];
        plan.constraints.devices.push_back(source.device);
        if (source.knownStartSeconds)
            plan.constraints.known.emplace_back(position, *source.knownStartSeconds);
        plan.sources.push_back(std::move(source));
    }
    for (const auto& [first, second] : options.apart)
        plan.constraints.apart.emplace_back(positionOf[first], positionOf[second]);
    if (options.reference) plan.constraints.reference = positionOf[*options.reference];
    return plan;
}

} // namespace vxlsync
