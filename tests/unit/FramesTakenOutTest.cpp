#include <iterator>
#include <memory>

#include <gtest/gtest.h>

#include "Landmarks.h"
#include "VXFile.h"
#include "VXLandmark.h"

namespace VXS
{
namespace
{

using support::fileWith;

// Takes the last frame of a file out of its map, as a host may, with its one landmark.
void takeOutLastFrame(VXFile& file)
{
    auto& frames = file.getLandmarkMap();
    const auto last = std::prev(frames.end());
    delete last->second.front();
    frames.erase(last);
}

} // namespace

// The bounds stay where they were, so that every frame of them can be looked up all the same.
TEST(VXFile, FrameThatTheHostTookOutCountsNoLandmark)
{
    const auto file = fileWith({10, 13});
    takeOutLastFrame(*file);

    file->computeCLF();

    EXPECT_EQ(4u, file->getLandmarkMap().size());
    EXPECT_EQ(1, file->queryNumberLandmarksInBetween(10, 13));
    EXPECT_EQ(0, file->queryNumberLandmarksInBetween(11, 13));
}

} // namespace VXS
