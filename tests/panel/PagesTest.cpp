#include "panel/Pages.h"

#include "mapping/ParameterOrder.h"
#include "tests/support/OrderFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

namespace {

using mapping::emptyEntry;
using mapping::mappingOf;
using panel::Entries;
using platform::Record;
using test::numbered;

Record entry(const std::string& number, const std::string& name, std::int32_t page, std::int32_t controlNo)
{
    return {{"ParamNum", number}, {"Parameter", name}, {"KorvelPage", page}, {"KorvelControlNo", controlNo}};
}

TEST(Pages, SlotsAreCountedFromNoughtEightToAPage)
{
    struct Row {
        std::int32_t page;
        std::int32_t pot;
        std::int32_t slot;
    };
    for (const Row& row : {Row{1, 0, 0}, Row{1, 7, 7}, Row{2, 0, 8}, Row{2, 3, 11}, Row{3, 0, 16}, Row{3, 7, 23},
                           Row{12'500, 7, 99'999}}) {
        EXPECT_EQ(panel::slotFor(row.page, row.pot), row.slot);
        EXPECT_EQ(panel::firstSlotOf(row.page), row.slot - row.pot);
    }
}

TEST(Pages, ReadOutsCountPages)
{
    struct Row {
        std::int32_t page;
        std::int32_t total;
        const char* pageReadOut;
        const char* totalReadOut;
    };
    for (const Row& row :
         {Row{1, 1, "Page 1 of 1", "1 Page"}, Row{1, 2, "Page 1 of 2", "2 Pages"}, Row{2, 3, "Page 2 of 3", "3 Pages"},
          Row{12, 12'500, "Page 12 of 12500", "12500 Pages"}, Row{1, 0, "Page 1 of 0", "0 Page"}}) {
        EXPECT_EQ(panel::pageReadOut(row.page, row.total), row.pageReadOut);
        EXPECT_EQ(panel::totalReadOut(row.total), row.totalReadOut);
    }
}

TEST(Pages, AnAppendedPageCarriesItsNumberAndGoesOnCounting)
{
    Entries entries = mappingOf(numbered(16));
    const Entries before = entries;
    panel::appendPage(entries, 3);
    ASSERT_EQ(entries.size(), 24u);
    EXPECT_EQ(Entries(entries.begin(), entries.begin() + 16), before);
    for (std::size_t position = 16; position < 24; ++position)
        EXPECT_EQ(entries[position], emptyEntry(3, static_cast<std::int32_t>(position)));
}

TEST(Pages, ParametersBehindThemAreCountedWithoutEmptySlots)
{
    auto entries = mappingOf(numbered(20)); // three pages, the last four slots are empty
    EXPECT_EQ(panel::parametersBehind(entries, 0), 20U);
    EXPECT_EQ(panel::parametersBehind(entries, 1), 12U);
    EXPECT_EQ(panel::parametersBehind(entries, 2), 4U);
    EXPECT_EQ(panel::parametersBehind(entries, 3), 0U);
    EXPECT_EQ(panel::parametersBehind(entries, 4), 0U);
}

TEST(SlotContent, IsNumberAndNameAndLeavesTheSlotsPlace)
{
    Record slot = entry("1", "A", 1, 3);
    const Record other = entry("12", "Cutoff Freq", 2, 11);
    const auto content = panel::contentOf(other);
    EXPECT_EQ(content.number, "12");
    EXPECT_EQ(content.name, "Cutoff Freq");
    panel::setContent(slot, content);
    EXPECT_EQ(slot, entry("12", "Cutoff Freq", 1, 3));
}

} // namespace
