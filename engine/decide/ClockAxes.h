#ifndef VXL_SYNC_CLOCKAXES_H
#define VXL_SYNC_CLOCKAXES_H

#include <optional>
#include <vector>

#include "model/Take.h"

namespace vxlsync
{

// Files have most times in whole seconds, and devices look at their clocks up to a second after
// the first sound.
constexpr double clockErrorSeconds = 2.0;

// The takes of one device.
using DeviceTakes = std::vector<const Take*>;
// When each of them began by one of its clocks, in seconds; nothing where that clock says nothing.
using TakeStarts = std::vector<std::optional<double>>;

enum class CreationMeaning { start, end };
// A timecode may count the time that goes by, or be set by the clock on the wall at each take. The
// two are not the same where it has fewer frames a second than its numbers say.
enum class CountMeaning { elapsed, clock };

// By the times of creation. Chapters of one take that all have the time of the first follow each
// other.
TakeStarts createdStarts(const DeviceTakes& takes, CreationMeaning meaning);

// By timecode or time reference: on the axis of the times of creation taken as starts, or, where no
// take has one, as they stand in the files. Nothing where all takes begin with the same count, and
// where they lie so over the day that no one can tell which came first.
TakeStarts countedStarts(const DeviceTakes& takes, CountMeaning meaning);

// True if two takes ran at the same time for longer than the clocks may err.
bool overlap(const DeviceTakes& takes, const TakeStarts& starts);

// True if there are two takes or more and each begins where another ends. That is what chapters do,
// and a timecode that stands still between takes.
bool isWithoutPauses(const DeviceTakes& takes, const TakeStarts& starts);

} // namespace vxlsync

#endif
