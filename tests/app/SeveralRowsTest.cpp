// Several rows of the parameter list, selected by mouse and keys, and what is done with them.

#include "tests/support/WindowTest.h"

#include "app/interface/DragData.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "tests/support/Dragged.h"

#include <QAction>
#include <QCheckBox>
#include <QDrag>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QTest>
#include <QTreeView>

#include <algorithm>

namespace test {

using testing::ElementsAre;
using testing::IsEmpty;

class SeveralRowsTest : public WindowTest {
protected:
    void load(int parameters = 24)
    {
        writeDictionary(builtIn("Synth"), orderFile(numbered(parameters)));
        launch();
        find<>("cwinMainWindow")->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(find<>("cwinMainWindow")));
        select("Synth");
        list()->setFocus();
    }
    QTreeView* list() const { return find<QTreeView>("tablePlistOfSelectedPlugin"); }
    platform::ArrayController& rows() { return *controller().arrayControllerPlistSelected(); }
    const std::vector<std::int32_t>& selected() { return rows().selectedRows(); }
    /// What the list marks, which has to be the same.
    std::vector<std::int32_t> marked() const
    {
        std::vector<std::int32_t> numbers;
        for (const QModelIndex& row : list()->selectionModel()->selectedRows())
            numbers.push_back(row.row());
        std::sort(numbers.begin(), numbers.end());
        return numbers;
    }
    QPoint cell(int row) const { return list()->visualRect(list()->model()->index(row, 1)).center(); }
    void click(int row, Qt::KeyboardModifiers keys = {})
    {
        list()->scrollTo(list()->model()->index(row, 0));
        QTest::mouseClick(list()->viewport(), Qt::LeftButton, keys, cell(row));
    }
    using WindowTest::click;
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) { QTest::keyClick(list(), key, modifiers); }
    void trigger(const char* item) { find<QAction>(item)->trigger(); }
    std::string undoText() const { return find<QAction>("undo")->text().toStdString(); }
    void pull(int row, Qt::KeyboardModifiers keys = {})
    {
        QTest::mousePress(list()->viewport(), Qt::LeftButton, keys, cell(row));
        for (const int by : {QApplication::startDragDistance() + 2, QApplication::startDragDistance() + 4}) {
            const QPoint at = cell(row) + QPoint(by, 0);
            QMouseEvent move(QEvent::MouseMove, at, list()->viewport()->mapToGlobal(at), Qt::NoButton, Qt::LeftButton,
                             keys);
            QApplication::sendEvent(list()->viewport(), &move);
        }
    }
};

TEST_F(SeveralRowsTest, ClicksSelectAsEverywhere)
{
    load();
    struct Click {
        int row;
        Qt::KeyboardModifiers keys;
        std::vector<std::int32_t> selected;
        int current;
    };
    for (const Click& each :
         {Click{3, {}, {3}, 3}, Click{5, Qt::ShiftModifier, {3, 4, 5}, 5},
          Click{7, Qt::ControlModifier, {3, 4, 5, 7}, 7}, Click{4, Qt::ControlModifier, {3, 5, 7}, 7},
          Click{7, Qt::ControlModifier, {3, 5}, 5}, Click{5, {}, {5}, 5}, Click{5, Qt::ControlModifier, {5}, 5},
          Click{2, Qt::ShiftModifier, {2, 3, 4, 5}, 2}, Click{9, {}, {9}, 9}}) {
        click(each.row, each.keys);
        EXPECT_EQ(selected(), each.selected) << each.row;
        EXPECT_EQ(marked(), each.selected) << each.row;
        EXPECT_EQ(rows().selectionIndex(), each.current) << each.row;
    }
}

TEST_F(SeveralRowsTest, AllStayWhenAnEditTakesThemOffThePageThatIsSearched)
{
    load();
    typeInto("parameterSearch", "p1");
    list()->setFocus();
    click(1);
    key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(selected().size(), 9U);
    trigger("clearPage");
    EXPECT_EQ(selected().size(), 9U);
    trigger("fillFromPot");
    EXPECT_EQ(potLabel(8), "Knob 8");
}

