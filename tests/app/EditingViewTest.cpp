#include "tests/support/WindowTest.h"

#include "app/interface/WindowMemory.h"
#include "mapping/EditingState.h"
#include "platform/qt/RecordListView.h"
#include "platform/qt/Text.h"

#include <QAction>
#include <QCheckBox>
#include <QDateTime>
#include <QScreen>
#include <QSignalSpy>
#include <QSplitter>
#include <QTest>

#include <map>
#include <string>

namespace test {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

class EditingViewTest : public WindowTest {
protected:
    void load(int parameters = 24)
    {
        writeDictionary(builtIn("Synth"), orderFile(numbered(parameters)));
        launch();
        select("Synth");
    }
    bool isModified() const { return find<>("cwinMainWindow")->isWindowModified(); }
    std::string itemText(const char* item) const { return find<QAction>(item)->text().toStdString(); }
    bool itemIsEnabled(const char* item) const { return find<QAction>(item)->isEnabled(); }
    std::string hint(const char* list) const { return find<platform::qt::RecordListView>(list)->hint().toStdString(); }
    std::vector<std::string> onPots() const { return columnOf("tablePlistOfSelectedPlugin", 2); }
    void choose(int row) { controller().arrayControllerPlistSelected()->setSelectionIndex(row); }
};

TEST_F(EditingViewTest, TheWindowIsMarkedWhileSomethingIsUnsaved)
{
    load();
    EXPECT_FALSE(isModified());
    EXPECT_EQ(text("unsavedReadOut"), "");
    choose(9);
    pressPot(1);
    pressPot(2);
    EXPECT_TRUE(isModified());
    EXPECT_EQ(text("unsavedReadOut"), "Unsaved pots: 2");
    click("undoButton");
    EXPECT_EQ(text("unsavedReadOut"), "Unsaved pots: 1");
    click("undoButton");
    EXPECT_FALSE(isModified());
    EXPECT_EQ(text("unsavedReadOut"), "");
    click("redoButton");
    EXPECT_TRUE(isModified());
    alertsOf([this] { click("kvExportToPlist"); });
    EXPECT_FALSE(isModified());
    click("kvPluginMode_1");
    EXPECT_TRUE(isModified());
    EXPECT_EQ(text("unsavedReadOut"), "Unsaved mode");
}

TEST_F(EditingViewTest, TheTitleNamesThePlugin)
{
    launch();
    EXPECT_EQ(find<>("cwinMainWindow")->windowTitle(), QStringLiteral("kvOrvantaLogic Tool[*]"));
    load();
    EXPECT_EQ(find<>("cwinMainWindow")->windowTitle(), QStringLiteral("Synth[*] \u2013 kvOrvantaLogic Tool"));
}

TEST_F(EditingViewTest, AButtonWhoseCaptionIsTooShortIsSpokenInWords)
{
    load();
    const std::map<std::string, std::string> spoken = {
        {"firstPageButtonPressed", "Show first page"},    {"prevPageButtonPressed", "Show previous page"},
        {"nextPageButtonPressed", "Show next page"},      {"lastPageButtonPressed", "Show last page"},
        {"kvMovePage_First", "Exchange page with first"}, {"kvMovePage_Prev", "Exchange page with previous"},
        {"kvMovePage_Next", "Exchange page with next"},   {"kvMovePage_Last", "Exchange page with last"},
    };
    for (const auto& [button, words] : spoken)
        EXPECT_EQ(find<>(button.c_str())->accessibleName().toStdString(), words) << button;
}

TEST_F(EditingViewTest, TheWindowStandsForTheFileThatASaveWrites)
{
    launch();
    const auto path = [this] { return find<>("cwinMainWindow")->windowFilePath().toStdString(); };
    EXPECT_EQ(path(), "");
    load();
    EXPECT_EQ(path(), builtIn("Synth").native());
    click("btnRunCheck"); // the mapping stays and can still be saved
    EXPECT_EQ(path(), builtIn("Synth").native());
    EXPECT_EQ(find<>("cwinMainWindow")->windowTitle(), QStringLiteral("kvOrvantaLogic Tool[*]"));
}

TEST_F(EditingViewTest, UndoAndRedoSayWhatTheyWouldDo)
{
    load();
    EXPECT_EQ(itemText("undo"), "Undo");
    EXPECT_EQ(itemText("redo"), "Redo");
    EXPECT_FALSE(itemIsEnabled("undo") || isEnabled("undoButton"));
    click("nextPageButtonPressed");
    click("kvMovePage_First");
    EXPECT_EQ(itemText("undo"), "Undo Exchange Pages");
    EXPECT_EQ(toolTip("undoButton"), "Undo Exchange Pages (Ctrl+Z)");
    EXPECT_TRUE(itemIsEnabled("undo") && isEnabled("undoButton"));
    find<QAction>("undo")->trigger();
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 2 of 3");
    EXPECT_EQ(itemText("undo"), "Undo");
    EXPECT_EQ(itemText("redo"), "Redo Exchange Pages");
    EXPECT_TRUE(itemIsEnabled("redo") && isEnabled("redoButton"));
    find<QAction>("redo")->trigger();
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 1 of 3");
}

TEST_F(EditingViewTest, TheListSaysOnWhichPotsAParameterStands)
{
    load(10);
    EXPECT_THAT(onPots(),
                ElementsAre("clears a pot", "1·1", "1·2", "1·3", "1·4", "1·5", "1·6", "1·7", "1·8", "2·1", "2·2"));
    EXPECT_EQ(text("mappedReadOut"), "10 of 10 mapped");
    choose(9);
    QSignalSpy shownAnew(find<QAbstractItemView>("tablePlistOfSelectedPlugin")->model(),
                         &QAbstractItemModel::dataChanged);
    pressPot(1); // Knob 9 in place of Knob 1
    EXPECT_EQ(shownAnew.count(), 1);
    choose(0);
    pressPot(2);
    EXPECT_EQ(onPots().at(1), "");
    EXPECT_EQ(onPots().at(2), "");
    EXPECT_EQ(onPots().at(9), "1·1, 2·1");
    EXPECT_EQ(text("mappedReadOut"), "8 of 10 mapped");
    click("clearAllPagesButtonPressed");
    EXPECT_EQ(text("mappedReadOut"), "0 of 10 mapped");
    click("undoButton");
    EXPECT_EQ(text("mappedReadOut"), "8 of 10 mapped");
    click("btnRunCheck");
    EXPECT_EQ(text("mappedReadOut"), "");
}

TEST_F(EditingViewTest, AParameterOnVeryManyPotsIsToldInShort)
{
    Texts order(400, "1 Same");
    writeDictionary(builtIn("Synth"), orderFile(order));
    launch();
    select("Synth");
    EXPECT_THAT(onPots().at(1), testing::StartsWith("1·1, 1·2, 1·3"));
    EXPECT_THAT(onPots().at(1), testing::EndsWith("5·8, \u2026"));
}

TEST_F(EditingViewTest, TheFilterLeavesWhatIsNotMappedYet)
{
    load(10);
    const auto parameters = [this] { return columnOf("tablePlistOfSelectedPlugin", 1); };
    click("clearAllPagesButtonPressed"); // one page, empty
    choose(3);
    pressPot(1);
    choose(1);
    click("unmappedOnly");
    EXPECT_THAT(parameters(), ElementsAre("-", "Knob 1", "Knob 2", "Knob 4", "Knob 5", "Knob 6", "Knob 7", "Knob 8",
                                          "Knob 9", "Knob 10"));
    EXPECT_TRUE(find<QAction>("unmappedOnlyItem")->isChecked());
    // A run of presses lays one unmapped parameter after the other.
    pressPot(2);
    pressPot(3);
    pressPot(4);
    EXPECT_THAT(potLabels(), ElementsAre("Knob 3", "Knob 1", "Knob 2", "Knob 4", "-", "-", "-", "-"));
    EXPECT_THAT(parameters(), ElementsAre("-", "Knob 5", "Knob 6", "Knob 7", "Knob 8", "Knob 9", "Knob 10"));
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 1);
    typeInto("parameterSearch", "10");
    EXPECT_THAT(parameters(), testing::Contains("Knob 10"));
    EXPECT_THAT(parameters(), testing::Not(testing::Contains("Knob 9")));
    find<QAction>("unmappedOnlyItem")->trigger();
    EXPECT_FALSE(find<QCheckBox>("unmappedOnly")->isChecked());
}

