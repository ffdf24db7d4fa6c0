#include "tests/support/WindowTest.h"

#include "mapping/EditingState.h"

#include <QAction>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMenuBar>
#include <QSet>
#include <QTest>

namespace test {

class KeyboardTest : public WindowTest {
protected:
    void load(int parameters = 24)
    {
        writeDictionary(builtIn("Synth"), orderFile(numbered(parameters)));
        launch();
        activate();
        select("Synth");
    }
    /// Also after an alert: without a window manager nobody gives the focus back.
    void activate()
    {
        find<>("cwinMainWindow")->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(find<>("cwinMainWindow")));
    }

    void focus(const char* name)
    {
        find<>(name)->setFocus();
        ASSERT_EQ(QApplication::focusWidget(), find<>(name)) << name;
    }

    /// As from a keyboard: to whoever has the focus.
    static void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    }
    static void type(const char* text)
    {
        for (const char* c = text; *c; ++c)
            QTest::keyClick(QApplication::focusWidget(), *c);
    }

    std::string search() const { return text("parameterSearch"); }
    bool searchHasFocus() const { return find<>("parameterSearch")->hasFocus(); }
};

TEST_F(KeyboardTest, LettersTypedAnywhereGoIntoTheSearch)
{
    for (const char* place : {"tablePlistOfSelectedPlugin", "kvRotaryBtn3", "kvExportToPlist", "kvPluginMode_0",
                              "pageOverview", "unmappedOnly"}) {
        load();
        focus(place);
        type("knob 2");
        EXPECT_TRUE(searchHasFocus()) << place;
        EXPECT_EQ(search(), "knob 2") << place;
        EXPECT_EQ(columnOf("tablePlistOfSelectedPlugin", 1).size(), 8u) << place; // the blank entry, 2, 12 and 20 to 24
        EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 1 of 3");
    }
}

TEST_F(KeyboardTest, ABlankPressesTheButtonInsteadOfBeginningASearch)
{
    load();
    focus("newPageButtonPressed");
    key(Qt::Key_Space);
    EXPECT_EQ(mapping::totalPages, 4);
    EXPECT_EQ(search(), "");
}

TEST_F(KeyboardTest, ArrowsMoveInTheListWhileTheSearchHasTheFocus)
{
    load();
    focus("parameterSearch");
    type("knob 1");
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 1);
    key(Qt::Key_Down);
    key(Qt::Key_Down);
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 3);
    key(Qt::Key_Up);
    key(Qt::Key_Up);
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 1);
    EXPECT_TRUE(searchHasFocus());
    key(Qt::Key_3, Qt::ControlModifier);
    EXPECT_EQ(potLabel(3), "Knob 1");
    EXPECT_TRUE(searchHasFocus());
    EXPECT_EQ(search(), "knob 1");
}

TEST_F(KeyboardTest, EscapeClearsTheSearchAndThenLeavesIt)
{
    load();
    focus("parameterSearch");
    type("x");
    key(Qt::Key_Escape);
    EXPECT_EQ(search(), "");
    EXPECT_TRUE(searchHasFocus());
    key(Qt::Key_Escape);
    EXPECT_TRUE(find<>("tablePlistOfSelectedPlugin")->hasFocus());
    key(Qt::Key_F, Qt::ControlModifier);
    EXPECT_TRUE(searchHasFocus());
    type("y");
    key(Qt::Key_F, Qt::ControlModifier);
    type("z");
    EXPECT_EQ(search(), "z"); // in place of what was searched before
    key(Qt::Key_Return);
    EXPECT_TRUE(find<>("tablePlistOfSelectedPlugin")->hasFocus());
}

TEST_F(KeyboardTest, DigitsPressThePotsFromTheListAndThePanel)
{
    for (const char* place : {"tablePlistOfSelectedPlugin", "kvRotaryBtn5"}) {
        load();
        controller().arrayControllerPlistSelected()->setSelectionIndex(17);
        focus(place);
        for (int pot = 1; pot <= 8; ++pot)
            key(static_cast<Qt::Key>(Qt::Key_0 + pot));
        for (int pot = 1; pot <= 8; ++pot)
            EXPECT_EQ(potLabel(pot), "Knob " + std::to_string(std::min(16 + pot, 24))) << place;
        EXPECT_EQ(search(), "") << place;
        key(Qt::Key_9);
        EXPECT_EQ(search(), "9") << place; // there is no ninth pot
    }
}

