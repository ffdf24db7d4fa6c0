#include "tests/support/WindowTest.h"

#include "mapping/EditingState.h"

#include <QElapsedTimer>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QRadioButton>
#include <QTest>
#include <QTreeView>

#include <functional>

using testing::ElementsAre;

namespace test {

class SelectionTest : public WindowTest {
protected:
    void SetUp() override
    {
        writeDictionary(builtIn("Effect"), orderFile(numbered(9)));
        writeDictionary(builtIn("Synth"), orderFile({"7 Master Volume", "8 Cutoff"}));
    }

    QTreeView* list() const { return find<QTreeView>("pluginTableView"); }
    QPoint cell(int row, int column = 0) const
    {
        return list()->visualRect(list()->model()->index(row, column)).center();
    }
    int loadsDuring(const std::function<void()>& action)
    {
        int loads = 0;
        const auto watching = controller().pluginTableView()->rowChosen.connect([&] { ++loads; });
        action();
        return loads;
    }

    bool isInstrument() const
    {
        return find<QRadioButton>("kvPluginMode_1")->isChecked() && !find<QRadioButton>("kvPluginMode_0")->isChecked();
    }
};

TEST_F(SelectionTest, ChoosingARowLoadsItsPlugin)
{
    launch();
    select("Effect");
    EXPECT_EQ(text("labKOScreen_Title"), "Effect (Logic Built-In)");
    EXPECT_EQ(text("labPluginPlistLocation"), builtIn("Effect").native());
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 1 of 2");
    EXPECT_EQ(text("labTotalPagesIndicator"), "2 Pages");
    EXPECT_EQ(text("mainTitle_Sub"), "Logic Pro Insert/Effect Mapper");
    EXPECT_EQ(text("labelHelperDisplay"), "Editing Effect in Insert/Effect Mode");
    EXPECT_FALSE(isInstrument());
    EXPECT_EQ(potLabel(8), "Knob 8");
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 0);
    EXPECT_THAT(
        columnOf("tablePlistOfSelectedPlugin", 1),
        ElementsAre("-", "Knob 1", "Knob 2", "Knob 3", "Knob 4", "Knob 5", "Knob 6", "Knob 7", "Knob 8", "Knob 9"));
    EXPECT_EQ(columnOf("tablePlistOfSelectedPlugin", 0)[9], "9");
}

TEST_F(SelectionTest, AClickOnAModeSwitchesToItAndBack)
{
    launch();
    select("Effect");
    QTest::mouseClick(find("kvPluginMode_1"), Qt::LeftButton, Qt::NoModifier, QPoint(8, 8));
    EXPECT_EQ(text("labelHelperDisplay"), "Editing Effect using Instrument Mode");
    QTest::mouseClick(find("kvPluginMode_0"), Qt::LeftButton, Qt::NoModifier, QPoint(8, 8));
    EXPECT_EQ(text("labelHelperDisplay"), "Editing Effect in Insert/Effect Mode");
}

TEST_F(SelectionTest, ClickingTheChosenModeAgainKeepsTheEdit)
{
    launch();
    select("Effect");
    chooseParameter("Knob 9");
    pressPot(1);
    QTest::mouseClick(find("kvPluginMode_0"), Qt::LeftButton, Qt::NoModifier, QPoint(8, 8));
    EXPECT_EQ(potLabel(1), "Knob 9");
}

TEST_F(SelectionTest, ARowIsChosenWhenTheKeysHaveRestedOnIt)
{
    launch();
    select("Effect");
    QElapsedTimer sincePress;
    sincePress.start();
    QTest::keyClick(list(), Qt::Key_Down);
    EXPECT_EQ(selectedRow("pluginTableView"), 1);
    EXPECT_EQ(text("labKOScreen_Title"), "Effect (Logic Built-In)");
    ASSERT_TRUE(waitUntil([this] { return text("labKOScreen_Title") == "Synth (Logic Built-In)"; }));
    EXPECT_GE(sincePress.elapsed(), 300);
    QTest::keyClick(list(), Qt::Key_Up);
    letKeysRest();
    EXPECT_EQ(text("labKOScreen_Title"), "Effect (Logic Built-In)");
    EXPECT_EQ(selectedRow("pluginTableView"), 0);
}

