#include "read/InputFile.h"

#include <filesystem>
#include <string>

#include <gtest/gtest.h>

#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "Wave.h"
#include "read/Failure.h"

namespace
{

using vxlsync::InputFile;

std::string failureOf(const std::string& path)
{
    try {
        const InputFile file(path);
    } catch (const vxlsync::ReadFailure& failure) {
        return failure.what();
    }
    return "";
}

TEST(InputFile, GivesBytesFromAnyPlaceUpToItsEnd)
{
    const wave::TempFolder folder;
    const InputFile file(folder.write("a", {'a', 'b', 'c', 'd'}));
    std::string text(3, '-');

    EXPECT_EQ(file.size(), 4);
    EXPECT_EQ(file.read(1, text.data(), 3), 3u);
    EXPECT_EQ(text, "bcd");
    EXPECT_EQ(file.read(3, text.data(), 3), 1u);
    EXPECT_EQ(text, "dcd");
    EXPECT_EQ(file.read(9, text.data(), 3), 0u);
    EXPECT_EQ(file.read(-1, text.data(), 3), 0u);
}

TEST(InputFile, SaysWhatIsMissing)
{
    const wave::TempFolder folder;

    EXPECT_EQ(failureOf(folder / "gone"), "does not exist");
    EXPECT_EQ(failureOf(folder.write("a", {}) + "/b"), "does not exist");
    EXPECT_EQ(failureOf(folder / std::string(300, 'x')), "cannot be opened: File name too long");
}

// Were the pipe opened to be waited for, this test would not end.
TEST(InputFile, OpensRegularFilesOnly)
{
    const wave::TempFolder folder;
    ASSERT_EQ(mkfifo((folder / "pipe").c_str(), 0600), 0);
    const int plug = socket(AF_UNIX, SOCK_STREAM, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string name = folder / "s";
    ASSERT_LT(name.size(), sizeof address.sun_path);
    name.copy(address.sun_path, name.size());
    ASSERT_EQ(bind(plug, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);

    EXPECT_EQ(failureOf(folder.path), "is a folder; give the files in it");
    EXPECT_EQ(failureOf(folder / "pipe"), "is not a regular file");
    EXPECT_EQ(failureOf(name), "is not a regular file");
    EXPECT_EQ(failureOf("/dev/zero"), "is not a regular file");
    close(plug);
}

TEST(InputFile, IsReachedThroughALink)
{
    const wave::TempFolder folder;
    std::filesystem::create_symlink(folder.write("a", {'a'}), folder / "link");

    EXPECT_EQ(InputFile(folder / "link").size(), 1);
}

} // namespace
