#include "vxl_sync/Result.h"

#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <utility>

#include "tell/Utf8.h"

namespace vxlsync
{

namespace
{

using Json = nlohmann::ordered_json;

// A name or path: `key`, and where it had to be escaped, `key`IsEscaped behind it.
void addText(Json& object, const std::string& key, const std::string& bytes)
{
    Utf8Text text = utf8Of(bytes);
    object[key] = std::move(text.text);
    if (text.isEscaped) object[key + "IsEscaped"] = true;
}

// Null where nothing is known.
void addKnown(Json& object, const std::string& key, const std::string& text)
{
    if (text.empty())
        object[key] = nullptr;
    else
        addText(object, key, text);
}

void addKnown(Json& object, const char* key, const std::optional<double>& number)
{
    object[key] = number ? Json(*number) : Json();
}

Json frameRateJson(const std::optional<FrameRate>& rate)
{
    if (!rate) return nullptr;
    Json object = Json::object();
    object["numerator"] = rate->numerator;
    object["denominator"] = rate->denominator;
    return object;
}

Json channelJson(const SourceFacts& facts)
{
    if (facts.stream == 0) return nullptr;
    return facts.channel == 0 ? Json("mix") : Json(facts.channel);
}

Json sourceJson(const SourceFacts& facts)
{
    Json object = Json::object();
    addText(object, "name", facts.name);
    addText(object, "path", facts.path);
    addKnown(object, "device", facts.device);
    object["deviceKnownBy"] = nameOf(facts.deviceKnownBy);
    addKnown(object, "clockStartSeconds", facts.clockStartSeconds);
    addKnown(object, "creationTime", facts.creationTime);
    addKnown(object, "timecode", facts.timecode);
    addKnown(object, "timeReferenceSeconds", facts.timeReferenceSeconds);
    object["frameRate"] = frameRateJson(facts.frameRate);
    addKnown(object, "pictureStartSeconds", facts.pictureStartSeconds);
    addKnown(object, "fileSeconds", facts.fileSeconds);
    object["stream"] = facts.stream == 0 ? Json() : Json(facts.stream);
    object["channel"] = channelJson(facts);
    object["durationSeconds"] = facts.durationSeconds;
    object["notes"] = facts.notes;
    return object;
}

Json jumpsJson(const std::vector<Jump>& jumps)
{
    Json list = Json::array();
    for (const Jump& jump : jumps) {
        Json object = Json::object();
        object["atSeconds"] = jump.atSeconds;
        object["sizeSeconds"] = jump.sizeSeconds;
        list.push_back(std::move(object));
    }
    return list;
}

Json linkJson(const MeasuredLink& link, const std::vector<SourceFacts>& sources)
{
    Json object = Json::object();
    addText(object, "first", sources[link.first].name);
    addText(object, "second", sources[link.second].name);
    object["firstSource"] = link.first;
    object["secondSource"] = link.second;
    addText(object, "firstPath", sources[link.first].path);
    addText(object, "secondPath", sources[link.second].path);
    object["method"] = nameOf(link.method);
    object["offsetSeconds"] = link.offsetSeconds;
    object["offsetAtStartSeconds"] = link.offsetAtStartSeconds;
    object["offsetAtEndSeconds"] = link.offsetAtEndSeconds;
    object["uncertaintySeconds"] = link.uncertaintySeconds;
    object["driftPpm"] = link.driftPpm;
    object["driftUncertaintyPpm"] = link.driftUncertaintyPpm;
    object["overlapSeconds"] = link.overlapSeconds;
    object["peakRatio"] = link.peakRatio;
    object["coherence"] = link.coherence;
    object["agreement"] = link.agreement;
    object["secondBest"] = link.secondBest;
    object["inverted"] = link.inverted;
    object["jumps"] = jumpsJson(link.jumps);
    object["verdict"] = nameOf(link.verdict);
    object["reason"] = link.reason;
    return object;
}

Json linksJson(const std::vector<MeasuredLink>& links, const std::vector<SourceFacts>& sources)
{
    Json list = Json::array();
    for (const MeasuredLink& link : links)
        list.push_back(linkJson(link, sources));
    return list;
}

Json memberJson(const Member& member, const SourceFacts& facts)
{
    constexpr double millionth = 1e-6;
    Json object = Json::object();
    object["source"] = member.source;
    addText(object, "name", facts.name);
    addText(object, "path", facts.path);
    object["offsetSeconds"] = member.offsetSeconds;
    object["offsetUncertaintySeconds"] = member.offsetUncertaintySeconds;
    object["driftPpm"] = member.driftPpm;
    object["driftUncertaintyPpm"] = member.driftUncertaintyPpm;
    object["confidence"] = nameOf(member.confidence);
    object["margin"] = member.margin;
    object["durationSeconds"] = facts.durationSeconds;
    object["endSeconds"] =
        member.offsetSeconds + facts.durationSeconds * (1.0 + member.driftPpm * millionth);
    object["notes"] = facts.notes;
    return object;
}

Json groupJson(const Group& group, const std::vector<SourceFacts>& sources)
{
    Json members = Json::array();
    for (const Member& member : group.members)
        members.push_back(memberJson(member, sources[member.source]));
    Json object = Json::object();
    const SourceFacts& reference = sources[group.reference];
    // Samples of a host have no path.
    addText(object, "reference", reference.path.empty() ? reference.name : reference.path);
    object["referenceSource"] = group.reference;
    object["members"] = std::move(members);
    object["links"] = linksJson(group.links, sources);
    return object;
}

Json candidateJson(const CandidatePlace& candidate, const std::vector<SourceFacts>& sources)
{
    Json object = Json::object();
    const SourceFacts& facts = sources[candidate.with];
    addText(object, "with", facts.path.empty() ? facts.name : facts.path);
    object["withSource"] = candidate.with;
    object["offsetSeconds"] = candidate.offsetSeconds;
    object["evidenceSeconds"] = candidate.evidenceSeconds;
    return object;
}

Json aloneJson(const LeftOut& alone, const std::vector<SourceFacts>& sources)
{
    const SourceFacts& facts = sources[alone.source];
    Json candidates = Json::array();
    for (const CandidatePlace& candidate : alone.candidates)
        candidates.push_back(candidateJson(candidate, sources));
    Json object = Json::object();
    object["source"] = alone.source;
    addText(object, "name", facts.name);
    addText(object, "path", facts.path);
    object["durationSeconds"] = facts.durationSeconds;
    object["notes"] = facts.notes;
    object["reason"] = alone.reason;
    object["candidates"] = std::move(candidates);
    return object;
}

Json failedJson(const LeftOut& failed, const SourceFacts& facts)
{
    Json object = Json::object();
    object["source"] = failed.source;
    addText(object, "name", facts.name);
    addText(object, "path", facts.path);
    object["reason"] = failed.reason;
    return object;
}

} // namespace

std::string toJson(const Result& result)
{
    Json sources = Json::array();
    for (const SourceFacts& facts : result.sources)
        sources.push_back(sourceJson(facts));
    Json groups = Json::array();
    for (const Group& group : result.groups)
        groups.push_back(groupJson(group, result.sources));
    Json alone = Json::array();
    for (const LeftOut& leftOut : result.alone)
        alone.push_back(aloneJson(leftOut, result.sources));
    Json failed = Json::array();
    for (const LeftOut& leftOut : result.failed)
        failed.push_back(failedJson(leftOut, result.sources[leftOut.source]));

    Json document = Json::object();
    document["version"] = 3;
    document["sources"] = std::move(sources);
    document["groups"] = std::move(groups);
    document["alone"] = std::move(alone);
    document["refusedLinks"] = linksJson(result.refusedLinks, result.sources);
    document["failed"] = std::move(failed);
    constexpr int indent = 2;
    return document.dump(indent, ' ', false, Json::error_handler_t::replace) + '\n';
}

} // namespace vxlsync
