#ifndef VXL_SYNC_PROGRESSBAR_H
#define VXL_SYNC_PROGRESSBAR_H

#include <iosfwd>
#include <string>

namespace vxlsync
{

// One line on a terminal that tells how far the work is, below whatever else is printed there. All
// that goes to the stream meanwhile must pass through printLine. The bar is gone when the object
// is.
class ProgressBar
{
public:
    // A bar that is not `shown` only prints lines: what is not a terminal keeps everything.
    ProgressBar(std::ostream& newOut, bool newShown);
    ~ProgressBar();
    ProgressBar(const ProgressBar&) = delete;
    ProgressBar& operator=(const ProgressBar&) = delete;

    // Draws the bar at `fraction`, from 0 to 1, of the work called `label`.
    void show(const std::string& label, float fraction);
    // Prints a line of its own above the bar.
    void printLine(const std::string& line);

private:
    void erase();

    std::ostream& out;
    bool shown;
    // What stands on the terminal's last line.
    std::string drawn;
};

// The bar as it looks, in ASCII. Fractions outside 0 to 1 count as the nearer end, NaN as 0.
std::string barText(const std::string& label, float fraction);

} // namespace vxlsync

#endif
