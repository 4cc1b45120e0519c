#include "Job.h"

#include <algorithm>
#include <atomic>
#include <cmath>
#include <filesystem>

#include "Align.h"
#include "Assemble.h"
#include "Candidates.h"
#include "ConsoleRedirect.h"
#include "LandmarkGroups.h"
#include "Parallel.h"
#include "Place.h"
#include "Progress.h"
#include "Recording.h"
#include "Refine.h"
#include "Search.h"

namespace vxlsync
{

namespace
{

// Mean square below which nothing but the last bit of a converter is heard.
constexpr double silence = 1e-9;
// What the landmarks resolve: one frame.
constexpr double landmarkError = 0.032;
// How far a line that others imply may be off.
constexpr double impliedReach = 0.015;
constexpr double impliedSlopeReach = 30e-6;
constexpr std::size_t impliedWindows = 14;

const char* nameOf(Verdict verdict)
{
    switch (verdict) {
    case Verdict::accepted:
        return "accepted";
    case Verdict::confirmed:
        return "confirmed";
    case Verdict::given:
        return "given";
    case Verdict::weak:
        return "weak";
    case Verdict::ambiguous:
        return "ambiguous";
    case Verdict::contradicted:
        return "contradicted";
    case Verdict::forbidden:
        return "forbidden";
    }
    return "";
}

const char* reasonOf(Verdict verdict)
{
    switch (verdict) {
    case Verdict::accepted:
        return "clear by itself";
    case Verdict::confirmed:
        return "agrees with the other links of the group";
    case Verdict::given:
        return "given by the user";
    case Verdict::weak:
        return "far less alike than a shared scene is: a part of the sound in common, or chance";
    case Verdict::ambiguous:
        return "another offset fits nearly as well: the sound repeats";
    case Verdict::contradicted:
        return "contradicts stronger links";
    case Verdict::forbidden:
        return "kept apart by the user";
    }
    return "";
}

class Job
{
public:
    Job(const std::vector<std::string>& newPaths, const JobOptions& newOptions,
        Progress& newProgress)
        : paths(newPaths),
          options(newOptions),
          progress(newProgress),
          workers(std::max<std::size_t>(1, newOptions.jobs)),
          recordings(newPaths.size())
    {
    }

    Report run()
    {
        read();
        progress.stage("Landmarks", 0.3, 0.35);
        std::vector<std::string> names;
        for (const Recording& recording : recordings)
            names.push_back(recording.name);
        const std::vector<LandmarkGroup> told = [&] {
            const ConsoleRedirect redirect(
                [this](const std::string& line) { progress.printLine(line); });
            return groupByLandmarks(std::move(landmarks), names, nullptr);
        }();
        if (options.landmarksOnly) {
            tellLandmarks(told);
        } else {
            compare(offsetsOf(told));
        }
        tellRest();
        arrange(report);
        return std::move(report);
    }

private:
    void read()
    {
        progress.stage("Reading", 0.0, 0.3);
        landmarks.resize(paths.size());
        if (options.native) readNatively();
        std::atomic<std::size_t> done{0};
        runParallel(paths.size(), workers, [&](std::size_t index, std::size_t) {
            Recording& recording = recordings[index];
            if (!options.native) recording = decode(paths[index], options.decode);
            recording.name = std::filesystem::path(paths[index]).stem().string();
            recording.measure();
            if (recording.failure.empty())
                landmarks[index] = extractLandmarks(recording.samples, index);
            const std::size_t finished = ++done;
            progress.finishFile(paths[index],
                                static_cast<double>(finished) / static_cast<double>(paths.size()));
        });
    }

    // One after the other, since the reader writes to standard output.
    void readNatively()
    {
        const ConsoleRedirect redirect(
            [this](const std::string& line) { progress.printLine(line); });
        for (std::size_t i = 0; i < paths.size(); ++i) {
            NativeSound sound = readNative(paths[i]);
            recordings[i].path = paths[i];
            recordings[i].samples = std::move(sound.samples);
            recordings[i].failure = std::move(sound.failure);
        }
    }

    Member memberOf(std::size_t index) const
    {
        Member member;
        member.index = index;
        member.name = recordings[index].name;
        member.path = paths[index];
        member.durationSeconds = recordings[index].durationSeconds;
        member.notes = recordings[index].notes;
        return member;
    }

    void tellLandmarks(const std::vector<LandmarkGroup>& told)
    {
        for (const LandmarkGroup& group : told) {
            Group out;
            out.reference = group.members.front();
            for (std::size_t i = 0; i < group.members.size(); ++i) {
                Member member = memberOf(group.members[i]);
                member.offsetSeconds = group.starts[i];
                member.offsetUncertaintySeconds = landmarkError;
                out.members.push_back(member);
            }
            report.groups.push_back(out);
        }
    }

    void compare(const std::vector<LandmarkOffset>& offsets)
    {
        progress.stage("Comparing", 0.35, 0.9);
        prepared.resize(recordings.size());
        runParallel(recordings.size(), workers, [&](std::size_t index, std::size_t) {
            prepared[index] = prepare(recordings[index].samples, analysisRate);
            recordings[index].samples = std::vector<float>();
        });
        AssembleInput input;
        for (const Prepared& one : prepared)
            input.durations.push_back(one.seconds());
        input.findings = searchPairs(prepared, offsets, workers,
                                     [this](double share) { progress.update(share); });
        input.known = options.fixed;
        input.apart = options.apart;

        progress.stage("Deciding", 0.9, 0.92);
        AlignWorkspace work;
        const Examine examine = [&](std::size_t first, std::size_t second, double offset,
                                    double slope) {
            AlignRequest request;
            request.offset = offset;
            request.slope = slope;
            request.reach = impliedReach;
            request.slopeReach = impliedSlopeReach;
            request.mostWindows = impliedWindows;
            // That there is nothing is an answer as well.
            request.leastSignificance = 0.0;
            return align(prepared[first], prepared[second], request, work);
        };
        Assembly assembly = assemble(input, examine);

        progress.stage("Refining", 0.92, 1.0);
        refineLinks(assembly.links, recordings, workers,
                    [this](double share) { progress.update(share); });
        const std::vector<PlacedGroup> placed =
            placeGroups(assembly, recordings.size(), options.fixed, options.reference);
        tell(assembly, placed);
    }

