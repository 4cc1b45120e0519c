#ifndef VXL_SYNC_PROGRESS_H
#define VXL_SYNC_PROGRESS_H

#include <chrono>
#include <iosfwd>
#include <mutex>
#include <string>

namespace vxlsync
{

enum class ProgressMode { bar, plain, json, none };

// Tells people or programs how far the work is: the stage and its share, the file that was finished
// last, the share of the whole, and the seconds left. Any thread may report.
class Progress
{
public:
    Progress(std::ostream& newOut, ProgressMode newMode);
    // Takes the bar away.
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // Work called `label` begins; it makes up the whole from `begin` to `end`, both from 0 to 1.
    void stage(const std::string& label, double begin, double end);
    // The stage is done to `share`. Shares that fall back are passed over.
    void update(double share);
    // The file is done, and the stage to `share`.
    void finishFile(const std::string& path, double share);
    // Prints a line of its own above the bar.
    void printLine(const std::string& line);

private:
    void tell(const std::string& file);
    void erase();
    double secondsLeft() const;

    std::ostream& out;
    ProgressMode mode;
    std::mutex guard;
    std::chrono::steady_clock::time_point start;
    std::string label;
    double stageBegin = 0.0;
    double stageEnd = 0.0;
    double stageShare = 0.0;
    double whole = 0.0;
    int toldPercent = -1;
    // What stands on the terminal's last line.
    std::string drawn;
};

// The bar as it looks, in ASCII. Shares outside 0 to 1 count as the nearer end, NaN as 0; negative
// seconds are unknown.
std::string barText(const std::string& label, double share, double secondsLeft);

} // namespace vxlsync

#endif
