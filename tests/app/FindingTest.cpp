#include "tests/support/WindowTest.h"

#include "app/interface/panel/PageModel.h"
#include "mapping/EditingState.h"
#include "platform/qt/RecordListView.h"
#include "tests/support/Pictures.h"

#include <QAction>
#include <QCheckBox>
#include <QLineEdit>
#include <QListView>
#include <QTest>
#include <QTimer>

#include <string>
#include <vector>

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace test {

class FindingTest : public WindowTest {
protected:
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
    bool hasFocus(const char* name) const { return QApplication::focusWidget() == find<>(name); }
    static void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    }
    static void type(const std::string& text)
    {
        for (const char c : text)
            QTest::keyClick(QApplication::focusWidget(), c);
    }
    void search(const char* field, const char* words) { find<QLineEdit>(field)->setText(QString::fromUtf8(words)); }
    std::string hint(const char* list) const { return find<platform::qt::RecordListView>(list)->hint().toStdString(); }
    bool itemIsEnabled(const char* item) const { return find<QAction>(item)->isEnabled(); }
    void trigger(const char* item) const { find<QAction>(item)->trigger(); }
    std::string page() const { return text("lab_PageCurrentlyDisplayed"); }
};

// The filter of the plug-in list

class PluginFilterTest : public FindingTest {
protected:
    void SetUp() override
    {
        for (const char* name : {"Bass Station", "Echo\u0301n", "Filter One"})
            writeDictionary(thirdParty("Acme", name), orderFile(numbered(3)));
        writeDictionary(thirdParty("Zeta", "Filter Two"), orderFile(numbered(3)));
        launch();
        activate();
    }
    std::vector<std::string> found() const { return columnOf("pluginTableView", 0); }
    std::string loaded() const { return controller().myArrayController()->selectionText("Plugin"); }
    ViewController& controller() const { return const_cast<PluginFilterTest*>(this)->WindowTest::controller(); }
};

TEST_F(PluginFilterTest, WordsMatchNameAndMaker)
{
    EXPECT_EQ(text("pluginReadOut"), "");
    typeInto("pluginSearch", "acme fil");
    EXPECT_THAT(found(), ElementsAre("Filter One"));
    EXPECT_EQ(text("pluginReadOut"), "1 of 4");
    search("pluginSearch", "FILTER");
    EXPECT_THAT(found(), ElementsAre("Filter One", "Filter Two"));
    search("pluginSearch", "ech\u00f3n");
    EXPECT_THAT(found(), ElementsAre("Echo\u0301n"));
    search("pluginSearch", "echon");
    EXPECT_THAT(found(), ElementsAre("Echo\u0301n"));
    search("pluginSearch", "editable");
    EXPECT_THAT(found(), IsEmpty()) << "what they all say of themselves";
    EXPECT_EQ(text("pluginReadOut"), "0 of 4");
    EXPECT_THAT(hint("pluginTableView"), HasSubstr("No plug-in found for \u201ceditable\u201d"));
    search("pluginSearch", "");
    EXPECT_EQ(found().size(), 4U);
    EXPECT_EQ(text("pluginReadOut"), "");
    EXPECT_EQ(hint("pluginTableView"), "");
}

TEST_F(PluginFilterTest, TheLoadedRowStaysAndNothingIsChosen)
{
    select("Bass Station");
    pressPot(1);
    typeInto("pluginSearch", "two");
    EXPECT_THAT(found(), ElementsAre("Bass Station", "Filter Two"));
    EXPECT_EQ(text("pluginReadOut"), "1 of 4");
    search("pluginSearch", "nothing has this");
    EXPECT_THAT(found(), ElementsAre("Bass Station"));
    EXPECT_EQ(text("pluginReadOut"), "0 of 4");
    EXPECT_THAT(hint("pluginTableView"), HasSubstr("nothing has this"));
    search("pluginSearch", "bass");
    EXPECT_EQ(text("pluginReadOut"), "1 of 4");
    EXPECT_FALSE(find<QTimer>("rest")->isActive());
    EXPECT_EQ(loaded(), "Bass Station");
    EXPECT_EQ(potLabel(1), "-") << "a load would have brought it back";
    find<platform::qt::RecordListView>("pluginTableView")->sortByColumn(0, Qt::DescendingOrder);
    EXPECT_THAT(found(), ElementsAre("Bass Station")) << "sorting keeps what was searched";
}

TEST_F(PluginFilterTest, DownAndReturnGoIntoTheListAndLoadNothing)
{
    select("Bass Station");
    for (const auto into : {Qt::Key_Down, Qt::Key_Return}) {
        focus("pluginSearch");
        search("pluginSearch", "filter");
        key(into);
        EXPECT_TRUE(hasFocus("pluginTableView"));
        EXPECT_EQ(selectedRow("pluginTableView"), 0);
        EXPECT_FALSE(find<QTimer>("rest")->isActive());
        EXPECT_EQ(loaded(), "Bass Station");
    }
    key(Qt::Key_Down);
    EXPECT_EQ(selectedRow("pluginTableView"), 1) << "the first that was found";
    letKeysRest();
    EXPECT_EQ(loaded(), "Filter One");
}

