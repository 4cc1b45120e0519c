#include "Console.h"

Console::Console() : former(std::cout.rdbuf(&buffer)) {}

Console::~Console()
{
    std::cout.rdbuf(former);
}

Console::Buffer::int_type Console::Buffer::overflow(int_type letter)
{
    if (!traits_type::eq_int_type(letter, traits_type::eof())) {
        written.push_back(traits_type::to_char_type(letter));
    }
    return traits_type::not_eof(letter);
}

std::streamsize Console::Buffer::xsputn(const char* letters, std::streamsize count)
{
    written.append(letters, static_cast<std::size_t>(count));
    return count;
}

int Console::Buffer::sync()
{
    flushed.push_back(written.substr(flushedUpTo));
    flushedUpTo = written.size();
    return 0;
}