TEST_F(EditingViewTest, TheLastUnmappedParameterStaysChosenUntilAnotherIs)
{
    load(2);
    click("clearAllPagesButtonPressed");
    click("unmappedOnly");
    choose(1);
    pressPot(1);
    pressPot(2);
    pressPot(3); // the last one again, and not the blank entry
    EXPECT_THAT(potLabels(), ElementsAre("Knob 1", "Knob 2", "Knob 2", "-", "-", "-", "-", "-"));
    choose(0);
    click("nextPageButtonPressed");
    EXPECT_THAT(columnOf("tablePlistOfSelectedPlugin", 1), ElementsAre("-"));
    EXPECT_EQ(hint("tablePlistOfSelectedPlugin"), "Every parameter stands on a pot.");
}

TEST_F(EditingViewTest, TheFilterStaysForTheNextPlugin)
{
    load(10);
    writeDictionary(builtIn("Other"), orderFile(numbered(3, "Fader")));
    click("btnRunCheck");
    select("Synth");
    choose(5);
    click("unmappedOnly");
    select("Other");
    EXPECT_THAT(columnOf("tablePlistOfSelectedPlugin", 1), ElementsAre("-"));
    pressPot(1);
    EXPECT_THAT(columnOf("tablePlistOfSelectedPlugin", 1), ElementsAre("-", "Fader 1"));
}

