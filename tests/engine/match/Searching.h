#ifndef VXL_SYNC_TESTS_SEARCHING_H
#define VXL_SYNC_TESTS_SEARCHING_H

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "Measuring.h"
#include "Signals.h"
#include "match/Looking.h"

// Recorders of one event, and a search among them.
namespace searching
{

// From `startSeconds` of the event on, with a noise of the recorder's own.
inline vxlsync::Prepared recorderOf(const std::vector<float>& event, std::size_t startSeconds,
                                    std::size_t seconds, std::uint32_t seed)
{
    return measuring::preparedOf(
        signals::mixed(signals::part(event, startSeconds * signals::rate, seconds * signals::rate),
                       signals::noise(seed, seconds * signals::rate), 0.5f));
}

// By which a group may be made that nothing was measured of.
inline vxlsync::Alignment lineOf(double offset)
{
    vxlsync::Alignment line;
    line.offset = offset;
    return line;
}

struct SearchUnderTest {
    explicit SearchUnderTest(std::vector<vxlsync::Prepared> newRecordings, std::size_t threads = 1,
                             const vxlsync::Callbacks& callbacks = {})
        : recordings(std::move(newRecordings)),
          devices(recordings.size()),
          run(threads, measuring::plenty, callbacks),
          state(recordings, devices, landmarks, run)
    {
    }

    std::vector<vxlsync::Prepared> recordings;
    std::vector<std::string> devices;
    // By pair.
    std::vector<vxlsync::LandmarkOffset> landmarks;
    vxlsync::Run run;
    vxlsync::SearchState state;
};

} // namespace searching

#endif
