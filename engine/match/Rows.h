#ifndef VXL_SYNC_ROWS_H
#define VXL_SYNC_ROWS_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "match/AlignWorkspace.h"
#include "match/Line.h"
#include "match/Prepared.h"
#include "match/Windows.h"
#include "running/Interrupt.h"

namespace vxlsync
{

// How the phases of all windows agree with a line in one band of bandWidthHertz.
struct BandAgreement {
    // Weighted sum of the cosines over bins and windows: all bins if they agree.
    double sum = 0.0;
    // What its variance would be twice of if the phases were chance and the windows apart.
    double squares = 0.0;
};

constexpr double bandWidthHertz = 100.0;

// Correlations of all windows about a line, a row of lags each, in samples. 1 is a window all of
// whose phases agree.
struct Rows {
    int rate = 0;
    // Lags on either side of the line.
    std::int64_t reach = 0;
    std::vector<float> values;
    // Standard deviation of a value by chance.
    double noise = 0.0;
    std::vector<BandAgreement> bands;

    std::size_t width() const { return static_cast<std::size_t>(2 * reach + 1); }
    std::size_t count() const { return values.size() / width(); }
    const float* row(std::size_t index) const { return values.data() + index * width(); }
    // Seconds from the line to a position within a row.
    double secondsAt(double position) const
    {
        return (position - static_cast<double>(reach)) / rate;
    }
};

struct RowsRequest {
    // In samples.
    std::int64_t reach = 0;
    // Upper end of the band that counts, in Hz.
    double highest = 0.0;
    // Cut the second recording along the line, so that a drifting clock does not blur the windows.
    bool followsClock = false;
};

// Requires recordings of one rate. Throws Cancelled.
Rows correlateWindows(const Prepared& first, const Prepared& second, const Windows& windows,
                      const Line& line, const RowsRequest& request, const Interrupt& interrupt,
                      AlignWorkspace& work);

// A window whose peak is this many times the noise is heard in it: of the lags looked at, chance
// reaches that in one of some hundred.
constexpr double clearOfNoise = 3.5;

// Place, to a fraction, and height of the greatest value.
struct RowPeak {
    double position = 0.0;
    double value = 0.0;
};

// Between two elements of a row, both included.
RowPeak peakOf(const float* row, std::int64_t from, std::int64_t to);

} // namespace vxlsync

#endif
