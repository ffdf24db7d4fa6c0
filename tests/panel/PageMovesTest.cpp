// Parameters that go from page to page, and pages past each other.

#include "panel/PageMoves.h"

#include "mapping/ParameterOrder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

namespace panel {
namespace {

using mapping::kPotsPerPage;

/// A letter a pot; '-' is an empty one.
Mapping made(const std::string& letters, std::int32_t pages, std::int32_t shownPage = 1)
{
    Mapping mapping{{}, pages, shownPage};
    for (const char letter : letters) {
        const auto position = static_cast<std::int32_t>(mapping.entries.size());
        const std::int32_t page = position / kPotsPerPage + 1;
        mapping.entries.push_back(letter == '-'
                                      ? mapping::emptyEntry(page, position)
                                      : mapping::entryFromElement(std::string("7 ") + letter, page, position));
    }
    return mapping;
}

std::string lettersOf(const Mapping& mapping)
{
    std::string letters;
    for (const platform::Record& entry : mapping.entries)
        letters += entry.text(mapping::kParameter);
    return letters;
}

/// Every pot of a page the same letter.
std::string pages(const std::string& letters)
{
    std::string all;
    for (const char letter : letters)
        all += std::string(kPotsPerPage, letter);
    return all;
}

TEST(PageMoves, TheFirstEmptySlotOfAPage)
{
    const Mapping mapping = made("abc-e-gh"
                                 "abcdefgh"
                                 "--------"
                                 "--------",
                                 3);
    EXPECT_EQ(firstEmptySlotOf(mapping, 1), 3);
    EXPECT_EQ(firstEmptySlotOf(mapping, 2), std::nullopt);
    EXPECT_EQ(firstEmptySlotOf(mapping, 3), 16);
    for (const std::int32_t page : {0, -1, 4, 5})
        EXPECT_EQ(firstEmptySlotOf(mapping, page), std::nullopt) << page;
}

TEST(PageMoves, TheFirstEmptySlotFromAPageOn)
{
    const std::string full = "abcdefgh";
    EXPECT_EQ(firstEmptySlotFrom(made("abc-efgh" + full, 2), 1), 3);
    EXPECT_EQ(firstEmptySlotFrom(made(full + full + "abcdefg-", 3), 1), 23);
    EXPECT_EQ(firstEmptySlotFrom(made("-bcdefgh" + full, 2), 2), 16);
    EXPECT_EQ(firstEmptySlotFrom(made(full + "--------", 1), 1), 8); // a page before what is left over
}

TEST(PageMoves, SlotsOfAnyPagesAreExchanged)
{
    Mapping mapping = made("ab------"
                           "-----fg-"
                           "x-------",
                           2);
    exchangeSlots(mapping, 1, 14);
    EXPECT_EQ(lettersOf(mapping), "ag-----------fb-x-------");
    EXPECT_EQ(mapping.entries[14].number(mapping::kKorvelControlNo), 14);
    exchangeSlots(mapping, 0, 8);
    EXPECT_EQ(lettersOf(mapping), "-g------a----fb-x-------");
    for (const auto& [one, other] : {std::pair{0, 16}, {16, 0}, {-1, 0}, {0, 99}})
        exchangeSlots(mapping, one, other);
    EXPECT_EQ(lettersOf(mapping), "-g------a----fb-x-------");
}

TEST(PageMoves, APotMovesToTheFirstEmptyOneOfAPage)
{
    const std::string letters = "abcdefgh"
                                "x-z-----"
                                "--------";
    struct Case {
        std::int32_t position;
        std::int32_t page;
        const char* after;
    };
    for (const Case& each : {Case{2, 2, "ab-defghxcz-------------"}, Case{10, 2, "abcdefghxz--------------"},
                             Case{8, 1, "abcdefghx-z-------------"}, Case{9, 2, "abcdefghx-z-------------"},
                             Case{2, 3, "abcdefghx-z-------------"}, Case{16, 2, "abcdefghx-z-------------"}}) {
        Mapping mapping = made(letters, 2);
        moveToPage(mapping, each.position, each.page);
        EXPECT_EQ(lettersOf(mapping), each.after) << each.position << " to " << each.page;
        EXPECT_EQ(mapping.shownPage, 1);
    }
}

TEST(PageMoves, APageMovesBetweenOthersThatKeepTheirOrder)
{
    struct Case {
        std::int32_t page;
        std::int32_t before;
        const char* after;
    };
    for (const Case& each : {Case{2, 5, "ACDBEx"}, Case{2, 6, "ACDEBx"}, Case{1, 6, "BCDEAx"}, Case{5, 1, "EABCDx"},
                             Case{4, 2, "ADBCEx"}, Case{3, 3, "ABCDEx"}, Case{3, 4, "ABCDEx"}, Case{1, 3, "BACDEx"},
                             Case{0, 2, "ABCDEx"}, Case{6, 2, "ABCDEx"}, Case{2, 7, "ABCDEx"}, Case{2, 0, "ABCDEx"}}) {
        for (std::int32_t shown = 1; shown <= 5; ++shown) {
            Mapping mapping = made(pages("ABCDEx"), 5, shown);
            movePageBefore(mapping, each.page, each.before);
            EXPECT_EQ(lettersOf(mapping), pages(each.after)) << each.page << " before " << each.before;
            EXPECT_EQ(each.after[mapping.shownPage - 1], "ABCDE"[shown - 1])
                << each.page << " before " << each.before << ", shown " << shown;
        }
    }
}

} // namespace
} // namespace panel
