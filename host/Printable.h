#ifndef VXL_SYNC_PRINTABLE_H
#define VXL_SYNC_PRINTABLE_H

#include <cstddef>
#include <string>

namespace vxlsync::host
{

// The text as it may stand on a terminal or in a table: the bytes of whatever could command a
// terminal, break a line, turn the direction of what follows, or is no UTF-8, come out as "\x1b".
std::string printable(const std::string& text);

// The path as a word for a shell, to be copied from what is printed: as it is, or quoted, with
// bytes that printable() escapes written as Bash and Zsh read them.
std::string shellWord(const std::string& path);

// Columns that a text out of printable() takes on a terminal: none for marks that stand over the
// character before them, two for the wide characters of East Asia and for pictures.
std::size_t columnsOf(const std::string& shown);

} // namespace vxlsync::host

#endif
