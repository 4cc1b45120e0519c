#ifndef HOSTILE_OUTCOME_H
#define HOSTILE_OUTCOME_H

#include <cstdint>
#include <string>

#include "VXExtractParams.h"

// What must come of a path.
namespace hostile
{

// The reader's own words, behind "wavfile_t::wavfile_t() : ".
constexpr const char* noRiff = "File doesn't start with 'RIFF'";
constexpr const char* noWave = "File doesn't have 'WAVE' id";
constexpr const char* noFormat = "Could not locate 'fmt ' chunk";
constexpr const char* noData = "Could not locate 'data' chunk";
constexpr const char* badFormat = "WAVE file isn't PCM VXFloat,16-bit or 8-bit, can't read that "
                                  "format";
constexpr const char* noWidth = "Sample width is below 8 bits";
constexpr const char* noChannels = "Channel count is not positive";

enum class Sound {
    // Those of the clean file.
    Clean,
    // None: too short, or silence.
    None,
    // Those that the plain twin finds in what the plain reader delivers.
    AsTwin,
    // Not extracted: the claim is too long for a test of its kind.
    NotSought,
};

struct Outcome {
    // Empty: the file opens.
    std::string message;
    bool hasOtherRate = false;
    std::uint32_t frames = 0;
    Sound sound = Sound::None;
};

// The reader throws the message, and the path is reported and gives null.
Outcome refused(const std::string& message);
// The reader opens it, and the path is reported as of another sample rate and gives null.
Outcome ofOtherRate();
// As if nothing were wrong.
Outcome clean();
Outcome silent(std::uint32_t frames);
Outcome asTwin(std::uint32_t frames);
Outcome tooLong(std::uint32_t frames);

// Opens the path as a reader, through loadFile and through run, compares what comes of it with the
// outcome and, where it opens, sample by sample with the plain reader.
void expectOutcome(const std::string& path, const Outcome& outcome,
                   const VXS::VXExtractParams& params = VXS::VXExtractParams());

// The same through run alone.
void expectRunOutcome(const std::string& path, const Outcome& outcome,
                      const VXS::VXExtractParams& params = VXS::VXExtractParams());

} // namespace hostile

#endif
