#include "mapping/MappingFile.h"

#include "mapping/ParameterOrder.h"
#include "tests/support/OrderFiles.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

namespace {

namespace plist = platform::plist;
using namespace mapping;
using test::Texts;
using testing::ElementsAre;

plist::Array arrayOf(const Texts& texts)
{
    return plist::Array(texts.begin(), texts.end());
}

/// The names offered for assignment.
Texts offered(const LoadedMapping& loaded)
{
    Texts names;
    for (const auto& parameter : loaded.parameters)
        names.emplace_back(parameter.text("Parameter"));
    return names;
}

// Loading

TEST(LoadMapping, OfAnEmptyFileIsOnePageOfEmptyEntries)
{
    const LoadedMapping loaded = loadMapping({}, std::nullopt);
    EXPECT_EQ(orderOf(loaded.entries), Texts(8, "-1"));
    EXPECT_EQ(loaded.totalPages, 1);
    EXPECT_EQ(loaded.mode, 0);
    EXPECT_THAT(loaded.parameters, ElementsAre(emptyEntry(0, 0)));
}

TEST(LoadMapping, TakesTheParametersFromTheCatalogueAndTheMappingFromTheOrder)
{
    plist::Dictionary file = test::orderFile({"2 B", "-1", "2 B"});
    file.set("KorvelCSUnique", arrayOf({"-1", "1 A", "2 B", "3 C"}));
    const LoadedMapping loaded = loadMapping(file, std::nullopt);
    EXPECT_THAT(offered(loaded), ElementsAre("-", "A", "B", "C"));
    EXPECT_THAT(orderOf(loaded.entries), ElementsAre("2 B", "-1", "2 B", "-1", "-1", "-1", "-1", "-1"));
}

TEST(LoadMapping, WithoutACatalogueOffersTheBlankEntryAlone)
{
    EXPECT_THAT(offered(loadMapping(test::orderFile({"1 A", "2 B"}), std::nullopt)), ElementsAre("-"));
}

TEST(LoadMapping, CountsPages)
{
    struct Row {
        int elements;
        std::int32_t pages;
    };
    for (const Row& row : {Row{0, 1}, Row{1, 1}, Row{8, 1}, Row{9, 2}, Row{16, 2}, Row{17, 3}, Row{80, 10}}) {
        const LoadedMapping loaded = loadMapping(test::orderFile(test::numbered(row.elements)), std::nullopt);
        EXPECT_EQ(loaded.totalPages, row.pages) << row.elements;
        EXPECT_EQ(loaded.entries.size(), static_cast<std::size_t>(row.pages) * 8) << row.elements;
    }
}

TEST(LoadMapping, ReadsWhatIsNoArrayAsMissingAndWhatIsNoTextAsAnEmptySlot)
{
    plist::Dictionary file;
    file.set("ControlSurfaceParameterOrder", plist::Array{"1 A", plist::Integer(5), "2 B", plist::Array{}});
    file.set("KorvelCSUnique", "1 A");
    file.set("KorvelCSMode", "1");
    const LoadedMapping loaded = loadMapping(file, std::nullopt);
    EXPECT_THAT(orderOf(loaded.entries), ElementsAre("1 A", "-1", "2 B", "-1", "-1", "-1", "-1", "-1"));
    EXPECT_THAT(offered(loaded), ElementsAre("-"));
    EXPECT_EQ(loaded.mode, 0);
}

// Mode

struct ModeRow {
    const char* name;
    std::optional<plist::Value> recorded;
    std::int32_t withVolume;    ///< the mode loaded where the catalogue speaks of a volume
    std::int32_t withoutVolume; ///< and where it does not
};

class RecordedMode : public testing::TestWithParam<ModeRow> {};

TEST_P(RecordedMode, DecidesOrElseTheCatalogueDoes)
{
    const ModeRow& row = GetParam();
    plist::Dictionary file;
    if (row.recorded)
        file.set("KorvelCSMode", *row.recorded);
    file.set("KorvelCSUnique", arrayOf({"-1", "7 Master Volume"}));
    EXPECT_EQ(loadMapping(file, std::nullopt).mode, row.withVolume);
    file.set("KorvelCSUnique", arrayOf({"-1", "7 Cutoff"}));
    EXPECT_EQ(loadMapping(file, std::nullopt).mode, row.withoutVolume);
}

const ModeRow kModes[] = {
    {"TextOne", plist::Array{"1"}, 1, 1},
    {"TextNought", plist::Array{"0"}, 0, 0},
    {"NumberOne", plist::Array{plist::Integer(1)}, 1, 1},
    {"NumberNought", plist::Array{plist::Integer(0)}, 0, 0},
    {"True", plist::Array{true}, 1, 1},
    {"False", plist::Array{false}, 0, 0},
    {"FirstOfSeveral", plist::Array{"0", "1"}, 0, 0},
    {"TextTwo", plist::Array{"2"}, 1, 0},
    {"NumberTwo", plist::Array{plist::Integer(2)}, 1, 0},
    {"MinusOne", plist::Array{plist::Integer(-1)}, 1, 0},
    {"EmptyText", plist::Array{""}, 1, 0},
    {"Word", plist::Array{"instrument"}, 1, 0},
    {"ArrayInArray", plist::Array{plist::Array{"1"}}, 1, 0},
    {"EmptyArray", plist::Array{}, 1, 0},
    {"NoArray", plist::Value("0"), 1, 0},
    {"Missing", std::nullopt, 1, 0},
};

INSTANTIATE_TEST_SUITE_P(Values, RecordedMode, testing::ValuesIn(kModes),
                         [](const auto& row) { return std::string(row.param.name); });

TEST(Mode, RecordedAsInstrumentNeedsNoParameterThatSpeaksOfAVolume)
{
    plist::Dictionary file = test::orderFile({"1 Cutoff"});
    file.set("KorvelCSUnique", arrayOf({"-1", "1 Cutoff"}));
    file.set("KorvelCSMode", plist::Array{"1"});
    EXPECT_EQ(loadMapping(file, std::nullopt).mode, 1);
}

TEST(Mode, ThatIsKeptIgnoresTheFilesOwn)
{
    plist::Dictionary file = test::orderFile({});
    file.set("KorvelCSMode", plist::Array{"1"});
    file.set("KorvelCSUnique", arrayOf({"-1", "7 Master Volume"}));
    EXPECT_EQ(loadMapping(file, 0).mode, 0);
    file.set("KorvelCSMode", plist::Array{"0"});
    EXPECT_EQ(loadMapping(file, 1).mode, 1);
}

TEST(Mode, IsNotGuessedFromTheOrder)
{
    EXPECT_EQ(loadMapping(test::orderFile({"7 Master Volume"}), std::nullopt).mode, 0);
}

// Catalogue

TEST(HasCatalogue, WhereThereIsAnArrayWithAtLeastOneElement)
{
    struct Row {
        std::optional<plist::Value> value;
        bool has;
    };
    const Row rows[] = {
        {std::nullopt, false},
        {plist::Value("1 A"), false},
        {plist::Array{}, false},
        {plist::Array{"-1"}, true},
        {plist::Array{plist::Integer(1)}, true},
    };
    for (const Row& row : rows) {
        plist::Dictionary file = test::orderFile({"1 A"});
        if (row.value)
            file.set("KorvelCSUnique", *row.value);
        EXPECT_EQ(hasCatalogue(file), row.has);
    }
}

TEST(AddCatalogue, AddsTheOrdersParametersAndTouchesNothingElse)
{
    plist::Dictionary file;
    file.set("Version", plist::Integer(3));
    file.set("ControlSurfaceParameterOrder", arrayOf({"-1", "2 B", "1 A", "2 B"}));
    file.set("Comment", "kept");
    addCatalogue(file);
    const plist::Dictionary expected = {{"Version", plist::Integer(3)},
                                        {"ControlSurfaceParameterOrder", arrayOf({"-1", "2 B", "1 A", "2 B"})},
                                        {"Comment", "kept"},
                                        {"KorvelCSUnique", arrayOf({"-1", "2 B", "1 A"})}};
    EXPECT_EQ(file, expected);
}

TEST(AddCatalogue, LeavesOutWhatIsNoText)
{
    plist::Dictionary file;
    file.set("ControlSurfaceParameterOrder",
             plist::Array{plist::Integer(5), "2 B", true, plist::Real(1.5), plist::Data{"3 C"}, plist::Array{"4 D"},
                          plist::Dictionary{{"5 E", "6 F"}}, plist::DateText{"2020-01-01"}, "1 A"});
    addCatalogue(file);
    EXPECT_EQ(*file.find("KorvelCSUnique"), plist::Value(arrayOf({"-1", "2 B", "1 A"})));
    EXPECT_THAT(offered(loadMapping(file, std::nullopt)), ElementsAre("-", "B", "A"));
    EXPECT_THAT(
        orderOf(loadMapping(file, std::nullopt).entries),
        ElementsAre("-1", "2 B", "-1", "-1", "-1", "-1", "-1", "-1", "1 A", "-1", "-1", "-1", "-1", "-1", "-1", "-1"));
}

// Storing

TEST(StoreMapping, ReplacesOrderAndModeAndKeepsEveryOtherKey)
{
    plist::Dictionary file;
    file.set("KorvelCSMode", plist::Array{"0", "1", "more"});
    file.set("Before", plist::Real(1.5));
    file.set("ControlSurfaceParameterOrder", "no array");
    file.set("KorvelCSUnique", arrayOf({"-1", "1 A"}));
    file.set("After", plist::Dictionary{{"x", plist::Data{"xy"}}});
    storeMapping(file, mappingOf({"3 Osc 1 Level"}), 1);
    Texts order(8, "-1");
    order.front() = "3 Osc 1 Level";
    EXPECT_EQ(*file.find("ControlSurfaceParameterOrder"), plist::Value(arrayOf(order)));
    EXPECT_EQ(*file.find("KorvelCSMode"), plist::Value(plist::Array{"1"}));
    EXPECT_EQ(*file.find("KorvelCSUnique"), plist::Value(arrayOf({"-1", "1 A"})));
    EXPECT_EQ(*file.find("Before"), plist::Value(plist::Real(1.5)));
    EXPECT_EQ(*file.find("After"), plist::Value(plist::Dictionary{{"x", plist::Data{"xy"}}}));
    EXPECT_EQ(file.size(), 5u);
}

TEST(StoreMapping, RecordsTheModeAsText)
{
    for (const std::int32_t mode : {0, 1}) {
        plist::Dictionary file;
        storeMapping(file, mappingOf({}), mode);
        EXPECT_EQ(*file.find("KorvelCSMode"), plist::Value(plist::Array{mode == 1 ? "1" : "0"}));
        EXPECT_EQ(loadMapping(file, std::nullopt).mode, mode);
    }
}

TEST(StoreMapping, WhatIsStoredLoadsAgain)
{
    const auto entries = mappingOf({"1 A", "-1", "3 Osc 1 Level", "5", "1 A", "-1", "-1", "-1", "9 On page two"});
    plist::Dictionary file;
    storeMapping(file, entries, 1);
    EXPECT_EQ(loadMapping(file, std::nullopt).entries, entries);
}

} // namespace
