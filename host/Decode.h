#ifndef VXL_SYNC_DECODE_H
#define VXL_SYNC_DECODE_H

#include <string>

#include "Recording.h"

namespace vxlsync
{

struct DecodeOptions {
    // Which of the file's audio streams, from 1; 0 takes the one that players would.
    int stream = 0;
    enum class Channel { left, mix, numbered };
    Channel channel = Channel::left;
    // From 1, for Channel::numbered.
    int channelNumber = 1;
};

// Keeps the decoders from writing to standard error on their own.
void silenceDecoders();

// Reads the sound of one file, whatever container and codec it is in, and resamples it. A sound
// stands in the result where its file places it: gaps in the times of the packets and a late start
// of the audio are silence, and what an encoder put in front is gone. A file that cannot be read
// gives a recording with `failure` set; one that ends in garbage gives what stands before.
// Throws std::bad_alloc only.
Recording decode(const std::string& path, const DecodeOptions& options);

} // namespace vxlsync

#endif