TEST_F(SeveralRowsTest, KeysSelectAsEverywhere)
{
    load();
    click(3);
    key(Qt::Key_Down, Qt::ShiftModifier);
    key(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_THAT(selected(), ElementsAre(3, 4, 5));
    EXPECT_EQ(rows().selectionIndex(), 5);
    key(Qt::Key_Up, Qt::ShiftModifier);
    EXPECT_THAT(selected(), ElementsAre(3, 4));
    key(Qt::Key_Down, Qt::ControlModifier);
    key(Qt::Key_Down, Qt::ControlModifier);
    EXPECT_THAT(selected(), ElementsAre(3, 4));
    EXPECT_EQ(rows().selectionIndex(), 4);
    EXPECT_EQ(list()->currentIndex().row(), 6);
    key(Qt::Key_Space, Qt::ControlModifier);
    EXPECT_THAT(selected(), ElementsAre(3, 4, 6));
    EXPECT_EQ(rows().selectionIndex(), 6);
    key(Qt::Key_Up, Qt::ControlModifier);
    key(Qt::Key_Up, Qt::ControlModifier);
    key(Qt::Key_Space); // a Mac keeps the other for itself
    EXPECT_THAT(selected(), ElementsAre(3, 6));
    EXPECT_EQ(list()->currentIndex().row(), 4);
    key(Qt::Key_End);
    EXPECT_THAT(selected(), ElementsAre(24));
    key(Qt::Key_Space);
    key(Qt::Key_Space, Qt::ControlModifier);
    EXPECT_THAT(selected(), ElementsAre(24)) << "the last one cannot be taken back";
    key(Qt::Key_Home, Qt::ControlModifier);
    EXPECT_THAT(selected(), ElementsAre(0));
    key(Qt::Key_Down);
    key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(selected().size(), 25u);
    EXPECT_EQ(rows().selectionIndex(), 1);
    key(Qt::Key_Down);
    EXPECT_THAT(selected(), ElementsAre(2));
    EXPECT_EQ(marked(), selected());
}

TEST_F(SeveralRowsTest, OtherListsHaveOneRowSelected)
{
    load();
    writeDictionary(builtIn("Other"), orderFile(numbered(2)));
    click("btnRunCheck");
    select("Synth");
    auto* plugins = find<QTreeView>("pluginTableView");
    QTest::keyClick(plugins, Qt::Key_A, Qt::ControlModifier);
    QTest::mouseClick(plugins->viewport(), Qt::LeftButton, Qt::ShiftModifier,
                      plugins->visualRect(plugins->model()->index(0, 0)).center());
    EXPECT_EQ(controller().myArrayController()->selectedRows().size(), 1u);
    EXPECT_EQ(plugins->selectionModel()->selectedRows().size(), 1);
}

TEST_F(SeveralRowsTest, APressTakesTheCurrentRowAndSelectsTheNextAlone)
{
    load();
    click(9);
    click(12, Qt::ShiftModifier);
    click(5, Qt::ControlModifier);
    pressPot(1);
    EXPECT_EQ(potLabel(1), "Knob 5");
    EXPECT_EQ(potLabel(2), "Knob 2");
    EXPECT_THAT(selected(), ElementsAre(6));
    EXPECT_EQ(marked(), selected());
    list()->setFocus();
    key(Qt::Key_Down, Qt::ShiftModifier);
    EXPECT_THAT(selected(), ElementsAre(6, 7)) << "it goes on from there";
}

TEST_F(SeveralRowsTest, ASelectionOutlastsASearchAsFarAsItIsFound)
{
    load();
    click(2);
    click(11, Qt::ControlModifier);
    click(12, Qt::ControlModifier);
    typeInto("parameterSearch", "knob 1");
    EXPECT_THAT(selected(), ElementsAre(3, 4)); // behind the blank entry, 1 and 10
    EXPECT_EQ(marked(), selected());
    fill("parameterSearch", "");
    EXPECT_THAT(selected(), ElementsAre(11, 12));
    list()->setFocus();
    key(Qt::Key_A, Qt::ControlModifier);
    typeInto("parameterSearch", "knob 24");
    EXPECT_THAT(selected(), ElementsAre(0, 1));
    EXPECT_EQ(rows().selectionIndex(), 1) << "a press is never meant for the blank entry then";
    fill("parameterSearch", "");
    EXPECT_THAT(selected(), ElementsAre(0, 24));
    EXPECT_EQ(marked(), selected());
}

TEST_F(SeveralRowsTest, APressOnOneOfThemKeepsThemToBeDragged)
{
    load();
    click(0);
    click(3, Qt::ShiftModifier);
    pull(2);
    EXPECT_THAT(selected(), ElementsAre(0, 1, 2, 3));
    const auto* drag = list()->findChild<QDrag*>();
    ASSERT_TRUE(drag);
    const quint64 state = controller().historyRevision() + rows().contentRevision();
    EXPECT_EQ(drag->mimeData()->data(QString::fromLatin1(interface::kParameterDrag)),
              draggedParameters(3, state).content())
        << "the blank entry is no parameter";
    EXPECT_FALSE(drag->pixmap().isNull());
    const QPixmap three = drag->pixmap();
    QApplication::processEvents();
    QTest::mouseRelease(list()->viewport(), Qt::LeftButton, {}, cell(2));
    click(2); // without being pulled, it is selected alone
    EXPECT_THAT(selected(), ElementsAre(2));
    pull(7);
    EXPECT_THAT(selected(), ElementsAre(7));
    ASSERT_TRUE(list()->findChild<QDrag*>());
    EXPECT_NE(list()->findChild<QDrag*>()->pixmap().toImage(), three.toImage());
}

TEST_F(SeveralRowsTest, ParametersNotMappedYetStayWhileTheyAreSelected)
{
    load(8);
    click("clearAllPagesButtonPressed");
    find<QCheckBox>("unmappedOnly")->click();
    click(3);
    click(5, Qt::ShiftModifier);
    trigger("fillFromPot");
    EXPECT_THAT(selected(), ElementsAre(3, 4, 5));
    EXPECT_EQ(marked(), selected());
    pressPot(8);
    EXPECT_THAT(columnOf("tablePlistOfSelectedPlugin", 1),
                ElementsAre("-", "Knob 1", "Knob 2", "Knob 6", "Knob 7", "Knob 8"));
}

// Filling

TEST_F(SeveralRowsTest, FillBeginsAtTheFirstEmptyPotOfTheShownPage)
{
    load(24);
    click("newPageButtonPressed");
    rows().setSelectionIndex(9);
    pressPot(1);
    list()->setFocus();
    click(4);
    click(0, Qt::ControlModifier); // no parameter
    click(2, Qt::ControlModifier);
    click(20, Qt::ControlModifier);
    key(Qt::Key_Return, Qt::ControlModifier);
    EXPECT_THAT(potLabels(), ElementsAre("Knob 9", "Knob 2", "Knob 4", "Knob 20", "-", "-", "-", "-"));
    EXPECT_THAT(selected(), ElementsAre(0, 2, 4, 20));
    EXPECT_EQ(undoText(), "Undo Fill Pots");
    trigger("undo");
    EXPECT_THAT(potLabels(), ElementsAre("Knob 9", "-", "-", "-", "-", "-", "-", "-"));
    EXPECT_EQ(undoText(), "Undo Assign Parameter");
}

TEST_F(SeveralRowsTest, FillGoesOnToTheNextPageWithRoomOrANewOne)
{
    load(24);
    click("nextPageButtonPressed");
    click(3);
    click(5, Qt::ShiftModifier);
    trigger("fillFromPot");
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 4 of 4");
    EXPECT_THAT(potLabels(), ElementsAre("Knob 3", "Knob 4", "Knob 5", "-", "-", "-", "-", "-"));
    click("firstPageButtonPressed");
    trigger("fillFromPot");
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 4 of 4");
    EXPECT_EQ(potLabel(6), "Knob 5");
    trigger("undo");
    trigger("undo");
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 2 of 3");
}

TEST_F(SeveralRowsTest, FillBeginsAtTheFocusedPotAndAppendsPages)
{
    load(24);
    key(Qt::Key_A, Qt::ControlModifier);
    find<>("kvRotaryBtn7")->setFocus();
    trigger("fillFromPot");
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 1 of 4");
    EXPECT_EQ(potLabel(6), "Knob 6");
    EXPECT_EQ(potLabel(7), "Knob 1");
    EXPECT_EQ(potLabel(8), "Knob 2");
    click("lastPageButtonPressed");
    EXPECT_EQ(potLabel(6), "Knob 24");
    EXPECT_EQ(potLabel(7), "-");
    EXPECT_EQ(selected().size(), 25u);
}

TEST_F(SeveralRowsTest, FillWithOneRowLaysItWithoutSteppingOn)
{
    load(3);
    click(2);
    trigger("fillFromPot");
    EXPECT_EQ(potLabel(4), "Knob 2");
    EXPECT_THAT(selected(), ElementsAre(2));
    EXPECT_EQ(undoText(), "Undo Assign Parameter");
    click(0);
    trigger("fillFromPot"); // the blank entry
    EXPECT_EQ(undoText(), "Undo Assign Parameter");
    click("btnRunCheck");
    EXPECT_FALSE(find<QAction>("fillFromPot")->isEnabled());
}

TEST_F(SeveralRowsTest, ALeftOverPageStaysBehindWhatAFillAppends)
{
    load(24);
    click("clearAllPagesButtonPressed");
    key(Qt::Key_A, Qt::ControlModifier);
    trigger("fillFromPot");
    EXPECT_EQ(mapping::totalPages, 3);
    ASSERT_EQ(mapping::plistBuild.size(), 40u);
    EXPECT_EQ(mapping::plistBuild[24].text(mapping::kParameter), "Knob 9");
}

// Ten thousand

TEST_F(SeveralRowsTest, TenThousandRowsAreSelectedAndLaid)
{
    constexpr int kMany = 10000;
    load(kMany);
    trigger("startFromScratch");
    list()->setFocus();
    key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(selected().size(), kMany + 1u);
    typeInto("parameterSearch", "7");
    const auto found = selected().size();
    EXPECT_EQ(found, columnOf("tablePlistOfSelectedPlugin", 0).size());
    fill("parameterSearch", "");
    EXPECT_EQ(selected().size(), found);
    EXPECT_EQ(marked(), selected());
    list()->setFocus();
    key(Qt::Key_A, Qt::ControlModifier);
    trigger("fillFromPot");
    EXPECT_EQ(mapping::totalPages, kMany / 8);
    EXPECT_EQ(mapping::plistBuild.back().text(mapping::kParameter), "Knob 10000");
}

} // namespace test
