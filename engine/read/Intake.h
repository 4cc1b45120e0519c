#ifndef VXL_SYNC_INTAKE_H
#define VXL_SYNC_INTAKE_H

#include <cstddef>
#include <cstdint>
#include <vector>

#include "model/Recording.h"
#include "read/Limits.h"
#include "read/Track.h"
#include "running/Run.h"

namespace vxlsync
{

// What was odd about the samples of a source.
struct SampleOddities {
    // Neither broken nor far beyond full scale, and not zero.
    std::int64_t sound = 0;
    // Infinite or no numbers.
    std::int64_t broken = 0;
    // So far beyond full scale that they would spoil what is made of them.
    std::int64_t absurd = 0;
    // The greatest of the absurd ones.
    double peak = 0.0;
};

// Takes the samples of one source as they stand in it and fills the recording, within what the
// file, the memory of the job and the host allow. Where memory runs out it lets the samples go,
// gives back what it took and goes on counting, so that the source's need is known in the end.
class Intake
{
public:
    // All three are borrowed; the recording has no samples. Every sample is multiplied by
    // `newGain`.
    Intake(Recording& newRecording, Run& newRun, const ReadLimits& newLimits, double newGain = 1.0);
    // Gives back the memory that was taken, unless finish() was reached: then the recording has it.
    ~Intake();
    Intake(const Intake&) = delete;
    Intake& operator=(const Intake&) = delete;

    // A file that gives more samples than this is no recording.
    void limitSamples(std::int64_t most) { mostSamples = most; }
    // The rate of what follows. Throws ReadFailure for one that cannot be compared.
    void setRate(std::int64_t newRate);
    // Both require a rate, and throw ReadFailure beyond a limit, and what Interrupt::check throws.
    void append(const double* samples, std::size_t count);
    void appendSilence(std::int64_t count);
    // Nothing may follow. The recording has its length and its loudness afterwards, and no samples
    // if memory ran out.
    void finish();

    // Of sound and silence so far.
    double seconds() const;
    const SampleOddities& oddities() const { return odd; }
    // Memory that the job needs for this source, a function of its sound alone.
    std::size_t bytesNeeded() const;
    // False once memory has run out.
    bool isKept() const { return kept; }

private:
    bool clean(const double* samples, std::size_t count);
    void advance(std::int64_t count);
    void countSound(double from, double to);
    void claimMemory();
    void drop();
    void giveBackMemory();
    void measure();

    Recording& recording;
    Run& run;
    const ReadLimits& limits;
    double gain;
    Track track;
    int rate = 0;
    int rateChanges = 0;
    // Seconds at former rates, and samples at the present one.
    double formerSeconds = 0.0;
    std::int64_t samplesAtRate = 0;
    std::int64_t samplesGiven = 0;
    std::int64_t mostSamples;
    // Whole seconds in which something is heard, and the first that is not yet counted.
    std::int64_t soundSeconds = 0;
    std::int64_t nextSecond = 0;
    std::size_t bytesTaken = 0;
    bool kept = true;
    SampleOddities odd;
    std::vector<float> cleaned;
};

} // namespace vxlsync

#endif
