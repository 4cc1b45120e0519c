#ifndef VXL_SYNC_MEDIALISTS_H
#define VXL_SYNC_MEDIALISTS_H

namespace vxlsync
{

// What is read of all that FFmpeg knows, in its names and with commas between: what recorders,
// phones, cameras, editors and archives of sound write. Left out is what makes sound by program,
// what leads to other files, what has no mark of its own by which it is known, and formats of
// games.
const char* allowedContainers();
const char* allowedCodecs();

} // namespace vxlsync

#endif
