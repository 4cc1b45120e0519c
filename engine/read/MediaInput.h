#ifndef VXL_SYNC_MEDIAINPUT_H
#define VXL_SYNC_MEDIAINPUT_H

#include <cstdint>
#include <memory>
#include <string>

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

#include "read/InputFile.h"
#include "read/Limits.h"
#include "read/Reader.h"

namespace vxlsync
{

// Throws std::bad_alloc for null.
void requireMemory(const void* memory);

// One media file, opened with what is allowed and nothing else: its container by the list, its
// bytes through a descriptor of ours, and no other file whatever it asks for.
class MediaInput
{
public:
    // What `newRequest` refers to is borrowed. Throws ReadFailure, std::bad_alloc and what
    // Interrupt::check throws.
    explicit MediaInput(const ReadRequest& newRequest);
    MediaInput(const MediaInput&) = delete;
    MediaInput& operator=(const MediaInput&) = delete;

    // The stream to be read; the others are skipped from now on. Throws ReadFailure if there is
    // none.
    AVStream& chooseStream(int number);
    // A decoder for it, which is on the list. Throws ReadFailure if there is none.
    std::unique_ptr<AVCodecContext, void (*)(AVCodecContext*)> openDecoder(const AVStream& stream);

    AVFormatContext& format() const { return *context; }
    const InputFile& bytes() const { return file; }
    // The file gives sound.
    void move() { watch.move(); }
    // Throws what Interrupt::check throws, and ReadFailure if the file has come to a stop.
    void requireMoving() const;

private:
    struct FreeBytes {
        void operator()(AVIOContext* stream) const;
    };
    struct Close {
        void operator()(AVFormatContext* opened) const { avformat_close_input(&opened); }
    };

    static int readBytes(void* input, std::uint8_t* out, int count);
    static std::int64_t seek(void* input, std::int64_t offset, int whence);
    static int isInterrupted(void* input);

    void prepare();
    void open();
    // Throws for a negative result: memory, or else the failure.
    void require(int result, const char* failure) const;

    const ReadRequest request;
    const InputFile file;
    StallWatch watch;
    std::int64_t position = 0;
    std::int64_t furthest = 0;
    std::unique_ptr<AVIOContext, FreeBytes> reader;
    std::unique_ptr<AVFormatContext, Close> context;
};

} // namespace vxlsync

#endif
