#include "mapping/ParameterOrder.h"

#include "tests/support/OrderFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

using namespace mapping;
using platform::Record;
using test::Texts;
using testing::ElementsAre;

Record entry(const std::string& number, const std::string& name, std::int32_t page, std::int32_t controlNo)
{
    return {{"ParamNum", number}, {"Parameter", name}, {"KorvelPage", page}, {"KorvelControlNo", controlNo}};
}

// Elements

TEST(Element, IsSplitAtItsFirstBlank)
{
    struct Row {
        const char* element;
        const char* number;
        const char* name;
    };
    const Row rows[] = {
        {"12 Cutoff Freq", "12", "Cutoff Freq"},
        {"3 Osc 1 Level", "3", "Osc 1 Level"},
        {"0 Mix", "0", "Mix"},
        {"7 ", "7", ""},
        {" Mix", "", "Mix"},
        {" ", "", ""},
        {"7  Mix ", "7", " Mix "},
        {"4 -", "4", "-"},
        {"-1 Odd", "-1", "Odd"},
        {"abc def", "abc", "def"},
        {"7 R&D <b>'\"", "7", "R&D <b>'\""},
        {"8 \xC3\x89"
         "cho d\xE2\x80\x99\xC3\xA9t\xC3\xA9",
         "8",
         "\xC3\x89"
         "cho d\xE2\x80\x99\xC3\xA9t\xC3\xA9"},
        {"9 a\tb\nc", "9", "a\tb\nc"},
    };
    for (const Row& row : rows)
        EXPECT_EQ(entryFromElement(row.element, 2, 11), entry(row.number, row.name, 2, 11)) << row.element;
}

TEST(Element, WithoutABlankIsAnEmptySlot)
{
    for (const char* element : {"-1", "5", "", "-", "Cutoff", "12\tCutoff",
                                "12\xC2\xA0"
                                "Cutoff"})
        EXPECT_EQ(entryFromElement(element, 3, 17), entry("0", "-", 3, 17)) << element;
}

TEST(Element, OfTwoPartsReadsBackToItself)
{
    for (const char* element : {"3 Osc 1 Level", "12 Cutoff Freq", "7 ", " Mix", "7  Mix ", "-1 Odd", "001 x"})
        EXPECT_EQ(elementFromEntry(entryFromElement(element, 1, 0)), element);
}

TEST(Element, WithoutABlankIsWrittenBackAsMinusOne)
{
    for (const char* element : {"-1", "5", "", "Cutoff"})
        EXPECT_EQ(elementFromEntry(entryFromElement(element, 1, 0)), "-1") << element;
}

TEST(Element, OfAnEntryNamedDashIsMinusOneWhateverItsNumber)
{
    EXPECT_EQ(elementFromEntry(entry("7", "-", 1, 0)), "-1");
    EXPECT_EQ(elementFromEntry(entry("0", "-", 1, 0)), "-1");
    EXPECT_EQ(elementFromEntry(entry("", "-", 1, 0)), "-1");
    EXPECT_EQ(elementFromEntry(entry("7", "--", 1, 0)), "7 --");
    EXPECT_EQ(elementFromEntry(entry("7", " -", 1, 0)), "7  -");
}

TEST(Entry, IsEmptyExactlyWhenItsNameIsADash)
{
    EXPECT_TRUE(isEmptyEntry(emptyEntry(1, 0)));
    EXPECT_TRUE(isEmptyEntry(entry("7", "-", 1, 0)));
    EXPECT_FALSE(isEmptyEntry(entry("0", "Mix", 1, 0)));
    EXPECT_FALSE(isEmptyEntry(entry("0", "", 1, 0)));
    EXPECT_EQ(emptyEntry(4, 25), entry("0", "-", 4, 25));
}

TEST(NameAt, IsTheNameOrADashBeyondTheEnd)
{
    const auto entries = mappingOf({"1 One", "-1"});
    EXPECT_EQ(nameAt(entries, 0), "One");
    EXPECT_EQ(nameAt(entries, 1), "-");
    EXPECT_EQ(nameAt(entries, 7), "-");
    EXPECT_EQ(nameAt(entries, 8), "-");
    EXPECT_EQ(nameAt(entries, -1), "-");
    EXPECT_EQ(nameAt({}, 0), "-");
}

// Pages

TEST(PageOfElement, CountsEightToAPage)
{
    struct Row {
        std::int32_t n;
        std::int32_t page;
    };
    for (const Row& row : {Row{1, 1}, Row{8, 1}, Row{9, 2}, Row{16, 2}, Row{17, 3}, Row{24, 3}, Row{25, 4}, Row{0, 1},
                           Row{80'000, 10'000}, Row{80'001, 10'001}})
        EXPECT_EQ(pageOfElement(row.n), row.page) << row.n;
    for (std::int32_t n = 1; n <= 1000; ++n)
        ASSERT_EQ(pageOfElement(n), (n + 7) / 8) << n;
}

struct Padding {
    int elements;
    std::size_t entries;
    std::int32_t pages;
    std::size_t padded;
};

class MappingOf : public testing::TestWithParam<Padding> {};

