#ifndef VXL_SYNC_WAVEFACTS_H
#define VXL_SYNC_WAVEFACTS_H

#include "model/FileFacts.h"
#include "read/InputFile.h"
#include "read/WaveHeader.h"

namespace vxlsync
{

// What a WAV file says in the chunk of broadcasters and in its list of remarks, before its sound
// and behind it.
FileFacts waveFactsOf(const InputFile& file, const WaveHeader& header);

} // namespace vxlsync

#endif