    void tell(const Assembly& assembly, const std::vector<PlacedGroup>& placed)
    {
        std::vector<std::size_t> groupOf(recordings.size(), placed.size());
        for (std::size_t g = 0; g < placed.size(); ++g) {
            Group group;
            group.reference = placed[g].reference;
            for (std::size_t i = 0; i < placed[g].members.size(); ++i) {
                const Placement& place = placed[g].placements[i];
                Member member = memberOf(placed[g].members[i]);
                groupOf[member.index] = g;
                member.offsetSeconds = place.start;
                member.offsetUncertaintySeconds = place.startError;
                member.driftPpm = place.drift * 1e6;
                member.driftUncertaintyPpm = place.driftError * 1e6;
                group.members.push_back(member);
            }
            report.groups.push_back(group);
        }
        const std::vector<bool> told = worthTelling(assembly.links);
        for (std::size_t i = 0; i < assembly.links.size(); ++i) {
            const Link& link = assembly.links[i];
            if (!told[i]) continue;
            const std::size_t g = groupOf[link.first];
            const bool together = g < placed.size() && g == groupOf[link.second];
            if (link.verdict == Verdict::ambiguous) {
                for (const std::size_t index : {link.first, link.second})
                    repeats.push_back(index);
            }
            if (together)
                report.groups[g].links.push_back(linkOf(link));
            else
                report.refused.push_back(linkOf(link));
        }
    }

    // Of each pair the links that are used, or else the best of those that are not; a loop's many
    // other turns say nothing to anyone. Links of a pair stand together, the best first.
    static std::vector<bool> worthTelling(const std::vector<Link>& links)
    {
        std::vector<bool> told(links.size(), false);
        for (std::size_t begin = 0; begin < links.size();) {
            std::size_t end = begin;
            bool used = false;
            for (; end < links.size() && links[end].first == links[begin].first &&
                   links[end].second == links[begin].second;
                 ++end) {
                told[end] = links[end].used();
                used = used || told[end];
            }
            if (!used) told[begin] = true;
            begin = end;
        }
        return told;
    }

    ReportedLink linkOf(const Link& link) const
    {
        const Alignment& line = link.found.line;
        ReportedLink out;
        out.first = link.first;
        out.second = link.second;
        out.firstName = recordings[link.first].name;
        out.secondName = recordings[link.second].name;
        out.method = link.found.method == Method::landmarks ? "landmarks" : "correlation";
        out.offsetSeconds = line.offset;
        out.offsetAtStartSeconds = line.offsetAt(line.start);
        out.offsetAtEndSeconds = line.offsetAt(line.end);
        out.uncertaintySeconds = line.offsetError;
        // The slope is the drift of the second less that of the first, in the sense of Member.
        out.driftPpm = line.slope * 1e6;
        out.driftUncertaintyPpm = line.slopeError * 1e6;
        out.overlapSeconds = line.overlap();
        out.peakRatio = line.significance;
        out.coherence = line.coherence;
        out.agreement = line.agreement;
        out.secondBest = link.rival;
        out.inverted = line.sign < 0.0;
        for (const OffsetJump& jump : link.found.jumps)
            out.jumps.push_back({jump.at, jump.size});
        out.verdict = nameOf(link.verdict);
        out.reason = reasonOf(link.verdict);
        return out;
    }

    void tellRest()
    {
        std::vector<bool> placed(recordings.size(), false);
        for (const Group& group : report.groups) {
            for (const Member& member : group.members)
                placed[member.index] = true;
        }
        for (std::size_t i = 0; i < recordings.size(); ++i) {
            if (placed[i]) continue;
            if (!recordings[i].failure.empty()) {
                report.failed.push_back(
                    {paths[i], options.native ? recordings[i].failure
                                              : "could not be read: " + recordings[i].failure});
                continue;
            }
            report.alone.push_back(
                {i, recordings[i].name, paths[i], recordings[i].durationSeconds, reasonFor(i)});
        }
    }

    std::string reasonFor(std::size_t index) const
    {
        const Recording& recording = recordings[index];
        if (recording.durationSeconds < shortestOverlap) return "too short";
        if (recording.meanSquare < silence) return "silent";
        if (std::find(repeats.begin(), repeats.end(), index) != repeats.end())
            return "no certain place: the sound repeats, and more than one offset fits";
        return "no sound in common with any other";
    }

    const std::vector<std::string>& paths;
    const JobOptions& options;
    Progress& progress;
    std::size_t workers;
    std::vector<Recording> recordings;
    std::vector<Prepared> prepared;
    std::vector<Landmarks> landmarks;
    std::vector<std::size_t> repeats;
    Report report;
};

} // namespace

Report runJob(const std::vector<std::string>& paths, const JobOptions& options, Progress& progress)
{
    return Job(paths, options, progress).run();
}

} // namespace vxlsync