TEST_F(KeyboardTest, DigitsTypedIntoTheSearchAreText)
{
    load();
    controller().arrayControllerPlistSelected()->setSelectionIndex(17);
    focus("parameterSearch");
    type("12345678");
    EXPECT_EQ(search(), "12345678");
    EXPECT_EQ(potLabels().at(2), "Knob 3");
    EXPECT_FALSE(controller().history().canUndo());
}

TEST_F(KeyboardTest, CtrlAndADigitPressAPotFromAnywhere)
{
    for (const char* place : {"pluginTableView", "parameterSearch", "kvExportToPlist", "kvRotaryBtn1"}) {
        load();
        controller().arrayControllerPlistSelected()->setSelectionIndex(17);
        focus(place);
        key(Qt::Key_4, Qt::ControlModifier);
        EXPECT_EQ(potLabel(4), "Knob 17") << place;
        EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 18) << place;
    }
}

TEST_F(KeyboardTest, PageKeysTurnPagesOnPanelAndStripAndWithAltEverywhere)
{
    const std::pair<const char*, Qt::KeyboardModifiers> places[] = {
        {"kvRotaryBtn5", Qt::NoModifier},     {"pageOverview", Qt::NoModifier},
        {"kvRotaryBtn5", Qt::AltModifier},    {"pageOverview", Qt::AltModifier},
        {"pluginTableView", Qt::AltModifier}, {"tablePlistOfSelectedPlugin", Qt::AltModifier},
        {"parameterSearch", Qt::AltModifier}, {"kvExportToPlist", Qt::AltModifier},
    };
    for (const auto& [place, modifiers] : places) {
        load();
        focus(place);
        key(Qt::Key_PageDown, modifiers);
        EXPECT_EQ(mapping::curPage, 2) << place;
        key(Qt::Key_End, modifiers);
        EXPECT_EQ(mapping::curPage, 3) << place;
        key(Qt::Key_PageUp, modifiers);
        EXPECT_EQ(mapping::curPage, 2) << place;
        key(Qt::Key_Home, modifiers);
        EXPECT_EQ(mapping::curPage, 1) << place;
        EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 0) << place;
        EXPECT_EQ(selectedRow("pluginTableView"), 0) << place;
    }
}

TEST_F(KeyboardTest, PageKeysMoveInTheListThatHasTheFocus)
{
    for (int plugin = 0; plugin < 40; ++plugin)
        writeDictionary(builtIn("A " + std::to_string(plugin)), orderFile(numbered(1)));
    const auto rowAfter = [this](const char* list, Qt::Key pressed, Qt::KeyboardModifiers modifiers = {}) {
        key(pressed, modifiers);
        EXPECT_EQ(mapping::curPage, 2) << list;
        return selectedRow(list);
    };
    for (const auto& [list, last] : {std::pair{"pluginTableView", 40}, {"tablePlistOfSelectedPlugin", 400}}) {
        load(400);
        click("nextPageButtonPressed");
        focus(list);
        EXPECT_EQ(rowAfter(list, Qt::Key_Home), 0) << list;
        const std::int32_t screen = rowAfter(list, Qt::Key_PageDown);
        EXPECT_GT(screen, 1) << list;
        EXPECT_LT(screen, last) << list;
        EXPECT_EQ(rowAfter(list, Qt::Key_PageUp), 0) << list;
        EXPECT_EQ(rowAfter(list, Qt::Key_End), last) << list;
        EXPECT_EQ(rowAfter(list, Qt::Key_Home, Qt::ControlModifier), 0) << list;
        EXPECT_EQ(rowAfter(list, Qt::Key_End, Qt::ControlModifier), last) << list;
        // As a Mac sends them, where they are arrows with Fn.
        EXPECT_EQ(rowAfter(list, Qt::Key_Home, Qt::ControlModifier | Qt::KeypadModifier), 0) << list;
        EXPECT_FALSE(controller().history().canUndo()) << list << ": no page was moved";
    }
}

