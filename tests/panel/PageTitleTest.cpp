#include "panel/PageTitle.h"

#include "mapping/ParameterOrder.h"

#include <gtest/gtest.h>

#include <string>
#include <string_view>
#include <vector>

namespace panel {
namespace {

TEST(PageTitle, IsWhatAllNamesBeginWithElseTheFirstName)
{
    struct Row {
        std::vector<std::string_view> names;
        std::string title;
    };
    const std::string twelve = "a b c d e f g h i j k l";
    const std::string more = twelve + " m";
    for (const Row& row : {
             Row{{}, ""},
             Row{{"Cutoff Freq"}, "Cutoff Freq"},
             Row{{"Mix", "Mix", "Mix"}, "Mix"},
             Row{{"Osc 1 Level", "Osc 1 Pan", "Osc 1 Tune"}, "Osc 1"},
             Row{{"Osc 1 Level", "Osc 1 Pan", "Osc 2 Tune"}, "Osc"},
             Row{{"Osc 1", "Osc 10"}, "Osc"}, // half a number
             Row{{"Oscillator 1", "Osc 1"}, "Oscillator 1"},
             Row{{"Osc 1", "Oscillator 1"}, "Osc 1"},
             Row{{"osc 1", "Osc 2"}, "osc 1"}, // other letters
             Row{{"Level", "Osc 1 Pan"}, "Level"},
             Row{{"Osc", "Osc Pan"}, "Osc"}, // one is what the other begins with
             Row{{"Osc Pan", "Osc"}, "Osc"},
             Row{{"1 Level", "1 Pan"}, "1"},
             Row{{"1", "2", "3"}, "1"},
             Row{{"  Osc \t1  Level ", "Osc 1 Pan"}, "Osc 1"}, // blanks
             Row{{"", "  ", "Osc 1", "Osc 2"}, "Osc"},         // no names
             Row{{"", "  "}, ""},
             Row{{"Osc 1: Level", "Osc 1: Pan"}, "Osc 1"}, // signs that lead on
             Row{{"LFO - Rate", "LFO - Depth"}, "LFO"},
             Row{{"LFO \u2013 Rate", "LFO \u2013 Depth"}, "LFO"},
             Row{{"- Rate", "- Depth"}, "- Rate"}, // and nothing else
             Row{{"Gain (dB)", "Gain (dB)"}, "Gain (dB)"},
             Row{{"Größe 1", "Größe 2"}, "Größe"},
             Row{{"滤波器 截止", "滤波器 共振"}, "滤波器"},
             Row{{"滤波器截止", "滤波器共振"}, "滤波器截止"},
             Row{{"é", "è"}, "é"}, // their first bytes are the same
             Row{{more}, twelve},
             Row{{more, more}, twelve},
         })
        EXPECT_EQ(titleOf(row.names), row.title) << (row.names.empty() ? "" : row.names.front());
}

TEST(PageTitle, OfAPageIsThatOfWhatStandsOnItsPots)
{
    std::vector<std::string> order(20, "-1");
    order[1] = "4 Env 1 Attack";
    order[7] = "5 Env 1 Decay";
    order[8] = "6 Env 2 Attack"; // page 2
    order[16] = "7 LFO 1 Rate";  // page 3, which is not whole
    order[19] = "8 LFO 1 Depth";
    Entries entries = mapping::mappingOf(order);
    EXPECT_EQ(pageTitle(entries, 1), "Env 1");
    EXPECT_EQ(pageTitle(entries, 2), "Env 2 Attack");
    EXPECT_EQ(pageTitle(entries, 3), "LFO 1");
    EXPECT_EQ(pageTitle(entries, 4), "");
    clearFirstPage(entries);
    EXPECT_EQ(pageTitle(entries, 1), "");
}

TEST(PageTitle, OfEachOfManyPagesIsItsOwn)
{
    std::vector<std::string> order;
    for (int i = 0; i < 10'000; ++i)
        order.push_back(std::to_string(i) + " Voice " + std::to_string(i / 8) + " Part " + std::to_string(i));
    const Entries entries = mapping::mappingOf(order);
    for (std::int32_t page = 1; page <= 1250; ++page)
        ASSERT_EQ(pageTitle(entries, page), "Voice " + std::to_string(page - 1) + " Part");
}

} // namespace
} // namespace panel
