#include <memory>

#include <gtest/gtest.h>

#include "VXFile.h"
#include "VXLandmarkExtract.h"

namespace
{

// Leaves of each block what a resize leaves that ran out of memory: dimensions without elements.
class BlockLosingSource : public VXS::VXInput
{
public:
    explicit BlockLosingSource(int newLength) : length(newLength) {}

    unsigned int getFrames() override { return 8000; }
    bool read_mono(VXS::array<float>& block) override
    {
        delete[] block.data;
        block.data = nullptr;
        block.dim0 = 1;
        block.dim1 = length;
        return false;
    }
    bool rewind() override { return true; }

private:
    int length;
};

} // namespace

TEST(VXLandmarkExtract, BlockThatASourceHasLostIsHeardAsSilence)
{
    // Shorter than a hop, as long, and longer.
    for (const int length : {100, 256, 700}) {
        BlockLosingSource source(length);
        VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};

        const std::unique_ptr<VXS::VXFile> file(extractor.run(&source, 1));

        EXPECT_TRUE(file->getLandmarkMap().empty()) << length;
    }
}
