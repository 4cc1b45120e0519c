#include "VXFile.h"

#include <algorithm>
#include <cstddef>
#include <iterator>
#include <memory>
#include <memory_resource>

#include "VXLandmark.h"

namespace VXS
{

namespace
{

// What a node of either table takes beside its value: its links and its colour.
constexpr std::uint64_t bytesOfLinks = 4 * sizeof(void*);

// What one peak gives with the default limit, which spares most frames every growth of their list.
constexpr std::size_t usualLandmarks = 12;

} // namespace

VXFile::~VXFile()
{
    for (auto& frame : landmarks) {
        for (VXLandmark* landmark : frame.second)
            delete landmark;
    }
}

void VXFile::addLandmark(VXLandmark* landmark)
{
    if (landmark == nullptr) return;
    std::unique_ptr<VXLandmark> holder(landmark);

    clfDirty = true;
    const std::int64_t offset = landmark->getOffset();
    // Extraction adds frame after frame, so most go to the last one or behind it.
    auto frame = landmarks.empty() ? landmarks.end() : std::prev(landmarks.end());
    if (frame == landmarks.end() || frame->first != offset) {
        frame = landmarks.emplace_hint(landmarks.end(), offset, std::vector<VXLandmark*>());
        frame->second.reserve(usualLandmarks);
    }
    frame->second.push_back(landmark);
    holder.release();
    if (offset >= maxLandmarkOffsetTime) maxLandmarkOffsetTime = offset;
    if (offset <= minLandmarkOffsetTime) minLandmarkOffsetTime = offset;
}

void VXFile::computeCLF()
{
    if (!clfDirty) return;
    if (minLandmarkOffsetTime > maxLandmarkOffsetTime) {
        clfDirty = false;
        return;
    }
    const std::uint64_t span = static_cast<std::uint64_t>(maxLandmarkOffsetTime) -
                               static_cast<std::uint64_t>(minLandmarkOffsetTime);
    // What memory does not hold is refused in one piece, before anything is entered: a span that
    // comes from damaged landmarks would else be walked for minutes before it ends the same way.
    const std::uint64_t frames = span + 1;
    const auto missing = [frames](const auto& table) {
        const std::uint64_t count = frames - std::min<std::uint64_t>(frames, table.size());
        return static_cast<std::size_t>(count * (bytesOfLinks + sizeof(*table.begin())));
    };
    const std::size_t bytes = missing(landmarks) + missing(clf);
    std::pmr::memory_resource* memory = nodes.upstream_resource();
    memory->deallocate(memory->allocate(bytes), bytes);

    std::int64_t total = 0;
    auto frame = landmarks.begin();
    auto count = clf.begin();
    for (std::int64_t t = minLandmarkOffsetTime; t <= maxLandmarkOffsetTime; ++t) {
        // Frames without landmarks get an empty entry, so that every frame of the range can be
        // looked up afterwards.
        if (frame == landmarks.end() || frame->first != t)
            frame = landmarks.emplace_hint(frame, t, std::vector<VXLandmark*>());
        total += static_cast<std::int64_t>(frame->second.size());
        ++frame;
        // A count that stands from an earlier computation stays, also where landmarks were added
        // since: a question asked before and again is answered alike, and only frames outside of
        // the earlier span get new counts.
        if (count == clf.end() || count->first != t) count = clf.emplace_hint(count, t, total);
        ++count;
    }
    clfDirty = false;
}

std::int64_t VXFile::queryNumberLandmarksInBetween(std::int64_t start, std::int64_t end)
{
    if (clfDirty) return -1;

    const auto before = static_cast<std::int64_t>(static_cast<std::uint64_t>(start) - 1u);
    if (before > end || minLandmarkOffsetTime > end || before > maxLandmarkOffsetTime) return 0;

    const std::int64_t upper = clf[std::min(end, maxLandmarkOffsetTime)];
    if (minLandmarkOffsetTime >= start) return std::max<std::int64_t>(upper, 0);
    // Counts that stayed from an earlier computation can make the difference negative.
    return std::max<std::int64_t>(upper - clf[before], 0);
}

} // namespace VXS