TEST_F(PluginFilterTest, ReturnInTheListLoadsTheFirstThatWasFound)
{
    select("Filter Two");
    typeInto("pluginSearch", "filter");
    key(Qt::Key_Return);
    key(Qt::Key_Return);
    EXPECT_EQ(loaded(), "Filter One");
}

TEST_F(PluginFilterTest, TypingInTheListGoesThereAndEscapeEmptiesAndLeaves)
{
    focus("pluginTableView");
    type("two");
    EXPECT_TRUE(hasFocus("pluginSearch"));
    EXPECT_EQ(text("pluginSearch"), "two");
    EXPECT_EQ(text("parameterSearch"), "");
    EXPECT_THAT(found(), ElementsAre("Filter Two"));
    key(Qt::Key_Escape);
    EXPECT_EQ(text("pluginSearch"), "");
    EXPECT_TRUE(hasFocus("pluginSearch"));
    key(Qt::Key_Escape);
    EXPECT_TRUE(hasFocus("pluginTableView"));
    EXPECT_EQ(loaded(), "");
}

TEST_F(PluginFilterTest, AScanKeepsTheFilter)
{
    search("pluginSearch", "filter");
    writeDictionary(builtIn("Filter Three"), orderFile(numbered(3)));
    click("btnRunCheck");
    EXPECT_THAT(found(), ElementsAre("Filter One", "Filter Three", "Filter Two"));
    EXPECT_EQ(text("pluginReadOut"), "3 of 5");
}

TEST_F(PluginFilterTest, CountsAreWrittenAsTheLocaleDoes)
{
    std::vector<platform::Record> many;
    for (int n = 0; n < 2000; ++n)
        many.push_back({{"Plugin", "Synth " + std::to_string(n)}, {"Type", std::string("Acme")}});
    controller().myArrayController()->setContent(many);
    search("pluginSearch", "synth 199");
    const QLocale locale;
    EXPECT_EQ(text("pluginReadOut"),
              (locale.toString(12) + QStringLiteral(" of ") + locale.toString(2000)).toStdString());
}

// Pages and pots

class PageFindingTest : public FindingTest {
protected:
    void SetUp() override
    {
        Texts order = numbered(24);
        order[3] = "30 Filter Cutoff"; // page 1, pot 4, and on page 3, pot 2
        order[17] = "30 Filter Cutoff";
        order[9] = "31 B\u00e4nd 1.4"; // page 2, pot 2
        writeDictionary(builtIn("Synth"), orderFile(order));
        launch();
        activate();
        select("Synth");
    }
    std::vector<std::string> found(const char* words)
    {
        search("parameterSearch", words);
        return shown();
    }
    std::vector<std::string> shown() const { return columnOf("tablePlistOfSelectedPlugin", 1); }
    std::vector<int> ringedPots() const
    {
        std::vector<int> ringed;
        for (int pot = 1; pot <= 8; ++pot) {
            const QString told = find<>(("kvRotaryBtn" + std::to_string(pot)).c_str())->accessibleDescription();
            if (told.startsWith(QLatin1String("Holds the selected parameter")))
                ringed.push_back(pot);
        }
        return ringed;
    }
    std::vector<int> ringedPages() const
    {
        const QAbstractItemModel* pages = find<QListView>("pageOverview")->model();
        std::vector<int> ringed;
        for (int row = 0; row < pages->rowCount(); ++row) {
            if (pages->index(row, 0).data(interface::PageModel::HoldsSelected).toBool())
                ringed.push_back(row + 1);
        }
        return ringed;
    }
    void doubleClick(int column)
    {
        auto* list = find<QAbstractItemView>("tablePlistOfSelectedPlugin");
        const QModelIndex cell = list->model()->index(selectedRow("tablePlistOfSelectedPlugin"), column);
        const QPoint place = list->visualRect(cell).center();
        QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, place);
        QTest::mouseDClick(list->viewport(), Qt::LeftButton, {}, place);
    }
    std::string selectedParameter() { return controller().arrayControllerPlistSelected()->selectionText("Parameter"); }
};

TEST_F(PageFindingTest, WordsOfAParameterCountInAnyOrder)
{
    EXPECT_THAT(found("cutoff filter"), ElementsAre("-", "Filter Cutoff"));
    EXPECT_THAT(found("knob 1 5"), ElementsAre("-", "Knob 15"));
    EXPECT_THAT(found("BAND"), ElementsAre("-", "B\u00e4nd 1.4"));
}

