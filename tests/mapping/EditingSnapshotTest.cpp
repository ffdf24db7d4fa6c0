#include "mapping/EditingSnapshot.h"

#include "mapping/ParameterOrder.h"

#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

namespace mapping {
namespace {

using Records = std::vector<platform::Record>;

Records entriesOf(const std::string& letters)
{
    Records entries;
    for (const char letter : letters) {
        const auto position = static_cast<std::int32_t>(entries.size());
        entries.push_back(letter == '-' ? emptyEntry(1, position)
                                        : entryFromElement(std::string("1 ") + letter, 1, position));
    }
    return entries;
}

std::string lettersOf(const Records& entries)
{
    std::string letters;
    for (const auto& entry : entries)
        letters += entry.text(kParameter);
    return letters;
}

struct DifferenceCase {
    const char* before;
    const char* after;
    std::size_t splices;
    std::size_t recordsHeld;
};

class Differences : public testing::TestWithParam<DifferenceCase> {};

TEST_P(Differences, GoBothWaysAndHoldOnlyWhatDiffers)
{
    const auto& [before, after, count, held] = GetParam();
    const Records from = entriesOf(before);
    Records to = entriesOf(after);
    for (std::size_t i = 0; i < to.size(); ++i) // positions and pages belong to the slot
        to[i].set(kKorvelControlNo, std::int32_t{0});
    Records start = from;
    for (auto& record : start)
        record.set(kKorvelControlNo, std::int32_t{0});

    const auto splices = differences(start, to);
    EXPECT_EQ(splices.size(), count);
    std::size_t records = 0;
    for (const auto& splice : splices)
        records += splice.before.size() + splice.after.size();
    EXPECT_EQ(records, held);
    Records there = start;
    makeAgain(splices, there);
    EXPECT_EQ(there, to);
    takeBack(splices, there);
    EXPECT_EQ(there, start);
}

INSTANTIATE_TEST_SUITE_P(All, Differences,
                         testing::Values(DifferenceCase{"", "", 0, 0}, DifferenceCase{"abcd", "abcd", 0, 0},
                                         DifferenceCase{"abcd", "abXd", 1, 2}, DifferenceCase{"abcd", "XbcY", 2, 4},
                                         DifferenceCase{"abcd", "XYcd", 1, 4}, DifferenceCase{"abcd", "abcdEF", 1, 2},
                                         DifferenceCase{"abcdef", "abef", 1, 2}, DifferenceCase{"abcd", "", 1, 4},
                                         DifferenceCase{"", "abcd", 1, 4}, DifferenceCase{"aaaa", "aa", 1, 2},
                                         DifferenceCase{"aa", "aaaa", 1, 2}, DifferenceCase{"abc", "XbcY", 1, 7}));

TEST(EditingChange, GoesThroughRandomEditsAndBack)
{
    std::mt19937 random(7);
    Records state = entriesOf("abcdefgh");
    std::vector<std::pair<Records, std::vector<Splice>>> history;
    for (int step = 0; step < 400; ++step) {
        Records next = state;
        const auto at = static_cast<std::ptrdiff_t>(random() % (next.size() + 1));
        switch (random() % 3) {
        case 0: next.insert(next.begin() + at, random() % 4, emptyEntry(1, 3)); break;
        case 1:
            next.erase(next.begin() + at,
                       next.end() -
                           static_cast<std::ptrdiff_t>(random() % (next.size() + 1 - static_cast<std::size_t>(at))));
            break;
        default:
            if (!next.empty())
                next[random() % next.size()].set(kParameter, std::to_string(random() % 3));
        }
        history.emplace_back(state, differences(state, next));
        state = next;
        if (state.empty())
            state = entriesOf("abc"), history.clear();
    }
    for (; !history.empty(); history.pop_back()) {
        const Records now = state;
        takeBack(history.back().second, state);
        ASSERT_EQ(state, history.back().first);
        Records again = state;
        makeAgain(history.back().second, again);
        ASSERT_EQ(again, now);
    }
}

TEST(EditingChange, IsEmptyWhenOnlyThePageShownDiffers)
{
    const auto changeBetween = [](const EditingSnapshot& before, const EditingSnapshot& after) {
        return changeSince(before, after.entries, after.parameters, after.numbers);
    };
    const auto list = [](const char* letters) { return std::make_shared<const Records>(entriesOf(letters)); };
    const EditingSnapshot one{entriesOf("abcdefgh"), list("-ab"), {1, 1, 0}};
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
    EXPECT_EQ(differingSlots(entriesOf("abcd"), entriesOf("abcd")), 0u);
    EXPECT_EQ(differingSlots(entriesOf("abcd"), entriesOf("aXc-")), 2u);
    EXPECT_EQ(differingSlots(entriesOf("abcd"), entriesOf("abcd----")), 4u);
    EXPECT_EQ(differingSlots(entriesOf("abcd--"), entriesOf("Xb")), 5u);
    // Both are written as an empty slot, and slots keep page and position of their own.
    Records numbered = entriesOf("a-");
    numbered[1].set(kParamNum, "7");
    numbered[0].set(kKorvelPage, std::int32_t{9});
    EXPECT_EQ(differingSlots(entriesOf("a-"), numbered), 0u);
    numbered[0].set(kParamNum, "2");
    EXPECT_EQ(differingSlots(entriesOf("a-"), numbered), 1u);
}

TEST(EntriesOfLetters, AreWhatTheTestsThink)
{
    EXPECT_EQ(lettersOf(entriesOf("ab-")), "ab-");
}

} // namespace
} // namespace mapping