TEST_F(EditingViewTest, EmptyListsSayWhatToDoNext)
{
    launch();
    EXPECT_THAT(hint("pluginTableView"), HasSubstr("No plug-ins were found."));
    EXPECT_EQ(hint("tablePlistOfSelectedPlugin"), "");
    EXPECT_EQ(hint("cwinPlistAvailable"), "Choose a plug-in in the main window to see what others shared for it.");
    writeDictionary(builtIn("Synth"), orderFile(numbered(10)));
    writeDictionary(builtIn("Nothing"), orderFile({}));
    click("btnRunCheck");
    EXPECT_EQ(hint("pluginTableView"), "");
    EXPECT_EQ(hint("tablePlistOfSelectedPlugin"), "Choose a plug-in to see its parameters here.");
    select("Synth");
    EXPECT_EQ(hint("tablePlistOfSelectedPlugin"), "");
    const char* const nothing =
        "Nothing to show: nothing is shared for this plug-in yet, or the community server did not answer.";
    EXPECT_EQ(hint("cwinPlistAvailable"), nothing);
    controller().arrayController_downloadList()->setContent({{{"userComments", "a"}}});
    EXPECT_EQ(hint("cwinPlistAvailable"), "");
    controller().arrayController_downloadList()->setContent({});
    EXPECT_EQ(hint("cwinPlistAvailable"), nothing);
    typeInto("parameterSearch", "zzz");
    EXPECT_THAT(hint("tablePlistOfSelectedPlugin"), HasSubstr("No parameter found for \u201czzz\u201d."));
    EXPECT_EQ(find<>("tablePlistOfSelectedPlugin")->accessibleDescription().toStdString(),
              hint("tablePlistOfSelectedPlugin"));
    select("Nothing");
    EXPECT_EQ(hint("tablePlistOfSelectedPlugin"), "The file of this plug-in lists no parameters.");
}

TEST_F(EditingViewTest, ASearchAmongUnmappedParametersSaysThatOthersAreLeftOut)
{
    load(10);
    click("unmappedOnly");
    typeInto("parameterSearch", "knob 3");
    EXPECT_THAT(hint("tablePlistOfSelectedPlugin"), HasSubstr("not mapped yet was found for \u201cknob 3\u201d"));
    click("unmappedOnly");
    EXPECT_EQ(hint("tablePlistOfSelectedPlugin"), "");
}

