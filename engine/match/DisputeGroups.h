#ifndef VXL_SYNC_DISPUTEGROUPS_H
#define VXL_SYNC_DISPUTEGROUPS_H

#include "match/Looking.h"

namespace vxlsync
{

// Looks where the landmarks see two recordings of one group at another place than the group does,
// the clearest first, so that what speaks against a group's shape is known as well as what speaks
// for it. Takes the meter to a share of the stage. Throws Cancelled.
void lookAtDisputes(double beginShare, double endShare, SearchState& search);

} // namespace vxlsync

#endif
