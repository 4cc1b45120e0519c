#ifndef VXL_SYNC_EVIDENCE_H
#define VXL_SYNC_EVIDENCE_H

#include "model/Alignment.h"

namespace vxlsync
{

// True if the windows together stand further out than a place that chance proposes.
bool standsOutOfChance(const Alignment& line);

// True if more than chance, hum or a pure tone must be behind the line.
bool isEvidence(const Alignment& line);

} // namespace vxlsync

#endif
