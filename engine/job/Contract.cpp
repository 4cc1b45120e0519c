#include "job/Contract.h"

#include <cmath>
#include <stdexcept>

namespace vxlsync
{

namespace
{

[[noreturn]] void refuse(const std::string& sentence)
{
    throw std::invalid_argument(sentence);
}

std::string sourceName(std::size_t index)
{
    return "source " + std::to_string(index);
}

void requireKnown(std::size_t index, std::size_t count, const char* what)
{
    if (index >= count)
        refuse(std::string(what) + ": there is no " + sourceName(index) + " among " +
               std::to_string(count));
}

void requireUsable(int stream, Channel channel, int channelNumber, const std::string& whose)
{
    if (stream < 0)
        refuse(whose + "stream " + std::to_string(stream) + ", expected 1 and up, or 0 for any");
    if (channel == Channel::numbered && channelNumber < 1)
        refuse(whose + "channel " + std::to_string(channelNumber) + ", expected 1 and up");
}

void requireUsable(const Source& source, std::size_t index)
{
    if (source.path.empty() &&
        (source.sampleRate < leastSampleRate || source.sampleRate > greatestSampleRate))
        refuse(sourceName(index) + ": sample rate " + std::to_string(source.sampleRate) +
               ", expected " + std::to_string(leastSampleRate) + " to " +
               std::to_string(greatestSampleRate));
    if (!source.path.empty() && !source.samples.empty())
        refuse(sourceName(index) + ": has a path and samples, expected one of them");
    // Not within is also said of what is no number.
    if (source.knownStartSeconds && !(std::fabs(*source.knownStartSeconds) <= farthestStartSeconds))
        refuse(sourceName(index) + ": known start " + std::to_string(*source.knownStartSeconds) +
               " s, expected within a hundred days of 0");
    requireUsable(source.stream.value_or(0), source.channel.value_or(Channel::left),
                  source.channelNumber, sourceName(index) + ": ");
}

} // namespace

void requireUsable(const std::vector<Source>& sources, const Options& options)
{
    for (std::size_t i = 0; i < sources.size(); ++i)
        requireUsable(sources[i], i);
    requireUsable(options.stream, options.channel, options.channelNumber, std::string());
    if (options.memoryBytes != 0 && options.memoryBytes < leastMemoryBytes)
        refuse("memory of " + std::to_string(options.memoryBytes) + " bytes, expected " +
               std::to_string(leastMemoryBytes) + " and up");
    for (const auto& [first, second] : options.apart) {
        requireKnown(first, sources.size(), "apart");
        requireKnown(second, sources.size(), "apart");
        if (first == second) refuse("apart: " + sourceName(first) + " from itself");
    }
    if (options.reference) requireKnown(*options.reference, sources.size(), "reference");
}

} // namespace vxlsync
