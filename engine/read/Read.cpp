#include "read/Read.h"

#include <algorithm>
#include <new>
#include <numeric>
#include <string>
#include <tuple>

#include "read/Failure.h"
#include "read/Intake.h"
#include "read/ReadWithin.h"
#include "read/Reader.h"
#include "running/Parallel.h"

namespace vxlsync
{

namespace
{

// Of the samples that are heard: more absurd ones than one in so many are no accident, but a file
// that counts in a unit of its own.
constexpr std::int64_t soundForEachAccident = 1000;
// Samples of the host that are taken up between two questions whether to go on.
constexpr std::size_t samplesAtOnce = 65536;

#ifdef VXL_SYNC_FFMPEG
constexpr auto readByDefault = &readMedia;
#else
constexpr auto readByDefault = &readWave;
#endif

struct Reading {
    Recording recording;
    std::size_t bytesNeeded = 0;
    // False if there was no memory for the samples; then they are not there.
    bool isKept = true;
};

// How the samples are to be taken: found out by a first pass, where it is not the usual way.
struct Taking {
    bool bytesAsSigned = false;
    // The sample that becomes full scale.
    double peak = 1.0;
};

// Those of the job with what is told of the source alone.
Options optionsFor(const Source& source, Options options)
{
    options.stream = source.stream.value_or(options.stream);
    if (source.channel) {
        options.channel = *source.channel;
        options.channelNumber = source.channelNumber;
    }
    return options;
}

ReadFindings readSamples(const Source& source, Intake& intake)
{
    intake.setRate(source.sampleRate);
    std::vector<double> block;
    for (std::size_t at = 0; at < source.samples.size(); at += samplesAtOnce) {
        const std::size_t count = std::min(samplesAtOnce, source.samples.size() - at);
        const auto from = source.samples.begin() + static_cast<std::ptrdiff_t>(at);
        block.assign(from, from + static_cast<std::ptrdiff_t>(count));
        intake.append(block.data(), count);
    }
    return {};
}

// Reads the sources of one job, any number at a time.
class SourceReader
{
public:
    SourceReader(const Options& newOptions, Run& newRun, const ReadLimits& newLimits)
        : options(newOptions), run(newRun), limits(newLimits)
    {
    }

    // Whatever goes wrong with the source is its failure.
    Reading read(const Source& source) const
    {
        try {
            Taking taking;
            Reading reading;
            while (!readPass(source, taking, reading))
                reading = Reading();
            return reading;
        } catch (const ReadFailure& failure) {
            return failed(failure.what());
        } catch (const std::bad_alloc&) {
            // Perhaps the host threw it.
            run.interrupt.check();
            return failed(failures::memory);
        }
    }

private:
    static Reading failed(const std::string& failure)
    {
        Reading reading;
        reading.recording.failure = failure;
        return reading;
    }

    // False if the source must be read again, as `taking` says then.
    bool readPass(const Source& source, Taking& taking, Reading& reading) const
    {
        Intake intake(reading.recording, run, limits, 1.0 / taking.peak);
        const ReadFindings findings = giveSound(source, taking, intake);
        if (findings.bytesLookSigned) {
            taking.bytesAsSigned = true;
            return false;
        }
        const SampleOddities& odd = intake.oddities();
        if (odd.absurd * soundForEachAccident > odd.sound) {
            taking.peak = odd.peak;
            return false;
        }
        intake.finish();
        reading.bytesNeeded = intake.bytesNeeded();
        reading.isKept = intake.isKept();

        std::vector<std::string>& remarks = reading.recording.notes;
        remarks = findings.notes;
        reading.recording.facts = findings.facts;
        if (taking.bytesAsSigned) remarks.emplace_back(notes::signedBytes);
        if (taking.peak > 1.0) remarks.push_back(notes::scaledDown(taking.peak));
        const std::int64_t broken = odd.broken + odd.absurd;
        if (broken > 0) remarks.push_back(notes::brokenSamples(broken));
        if (remarks.empty() && intake.seconds() == 0.0) remarks.emplace_back(notes::noSound);
        return true;
    }

    ReadFindings giveSound(const Source& source, const Taking& taking, Intake& intake) const
    {
        if (source.path.empty()) return readSamples(source, intake);
        const Options ofSource = optionsFor(source, options);
        const ReadRequest request{source.path, ofSource, limits, run.interrupt,
                                  taking.bytesAsSigned};
        return options.nativeReader ? readNative(request, intake) : readByDefault(request, intake);
    }

    const Options& options;
    Run& run;
    const ReadLimits& limits;
};

// The readings that were read, those that need least first. The order depends on the sources alone.
std::vector<std::size_t> byNeed(const std::vector<Source>& sources,
                                const std::vector<Reading>& readings)
{
    std::vector<std::size_t> order;
    for (std::size_t i = 0; i < readings.size(); ++i) {
        if (readings[i].recording.failure.empty()) order.push_back(i);
    }
    const auto keyOf = [&](std::size_t index) {
        return std::tie(readings[index].bytesNeeded, sources[index].path);
    };
    std::stable_sort(order.begin(), order.end(), [&](std::size_t left, std::size_t right) {
        return keyOf(left) < keyOf(right);
    });
    return order;
}

// Which of the readings fit into the memory of the job together does not depend on which of them
// found some left. Those that fit and found none are read again, now that there is room.
void fitIntoMemory(const std::vector<Source>& sources, const SourceReader& reader,
                   std::size_t limit, std::vector<Reading>& readings, Run& run)
{
    const std::vector<std::size_t> order = byNeed(sources, readings);
    std::size_t sum = 0;
    std::vector<std::size_t> missing;
    for (const std::size_t index : order) {
        Reading& reading = readings[index];
        sum += reading.bytesNeeded;
        if (sum <= limit && !reading.isKept) missing.push_back(index);
        if (sum > limit && reading.isKept) {
            run.memory.giveBack(reading.bytesNeeded);
            reading.isKept = false;
        }
    }
    for (const std::size_t index : missing)
        readings[index] = reader.read(sources[index]);
    for (const std::size_t index : order) {
        Reading& reading = readings[index];
        if (reading.isKept) continue;
        reading.recording = Recording();
        reading.recording.failure = failures::tooMuchMemory(reading.bytesNeeded, limit);
    }
}

} // namespace

std::vector<Recording> readWithin(const std::vector<Source>& sources, const Options& options,
                                  Run& run, const ReadLimits& limits)
{
    run.meter.begin(Stage::reading, sources.size());
    const std::size_t limit = run.memory.remaining();
    const SourceReader reader(options, run, limits);
    std::vector<Reading> readings(sources.size());
    runParallel(sources.size(), run.threads, [&](std::size_t index, std::size_t /*worker*/) {
        run.interrupt.check();
        readings[index] = reader.read(sources[index]);
        run.meter.step(index);
    });
    fitIntoMemory(sources, reader, limit, readings, run);

    std::vector<Recording> recordings;
    recordings.reserve(readings.size());
    for (Reading& reading : readings)
        recordings.push_back(std::move(reading.recording));
    return recordings;
}

std::vector<Recording> readAll(const std::vector<Source>& sources, const Options& options, Run& run)
{
    return readWithin(sources, options, run, ReadLimits());
}

} // namespace vxlsync