TEST_F(KeyboardTest, ControlWithPageKeysMovesThePageWhereNoListHasTheFocus)
{
    for (const char* place : {"kvRotaryBtn5", "pageOverview", "kvExportToPlist"}) {
        load();
        focus(place);
        key(Qt::Key_End, Qt::ControlModifier);
        EXPECT_EQ(mapping::curPage, 3) << place;
        EXPECT_EQ(potLabel(1), "Knob 1") << place;
        key(Qt::Key_Home, Qt::ControlModifier);
        EXPECT_EQ(mapping::curPage, 1) << place;
        EXPECT_EQ(potLabel(1), "Knob 1") << place;
    }
}

TEST_F(KeyboardTest, PageKeysElsewhereTurnNoPage)
{
    load();
    for (const char* place : {"kvExportToPlist", "parameterSearch", "kvPluginMode_0", "newPageButtonPressed"}) {
        focus(place);
        for (const auto pressed : {Qt::Key_PageDown, Qt::Key_End})
            key(pressed);
        EXPECT_EQ(mapping::curPage, 1) << place;
    }
}

TEST_F(KeyboardTest, WhatIsTypedInThePluginListIsMeantForPluginsOnly)
{
    writeDictionary(builtIn("Knob 2"), orderFile(numbered(1)));
    load();
    focus("pluginTableView");
    type("k3");
    EXPECT_EQ(text("pluginSearch"), "k3");
    EXPECT_EQ(search(), "");
    EXPECT_EQ(controller().myArrayController()->selectionText("Plugin"), "Synth");
    EXPECT_EQ(potLabel(3), "Knob 3");
    EXPECT_FALSE(controller().history().canUndo());
}

TEST_F(KeyboardTest, HomeAndEndStayWithinTheSearchThatIsTypedInto)
{
    load();
    focus("parameterSearch");
    type("bc");
    key(Qt::Key_Home);
    type("a");
    key(Qt::Key_End);
    type("d");
    EXPECT_EQ(search(), "abcd");
    EXPECT_EQ(mapping::curPage, 1);
}

TEST_F(KeyboardTest, UndoTakesBackTypingRightAfterItAndElseTheLastEdit)
{
    load();
    controller().arrayControllerPlistSelected()->setSelectionIndex(9);
    focus("parameterSearch");
    key(Qt::Key_1, Qt::ControlModifier);
    ASSERT_EQ(potLabel(1), "Knob 9");
    type("knob");
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_NE(search(), "knob");
    EXPECT_EQ(potLabel(1), "Knob 9");
    find<QLineEdit>("parameterSearch")->clear();
    type("knob 12");
    key(Qt::Key_2, Qt::ControlModifier);
    EXPECT_EQ(potLabel(2), "Knob 12");
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(potLabel(2), "Knob 2");
    EXPECT_EQ(search(), "knob 12");
    key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(potLabel(2), "Knob 12");
}

TEST_F(KeyboardTest, UndoGoesOnWithTheEditsAfterOneWasTakenBackFromTheMenu)
{
    for (const char* item : {"undo", "redo"}) {
        load();
        controller().arrayControllerPlistSelected()->setSelectionIndex(9);
        for (int pot = 1; pot <= 3; ++pot)
            pressPot(pot);
        controller().undo();
        focus("parameterSearch");
        type("knob");
        find<QAction>(item)->trigger(); // so the typing is not what was done last
        const std::size_t changed = controller().changedPots();
        key(Qt::Key_Z, Qt::ControlModifier);
        EXPECT_EQ(controller().changedPots(), changed - 1) << item;
        EXPECT_EQ(search(), "knob") << item;
    }
}

