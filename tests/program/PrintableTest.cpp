#include "Printable.h"

#include <gmock/gmock.h>

namespace
{

using vxlsync::host::columnsOf;
using vxlsync::host::printable;

TEST(Printable, LeavesWrittenLanguagesAsTheyAre)
{
    for (const char* text : {
             "plain - ~",
             "na\xC3\xAFve",              // two bytes
             "\xE2\x82\xAC \xEF\xBF\xBD", // three
             "\xF0\x9F\x8E\xB5",          // four
             "\xF4\x8F\xBF\xBF",          // the last character of all
             "\xD7\xA9\xD7\x9C\xD7\x95",  // right to left by its nature
             "\xE2\x80\x8D",              // a joiner, which languages of India need
         })
        EXPECT_EQ(printable(text), text);
}

TEST(Printable, DoesNotLetANameCommandTheTerminal)
{
    EXPECT_EQ(printable("a\x1b[2J\n\x7F\t"), "a\\x1b[2J\\x0a\\x7f\\x09");
    EXPECT_EQ(printable(std::string("a\0b", 3)), "a\\x00b");
}

TEST(Printable, EscapesTheSecondSetOfControls)
{
    // U+009B is the one-character form of escape and bracket.
    EXPECT_EQ(printable("\xC2\x9B"
                        "2J"),
              "\\xc2\\x9b2J");
    EXPECT_EQ(printable("\xC2\x80\xC2\x9F"), "\\xc2\\x80\\xc2\\x9f");
    EXPECT_EQ(printable("\xC2\xA0"), "\xC2\xA0");
}

TEST(Printable, EscapesWhatTurnsTheDirection)
{
    EXPECT_EQ(printable("\xD8\x9C"), "\\xd8\\x9c");
    // U+200E, U+200F, U+202A to U+202E, U+2066 to U+2069.
    for (const std::string last :
         {"\x80\x8E", "\x80\x8F", "\x80\xAA", "\x80\xAB", "\x80\xAC", "\x80\xAD", "\x80\xAE",
          "\x81\xA6", "\x81\xA7", "\x81\xA8", "\x81\xA9"})
        EXPECT_THAT(printable("\xE2" + last), testing::StartsWith("\\xe2\\x8")) << last;
    EXPECT_EQ(printable("song\xE2\x80\xAEvaw.sh"), "song\\xe2\\x80\\xaevaw.sh");
}

TEST(Printable, EscapesWhatEndsALine)
{
    EXPECT_EQ(printable("\xE2\x80\xA8\xE2\x80\xA9"), "\\xe2\\x80\\xa8\\xe2\\x80\\xa9");
    // The characters next to all of these stay.
    EXPECT_EQ(printable("\xE2\x80\xA7\xE2\x80\xAF\xE2\x81\xA5"),
              "\xE2\x80\xA7\xE2\x80\xAF\xE2\x81\xA5");
}

TEST(Printable, EscapesEachByteThatIsNotUtf8)
{
    EXPECT_EQ(printable("odd\xFF.wav"), "odd\\xff.wav");
    // Continues nothing; cut short by a letter; cut short by the end.
    EXPECT_EQ(printable("\x80"), "\\x80");
    EXPECT_EQ(printable("\xE2\x82x"), "\\xe2\\x82x");
    EXPECT_EQ(printable("\xE2\x82"), "\\xe2\\x82");
}

TEST(Printable, EscapesSpellingsThatAreLongerThanNeeded)
{
    // Slash, escape and U+FFFF with a byte too many.
    EXPECT_EQ(printable("\xC0\xAF"), "\\xc0\\xaf");
    EXPECT_EQ(printable("\xE0\x80\x9B"), "\\xe0\\x80\\x9b");
    EXPECT_EQ(printable("\xF0\x8F\xBF\xBF"), "\\xf0\\x8f\\xbf\\xbf");
}

TEST(Printable, EscapesWhatIsNoCharacter)
{
    // Halves of pairs, first and last, with their neighbours that are characters.
    EXPECT_EQ(printable("\xED\x9F\xBF"), "\xED\x9F\xBF");
    EXPECT_EQ(printable("\xED\xA0\x80"), "\\xed\\xa0\\x80");
    EXPECT_EQ(printable("\xED\xBF\xBF"), "\\xed\\xbf\\xbf");
    EXPECT_EQ(printable("\xEE\x80\x80"), "\xEE\x80\x80");
    // Beyond U+10FFFF.
    EXPECT_EQ(printable("\xF4\x90\x80\x80"), "\\xf4\\x90\\x80\\x80");
}

TEST(Printable, CountsTheColumnsOfATerminal)
{
    EXPECT_EQ(columnsOf(""), 0u);
    EXPECT_EQ(columnsOf("na\xC3\xAFve"), 5u);
    // A letter and the mark over it.
    EXPECT_EQ(columnsOf("i\xCC\x88"), 1u);
    // Two ideographs, and a note as a picture.
    EXPECT_EQ(columnsOf("\xE9\x9F\xB3\xE6\xA5\xBD"), 4u);
    EXPECT_EQ(columnsOf("\xF0\x9F\x8E\xB5"), 2u);
}

TEST(ShellWord, LeavesPlainPathsAsTheyAre)
{
    EXPECT_EQ(vxlsync::host::shellWord("day_1/GX01-0042.MP4"), "day_1/GX01-0042.MP4");
}

TEST(ShellWord, QuotesWhatAShellWouldRead)
{
    EXPECT_EQ(vxlsync::host::shellWord("two words.wav"), "'two words.wav'");
    EXPECT_EQ(vxlsync::host::shellWord("$(x)*~.wav"), "'$(x)*~.wav'");
    EXPECT_EQ(vxlsync::host::shellWord("it's.wav"), "'it'\\''s.wav'");
    EXPECT_EQ(vxlsync::host::shellWord("B\xC3\xBChne.wav"), "'B\xC3\xBChne.wav'");
    // What stands next to the letters and digits.
    for (const char* letter : {"{", "[", ";", "`", "!", "\""})
        EXPECT_EQ(vxlsync::host::shellWord(letter), "'" + std::string(letter) + "'");
}

TEST(ShellWord, EscapesWhatCannotBePrinted)
{
    EXPECT_EQ(vxlsync::host::shellWord("a\n'\\\xFF.wav"), "$'a\\x0a\\x27\\x5c\\xff.wav'");
    EXPECT_EQ(vxlsync::host::shellWord("\x7F"), "$'\\x7f'");
}

TEST(ShellWord, MakesNoOptionOfAPath)
{
    EXPECT_EQ(vxlsync::host::shellWord("-x.wav"), "./-x.wav");
}

} // namespace
