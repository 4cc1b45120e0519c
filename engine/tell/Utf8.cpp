#include "tell/Utf8.h"

#include <cstddef>

namespace vxlsync
{

namespace
{

// What may follow a leading byte: how many bytes continue the character, and the range of the first
// of them, which is what keeps overlong forms, surrogates and all above U+10FFFF out. The others
// range over all continuations.
struct Continuation {
    std::size_t count = 0;
    unsigned int lowest = 0x80U;
    unsigned int highest = 0xBFU;
};

Continuation continuationOf(unsigned int lead)
{
    if (lead < 0xE0U) return {1, 0x80U, 0xBFU};
    if (lead == 0xE0U) return {2, 0xA0U, 0xBFU};
    if (lead == 0xEDU) return {2, 0x80U, 0x9FU};
    if (lead < 0xF0U) return {2, 0x80U, 0xBFU};
    if (lead == 0xF0U) return {3, 0x90U, 0xBFU};
    if (lead < 0xF4U) return {3, 0x80U, 0xBFU};
    return {3, 0x80U, 0x8FU};
}

unsigned int byteAt(const std::string& bytes, std::size_t index)
{
    return static_cast<unsigned char>(bytes[index]);
}

// Bytes of the character that begins there, or 0 if none does.
std::size_t characterLength(const std::string& bytes, std::size_t begin)
{
    const unsigned int lead = byteAt(bytes, begin);
    if (lead < 0x80U) return 1;
    if (lead < 0xC2U || lead > 0xF4U) return 0;
    Continuation expected = continuationOf(lead);
    if (bytes.size() - begin <= expected.count) return 0;
    for (std::size_t i = 1; i <= expected.count; ++i) {
        const unsigned int next = byteAt(bytes, begin + i);
        if (next < expected.lowest || next > expected.highest) return 0;
        expected.lowest = 0x80U;
        expected.highest = 0xBFU;
    }
    return expected.count + 1;
}

bool isUtf8(const std::string& bytes)
{
    for (std::size_t i = 0; i < bytes.size();) {
        const std::size_t length = characterLength(bytes, i);
        if (length == 0) return false;
        i += length;
    }
    return true;
}

std::string escapedByte(unsigned int byte)
{
    constexpr char digits[] = "0123456789abcdef";
    return {'\\', 'x', digits[byte >> 4U], digits[byte & 0xFU]};
}

} // namespace

Utf8Text utf8Of(const std::string& bytes)
{
    if (isUtf8(bytes)) return {bytes, false};
    Utf8Text escaped{{}, true};
    for (std::size_t i = 0; i < bytes.size();) {
        const std::size_t length = characterLength(bytes, i);
        if (length == 0)
            escaped.text += escapedByte(byteAt(bytes, i));
        else if (bytes[i] == '\\')
            escaped.text += "\\\\";
        else
            escaped.text.append(bytes, i, length);
        i += length == 0 ? 1 : length;
    }
    return escaped;
}

} // namespace vxlsync
