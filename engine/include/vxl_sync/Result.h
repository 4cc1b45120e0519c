#ifndef VXL_SYNC_RESULT_H
#define VXL_SYNC_RESULT_H

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

/// Marks what crosses the boundary of the shared library. The library's own build defines
/// VXL_SYNC_BUILDING, programs that take its objects into themselves define VXL_SYNC_STATIC, and a
/// host defines nothing.
#if defined(_WIN32) && !defined(VXL_SYNC_STATIC)
#if defined(VXL_SYNC_BUILDING)
#define VXL_SYNC_API __declspec(dllexport)
#else
#define VXL_SYNC_API __declspec(dllimport)
#endif
#elif defined(__GNUC__)
#define VXL_SYNC_API __attribute__((visibility("default")))
#else
#define VXL_SYNC_API
#endif

namespace vxlsync
{

/// How it is known what recorded a source.
enum class DeviceEvidence {
    /// It is not.
    none,
    /// The source said it: a rule that nothing overrules. What follows is evidence.
    stated,
    /// The file has a make, a model and a serial number.
    serialNumber,
    /// The file has a make or a model; and others of it in the same folder, if there are any, were
    /// not recorded at the same time.
    model,
    /// The file has the name that its recorder was given.
    originator,
    /// The file's name counts on in a series of its folder.
    names,
};

/// Pictures in a second. Both are positive.
struct FrameRate {
    int numerator = 0;
    int denominator = 1;

