#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "Console.h"
#include "VXFileSet.h"
#include "VXLandmarkExtract.h"
#include "Wave.h"

// A backslash is a letter of a file's name here, where Windows takes it for a separator.
TEST(BatchExtractionNames, OnlyASlashSeparatesFolders)
{
    const Console console;
    const wave::TempFolder folder;
    const std::string path = folder.write("one\\two.wav", wave::file16({1, 2, 3}));
    VXS::VXLandmarkExtract extractor{VXS::VXExtractParams()};

    const std::unique_ptr<VXS::VXFileSet> fileSet(extractor.runAll({path}));

    EXPECT_EQ((std::map<std::int64_t, std::string>{{1, "one\\two"}}), fileSet->idToName);
}
