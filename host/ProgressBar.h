#ifndef VXL_SYNC_PROGRESSBAR_H
#define VXL_SYNC_PROGRESSBAR_H

#include <chrono>
#include <cstddef>
#include <functional>
#include <iosfwd>
#include <optional>
#include <string>
#include <vector>

#include <vxl_sync/Sync.h>

namespace vxlsync::host
{

enum class ProgressMode { bar, plain, json, none };

// Shows people or programs how far the engine is: the stage and its share, the file that was
// finished last, the share of the whole, and the seconds left. One call at a time.
class ProgressBar
{
public:
    // `newPaths` are those of the sources, by index. `newColumns` tells the width of the terminal,
    // which may change, and is asked for a bar only.
    ProgressBar(std::ostream& newOut, ProgressMode newMode, std::vector<std::string> newPaths,
                std::function<std::size_t()> newColumns);
    // Takes the bar away.
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    void show(const Progress& progress);

private:
    void drawBar(const Progress& progress);
    void writePlainLine(const Progress& progress);
    void writeJsonLine(const Progress& progress);
    bool isWorthALine(const Progress& progress, int percentStep);
    void erase();
    double secondsLeft(double share) const;

    std::ostream& out;
    ProgressMode mode;
    std::vector<std::string> paths;
    std::function<std::size_t()> columns;
    std::chrono::steady_clock::time_point start;
    // What the last line was about.
    std::optional<Stage> lineStage;
    int linePercent = 0;
    // What stands on the terminal's last line.
    std::string drawn;
};

// Takes a bar of any width away.
constexpr const char* eraseLine = "\r\x1b[K";

// The bar as it looks, in ASCII. It leaves the last of the columns free, so that it never wraps,
// and gives up its letters first where they are few. Shares outside 0 to 1 count as the nearer end,
// NaN as 0; seconds that are negative or more than eleven days are unknown. The label has at most
// 12 letters.
std::string barText(const std::string& label, double share, double secondsLeft,
                    std::size_t columns);

} // namespace vxlsync::host

#endif
