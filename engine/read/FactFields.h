#ifndef VXL_SYNC_FACTFIELDS_H
#define VXL_SYNC_FACTFIELDS_H

#include <cstdint>
#include <string>

#include "model/FileFacts.h"

namespace vxlsync
{

// What a file says in words, fit to be kept: up to its first zero, without control characters and
// blanks at its ends, and no longer than names of devices are.
std::string factText(const std::string& bytes);

// Takes up how many samples after midnight a file begins; nothing but time of day is believed.
void setTimeReference(std::uint64_t samples, std::int64_t rate, FileFacts& facts);

} // namespace vxlsync

#endif
