#include "tell/Utf8.h"

#include <set>
#include <string>

#include <gmock/gmock.h>

namespace
{

using vxlsync::utf8Of;
using vxlsync::Utf8Text;

// What a reader of the JSON does to have the bytes back.
std::string bytesOf(const Utf8Text& text)
{
    if (!text.isEscaped) return text.text;
    std::string bytes;
    for (std::size_t i = 0; i < text.text.size(); ++i) {
        if (text.text[i] != '\\') {
            bytes += text.text[i];
        } else if (text.text[i + 1] == '\\') {
            bytes += '\\';
            ++i;
        } else {
            bytes += static_cast<char>(std::stoi(text.text.substr(i + 2, 2), nullptr, 16));
            i += 3;
        }
    }
    return bytes;
}

bool isTakenAsItIs(const std::string& bytes)
{
    const Utf8Text text = utf8Of(bytes);
    return !text.isEscaped && text.text == bytes;
}

TEST(Utf8, TextThatIsUtf8StaysAsItIs)
{
    EXPECT_TRUE(isTakenAsItIs(""));
    EXPECT_TRUE(isTakenAsItIs("C:\\takes\\x1b.wav"));
    EXPECT_TRUE(isTakenAsItIs("na\xC3\xAFve \xE2\x82\xAC \xF0\x9F\x8E\xA4"));
    EXPECT_TRUE(isTakenAsItIs(std::string("a\0b", 3)));
}

TEST(Utf8, BytesOfNoCharacterAreEscaped)
{
    const Utf8Text text = utf8Of("na\xEFve.wav");

    EXPECT_TRUE(text.isEscaped);
    EXPECT_EQ(text.text, "na\\xefve.wav");
}

TEST(Utf8, BackslashesAreDoubledOnlyWhereBytesAreEscaped)
{
    EXPECT_EQ(utf8Of("a\\b\xFF").text, "a\\\\b\\xff");
}

TEST(Utf8, CharactersBesideEscapedBytesStay)
{
    EXPECT_EQ(utf8Of("\xE2\x82\xAC\x80\xE2\x82").text, "\xE2\x82\xAC\\x80\\xe2\\x82");
}

// The edges of RFC 3629's table, on both sides.
TEST(Utf8, TakesExactlyTheCharactersThatAreWellFormed)
{
    for (const char* character :
         {"\x7F", "\xC2\x80", "\xDF\xBF", "\xE0\xA0\x80", "\xE0\xBF\xBF", "\xE1\x80\x80",
          "\xEC\xBF\xBF", "\xED\x80\x80", "\xED\x9F\xBF", "\xEE\x80\x80", "\xEF\xBF\xBF",
          "\xF0\x90\x80\x80", "\xF1\x80\x80\x80", "\xF3\xBF\xBF\xBF", "\xF4\x8F\xBF\xBF"})
        EXPECT_FALSE(utf8Of(character).isEscaped) << utf8Of(character).text;

    for (const char* bytes :
         {"\x80", "\xBF", "\xC0\x80", "\xC1\xBF", "\xC2\x7F", "\xC2\xC0", "\xE0\x9F\xBF",
          "\xE0\xC0\x80", "\xE1\x7F\x80", "\xE1\x80\x7F", "\xE1\x80\xC0", "\xED\xA0\x80",
          "\xF0\x8F\xBF\xBF", "\xF0\xC0\x80\x80", "\xF1\x80\x80\x7F", "\xF4\x90\x80\x80",
          "\xF5\x80\x80\x80", "\xFF"})
        EXPECT_TRUE(utf8Of(bytes).isEscaped) << bytesOf(utf8Of(bytes));
}

TEST(Utf8, CharactersThatAreCutOffAreEscaped)
{
    EXPECT_EQ(utf8Of("\xC3").text, "\\xc3");
    EXPECT_EQ(utf8Of("\xE2\x82").text, "\\xe2\\x82");
    EXPECT_EQ(utf8Of("\xF0\x9F\x8E").text, "\\xf0\\x9f\\x8e");
}

TEST(Utf8, EveryByteCanBeHadBack)
{
    std::set<std::string> texts;
    for (int byte = 0; byte < 256; ++byte) {
        const std::string bytes = std::string("a\\") + static_cast<char>(byte) + "\\xff\xFE";

        const Utf8Text text = utf8Of(bytes);

        EXPECT_TRUE(text.isEscaped);
        EXPECT_EQ(bytesOf(text), bytes) << byte;
        EXPECT_FALSE(utf8Of(text.text).isEscaped) << byte;
        texts.insert(text.text);
    }
    EXPECT_EQ(texts.size(), 256u);
}

TEST(Utf8, EveryPairOfBytesCanBeHadBack)
{
    for (int high = 0; high < 256; ++high) {
        for (int low = 0; low < 256; ++low) {
            const std::string bytes{static_cast<char>(high), static_cast<char>(low)};
            ASSERT_EQ(bytesOf(utf8Of(bytes)), bytes) << high << ' ' << low;
        }
    }
}

} // namespace
