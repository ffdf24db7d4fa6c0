#include "tests/support/WindowTest.h"

#include "mapping/EditingState.h"

#include <QRadioButton>
#include <QTest>
#include <QTreeView>

using testing::ElementsAre;

namespace test {

class SelectionTest : public WindowTest {
protected:
    void SetUp() override
    {
        writeDictionary(builtIn("Effect"), orderFile(numbered(9)));
        writeDictionary(builtIn("Synth"), orderFile({"7 Master Volume", "8 Cutoff"}));
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

TEST_F(SelectionTest, MovingToARowWithTheKeyboardChoosesIt)
{
    launch();
    auto* list = find<QTreeView>("pluginTableView");
    select("Effect");
    QTest::keyClick(list, Qt::Key_Down);
    EXPECT_EQ(text("labKOScreen_Title"), "Synth (Logic Built-In)");
    QTest::keyClick(list, Qt::Key_Up);
    EXPECT_EQ(text("labKOScreen_Title"), "Effect (Logic Built-In)");
    EXPECT_EQ(selectedRow("pluginTableView"), 0);
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
        auto* list = find<QTreeView>("pluginTableView");
        find("parameterSearch")->setFocus();
        list->setFocus(Qt::TabFocusReason);
        QTest::keyClick(list, key);
        EXPECT_EQ(text("labKOScreen_Title"), "Effect (Logic Built-In)") << key;
        QTest::keyClick(list, Qt::Key_Down);
        EXPECT_EQ(text("labKOScreen_Title"), "Synth (Logic Built-In)") << key;
    }
}

TEST_F(SelectionTest, AnOnlyPluginCanBeChosenWithTheKeyboard)
{
    std::filesystem::remove_all(builtIn("Synth").parent_path());
    launch();
    find("pluginTableView")->setFocus(Qt::TabFocusReason);
    QTest::keyClick(find("pluginTableView"), Qt::Key_Down);
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

TEST_F(SelectionTest, AClickLoadsOnce)
{
    launch();
    int loads = 0;
    const auto watching = controller().pluginTableView()->rowChosen.connect([&] { ++loads; });
    select("Effect");
    EXPECT_EQ(loads, 1);
    select("Synth");
    EXPECT_EQ(loads, 2);
    select("Synth");
    EXPECT_EQ(loads, 3);
}

TEST_F(SelectionTest, AClickWithCtrlDoesNotTakeTheChoiceBack)
{
    launch();
    select("Effect");
    auto* list = find<QTreeView>("pluginTableView");
    QTest::mouseClick(list->viewport(), Qt::LeftButton, Qt::ControlModifier,
                      list->visualRect(list->model()->index(0, 0)).center());
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