TEST_F(EditingViewTest, TheMarkKeepsItsPlaceWhateverThePluginIsCalled)
{
    writeDictionary(builtIn("X[*]"), orderFile(numbered(8)));
    launch();
    select("X[*]");
    EXPECT_EQ(find<>("cwinMainWindow")->windowTitle(), QStringLiteral("X[*][*][*] \u2013 kvOrvantaLogic Tool"));
}

TEST_F(EditingViewTest, TheStripIsDrawnAtOnceWithAnotherNumberOfPages)
{
    load(24);
    auto* strip = find<QAbstractItemView>("pageOverview");
    click("newPageButtonPressed");
    EXPECT_FALSE(strip->visualRect(strip->model()->index(3, 0)).isEmpty());
    click("clearAllPagesButtonPressed");
    EXPECT_FALSE(strip->visualRect(strip->model()->index(0, 0)).isEmpty());
}

TEST_F(EditingViewTest, TheFirstWindowFitsTheScreen)
{
    launch();
    const QSize room = find<>("cwinMainWindow")->screen()->availableSize();
    EXPECT_LE(find<>("cwinMainWindow")->height(), room.height() - 40);
}

TEST_F(EditingViewTest, RecallButtonsTellWhenTheirBackupWasMadeAndWhatDiffers)
{
    load();
    const auto rest = [this](const char* button) {
        QEvent enter(QEvent::Enter);
        QApplication::sendEvent(find<>(button), &enter);
        return toolTip(button);
    };
    EXPECT_THAT(rest("kvRecallOriginalMapping"), HasSubstr("There is no such backup yet"));
    choose(9);
    pressPot(1);
    alertsOf([this] { click("kvExportToPlist"); });
    pressPot(2);
    pressPot(3);
    const Path original = Path(builtIn("Synth")) += ".original";
    std::filesystem::last_write_time(original, std::filesystem::file_time_type::clock::now() - std::chrono::hours(50));
    const auto made = std::chrono::system_clock::now() - std::chrono::hours(50);
    const QString when = QLocale().toString(QDateTime::fromSecsSinceEpoch(std::chrono::system_clock::to_time_t(made)),
                                            QLocale::ShortFormat);
    EXPECT_EQ(rest("kvRecallOriginalMapping"),
              "Put back the file as it was before the first save (Ctrl+Alt+Shift+O)\nBackup of " + when.toStdString() +
                  "; pots that differ: 3");
    EXPECT_THAT(rest("kvRecallPreviousMapping"), HasSubstr("pots that differ: 3"));
    click("undoButton");
    // Also without anybody near, a little later.
    EXPECT_TRUE(QTest::qWaitFor([&] { return toolTip("kvRecallOriginalMapping").ends_with("differ: 2"); }, 2000));
}

TEST_F(EditingViewTest, TheMenuFollowsTheModeAndSwitchesIt)
{
    load();
    EXPECT_TRUE(find<QAction>("modeInsertEffect")->isChecked());
    find<QAction>("modeInstrument")->trigger();
    EXPECT_EQ(mapping::plugin_Mode, 1);
    EXPECT_EQ(text("mainTitle_Sub"), "Logic Pro Instrument Mapper");
    click("undoButton");
    EXPECT_TRUE(find<QAction>("modeInsertEffect")->isChecked());
    EXPECT_EQ(text("mainTitle_Sub"), "Logic Pro Insert/Effect Mapper");
    click("kvPluginMode_1");
    EXPECT_TRUE(find<QAction>("modeInstrument")->isChecked());
}

TEST_F(EditingViewTest, MenuItemsAreEnabledWithTheirButtons)
{
    launch();
    for (const char* item : {"kvExportToPlist", "kvRotBtn1_Pressed", "modeInstrument", "kvCommunityLibrary", "undo",
                             "nextPageButtonPressed", "kvRecallPreviousMapping"})
        EXPECT_FALSE(itemIsEnabled(item)) << item;
    for (const char* item : {"btnRunCheck", "kvHelpMe", "kvLoginToCloudAccount", "findParameter", "terminate"})
        EXPECT_TRUE(itemIsEnabled(item)) << item;
    load();
    for (const char* item : {"kvExportToPlist", "kvRotBtn8_Pressed", "modeInstrument", "nextPageButtonPressed"})
        EXPECT_TRUE(itemIsEnabled(item)) << item;
    controller().kv_btn_cloudLibrary()->enabled.set(true);
    EXPECT_TRUE(itemIsEnabled("kvCommunityLibrary"));
}

