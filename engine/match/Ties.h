#ifndef VXL_SYNC_TIES_H
#define VXL_SYNC_TIES_H

#include "match/Gathering.h"
#include "match/Looking.h"

namespace vxlsync
{

// True if the best of a pair's links is so clear that the search may build on it: it is less than
// what an accepted link must be where the search can still go wrong, and more where it cannot.
bool isTie(const Links& ofPair);

// Joins what the ties of the book hold together, the clearest first, but for those that a decision
// did not believe.
void gather(const LinkBook& book, Gathering& gathering);

} // namespace vxlsync

#endif
