// Makes a compiler lay out every class of the installed headers as a host does: the classes that a
// host derives from are derived from, and the others are defined.
#include <set>
#include <type_traits>
#include <utility>

#include <vxl_audio/VXClusterSync.h>
#include <vxl_audio/VXClusterSyncParams.h>
#include <vxl_audio/VXExtractParams.h>
#include <vxl_audio/VXFile.h>
#include <vxl_audio/VXFileSet.h>
#include <vxl_audio/VXLandmarkExtract.h>
#include <vxl_audio/wavfile.h>

// Made of the standard library's types, which the baseline leaves out.
using Members = std::set<VXS::VXClusterMember*, VXS::VXClusterMemberOrder>;
static_assert(std::is_same_v<std::set<Members*>*,
                             decltype(std::declval<VXS::VXClusterSync>().run(nullptr, nullptr))>);

class Progress : public VXS::VXProgress
{
public:
    void setStage(int) override {}
    void setFraction(float) override {}
};

class Input : public VXS::VXInput
{
public:
    unsigned int getFrames() override { return 0; }
    bool read_mono(VXS::array<float>&) override { return true; }
    bool rewind() override { return true; }
};

// Defined here, so that their tables of virtual functions are laid out.
void derive()
{
    Progress progress;
    Input input;
    VXS::WavInput file(nullptr);
}

std::size_t sizes()
{
    return sizeof(VXS::VXClusterSync) + sizeof(VXS::VXClusterSyncParams) +
           sizeof(VXS::VXExtractParams) + sizeof(VXS::VXFile) + sizeof(VXS::VXFileSet) +
           sizeof(VXS::VXLandmarkExtract) + sizeof(VXS::Peak) + sizeof(VXS::VXClusterMember) +
           sizeof(VXS::VXClusterMemberOrder) + sizeof(VXS::array<float>) + sizeof(VXS::wavfile_t);
}