TEST_F(EditingViewTest, ClearAllTellsWhatItLeaves)
{
    load(300);
    const auto hintRow = [this] { return find<>("leftoverHint")->isVisible(); };
    auto* strip = find<QAbstractItemView>("pageOverview");
    EXPECT_FALSE(hintRow());
    EXPECT_EQ(text("leftoverHint"), "");
    EXPECT_THAT(toolTip("clearAllPagesButtonPressed"), HasSubstr("What stands beyond page 1 stays in the file"));
    click("clearAllPagesButtonPressed");
    EXPECT_TRUE(hintRow());
    EXPECT_EQ(text("leftoverHint"), "292 parameters beyond page 1 stay in the file until their pages are deleted");
    EXPECT_EQ(toolTip("clearAllPagesButtonPressed"),
              "Empty the first page and make it the only one (Ctrl+Shift+D)\nWhat stands beyond page 1 stays in the "
              "file; \u201cStart From Scratch\u201d leaves nothing");
    EXPECT_EQ(toolTip("newPageButtonPressed"),
              "Add an empty page at the end (Ctrl+N)\nBrings back page 2 as it was left behind; the empty one is added "
              "behind all that is left");
    EXPECT_EQ(toolTip("kvExportToPlist"),
              "Write the mapping into the plug-in's file and keep backups (Ctrl+S)\nWrites what is left behind, too: "
              "292 parameters beyond page 1");
    EXPECT_EQ(find<>("kvExportToPlist")->accessibleDescription(),
              QStringLiteral("Writes what is left behind, too: 292 parameters beyond page 1"));
    EXPECT_EQ(strip->model()->rowCount(), 38);
    const QModelIndex left = strip->model()->index(1, 0);
    EXPECT_FALSE(left.flags().testFlag(Qt::ItemIsEnabled));
    QTest::mouseClick(strip->viewport(), Qt::LeftButton, Qt::NoModifier, strip->visualRect(left).center());
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 1 of 1");
    click("newPageButtonPressed");
    EXPECT_EQ(text("leftoverHint"), "284 parameters beyond page 2 stay in the file until their pages are deleted");
    EXPECT_TRUE(strip->model()->index(1, 0).flags().testFlag(Qt::ItemIsEnabled));
    EXPECT_EQ(strip->model()->rowCount(), 39);
}

TEST_F(EditingViewTest, WhatIsLeftIsToldInTheNumberItHas)
{
    load(9);
    click("clearAllPagesButtonPressed");
    EXPECT_EQ(text("leftoverHint"), "1 parameter beyond page 1 stays in the file until its page is deleted");
    EXPECT_THAT(toolTip("kvExportToPlist"), HasSubstr("too: 1 parameter beyond page 1"));
    click("newPageButtonPressed");
    EXPECT_EQ(text("leftoverHint"), "8 empty pots beyond page 2 stay in the file until their pages are deleted");
    click("btnRunCheck"); // the mapping stays
    EXPECT_NE(text("leftoverHint"), "");
    select("Synth");
    EXPECT_EQ(text("leftoverHint"), "");
    EXPECT_FALSE(find<>("leftoverHint")->isVisible());
}

