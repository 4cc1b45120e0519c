#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "vxl_sync/Result.h"

namespace
{

using nlohmann::json;
using testing::ElementsAre;
using vxlsync::Group;
using vxlsync::MeasuredLink;
using vxlsync::Member;
using vxlsync::Method;
using vxlsync::Result;
using vxlsync::SourceFacts;
using vxlsync::toJson;
using vxlsync::Verdict;

SourceFacts factsOf(const std::string& name, const std::string& path)
{
    SourceFacts facts;
    facts.name = name;
    facts.path = path;
    facts.durationSeconds = 20.0;
    return facts;
}

MeasuredLink linkOf(std::size_t first, std::size_t second)
{
    MeasuredLink link;
    link.first = first;
    link.second = second;
    link.method = Method::landmarks;
    link.offsetSeconds = 1.25;
    link.offsetAtStartSeconds = 1.5;
    link.offsetAtEndSeconds = 1.0;
    link.uncertaintySeconds = 0.0625;
    link.driftPpm = -20.5;
    link.driftUncertaintyPpm = 0.25;
    link.overlapSeconds = 18.75;
    link.peakRatio = 60.0;
    link.coherence = 0.5;
    link.agreement = 0.75;
    link.secondBest = 0.125;
    link.inverted = true;
    link.jumps = {{10.0, 0.5}};
    link.verdict = Verdict::accepted;
    link.reason = "clear by itself";
    return link;
}

// A group of the sources 0 and 1, 2 alone with a refused link, and 3 failed.
Result everything()
{
    Result result;
    result.sources = {factsOf("first", "dir/first.wav"), factsOf("b", "a, \"b\".mp3"),
                      factsOf("alone", "alone.ogg"), factsOf("gone", "gone.wav")};
    result.sources[1].notes = {"ends early"};
    result.sources[2].notes = {"is odd"};
    Group group;
    group.reference = 1;
    Member first;
    first.source = 0;
    Member second;
    second.source = 1;
    second.offsetSeconds = 1.25;
    second.offsetUncertaintySeconds = 0.0625;
    second.driftPpm = -20.5;
    second.driftUncertaintyPpm = 0.25;
    second.confidence = vxlsync::Confidence::likely;
    second.margin = 0.5;
    group.members = {first, second};
    group.links = {linkOf(0, 1)};
    result.groups = {group};
    result.alone = {{2, "no certain place", {{1, 12.5, 3.25}}}};
    result.refusedLinks = {linkOf(1, 2)};
    result.failed = {{3, "does not exist"}};
    return result;
}

std::vector<std::string> keysOf(const nlohmann::ordered_json& object)
{
    std::vector<std::string> keys;
    for (const auto& item : object.items())
        keys.push_back(item.key());
    return keys;
}

TEST(Json, TellsMembersWithTheFactsOfTheirSources)
{
    const json member = json::parse(toJson(everything())).at("groups").at(0).at("members").at(1);

    EXPECT_EQ(member, json({{"source", 1},
                            {"name", "b"},
                            {"path", "a, \"b\".mp3"},
                            {"offsetSeconds", 1.25},
                            {"offsetUncertaintySeconds", 0.0625},
                            {"driftPpm", -20.5},
                            {"driftUncertaintyPpm", 0.25},
                            {"confidence", "likely"},
                            {"margin", 0.5},
                            {"durationSeconds", 20.0},
                            {"endSeconds", 1.25 + 20.0 * (1.0 - 20.5 * 1e-6)},
                            {"notes", {"ends early"}}}));
}

TEST(Json, TellsWhatIsKnownOfASource)
{
    Result result = everything();
    SourceFacts& facts = result.sources[1];
    facts.device = "camera a";
    facts.deviceKnownBy = vxlsync::DeviceEvidence::originator;
    facts.clockStartSeconds = 36037.5;
    facts.creationTime = "2026-06-01T10:00:37";
    facts.timecode = "10:00:37:12";
    facts.timeReferenceSeconds = 36037.25;
    facts.frameRate = vxlsync::FrameRate{30000, 1001};
    facts.pictureStartSeconds = 0.125;
    facts.fileSeconds = 20.5;
    facts.stream = 2;
    facts.channel = 1;

    EXPECT_EQ(json::parse(toJson(result)).at("sources").at(1),
              json({{"name", "b"},
                    {"path", "a, \"b\".mp3"},
                    {"device", "camera a"},
                    {"deviceKnownBy", "originator"},
                    {"clockStartSeconds", 36037.5},
                    {"creationTime", "2026-06-01T10:00:37"},
                    {"timecode", "10:00:37:12"},
                    {"timeReferenceSeconds", 36037.25},
                    {"frameRate", {{"numerator", 30000}, {"denominator", 1001}}},
                    {"pictureStartSeconds", 0.125},
                    {"fileSeconds", 20.5},
                    {"stream", 2},
                    {"channel", 1},
                    {"durationSeconds", 20.0},
                    {"notes", {"ends early"}}}));
}

TEST(Json, TellsWhatIsNotKnownAsNull)
{
    const json source = json::parse(toJson(everything())).at("sources").at(0);

    for (const char* key :
         {"device", "clockStartSeconds", "creationTime", "timecode", "timeReferenceSeconds",
          "frameRate", "pictureStartSeconds", "fileSeconds", "stream", "channel"})
        EXPECT_TRUE(source.at(key).is_null()) << key;
    EXPECT_EQ(source.at("deviceKnownBy"), "none");
}

TEST(Json, TellsTheMeanOfAllChannels)
{
    Result result = everything();
    result.sources[0].stream = 1;

    EXPECT_EQ(json::parse(toJson(result)).at("sources").at(0).at("channel"), "mix");
}

TEST(Json, EscapesDevicesThatAreNotUtf8AndSaysSo)
{
    Result result = everything();
    result.sources[0].device = "\xFF";

    const json source = json::parse(toJson(result)).at("sources").at(0);
    EXPECT_EQ(source.at("device"), "\\xff");
    EXPECT_EQ(source.at("deviceIsEscaped"), true);
}

TEST(Json, TellsLinksByTheNamesOfTheirSources)
{
    const json link = json::parse(toJson(everything())).at("groups").at(0).at("links").at(0);

    EXPECT_EQ(link, json({{"first", "first"},
                          {"second", "b"},
                          {"firstSource", 0},
                          {"secondSource", 1},
                          {"firstPath", "dir/first.wav"},
                          {"secondPath", "a, \"b\".mp3"},
                          {"method", "landmarks"},
                          {"offsetSeconds", 1.25},
                          {"offsetAtStartSeconds", 1.5},
                          {"offsetAtEndSeconds", 1.0},
                          {"uncertaintySeconds", 0.0625},
                          {"driftPpm", -20.5},
                          {"driftUncertaintyPpm", 0.25},
                          {"overlapSeconds", 18.75},
                          {"peakRatio", 60.0},
                          {"coherence", 0.5},
                          {"agreement", 0.75},
                          {"secondBest", 0.125},
                          {"inverted", true},
                          {"jumps", {{{"atSeconds", 10.0}, {"sizeSeconds", 0.5}}}},
                          {"verdict", "accepted"},
                          {"reason", "clear by itself"}}));
}

TEST(Json, TellsTheRestBySource)
{
    const json result = json::parse(toJson(everything()));

    EXPECT_EQ(result.at("version"), 3);
    EXPECT_EQ(result.at("groups").at(0).at("reference"), "a, \"b\".mp3");
    EXPECT_EQ(result.at("groups").at(0).at("referenceSource"), 1);
    EXPECT_EQ(result.at("alone").at(0), json({{"source", 2},
                                              {"name", "alone"},
                                              {"path", "alone.ogg"},
                                              {"durationSeconds", 20.0},
                                              {"notes", {"is odd"}},
                                              {"reason", "no certain place"},
                                              {"candidates",
                                               {{{"with", "a, \"b\".mp3"},
                                                 {"withSource", 1},
                                                 {"offsetSeconds", 12.5},
                                                 {"evidenceSeconds", 3.25}}}}}));
    EXPECT_EQ(result.at("refusedLinks").at(0).at("second"), "alone");
    EXPECT_EQ(
        result.at("failed").at(0),
        json(
            {{"source", 3}, {"name", "gone"}, {"path", "gone.wav"}, {"reason", "does not exist"}}));
}

TEST(Json, TellsSamplesOfAHostByTheirNames)
{
    Result result = everything();
    for (SourceFacts& facts : result.sources)
        facts.path.clear();

    const json object = json::parse(toJson(result));

    EXPECT_EQ(object.at("groups").at(0).at("reference"), "b");
    EXPECT_EQ(object.at("failed").at(0),
              json({{"source", 3}, {"name", "gone"}, {"path", ""}, {"reason", "does not exist"}}));
}

TEST(Json, KeepsItsFieldsInOrder)
{
    const auto result = nlohmann::ordered_json::parse(toJson(everything()));

    EXPECT_THAT(keysOf(result),
                ElementsAre("version", "sources", "groups", "alone", "refusedLinks", "failed"));
    EXPECT_THAT(keysOf(result.at("groups").at(0)),
                ElementsAre("reference", "referenceSource", "members", "links"));
    EXPECT_THAT(keysOf(result.at("refusedLinks").at(0)),
                ElementsAre("first", "second", "firstSource", "secondSource", "firstPath",
                            "secondPath", "method", "offsetSeconds", "offsetAtStartSeconds",
                            "offsetAtEndSeconds", "uncertaintySeconds", "driftPpm",
                            "driftUncertaintyPpm", "overlapSeconds", "peakRatio", "coherence",
                            "agreement", "secondBest", "inverted", "jumps", "verdict", "reason"));
}

TEST(Json, IsOneObjectThatEndsInANewline)
{
    EXPECT_EQ(toJson(Result()), "{\n"
                                "  \"version\": 3,\n"
                                "  \"sources\": [],\n"
                                "  \"groups\": [],\n"
                                "  \"alone\": [],\n"
                                "  \"refusedLinks\": [],\n"
                                "  \"failed\": []\n"
                                "}\n");
}

TEST(Json, EscapesPathsThatAreNotUtf8AndSaysSo)
{
    Result result = everything();
    for (SourceFacts& facts : result.sources)
        facts.path = "od\\d\xFF";

    const json told = json::parse(toJson(result));

    const json& group = told.at("groups").at(0);
    EXPECT_EQ(group.at("reference"), "od\\\\d\\xff");
    EXPECT_EQ(group.at("referenceIsEscaped"), true);
    EXPECT_EQ(group.at("links").at(0).at("firstPath"), "od\\\\d\\xff");
    EXPECT_EQ(group.at("links").at(0).at("firstPathIsEscaped"), true);
    EXPECT_EQ(group.at("links").at(0).at("secondPathIsEscaped"), true);
    for (const json& object :
         {group.at("members").at(0), told.at("alone").at(0), told.at("failed").at(0)}) {
        EXPECT_EQ(object.at("path"), "od\\\\d\\xff");
        EXPECT_EQ(object.at("pathIsEscaped"), true);
        EXPECT_FALSE(object.contains("nameIsEscaped"));
    }
}

TEST(Json, EscapesNamesThatAreNotUtf8AndSaysSo)
{
    Result result = everything();
    for (SourceFacts& facts : result.sources)
        facts.name = "\xFF";

    const json told = json::parse(toJson(result));

    const json& group = told.at("groups").at(0);
    EXPECT_FALSE(group.contains("referenceIsEscaped"));
    for (const json& object :
         {group.at("members").at(0), told.at("alone").at(0), told.at("failed").at(0)}) {
        EXPECT_EQ(object.at("name"), "\\xff");
        EXPECT_EQ(object.at("nameIsEscaped"), true);
        EXPECT_FALSE(object.contains("pathIsEscaped"));
    }
    const json& link = group.at("links").at(0);
    EXPECT_EQ(link.at("first"), "\\xff");
    EXPECT_EQ(link.at("firstIsEscaped"), true);
    EXPECT_EQ(link.at("second"), "\\xff");
    EXPECT_EQ(link.at("secondIsEscaped"), true);
}

TEST(Json, KeepsPathsApartThatDifferInBytesOfNoCharacter)
{
    Result result;
    result.sources = {factsOf("a", "take\xFE.wav"), factsOf("b", "take\xFF.wav"),
                      factsOf("c", "take\\xff.wav")};
    result.failed = {{0, "x"}, {1, "x"}, {2, "x"}};

    const json failed = json::parse(toJson(result)).at("failed");

    EXPECT_EQ(failed.at(0).at("path"), "take\\xfe.wav");
    EXPECT_EQ(failed.at(1).at("path"), "take\\xff.wav");
    EXPECT_EQ(failed.at(1).at("pathIsEscaped"), true);
    EXPECT_EQ(failed.at(2).at("path"), "take\\xff.wav");
    EXPECT_FALSE(failed.at(2).contains("pathIsEscaped"));
}

TEST(Json, SurvivesSentencesThatAreNotUtf8)
{
    Result result = everything();
    result.alone[0].reason = "x\xFF";

    EXPECT_EQ(json::parse(toJson(result)).at("alone").at(0).at("reason"), "x\xEF\xBF\xBD");
}

} // namespace
