#include "mapping/EditingSnapshot.h"

#include "mapping/ParameterOrder.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

namespace mapping {
namespace {

using Records = std::vector<platform::Record>;

/// Entries named by a letter each, an empty one for "-".
Records recordsOf(const std::string& letters)
{
    Records entries;
    for (const char letter : letters)
        entries.push_back(letter == '-' ? emptyEntry(1, 0) : entryFromElement(std::string("1 ") + letter, 1, 0));
    return entries;
}

struct DifferenceCase {
    const char* before;
    const char* after;
    std::size_t position;
    const char* from;
    const char* to;
};

class Difference : public testing::TestWithParam<DifferenceCase> {};

TEST_P(Difference, GoesBothWaysAndHoldsOnlyWhatLiesBetweenTheDifferingSlots)
{
    const Records before = recordsOf(GetParam().before);
    const Records after = recordsOf(GetParam().after);
    const Splice splice = difference(before, after);
    EXPECT_EQ(splice.position, GetParam().position);
    EXPECT_EQ(splice.before, recordsOf(GetParam().from));
    EXPECT_EQ(splice.after, recordsOf(GetParam().to));
    Records records = before;
    makeAgain(splice, records);
    EXPECT_EQ(records, after);
    takeBack(splice, records);
    EXPECT_EQ(records, before);
}

INSTANTIATE_TEST_SUITE_P(
    All, Difference,
    testing::Values(DifferenceCase{"", "", 0, "", ""}, DifferenceCase{"abcd", "abcd", 4, "", ""},
                    DifferenceCase{"abcd", "abXd", 2, "c", "X"}, DifferenceCase{"abcd", "aXcY", 1, "bcd", "XcY"},
                    DifferenceCase{"abcd", "XYcd", 0, "ab", "XY"}, DifferenceCase{"abcd", "abcdEF", 4, "", "EF"},
                    DifferenceCase{"abcdef", "abef", 2, "cd", ""}, DifferenceCase{"abcd", "", 0, "abcd", ""},
                    DifferenceCase{"", "abcd", 0, "", "abcd"}, DifferenceCase{"aaaa", "aa", 2, "aa", ""},
                    DifferenceCase{"aa", "aaaa", 2, "", "aa"}, DifferenceCase{"abc", "XbcY", 0, "abc", "XbcY"}));

TEST(EditingChange, IsEmptyWhenOnlyThePageShownDiffers)
{
    const auto changeBetween = [](const EditingSnapshot& before, const EditingSnapshot& after) {
        return changeSince(before, after.entries, after.parameters, after.numbers);
    };
    const auto list = [](const char* letters) { return std::make_shared<const Records>(recordsOf(letters)); };
    const EditingSnapshot one{recordsOf("abcdefgh"), list("-ab"), {1, 1, 0}};
    EditingSnapshot other = one;
    other.numbers.curPage = 3;
    EXPECT_TRUE(changeBetween(one, other).isEmpty());
    other.numbers.mode = 1;
    EXPECT_FALSE(changeBetween(one, other).isEmpty());
    other = one;
    other.numbers.totalPages = 2;
    EXPECT_FALSE(changeBetween(one, other).isEmpty());
    other = one;
    other.parameters = list("-a");
    EXPECT_FALSE(changeBetween(one, other).isEmpty());
    EXPECT_EQ(changeBetween(one, other).parametersAfter, other.parameters);
    other = one;
    other.parameters = list("-ab"); // made anew, but the same
    EXPECT_TRUE(changeBetween(one, other).isEmpty());
    EXPECT_EQ(changeBetween(one, other).parametersAfter, nullptr);
    other = one;
    other.entries[2] = emptyEntry(1, 2);
    EXPECT_FALSE(changeBetween(one, other).isEmpty());
}

TEST(DifferingSlots, CountsWhatASaveWouldWriteDifferently)
{
    EXPECT_EQ(differingSlots(recordsOf("abcd"), recordsOf("abcd")), 0u);
    EXPECT_EQ(differingSlots(recordsOf("abcd"), recordsOf("aXc-")), 2u);
    EXPECT_EQ(differingSlots(recordsOf("abcd"), recordsOf("abcd----")), 4u);
    EXPECT_EQ(differingSlots(recordsOf("abcd--"), recordsOf("Xb")), 5u);
    // Both are written as an empty slot, and slots keep page and position of their own.
    Records numbered = recordsOf("a-");
    numbered[1].set(kParamNum, "7");
    numbered[0].set(kKorvelPage, std::int32_t{9});
    EXPECT_EQ(differingSlots(recordsOf("a-"), numbered), 0u);
    numbered[0].set(kParamNum, "2");
    EXPECT_EQ(differingSlots(recordsOf("a-"), numbered), 1u);
}

} // namespace
} // namespace mapping
