#ifndef VXL_SYNC_FILEFACTS_H
#define VXL_SYNC_FILEFACTS_H

#include <optional>
#include <string>

#include "model/DateTime.h"
#include "model/Timecode.h"
#include "vxl_sync/Result.h"

namespace vxlsync
{

// What a file says of itself besides its sound, and what of it was read. Texts are of a bounded
// length, without signs that command a terminal, and empty where the file has none.
struct FileFacts {
    // What recorded it.
    std::string make;
    std::string model;
    std::string serialNumber;
    std::string originator;
    std::string originatorReference;
    // The program that wrote it, often that of the device.
    std::string encoder;

    // When it was made by the clock of what made it. Devices mean the start of the take or its end.
    std::optional<DateTime> created;
    // True if what made it is known to write the time at which a take ends.
    bool isCreatedAtEnd = false;
    // Of its first frame, as it stands in the file.
    std::string timecode;
    // Of its first sample, in seconds since midnight.
    std::optional<double> timeReference;
    // The time that one of these two names.
    std::optional<DayTime> started;

    // The whole of the file, picture included.
    std::optional<double> fileSeconds;
    // Where the picture begins, in seconds of the recording.
    std::optional<double> pictureStart;
    std::optional<FrameRate> frameRate;

    // Of the file's audio streams the one that was read, from 1; 0 for no file.
    int stream = 0;
    // Of its channels the one that was read, from 1; 0 for the mean of all.
    int channel = 0;
};

} // namespace vxlsync

#endif
