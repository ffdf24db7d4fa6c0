#include "mapping/MappedPots.h"

#include "mapping/ParameterOrder.h"

#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <random>
#include <string>
#include <vector>

namespace mapping {
namespace {

using Positions = std::vector<std::int32_t>;
using Records = std::vector<platform::Record>;

const platform::Record kCutoff = entryFromElement("3 Cutoff", 0, 0);
const platform::Record kLevel = entryFromElement("4 Level", 0, 0);

Records mapping(std::size_t slots, const std::map<std::size_t, std::string>& elements)
{
    Records entries(slots, emptyEntry(1, 0));
    for (const auto& [position, element] : elements)
        entries[position] = entryFromElement(element, 1, static_cast<std::int32_t>(position));
    return entries;
}

TEST(MappedPots, TellsWhereAParameterStands)
{
    MappedPots pots(parameterList({"3 Cutoff", "4 Level", "5 Pan"}));
    pots.setEntries(mapping(32, {{2, "3 Cutoff"}, {31, "3 Cutoff"}, {9, "4 Level"}, {10, "77 Gone"}}), 4);
    EXPECT_EQ(pots.positionsOf(kCutoff), (Positions{2, 31}));
    EXPECT_EQ(pots.positionsOf(kLevel), Positions{9});
    EXPECT_EQ(pots.positionsOf(entryFromElement("5 Pan", 0, 0)), Positions());
    EXPECT_EQ(pots.positionsOf(entryFromElement("9 Level", 0, 0)), Positions());
    EXPECT_EQ(pots.positionsOf(emptyEntry(0, 0)), Positions());
    EXPECT_TRUE(pots.isOnPot(kLevel));
    EXPECT_FALSE(pots.isOnPot(entryFromElement("5 Pan", 0, 0)));
    EXPECT_FALSE(pots.isOnPot(emptyEntry(0, 0)));
    EXPECT_EQ(pots.mappedCount(), 2);
    EXPECT_EQ(pots.parameterCount(), 3);
}

TEST(MappedPots, AWordMeansAPotOrAPage)
{
    using Range = std::optional<PotRange>;
    struct Row {
        const char* word;
        Range pots;
    };
    for (const Row& row : {
             Row{"1\u00b73", PotRange{2, 2}},
             Row{"1.3", PotRange{2, 2}},
             Row{"2.8", PotRange{15, 15}},
             Row{"p1", PotRange{0, 7}},
             Row{"p12", PotRange{88, 95}},
             Row{"1.9", {}},
             Row{"1.0", {}},
             Row{"0.1", {}},
             Row{"1.", {}},
             Row{".3", {}},
             Row{"1", {}},
             Row{"p", {}},
             Row{"p0", {}},
             Row{"p1.3", {}},
             Row{"p1x", {}},
             Row{"1.33", {}},
             Row{"1.3.", {}},
             Row{"-1.3", {}},
             Row{"p-1", {}},
             Row{"pp1", {}},
             Row{"", {}},
             Row{"268435455.8", PotRange{2147483639, 2147483639}},
             Row{"268435456.1", {}},
             Row{"p99999999999", {}},
         })
        EXPECT_EQ(potsMeant(row.word), row.pots) << row.word;
}

TEST(MappedPots, TellsWhatStandsOnSomeOfThePots)
{
    MappedPots pots(parameterList({"3 Cutoff", "4 Level"}));
    const Records entries = mapping(32, {{2, "3 Cutoff"}, {9, "4 Level"}, {15, "3 Cutoff"}, {24, "4 Level"}});
    pots.setEntries(entries, 3);
    EXPECT_EQ(pots.entriesOn({2, 2}), Records{entries[2]});
    EXPECT_EQ(pots.entriesOn({8, 15}), (Records{entries[9], entries[15]}));
    EXPECT_EQ(pots.entriesOn({3, 8}), Records());
    EXPECT_EQ(pots.entriesOn({24, 31}), Records()) << "behind the counted pages";
    EXPECT_EQ(pots.entriesOn({800, 807}), Records());
}

TEST(MappedPots, PassesOverWhatLiesBehindTheCountedPages)
{
    MappedPots pots(parameterList({"3 Cutoff", "4 Level"}));
    const Records entries = mapping(24, {{2, "3 Cutoff"}, {17, "4 Level"}, {18, "3 Cutoff"}});
    pots.setEntries(entries, 1);
    EXPECT_EQ(pots.positionsOf(kCutoff), Positions{2});
    EXPECT_EQ(pots.positionsOf(kLevel), Positions());
    EXPECT_EQ(pots.mappedCount(), 1);
    pots.setEntries(entries, 3);
    EXPECT_EQ(pots.positionsOf(kCutoff), (Positions{2, 18}));
    EXPECT_EQ(pots.mappedCount(), 2);
}

TEST(MappedPots, CountsTheParametersOfTheListGiven)
{
    struct Row {
        std::vector<std::string> catalogue;
        std::int32_t mapped;
    };
    // A row that stands twice in the list counts twice.
    for (const auto& [catalogue, mapped] :
         {Row{{"3 Cutoff", "4 Level", "3 Cutoff", "5 Pan"}, 3}, Row{{"4 Level"}, 1}, Row{{}, 0}}) {
        MappedPots pots(parameterList(catalogue));
        EXPECT_EQ(pots.mappedCount(), 0);
        pots.setEntries(mapping(8, {{0, "3 Cutoff"}, {1, "4 Level"}}), 1);
        EXPECT_EQ(pots.mappedCount(), mapped);
        EXPECT_EQ(pots.parameterCount(), static_cast<std::int32_t>(catalogue.size()));
    }
}

TEST(MappedPots, AgreesWithAFreshCountAfterAnyEdit)
{
    std::mt19937 random(11);
    std::vector<std::string> catalogue;
    for (int i = 0; i < 12; ++i)
        catalogue.push_back(std::to_string(i) + " Knob " + std::to_string(i));
    MappedPots pots(parameterList(catalogue));
    Records entries = mapping(16, {});
    for (int step = 0; step < 2000; ++step) {
        switch (random() % 8) {
        case 0: entries.insert(entries.end(), 8, emptyEntry(1, 0)); break;
        case 1:
            if (entries.size() > 16)
                entries.erase(entries.begin() + 8, entries.begin() + 16);
            break;
        default: {
            auto& slot = entries[random() % entries.size()];
            slot = random() % 3 == 0 ? emptyEntry(1, 0) : entryFromElement(catalogue[random() % 12], 1, 0);
        }
        }
        const auto pages = static_cast<std::int32_t>(entries.size() / 8 - (random() % 5 == 0 ? 1 : 0));
        pots.setEntries(entries, pages);
        MappedPots fresh(parameterList(catalogue));
        fresh.setEntries(entries, pages);
        ASSERT_EQ(pots.mappedCount(), fresh.mappedCount());
        for (const std::string& element : catalogue) {
            const auto parameter = entryFromElement(element, 0, 0);
            Positions expected;
            for (std::int32_t position = 0; position < pages * 8; ++position)
                if (elementFromEntry(entries[static_cast<std::size_t>(position)]) == element)
                    expected.push_back(position);
            ASSERT_EQ(pots.positionsOf(parameter), expected) << element;
        }
    }
}

TEST(PotsText, NamesPageAndPot)
{
    EXPECT_EQ(potsText({}), "");
    EXPECT_EQ(potsText({0}), "1·1");
    EXPECT_EQ(potsText({2, 31}), "1·3, 4·8");
    EXPECT_EQ(potsText({9999}), "1250·8");
}

} // namespace
} // namespace mapping
