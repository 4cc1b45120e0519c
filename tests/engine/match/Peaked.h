#ifndef VXL_SYNC_TESTS_PEAKED_H
#define VXL_SYNC_TESTS_PEAKED_H

#include <cmath>
#include <vector>

#include "match/Rows.h"

// Windows and rows without sound behind them.
namespace peaked
{

constexpr int rate = 8000;

// One each second of so many seconds, all of one weight.
inline vxlsync::Windows windowsFor(std::size_t seconds)
{
    vxlsync::Windows windows;
    windows.overlap = {0.0, static_cast<double>(seconds)};
    windows.seconds = 1.0;
    for (std::size_t i = 0; i < seconds; ++i) {
        windows.times.push_back(static_cast<double>(i) + 0.5);
        windows.weights.push_back(1.0);
    }
    return windows;
}

// A row for each of the deviations, in samples, with a peak of that height there, as wide as four
// samples.
inline vxlsync::Rows rowsWith(const std::vector<double>& deviations, double height = 0.5,
                              std::int64_t reach = 400)
{
    vxlsync::Rows rows;
    rows.rate = rate;
    rows.reach = reach;
    rows.noise = 0.01;
    for (const double deviation : deviations) {
        for (std::int64_t lag = -reach; lag <= reach; ++lag) {
            const double away = static_cast<double>(lag) - deviation;
            rows.values.push_back(static_cast<float>(
                std::fabs(away) < 2.0 ? height * (1.0 - away * away / 4.0) : 0.0));
        }
    }
    return rows;
}

} // namespace peaked

#endif
