#ifndef ALLOCATION_FIXEDCONSOLE_H
#define ALLOCATION_FIXEDCONSOLE_H

#include <array>
#include <iostream>
#include <streambuf>
#include <string>

namespace allocation
{

// Takes what goes to std::cout for as long as it lives, and allocates nothing for it: a stream that
// met an exception would print nothing more. What is beyond its size is lost.
class FixedConsole
{
public:
    FixedConsole() : former(std::cout.rdbuf(&buffer)) {}
    ~FixedConsole() { std::cout.rdbuf(former); }
    FixedConsole(const FixedConsole&) = delete;
    FixedConsole& operator=(const FixedConsole&) = delete;

    // What was printed since the last call.
    std::string take() { return buffer.take(); }

private:
    class Buffer : public std::streambuf
    {
    public:
        Buffer() { restart(); }

        std::string take()
        {
            const std::string text(pbase(), pptr());
            restart();
            return text;
        }

    protected:
        int_type overflow(int_type letter) override { return traits_type::not_eof(letter); }

    private:
        void restart() { setp(letters.data(), letters.data() + letters.size()); }

        std::array<char, 4096> letters;
    };

    Buffer buffer;
    std::streambuf* former;
};

} // namespace allocation

#endif
