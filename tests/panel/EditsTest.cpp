#include "panel/Edits.h"

#include "mapping/ParameterOrder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <string>
#include <vector>

namespace {

using panel::Mapping;

/// "a b - -": a letter a pot, slots left out at a page's end are empty; '|' begins a page, '!' what is left over behind
/// the pages.
Mapping made(const std::string& picture, std::int32_t shownPage = 1)
{
    Mapping mapping;
    mapping.totalPages = 1;
    mapping.shownPage = shownPage;
    bool isLeftOver = false;
    const auto fillPage = [&mapping] {
        while (mapping.entries.size() % 8 != 0)
            mapping.entries.push_back(mapping::emptyEntry(1, 0));
    };
    std::istringstream words(picture);
    for (std::string word; words >> word;) {
        if (word == "|" || word == "!") {
            mapping.totalPages += word == "|";
            isLeftOver |= word == "!";
            if (mapping.entries.empty())
                mapping.entries.push_back(mapping::emptyEntry(1, 0));
            const auto slots = static_cast<std::size_t>(mapping.totalPages - (word == "|")) * 8;
            while (mapping.entries.size() < slots)
                mapping.entries.push_back(mapping::emptyEntry(1, 0));
        } else {
            mapping.entries.push_back(word == "-" ? mapping::emptyEntry(1, 0)
                                                  : mapping::entryFromElement("7 " + word, 1, 0));
        }
    }
    if (!isLeftOver) {
        while (mapping.entries.size() < static_cast<std::size_t>(mapping.totalPages) * 8)
            mapping.entries.push_back(mapping::emptyEntry(1, 0));
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

} // namespace
