#include "tests/support/WindowlessTest.h"

#include <functional>
#include <tuple>

namespace {

using test::Texts;

/// Everything that undo and redo restore.
using State = std::tuple<Texts, std::int32_t, std::int32_t, std::int32_t, Texts, Texts>;

class HistoryTest : public test::WindowlessTest {
protected:
    State state() const
    {
        return {order(), mapping::totalPages, mapping::curPage, mapping::plugin_Mode, pots(), readOuts()};
    }
    Texts parameters() const { return mapping::orderOf(controller_.arrayControllerPlistSelected()->content()); }
    /// Edits three pages of eight parameters, of which the second is shown.
    test::Path editThreePages(const std::string& plugin = "EQ One")
    {
        const auto file = edit(test::numbered(24), plugin);
        controller_.showPage(2);
        selectParameter(5);
        return file;
    }
    std::string undoName() const { return controller_.history().undoName(); }
    std::string redoName() const { return controller_.history().redoName(); }
};

struct Edit {
    const char* name;
    std::function<void(ViewController&)> make;
};

const Edit kEdits[] = {
    {"Assign Parameter", [](ViewController& c) { c.clickControl(3); }},
    {"Clear Pot",
     [](ViewController& c) {
         c.arrayControllerPlistSelected()->setSelectionIndex(0);
         c.clickControl(3);
     }},
    {"Exchange Pots", [](ViewController& c) { c.exchangeSlots(9, 14); }},
    {"Add Page", [](ViewController& c) { c.newPageButtonPressed(); }},
    {"Delete Page", [](ViewController& c) { c.deletePageButtonPressed(); }},
    {"Clear All Pages", [](ViewController& c) { c.clearAllPagesButtonPressed(); }},
    {"Start From Scratch", [](ViewController& c) { c.startFromScratch(); }},
    {"Exchange Pages", [](ViewController& c) { c.kvMovePage_First(); }},
    {"Exchange Pages", [](ViewController& c) { c.kvMovePage_Last(); }},
    {"Change Mode",
     [](ViewController& c) {
         c.kvPluginMode()->selectedTag.set(1 - mapping::plugin_Mode);
         c.kvPluginMode_Changed(c.kvPluginMode());
     }},
};

TEST_F(HistoryTest, EveryEditIsOneNamedStepThatGoesBothWays)
{
    int number = 0;
    for (const auto& [name, make] : kEdits) {
        SCOPED_TRACE(name);
        editThreePages("EQ " + std::to_string(++number));
        const State before = state();
        EXPECT_EQ(undoName(), "");
        make(controller_);
        const State after = state();
        ASSERT_NE(after, before);
        EXPECT_EQ(undoName(), name);
        EXPECT_FALSE(controller_.history().canRedo());

        controller_.undo();
        EXPECT_EQ(state(), before);
        EXPECT_FALSE(controller_.history().canUndo());
        EXPECT_EQ(redoName(), name);
        EXPECT_FALSE(controller_.hasUnsavedChanges());

        controller_.redo();
        EXPECT_EQ(state(), after);
        EXPECT_EQ(undoName(), name);
        EXPECT_FALSE(controller_.history().canRedo());
        EXPECT_TRUE(controller_.hasUnsavedChanges());
    }
}

TEST_F(HistoryTest, AllEditsInARowGoBackToTheStartAndForthToTheEnd)
{
    editThreePages();
    std::vector<State> states = {state()};
    for (const auto& step : kEdits) {
        if (mapping::curPage == 1)
            controller_.lastPageButtonPressed();
        selectParameter(7);
        states.back() = state(); // undo shows the page that the edit was made on
        step.make(controller_);
        if (state() != states.back()) // the only page left after a clear-all cannot be moved
            states.push_back(state());
    }
    EXPECT_EQ(states.size(), std::size(kEdits) - 1);
    for (std::size_t i = states.size() - 1; i-- > 0;) {
        controller_.undo();
        EXPECT_EQ(std::get<0>(state()), std::get<0>(states[i])) << i;
        EXPECT_EQ(std::get<2>(state()), std::get<2>(states[i])) << i;
    }
    EXPECT_FALSE(controller_.history().canUndo());
    controller_.undo(); // nothing
    for (std::size_t i = 1; i < states.size(); ++i) {
        controller_.redo();
        EXPECT_EQ(std::get<0>(state()), std::get<0>(states[i])) << i;
    }
    EXPECT_FALSE(controller_.history().canRedo());
}

TEST_F(HistoryTest, UndoOfAClearAllBringsBackThePagesAndKeepsWhatLayBehindThem)
{
    editThreePages();
    controller_.clearAllPagesButtonPressed();
    controller_.newPageButtonPressed();
    EXPECT_EQ(order().size(), 32u);
    EXPECT_EQ(pots().front(), "Knob 9"); // the former second page
    controller_.undo();
    EXPECT_EQ(order().size(), 24u);
    EXPECT_EQ(mapping::totalPages, 1);
    EXPECT_EQ(order().at(8), "9 Knob 9");
    controller_.undo();
    EXPECT_EQ(order(), test::numbered(24));
    EXPECT_EQ(readOuts(), (Texts{"Page 2 of 3", "3 Pages"}));
}

TEST_F(HistoryTest, WhatChangesNothingIsNoStep)
{
    editThreePages();
    selectParameter(11); // the third on page two, which stands there already
    controller_.clickControl(2);
    controller_.nextPageButtonPressed();
    controller_.exchangeSlots(12, 12);
    controller_.movePageAndPageTo(2, 2);
    controller_.movePageAndPageTo(3, 4);
    EXPECT_EQ(alerts_.size(), 1u);
    EXPECT_FALSE(controller_.history().canUndo());
    controller_.firstPageButtonPressed();
    controller_.deletePageButtonPressed();
    EXPECT_FALSE(controller_.history().canUndo());
}

TEST_F(HistoryTest, ANewEditForgetsWhatWasUndone)
{
    editThreePages();
    controller_.newPageButtonPressed();
    controller_.undo();
    controller_.clickControl(0);
    EXPECT_FALSE(controller_.history().canRedo());
    EXPECT_EQ(undoName(), "Assign Parameter");
}

TEST_F(HistoryTest, AnotherPluginBeginsANewHistory)
{
    test::writeDictionary(builtIn("Other"), test::orderFile(test::numbered(8, "Fader")));
    editThreePages();
    controller_.clickControl(0);
    select("Other");
    EXPECT_FALSE(controller_.history().canUndo());
    controller_.undo();
    EXPECT_EQ(pots().front(), "Fader 1");
    select("EQ One");
    EXPECT_FALSE(controller_.history().canUndo());
}

TEST_F(HistoryTest, TheSamePluginChosenAgainCanBeUndone)
{
    editThreePages();
    controller_.clickControl(0);
    const Texts edited = order();
    select("EQ One");
    EXPECT_EQ(order(), test::numbered(24));
    EXPECT_EQ(undoName(), "Reload Mapping");
    controller_.undo();
    EXPECT_EQ(order(), edited);
    EXPECT_EQ(mapping::curPage, 2);
}

TEST_F(HistoryTest, ARecallIsAStepThatLeavesTheFileAlone)
{
    const auto file = editThreePages();
    controller_.clickControl(0);
    controller_.kvExportToPlist();
    controller_.showPage(3);
    controller_.clickControl(1);
    const Texts edited = order();
    controller_.kvRecallOriginalMapping();
    EXPECT_EQ(undoName(), "Recall Original");
    EXPECT_EQ(order(), test::numbered(24));
    EXPECT_FALSE(controller_.hasUnsavedChanges());
    controller_.undo();
    EXPECT_EQ(order(), edited);
    EXPECT_EQ(mapping::curPage, 3);
    EXPECT_TRUE(controller_.hasUnsavedChanges());
    EXPECT_EQ(test::textsAt(file, test::kOrder), test::numbered(24));
    controller_.redo();
    EXPECT_EQ(order(), test::numbered(24));
    controller_.clickControl(1);
    controller_.kvRecallPreviousMapping();
    EXPECT_EQ(undoName(), "Recall Previous");
}

TEST_F(HistoryTest, ALoadedDownloadIsAStepThatBringsItsParametersAndTakesThemAway)
{
    const auto file = editThreePages();
    controller_.clickControl(0);
    const Texts edited = order();
    const Texts own = parameters();
    const auto changed = controller_.changedPots();
    auto shared = test::orderFile({"1 Theirs", "2 Too"});
    shared.set(test::kMode, platform::plist::Array{"1"});
    test::writeDictionary(test::Path(file) += ".downloaded", shared);
    controller_.downloadDidFinish();
    EXPECT_EQ(undoName(), "Load Shared Mapping");
    EXPECT_EQ(parameters(), Texts{"-1"}); // it is not marked
    EXPECT_EQ(controller_.changedPots(), 24u);
    EXPECT_EQ(controller_.mainTitle_Sub()->stringValue.get(), "Logic Pro Instrument Mapper");
    controller_.arrayControllerPlistSelected()->filterText.set("theirs");
    controller_.undo();
    EXPECT_EQ(controller_.arrayControllerPlistSelected()->filterText.get(), ""); // a press would hit the blank entry
    EXPECT_EQ(order(), edited);
    EXPECT_EQ(parameters(), own);
    EXPECT_EQ(mapping::curPage, 2);
    EXPECT_EQ(controller_.changedPots(), changed);
    EXPECT_EQ(controller_.mainTitle_Sub()->stringValue.get(), "Logic Pro Insert/Effect Mapper");
    EXPECT_EQ(controller_.kvPluginMode()->selectedTag.get(), 0);
    EXPECT_EQ(controller_.labelHelperDisplay()->stringValue.get(), "Editing EQ One in Insert/Effect Mode");
    controller_.redo();
    EXPECT_EQ(parameters(), Texts{"-1"});
    EXPECT_EQ(pots().at(1), "Too");
}

TEST_F(HistoryTest, OutlivesARescanInWhichNothingIsSelected)
{
    editThreePages();
    controller_.kvPluginMode()->selectedTag.set(1);
    controller_.kvPluginMode_Changed(controller_.kvPluginMode());
    controller_.clickControl(0);
    controller_.btnRunCheck();
    EXPECT_EQ(controller_.labelHelperDisplay()->stringValue.get(), "Please Select a Plugin");
    controller_.undo();
    EXPECT_EQ(controller_.labelHelperDisplay()->stringValue.get(), "Please Select a Plugin");
    controller_.undo();
    EXPECT_EQ(mapping::plugin_Mode, 0);
    EXPECT_EQ(controller_.kvPluginMode()->selectedTag.get(), 0);
    EXPECT_EQ(controller_.mainTitle_Sub()->stringValue.get(), "Logic Pro Insert/Effect Mapper");
    EXPECT_EQ(controller_.labelHelperDisplay()->stringValue.get(), "Editing EQ One in Insert/Effect Mode");
    EXPECT_EQ(order(), test::numbered(24));
    controller_.redo();
    EXPECT_EQ(controller_.mainTitle_Sub()->stringValue.get(), "Logic Pro Instrument Mapper");
    EXPECT_EQ(controller_.labelHelperDisplay()->stringValue.get(), "Editing EQ One using Instrument Mode");
}

TEST_F(HistoryTest, ARescanIsNoEditThatUndoWouldTakeBack)
{
    edit(test::numbered(8));
    selectParameter(5);
    controller_.clickControl(0);
    const Texts edited = order();
    const Texts offered = parameters();
    controller_.btnRunCheck();
    select("EQ One");
    ASSERT_EQ(undoName(), "Reload Mapping");
    controller_.undo();
    EXPECT_EQ(order(), edited);
    EXPECT_EQ(parameters(), offered);
    controller_.redo();
    EXPECT_EQ(parameters(), offered);

    controller_.btnRunCheck();
    controller_.undo();
    EXPECT_EQ(order(), edited);
    EXPECT_EQ(parameters(), Texts());
}

TEST_F(HistoryTest, AReloadAfterARescanThatChangesNothingIsNoStep)
{
    edit(test::numbered(8));
    controller_.btnRunCheck();
    select("EQ One");
    EXPECT_EQ(undoName(), "");
}

TEST_F(HistoryTest, AReloadAfterARescanThatOffersOtherParametersIsAStep)
{
    const auto file = edit(test::numbered(8));
    const Texts own = parameters();
    test::writeDictionary(test::Path(file) += ".downloaded", test::orderFile({"1 Theirs", "2 Too"}));
    controller_.downloadDidFinish();
    const Texts theirs = parameters();
    ASSERT_NE(theirs, own);
    controller_.exportToPlist(); // so the reload brings the same mapping
    controller_.btnRunCheck();
    select("EQ One");
    EXPECT_EQ(parameters(), own);
    EXPECT_EQ(undoName(), "Reload Mapping");
    controller_.undo();
    EXPECT_EQ(parameters(), theirs);
    controller_.undo();
    EXPECT_EQ(parameters(), own);
    controller_.redo();
    EXPECT_EQ(parameters(), theirs);
    controller_.redo();
    EXPECT_EQ(parameters(), own);

    controller_.undo();
    controller_.btnRunCheck();
    controller_.undo(); // of the download, while nothing is chosen
    select("EQ One");
    EXPECT_EQ(parameters(), own);
    controller_.undo();
    EXPECT_EQ(parameters(), own);
}

TEST_F(HistoryTest, UnsavedChangesAreToldUntilSavedOrUndone)
{
    editThreePages();
    EXPECT_FALSE(controller_.hasUnsavedChanges());
    controller_.clickControl(0);
    controller_.clickControl(1);
    EXPECT_EQ(controller_.changedPots(), 2u);
    controller_.undo();
    EXPECT_EQ(controller_.changedPots(), 1u);
    controller_.kvExportToPlist();
    EXPECT_FALSE(controller_.hasUnsavedChanges());
    controller_.undo(); // back behind the save
    EXPECT_TRUE(controller_.hasUnsavedChanges());
    EXPECT_EQ(controller_.changedPots(), 1u);
    controller_.redo();
    EXPECT_FALSE(controller_.hasUnsavedChanges());
    controller_.newPageButtonPressed();
    EXPECT_EQ(controller_.changedPots(), 8u);
}

TEST_F(HistoryTest, AModeSwitchAloneIsUnsaved)
{
    editThreePages();
    controller_.kvPluginMode()->selectedTag.set(1);
    controller_.kvPluginMode_Changed(controller_.kvPluginMode());
    EXPECT_EQ(controller_.changedPots(), 0u);
    EXPECT_TRUE(controller_.hasUnsavedChanges());
    controller_.kvExportToPlist();
    EXPECT_FALSE(controller_.hasUnsavedChanges());
}

TEST_F(HistoryTest, ASaveThatWroteNothingLeavesTheChangesUnsaved)
{
    const auto file = editThreePages();
    controller_.clickControl(0);
    test::write(file, "no property list");
    controller_.kvExportToPlist();
    EXPECT_EQ(alerts_.back().text, "New Mapping has been saved"); // it is told in every case
    EXPECT_TRUE(controller_.hasUnsavedChanges());
}

TEST_F(HistoryTest, AnExchangeLeavesPagesPositionsAndTheSelectionAlone)
{
    editThreePages();
    controller_.exchangeSlots(8, 15);
    EXPECT_EQ(pots().front(), "Knob 16");
    EXPECT_EQ(pots().back(), "Knob 9");
    EXPECT_EQ(selectedParameter(), 5);
    EXPECT_EQ(mapping::plistBuild[8].number(mapping::kKorvelControlNo), 8);
    EXPECT_EQ(mapping::plistBuild[15].number(mapping::kKorvelControlNo), 15);
}

TEST_F(HistoryTest, OnlyPagesThatExistAreShown)
{
    controller_.showPage(1); // nothing is loaded
    editThreePages();
    for (const std::int32_t page : {0, -1, 4}) {
        controller_.showPage(page);
        EXPECT_EQ(mapping::curPage, 2);
    }
    controller_.showPage(3);
    EXPECT_EQ(readOuts().front(), "Page 3 of 3");
}

TEST_F(HistoryTest, EachOperationIsToldOnce)
{
    editThreePages();
    int told = 0;
    const auto connection = controller_.editingChanged.connect([&told] { ++told; });
    const auto toldBy = [&](auto operation) {
        told = 0;
        operation();
        return told;
    };
    EXPECT_EQ(toldBy([&] { controller_.kvMovePage_Last(); }), 1);
    EXPECT_EQ(toldBy([&] { controller_.nextPageButtonPressed(); }), 1);
    EXPECT_EQ(toldBy([&] { controller_.undo(); }), 1);
    EXPECT_EQ(toldBy([&] { select("EQ One"); }), 1);
    EXPECT_EQ(toldBy([&] { controller_.kvExportToPlist(); }), 1);
    EXPECT_EQ(toldBy([&] { controller_.kvRecallPreviousMapping(); }), 1);
    EXPECT_EQ(toldBy([&] { controller_.btnRunCheck(); }), 1);
}

TEST_F(HistoryTest, TellsHowABackupDiffersFromTheMappingBeingEdited)
{
    const auto file = editThreePages();
    EXPECT_FALSE(controller_.compareWithBackup("original"));
    controller_.clickControl(0);
    controller_.kvExportToPlist();
    controller_.clickControl(1);
    controller_.kvExportToPlist();
    controller_.newPageButtonPressed();
    const auto original = controller_.compareWithBackup("original");
    const auto previous = controller_.compareWithBackup("prev");
    ASSERT_TRUE(original && previous);
    EXPECT_EQ(original->differingPots, 10u);
    EXPECT_EQ(previous->differingPots, 9u);
    const auto written = std::filesystem::last_write_time(test::Path(file) += ".prev");
    const auto seconds = std::chrono::file_clock::to_sys(written).time_since_epoch();
    EXPECT_EQ(previous->madeAt, std::chrono::duration_cast<std::chrono::seconds>(seconds).count());
    EXPECT_FALSE(controller_.compareWithBackup("nothing"));
}

} // namespace
