#include "Output.h"

#include <sstream>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

namespace
{

using nlohmann::json;
using testing::HasSubstr;
using vxlsync::Report;

// A group of two, one alone, one refused link and one failure.
Report everything()
{
    Report report;
    vxlsync::Group group;
    group.reference = 0;
    vxlsync::Member first;
    first.index = 0;
    first.name = "first";
    first.path = "dir/first.wav";
    first.durationSeconds = 20.0;
    vxlsync::Member second = first;
    second.index = 1;
    second.name = "b";
    second.path = "a, \"b\".mp3";
    second.offsetSeconds = 1.25;
    second.offsetUncertaintySeconds = 0.0001;
    second.driftPpm = -20.5;
    second.driftUncertaintyPpm = 0.25;
    second.notes = {"eight-bit samples are signed"};
    group.members = {first, second};
    vxlsync::ReportedLink link;
    link.firstName = "first";
    link.secondName = "b";
    link.method = "landmarks";
    link.offsetSeconds = 1.25;
    link.verdict = "accepted";
    link.jumps = {{10.0, 0.5}};
    group.links = {link};
    report.groups = {group};
    report.alone = {{2, "alone", "alone.ogg", 5.0, "silent"}};
    link.verdict = "weak";
    report.refused = {link};
    report.failed = {{"gone.wav", "could not be read: does not exist"}};
    return report;
}

std::string textOf(const Report& report)
{
    std::ostringstream out;
    vxlsync::writeText(report, out);
    return out.str();
}

json jsonOf(const Report& report)
{
    std::ostringstream out;
    vxlsync::writeJson(report, out);
    return json::parse(out.str());
}

TEST(Output, TellsPeopleEverythingOnALineOfItsOwn)
{
    EXPECT_EQ(textOf(everything()),
              "Group 1: 2 recordings\n"
              "        0.0000 s  +- 0.0000 s       reference  first  dir/first.wav\n"
              "        1.2500 s  +- 0.0001 s      -20.50 ppm  b      a, \"b\".mp3\n"
              "                    eight-bit samples are signed\n"
              "\n"
              "Alone: 1 recording\n"
              "  alone  alone.ogg: silent\n"
              "\n"
              "Failed: 1 file\n"
              "  gone.wav: could not be read: does not exist\n");
}

TEST(Output, SaysThatNothingMatched)
{
    EXPECT_EQ(textOf(Report()), "Nothing matched.\n");
}

TEST(Output, TellsProgramsAboutMembers)
{
    const json member = jsonOf(everything()).at("groups").at(0).at("members").at(1);

    EXPECT_EQ(member, json({{"name", "b"},
                            {"path", "a, \"b\".mp3"},
                            {"offsetSeconds", 1.25},
                            {"offsetUncertaintySeconds", 0.0001},
                            {"driftPpm", -20.5},
                            {"driftUncertaintyPpm", 0.25},
                            {"durationSeconds", 20.0},
                            {"notes", {"eight-bit samples are signed"}}}));
}

TEST(Output, TellsProgramsAboutTheRest)
{
    const json result = jsonOf(everything());

    EXPECT_EQ(result.at("version"), 2);
    EXPECT_EQ(result.at("groups").at(0).at("reference"), "dir/first.wav");
    EXPECT_EQ(result.at("groups").at(0).at("links").at(0).at("jumps"),
              json({{{"atSeconds", 10.0}, {"sizeSeconds", 0.5}}}));
    EXPECT_EQ(result.at("alone").at(0).at("reason"), "silent");
    EXPECT_EQ(result.at("refusedLinks").at(0).at("verdict"), "weak");
    EXPECT_EQ(result.at("failed").at(0).at("path"), "gone.wav");
}

TEST(Output, TellsTablesOneLineForEachFile)
{
    std::ostringstream out;

    vxlsync::writeCsv(everything(), out);

    EXPECT_EQ(out.str(), "group,name,path,offset_seconds,offset_uncertainty_seconds,drift_ppm,"
                         "drift_uncertainty_ppm,duration_seconds,reason\n"
                         "1,first,dir/first.wav,0.000000,0.000000,0.000,0.000,20.000,\n"
                         "1,b,\"a, \"\"b\"\".mp3\",1.250000,0.000100,-20.500,0.250,20.000,\n"
                         ",alone,alone.ogg,,,,,5.000,silent\n"
                         ",,gone.wav,,,,,,could not be read: does not exist\n");
}

TEST(Output, ReplacesBytesThatAreNotUtf8)
{
    Report report;
    report.failed = {{"odd\xFF.wav", "x"}};

    EXPECT_EQ(jsonOf(report).at("failed").at(0).at("path"), "odd\xEF\xBF\xBD.wav");
}

TEST(Output, DoesNotLetANameCommandTheTerminal)
{
    EXPECT_EQ(vxlsync::printable("a\x1b[2J\n\x7F"), "a\\x1b[2J\\x0a\\x7f");
    EXPECT_EQ(vxlsync::printable("na\xC3\xAFve"), "na\xC3\xAFve");
}

TEST(Output, CountsCharactersForItsColumns)
{
    Report report;
    report.alone = {{0, "na\xC3\xAFve", "p", 5.0, "r"}, {1, "longer", "q", 5.0, "r"}};

    EXPECT_THAT(textOf(report), HasSubstr("  na\xC3\xAFve   p: r\n  longer  q: r\n"));
}

} // namespace
