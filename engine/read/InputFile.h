#ifndef VXL_SYNC_INPUTFILE_H
#define VXL_SYNC_INPUTFILE_H

#include <cstddef>
#include <cstdint>
#include <string>

namespace vxlsync
{

// A regular file, open to be read and for nothing else.
class InputFile
{
public:
    // Never waits, as opening a pipe would. Throws ReadFailure for what is missing, is no regular
    // file or cannot be opened.
    explicit InputFile(const std::string& path);
    ~InputFile();
    InputFile(const InputFile&) = delete;
    InputFile& operator=(const InputFile&) = delete;

    // In bytes, when it was opened.
    std::int64_t size() const { return bytes; }
    // How many bytes it gave from position `at` on: fewer than `count` at the end only, or where
    // the system cannot read on.
    std::size_t read(std::int64_t at, void* out, std::size_t count) const;

private:
    int descriptor;
    std::int64_t bytes = 0;
};

} // namespace vxlsync

#endif
