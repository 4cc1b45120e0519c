#ifndef VXL_SYNC_SYNC_H
#define VXL_SYNC_SYNC_H

#include <cstddef>
#include <functional>
#include <optional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "Result.h"

namespace vxlsync
{

/// Which of a file's channels counts.
enum class Channel { left, mix, numbered };

/// One recording to line up: a file, or samples that the host hands over.
struct Source {
    /// Path of a regular file; empty for samples.
    std::string path;
    /// One channel, full scale from -1 to 1, at `sampleRate`. Looked at only if `path` is empty.
    std::vector<float> samples;
    /// In Hz, from leastSampleRate to greatestSampleRate.
    int sampleRate = 0;
    /// What the result calls it; the file's name without its extension if it is empty.
    std::string name;
    /// What recorded it. Recordings that name the same device are never placed at the same time,
    /// and are not compared with each other. If it is empty, what the file says counts as evidence.
    std::string device;
    /// When it started, in seconds on a clock that all known starts share, and on which the offsets
    /// of its group are told. It is taken as it is; where sound disagrees, a note says so.
    std::optional<double> knownStartSeconds;
    /// Which of the file's audio streams and channels count, as in Options; unless set, what those
    /// say.
    std::optional<int> stream;
    std::optional<Channel> channel;
    int channelNumber = 1;
};

constexpr int leastSampleRate = 2000;
constexpr int greatestSampleRate = 768000;
/// Known starts lie within a hundred days of zero.
constexpr double farthestStartSeconds = 100.0 * 24.0 * 3600.0;
/// Less memory would not take a single recording of useful length.
constexpr std::size_t leastMemoryBytes = std::size_t{128} << 20U;

struct Options {
    /// Which of a file's audio streams, from 1; 0 takes the one that players would.
    int stream = 0;
    Channel channel = Channel::left;
    /// From 1, for Channel::numbered.
    int channelNumber = 1;
    /// Read files with the landmark library's own reader, which knows WAV files of 8000 Hz only.
    bool nativeReader = false;
    /// Leave out what files say of when they were recorded.
    bool ignoreClocks = false;
    /// Tell what the landmarks say, to the frame, and nothing more.
    bool landmarksOnly = false;
    /// 0 for one for each processor. No result depends on it.
    std::size_t threads = 0;
    /// Bound of the memory that the job may take; recordings that do not fit fail by name, the
    /// longest first. 0 for three quarters of what the machine has.
    std::size_t memoryBytes = 0;
    /// Pairs of sources, by index, that must not share a group.
    std::vector<std::pair<std::size_t, std::size_t>> apart;
    /// Index of the source whose clock counts in its group; unless set one whose start is known, or
    /// the one best tied.
    std::optional<std::size_t> reference;
};

enum class Stage { reading, landmarks, comparing, deciding, refining };

/// The word for the stage, as a heading: "Reading".
VXL_SYNC_API const char* nameOf(Stage stage);

/// How far a job is.
struct Progress {
    Stage stage = Stage::reading;
    /// From 0 to 1, never falling back within the stage.
    double stageShare = 0.0;
    /// Of the whole, from 0 to 1, never falling back.
    double share = 0.0;
    /// Index of the source that has just been read.
    std::optional<std::size_t> finishedSource;
};

/// What a host may want to be asked and told. Both are called from the job's own threads, one call
/// at a time, and may be empty. What they throw ends the job and passes to the caller.
struct Callbacks {
    std::function<void(const Progress&)> progress;
    /// True to end the job. Asked at least every tenth of a second of work.
    std::function<bool()> isCancelled;
};

/// Callbacks::isCancelled said so.
class VXL_SYNC_API Cancelled : public std::runtime_error
{
public:
    Cancelled();
    ~Cancelled() override;
};

/// Lines up the sources by their sound. A source that cannot be read is told in the result and ends
/// nothing. Throws std::invalid_argument, with a sentence, for sources and options that contradict
/// their contracts; Cancelled, within half a second of it; std::bad_alloc if memory runs out all
/// the same; and what the callbacks throw. The job starts threads and ends them; jobs share
/// nothing, so that any number may run side by side.
///
/// The offsets are those of the generalised cross-correlation with phase transform (C. Knapp and
/// G. Carter, "The Generalized Correlation Method for Estimation of Time Delay", IEEE Transactions
/// on Acoustics, Speech, and Signal Processing, 1976), at places that the landmarks of vxl_audio
/// and the correlation of whole recordings propose.
VXL_SYNC_API Result synchronise(std::vector<Source> sources, const Options& options = {},
                                const Callbacks& callbacks = {});

/// False for a library that was built without FFmpeg and reads WAV files only.
VXL_SYNC_API bool readsAnyMedia();

/// Keeps FFmpeg's libraries from writing to standard error. It holds for the whole process, which
/// is why no job does it by itself.
VXL_SYNC_API void silenceDecoders();

/// Refuses FFmpeg's libraries more than 512 MiB at once, which no recording needs and a damaged one
/// may claim: what wants more fails as if memory had run out. It holds for the whole process too.
VXL_SYNC_API void boundDecoders();

} // namespace vxlsync

#endif
