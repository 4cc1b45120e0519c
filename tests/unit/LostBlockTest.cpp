#include <memory>

#include <gtest/gtest.h>

#include "Signals.h"
#include "VXFile.h"
#include "VXLandmarkExtract.h"

TEST(VXLandmarkExtract, BlockThatASourceHasLostIsHeardAsSilence)
{
    // Shorter than a hop, as long, and longer.
    for (const int length : {100, 256, 700}) {
        signals::SignalInput source(signals::silence(0), 8000);
        source.onRead = [length](VXS::array<float>& block) {
            delete[] block.data;
            block.data = nullptr;
            block.dim0 = 1;
            block.dim1 = length;
            return false;
        };
        VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};

        const std::unique_ptr<VXS::VXFile> file(extractor.run(&source, 1));

        EXPECT_TRUE(file->getLandmarkMap().empty()) << length;
    }
}
