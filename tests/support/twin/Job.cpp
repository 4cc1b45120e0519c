#include "Job.h"

#include <cstddef>

namespace twins
{

void Job::addFile(std::int64_t id)
{
    fileSet.addFile(new VXS::VXFile(id));
    owned.push_back(std::make_unique<plain::Recording>(id));
    recordings[id] = owned.back().get();
}

void Job::addNothing(std::int64_t id)
{
    fileSet.getFiles()[id] = nullptr;
    recordings[id] = nullptr;
}

void Job::addOutsider(std::int64_t id)
{
    if (outsiders.count(id) == 0) outsiders[id] = std::make_unique<VXS::VXFile>(id);
}

void Job::addLandmark(std::int64_t id, std::int32_t offset, std::uint32_t key)
{
    addStray(id, offset, key, id);
}

void Job::addStray(std::int64_t id, std::int32_t offset, std::uint32_t key,
                   std::optional<std::int64_t> owner)
{
    VXS::VXFile* ownerFile = nullptr;
    if (owner) {
        const auto outsider = outsiders.find(*owner);
        ownerFile =
            outsider == outsiders.end() ? fileSet.getFiles().at(*owner) : outsider->second.get();
    }
    fileSet.getFiles().at(id)->addLandmark(new VXS::VXLandmark(offset, ownerFile, key));
    recordings.at(id)->add({offset, key, owner.value_or(0), owner.has_value()});
}

void Job::countUp(std::int64_t id)
{
    fileSet.getFiles().at(id)->computeCLF();
    recordings.at(id)->countUp();
}

void Job::countUp()
{
    fileSet.computeAllCLFs();
    for (const auto& [id, recording] : recordings) {
        if (recording != nullptr) recording->countUp();
    }
}

std::map<const VXS::VXLandmark*, const plain::Landmark*> Job::twins()
{
    std::map<const VXS::VXLandmark*, const plain::Landmark*> pairs;
    for (const auto& [id, recording] : recordings) {
        if (recording == nullptr) continue;
        VXS::VXFile& file = *fileSet.getFiles().at(id);
        for (const auto& [frame, list] : recording->landmarks) {
            const auto& landmarks = file.getLandmarkMap().at(frame);
            for (std::size_t i = 0; i < list.size(); ++i)
                pairs[landmarks.at(i)] = &list[i];
        }
    }
    return pairs;
}

} // namespace twins
