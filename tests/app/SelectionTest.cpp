#include "tests/support/WindowTest.h"

#include "chart/ChartState.h"
#include "mapping/EditingState.h"

#include <QHelpEvent>
#include <QLineEdit>
#include <QRadioButton>
#include <QTest>
#include <QTreeView>

using testing::ElementsAre;

namespace test {

namespace plist = platform::plist;

class SelectionTest : public WindowTest {
protected:
    void SetUp() override
    {
        writeDictionary(builtIn("Effect"), orderFile(numbered(9)));
        writeDictionary(builtIn("Synth"), orderFile({"7 Master Volume", "8 Cutoff"}));
    }

    static plist::Dictionary withMode(plist::Dictionary dictionary, const std::string& mode)
    {
        dictionary.set(kMode, plist::Array{mode});
        return dictionary;
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

TEST_F(SelectionTest, AVolumeAmongTheParametersMakesAnInstrument)
{
    launch();
    select("Synth");
    EXPECT_TRUE(isInstrument());
    EXPECT_EQ(text("mainTitle_Sub"), "Logic Pro Instrument Mapper");
    EXPECT_EQ(text("labelHelperDisplay"), "Editing Synth using Instrument Mode");
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 1 of 1");
    EXPECT_EQ(text("labTotalPagesIndicator"), "1 Page");
}

TEST_F(SelectionTest, TheFilesModeCountsMoreThanTheGuess)
{
    writeDictionary(builtIn("Synth"), withMode(orderFile({"7 Master Volume"}), "0"));
    writeDictionary(builtIn("Effect"), withMode(orderFile({"7 Cutoff"}), "1"));
    launch();
    select("Synth");
    EXPECT_EQ(text("mainTitle_Sub"), "Logic Pro Insert/Effect Mapper");
    EXPECT_FALSE(isInstrument());
    select("Effect");
    EXPECT_EQ(text("mainTitle_Sub"), "Logic Pro Instrument Mapper");
    EXPECT_TRUE(isInstrument());
}

TEST_F(SelectionTest, ChoosingMarksTheFileOnce)
{
    launch();
    select("Effect");
    const std::string marked = read(builtIn("Effect"));
    Texts catalogue = numbered(9);
    catalogue.insert(catalogue.begin(), "-1");
    EXPECT_EQ(textsAt(builtIn("Effect"), kCatalogue), catalogue);
    select("Synth");
    select("Effect");
    EXPECT_EQ(read(builtIn("Effect")), marked);
}

TEST_F(SelectionTest, RemovedParametersStayAssignableAfterASave)
{
    launch();
    select("Synth");
    click("clearAllPagesButtonPressed");
    alertsOf([this] { click("kvExportToPlist"); });
    select("Effect");
    select("Synth");
    EXPECT_THAT(columnOf("tablePlistOfSelectedPlugin", 1), ElementsAre("-", "Master Volume", "Cutoff"));
    EXPECT_THAT(textsAt(builtIn("Synth"), kCatalogue), ElementsAre("-1", "7 Master Volume", "8 Cutoff"));
}

TEST_F(SelectionTest, SwitchingTheModeRevertsToTheFile)
{
    launch();
    select("Effect");
    chooseParameter("Knob 9");
    pressPot(1);
    click("nextPageButtonPressed");
    ASSERT_EQ(mapping::plistBuild[0].text("Parameter"), "Knob 9");
    QTest::mouseClick(find("kvPluginMode_1"), Qt::LeftButton, Qt::NoModifier, QPoint(8, 8));
    EXPECT_TRUE(isInstrument());
    EXPECT_EQ(mapping::plugin_Mode, 1);
    EXPECT_EQ(potLabel(1), "Knob 1");
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 1 of 2");
    EXPECT_EQ(text("mainTitle_Sub"), "Logic Pro Instrument Mapper");
    EXPECT_EQ(text("labelHelperDisplay"), "Editing Effect using Instrument Mode");
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 0);
    QTest::mouseClick(find("kvPluginMode_0"), Qt::LeftButton, Qt::NoModifier, QPoint(8, 8));
    EXPECT_EQ(text("labelHelperDisplay"), "Editing Effect in Insert/Effect Mode");
    EXPECT_EQ(mapping::plugin_Mode, 0);
}

TEST_F(SelectionTest, TheHelpLineSaysThatAModeSwitchReads)
{
    launch();
    select("Effect");
    std::vector<std::string> lines;
    const auto watching = controller().labelHelperDisplay()->stringValue.onChange(
        [&](const std::string& line) { lines.push_back(line); });
    QTest::mouseClick(find("kvPluginMode_1"), Qt::LeftButton, Qt::NoModifier, QPoint(8, 8));
    EXPECT_THAT(lines, ElementsAre("Reading Parameters... Please Wait...", "Editing Effect using Instrument Mode"));
}

TEST_F(SelectionTest, ASwitchedModeIgnoresTheFilesOwn)
{
    writeDictionary(builtIn("Effect"), withMode(orderFile({"7 Cutoff"}), "0"));
    launch();
    select("Effect");
    QTest::mouseClick(find("kvPluginMode_1"), Qt::LeftButton, Qt::NoModifier, QPoint(8, 8));
    EXPECT_EQ(mapping::plugin_Mode, 1);
    EXPECT_EQ(text("mainTitle_Sub"), "Logic Pro Instrument Mapper");
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

TEST_F(SelectionTest, EveryLoadSelectsTheBlankEntry)
{
    launch();
    select("Effect");
    chooseParameter("Knob 3");
    controller().readPlistFileCheckMode(builtIn("Effect").native(), 0);
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 0);
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

TEST_F(SelectionTest, AFileThatIsNoPropertyListReadsAsEmptyAndIsGone)
{
    write(builtIn("Broken"), "this is no property list");
    launch();
    select("Broken");
    EXPECT_THAT(columnOf("tablePlistOfSelectedPlugin", 1), ElementsAre("-"));
    EXPECT_EQ(mapping::plistBuild.size(), 8U);
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 1 of 1");
    EXPECT_EQ(text("mainTitle_Sub"), "Logic Pro Insert/Effect Mapper");
    EXPECT_FALSE(std::filesystem::exists(builtIn("Broken"))) << "deleted while marking, with nothing to write";
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

TEST_F(SelectionTest, UntilAPluginIsLoadedNothingIsReadOrWritten)
{
    writeDictionary(builtIn("Effect"), orderFile(numbered(9)));
    launch();
    for (const char* name :
         {"firstPageButtonPressed", "prevPageButtonPressed", "nextPageButtonPressed", "lastPageButtonPressed",
          "kvMovePage_First", "kvMovePage_Prev", "kvMovePage_Next", "kvMovePage_Last", "newPageButtonPressed",
          "deletePageButtonPressed", "clearAllPagesButtonPressed", "kvExportToPlist", "kvRecallOriginalMapping",
          "kvRecallPreviousMapping", "kvCreateChart", "kvPluginMode", "kvRotaryBtn1", "kvRotaryBtn8"})
        EXPECT_FALSE(isEnabled(name)) << name;

    const auto filesNow = [this] {
        std::vector<std::string> files;
        for (const auto& file : std::filesystem::recursive_directory_iterator(home_.path()))
            files.push_back(file.path().native());
        for (const auto& file : std::filesystem::directory_iterator("."))
            files.push_back(file.path().native());
        return files;
    };
    const auto before = filesNow();
    const auto alerts = alertsOf([this] {
        controller().kvExportToPlist();
        controller().kvRecallOriginalMapping();
        controller().kvRecallPreviousMapping();
        controller().kvCreateChart();
        controller().newPageButtonPressed();
        controller().deletePageButtonPressed();
        controller().clearAllPagesButtonPressed();
        controller().nextPageButtonPressed();
        controller().prevPageButtonPressed();
        controller().firstPageButtonPressed();
        controller().lastPageButtonPressed();
        controller().kvMovePage_First();
        controller().kvMovePage_Last();
        controller().kvMovePage_Prev();
        controller().kvMovePage_Next();
        controller().kvRotBtn1_Pressed();
        controller().kvRotBtn8_Pressed();
        controller().kvPluginMode_Changed(controller().kvPluginMode());
    });
    EXPECT_THAT(alerts, ElementsAre());
    EXPECT_EQ(filesNow(), before);
    EXPECT_TRUE(mapping::plistBuild.empty());
    EXPECT_EQ(mapping::totalPages, 1);
    EXPECT_TRUE(chart::bHTML.empty());
    EXPECT_EQ(text("labKOScreen_Title"), "Please Select a plugin");
}

} // namespace test
