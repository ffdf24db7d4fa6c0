#include "panel/Edits.h"

#include "mapping/ParameterOrder.h"
#include "panel/PotChoice.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using panel::Mapping;

/// "a - b | c ! x": a word a pot, '-' an empty one; '|' begins the next page, '!' what is left over behind the pages.
/// Pots that are left out at the end of a page are empty.
Mapping made(const std::string& picture, std::int32_t shownPage = 1)
{
    Mapping mapping;
    mapping.shownPage = shownPage;
    bool isLeftOver = false;
    const auto fillPage = [&mapping, &isLeftOver] {
        while (mapping.entries.size() % 8 != 0 ||
               (!isLeftOver && mapping.entries.size() < static_cast<std::size_t>(mapping.totalPages) * 8))
            mapping.entries.push_back(mapping::emptyEntry(1, 0));
    };
    std::istringstream words(picture);
    for (std::string word; words >> word;) {
        if (word == "|" || word == "!") {
            fillPage();
            mapping.totalPages += word == "|";
            isLeftOver |= word == "!";
        } else {
            mapping.entries.push_back(mapping::entryFromElement(word == "-" ? "-1" : "7 " + word, 1, 0));
        }
    }
    fillPage();
    return mapping;
}

/// The same way, without the empty slots at a page's end.
std::string pictureOf(const Mapping& mapping)
{
    std::string picture;
    std::string gap;
    for (std::size_t position = 0; position < mapping.entries.size(); ++position) {
        if (position > 0 && position % 8 == 0 && position <= static_cast<std::size_t>(mapping.totalPages) * 8) {
            picture += position == static_cast<std::size_t>(mapping.totalPages) * 8 ? " !" : " |";
            gap.clear();
        }
        const auto& entry = mapping.entries[position];
        if (mapping::isEmptyEntry(entry)) {
            gap += " -";
            continue;
        }
        picture += gap + " " + std::string(entry.text(mapping::kParameter));
        gap.clear();
    }
    return picture.empty() ? picture : picture.substr(1);
}

panel::SlotContent content(char letter)
{
    if (letter == '-')
        return {mapping::kEmptyNumber, mapping::kEmptyName};
    return {"7", std::string(1, letter)};
}

std::vector<panel::SlotContent> contents(const std::string& letters)
{
    std::vector<panel::SlotContent> made;
    for (const char letter : letters)
        made.push_back(content(letter));
    return made;
}

TEST(Edits, OnlySlotsOfCountedPagesAreCleared)
{
    Mapping edited = made("a b c | d ! x y");
    panel::clearSlots(edited, std::vector<std::int32_t>{-1, 1, 8, 16, 17, 1000});
    EXPECT_EQ(pictureOf(edited), "a - c | ! x y");
}

TEST(Edits, EmptyPagesAreInsertedBeforeAPageOrBehindTheLast)
{
    struct Row {
        std::int32_t beforePage;
        std::int32_t count;
        const char* after;
    };
    for (const Row& row : {Row{1, 1, "| a | b ! x"}, Row{2, 1, "a | | b ! x"}, Row{3, 2, "a | b | | ! x"}}) {
        Mapping edited = made("a | b ! x");
        panel::insertEmptyPages(edited, row.beforePage, row.count);
        EXPECT_EQ(pictureOf(edited), row.after);
        const auto first = static_cast<std::size_t>(row.beforePage - 1) * 8;
        EXPECT_EQ(edited.entries[first + 7], mapping::emptyEntry(row.beforePage, static_cast<std::int32_t>(first) + 7));
    }
}

TEST(Edits, ContentsAreLaidOnASlotAndTheFollowing)
{
    struct Row {
        const char* before;
        std::int32_t position;
        const char* laid;
        const char* after;
    };
    for (const Row& row : {
             Row{"a b c", 1, "X", "a X c"},
             Row{"a b c", 0, "X-Z", "X - Z"},
             Row{"a b c d e f g h | i", 7, "XY", "a b c d e f g X | Y"},
             Row{"a b c d e f g h", 7, "XYZ", "a b c d e f g X | Y Z"},
             Row{"a ! x", 8, "XYZ", "a | X Y Z ! x"},
             Row{"a ! x", 7, "X12345678-A", "a - - - - - - X | 1 2 3 4 5 6 7 8 | - A ! x"},
             Row{"a ! x", 7, "X---", "a - - - - - - X ! x"}, // no page for empty pots alone
             Row{"a b ! x", 1, "-", "a ! x"},
             Row{"a b ! x", 1, "-----------", "a ! x"},
             Row{"a ! x", 8, "-", "a ! x"},
             Row{"a ! x", 8, "", "a ! x"},
         }) {
        Mapping edited = made(row.before);
        panel::layOn(edited, row.position, contents(row.laid));
        EXPECT_EQ(pictureOf(edited), row.after) << row.before << " at " << row.position << ": " << row.laid;
        EXPECT_EQ(edited.entries.size() % 8, 0u);
    }
}

