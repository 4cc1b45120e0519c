#ifndef VXL_SYNC_JUDGE_H
#define VXL_SYNC_JUDGE_H

#include "match/LineFit.h"
#include "match/Rows.h"
#include "match/Windows.h"
#include "model/Alignment.h"

namespace vxlsync
{

// What is known of a line before its windows are looked at along it: no evidence, and windows with
// their times and weights only.
Alignment describeLine(const Windows& windows, const Line& line);

// What speaks for a line. Requires rows about the line that the fit began with, and a reach beyond
// the nearest neighbours that a line is compared with, 1.5 ms.
Alignment judgeLine(const Rows& rows, const Windows& windows, const FittedLine& fitted);

} // namespace vxlsync

#endif