TEST_F(KeyboardTest, UndoMeansTheFieldOnlyAsLongAsItHasSomethingToTakeBack)
{
    load();
    controller().arrayControllerPlistSelected()->setSelectionIndex(9);
    focus("parameterSearch");
    key(Qt::Key_1, Qt::ControlModifier);
    type("kn");
    key(Qt::Key_PageDown, Qt::AltModifier); // no edit, so the typing is still what was done last
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_NE(search(), "kn");
    EXPECT_TRUE(controller().history().canUndo());
    for (int i = 0; i < 6; ++i)
        key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(search(), "");
    EXPECT_FALSE(controller().history().canUndo());
    EXPECT_EQ(potLabel(1), "Knob 1");
}

TEST_F(KeyboardTest, AKeyHeldDownEditsOnlyOnce)
{
    load();
    controller().arrayControllerPlistSelected()->setSelectionIndex(9);
    focus("tablePlistOfSelectedPlugin");
    const auto holdDown = [](int pressed, Qt::KeyboardModifiers modifiers, const QString& typed) {
        for (const bool repeated : {false, true, true}) {
            QWidget* focused = QApplication::focusWidget();
            QKeyEvent down(QEvent::KeyPress, pressed, modifiers, typed, repeated);
            if (!qt_sendShortcutOverrideEvent(focused, 0, pressed, modifiers, typed, repeated))
                QApplication::sendEvent(focused, &down);
        }
    };
    holdDown(Qt::Key_3, Qt::NoModifier, QStringLiteral("3"));
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 10);
    holdDown(Qt::Key_4, Qt::ControlModifier, {});
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 11);
    holdDown(Qt::Key_N, Qt::ControlModifier, {});
    EXPECT_EQ(mapping::totalPages, 4);
    holdDown(Qt::Key_PageUp, Qt::AltModifier, {});
    EXPECT_EQ(mapping::curPage, 1); // stepping goes on
}

TEST_F(KeyboardTest, ThePlatformsShortcutsDoTheirWork)
{
    load();
    focus("tablePlistOfSelectedPlugin");
    key(Qt::Key_N, Qt::ControlModifier);
    EXPECT_EQ(mapping::totalPages, 4);
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_EQ(mapping::totalPages, 3);
    const auto saved = alertsOf([] { key(Qt::Key_S, Qt::ControlModifier); });
    ASSERT_EQ(saved.size(), 1u);
    EXPECT_EQ(saved.front().text, "New Mapping has been saved");
    activate();
    key(Qt::Key_P, Qt::ControlModifier);
    EXPECT_EQ(workspace_.opened.size(), 1u);
    const auto helped = alertsOf([] { key(Qt::Key_F1); });
    ASSERT_EQ(helped.size(), 1u);
    EXPECT_EQ(helped.front().text, "Brief instructions on use");
    activate();
    writeDictionary(builtIn("Another"), orderFile(numbered(1)));
    key(Qt::Key_F5);
    EXPECT_EQ(columnOf("pluginTableView", 0).size(), 2u);
}

TEST_F(KeyboardTest, TheMenuBarHoldsEveryOperationWithAShortcutOfItsOwn)
{
    load();
    const char* const operations[] = {"btnRunCheck",
                                      "kvExportToPlist",
                                      "kvRecallOriginalMapping",
                                      "kvRecallPreviousMapping",
                                      "kvCreateChart",
                                      "saveAction",
                                      "terminate",
                                      "undo",
                                      "redo",
                                      "findParameter",
                                      "unmappedOnlyItem",
                                      "kvRotBtn1_Pressed",
                                      "kvRotBtn2_Pressed",
                                      "kvRotBtn3_Pressed",
                                      "kvRotBtn4_Pressed",
                                      "kvRotBtn5_Pressed",
                                      "kvRotBtn6_Pressed",
                                      "kvRotBtn7_Pressed",
                                      "kvRotBtn8_Pressed",
                                      "modeInstrument",
                                      "modeInsertEffect",
                                      "firstPageButtonPressed",
                                      "prevPageButtonPressed",
                                      "nextPageButtonPressed",
                                      "lastPageButtonPressed",
                                      "kvMovePage_First",
                                      "kvMovePage_Prev",
                                      "kvMovePage_Next",
                                      "kvMovePage_Last",
                                      "newPageButtonPressed",
                                      "deletePageButtonPressed",
                                      "clearAllPagesButtonPressed",
                                      "startFromScratch",
                                      "kvLoginToCloudAccount",
                                      "kvCommunityLibrary",
                                      "kvCommunityLibraryDownload",
                                      "kvHelpMe"};
    QSet<QAction*> inMenus;
    for (const QAction* menu : find<QMenuBar>("menuBar")->actions()) {
        for (QAction* item : menu->menu()->actions())
            inMenus.insert(item);
    }
    QSet<QKeySequence> shortcuts;
    for (const char* name : operations) {
        auto* item = find<QAction>(name);
        EXPECT_TRUE(inMenus.contains(item)) << name;
        EXPECT_FALSE(item->shortcut().isEmpty()) << name;
        EXPECT_FALSE(shortcuts.contains(item->shortcut())) << name << " " << qPrintable(item->shortcut().toString());
        shortcuts.insert(item->shortcut());
    }
}

