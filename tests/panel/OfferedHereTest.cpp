#include "panel/OfferedHere.h"

#include "mapping/ParameterOrder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using panel::SlotContent;
using testing::ElementsAre;

/// Case alone; of accents the platform knows.
std::string lower(std::string_view name)
{
    std::string folded(name);
    std::transform(folded.begin(), folded.end(), folded.begin(),
                   [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c; });
    return folded;
}

const std::vector<platform::Record> kList = mapping::parameterList(
    std::vector<std::string>{"1 Volume", "2 Cutoff", "3 CUTOFF", "4 Drive", "5 Drive", "6 resonance"});

/// "number name" of what is found; "?" for what is not offered.
std::string found(const SlotContent& wanted)
{
    const auto found = panel::offeredHere(std::vector{wanted}, kList, lower);
    EXPECT_EQ(found.size(), 1u);
    return found[0] ? found[0]->number + ' ' + found[0]->name : "?";
}

TEST(OfferedHere, IsWhatHasTheSameNumberAndNameElseTheSameName)
{
    struct Row {
        SlotContent wanted;
        const char* found;
    };
    for (const Row& row : {
             Row{{"5", "Drive"}, "5 Drive"},
             Row{{"9", "Drive"}, "4 Drive"}, // the first
             Row{{"2", "Drive"}, "4 Drive"}, // a number alone is nothing
             Row{{"3", "Cutoff"}, "2 Cutoff"},
             Row{{"9", "CUTOFF"}, "3 CUTOFF"}, // as it is written before as it is folded
             Row{{"9", "cutOff"}, "2 Cutoff"},
             Row{{"6", "Resonance"}, "6 resonance"},
             Row{{"6", "RESONANCE"}, "6 resonance"},
             Row{{"3", "cutOFF"}, "3 CUTOFF"}, // of several that are alike the one with the number
             Row{{"1", "Air"}, "?"},
             Row{{"", ""}, "?"},
             Row{{"0", "-"}, "0 -"},
             Row{{"5", "-"}, "5 -"},
         })
        EXPECT_EQ(found(row.wanted), row.found) << row.wanted.number << ' ' << row.wanted.name;
}

TEST(OfferedHere, CountsTheParametersOfAMappingOnce)
{
    const auto count = [](const std::vector<std::string>& order) {
        const auto counted = panel::countOffered(mapping::mappingOf(order), kList, lower);
        return std::vector{counted.placed, counted.wanted};
    };
    EXPECT_THAT(count({"1 Volume", "4 Drive"}), ElementsAre(2U, 2U));
    EXPECT_THAT(count({"9 cutOFF", "2 Air", "-1", "4 Drive", "4 Drive"}), ElementsAre(2, 3));
    EXPECT_THAT(count({}), ElementsAre(0, 0));
}

TEST(OfferedHere, IsCountedWithoutEmptySlotsAndWhatIsMissingIsNamedOnce)
{
    const std::vector<SlotContent> wanted = {{"1", "Volume"}, {"0", "-"},     {"8", "Drift"},
                                             {"9", "Air"},    {"3", "Drift"}, {"4", "Drive"}};
    const panel::Placed placed = panel::placedOf(wanted, panel::offeredHere(wanted, kList, lower));
    EXPECT_EQ(placed.wanted, 5u);
    EXPECT_EQ(placed.placed, 2u);
    EXPECT_THAT(placed.missing, ElementsAre("Drift", "Air"));
}

TEST(OfferedHere, FoldsNoNameWhereAllAreThereAndEachOnceWhereOneIsNot)
{
    int folds = 0;
    const auto counting = [&folds](std::string_view name) {
        ++folds;
        return std::string(name);
    };
    panel::offeredHere(std::vector<SlotContent>(100, {"4", "Drive"}), kList, counting);
    EXPECT_EQ(folds, 0);
    panel::offeredHere(std::vector<SlotContent>(100, {"4", "Air"}), kList, counting);
    EXPECT_EQ(folds, 6 + 1);
}

} // namespace
