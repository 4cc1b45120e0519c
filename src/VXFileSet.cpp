#include "VXFileSet.h"

#include "VXFile.h"

namespace VXS
{

VXFileSet::VXFileSet() = default;

VXFileSet::~VXFileSet()
{
    for (auto& entry : files)
        delete entry.second;
}

VXFile* VXFileSet::addFile(VXFile* file)
{
    if (file == nullptr) return nullptr;
    lastFileID = file->getFileID();
    files.insert({lastFileID, file});
    return file;
}

void VXFileSet::computeAllCLFs()
{
    for (auto& entry : files) {
        if (entry.second != nullptr) entry.second->computeCLF();
    }
}

} // namespace VXS
