#include "tests/support/WindowTest.h"

#include "mapping/EditingState.h"

#include <QHeaderView>
#include <QHelpEvent>
#include <QLabel>
#include <QLineEdit>
#include <QTest>
#include <QToolTip>
#include <QTreeView>

#include <filesystem>
#include <system_error>

using testing::ElementsAre;
using testing::HasSubstr;

namespace test {

class PluginListTest : public WindowTest {
protected:
    void SetUp() override
    {
        writeDictionary(builtIn("EQ One"), orderFile(numbered(3)));
        writeDictionary(thirdParty("Maker", "Synth X"), orderFile(numbered(20)));
    }

    QTreeView* list() const { return find<QTreeView>("pluginTableView"); }
};

TEST_F(PluginListTest, RowsNameThePluginItsMakerAndThatItIsEditable)
{
    launch();
    EXPECT_THAT(columnOf("pluginTableView", 0), ElementsAre("EQ One", "Synth X"));
    EXPECT_THAT(columnOf("pluginTableView", 1), ElementsAre("Logic Built-In", "Maker"));
    EXPECT_THAT(columnOf("pluginTableView", 2), ElementsAre("Editable", "Editable"));
}

TEST_F(PluginListTest, AfterARescanOnlyWhatNeedsNoSelectedRowIsOffered)
{
    launch();
    select("Synth X");
    click("btnRunCheck");
    for (const char* name :
         {"kvRecallOriginalMapping", "kvRecallPreviousMapping", "kvCreateChart", "kvPluginMode", "kvRotaryBtn1"})
        EXPECT_FALSE(isEnabled(name)) << name;
    // The unsaved mapping is still in memory and its file still named, so it can be saved.
    EXPECT_TRUE(isEnabled("kvExportToPlist"));
    controller().kvCreateChart();
    controller().kvRecallPreviousMapping();
    controller().kvPluginMode_Changed(controller().kvPluginMode());
    EXPECT_EQ(mapping::plistBuild.size(), 24U);
    EXPECT_THAT(workspace_.opened, ElementsAre());
    EXPECT_FALSE(std::filesystem::exists(".html"));
}

TEST_F(PluginListTest, StartsSortedByNameThenTypeAsAPersonSorts)
{
    writeDictionary(builtIn("eq 10"), orderFile({}));
    writeDictionary(builtIn("EQ 9"), orderFile({}));
    writeDictionary(thirdParty("Zeta", "EQ One"), orderFile({}));
    writeDictionary(thirdParty("Alpha", "eq one"), orderFile({}));
    launch();
    EXPECT_THAT(columnOf("pluginTableView", 0), ElementsAre("EQ 9", "eq 10", "eq one", "EQ One", "EQ One", "Synth X"));
    EXPECT_THAT(columnOf("pluginTableView", 1),
                ElementsAre("Logic Built-In", "Logic Built-In", "Alpha", "Logic Built-In", "Zeta", "Maker"));
}

TEST_F(PluginListTest, SortsByTheColumnClickedAndKeepsTheSelectedPlugin)
{
    launch();
    select("EQ One");
    pressPot(1); // clears pot 1, which a reload would undo
    ASSERT_EQ(potLabel(1), "-");
    list()->header()->setFocus();
    const auto clickHeader = [this](int section) {
        QHeaderView* header = list()->header();
        const QPoint where(header->sectionViewportPosition(section) + 10, header->height() / 2);
        QTest::mouseClick(header->viewport(), Qt::LeftButton, Qt::NoModifier, where);
    };
    clickHeader(0);
    EXPECT_THAT(columnOf("pluginTableView", 0), ElementsAre("Synth X", "EQ One"));
    EXPECT_EQ(selectedRow("pluginTableView"), 1);
    EXPECT_EQ(controller().myArrayController()->selectionText("Plugin"), "EQ One");
    EXPECT_EQ(potLabel(1), "-") << "sorting is not choosing";
    clickHeader(1);
    EXPECT_THAT(columnOf("pluginTableView", 1), ElementsAre("Logic Built-In", "Maker"));
    EXPECT_EQ(selectedRow("pluginTableView"), 0);
}

TEST_F(PluginListTest, EveryColumnSorts)
{
    launch();
    list()->sortByColumn(2, Qt::DescendingOrder);
    EXPECT_THAT(columnOf("pluginTableView", 0), ElementsAre("EQ One", "Synth X")) << "all alike, so by name";
    list()->sortByColumn(1, Qt::DescendingOrder);
    EXPECT_THAT(columnOf("pluginTableView", 1), ElementsAre("Maker", "Logic Built-In"));
}

TEST_F(PluginListTest, ARescanEmptiesTheSearchField)
{
    launch();
    select("Synth X");
    typeInto("parameterSearch", "knob");
    click("btnRunCheck");
    EXPECT_EQ(text("parameterSearch"), "");
}

TEST_F(PluginListTest, AShortenedTextShowsWholeAsItsTip)
{
    launch();
    select("Synth X");
    auto* path = find("labPluginPlistLocation");
    path->setFixedWidth(60);
    QHelpEvent help(QEvent::ToolTip, QPoint(3, 3), path->mapToGlobal(QPoint(3, 3)));
    QApplication::sendEvent(path, &help);
    EXPECT_THAT(QToolTip::text().toStdString(), HasSubstr(thirdParty("Maker", "Synth X").native()));
    EXPECT_EQ(text("labPluginPlistLocation"), thirdParty("Maker", "Synth X").native()) << "whole in the property";
    QToolTip::hideText();
}

TEST_F(PluginListTest, APathShowsAsTheRowsToolTip)
{
    launch();
    const QAbstractItemModel* model = list()->model();
    for (int column = 0; column < 3; ++column) {
        EXPECT_EQ(model->index(1, column).data(Qt::ToolTipRole).toString().toStdString(),
                  thirdParty("Maker", "Synth X").native());
    }
}

TEST_F(PluginListTest, NamesThatLookLikeMarkupShowAsTheyAre)
{
    writeDictionary(thirdParty("<i>Maker<", "<b>x<"), orderFile({"1 <u>name</u>"}));
    launch();
    select("<b>x<");
    EXPECT_EQ(text("labKOScreen_Title"), "<b>x< (<i>Maker<)");
    EXPECT_EQ(find<QLabel>("labKOScreen_Title")->textFormat(), Qt::PlainText);
    EXPECT_EQ(potLabel(1), "<u>name</u>");
    EXPECT_EQ(toolTip("kvControl1"), "<u>name</u>");
    EXPECT_EQ(find<QLabel>("kvControl1")->textFormat(), Qt::PlainText);

    // The tips that pop up hold the text, not what it would be as markup.
    auto* label = find("kvControl1");
    QHelpEvent help(QEvent::ToolTip, QPoint(3, 3), label->mapToGlobal(QPoint(3, 3)));
    QApplication::sendEvent(label, &help);
    EXPECT_THAT(QToolTip::text().toStdString(), HasSubstr("&lt;u&gt;name&lt;/u&gt;"));
    const QPoint cell = list()->visualRect(list()->model()->index(0, 0)).center();
    QHelpEvent rowHelp(QEvent::ToolTip, cell, list()->viewport()->mapToGlobal(cell));
    QApplication::sendEvent(list()->viewport(), &rowHelp);
    EXPECT_THAT(QToolTip::text().toStdString(), HasSubstr("&lt;b&gt;x&lt;"));
    QToolTip::hideText();
}

TEST_F(PluginListTest, APathThatIsNoUtf8IsLoadedAndSaved)
{
    const Path odd = builtIn("Caf\xe9");
    std::error_code refused;
    if (!std::filesystem::create_directories(odd.parent_path(), refused))
        GTEST_SKIP() << "every name is UTF-8 here";
    writeDictionary(odd, orderFile(numbered(2)));
    launch();
    QTest::mouseClick(list()->viewport(), Qt::LeftButton, Qt::NoModifier,
                      list()->visualRect(list()->model()->index(0, 0)).center());
    EXPECT_EQ(potLabel(1), "Knob 1");
    alertsOf([this] { click("kvExportToPlist"); });
    EXPECT_EQ(textsAt(odd, kOrder).size(), 8U);
    EXPECT_TRUE(std::filesystem::exists(odd.native() + ".prev"));
}

} // namespace test
