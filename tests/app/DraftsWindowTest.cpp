// What the window tells of drafts.

#include "mapping/Drafts.h"
#include "tests/support/WindowTest.h"

#include <QAccessible>
#include <QAction>
#include <QDateTime>
#include <QLocale>
#include <QPushButton>
#include <QTest>
#include <QTreeView>

#include <filesystem>

namespace test {

using testing::ElementsAre;

class DraftsWindowTest : public WindowTest {
protected:
    void SetUp() override
    {
        file_ = builtIn("Synth");
        writeDictionary(file_, orderFile(numbered(24)));
        writeDictionary(builtIn("Delay"), orderFile(numbered(3)));
        launch();
        select("Synth");
    }

    Path folder() const { return draftsBelow(home_.path()); }
    std::ptrdiff_t files() const
    {
        if (!std::filesystem::exists(folder()))
            return 0;
        return std::distance(std::filesystem::directory_iterator(folder()), {});
    }
    bool isBarShown() const { return find<>("draftBar")->isVisible(); }
    std::string barText() const { return find<>("draftBar")->property("text").toString().toStdString(); }
    /// A draft from an earlier run, with the first pots changed.
    void leaveDraft(int pots, const QDateTime& madeAt, int mode = 0)
    {
        Texts order = numbered(24);
        for (int pot = 0; pot < pots; ++pot)
            order.at(static_cast<std::size_t>(pot)) = "24 Knob 24";
        mapping::Drafts(folder()).keep({file_.native(), order, 3, 1, mode, madeAt.toSecsSinceEpoch()});
        select("Synth");
    }
    static QDateTime date(int year, int month, int day) { return {QDate(year, month, day), QTime(18, 42)}; }
    QModelIndex row(int row, int column = 0) const
    {
        return find<QTreeView>("pluginTableView")->model()->index(row, column);
    }
    /// What a screen reader says of a plug-in's row.
    std::string spoken(int row) const
    {
        auto* list = QAccessible::queryAccessibleInterface(find<>("pluginTableView"));
        return list->tableInterface()->cellAt(row, 0)->text(QAccessible::Name).toStdString();
    }
    bool isMarked(int row) const { return !this->row(row).data(Qt::DecorationRole).isNull(); }