TEST_F(SelectionTest, ARowIsNeverOnlyMarkedWhicheverArrowGoesThere)
{
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Left, Qt::Key_Right}) {
        launch();
        list()->setFocus(Qt::TabFocusReason);
        QTest::keyClick(list(), key);
        letKeysRest();
        EXPECT_EQ(text("labKOScreen_Title"), "Effect (Logic Built-In)") << key;
    }
}

TEST_F(SelectionTest, HoldingDownAcrossAllPluginsLoadsAndRewritesOne)
{
    constexpr int kPlugins = 59;
    const auto file = [this](int plugin) { return thirdParty("Maker", "X " + std::to_string(plugin)); };
    for (int plugin = 2; plugin < kPlugins; ++plugin)
        writeDictionary(file(plugin), orderFile(numbered(9)));
    const auto rewritten = [&] {
        int count = 0;
        for (int plugin = 2; plugin < kPlugins; ++plugin)
            count += read(file(plugin)).find("KorvelCSUnique") != std::string::npos ? 1 : 0;
        return count;
    };
    launch();
    select("Effect");
    const int loads = loadsDuring([this] {
        const auto send = [this](QEvent::Type type, bool repeated) {
            QKeyEvent event(type, Qt::Key_Down, Qt::NoModifier, {}, repeated);
            QApplication::sendEvent(list(), &event);
        };
        send(QEvent::KeyPress, false);
        runFor(400); // until a keyboard repeats
        for (int row = 2; row < kPlugins; ++row) {
            send(QEvent::KeyRelease, true); // as X11 has it
            send(QEvent::KeyPress, true);
            runFor(row == 10 ? 400 : 5); // some have it repeat slowly
        }
        send(QEvent::KeyRelease, false);
        letKeysRest();
    });
    EXPECT_EQ(loads, 1);
    EXPECT_EQ(rewritten(), 1);
    EXPECT_EQ(text("labKOScreen_Title"), "X 58 (Maker)");
}

TEST_F(SelectionTest, AKeyThatIsLetGoElsewhereRestsToo)
{
    launch();
    select("Effect");
    list()->setFocus();
    QTest::keyPress(list(), Qt::Key_Down);
    find("parameterSearch")->setFocus();
    letKeysRest();
    EXPECT_EQ(text("labKOScreen_Title"), "Synth (Logic Built-In)");
}

TEST_F(SelectionTest, ReturnAndSpaceChooseTheRowAtOnceAndTheChosenOneAfresh)
{
    for (const Qt::Key key : {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Space}) {
        launch();
        select("Effect");
        EXPECT_EQ(loadsDuring([&] {
                      QTest::keyClick(list(), Qt::Key_Down);
                      QTest::keyClick(list(), key, key == Qt::Key_Enter ? Qt::KeypadModifier : Qt::NoModifier);
                      EXPECT_EQ(text("labKOScreen_Title"), "Synth (Logic Built-In)") << key;
                      runFor(400);
                  }),
                  1)
            << key;
        pressPot(1);
        ASSERT_EQ(potLabel(1), "-");
        QTest::keyClick(list(), key);
        EXPECT_EQ(potLabel(1), "Master Volume") << key;
        EXPECT_EQ(loadsDuring([&] {
                      QKeyEvent held(QEvent::KeyPress, key, Qt::NoModifier, {}, true);
                      QApplication::sendEvent(list(), &held);
                  }),
                  0)
            << key;
    }
}

