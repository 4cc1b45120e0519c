#include "match/Align.h"

#include <cmath>

#include "match/Judge.h"
#include "match/LineFit.h"
#include "match/LineSearch.h"
#include "match/Overlap.h"
#include "match/Rows.h"
#include "match/Windows.h"

namespace vxlsync
{

namespace
{

// Less is not one window long.
constexpr double shortestWindowedSeconds = 1.0;
// Echoes of pure tones reach so far, in seconds from the line.
constexpr double farthestNeighbourSeconds = 0.05;
// A line that moved by less, in seconds at its ends, needs no further round; three rounds are
// enough for any that settles at all.
constexpr double settledSeconds = 0.1e-3;
constexpr int mostFits = 3;

double signOf(const AlignRequest& request)
{
    return request.sign == 0.0 ? 1.0 : request.sign;
}

Alignment nothingShared(const Overlap& overlap, const AlignRequest& request)
{
    Alignment alignment;
    alignment.start = overlap.start;
    alignment.end = overlap.end;
    alignment.middle = overlap.middle();
    alignment.offset = request.offset;
    alignment.sign = signOf(request);
    return alignment;
}

} // namespace

Alignment align(const Prepared& first, const Prepared& second, const AlignRequest& request,
                const Interrupt& interrupt, AlignWorkspace& work)
{
    const Overlap overlap = overlapOf(first.seconds(), second.seconds(), request.offset);
    if (overlap.seconds() < shortestWindowedSeconds) return nothingShared(overlap, request);
    work.forgetSpectra();
    const Windows windows = placeWindows(first, second, request.offset, request.mostWindows);
    const auto rowsAbout = [&](const Line& line, const RowsRequest& rows) {
        return correlateWindows(first, second, windows, line, rows, interrupt, work);
    };

    const double halfOverlap = overlap.seconds() / 2.0;
    const Line about{overlap.middle(), request.offset, request.slope, signOf(request)};
    FittedLine fitted{about, 0.0, 0.0};
    if (!request.isKnown) {
        const double farthest = request.reach + request.slopeReach * halfOverlap;
        // Two more samples for the neighbours of the last.
        const auto reach = static_cast<std::int64_t>(farthest * first.rate) + 2;
        const SearchRange range{request.reach, request.slopeReach, request.sign == 0.0};
        const FoundLine coarse = searchLine(rowsAbout(about, {reach, request.highest, false}),
                                            windows, about, range, interrupt);
        if (coarse.significance < request.leastSignificance) {
            Alignment alignment = describeLine(windows, coarse.line);
            alignment.significance = coarse.significance;
            return alignment;
        }
        fitted.line = coarse.line;
    }

    const auto nearby = static_cast<std::int64_t>(farthestNeighbourSeconds * first.rate);
    Rows rows;
    double moved = farthestNeighbourSeconds;
    for (int fits = 0; fits < mostFits && moved >= settledSeconds; ++fits) {
        const Line before = fitted.line;
        rows = rowsAbout(before, {nearby, request.highest, true});
        fitted = fitLine(rows, windows, before);
        moved = std::fabs(fitted.line.offset - before.offset) +
                std::fabs(fitted.line.slope - before.slope) * halfOverlap;
    }
    return judgeLine(rows, windows, fitted);
}

} // namespace vxlsync
