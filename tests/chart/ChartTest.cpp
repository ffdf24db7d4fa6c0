#include "chart/Chart.h"

#include "mapping/ParameterOrder.h"
#include "tests/support/OrderFiles.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using mapping::mappingOf;

const std::string kGoldenHeader =
    "<html><body><h1>MCU Mapping for 'EQ One'</h1><p>File Location: /Library/EQ "
    "One/CSParameterOrder.plist</p><style>table "
    "{width:100%; border: solid 1px;text-align:left;background-color:grey;} table "
    "th{font-size:85%;background-color:lime;} table "
    "td{font-size:85%;text-align:center;height:50px;width:10%;background-color:white;} "
    "</style><table><tr><th>Section</th><th style='text-align:center;'>Pot 1</th><th style='text-align:center;'>Pot "
    "2</th><th style='text-align:center;'>Pot 3</th><th style='text-align:center;'>Pot 4</th><th "
    "style='text-align:center;'>Pot 5</th><th style='text-align:center;'>Pot 6</th><th "
    "style='text-align:center;'>Pot 7</th><th style='text-align:center;'>Pot 8</th></tr>";

/// The whole document of an order, put together as the panel does.
std::string document(const test::Texts& order)
{
    const auto entries = mappingOf(order);
    std::string text = chart::header("EQ One", "/Library/EQ One/CSParameterOrder.plist");
    for (std::int32_t page = 1; page * 8 <= static_cast<std::int32_t>(entries.size()); ++page)
        chart::appendRow(text, entries, (page - 1) * 8 + 1, page * 8, chart::pageTitle(page));
    chart::appendEnd(text);
    return text;
}

TEST(Chart, OfAOnePageMappingIsTheHeaderRowAndOneRowOfEightCells)
{
    EXPECT_EQ(document({"1 Gain", "-1", "3 Osc 1 Level"}),
              kGoldenHeader +
                  "<tr><th>Page 1 Encoders</th><td>Gain</td><td>-</td><td>Osc 1 Level</td><td>-</td><td>-</td>"
                  "<td>-</td><td>-</td><td>-</td></tr></table></body></html>");
}

TEST(Chart, OfAnEmptyMappingIsARowOfDashes)
{
    EXPECT_EQ(document({}), kGoldenHeader +
                                "<tr><th>Page 1 Encoders</th><td>-</td><td>-</td><td>-</td><td>-</td><td>-</td>"
                                "<td>-</td><td>-</td><td>-</td></tr></table></body></html>");
}

TEST(Chart, OfThreePagesHasARowForEachInOrder)
{
    EXPECT_EQ(
        document(test::numbered(17, "K")),
        kGoldenHeader +
            "<tr><th>Page 1 Encoders</th><td>K 1</td><td>K 2</td><td>K 3</td><td>K 4</td><td>K 5</td><td>K 6</td>"
            "<td>K 7</td><td>K 8</td></tr>"
            "<tr><th>Page 2 Encoders</th><td>K 9</td><td>K 10</td><td>K 11</td><td>K 12</td><td>K 13</td>"
            "<td>K 14</td><td>K 15</td><td>K 16</td></tr>"
            "<tr><th>Page 3 Encoders</th><td>K 17</td><td>-</td><td>-</td><td>-</td><td>-</td><td>-</td><td>-</td>"
            "<td>-</td></tr></table></body></html>");
}

TEST(Chart, NamesStandInTheMarkupAsTheyAre)
{
    const std::string header = chart::header("Tom's <b>R&D</b> 100%", "/a b/\"x\" & %@/50%%");
    EXPECT_TRUE(header.starts_with("<html><body><h1>MCU Mapping for 'Tom's <b>R&D</b> 100%'</h1><p>File Location: "
                                   "/a b/\"x\" & %@/50%%</p><style>"));
    std::string row;
    chart::appendRow(row,
                     mappingOf({"1 <i>A & 'B'", "2 100% \"C\"",
                                "3 \xC3\x89"
                                "cho"}),
                     1, 3, "A & <B>");
    EXPECT_EQ(row, "<tr><th>A & <B></th><td><i>A & 'B'</td><td>100% \"C\"</td><td>\xC3\x89"
                   "cho</td></tr>");
}

TEST(Chart, RowsAreAppendedAndCountFromOneToTheLastIncluded)
{
    const auto entries = mappingOf(test::numbered(16, "K"));
    std::string text = "before";
    chart::appendRow(text, entries, 8, 9, "t");
    EXPECT_EQ(text, "before<tr><th>t</th><td>K 8</td><td>K 9</td></tr>");
    text.clear();
    chart::appendRow(text, entries, 16, 17, "t");
    EXPECT_EQ(text, "<tr><th>t</th><td>K 16</td><td>-</td></tr>");
    text.clear();
    chart::appendRow(text, entries, 2, 1, "t");
    EXPECT_EQ(text, "<tr><th>t</th></tr>");
}

TEST(Chart, TitlesAndEnd)
{
    EXPECT_EQ(chart::pageTitle(1), "Page 1 Encoders");
    EXPECT_EQ(chart::pageTitle(12'500), "Page 12500 Encoders");
    std::string text = "x";
    chart::appendEnd(text);
    EXPECT_EQ(text, "x</table></body></html>");
}

} // namespace
