#include "CsvResult.h"

#include <sstream>

#include <gmock/gmock.h>

#include "Results.h"

namespace
{

using testing::EndsWith;
using testing::HasSubstr;
using vxlsync::Result;

std::string tableOf(const Result& result)
{
    std::ostringstream out;
    vxlsync::host::writeCsv(result, out);
    return out.str();
}

// The line of a recording that is alone and has this name.
std::string lineOf(const std::string& name)
{
    Result result;
    result.sources = {results::source(name, "p", 5.0)};
    result.alone = {{0, "silent"}};
    const std::string table = tableOf(result);
    return table.substr(table.find('\n') + 1);
}

TEST(CsvResult, HasOneLineForEachFile)
{
    Result result = results::everything();
    result.sources[0].device = "camera a";

    EXPECT_EQ(tableOf(result),
              "group,name,path,offset_seconds,offset_uncertainty_seconds,drift_ppm,"
              "drift_uncertainty_ppm,duration_seconds,reason,device\n"
              "1,first,dir/first.wav,0.000000,0.000000,0.000,0.000,20.000,,camera a\n"
              "1,b,\"a, \"\"b\"\".mp3\",1.250000,0.000100,-20.500,0.250,20.000,,\n"
              ",alone,alone.ogg,,,,,5.000,silent,\n"
              ",,gone.wav,,,,,,could not be read: does not exist,\n");
}

TEST(CsvResult, LetsNoNameBecomeAFormula)
{
    EXPECT_EQ(lineOf("=1+1"), ",'=1+1,p,,,,,5.000,silent,\n");
    EXPECT_EQ(lineOf("+1"), ",'+1,p,,,,,5.000,silent,\n");
    EXPECT_EQ(lineOf("-1"), ",'-1,p,,,,,5.000,silent,\n");
    EXPECT_EQ(lineOf("@SUM(A1)"), ",'@SUM(A1),p,,,,,5.000,silent,\n");
    EXPECT_EQ(lineOf("\t=1"), ",'\\x09=1,p,,,,,5.000,silent,\n");
    EXPECT_EQ(lineOf("\r=1"), ",'\\x0d=1,p,,,,,5.000,silent,\n");
    EXPECT_EQ(lineOf("\n=1"), ",'\\x0a=1,p,,,,,5.000,silent,\n");
}

TEST(CsvResult, LeavesSignsWithinANameAlone)
{
    EXPECT_EQ(lineOf("a=b+c-d@e"), ",a=b+c-d@e,p,,,,,5.000,silent,\n");
    EXPECT_EQ(lineOf(""), ",,p,,,,,5.000,silent,\n");
}

TEST(CsvResult, QuotesAFormulaToo)
{
    EXPECT_EQ(lineOf("=HYPERLINK(\"x\",1)"), ",\"'=HYPERLINK(\"\"x\"\",1)\",p,,,,,5.000,silent,\n");
}

TEST(CsvResult, GuardsEveryColumnOfText)
{
    Result result = results::everything();
    for (vxlsync::SourceFacts& source : result.sources)
        source.path = source.device = "=1";
    result.alone[0].reason = "=2";
    result.failed[0].reason = "=3";

    const std::string table = tableOf(result);

    EXPECT_THAT(table, HasSubstr("1,first,'=1,0.000000,"));
    EXPECT_THAT(table, HasSubstr(",alone,'=1,,,,,5.000,'=2,'=1\n"));
    EXPECT_THAT(table, EndsWith(",,'=1,,,,,,'=3,\n"));
}

TEST(CsvResult, KeepsNegativeNumbersNumbers)
{
    EXPECT_THAT(tableOf(results::everything()), HasSubstr(",-20.500,"));
}

TEST(CsvResult, KeepsEachRecordingOnOneLine)
{
    EXPECT_EQ(lineOf("two\r\nlines\x1b[2J\xFF"),
              ",two\\x0d\\x0alines\\x1b[2J\\xff,p,,,,,5.000,silent,\n");
}

} // namespace
