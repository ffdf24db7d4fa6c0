// The chart for paper: what stands on it, whatever the names.

#include "chart/PrintedChart.h"

#include "mapping/ParameterOrder.h"
#include "tests/support/OrderFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

namespace {

using mapping::kModeInsertEffect;
using mapping::kModeInstrument;
using mapping::mappingOf;
using platform::PrintedTable;
using test::Texts;
using testing::ElementsAre;

/// A line for each text and each row, cells between bars.
std::string textOf(const PrintedTable& table)
{
    std::string text = table.title + '\n';
    for (const std::string& line : table.lines)
        text += line + '\n';
    auto rows = table.rows;
    rows.insert(rows.begin(), table.header);
    for (const auto& row : rows) {
        for (const std::string& cell : row)
            text += "|" + cell;
        text += '\n';
    }
    return text;
}

std::string repeated(const std::string& text, std::size_t count)
{
    std::string all;
    for (std::size_t i = 0; i < count; ++i)
        all += text;
    return all;
}

std::string shownName(const std::string& name)
{
    return chart::printedChart("EQ", "/EQ", kModeInstrument, mappingOf(Texts{"1 " + name}), 1).rows.at(0).at(1);
}

TEST(PrintedChart, HasNamesOfAnyScriptAsTheyAre)
{
    const PrintedTable table = chart::printedChart(
        "Tom's <b>EQ</b> & Écho", "/Users/José/Library/\"EQ\"/CSParameterOrder.plist", kModeInsertEffect,
        mappingOf(Texts{"1 Gain", "-1", "3 <i>Depth</i> & 'more' &lt;", "4 Écho", "5 תדר חיתוך", "6 تردد القطع",
                        "7 音量", "8 🎛️ Knob 👩‍👩‍👧", "9 100% %1 %@", "10 \"quoted\""}),
        2);
    EXPECT_EQ(textOf(table), test::read(test::Path(KV_TESTS_DIR) / "data/chart/printed.txt"));
}

TEST(PrintedChart, HasARowForEachCountedPageAndNoneForWhatStaysBehindThem)
{
    const auto entries = mappingOf(test::numbered(24, "K"));
    for (const int pages : {1, 2, 3}) {
        const PrintedTable table = chart::printedChart("EQ", "/EQ", kModeInstrument, entries, pages);
        ASSERT_EQ(table.rows.size(), static_cast<std::size_t>(pages));
        EXPECT_EQ(table.rows.back().front(), std::to_string(pages));
        EXPECT_EQ(table.rows.back().back(), "K " + std::to_string(pages * 8));
    }
}

TEST(PrintedChart, TellsTheMode)
{
    for (const auto& [mode, text] :
         {std::pair{kModeInstrument, "Instrument mode"}, std::pair{kModeInsertEffect, "Insert/Effect mode"}})
        EXPECT_THAT(chart::printedChart("EQ", "/EQ", mode, {}, 0).lines, ElementsAre(text, "/EQ"));
}

TEST(PrintedChart, ANameHasOneLineAndAnEnd)
{
    const struct {
        std::string name, shown;
    } table[] = {
        {"two\nlines\r\tand \x01 more\x7F", "two lines  and   more "},
        {"next\u0085line\u2028and\u2029paragraph", "next line and paragraph"},
        {std::string(200, 'x'), std::string(200, 'x')},
        {std::string(201, 'x'), std::string(200, 'x') + "…"},
        {std::string(1'000'000, 'x'), std::string(200, 'x') + "…"},
        {repeated("音", 200), repeated("音", 200)},
        {repeated("音", 201), repeated("音", 200) + "…"},
        {repeated("👩", 300'000), repeated("👩", 200) + "…"},
        {"not \xFFUTF-8", "not \xFFUTF-8"},
    };
    for (const auto& [name, shown] : table)
        EXPECT_EQ(shownName(name), shown) << name.substr(0, 40);
}

TEST(PrintedChart, ItsFileIsNamedAfterThePlugin)
{
    const struct {
        std::string plugin, name;
    } table[] = {
        {"EQ One", "EQ One chart.pdf"},
        {"Écho 音", "Écho 音 chart.pdf"},
        {"../a/b:c", "-.-a-b-c chart.pdf"},
        {".hidden", "-hidden chart.pdf"},
        {"v1.2", "v1.2 chart.pdf"},
        {"two\nlines \xFF", "two-lines - chart.pdf"},
        {std::string(255, 'x'), std::string(200, 'x') + " chart.pdf"},
        {repeated("音", 80), repeated("音", 66) + " chart.pdf"},
        {"", "Chart.pdf"},
    };
    for (const auto& [plugin, name] : table)
        EXPECT_EQ(chart::pdfName(plugin), name);
}

} // namespace
