#include "Printable.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstring>
#include <optional>

#include <fmt/format.h>

namespace vxlsync::host
{

namespace
{

struct Character {
    std::uint32_t code;
    std::size_t bytes;
};

struct Range {
    std::uint32_t first;
    std::uint32_t last;
};

constexpr std::array commanding{
    Range{0x00, 0x1F},     // controls
    Range{0x7F, 0x9F},     // delete, and the second set of controls
    Range{0x61C, 0x61C},   // Arabic letter mark
    Range{0x200E, 0x200F}, // marks of direction
    Range{0x2028, 0x202E}, // ends of line and paragraph, embeddings and overrides of direction
    Range{0x2066, 0x206F}, // isolates, and shaping that is out of use
};

// The marks and wide characters that names of files have; a rare one that is not among them puts a
// column out of line and does no other harm.
constexpr std::array marks{
    Range{0x300, 0x36F},   // Latin, Greek, Cyrillic
    Range{0x483, 0x489},   // Cyrillic
    Range{0x591, 0x5BD},   // Hebrew
    Range{0x64B, 0x65F},   // Arabic
    Range{0x1AB0, 0x1AFF}, // further Latin
    Range{0x1DC0, 0x1DFF}, // phonetic
    Range{0x200B, 0x200D}, // spaces and joiners without width
    Range{0x20D0, 0x20FF}, // symbols
    Range{0x3099, 0x309A}, // voicing of kana
    Range{0xFE00, 0xFE0F}, // choice of a variant
    Range{0xFE20, 0xFE2F}, // halves of marks
};
constexpr std::array wideOnes{
    Range{0x1100, 0x115F},   // Hangul letters
    Range{0x2E80, 0x303E},   // radicals, punctuation
    Range{0x3041, 0x4DBF},   // kana, compatibility, ideographs
    Range{0x4E00, 0xA4CF},   // ideographs, Yi
    Range{0xAC00, 0xD7A3},   // Hangul
    Range{0xF900, 0xFAFF},   // compatibility ideographs
    Range{0xFE30, 0xFE6F},   // forms of punctuation
    Range{0xFF00, 0xFF60},   // wide Latin
    Range{0xFFE0, 0xFFE6},   // wide signs
    Range{0x1F300, 0x1F64F}, // pictures
    Range{0x1F900, 0x1F9FF}, // pictures
    Range{0x20000, 0x3FFFD}, // further ideographs
};

template <std::size_t count>
bool isAmong(const std::array<Range, count>& ranges, std::uint32_t code)
{
    return std::any_of(ranges.begin(), ranges.end(), [code](const Range& range) {
        return code >= range.first && code <= range.last;
    });
}

unsigned int byteAt(const std::string& text, std::size_t at)
{
    return static_cast<unsigned char>(text[at]);
}

// Bytes of the character that starts with this one; 0 for a byte that starts none.
std::size_t lengthFrom(unsigned int lead)
{
    if (lead < 0x80U) return 1;
    if ((lead & 0xE0U) == 0xC0U) return 2;
    if ((lead & 0xF0U) == 0xE0U) return 3;
    if ((lead & 0xF8U) == 0xF0U) return 4;
    return 0;
}

// The character that starts there, if it is UTF-8.
std::optional<Character> characterAt(const std::string& text, std::size_t at)
{
    // Below these a shorter spelling exists, and only that one counts.
    constexpr std::array<std::uint32_t, 5> least{0, 0, 0x80, 0x800, 0x10000};
    constexpr Range surrogates{0xD800, 0xDFFF};
    constexpr std::uint32_t greatest = 0x10FFFF;

    const std::size_t length = lengthFrom(byteAt(text, at));
    if (length == 0 || length > text.size() - at) return std::nullopt;
    std::uint32_t code = byteAt(text, at) & (length == 1 ? 0x7FU : 0x7FU >> length);
    for (std::size_t i = 1; i < length; ++i) {
        const unsigned int next = byteAt(text, at + i);
        if ((next & 0xC0U) != 0x80U) return std::nullopt;
        code = code << 6U | (next & 0x3FU);
    }
    if (code < least[length] || code > greatest) return std::nullopt;
    if (code >= surrogates.first && code <= surrogates.last) return std::nullopt;
    return Character{code, length};
}

} // namespace

std::string printable(const std::string& text)
{
    std::string result;
    for (std::size_t at = 0; at < text.size();) {
        const std::optional<Character> character = characterAt(text, at);
        const std::size_t bytes = character ? character->bytes : 1;
        if (character && !isAmong(commanding, character->code)) {
            result += text.substr(at, bytes);
        } else {
            for (std::size_t i = 0; i < bytes; ++i)
                result += fmt::format("\\x{:02x}", byteAt(text, at + i));
        }
        at += bytes;
    }
    return result;
}

std::size_t columnsOf(const std::string& shown)
{
    std::size_t columns = 0;
    for (std::size_t at = 0; at < shown.size();) {
        const Character character = characterAt(shown, at).value();
        if (!isAmong(marks, character.code)) columns += isAmong(wideOnes, character.code) ? 2 : 1;
        at += character.bytes;
    }
    return columns;
}

std::string shellWord(const std::string& path)
{
    // What begins with a hyphen would be an option.
    std::string word = path.rfind('-', 0) == 0 ? "./" + path : path;
    const auto isPlain = [](char letter) {
        return (letter >= 'a' && letter <= 'z') || (letter >= 'A' && letter <= 'Z') ||
               (letter >= '0' && letter <= '9') || std::strchr("_-./+,:@%=", letter) != nullptr;
    };
    if (std::all_of(word.begin(), word.end(), isPlain)) return word;
    const bool isPrintable = printable(word) == word;
    std::string quoted = isPrintable ? "'" : "$'";
    for (const char letter : word) {
        const auto byte = static_cast<unsigned char>(letter);
        if (isPrintable && letter == '\'')
            quoted += "'\\''";
        else if (isPrintable)
            quoted += letter;
        else if (byte >= 0x20 && byte < 0x7F && letter != '\'' && letter != '\\')
            quoted += letter;
        else
            quoted += fmt::format("\\x{:02x}", byte);
    }
    return quoted + "'";
}

} // namespace vxlsync::host
