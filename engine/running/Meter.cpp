#include "running/Meter.h"

#include <algorithm>
#include <utility>

namespace vxlsync
{

namespace
{

struct StageShape {
    const char* name;
    // The shares of the whole between which the stage lies.
    double begin;
    double end;
};

// In the order of Stage; from jobs of a few long recordings.
constexpr StageShape shapes[] = {{"Reading", 0.0, 0.27},
                                 {"Landmarks", 0.27, 0.35},
                                 {"Comparing", 0.35, 0.9},
                                 {"Deciding", 0.9, 0.92},
                                 {"Refining", 0.92, 1.0}};

const StageShape& shapeOf(Stage stage)
{
    return shapes[static_cast<std::size_t>(stage)];
}

} // namespace

const char* nameOf(Stage stage)
{
    return shapeOf(stage).name;
}

Meter::Meter(std::function<void(const Progress&)> newListener) : listener(std::move(newListener)) {}

void Meter::begin(Stage newStage, std::size_t newSteps)
{
    const std::lock_guard<std::mutex> lock(guard);
    stage = newStage;
    enter({0.0, 1.0, newSteps});
}

void Meter::part(const StagePart& newPart)
{
    const std::lock_guard<std::mutex> lock(guard);
    enter(newPart);
}

void Meter::step(std::optional<std::size_t> finishedSource)
{
    const std::lock_guard<std::mutex> lock(guard);
    done = std::min(done + 1, stagePart.steps);
    const double share = stagePart.steps > 0
                             ? static_cast<double>(done) / static_cast<double>(stagePart.steps)
                             : 0.0;
    tell(stagePart.begin + share * (stagePart.end - stagePart.begin), finishedSource);
}

void Meter::finish()
{
    const std::lock_guard<std::mutex> lock(guard);
    stage = Stage::refining;
    tell(1.0, std::nullopt);
}

void Meter::enter(const StagePart& newPart)
{
    stagePart = newPart;
    done = 0;
    tell(stagePart.begin, std::nullopt);
}

void Meter::tell(double stageShare, std::optional<std::size_t> finishedSource)
{
    if (!listener) return;
    const StageShape& shape = shapeOf(stage);
    listener(
        {stage, stageShare, shape.begin + stageShare * (shape.end - shape.begin), finishedSource});
}

} // namespace vxlsync