TEST(Edits, InsertingASlotMovesTheFollowingUpToTheFirstEmptyOne)
{
    struct Row {
        const char* before;
        std::int32_t position;
        const char* after;
    };
    for (const Row& row : {
             Row{"a b - c", 0, "- a b c"},
             Row{"a b - c", 1, "a - b c"},
             Row{"a - b", 1, "a - b"}, // an empty one at the place itself is used up
             Row{"a b c d e f g h | i - k", 6, "a b c d e f - g | h i k"},
             Row{"a b c d e f g h | i ! x", 0, "- a b c d e f g | h i ! x"},
             Row{"a b c d e f g h ! x", 7, "a b c d e f g | h ! x"},
             Row{"a b c d e f g h | i j k l m n o p ! x", 0, "- a b c d e f g | h i j k l m n o | p ! x"},
             Row{"a ! x", 8, "a ! x"},
             Row{"a ! x", -1, "a ! x"},
         }) {
        Mapping edited = made(row.before);
        panel::insertSlot(edited, row.position);
        EXPECT_EQ(pictureOf(edited), row.after) << row.before << " at " << row.position;
        EXPECT_EQ(edited.shownPage, 1);
    }
}

TEST(Edits, RemovingASlotClosesTheGap)
{
    struct Row {
        const char* before;
        std::int32_t position;
        const char* after;
    };
    for (const Row& row : {
             Row{"a b c - d", 0, "b c - - d"},
             Row{"a b c - d", 1, "a c - - d"},
             Row{"- - a b - c", 0, "- a b - - c"},
             Row{"a - - b c - d", 0, "- - b c - - d"},
             Row{"a b c", 2, "a b"},
             Row{"a b c d e f g h | i j - k", 7, "a b c d e f g i | j - - k"},
             Row{"a b c d e f g h | i j k l m n o p ! x", 0, "b c d e f g h i | j k l m n o p ! x"},
             Row{"a b c d e f g h ! x", 7, "a b c d e f g ! x"},
             Row{"a | - ! x", 3, "a | ! x"},
             Row{"a ! x", 8, "a ! x"},
             Row{"a ! x", -1, "a ! x"},
         }) {
        Mapping edited = made(row.before);
        panel::removeSlot(edited, row.position);
        EXPECT_EQ(pictureOf(edited), row.after) << row.before << " at " << row.position;
    }
}

TEST(Edits, ACopyOfThePageComesBehindItAndIsShown)
{
    for (const auto& [shown, after] : {std::pair{1, "a - b | a - b | c ! x"}, std::pair{2, "a - b | c | c ! x"}}) {
        Mapping edited = made("a - b | c ! x", shown);
        panel::duplicatePage(edited);
        EXPECT_EQ(pictureOf(edited), after);
        EXPECT_EQ(edited.shownPage, shown + 1);
    }
}

TEST(Edits, APageThatIsCutGoesAndTheOnlyOneIsEmptied)
{
    struct Row {
        const char* before;
        std::int32_t shown;
        const char* after;
        std::int32_t shownAfter;
    };
    for (const Row& row : {Row{"a | b | c ! x", 1, "b | c ! x", 1}, Row{"a | b | c ! x", 2, "a | c ! x", 2},
                           Row{"a | b | c ! x", 3, "a | b ! x", 2}, Row{"a b ! x", 1, "! x", 1}}) {
        Mapping edited = made(row.before, row.shown);
        panel::cutPage(edited);
        EXPECT_EQ(pictureOf(edited), row.after);
        EXPECT_EQ(edited.shownPage, row.shownAfter);
    }
}

std::vector<std::optional<panel::SlotContent>> found(const std::string& letters)
{
    std::vector<std::optional<panel::SlotContent>> made;
    for (const char letter : letters)
        made.push_back(letter == '?' ? std::nullopt : std::optional(content(letter)));
    return made;
}

TEST(Edits, WhatIsNotOfferedLeavesItsSlotAsItIs)
{
    struct Row {
        const char* before;
        std::int32_t position;
        const char* pasted;
        const char* after;
    };
    for (const Row& row : {
             Row{"a b c d", 1, "X?-Y", "a X c - Y"},
             Row{"a b c d e f g h ! x", 6, "??X", "a b c d e f g h | X ! x"},
             Row{"a b c d e f g h ! x", 6, "X???", "a b c d e f X h ! x"}, // nothing for another page
             Row{"a ! x", 0, "?", "a ! x"},
         }) {
        Mapping edited = made(row.before);
        panel::pasteSlots(edited, row.position, found(row.pasted));
        EXPECT_EQ(pictureOf(edited), row.after) << row.before << " + " << row.pasted;
    }
}

