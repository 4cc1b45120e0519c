#include "VXPostingLists.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace VXS
{
namespace
{

using ::testing::ElementsAre;
using ::testing::IsEmpty;

template <typename Code>
class VXPostingListsOf : public testing::Test
{
protected:
    // Frames below 16, three files.
    static constexpr VXPostingLayout layout{0, 4, 2};
    static constexpr Code mark = VXPostingLists<Code>::lastOfList;

    static Code code(Code file, Code frame) { return (file << layout.offsetBits) | frame; }

    void enter(const std::vector<Code>& list, std::uint32_t mixedKey)
    {
        std::copy(list.begin(), list.end(), lists.end());
        lists.enter(lists.end() + list.size(), mixedKey);
    }

    std::vector<Code> entered() const
    {
        return {lists.postings.data(), lists.postings.data() + lists.size};
    }

    VXPostingLists<Code> lists{layout, 3, 32};
};

struct BitsOfCode {
    template <typename Code>
    static std::string GetName(int)
    {
        return std::to_string(std::numeric_limits<Code>::digits);
    }
};
using Codes = testing::Types<std::uint32_t, std::uint64_t>;
TYPED_TEST_SUITE(VXPostingListsOf, Codes, BitsOfCode);

TYPED_TEST(VXPostingListsOf, TellFileAndFrameOfACode)
{
    EXPECT_EQ(this->lists.fileOf(this->code(2, 13)), 2u);
    EXPECT_EQ(this->lists.frameOf(this->code(2, 13)), 13);
    EXPECT_EQ(this->lists.frameOf(this->code(1, 0)), 0);
}

TYPED_TEST(VXPostingListsOf, MarkTheLastPostingOfEachListAlone)
{
    this->enter({this->code(0, 9), this->code(1, 5)}, 70);
    this->enter({this->code(0, 1), this->code(0, 2), this->code(2, 3)}, 80);

    EXPECT_THAT(this->entered(),
                ElementsAre(this->code(0, 9), this->code(1, 5) | this->mark, this->code(0, 1),
                            this->code(0, 2), this->code(2, 3) | this->mark));
}

TYPED_TEST(VXPostingListsOf, NoteWhereEachFilesRunsBeginIfTheyHavePartners)
{
    this->enter({this->code(0, 9), this->code(1, 5), this->code(1, 7), this->code(2, 1)}, 70);
    this->enter({this->code(1, 2), this->code(2, 2)}, 80);

    EXPECT_THAT(this->lists.files[0].runs, ElementsAre(0u));
    EXPECT_THAT(this->lists.files[1].runs, ElementsAre(1u, 4u));
    EXPECT_THAT(this->lists.files[2].runs, IsEmpty());
}

TYPED_TEST(VXPostingListsOf, CountTheVotesOfEachPostingOfARunWithEachBehindIt)
{
    this->enter({this->code(0, 1), this->code(0, 2), this->code(1, 3), this->code(1, 4),
                 this->code(1, 5), this->code(2, 6)},
                70);

    EXPECT_EQ(this->lists.files[0].votes, 2u * 4u);
    EXPECT_EQ(this->lists.files[1].votes, 3u * 1u);
    EXPECT_EQ(this->lists.files[2].votes, 0u);
    EXPECT_EQ(this->lists.votes(), 11u);
}

TYPED_TEST(VXPostingListsOf, LeaveOutWhatOneFileAloneHolds)
{
    this->enter({}, 60);
    this->enter({this->code(1, 5)}, 70);
    this->enter({this->code(1, 5), this->code(1, 6)}, 80);

    EXPECT_THAT(this->entered(), IsEmpty());
    EXPECT_THAT(this->lists.listEnds, IsEmpty());
    EXPECT_EQ(this->lists.votes(), 0u);
    EXPECT_FALSE(this->lists.files[1].hasPostings());
}

TYPED_TEST(VXPostingListsOf, KnowTheFirstAndLastCodeOfAFileWithoutTheMark)
{
    this->enter({this->code(0, 9), this->code(2, 5)}, 70);
    this->enter({this->code(0, 3), this->code(2, 11)}, 80);

    EXPECT_EQ(this->lists.files[0].least, this->code(0, 3));
    EXPECT_EQ(this->lists.files[0].greatest, this->code(0, 9));
    EXPECT_EQ(this->lists.files[2].least, this->code(2, 5));
    EXPECT_EQ(this->lists.files[2].greatest, this->code(2, 11));
    EXPECT_TRUE(this->lists.files[2].hasPostings());
    EXPECT_FALSE(this->lists.files[1].hasPostings());
}

TYPED_TEST(VXPostingListsOf, LeadFromAPostingToTheKeyOfItsList)
{
    this->enter({this->code(0, 9), this->code(1, 5)}, 70);
    this->enter({this->code(0, 1), this->code(0, 2), this->code(2, 3)}, 80);

    const std::vector<std::uint32_t> keys = {70, 70, 80, 80, 80};
    for (std::size_t posting = 0; posting < keys.size(); ++posting)
        EXPECT_EQ(this->lists.mixedKeyOf(posting), keys[posting]) << "posting " << posting;
}

} // namespace
} // namespace VXS
