#include "match/Evidence.h"

namespace vxlsync
{

namespace
{

// The search looks at some hundred thousand lines about each place, and of so many values of chance
// the highest is about 5; echoes and hum add to it.
constexpr double chanceSignificance = 9.0;
// A tone and its harmonics fill fewer bands of 100 Hz.
constexpr int fewestBands = 6;
// A tone's correlation is as high a period away as on the line.
constexpr double toneSharpness = 1.3;
// A line that fewer windows with sound are on is not what the two have in common.
constexpr double fewestAgreeing = 0.3;

} // namespace

bool standsOutOfChance(const Alignment& line)
{
    return line.significance >= chanceSignificance;
}

bool isEvidence(const Alignment& line)
{
    return standsOutOfChance(line) && line.bands >= fewestBands &&
           line.sharpness >= toneSharpness && line.agreement >= fewestAgreeing;
}

} // namespace vxlsync
