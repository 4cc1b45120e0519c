#include <algorithm>

#include <gmock/gmock.h>
#include <nlohmann/json.hpp>

#include "Program.h"
#include "Sounds.h"
#include "Wave.h"

// Names that files of strangers have, in everything that is printed.
namespace
{

using nlohmann::json;
using program::Outcome;
using testing::HasSubstr;
using testing::Not;

// An escape sequence, a turn of direction, the end of a line, and a byte that is no UTF-8.
const std::string hostile = "=a\x1b[2J\xE2\x80\xAE\xC2\x9B\n\xFF";
const std::string shown = "=a\\x1b[2J\\xe2\\x80\\xae\\xc2\\x9b\\x0a\\xff";

class VxlSyncNames : public testing::Test
{
protected:
    static void expectNoCommand(const std::string& text)
    {
        for (const char* command : {"\x1b", "\xE2\x80\xAE", "\xC2\x9B", "\xFF"})
            EXPECT_THAT(text, Not(HasSubstr(command)));
    }

    // Runs it where the files are, so that paths begin with the names.
    Outcome run(const std::string& format, const std::vector<std::string>& more = {}) const
    {
        std::vector<std::string> arguments{"--format", format};
        arguments.insert(arguments.end(), more.begin(), more.end());
        for (const std::string& name : {hostile + ".wav", std::string("plain.wav"), hostile})
            arguments.push_back(name);
        return program::runAfter("cd " + folder.path, arguments);
    }

    const wave::TempFolder folder;
    const std::string odd = folder.write(hostile + ".wav", sounds::recordingOf(12345, 0, 10));
    const std::string plain = folder.write("plain.wav", sounds::recordingOf(12345, 31, 10));
};

TEST_F(VxlSyncNames, CommandNobodyInText)
{
    const Outcome outcome = run("text");

    EXPECT_EQ(outcome.exitCode, 3);
    EXPECT_THAT(outcome.out, HasSubstr("reference  certain  " + shown + "  " + shown + ".wav\n"));
    EXPECT_THAT(outcome.out, HasSubstr("\nFailed: 1 file\n  " + shown + ": "));
    expectNoCommand(outcome.out);
}

TEST_F(VxlSyncNames, AreNoFormulaInATable)
{
    const Outcome outcome = run("csv");

    EXPECT_THAT(outcome.out, HasSubstr("\n1,'" + shown + ",'" + shown + ".wav,0.000000,"));
    EXPECT_THAT(outcome.out, HasSubstr("\n,,'" + shown + ",,,,,,"));
    // A heading and three recordings.
    EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 4);
    expectNoCommand(outcome.out);
}

TEST_F(VxlSyncNames, CanBeHadBackFromJson)
{
    const json result = json::parse(run("json").out);

    // In a name that is no UTF-8 its odd bytes stand as \xNN and a backslash as two; the rest is as
    // it is.
    const std::string escaped = "=a\x1b[2J\xE2\x80\xAE\xC2\x9B\n\\xff";
    const json member = result.at("groups").at(0).at("members").at(0);
    EXPECT_EQ(member.at("path"), escaped + ".wav");
    EXPECT_EQ(member.at("pathIsEscaped"), true);
    EXPECT_EQ(result.at("failed").at(0).at("path"), escaped);
    EXPECT_FALSE(result.at("groups").at(0).at("members").at(1).contains("pathIsEscaped"));
}

TEST_F(VxlSyncNames, CommandNobodyWhileItWorks)
{
    const Outcome outcome = run("csv", {"--progress", "plain", "--", hostile + ".wav"});

    EXPECT_THAT(outcome.err, HasSubstr("done: " + shown + ".wav\n"));
    EXPECT_THAT(outcome.err, HasSubstr(shown + ".wav: the same file as " + shown + ".wav"));
    expectNoCommand(outcome.err);
}

TEST_F(VxlSyncNames, CommandNobodyInWhatIsRefused)
{
    const Outcome outcome = run("csv", {"--fix", hostile + ".mp3=1"});

    EXPECT_EQ(outcome.exitCode, 2);
    EXPECT_THAT(outcome.err, HasSubstr("--fix: " + shown + ".mp3: not one of the recordings"));
    expectNoCommand(outcome.err);
}

} // namespace
