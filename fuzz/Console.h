#ifndef FUZZ_CONSOLE_H
#define FUZZ_CONSOLE_H

#include <iostream>
#include <streambuf>

namespace fuzz
{

// Drops what goes to std::cout for as long as it lives.
class SilentConsole
{
public:
    SilentConsole() : former(std::cout.rdbuf(&nowhere)) {}
    ~SilentConsole() { std::cout.rdbuf(former); }
    SilentConsole(const SilentConsole&) = delete;
    SilentConsole& operator=(const SilentConsole&) = delete;

private:
    struct Nowhere : std::streambuf {
        int_type overflow(int_type letter) override { return traits_type::not_eof(letter); }
    };

    Nowhere nowhere;
    std::streambuf* former;
};

} // namespace fuzz

#endif
