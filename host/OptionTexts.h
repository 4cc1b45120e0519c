#ifndef VXL_SYNC_OPTIONTEXTS_H
#define VXL_SYNC_OPTIONTEXTS_H

#include <string>
#include <vector>

#include "Options.h"

namespace vxlsync::host
{

// Options as they are written, for those whose meaning the parser does not know.
struct OptionTexts {
    std::string format = "text";
    std::string progress = "auto";
    std::vector<std::string> channels;
    std::vector<std::string> streams;
    std::string memory;
    // An empty text may have been given, too.
    bool isMemoryGiven = false;
    std::vector<std::string> fixed;
    std::vector<std::string> apart;
    std::vector<std::string> devices;
};

// Takes up channels, streams, the memory and what is told of single recordings. Throws
// CLI::ValidationError, with a sentence, for what cannot be understood.
void readTexts(const OptionTexts& texts, Options& options);

} // namespace vxlsync::host

#endif
