#ifndef VXS_TESTS_SUPPORT_CONSOLE_H
#define VXS_TESTS_SUPPORT_CONSOLE_H

#include <iostream>
#include <string>
#include <vector>

// Takes what goes to std::cout for as long as it lives, and tells where it was flushed.
class Console
{
public:
    Console();
    ~Console();
    Console(const Console&) = delete;
    Console& operator=(const Console&) = delete;

    std::string text() const { return buffer.written; }
    // What was written up to each flush since the flush before.
    const std::vector<std::string>& flushed() const { return buffer.flushed; }

private:
    class Buffer : public std::streambuf
    {
    public:
        std::string written;
        std::vector<std::string> flushed;

    protected:
        int_type overflow(int_type letter) override;
        std::streamsize xsputn(const char* letters, std::streamsize count) override;
        int sync() override;

    private:
        std::size_t flushedUpTo = 0;
    };

    Buffer buffer;
    std::streambuf* former;
};

#endif
