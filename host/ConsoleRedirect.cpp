#include "ConsoleRedirect.h"

#include <iostream>
#include <utility>

namespace vxlsync
{

ConsoleRedirect::LineBuffer::LineBuffer(LineSink newSink) : sink(std::move(newSink)) {}

ConsoleRedirect::LineBuffer::int_type ConsoleRedirect::LineBuffer::overflow(int_type letter)
{
    if (traits_type::eq_int_type(letter, traits_type::eof())) return traits_type::not_eof(letter);
    const char written = traits_type::to_char_type(letter);
    if (written == '\n') {
        sink(std::exchange(line, std::string()));
    } else {
        line += written;
    }
    return letter;
}

void ConsoleRedirect::LineBuffer::finish()
{
    if (!line.empty()) sink(std::exchange(line, std::string()));
}

ConsoleRedirect::ConsoleRedirect(LineSink newSink)
    : buffer(std::move(newSink)), former(std::cout.rdbuf(&buffer))
{
}

ConsoleRedirect::~ConsoleRedirect()
{
    std::cout.rdbuf(former);
    try {
        buffer.finish();
    } catch (...) {
        // The end of a broken-off line is no reason to end the program.
    }
}

} // namespace vxlsync
