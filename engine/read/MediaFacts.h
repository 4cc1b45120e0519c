#ifndef VXL_SYNC_MEDIAFACTS_H
#define VXL_SYNC_MEDIAFACTS_H

extern "C" {
#include <libavformat/avformat.h>
}

#include "model/FileFacts.h"

namespace vxlsync
{

// What a file says in its tags and of its streams. Requires that the streams are known; `sound` is
// the one that is read. The channel is left to the reader.
FileFacts mediaFactsOf(const AVFormatContext& file, const AVStream& sound);

} // namespace vxlsync

#endif