TEST_F(PageFindingTest, APotOrAPageFindsWhatStandsThere)
{
    EXPECT_THAT(found("1\u00b72"), ElementsAre("-", "Knob 2"));
    EXPECT_THAT(found("1.4"), ElementsAre("-", "Filter Cutoff", "B\u00e4nd 1.4")) << "on the pot, and by its name";
    EXPECT_THAT(found("p3"), ElementsAre("-", "Filter Cutoff", "Knob 17", "Knob 19", "Knob 20", "Knob 21", "Knob 22",
                                         "Knob 23", "Knob 24"));
    EXPECT_THAT(found("p3 cut"), ElementsAre("-", "Filter Cutoff"));
    EXPECT_THAT(found("p9"), ElementsAre("-"));
}

TEST_F(PageFindingTest, AnEditKeepsWhatIsSearchedOnPotsRight)
{
    EXPECT_THAT(found("1.2"), ElementsAre("-", "Knob 2"));
    EXPECT_EQ(selectedParameter(), "Knob 2");
    click("kvMovePage_Next");
    EXPECT_THAT(shown(), ElementsAre("-", "Knob 2", "B\u00e4nd 1.4")) << "what stands there now, and the selected row";
    EXPECT_EQ(selectedParameter(), "Knob 2");
    click("undoButton");
    EXPECT_THAT(shown(), ElementsAre("-", "Knob 2"));
    click("redoButton");
    found("1.2 ");
    EXPECT_THAT(shown(), ElementsAre("-", "B\u00e4nd 1.4")) << "typed anew";
}

TEST_F(PageFindingTest, PotsAndPagesOfTheSelectedParameterAreRinged)
{
    EXPECT_THAT(ringedPots(), IsEmpty());
    const QImage plain = pictureOf(*find<>("kvRotaryBtn4"));
    chooseParameter("Filter Cutoff");
    EXPECT_THAT(ringedPots(), ElementsAre(4));
    EXPECT_THAT(ringedPages(), ElementsAre(1, 3));
    EXPECT_GT(comparePictures(pictureOf(*find<>("kvRotaryBtn4")), plain).share, 0.02);
    const auto spoken = find<QListView>("pageOverview")->model()->index(2, 0).data(Qt::AccessibleTextRole).toString();
    EXPECT_EQ(spoken.toStdString(), "Page 3 of 3, Knob 17, 8 of 8 pots mapped, holds the selected parameter");
    click("lastPageButtonPressed");
    EXPECT_THAT(ringedPots(), ElementsAre(2));
    click("clearAllPagesButtonPressed");
    EXPECT_THAT(ringedPages(), IsEmpty());
    EXPECT_THAT(ringedPots(), IsEmpty());
    click("undoButton");
    EXPECT_THAT(ringedPages(), ElementsAre(1, 3));
    click("btnRunCheck");
    EXPECT_THAT(ringedPages(), IsEmpty());
}

TEST_F(PageFindingTest, ShowOnPanelGoesFromPageToPage)
{
    EXPECT_FALSE(itemIsEnabled("showOnPanel")) << "the blank entry stands nowhere";
    chooseParameter("Filter Cutoff");
    ASSERT_TRUE(itemIsEnabled("showOnPanel"));
    click("nextPageButtonPressed");
    for (const char* next : {"Page 1 of 3", "Page 3 of 3", "Page 1 of 3"}) {
        trigger("showOnPanel");
        EXPECT_EQ(page(), next);
    }
    EXPECT_FALSE(controller().history().canUndo());
    click("clearAllPagesButtonPressed");
    EXPECT_FALSE(itemIsEnabled("showOnPanel"));
}

TEST_F(PageFindingTest, ADoubleClickOnThePotsShowsThem)
{
    chooseParameter("B\u00e4nd 1.4");
    doubleClick(1);
    EXPECT_EQ(page(), "Page 1 of 3") << "the name is no place";
    doubleClick(2);
    EXPECT_EQ(page(), "Page 2 of 3");
    EXPECT_EQ(selectedParameter(), "B\u00e4nd 1.4");
    chooseParameter("Filter Cutoff");
    doubleClick(2);
    EXPECT_EQ(page(), "Page 1 of 3");
    doubleClick(2);
    EXPECT_EQ(page(), "Page 3 of 3");
    EXPECT_FALSE(controller().history().canUndo());
}

