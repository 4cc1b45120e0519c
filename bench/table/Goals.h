#ifndef VXS_BENCH_GOALS_H
#define VXS_BENCH_GOALS_H

#include <string>

namespace bench
{

// Each measures one part of the table and prints its rows. `folder` holds music/ and recordings/.
// Where peak memory counts a part needs a process of its own.

// A recording read from its file and extracted, beside the transform and the plain twin.
void measureExtraction(const std::string& folder);
// A file of 44 bytes whose header claims 4 GiB.
void measureClaim(const std::string& folder);
// Eight recordings of ten minutes, beside the plain twin.
void measureSynchronisation(const std::string& folder);
// Eight recordings of an hour, from file to result.
void measureHours(const std::string& folder);
// Few landmarks far apart, beside the plain twin.
void measureFar(const std::string& folder);
// 300 and 1,000 recordings of one minute.
void measureHundreds(const std::string& folder);
void measureMinutes(const std::string& folder);
// 200 recordings of ten minutes.
void measureMany(const std::string& folder);
// How time grows with the length of the recordings and with their number.
void measureLength(const std::string& folder);
void measureNumber(const std::string& folder);
// Other ways to the same end.
void measureOthers(const std::string& folder);

} // namespace bench

#endif
