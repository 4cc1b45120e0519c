#ifndef VXL_SYNC_SERIESNAME_H
#define VXL_SYNC_SERIESNAME_H

#include <optional>
#include <string>

namespace vxlsync
{

// A file's name as devices give it: they count.
struct SeriesName {
    std::string folder;
    // What stands before the number, and the ending in small letters.
    std::string prefix;
    std::string ending;
    long number = 0;
    // Of files that one take was cut into, from 1; 0 if the name tells of none.
    int chapter = 0;

    bool isOfSeries(const SeriesName& other) const
    {
        return folder == other.folder && prefix == other.prefix && ending == other.ending;
    }
    // True if one of a series comes next after this, with none between.
    bool isFollowedBy(const SeriesName& other) const;
};

// The folder of a file, the same however the path to it is written.
std::string folderOf(const std::string& path);

// Nothing for names that people and programs give: those with small letters, and those of digits
// alone but for films of the kind whose cameras give no others. "GX020042.MP4" is chapter 2 of take
// 42.
std::optional<SeriesName> seriesNameOf(const std::string& path);

} // namespace vxlsync

#endif
