#include "read/InputFile.h"

#include <cerrno>

#include <fcntl.h>
#include <sys/stat.h>
#ifdef _WIN32
#include <filesystem>

#include <io.h>
#else
#include <unistd.h>
#endif

#include "read/Failure.h"

namespace vxlsync
{

namespace
{

#ifdef _WIN32

using Status = struct _stat64;

int openToRead(const std::string& path)
{
    return _wopen(std::filesystem::u8path(path).c_str(), _O_RDONLY | _O_BINARY | _O_NOINHERIT);
}

int statusOf(int descriptor, Status& status)
{
    return _fstat64(descriptor, &status);
}

bool isRegular(const Status& status)
{
    return (status.st_mode & _S_IFMT) == _S_IFREG;
}

bool isFolder(const Status& status)
{
    return (status.st_mode & _S_IFMT) == _S_IFDIR;
}

std::int64_t readOnce(int descriptor, std::int64_t at, char* out, std::size_t count)
{
    constexpr std::size_t most = std::size_t{1} << 30U;
    if (_lseeki64(descriptor, at, SEEK_SET) != at) return 0;
    return _read(descriptor, out, static_cast<unsigned int>(count < most ? count : most));
}

void closeFile(int descriptor)
{
    _close(descriptor);
}

#else

using Status = struct stat;

int openToRead(const std::string& path)
{
    return open(path.c_str(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC);
}

int statusOf(int descriptor, Status& status)
{
    return fstat(descriptor, &status);
}

bool isRegular(const Status& status)
{
    return S_ISREG(status.st_mode);
}

bool isFolder(const Status& status)
{
    return S_ISDIR(status.st_mode);
}

std::int64_t readOnce(int descriptor, std::int64_t at, char* out, std::size_t count)
{
    return pread(descriptor, out, count, at);
}

void closeFile(int descriptor)
{
    close(descriptor);
}

#endif

} // namespace

InputFile::InputFile(const std::string& path) : descriptor(openToRead(path))
{
    if (descriptor < 0) throw ReadFailure(failures::notOpened(errno));
    // A status that cannot be had stays that of no regular file.
    Status status{};
    static_cast<void>(statusOf(descriptor, status));
    if (!isRegular(status)) {
        closeFile(descriptor);
        throw ReadFailure(isFolder(status) ? failures::folder : failures::notRegular);
    }
    bytes = status.st_size;
}

InputFile::~InputFile()
{
    closeFile(descriptor);
}

std::size_t InputFile::read(std::int64_t at, void* out, std::size_t count) const
{
    auto* place = static_cast<char*>(out);
    std::size_t done = 0;
    while (done < count) {
        const std::int64_t got =
            readOnce(descriptor, at + static_cast<std::int64_t>(done), place + done, count - done);
        if (got <= 0) break;
        done += static_cast<std::size_t>(got);
    }
    return done;
}

} // namespace vxlsync