TEST_F(SelectionTest, ReturnChoosesTheRowThatTheListBeginsWith)
{
    launch();
    list()->setFocus(Qt::TabFocusReason);
    QTest::keyClick(list(), Qt::Key_Return);
    EXPECT_EQ(text("labKOScreen_Title"), "Effect (Logic Built-In)");
    EXPECT_EQ(selectedRow("pluginTableView"), 0);
}

TEST_F(SelectionTest, WhatIsDoneBeforeTheKeysRestedIsDoneToTheLoadedPlugin)
{
    launch();
    select("Effect");
    const std::string untouched = read(builtIn("Synth"));
    QTest::keyClick(list(), Qt::Key_Down);
    chooseParameter("Knob 9");
    pressPot(1);
    EXPECT_EQ(potLabel(1), "Knob 9");
    click("kvCreateChart");
    alertsOf([this] { click("kvExportToPlist"); });
    EXPECT_EQ(textsAt(builtIn("Effect"), kOrder).front(), "9 Knob 9");
    ASSERT_EQ(workspace_.opened.size(), 1U);
    EXPECT_EQ(workspace_.opened.front().native(), builtIn("Effect").native() + ".html");
    EXPECT_EQ(read(builtIn("Synth")), untouched);
    EXPECT_EQ(selectedRow("pluginTableView"), 1) << "the keys are still on their way";
    letKeysRest();
    EXPECT_EQ(text("labKOScreen_Title"), "Synth (Logic Built-In)");
}

TEST_F(SelectionTest, NoPluginIsLoadedBehindAnAlert)
{
    launch();
    select("Effect");
    EXPECT_EQ(loadsDuring([this] {
                  QTest::keyClick(list(), Qt::Key_Down);
                  AlertAnswers answers;
                  answers.whileOpen = [this] {
                      runFor(400);
                      EXPECT_EQ(text("labKOScreen_Title"), "Effect (Logic Built-In)");
                  };
                  controller().kvHelpMe();
              }),
              0);
    letKeysRest();
    EXPECT_EQ(text("labKOScreen_Title"), "Synth (Logic Built-In)");
}

TEST_F(SelectionTest, KeysThatComeBackLoadNothing)
{
    launch();
    select("Effect");
    pressPot(1);
    EXPECT_EQ(loadsDuring([this] {
                  for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Up, Qt::Key_Home})
                      QTest::keyClick(list(), key);
                  runFor(400);
              }),
              0);
    EXPECT_EQ(potLabel(1), "-");
}

TEST_F(SelectionTest, AnotherOrderOfTheRowsAndARescanEndTheWayOfTheKeys)
{
    for (const bool rescans : {false, true}) {
        launch();
        select("Effect");
        EXPECT_EQ(loadsDuring([&] {
                      QTest::keyClick(list(), Qt::Key_Down);
                      if (rescans)
                          controller().btnRunCheck();
                      else
                          list()->sortByColumn(0, Qt::DescendingOrder);
                      EXPECT_EQ(selectedRow("pluginTableView"), rescans ? -1 : 1);
                      runFor(400);
                  }),
                  0);
        EXPECT_EQ(text("labPluginPlistLocation"), builtIn("Effect").native());
        EXPECT_EQ(selectedRow("pluginTableView"), controller().myArrayController()->selectionIndex());
    }
}

TEST_F(SelectionTest, AClickEndsTheWayOfTheKeys)
{
    launch();
    select("Effect");
    EXPECT_EQ(loadsDuring([this] {
                  QTest::keyClick(list(), Qt::Key_Down);
                  select("Effect");
                  runFor(400);
              }),
              1);
    EXPECT_EQ(text("labKOScreen_Title"), "Effect (Logic Built-In)");
    EXPECT_EQ(selectedRow("pluginTableView"), 0);
}

