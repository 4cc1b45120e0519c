#ifndef VXL_SYNC_CONSOLEREDIRECT_H
#define VXL_SYNC_CONSOLEREDIRECT_H

#include <functional>
#include <streambuf>
#include <string>

namespace vxlsync
{

// Takes what is written to std::cout for as long as it lives, and hands it on line by line, without
// the newlines. The library tells on std::cout what it does; the program's own result goes there as
// well and must stay clean. Only one thread may write meanwhile. Redirects nest.
class ConsoleRedirect
{
public:
    using LineSink = std::function<void(const std::string&)>;

    explicit ConsoleRedirect(LineSink newSink);
    // Hands on an unfinished line, and gives std::cout back.
    ~ConsoleRedirect();
    ConsoleRedirect(const ConsoleRedirect&) = delete;
    ConsoleRedirect& operator=(const ConsoleRedirect&) = delete;

private:
    class LineBuffer : public std::streambuf
    {
    public:
        explicit LineBuffer(LineSink newSink);
        void finish();

    protected:
        int_type overflow(int_type letter) override;

    private:
        LineSink sink;
        std::string line;
    };

    LineBuffer buffer;
    std::streambuf* former;
};

} // namespace vxlsync

#endif
