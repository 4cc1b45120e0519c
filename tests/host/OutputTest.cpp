#include "Output.h"

#include <cmath>
#include <sstream>

#include <gtest/gtest.h>
#include <nlohmann/json.hpp>

namespace
{

using nlohmann::json;
using vxlsync::Report;

std::string textOf(const Report& report)
{
    std::ostringstream out;
    writeText(report, out);
    return out.str();
}

std::string jsonTextOf(const Report& report)
{
    std::ostringstream out;
    writeJson(report, out);
    return out.str();
}

Report wholeReport()
{
    Report report;
    report.groups = {
        {{2, "b", "dir/b.wav", 0.0f}, {1, "long", "long.wav", 12.3456f}},
        {{3, "c", "c.wav", 0.0f}, {4, "d", "d.wav", 0.0004f}},
    };
    report.alone = {{"e", "e.wav"}};
    report.failed = {{"f.wav", "does not exist"}, {"g.wav", "is not a regular file"}};
    return report;
}

TEST(Output, WritesEveryPartAsText)
{
    EXPECT_EQ(textOf(wholeReport()), "Group 1: 2 recordings\n"
                                     "       0.000 s  b     dir/b.wav\n"
                                     "      12.346 s  long  long.wav\n"
                                     "\n"
                                     "Group 2: 2 recordings\n"
                                     "       0.000 s  c  c.wav\n"
                                     "       0.000 s  d  d.wav\n"
                                     "\n"
                                     "Alone: 1 recording\n"
                                     "  e  e.wav\n"
                                     "\n"
                                     "Failed: 2 files\n"
                                     "  f.wav: does not exist\n"
                                     "  g.wav: is not a regular file\n");
}

TEST(Output, SaysInTheTextThatNothingMatched)
{
    Report report;
    report.alone = {{"a", "a.wav"}, {"b", "b.wav"}};

    EXPECT_EQ(textOf(report), "Nothing matched.\n"
                              "\n"
                              "Alone: 2 recordings\n"
                              "  a  a.wav\n"
                              "  b  b.wav\n");
}

TEST(Output, AlignsNamesByCharactersAndNotByBytes)
{
    Report report;
    // The first name has two characters in three bytes.
    report.groups = {{{1, "\xC3\xA9z", "x.wav", 0.0f}, {2, "ab", "y.wav", 0.0f}}};

    EXPECT_EQ(textOf(report), "Group 1: 2 recordings\n"
                              "       0.000 s  \xC3\xA9z  x.wav\n"
                              "       0.000 s  ab  y.wav\n");
}

TEST(Output, ShowsControlCharactersOfNamesAsCodes)
{
    EXPECT_EQ(vxlsync::printable("a\nb\x1b[31m\x7f \xC3\xA9"), "a\\x0ab\\x1b[31m\\x7f \xC3\xA9");
}

TEST(Output, WritesEveryPartAsJson)
{
    const json expected = {
        {"version", 1},
        {"groups",
         {{{"members",
            {{{"name", "b"}, {"path", "dir/b.wav"}, {"offsetSeconds", 0.0}},
             {{"name", "long"},
              {"path", "long.wav"},
              {"offsetSeconds", static_cast<double>(12.3456f)}}}}},
          {{"members",
            {{{"name", "c"}, {"path", "c.wav"}, {"offsetSeconds", 0.0}},
             {{"name", "d"},
              {"path", "d.wav"},
              {"offsetSeconds", static_cast<double>(0.0004f)}}}}}}},
        {"alone", {{{"name", "e"}, {"path", "e.wav"}}}},
        {"failed",
         {{{"path", "f.wav"}, {"reason", "does not exist"}},
          {{"path", "g.wav"}, {"reason", "is not a regular file"}}}},
    };

    EXPECT_EQ(json::parse(jsonTextOf(wholeReport())), expected);
}

TEST(Output, WritesEmptyListsAsJsonArrays)
{
    EXPECT_EQ(json::parse(jsonTextOf(Report())),
              json::parse(R"({"version": 1, "groups": [], "alone": [], "failed": []})"));
}

TEST(Output, WritesOffsetsAsJsonThatReadBackAsTheSameFloat)
{
    // Neighbouring floats, which six digits could not tell apart.
    const float offset = 4321.0005f;
    const float next = std::nextafter(offset, 5000.0f);
    Report report;
    report.groups = {{{1, "a", "a.wav", offset}, {2, "b", "b.wav", next}}};

    const json members = json::parse(jsonTextOf(report)).at("groups").at(0).at("members");

    EXPECT_EQ(members.at(0).at("offsetSeconds").get<float>(), offset);
    EXPECT_EQ(members.at(1).at("offsetSeconds").get<float>(), next);
}

TEST(Output, ReplacesBytesThatAreNotUtf8InJson)
{
    Report report;
    report.alone = {{"a\xFF", "dir\xC3/a\xFF.wav"}};
    report.failed = {{"\xFE.wav", "does not exist"}};

    const json document = json::parse(jsonTextOf(report));

    EXPECT_EQ(document.at("alone").at(0).at("name"), "a\xEF\xBF\xBD");
    EXPECT_EQ(document.at("alone").at(0).at("path"), "dir\xEF\xBF\xBD/a\xEF\xBF\xBD.wav");
    EXPECT_EQ(document.at("failed").at(0).at("path"), "\xEF\xBF\xBD.wav");
}

TEST(Output, EscapesQuotesAndNewlinesOfNamesInJson)
{
    Report report;
    report.alone = {{"say \"a\"\n", "b\\c.wav"}};

    const json document = json::parse(jsonTextOf(report));

    EXPECT_EQ(document.at("alone").at(0).at("name"), "say \"a\"\n");
    EXPECT_EQ(document.at("alone").at(0).at("path"), "b\\c.wav");
}

} // namespace
