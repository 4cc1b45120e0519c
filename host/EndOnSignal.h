#ifndef VXL_SYNC_ENDONSIGNAL_H
#define VXL_SYNC_ENDONSIGNAL_H

namespace vxlsync::host
{

// From now on SIGINT and SIGTERM end the process at once, with the codes 130 and 143 that a shell
// would show, and if there is a bar on the terminal they take it away first. Nothing is left behind
// by that: there are no temporary files, and the result is written in one go at the end. A closed
// pipe ends the process too, in silence and as a shell shows it with 141, whatever whoever started
// the program had set.
void endAtOnceOnSignals(bool barOnTerminal);

} // namespace vxlsync::host

#endif