TEST(Edits, PastedPagesComeBehindTheShownOne)
{
    struct Row {
        const char* before;
        std::int32_t shown;
        const char* pasted;
        const char* after;
    };
    for (const Row& row : {
             Row{"a | b ! x", 1, "X?-Y----", "a | X - - Y | b ! x"},
             Row{"a | b ! x", 2, "X-------", "a | b | X ! x"},
             Row{"a ! x", 1, "X-------Y-------", "a | X | Y ! x"},
             Row{"a ! x", 1, "????????", "a | ! x"},
         }) {
        Mapping edited = made(row.before, row.shown);
        panel::pastePages(edited, found(row.pasted));
        EXPECT_EQ(pictureOf(edited), row.after) << row.before << " + " << row.pasted;
        EXPECT_EQ(edited.shownPage, row.shown + 1);
    }
}

TEST(Edits, WhatIsOnNoPotIsLaidBehindTheLastOneThatIs)
{
    const auto list = [](const std::vector<std::string>& elements) {
        std::vector<platform::Record> parameters = {mapping::emptyEntry(0, 0)};
        for (const std::string& element : elements)
            parameters.push_back(mapping::entryFromElement(element, 0, 0));
        return parameters;
    };
    struct Row {
        const char* before;
        std::int32_t shown;
        std::vector<platform::Record> parameters;
        const char* after;
        std::int32_t shownAfter;
    };
    for (const Row& row : {
             Row{"a - c - | ", 1, list({"7 e", "7 a", "7 b"}), "a - c e b | ", 1},
             Row{"a | b ! x", 1, list({"7 x", "7 b", "7 y"}), "a | b x y ! x", 2}, // what is left over is on no pot
             Row{"a b c d e f g h ! x", 1, list({"7 a", "7 i", "7 j"}), "a b c d e f g h | i j ! x", 2},
             Row{"a b c d e f g h | ", 1, list({"7 i"}), "a b c d e f g h | i", 2},
             Row{"", 1, list({"7 a", "8 a", "7 a"}), "a a", 1}, // another number is another parameter
             Row{"a | b", 2, list({"7 b", "7 a"}), "a | b", 2},
             Row{"a | b", 2, list({}), "a | b", 2},
         }) {
        Mapping edited = made(row.before, row.shown);
        panel::mapUnmapped(edited, row.parameters);
        EXPECT_EQ(pictureOf(edited), pictureOf(made(row.after))) << row.before;
        EXPECT_EQ(edited.shownPage, row.shownAfter) << row.before;
    }
}

TEST(Edits, TidyingUpClosesUpAndLeavesThePagesThatAreNeeded)
{
    struct Row {
        const char* before;
        std::int32_t shown;
        const char* after;
        std::int32_t shownAfter;
    };
    for (const Row& row : {
             Row{"- a - b | | c ! x", 1, "a b c ! x", 1},
             Row{"a | b ! x y", 2, "a b ! x y", 1},
             Row{"| | ! x", 3, "! x", 1},
             Row{"", 1, "", 1},
             Row{"a b c d e f g h", 1, "a b c d e f g h", 1},
             Row{"a b c d e - g h | i j k | l m", 3, "a b c d e g h i | j k l m", 2}, // l stays in sight
             Row{"a - b c d e f g | h i j k", 2, "a b c d e f g h | i j k", 1},       // its first one does
             Row{"a b c d e f g h | i | | j", 3, "a b c d e f g h | i j", 2},         // of the empty page the last
             Row{"a b c d e f g h | - i", 2, "a b c d e f g h | i", 2},
         }) {
        Mapping edited = made(row.before, row.shown);
        panel::tidyUp(edited);
        EXPECT_EQ(pictureOf(edited), pictureOf(made(row.after))) << row.before;
        EXPECT_EQ(edited.totalPages, made(row.after).totalPages) << row.before;
        EXPECT_EQ(edited.shownPage, row.shownAfter) << row.before;
    }
}

TEST(PotChoice, MeansPotsOfTheShownPageOrAllOfIt)
{
    using testing::ElementsAre;
    EXPECT_THAT(panel::positionsOf({.focusedPot = 2, .pots = {1, 2}}, 1), ElementsAre(1, 2));
    EXPECT_THAT(panel::positionsOf({.focusedPot = 2, .pots = {2}}, 3), ElementsAre(18));
    EXPECT_THAT(panel::positionsOf({.isPage = true}, 2), ElementsAre(8, 9, 10, 11, 12, 13, 14, 15));
    EXPECT_THAT(panel::positionsOf({}, 2), ElementsAre());
}

} // namespace