TEST_F(PageFindingTest, FindInListSelectsTheFocusedPotsParameter)
{
    EXPECT_FALSE(itemIsEnabled("findInList")) << "no pot has the focus";
    found("knob");
    find<QCheckBox>("unmappedOnly")->setChecked(true);
    focus("kvRotaryBtn4");
    ASSERT_TRUE(itemIsEnabled("findInList"));
    key(Qt::Key_F, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(selectedParameter(), "Filter Cutoff");
    EXPECT_EQ(text("parameterSearch"), "");
    EXPECT_FALSE(find<QCheckBox>("unmappedOnly")->isChecked());
    EXPECT_TRUE(hasFocus("kvRotaryBtn4"));
    found("knob");
    focus("kvRotaryBtn5");
    trigger("findInList");
    EXPECT_EQ(selectedParameter(), "Knob 5");
    EXPECT_EQ(text("parameterSearch"), "knob") << "which does not hide it";
    auto* list = find<QAbstractItemView>("tablePlistOfSelectedPlugin");
    search("parameterSearch", "");
    list->scrollToBottom();
    trigger("findInList");
    const QModelIndex row = list->model()->index(selectedRow("tablePlistOfSelectedPlugin"), 0);
    EXPECT_TRUE(list->viewport()->rect().contains(list->visualRect(row))) << "selected already, but out of sight";
}

TEST_F(PageFindingTest, AnEmptyPotFindsNothing)
{
    chooseParameter("-");
    pressPot(6);
    chooseParameter("Knob 3");
    focus("kvRotaryBtn6");
    trigger("findInList");
    EXPECT_EQ(selectedParameter(), "Knob 3");
}

// Going to a page

TEST_F(PageFindingTest, AFieldTakesAPageNumberOrHowANameBegins)
{
    struct Row {
        const char* typed;
        const char* page;
    };
    for (const Row& row : {Row{"2", "Page 2 of 3"}, Row{"fil", "Page 1 of 3"}, Row{"knob 24", "Page 3 of 3"},
                           Row{"BAN", "Page 2 of 3"}, Row{"cutoff", "Page 1 of 3"}}) {
        focus("kvRotaryBtn3");
        key(Qt::Key_G, Qt::ControlModifier);
        ASSERT_TRUE(hasFocus("goToPageField"));
        type(row.typed);
        EXPECT_EQ(potLabel(2), controller().kvControl2()->stringValue.get()) << "digits press no pot";
        key(Qt::Key_Return);
        EXPECT_EQ(page(), row.page) << row.typed;
        EXPECT_FALSE(find<>("goToPagePopup")->isVisible());
        EXPECT_TRUE(hasFocus("kvRotaryBtn3"));
    }
    EXPECT_FALSE(controller().history().canUndo());
    EXPECT_EQ(text("parameterSearch"), "");
}

TEST_F(PageFindingTest, TheFieldStaysWhereNothingIsMeant)
{
    focus("tablePlistOfSelectedPlugin");
    trigger("goToPage");
    EXPECT_FALSE(find<>("goToPageMessage")->isVisible());
    type("99");
    key(Qt::Key_Return);
    EXPECT_TRUE(hasFocus("goToPageField"));
    EXPECT_TRUE(find<>("goToPageMessage")->isVisible());
    EXPECT_THAT(text("goToPageMessage"), HasSubstr("99"));
    EXPECT_THAT(find<>("goToPageField")->accessibleDescription().toStdString(), HasSubstr("99"));
    EXPECT_EQ(page(), "Page 1 of 3");
    type("3"); // in place of what was typed
    EXPECT_FALSE(find<>("goToPageMessage")->isVisible());
    key(Qt::Key_Escape);
    EXPECT_FALSE(find<>("goToPagePopup")->isVisible());
    EXPECT_EQ(page(), "Page 1 of 3");
    EXPECT_TRUE(hasFocus("tablePlistOfSelectedPlugin"));
}

TEST_F(PageFindingTest, NoKeyOfAnItemWorksWhileTheFieldIsOpen)
{
    focus("kvRotaryBtn3");
    trigger("goToPage");
    for (const Qt::Key each : {Qt::Key_D, Qt::Key_N, Qt::Key_1})
        key(each, Qt::ControlModifier);
    EXPECT_EQ(text("labTotalPagesIndicator"), "3 Pages");
    EXPECT_EQ(find<QAction>("undo")->isEnabled(), false);
    EXPECT_TRUE(find<>("goToPagePopup")->isVisible());
}

TEST_F(PageFindingTest, TheFieldGoesWithTheFocusAndLiesInTheWindow)
{
    trigger("goToPage");
    auto* popup = find<>("goToPagePopup");
    ASSERT_TRUE(popup->isVisible());
    EXPECT_TRUE(popup->parentWidget()->rect().contains(popup->geometry()));
    EXPECT_GT(find<>("goToPageField")->accessibleName().size(), 0);
    QTest::mouseClick(find<>("kvRotaryBtn2"), Qt::LeftButton);
    find<>("kvRotaryBtn2")->setFocus();
    EXPECT_FALSE(popup->isVisible());
    click("btnRunCheck");
    EXPECT_TRUE(itemIsEnabled("goToPage")) << "the mapping is still there";
}

} // namespace test
