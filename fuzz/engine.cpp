// Whole jobs of the engine on odd sound that a host hands over.

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <nlohmann/json.hpp>

#include "Bytes.h"
#include "Harness.h"
#include "vxl_sync/Sync.h"

namespace
{

using fuzz::Bytes;
using fuzz::require;
using vxlsync::Options;
using vxlsync::Result;
using vxlsync::Source;

constexpr std::uint32_t mostSources = 5;
constexpr std::size_t mostSamples = 120'000;

float oddSample(Bytes& bytes)
{
    return bytes.pick({0.0f, 1.0f, -1.0f, 3e38f, -3e38f, 1e-38f,
                       std::numeric_limits<float>::infinity(),
                       std::numeric_limits<float>::quiet_NaN(), 1e9f, 1e-20f});
}

// Appends one stretch of sound of some kind.
void appendStretch(std::vector<float>& samples, Bytes& bytes, const std::vector<float>& event)
{
    const std::size_t count = 1 + bytes.below(20'000);
    const float level = bytes.pick({0.5f, 0.01f, 1e-6f, 1e6f, 1e30f});
    switch (bytes.below(6)) {
    case 0: // What others hear as well.
    {
        const std::size_t start = bytes.below(static_cast<std::uint32_t>(event.size()));
        for (std::size_t i = start; i < std::min(event.size(), start + 4 * count); ++i)
            samples.push_back(event[i] * level);
        break;
    }
    case 1:
        samples.insert(samples.end(), count, 0.0f);
        break;
    case 2:
        samples.insert(samples.end(), count, oddSample(bytes));
        break;
    case 3: {
        const float step = 0.001f * static_cast<float>(1 + bytes.below(3000));
        for (std::size_t i = 0; i < count; ++i)
            samples.push_back(level * std::sin(step * static_cast<float>(i)));
        break;
    }
    case 4:
        for (std::size_t i = 0; i < std::min<std::size_t>(count, 64); ++i)
            samples.push_back(bytes.raw<float>());
        break;
    default: {
        // A loop.
        const std::size_t period = 1 + bytes.below(4000);
        for (std::size_t i = 0; i < count; ++i)
            samples.push_back(level * event[i % period]);
        break;
    }
    }
}

std::vector<float> eventOf(std::uint32_t seed)
{
    std::vector<float> samples(60'000);
    std::uint32_t state = seed;
    for (float& sample : samples) {
        state = state * 1664525U + 1013904223U;
        sample = static_cast<float>(state >> 8U) / 16777216.0f - 0.5f;
    }
    return samples;
}

std::vector<Source> sourcesOf(Bytes& bytes)
{
    const std::vector<float> event = eventOf(1 + bytes.byte());
    std::vector<Source> sources(bytes.below(mostSources + 1));
    for (Source& source : sources) {
        source.sampleRate = bytes.pick({8000, 2000, 16000, 48000, 11025, 768000, 7999});
        source.name = bytes.pick({"", "a", "b", "\xff\x80", "\xe2\x80\xae"});
        source.device = bytes.pick({"", "", "camera"});
        if (bytes.oneIn(4)) source.knownStartSeconds = bytes.pick({0.0, 5.0, -3.5, 8e6});
        const std::uint32_t stretches = bytes.below(5);
        for (std::uint32_t i = 0; i < stretches; ++i)
            appendStretch(source.samples, bytes, event);
        source.samples.resize(std::min(source.samples.size(), mostSamples));
    }
    return sources;
}

Options optionsOf(Bytes& bytes, std::size_t sources)
{
    Options options;
    options.threads = 1;
    options.landmarksOnly = bytes.oneIn(8);
    if (sources >= 2 && bytes.oneIn(4)) options.apart = {{0, sources - 1}};
    if (sources >= 1 && bytes.oneIn(4)) options.reference = sources - 1;
    return options;
}

// JSON has no words for what is no number, and would hold null. Requires that what may be unknown
// is not there.
bool holdsNull(const nlohmann::json& value)
{
    if (value.is_null()) return true;
    if (!value.is_structured()) return false;
    return std::any_of(value.begin(), value.end(), holdsNull);
}

// The result without what samples say nothing of.
nlohmann::json knownPartOf(const Result& result)
{
    nlohmann::json json = nlohmann::json::parse(vxlsync::toJson(result));
    for (nlohmann::json& source : json.at("sources")) {
        for (const char* unknown :
             {"device", "clockStartSeconds", "creationTime", "timecode", "timeReferenceSeconds",
              "frameRate", "pictureStartSeconds", "fileSeconds", "stream", "channel"})
            require(source.erase(unknown) == 1, "a field of every source");
    }
    return json;
}

void requireWhole(const Result& result, std::size_t sources)
{
    require(result.sources.size() == sources, "facts of every source");
    std::vector<int> places(sources, 0);
    for (const vxlsync::Group& group : result.groups) {
        require(group.members.size() >= 2, "two in a group");
        for (const vxlsync::Member& member : group.members)
            ++places.at(member.source);
    }
    for (const auto* list : {&result.alone, &result.failed}) {
        for (const vxlsync::LeftOut& leftOut : *list)
            ++places.at(leftOut.source);
    }
    require(std::all_of(places.begin(), places.end(), [](int count) { return count == 1; }),
            "every source in one place");
    require(!holdsNull(knownPartOf(result)), "numbers that are numbers");
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    Bytes bytes(data, size);
    const std::vector<Source> sources = sourcesOf(bytes);
    const Options options = optionsOf(bytes, sources.size());
    const Result result = vxlsync::synchronise(sources, options);
    requireWhole(result, sources.size());

    Options threaded = options;
    threaded.threads = 3;
    require(vxlsync::toJson(vxlsync::synchronise(sources, threaded)) == vxlsync::toJson(result),
            "the same for any number of threads");
    return 0;
}