TEST_F(SelectionTest, ARowIsChosenWhenTheLeftButtonIsLetGoOnIt)
{
    launch();
    select("Effect");
    QTest::mousePress(list()->viewport(), Qt::LeftButton, {}, cell(1));
    EXPECT_EQ(text("labKOScreen_Title"), "Effect (Logic Built-In)");
    EXPECT_EQ(selectedRow("pluginTableView"), 1);
    QTest::mouseRelease(list()->viewport(), Qt::LeftButton, {}, cell(1, 1));
    EXPECT_EQ(text("labKOScreen_Title"), "Synth (Logic Built-In)");
}

TEST_F(SelectionTest, APressThatIsLetGoElsewhereLoadsNothing)
{
    launch();
    select("Effect");
    const QPoint below(20, list()->viewport()->height() - 3);
    const std::pair<QPoint, QPoint> ways[] = {
        {cell(1), cell(0)},
        {cell(0), cell(1)},
        {cell(1), below},
        {below, cell(1)},
        {cell(1), {-40, cell(1).y()}}, // beside the list
    };
    for (const auto& [from, to] : ways) {
        EXPECT_EQ(loadsDuring([&, start = from, end = to] {
                      QTest::mousePress(list()->viewport(), Qt::LeftButton, {}, start);
                      const int marked = selectedRow("pluginTableView");
                      QMouseEvent pull(QEvent::MouseMove, end, list()->viewport()->mapToGlobal(end), Qt::NoButton,
                                       Qt::LeftButton, Qt::NoModifier);
                      QApplication::sendEvent(list()->viewport(), &pull);
                      EXPECT_EQ(selectedRow("pluginTableView"), marked) << "the mark follows no pull";
                      QTest::mouseRelease(list()->viewport(), Qt::LeftButton, {}, end);
                      runFor(400);
                  }),
                  0);
        EXPECT_EQ(selectedRow("pluginTableView"), 0) << "the loaded one is marked again";
        EXPECT_EQ(text("labKOScreen_Title"), "Effect (Logic Built-In)");
    }
}

TEST_F(SelectionTest, APressDuringWhichTheRowsAreOrderedAnewLoadsNothing)
{
    launch();
    select("Effect");
    EXPECT_EQ(loadsDuring([this] {
                  QTest::mousePress(list()->viewport(), Qt::LeftButton, {}, cell(1));
                  list()->sortByColumn(0, Qt::DescendingOrder);
                  QTest::mouseRelease(list()->viewport(), Qt::LeftButton, {}, cell(1));
              }),
              0);
    EXPECT_EQ(selectedRow("pluginTableView"), 1);
}

TEST_F(SelectionTest, OtherButtonsChooseNothing)
{
    launch();
    select("Effect");
    for (const Qt::MouseButton button : {Qt::RightButton, Qt::MiddleButton}) {
        for (const int row : {0, 1}) {
            EXPECT_EQ(loadsDuring([&] { QTest::mouseClick(list()->viewport(), button, {}, cell(row)); }), 0);
            EXPECT_EQ(selectedRow("pluginTableView"), 0);
        }
    }
}

TEST_F(SelectionTest, GoingIntoTheListChoosesNothing)
{
    launch();
    find("parameterSearch")->setFocus();
    find("pluginTableView")->setFocus(Qt::TabFocusReason);
    EXPECT_EQ(selectedRow("pluginTableView"), -1);
    EXPECT_EQ(text("labKOScreen_Title"), "Please Select a plugin");
}

TEST_F(SelectionTest, TheFirstKeyChoosesTheFirstRow)
{
    for (const Qt::Key key : {Qt::Key_Down, Qt::Key_Home, Qt::Key_Up}) {
        launch();
        find("parameterSearch")->setFocus();
        list()->setFocus(Qt::TabFocusReason);
        QTest::keyClick(list(), key);
        letKeysRest();
        EXPECT_EQ(text("labKOScreen_Title"), "Effect (Logic Built-In)") << key;
        QTest::keyClick(list(), Qt::Key_Down);
        letKeysRest();
        EXPECT_EQ(text("labKOScreen_Title"), "Synth (Logic Built-In)") << key;
    }
}

