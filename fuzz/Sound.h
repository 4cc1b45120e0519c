#ifndef FUZZ_SOUND_H
#define FUZZ_SOUND_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "Bytes.h"
#include "plain/Extractor.h"

namespace fuzz
{

using Samples = std::vector<float>;

// Reads a piece of sound, of a few dozen bytes at most: silence, a tone, noise, a square wave,
// levels that grow, or the bytes themselves as samples, up to what is not a number.
Samples soundOf(Bytes& bytes, std::size_t mostSamples);

// Reads parameters, from the usual ones to those that only the fields allow, not the setters.
plain::Parameters parametersOf(Bytes& bytes);

// The most samples that a source may claim with these parameters without taking too long. Peaks are
// compared with peaks and bins, so that the length alone does not tell.
std::uint32_t affordableClaim(const plain::Parameters& parameters);

} // namespace fuzz

#endif