    Path file_;
};

TEST_F(DraftsWindowTest, TheBarTellsHowManyPotsAndWhen)
{
    const QLocale before;
    QLocale::setDefault(QLocale::c());
    const int year = QDate::currentDate().year();
    const std::string lastYear = std::to_string(year - 1);
    EXPECT_FALSE(isBarShown());
    leaveDraft(8, date(year, 11, 21));
    EXPECT_TRUE(isBarShown());
    EXPECT_EQ(barText(), "8 unsaved pots from 21 November, 18:42");
    click("discardDraft");
    EXPECT_FALSE(isBarShown());
    leaveDraft(1, date(year, 3, 1));
    EXPECT_EQ(barText(), "1 unsaved pot from 1 March, 18:42");
    click("discardDraft");
    leaveDraft(2, date(year - 1, 12, 31));
    EXPECT_EQ(barText(), "2 unsaved pots from 31 December " + lastYear + ", 18:42");
    click("discardDraft");
    leaveDraft(0, date(year, 11, 21), 1);
    EXPECT_EQ(barText(), "Unsaved mode from 21 November, 18:42");
    QLocale::setDefault(before);
}

TEST_F(DraftsWindowTest, TheBarLiesBetweenTitleAndLists)
{
    leaveDraft(8, QDateTime::currentDateTime());
    QApplication::processEvents();
    const auto* bar = find<>("draftBar");
    const auto topOf = [this](const QWidget* widget) { return widget->mapTo(find<>("cwinMainWindow"), QPoint()).y(); };
    EXPECT_GE(topOf(bar), topOf(find<>("mainTitle_Sub")) + find<>("mainTitle_Sub")->height());
    EXPECT_GE(topOf(find<>("pluginTableView")), topOf(bar) + bar->height());
    for (const char* name : {"bringBackDraft", "discardDraft"})
        EXPECT_TRUE(bar->isAncestorOf(find<QPushButton>(name)) && find<QPushButton>(name)->isVisible()) << name;
}

TEST_F(DraftsWindowTest, ADoubleClickLoadsNoOtherPluginThatTheBarMovedUnderThePointer)
{
    for (int number = 0; number < 8; ++number)
        writeDictionary(builtIn("A" + std::to_string(number)), orderFile(numbered(3)));
    click("btnRunCheck");
    leaveDraft(8, QDateTime::currentDateTime());
    select("A0");
    QApplication::processEvents();
    ASSERT_FALSE(isBarShown());
    QWidget* list = find<QTreeView>("pluginTableView")->viewport();
    const QPoint where = list->mapToGlobal(find<QTreeView>("pluginTableView")->visualRect(row(9)).center());
    const auto place = [&] { return list->mapFromGlobal(where); };
    QTest::mouseClick(list, Qt::LeftButton, {}, place());
    QApplication::processEvents();
    ASSERT_TRUE(isBarShown());
    const int under = find<QTreeView>("pluginTableView")->indexAt(place()).row();
    ASSERT_TRUE(under >= 0 && under < 9) << "another row has come there";
    QTest::mouseDClick(list, Qt::LeftButton, {}, place()); // its second press alone
    QTest::mouseRelease(list, Qt::LeftButton, {}, place());
    EXPECT_EQ(controller().myArrayController()->selectionText("Plugin"), "Synth");
    EXPECT_EQ(selectedRow("pluginTableView"), controller().myArrayController()->selectionIndex());
}

TEST_F(DraftsWindowTest, BringingBackIsUndoneAndDoneAgainByName)
{
    leaveDraft(8, QDateTime::currentDateTime());
    EXPECT_TRUE(find<QAction>("bringBackDraft")->isEnabled());
    click("bringBackDraft");
    EXPECT_FALSE(isBarShown());
    EXPECT_FALSE(find<QAction>("bringBackDraft")->isEnabled());
    EXPECT_FALSE(find<QAction>("discardDraft")->isEnabled());
    EXPECT_EQ(text("unsavedReadOut"), "Unsaved pots: 8");
    EXPECT_EQ(find<QAction>("undo")->text().toStdString(), "Undo Bring Back Draft");
    click("undoButton");
    EXPECT_TRUE(isBarShown());
    EXPECT_EQ(text("unsavedReadOut"), "");
    click("redoButton");
    EXPECT_FALSE(isBarShown());
    EXPECT_EQ(potLabel(8), "Knob 24");
}

TEST_F(DraftsWindowTest, TheBarStaysUntilTheMappingIsSaved)
{
    leaveDraft(8, QDateTime::currentDateTime());
    chooseParameter("Knob 9");
    pressPot(1);
    click("nextPageButtonPressed");
    click("undoButton");
    EXPECT_TRUE(isBarShown());
    select("Delay");
    EXPECT_FALSE(isBarShown()) << "it is of another plug-in";
    select("Synth");
    EXPECT_TRUE(isBarShown());
    alertsOf([this] { click("kvExportToPlist"); });
    EXPECT_FALSE(isBarShown());
    EXPECT_EQ(files(), 0);
}

TEST_F(DraftsWindowTest, AnEditIsKeptWithinTwoSecondsAndNotByThePress)
{
    chooseParameter("Knob 9");
    pressPot(1);
    EXPECT_EQ(files(), 0);
    EXPECT_TRUE(waitUntil([this] { return files() > 0; }));
    click("undoButton");
    EXPECT_TRUE(waitUntil([this] { return files() == 0; }));
}

TEST_F(DraftsWindowTest, EditsThatGoOnDoNotPutTheDraftOff)
{
    chooseParameter("Knob 9");
    for (int press = 0; press < 20 && files() == 0; ++press) {
        pressPot(1 + press % 8);
        runFor(200);
    }
    EXPECT_EQ(files(), 1);
}

TEST_F(DraftsWindowTest, TheListMarksRowsInSymbolsAndWords)
{
    ASSERT_EQ(columnOf("pluginTableView", 0), Texts({"Delay", "Synth"}));
    EXPECT_EQ(spoken(1), "Synth");
    EXPECT_FALSE(isMarked(1));
    const std::string path = row(1).data(Qt::ToolTipRole).toString().toStdString();
    EXPECT_EQ(path, file_.native());

    chooseParameter("Knob 9");
    pressPot(1);
    EXPECT_EQ(spoken(1), "Synth, unsaved edits");
    EXPECT_TRUE(isMarked(1));
    EXPECT_FALSE(isMarked(0));
    EXPECT_EQ(spoken(0), "Delay");
    EXPECT_EQ(row(1).data(Qt::ToolTipRole).toString().toStdString(), path + "\nunsaved edits");
    EXPECT_EQ(columnOf("pluginTableView", 0), Texts({"Delay", "Synth"})) << "the texts are the same";
    EXPECT_TRUE(row(1, 1).data(Qt::DecorationRole).isNull()) << "once a row is enough";

    select("Delay");
    EXPECT_EQ(spoken(1), "Synth, draft of unsaved edits");
    EXPECT_TRUE(isMarked(1));
    EXPECT_FALSE(isMarked(0));
    launch();
    EXPECT_EQ(spoken(1), "Synth, draft of unsaved edits") << "in another run, too";
    select("Synth");
    chooseParameter("Knob 9");
    pressPot(2);
    EXPECT_EQ(spoken(1), "Synth, unsaved edits, draft of unsaved edits");
    click("discardDraft");
    EXPECT_EQ(spoken(1), "Synth, unsaved edits");
    click("undoButton");
    EXPECT_EQ(spoken(1), "Synth");
    EXPECT_FALSE(isMarked(1));
}

TEST_F(DraftsWindowTest, MarksAreRepaintedAtOnceWhenTheyChange)
{
    auto* model = find<QTreeView>("pluginTableView")->model();
    int changes = 0;
    QObject::connect(model, &QAbstractItemModel::dataChanged, model, [&] { ++changes; });
    chooseParameter("Knob 9");
    pressPot(1);
    EXPECT_EQ(changes, 1);
    pressPot(2);
    EXPECT_EQ(changes, 1) << "it is marked already";
    click("undoButton");
    click("undoButton");
    EXPECT_EQ(changes, 2);
}

TEST_F(DraftsWindowTest, TheBarIsSpokenAndReachedFromTheKeyboard)
{
    leaveDraft(8, QDateTime::currentDateTime());
    EXPECT_EQ(find<>("draftBar")->accessibleName().toStdString(), barText());
    EXPECT_EQ(find<>("bringBackDraft")->accessibleName().toStdString(), "Bring back draft");
    EXPECT_EQ(find<>("discardDraft")->accessibleName().toStdString(), "Discard draft");
    // From the header's last button through the bar to the lists.
    QWidget* next = find<QPushButton>("kvHelpMe");
    Texts order;
    while (order.size() < 3) {
        next = next->nextInFocusChain();
        if (next->isVisible() && (next->focusPolicy() & Qt::TabFocus))
            order.push_back(next->objectName().toStdString());
    }
    EXPECT_THAT(order, ElementsAre("bringBackDraft", "discardDraft", "pluginSearch"));
}

} // namespace test
