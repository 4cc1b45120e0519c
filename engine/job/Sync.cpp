#include "vxl_sync/Sync.h"

#include <functional>
#include <utility>

#include "decide/Assemble.h"
#include "decide/Place.h"
#include "decide/Refine.h"
#include "job/Contract.h"
#include "job/Machine.h"
#include "job/Origins.h"
#include "job/Plan.h"
#include "job/Settle.h"
#include "match/Examine.h"
#include "match/LandmarkOffsets.h"
#include "match/Landmarks.h"
#include "match/Search.h"
#include "match/SearchParted.h"
#include "read/Read.h"
#include "running/Run.h"
#include "tell/Report.h"

namespace vxlsync
{

namespace
{

std::vector<SampleStore<float>> takeSamples(std::vector<Recording>& recordings)
{
    std::vector<SampleStore<float>> samples;
    samples.reserve(recordings.size());
    for (Recording& recording : recordings)
        samples.push_back(std::exchange(recording.samples, SampleStore<float>()));
    return samples;
}

// The host knows its sources by index, the steps by position.
Callbacks byIndex(const Callbacks& callbacks, const std::vector<std::size_t>& sourceAt)
{
    if (!callbacks.progress) return callbacks;
    Callbacks result = callbacks;
    result.progress = [&](Progress progress) {
        if (progress.finishedSource) progress.finishedSource = sourceAt[*progress.finishedSource];
        callbacks.progress(progress);
    };
    return result;
}

Assembly decide(Links links, const std::vector<Prepared>& prepared,
                const std::vector<LandmarkOffset>& landmarks, const Constraints& constraints,
                Run& run)
{
    run.meter.begin(Stage::deciding, 0);
    Examiner examiner(prepared, run.interrupt);
    const auto assembleLinks = [&](Links all) {
        return assemble(std::move(all), constraints, std::ref(examiner), run.interrupt);
    };
    const auto searchAgain = [&](const Assembly& assembly, double beginShare, double endShare) {
        return searchParted(prepared, constraints.devices, landmarks,
                            {assembly.groups, assembly.links}, beginShare, endShare, run);
    };
    return settle(std::move(links), assembleLinks, searchAgain);
}

Result workThrough(Plan& plan, const Options& options, Run& run)
{
    std::vector<Recording> recordings = readAll(plan.sources, options, run);
    plan.letSamplesGo();
    const std::vector<Origin> origins = findOrigins(plan.sources, recordings, options);
    addOrigins(origins, plan.constraints);
    const ReportInput reported{plan.sources, recordings, plan.sourceAt, origins};
    if (options.landmarksOnly) return reportLandmarks(reported, groupByLandmarks(recordings, run));

    const std::vector<LandmarkOffset> landmarks = offsetsByLandmarks(recordings, run);
    const std::vector<Prepared> prepared = prepareAll(takeSamples(recordings), run);
    Links links = searchPairs(prepared, plan.constraints.devices, landmarks, run);

    for (const Recording& recording : recordings)
        plan.constraints.durations.push_back(recording.durationSeconds);
    Assembly assembly = decide(std::move(links), prepared, landmarks, plan.constraints, run);

    assembly.links = refineLinks(std::move(assembly.links), recordings, run);
    return reportDecision(reported,
                          placeGroups(std::move(assembly), plan.constraints, run.interrupt));
}

} // namespace

Result synchronise(std::vector<Source> sources, const Options& options, const Callbacks& callbacks)
{
    requireUsable(sources, options);
    Plan plan = planOf(std::move(sources), options);
    Run run(threadsOf(options), memoryOf(options, machineMemory()),
            byIndex(callbacks, plan.sourceAt));
    Result result = workThrough(plan, options, run);
    run.meter.finish();
    return result;
}

} // namespace vxlsync