TEST_F(KeyboardTest, ToolTipsOfButtonsTellTheShortcut)
{
    load();
    EXPECT_EQ(toolTip("nextPageButtonPressed"), "Show the page after (Alt+PgDown)");
    EXPECT_EQ(toolTip("kvExportToPlist"), "Write the mapping into the plug-in's file and keep backups (Ctrl+S)");
    EXPECT_NE(toolTip("kvRotaryBtn3").find("(Ctrl+3)"), std::string::npos);
    EXPECT_NE(toolTip("kv_btn_cloudLibrary").find("(Ctrl+U)"), std::string::npos);
}

TEST_F(KeyboardTest, TabReachesEveryControlOnce)
{
    load();
    QWidget* window = find<>("cwinMainWindow");
    QSet<QWidget*> reached;
    QStringList order;
    focus("pluginTableView");
    for (int step = 0; step < 100; ++step) {
        QWidget* now = QApplication::focusWidget();
        if (reached.contains(now))
            break;
        reached.insert(now);
        order += now->objectName();
        key(Qt::Key_Tab);
    }
    for (QWidget* widget : window->findChildren<QWidget*>()) {
        const bool takesFocus = widget->isVisibleTo(window) && widget->isEnabled() &&
                                (widget->focusPolicy() & Qt::TabFocus) && !widget->focusProxy();
        if (!takesFocus)
            continue;
        EXPECT_TRUE(reached.contains(widget))
            << widget->metaObject()->className() << " " << qPrintable(widget->objectName());
    }
    EXPECT_TRUE(reached.contains(find<>("kvPluginMode_0"))); // the chosen one
    EXPECT_FALSE(reached.contains(find<>("kvPluginMode_1")));
    // Lists, then the panel from left to right, then what works on pages.
    const auto at = [&](const char* name) { return order.indexOf(QLatin1String(name)); };
    EXPECT_LT(at("pluginTableView"), at("parameterSearch"));
    EXPECT_LT(at("parameterSearch"), at("tablePlistOfSelectedPlugin"));
    EXPECT_LT(at("tablePlistOfSelectedPlugin"), at("kvRotaryBtn1"));
    for (int pot = 1; pot < 8; ++pot)
        EXPECT_EQ(at(qPrintable(QStringLiteral("kvRotaryBtn%1").arg(pot))) + 1,
                  at(qPrintable(QStringLiteral("kvRotaryBtn%1").arg(pot + 1))));
    EXPECT_LT(at("kvRotaryBtn8"), at("pageOverview"));
    EXPECT_LT(at("pageOverview"), at("firstPageButtonPressed"));
}

TEST_F(KeyboardTest, WithoutAPluginTheKeysDoNothing)
{
    launch();
    activate();
    focus("tablePlistOfSelectedPlugin");
    for (const auto pressed : {Qt::Key_1, Qt::Key_PageDown, Qt::Key_Home, Qt::Key_End}) {
        key(pressed);
        key(pressed, Qt::AltModifier);
    }
    key(Qt::Key_1, Qt::ControlModifier);
    key(Qt::Key_Z, Qt::ControlModifier);
    EXPECT_TRUE(mapping::plistBuild.empty());
}

} // namespace test
