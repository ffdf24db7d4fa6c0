#include "panel/Finding.h"

#include "mapping/ParameterOrder.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace panel {
namespace {

using Page = std::optional<std::int32_t>;

TEST(Finding, TheNextPageIsTheFirstAndThenTheOneAfterTheShownOne)
{
    struct Row {
        std::vector<std::int32_t> positions;
        std::int32_t shown;
        Page next;
    };
    for (const Row& row : {
             Row{{}, 1, {}}, Row{{12}, 1, 2}, // page 2
             Row{{12}, 2, 2},                 // the only one
             Row{{8, 15, 40}, 1, 2},          // pages 2, 2 and 6
             Row{{8, 15, 40}, 2, 6},          //
             Row{{8, 15, 40}, 6, 2},          // from the last the first again
             Row{{8, 15, 40}, 4, 2},          // from between them the first
             Row{{8, 15, 40}, 7, 2},          // and from behind them
             Row{{0, 7, 8, 16, 23}, 1, 2}     //
         })
        EXPECT_EQ(nextPageOf(row.positions, row.shown), row.next) << row.shown;
}

std::string lowered(std::string_view text)
{
    std::string folded(text);
    std::ranges::transform(folded, folded.begin(), [](char c) { return c >= 'A' && c <= 'Z' ? char(c + 32) : c; });
    return folded;
}

TEST(Finding, APageIsMeantByItsNumberOrByHowANameOnItBegins)
{
    std::vector<std::string> order(32, "-1");
    order[3] = "1 Filter Cutoff"; // page 1
    order[8] = "2 Cutoff";        // page 2
    order[9] = "3 808 Decay";
    order[17] = "4 LFO-Rate"; // page 3
    order[18] = "5 \u00c4ther Mix";
    order[25] = "6 Hidden"; // behind the counted pages
    const Entries entries = mapping::mappingOf(mapping::Elements(order));
    struct Row {
        const char* typed;
        Page page;
    };
    for (const Row& row : {
             Row{"1", 1},     Row{" 3 ", 3},       Row{"03", 3},       Row{"0", {}},           Row{"4", {}},
             Row{"-1", {}},   Row{"80", 2},        Row{"fil", 1},      Row{"CUT", 2},          Row{"off", {}},
             Row{"rate", 3},  Row{"mix", 3},       Row{"cutx", {}},    Row{"hid", {}},         Row{"-", {}},
             Row{"", {}},     Row{"  ", {}},       Row{"filter c", 1}, Row{"99999999999", {}}, Row{"\u00c4t", 3},
             Row{"ther", {}}, Row{"808 decay", 2}, Row{"de", 2},
         })
        EXPECT_EQ(pageMeant(row.typed, entries, 3, lowered), row.page) << row.typed;
    EXPECT_EQ(pageMeant("hid", entries, 4, lowered), Page(4));
}

} // namespace
} // namespace panel
