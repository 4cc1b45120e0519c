#include "read/MediaInput.h"

#include <chrono>
#include <new>
#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "Reading.h"
#include "Wave.h"

namespace
{

TEST(MediaInput, OpensNoOtherFileWhateverAsksForIt)
{
    const wave::TempFolder folder;
    const std::string path = folder.write("a.wav", wave::file16({1, 2, 3}));
    const vxlsync::Options options;
    const vxlsync::ReadLimits limits;
    const vxlsync::Interrupt interrupt;
    const vxlsync::MediaInput input({path, options, limits, interrupt});
    AVIOContext* opened = nullptr;

    const int result =
        input.format().io_open(&input.format(), &opened, path.c_str(), AVIO_FLAG_READ, nullptr);

    EXPECT_LT(result, 0);
    EXPECT_EQ(opened, nullptr);
}

// Within a decoder, long before the next packet.
TEST(MediaInput, AsksTheHostWhileTheLibraryWorks)
{
    const wave::TempFolder folder;
    const std::string path = folder.write("a.wav", wave::file16({1, 2, 3}));
    const vxlsync::Options options;
    const vxlsync::ReadLimits limits;
    bool cancelled = false;
    const vxlsync::Interrupt interrupt([&] { return cancelled; });
    const vxlsync::MediaInput input({path, options, limits, interrupt});
    const AVIOInterruptCB& question = input.format().interrupt_callback;
    EXPECT_EQ(question.callback(question.opaque), 0);

    cancelled = true;
    // Longer than the time between two questions to the host.
    std::this_thread::sleep_for(std::chrono::milliseconds(60));

    EXPECT_EQ(question.callback(question.opaque), 1);
}

TEST(MediaInput, TurnsNullIntoAnException)
{
    EXPECT_THROW(vxlsync::requireMemory(nullptr), std::bad_alloc);
    EXPECT_NO_THROW(vxlsync::requireMemory(this));
}

} // namespace
