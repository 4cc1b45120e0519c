#include "tell/Report.h"

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <string>
#include <tuple>

#include "model/Alignment.h"
#include "tell/MeasuredLinks.h"

namespace vxlsync
{

namespace
{

// Mean square below which nothing but the last bit of a converter is heard.
constexpr double silentMeanSquare = 1e-9;
// What the landmarks resolve: one frame of 256 samples at 8000 Hz.
constexpr double landmarkErrorSeconds = 0.032;
constexpr double millionths = 1e6;

// What the file says of itself.
void addFileFacts(const FileFacts& file, SourceFacts& facts)
{
    if (file.created) facts.creationTime = textOf(*file.created);
    facts.timecode = file.timecode;
    facts.timeReferenceSeconds = file.timeReference;
    facts.frameRate = file.frameRate;
    facts.pictureStartSeconds = file.pictureStart;
    facts.fileSeconds = file.fileSeconds;
    facts.stream = file.stream;
    facts.channel = file.channel;
}

SourceFacts factsOf(const Source& source, const Recording& recording, const Origin& origin)
{
    SourceFacts facts;
    facts.name = source.name;
    if (facts.name.empty()) facts.name = std::filesystem::path(source.path).stem().string();
    facts.path = source.path;
    facts.device = origin.device;
    facts.deviceKnownBy = origin.knownBy;
    facts.clockStartSeconds = origin.clockStart;
    addFileFacts(recording.facts, facts);
    facts.durationSeconds = recording.durationSeconds;
    facts.notes = recording.notes;
    return facts;
}

// A result that knows the sources and nothing else yet.
Result startedResult(const ReportInput& input)
{
    Result result;
    result.sources.resize(input.sources.size());
    for (std::size_t position = 0; position < input.sources.size(); ++position)
        result.sources[input.sourceAt[position]] =
            factsOf(input.sources[position], input.recordings[position], input.origins[position]);
    return result;
}

Member memberOf(std::size_t source, const Placement& place, const Certainty& certainty)
{
    Member member;
    member.source = source;
    member.offsetSeconds = place.start;
    member.offsetUncertaintySeconds = place.startError;
    member.driftPpm = place.drift * millionths;
    member.driftUncertaintyPpm = place.driftError * millionths;
    member.confidence = certainty.confidence;
    member.margin = certainty.margin;
    return member;
}

Group groupOf(const PlacedGroup& placed, const std::vector<std::size_t>& sourceAt)
{
    Group group;
    group.reference = sourceAt[placed.reference];
    for (std::size_t i = 0; i < placed.members.size(); ++i)
        group.members.push_back(
            memberOf(sourceAt[placed.members[i]], placed.placements[i], placed.certainties[i]));
    return group;
}

PlacedGroup placedByLandmarks(const LandmarkGroup& group)
{
    PlacedGroup placed;
    placed.members = group.members;
    placed.reference = group.members.front();
    for (const double start : group.starts)
        placed.placements.push_back({start, 0.0, landmarkErrorSeconds, 0.0});
    // Landmarks tell one place and nothing of others.
    placed.certainties.assign(placed.members.size(), {Confidence::likely, 0.0, 0.0});
    return placed;
}

std::size_t firstSource(const Group& group)
{
    std::size_t first = group.members.front().source;
    for (const Member& member : group.members)
        first = std::min(first, member.source);
    return first;
}

// Members by offset, groups by the first of their sources.
void arrange(std::vector<Group>& groups)
{
    for (Group& group : groups) {
        std::sort(group.members.begin(), group.members.end(),
                  [](const Member& left, const Member& right) {
                      return std::tie(left.offsetSeconds, left.source) <
                             std::tie(right.offsetSeconds, right.source);
                  });
    }
    std::sort(groups.begin(), groups.end(), [](const Group& left, const Group& right) {
        return firstSource(left) < firstSource(right);
    });
}

// By source: the index of its group, or the number of groups if it has none.
std::vector<std::size_t> groupsOfSources(const Result& result)
{
    std::vector<std::size_t> groups(result.sources.size(), result.groups.size());
    for (std::size_t g = 0; g < result.groups.size(); ++g) {
        for (const Member& member : result.groups[g].members)
            groups[member.source] = g;
    }
    return groups;
}

// Hands each link to the group that it lies in, or to those that were refused. Requires groups in
// their final order.
void addLinks(Result& result, const Links& links, const std::vector<std::size_t>& sourceAt)
{
    std::vector<MeasuredLink> measured;
    for (const Link& link : links)
        measured.push_back(measuredLinkOf(link, sourceAt));
    std::stable_sort(
        measured.begin(), measured.end(), [](const MeasuredLink& left, const MeasuredLink& right) {
            return std::tie(left.first, left.second) < std::tie(right.first, right.second);
        });
    const std::vector<std::size_t> groups = groupsOfSources(result);
    for (const MeasuredLink& link : measured) {
        if (!isFinite(link)) continue;
        const std::size_t group = groups[link.first];
        if (group < result.groups.size() && group == groups[link.second])
            result.groups[group].links.push_back(link);
        else
            result.refusedLinks.push_back(link);
    }
}

bool hasLink(const Links& links, std::size_t position, Verdict verdict, bool isDeviceClash)
{
    return std::any_of(links.begin(), links.end(), [&](const Link& link) {
        return (link.first == position || link.second == position) && link.verdict == verdict &&
               link.isDeviceClash == isDeviceClash;
    });
}

// Null if the recording has no such link.
const Link* linkInDoubt(const Links& links, std::size_t position, Doubt doubt)
{
    const auto found = std::find_if(links.begin(), links.end(), [&](const Link& link) {
        return (link.first == position || link.second == position) &&
               link.verdict == Verdict::ambiguous && link.doubt == doubt;
    });
    return found == links.end() ? nullptr : &*found;
}

// "12.34 s": how long, without a sign. Requires at least one decimal.
std::string secondsText(double seconds, int decimals)
{
    long long unit = 1;
    for (int i = 0; i < decimals; ++i)
        unit *= 10;
    const long long units = std::llround(std::fabs(seconds) * static_cast<double>(unit));
    return std::to_string(units / unit) + "." + std::to_string(unit + units % unit).substr(1) +
           " s";
}

// "12.34 s after the start of camera", or before.
std::string phraseOf(const CandidatePlace& candidate, const std::vector<SourceFacts>& sources)
{
    return secondsText(candidate.offsetSeconds, 2) +
           (candidate.offsetSeconds < 0.0 ? " before" : " after") + " the start of " +
           sources[candidate.with].name;
}

// Sound is right to some hundredths of a millisecond; what the user gives is not.
std::string noteOf(const Disagreement& disagreement, const std::vector<SourceFacts>& sources,
                   const std::vector<std::size_t>& sourceAt)
{
    return "by the sound that it shares with " + sources[sourceAt[disagreement.with]].name +
           " it started " + secondsText(disagreement.laterSeconds, 3) +
           (disagreement.laterSeconds < 0.0 ? " earlier" : " later") + " than was given";
}

// The best two places, of any number.
std::string reasonForDoubt(const std::vector<CandidatePlace>& candidates,
                           const std::vector<SourceFacts>& sources)
{
    if (candidates.size() < 2)
        return "no certain place: the sound repeats, and more than one offset fits";
    return "no certain place: fits " + phraseOf(candidates[0], sources) + " and " +
           phraseOf(candidates[1], sources);
}

// A click in two rooms, or one word in an hour of silence.
std::string reasonForSilence(const Link& link, const std::string& other)
{
    return "no certain place: " + secondsText(link.line.heardSeconds, 1) + " of " +
           secondsText(link.line.overlap(), 1) + " alike with " + other +
           ", the rest too quiet to tell";
}

// What a place is asked by that a recording does not have.
struct NoPlace {
    const ReportInput& input;
    const Links& links;
    std::size_t position = 0;
    const std::vector<CandidatePlace>& candidates;
};

bool isTooShort(const Recording& recording)
{
    return recording.durationSeconds < shortestOverlapSeconds;
}

bool isSilent(const Recording& recording)
{
    return recording.meanSquare < silentMeanSquare;
}

// What the user calls one device is not compared with itself.
bool areOneByRule(const Origin& first, const Origin& second)
{
    return first.knownBy == DeviceEvidence::stated && second.knownBy == DeviceEvidence::stated &&
           first.device == second.device;
}

bool isComparedWithAny(const ReportInput& input, std::size_t position)
{
    for (std::size_t other = 0; other < input.recordings.size(); ++other) {
        const Recording& recording = input.recordings[other];
        const bool canBeCompared =
            recording.failure.empty() && !isTooShort(recording) && !isSilent(recording);
        if (other != position && canBeCompared &&
            !areOneByRule(input.origins[position], input.origins[other]))
            return true;
    }
    return false;
}

// Why a recording that could be read has no place. What would be known but for the user or the
// device says more than what the sound leaves open.
std::string reasonOf(const NoPlace& missing, const std::vector<SourceFacts>& sources)
{
    const Links& links = missing.links;
    const std::size_t position = missing.position;
    if (isTooShort(missing.input.recordings[position])) return "too short";
    if (isSilent(missing.input.recordings[position])) return "silent";
    if (hasLink(links, position, Verdict::forbidden, false))
        return "kept apart by the user from what it has in common with others";
    if (hasLink(links, position, Verdict::forbidden, true))
        return "its sound has a place only where its device would be in two places at once";
    if (linkInDoubt(links, position, Doubt::oneDevice))
        return "no certain place: the sound repeats, and the clock is that of another recording: "
               "perhaps one device at two times";
    if (linkInDoubt(links, position, Doubt::none))
        return reasonForDoubt(missing.candidates, sources);
    if (const Link* link = linkInDoubt(links, position, Doubt::littleHeard)) {
        const std::size_t other = link->first == position ? link->second : link->first;
        return reasonForSilence(*link, sources[missing.input.sourceAt[other]].name);
    }
    if (!missing.candidates.empty())
        return "no certain place: perhaps " + phraseOf(missing.candidates.front(), sources) +
               ", but too little speaks for it";
    if (!isComparedWithAny(missing.input, position)) return "nothing to compare it with";
    return "no sound in common with any other";
}

// By position: the places that recordings in no group may have.
std::vector<std::vector<CandidatePlace>> candidatesOf(const std::vector<Doubtful>& doubtful,
                                                      const std::vector<std::size_t>& sourceAt)
{
    std::vector<std::vector<CandidatePlace>> candidates(sourceAt.size());
    for (const Doubtful& one : doubtful) {
        for (const DoubtfulPlace& place : one.candidates)
            candidates[one.recording].push_back(
                {sourceAt[place.with], place.start, place.evidence});
    }
    return candidates;
}

// Tells of the sources that are in no group.
void addLeftOut(Result& result, const ReportInput& input, const Links& links,
                const std::vector<Doubtful>& doubtful)
{
    const std::vector<std::size_t> groups = groupsOfSources(result);
    const std::vector<std::vector<CandidatePlace>> candidates =
        candidatesOf(doubtful, input.sourceAt);
    for (std::size_t position = 0; position < input.sourceAt.size(); ++position) {
        const std::size_t source = input.sourceAt[position];
        const Recording& recording = input.recordings[position];
        if (groups[source] < result.groups.size()) continue;
        if (!recording.failure.empty()) {
            result.failed.push_back({source, recording.failure});
            continue;
        }
        const NoPlace missing{input, links, position, candidates[position]};
        result.alone.push_back({source, reasonOf(missing, result.sources), candidates[position]});
    }
    for (std::vector<LeftOut>* list : {&result.alone, &result.failed}) {
        std::sort(list->begin(), list->end(), [](const LeftOut& left, const LeftOut& right) {
            return left.source < right.source;
        });
    }
}

} // namespace

Result reportDecision(const ReportInput& input, const Decision& decision)
{
    Result result = startedResult(input);
    for (const PlacedGroup& placed : decision.groups)
        result.groups.push_back(groupOf(placed, input.sourceAt));
    arrange(result.groups);
    for (const Disagreement& disagreement : decision.disagreements)
        result.sources[input.sourceAt[disagreement.recording]].notes.push_back(
            noteOf(disagreement, result.sources, input.sourceAt));
    const Links links = linksWorthTelling(decision.links);
    addLinks(result, links, input.sourceAt);
    addLeftOut(result, input, links, decision.doubtful);
    return result;
}

Result reportLandmarks(const ReportInput& input, const std::vector<LandmarkGroup>& groups)
{
    Decision decision;
    for (const LandmarkGroup& group : groups)
        decision.groups.push_back(placedByLandmarks(group));
    return reportDecision(input, decision);
}

} // namespace vxlsync
