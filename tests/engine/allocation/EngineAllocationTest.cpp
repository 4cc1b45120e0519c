#include <cstdint>
#include <new>
#include <optional>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "Allocations.h"
#include "Signals.h"
#include "Wave.h"
#include "vxl_sync/Sync.h"

// A job of the engine that gets no memory. What a source asks for belongs to the source: the job
// goes on without it. Whatever else is refused ends the job with std::bad_alloc. Nothing is leaked,
// and the next job gives what it should.

namespace
{

using allocation::Refusal;
using allocation::Refused;
using vxlsync::Options;
using vxlsync::Result;
using vxlsync::Source;

// A whole job makes some ten thousand allocations, many of one kind. Each run refuses one of them,
// so many apart that the sweep takes seconds; being prime, the step falls on every kind.
#ifdef VXL_SYNC_SANITIZED
constexpr std::uint64_t step = 211;
#else
constexpr std::uint64_t step = 23;
#endif

std::vector<Source> twoOfOneEvent()
{
    const std::vector<float> event = signals::noise(3, 6 * signals::rate);
    std::vector<Source> sources(2);
    for (std::size_t i = 0; i < sources.size(); ++i) {
        sources[i].name = i == 0 ? "early" : "late";
        sources[i].sampleRate = 2 * signals::rate;
        sources[i].samples = signals::part(event, i * signals::rate, 5 * signals::rate);
    }
    return sources;
}

std::vector<Source> filesOf(const wave::TempFolder& folder)
{
    std::vector<Source> sources(2);
    const std::vector<Source> samples = twoOfOneEvent();
    for (std::size_t i = 0; i < sources.size(); ++i) {
        wave::Format format = wave::format(3, 1, 32);
        format.sampleRate = 2 * signals::rate;
        sources[i].path = folder.write(samples[i].name + ".wav",
                                       wave::file(format, wave::samplesFloat(samples[i].samples)));
    }
    return sources;
}

// The job on one thread, the caller's, on which allocations are refused.
Options onThisThread()
{
    Options options;
    options.threads = 1;
    return options;
}

std::optional<Result> attempt(const std::vector<Source>& sources, Refusal& refusal)
{
    try {
        return vxlsync::synchronise(sources, onThisThread());
    } catch (const std::bad_alloc&) {
        return std::nullopt;
    } catch (const std::exception& error) {
        refusal.end();
        ADD_FAILURE() << "unexpected exception: " << error.what();
        return std::nullopt;
    }
}

void sweep(const std::vector<Source>& sources)
{
    const std::string expected = vxlsync::toJson(vxlsync::synchronise(sources, onThisThread()));
    for (const Refused kind : {Refused::One, Refused::AllFromThere}) {
        for (std::uint64_t number = 0;; number += step) {
            SCOPED_TRACE("allocation " + std::to_string(number) +
                         (kind == Refused::One ? " refused" : " and all that follow refused"));
            const std::int64_t before = allocation::liveBlocks();
            bool isRefused = false;
            {
                Refusal refusal(number, kind);
                const std::optional<Result> result = attempt(sources, refusal);
                refusal.end();
                isRefused = refusal.hasHappened();
                if (result) {
                    if (result->failed.empty()) {
                        EXPECT_EQ(vxlsync::toJson(*result), expected);
                    }
                } else {
                    EXPECT_TRUE(isRefused);
                }
            }
            if (testing::Test::HasFailure()) return;
            EXPECT_EQ(allocation::liveBlocks(), before);
            if (!isRefused) break;
        }
    }
    EXPECT_EQ(vxlsync::toJson(vxlsync::synchronise(sources, onThisThread())), expected);
}

TEST(EngineAllocation, RefusedInAJobOnSamplesIsAnExceptionOrAFailedSource)
{
    sweep(twoOfOneEvent());
}

TEST(EngineAllocation, RefusedInAJobOnFilesIsAnExceptionOrAFailedSource)
{
    const wave::TempFolder folder;
    vxlsync::silenceDecoders();

    sweep(filesOf(folder));
}

} // namespace
