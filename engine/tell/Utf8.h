#ifndef VXL_SYNC_UTF8_H
#define VXL_SYNC_UTF8_H

#include <string>

namespace vxlsync
{

// Text for a format that takes nothing but UTF-8.
struct Utf8Text {
    std::string text;
    // False: `text` is the original. True: the original is not UTF-8; each byte that belongs to no
    // character stands as "\xNN" in lower-case hexadecimal, and each backslash as two, so that the
    // original's bytes can be had back.
    bool isEscaped = false;
};

// Characters are those of RFC 3629: no overlong forms, no surrogates, nothing above U+10FFFF.
Utf8Text utf8Of(const std::string& bytes);

} // namespace vxlsync

#endif