TEST_F(EditingViewTest, StartingFromScratchTakesAwayWhatIsLeftAndCanBeUndone)
{
    launch();
    EXPECT_FALSE(itemIsEnabled("startFromScratch"));
    load(24);
    EXPECT_TRUE(itemIsEnabled("startFromScratch"));
    EXPECT_FALSE(find<>("startFromScratch")->isVisible());
    click("clearAllPagesButtonPressed");
    click("startFromScratch");
    EXPECT_EQ(text("leftoverHint"), "");
    EXPECT_EQ(find<QAbstractItemView>("pageOverview")->model()->rowCount(), 1);
    EXPECT_THAT(toolTip("clearAllPagesButtonPressed"), testing::Not(HasSubstr("stays in the file")));
    EXPECT_EQ(itemText("undo"), "Undo Start From Scratch");
    click("undoButton");
    EXPECT_EQ(text("leftoverHint"), "16 parameters beyond page 1 stay in the file until their pages are deleted");
    click("undoButton");
    EXPECT_EQ(text("leftoverHint"), "");
    EXPECT_EQ(potLabel(1), "Knob 1");
}

TEST_F(EditingViewTest, SharedMappingsAreLoadedOnceAPluginIs)
{
    launch();
    EXPECT_FALSE(isEnabled("kvCommunityLoadSelectedDownload"));
    load();
    EXPECT_TRUE(isEnabled("kvCommunityLoadSelectedDownload"));
}

TEST_F(EditingViewTest, AClickInTheStripShowsThatPage)
{
    load(40);
    auto* strip = find<QAbstractItemView>("pageOverview");
    EXPECT_EQ(strip->model()->rowCount(), 5);
    const QRect tile = strip->visualRect(strip->model()->index(3, 0));
    QTest::mouseClick(strip->viewport(), Qt::LeftButton, Qt::NoModifier, tile.center());
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 4 of 5");
    EXPECT_EQ(potLabel(1), "Knob 25");
    click("prevPageButtonPressed");
    EXPECT_EQ(strip->currentIndex().row(), 2);
    click("deletePageButtonPressed");
    EXPECT_EQ(strip->model()->rowCount(), 4);
}

class WindowMemoryTest : public EditingViewTest {
protected:
    platform::UserPreferences memory_{"org.example.kv-test.window"};
};

TEST_F(WindowMemoryTest, SizeAndSplitsAreAsTheyWereLeft)
{
    launch();
    QList<int> lists, views;
    {
        const interface::WindowMemory memory(memory_, loaded());
        find<>("cwinMainWindow")->resize(1400, 900);
        QApplication::processEvents();
        find<QSplitter>("listsSplitter")->setSizes({600, 700});
        find<QSplitter>("viewsSplitter")->setSizes({300, 400});
        lists = find<QSplitter>("listsSplitter")->sizes();
        views = find<QSplitter>("viewsSplitter")->sizes();
    }
    launch();
    EXPECT_NE(find<QSplitter>("listsSplitter")->sizes(), lists);
    const interface::WindowMemory memory(memory_, loaded());
    QApplication::processEvents();
    EXPECT_EQ(find<>("cwinMainWindow")->size(), QSize(1400, 900));
    EXPECT_EQ(find<QSplitter>("listsSplitter")->sizes(), lists);
    EXPECT_EQ(find<QSplitter>("viewsSplitter")->sizes(), views);
}

TEST_F(WindowMemoryTest, WhatIsNoPlaceOfAWindowIsPassedOver)
{
    memory_.setTexts({{"mainWindow", "no base64 \xff of this"}});
    launch();
    const QSize before = find<>("cwinMainWindow")->size();
    const interface::WindowMemory memory(memory_, loaded());
    EXPECT_EQ(find<>("cwinMainWindow")->size(), before);
}

TEST_F(WindowMemoryTest, WritesOnlyWhatIsNew)
{
    launch();
    {
        const interface::WindowMemory memory(memory_, loaded());
    }
    EXPECT_EQ(memory_.text("mainWindow"), std::nullopt);
    {
        const interface::WindowMemory memory(memory_, loaded());
        find<>("cwinMainWindow")->resize(1300, 850);
        QApplication::processEvents();
    }
    EXPECT_NE(memory_.text("mainWindow"), std::nullopt);
    {
        const interface::WindowMemory memory(memory_, loaded());
        memory_.setTexts({{"mainWindow", "of another running program"}});
    }
    EXPECT_EQ(memory_.text("mainWindow"), "of another running program");
}

} // namespace test
