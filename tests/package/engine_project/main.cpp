// A host's whole use of the engine, with nothing but what is installed: files and samples of its
// own lined up together, progress, cancelling, errors, and the JSON.
#include <cmath>
#include <cstdint>
#include <iostream>
#include <stdexcept>
#include <string>
#include <vector>

#include <vxl_sync/Result.h>
#include <vxl_sync/Sync.h>

namespace
{

int failures = 0;

void expect(bool condition, const std::string& what)
{
    if (condition) return;
    std::cerr << "engine host: " << what << '\n';
    ++failures;
}

// Twenty seconds of noise at 16 kHz, heard from the given second on.
vxlsync::Source noiseFrom(int second)
{
    constexpr int rate = 16000;
    vxlsync::Source source;
    source.name = "noise from " + std::to_string(second);
    source.sampleRate = rate;
    std::uint32_t state = 2463534242u;
    for (int i = 0; i < (second + 20) * rate; ++i) {
        state = state * 1664525u + 1013904223u;
        if (i >= second * rate)
            source.samples.push_back(static_cast<float>(state >> 8u) / 16777216.0f - 0.5f);
    }
    return source;
}

vxlsync::Source fileAt(const std::string& path)
{
    vxlsync::Source source;
    source.path = path;
    return source;
}

void linesUpFilesAndSamples(const std::string& folder)
{
    const std::vector<vxlsync::Source> sources{fileAt(folder + "/slow-clock.wav"),
                                               fileAt(folder + "/clean.wav"), noiseFrom(0),
                                               noiseFrom(7), fileAt(folder + "/none.wav")};
    double share = 0.0;
    vxlsync::Callbacks callbacks;
    callbacks.progress = [&](const vxlsync::Progress& progress) {
        expect(progress.share >= share, "progress fell back");
        share = progress.share;
    };
    const vxlsync::Result result = vxlsync::synchronise(sources, {}, callbacks);

    expect(share == 1.0, "progress ended before its end");
    expect(result.groups.size() == 2, "not two groups");
    expect(result.failed.size() == 1 && result.failed[0].source == 4,
           "the missing file is not told");
    if (result.groups.size() != 2) return;
    // 6.2576 s and 7 s are how the recordings were made.
    expect(std::fabs(result.groups[0].members[1].offsetSeconds - 6.2576) < 0.0005,
           "clean does not start 6.2576 s after slow-clock");
    expect(std::fabs(result.groups[1].members[1].offsetSeconds - 7.0) < 0.0001,
           "the samples do not lie 7 s apart");
    expect(vxlsync::toJson(result).find("\"version\": 3") != std::string::npos, "no JSON");
}

void canBeCancelled()
{
    vxlsync::Callbacks callbacks;
    callbacks.isCancelled = [] { return true; };
    try {
        vxlsync::synchronise({noiseFrom(0), noiseFrom(7)}, {}, callbacks);
        expect(false, "a cancelled job went on");
    } catch (const vxlsync::Cancelled&) {
    }
}

void refusesNonsense()
{
    vxlsync::Options options;
    options.reference = 5;
    try {
        vxlsync::synchronise({noiseFrom(0)}, options);
        expect(false, "a reference that is not there was taken");
    } catch (const std::invalid_argument&) {
    }
}

} // namespace

int main(int argc, char** argv)
{
    if (argc != 2) return 2;
    vxlsync::silenceDecoders();
    vxlsync::boundDecoders();
    linesUpFilesAndSamples(argv[1]);
    canBeCancelled();
    refusesNonsense();
    return failures == 0 ? 0 : 1;
}