    double perSecond() const
    {
        return static_cast<double>(numerator) / static_cast<double>(denominator);
    }
};

/// What is known of one source by itself.
struct SourceFacts {
    /// As the source gave it, or else the file's name without its extension.
    std::string name;
    /// As the source gave it; empty for samples that the host handed over.
    std::string path;
    /// What recorded it: the same name for all that one device recorded. Empty if it is not known.
    std::string device;
    DeviceEvidence deviceKnownBy = DeviceEvidence::none;
    /// When it began by its device's clock, as far as that can be told: in seconds to be compared
    /// with those of the same device.
    std::optional<double> clockStartSeconds;
    /// As the file has it: "2026-06-01T10:00:37+02:00", with "Z" for universal time and without
    /// either if the zone is not known. Devices mean the start of the take or its end.
    std::string creationTime;
    /// Of the first frame, as the file has it: "10:00:37:12".
    std::string timecode;
    /// Of the first sample, since midnight, as broadcast WAV files have it.
    std::optional<double> timeReferenceSeconds;
    /// Of the picture, if there is one.
    std::optional<FrameRate> frameRate;
    /// Where the picture begins, in seconds of the recording.
    std::optional<double> pictureStartSeconds;
    /// Of the whole file, as it says itself.
    std::optional<double> fileSeconds;
    /// Which of the file's audio streams was read, from 1; 0 for samples of the host and for what
    /// could not be read.
    int stream = 0;
    /// Which of its channels was read, from 1; 0 for the mean of all, or where `stream` is 0.
    int channel = 0;
    /// Length of what could be read.
    double durationSeconds = 0.0;
    /// Sentences for the user on what was odd or was mended while reading, and on what its sound
    /// says against a start that was given.
    std::vector<std::string> notes;
};

/// How sure a place is.
enum class Confidence {
    /// Much speaks for it, and for no other.
    certain,
    /// Little speaks for it, or something for another.
    likely,
};

/// One recording in its place. Its sound at time t, in seconds of its own, happened at
/// offsetSeconds + t * (1 + driftPpm / 1e6) on the clock of the group's reference, counted from the
/// start of the earliest recording of its group; or, if starts of the group are known, as they were
/// given: exactly where the reference is one of them.
struct Member {
    /// Index of the source.
    std::size_t source = 0;
    double offsetSeconds = 0.0;
    /// One standard deviation.
    double offsetUncertaintySeconds = 0.0;
    /// Positive if its clock runs slow against the reference. It is 0 without uncertainty for the
    /// reference itself, and where nothing told it: by landmarks alone, and by a known start.
    double driftPpm = 0.0;
    double driftUncertaintyPpm = 0.0;
    Confidence confidence = Confidence::certain;
    /// How much less speaks for the best other place, or for another of those that it hangs
    /// together with: 1 if nothing does, 0 if as much.
    double margin = 1.0;
};

/// Sound that one of two recordings lacks: from `atSeconds` of the first recording on, the offset
/// is greater by `sizeSeconds`.
struct Jump {
    double atSeconds = 0.0;
    double sizeSeconds = 0.0;
};

/// What a link was found by.
enum class Method { landmarks, correlation };

/// Why a link is used or not.
enum class Verdict {
    /// Stands on its own.
    accepted,
    /// Too little on its own, but other links say the same.
    confirmed,
    /// Far less alike than either recording is with another.
    weak,
    /// Another offset fits nearly as well: the sound repeats.
    ambiguous,
    /// Contradicts stronger links.
    contradicted,
    /// The user wants the two apart, or one device would have been in two places at once.
    forbidden,
};

/// What was measured between two recordings. The offset is how much later the second started than
/// the first, on the first's clock, told at middle, start and end of the shared time, since clocks
/// may differ.
struct MeasuredLink {
    /// Indices of the sources, the lower first.
    std::size_t first = 0;
    std::size_t second = 0;
    Method method = Method::correlation;
    double offsetSeconds = 0.0;
    double offsetAtStartSeconds = 0.0;
    double offsetAtEndSeconds = 0.0;
    /// One standard deviation.
    double uncertaintySeconds = 0.0;
    /// Drift of the second less that of the first, in the sense of Member.
    double driftPpm = 0.0;
    double driftUncertaintyPpm = 0.0;
    double overlapSeconds = 0.0;
    /// How far the correlation stands out of its own noise.
    double peakRatio = 0.0;
    /// Share of the phases that agree, 0 to 1.
    double coherence = 0.0;
    /// Share of the windows with sound whose peak lies on the line.
    double agreement = 0.0;
    /// Coherence of the next best offset against that of this one.
    double secondBest = 0.0;
    /// True if one recording is the other upside down.
    bool inverted = false;
    std::vector<Jump> jumps;
    Verdict verdict = Verdict::weak;
    /// The verdict as a phrase for the user.
    std::string reason;
};

/// Two recordings or more that belong together.
struct Group {
    /// Index of the source whose clock counts; one of the members.
    std::size_t reference = 0;
    /// In order of offset.
    std::vector<Member> members;
    std::vector<MeasuredLink> links;
};

/// A place that a source may have, if no other is the right one.
struct CandidatePlace {
    /// Index of the source that tells it.
    std::size_t with = 0;
    /// How much later than that one it starts.
    double offsetSeconds = 0.0;
    /// Seconds of sound that speak for it, each counted by how much more alike than a repeat it is;
    /// at most 0.4 for a second.
    double evidenceSeconds = 0.0;
};

/// A source that has no place, and why: a phrase that goes behind its name and a colon.
struct LeftOut {
    std::size_t source = 0;
    std::string reason;
    /// The best first; none if nothing is known, or nothing is doubtful.
    std::vector<CandidatePlace> candidates = {};
};

/// All that one job found out. Groups stand in the order of their first source, lone and failed
/// sources in the order in which they were given, so that nothing depends on the number of threads.
struct Result {
    /// One for each source, in the order in which they were given.
    std::vector<SourceFacts> sources;
    std::vector<Group> groups;
    /// Read, but in no group.
    std::vector<LeftOut> alone;
    /// Could not be read.
    std::vector<LeftOut> failed;
    /// Links between recordings that are not in one group, and why they were not believed.
    std::vector<MeasuredLink> refusedLinks;
};

/// The words that stand for them in the JSON.
VXL_SYNC_API const char* nameOf(DeviceEvidence evidence);
VXL_SYNC_API const char* nameOf(Method method);
VXL_SYNC_API const char* nameOf(Confidence confidence);
VXL_SYNC_API const char* nameOf(Verdict verdict);

/// The result as one JSON object, ending in a newline, as result.schema.json describes it: version
/// 3. A name or path that is not UTF-8 is escaped so that its bytes can be had back; the schema
/// says how. Throws std::bad_alloc only.
VXL_SYNC_API std::string toJson(const Result& result);

} // namespace vxlsync

#endif