TEST_P(MappingOf, FillsItsLastPageWithEmptyEntries)
{
    const auto& [elements, size, pages, padded] = GetParam();
    const auto entries = mappingOf(test::numbered(elements));
    ASSERT_EQ(entries.size(), size);
    EXPECT_EQ(size, static_cast<std::size_t>(pages) * 8);
    EXPECT_EQ(size - static_cast<std::size_t>(elements), padded);
    for (std::size_t position = 0; position < size; ++position) {
        const auto index = static_cast<std::int32_t>(position);
        const std::string number = std::to_string(position + 1);
        const bool empty = index >= elements;
        EXPECT_EQ(entries[position], entry(empty ? "0" : number, empty ? "-" : "Knob " + number, index / 8 + 1, index));
    }
}

INSTANTIATE_TEST_SUITE_P(Elements, MappingOf,
                         testing::Values(Padding{0, 8, 1, 8}, Padding{1, 8, 1, 7}, Padding{7, 8, 1, 1},
                                         Padding{8, 8, 1, 0}, Padding{9, 16, 2, 7}, Padding{15, 16, 2, 1},
                                         Padding{16, 16, 2, 0}, Padding{17, 24, 3, 7}, Padding{24, 24, 3, 0}),
                         [](const auto& padding) { return std::to_string(padding.param.elements); });

TEST(Mapping, KeepsEmptySlotsAndRepeatedElementsWhereTheyStand)
{
    const Texts order = {"-1", "7 Mix", "-1", "7 Mix", "5", "9 Gain", "-1", "-1"};
    EXPECT_THAT(orderOf(mappingOf(order)), ElementsAre("-1", "7 Mix", "-1", "7 Mix", "-1", "9 Gain", "-1", "-1"));
}

TEST(OrderOf, WritesEveryEntryTheEmptyOnesAtTheEndIncluded)
{
    auto entries = mappingOf({"4 Drive"});
    for (std::int32_t position = 8; position < 16; ++position)
        entries.push_back(emptyEntry(2, position));
    Texts expected(16, "-1");
    expected.front() = "4 Drive";
    EXPECT_EQ(orderOf(entries), expected);
    EXPECT_EQ(orderOf({}), Texts());
}

// Catalogue

TEST(Catalogue, HoldsEveryParameterOnceBehindALeadingMinusOne)
{
    struct Row {
        Texts order;
        Texts catalogue;
    };
    const Row rows[] = {
        {{}, {"-1"}},
        {{"-1", "-1"}, {"-1"}},
        {{"3 C", "1 A", "2 B"}, {"-1", "3 C", "1 A", "2 B"}},
        {{"1 A", "2 B", "1 A", "-1", "2 B", "3 C"}, {"-1", "1 A", "2 B", "3 C"}},
        {{"1 A", "1 a", "01 A", "1  A", "1 A "}, {"-1", "1 A", "1 a", "01 A", "1  A", "1 A "}},
        {{"5", "5", "", "-1 x", "-"}, {"-1", "5", "", "-1 x", "-"}}, // distinct texts, blank or not
    };
    for (const Row& row : rows)
        EXPECT_EQ(catalogueOf(row.order), row.catalogue);
}

TEST(Catalogue, OfAnOrderThatListsAnElementTwiceHoldsItOnceTheMappingTwice)
{
    const Texts order = {"7 Mix", "9 Gain", "7 Mix"};
    EXPECT_THAT(catalogueOf(order), ElementsAre("-1", "7 Mix", "9 Gain"));
    EXPECT_THAT(orderOf(mappingOf(order)), ElementsAre("7 Mix", "9 Gain", "7 Mix", "-1", "-1", "-1", "-1", "-1"));
}

TEST(ParameterList, IsTheBlankEntryThenTheCataloguesParameters)
{
    EXPECT_THAT(parameterList({"-1", "3 Osc 1 Level", "5", "1 A", "", "1 A"}),
                ElementsAre(entry("0", "-", 0, 0), entry("3", "Osc 1 Level", 0, 0), entry("1", "A", 0, 0),
                            entry("1", "A", 0, 0)));
    EXPECT_THAT(parameterList({}), ElementsAre(entry("0", "-", 0, 0)));
}

TEST(ParameterList, SkipsADashOnlyUnderTheNumberNought)
{
    EXPECT_THAT(parameterList({"0 -", "7 -", "0 Mix"}),
                ElementsAre(entry("0", "-", 0, 0), entry("7", "-", 0, 0), entry("0", "Mix", 0, 0)));
}

// Mode

TEST(Mode, IsNamedByOneAndNoughtOnly)
{
    EXPECT_EQ(modeFromText("1"), 1);
    EXPECT_EQ(modeFromText("0"), 0);
    for (const char* text : {"", "2", "-1", "01", " 1", "1 ", "true", "10", "1.0", "one"})
        EXPECT_EQ(modeFromText(text), std::nullopt) << text;
}

TEST(Mode, IsGuessedFromAnyElementThatSpeaksOfAVolume)
{
    struct Row {
        Texts catalogue;
        std::int32_t mode;
    };
    const Row rows[] = {
        {{"-1", "7 Master Volume"}, 1},
        {{"-1", "7 master volume"}, 1},
        {{"-1", "1 A", "2 Volumes"}, 1},
        {{"-1", "7 MASTER VOLUME"}, 0},
        {{"-1", "7 VoLume"}, 0},
        {{"-1", "7 Volum"}, 0},
        {{"-1", "7 Level"}, 0},
        {{}, 0},
        {{"Volume"}, 1}, // without a blank, too
        {{"-1", "1 olume"}, 1},
    };
    for (const Row& row : rows)
        EXPECT_EQ(guessedMode(row.catalogue), row.mode) << testing::PrintToString(row.catalogue);
}

} // namespace