TEST_F(SelectionTest, AnOnlyPluginCanBeChosenWithTheKeyboard)
{
    std::filesystem::remove_all(builtIn("Synth").parent_path());
    launch();
    list()->setFocus(Qt::TabFocusReason);
    QTest::keyClick(list(), Qt::Key_Down);
    letKeysRest();
    EXPECT_EQ(text("labKOScreen_Title"), "Effect (Logic Built-In)");
}

TEST_F(SelectionTest, AClickBesideTheRowsChangesNothing)
{
    launch();
    select("Effect");
    chooseParameter("Knob 3");
    for (const char* name : {"pluginTableView", "tablePlistOfSelectedPlugin"}) {
        auto* list = find<QTreeView>(name);
        const int row = selectedRow(name);
        const QPoint beside(20, list->viewport()->height() - 3);
        ASSERT_FALSE(list->indexAt(beside).isValid());
        QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::NoModifier, beside);
        EXPECT_EQ(selectedRow(name), row) << name;
    }
    EXPECT_EQ(text("labKOScreen_Title"), "Effect (Logic Built-In)");
}

TEST_F(SelectionTest, ClickingTheChosenRowLoadsItAfresh)
{
    launch();
    select("Effect");
    chooseParameter("Knob 9");
    pressPot(1);
    ASSERT_EQ(potLabel(1), "Knob 9");
    select("Effect");
    EXPECT_EQ(potLabel(1), "Knob 1");
}

TEST_F(SelectionTest, AClickLoadsOnceAndSoDoesADoubleClick)
{
    launch();
    EXPECT_EQ(loadsDuring([this] { select("Effect"); }), 1);
    EXPECT_EQ(loadsDuring([this] { select("Synth"); }), 1);
    EXPECT_EQ(loadsDuring([this] { select("Synth"); }), 1);
    EXPECT_EQ(loadsDuring([this] {
                  select("Effect");
                  QTest::mouseDClick(list()->viewport(), Qt::LeftButton, {}, cell(0)); // its second press alone
                  QTest::mouseRelease(list()->viewport(), Qt::LeftButton, {}, cell(0));
              }),
              1);
}

TEST_F(SelectionTest, AClickWithCtrlDoesNotTakeTheChoiceBack)
{
    launch();
    select("Effect");
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, Qt::ControlModifier, cell(0));
    EXPECT_EQ(selectedRow("pluginTableView"), 0);
    EXPECT_EQ(controller().myArrayController()->selectionText("Plugin"), "Effect");
}

TEST_F(SelectionTest, WithoutASelectedRowItsTextsAreEmpty)
{
    launch();
    controller().plugInSelected();
    EXPECT_EQ(text("labKOScreen_Title"), " ()");
    EXPECT_EQ(text("labPluginPlistLocation"), "");
    EXPECT_EQ(mapping::plistBuild.size(), 8U);
    EXPECT_FALSE(isEnabled("kvExportToPlist"));
}

TEST_F(SelectionTest, UntilAPluginIsLoadedWhatNeedsOneIsDisabled)
{
    writeDictionary(builtIn("Effect"), orderFile(numbered(9)));
    launch();
    for (const char* name :
         {"firstPageButtonPressed", "prevPageButtonPressed", "nextPageButtonPressed", "lastPageButtonPressed",
          "kvMovePage_First", "kvMovePage_Prev", "kvMovePage_Next", "kvMovePage_Last", "newPageButtonPressed",
          "deletePageButtonPressed", "clearAllPagesButtonPressed", "kvExportToPlist", "kvRecallOriginalMapping",
          "kvRecallPreviousMapping", "kvCreateChart", "kvPluginMode", "kvRotaryBtn1", "kvRotaryBtn8"})
        EXPECT_FALSE(isEnabled(name)) << name;
}

} // namespace test
