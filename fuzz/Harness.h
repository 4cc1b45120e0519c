#ifndef FUZZ_HARNESS_H
#define FUZZ_HARNESS_H

#include <cstddef>
#include <cstdint>

// One run of a harness on the bytes of one input. It answers 0, does the same for the same bytes
// each time, and ends the process where the library breaks a promise. The programs that feed it are
// libFuzzer and the replay.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);

namespace fuzz
{

// Ends the process, after a line on the error stream that says what does not hold.
void require(bool holds, const char* what);

} // namespace fuzz

#endif
