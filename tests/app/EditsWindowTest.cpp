#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "panel/CopiedSlots.h"
#include "platform/qt/SystemEffects.h"
#include "tests/support/WindowTest.h"

#include <QAction>
#include <QClipboard>
#include <QContextMenuEvent>
#include <QLineEdit>
#include <QListView>
#include <QMenu>
#include <QMimeData>
#include <QTest>
#include <QTimer>

#include <string>
#include <vector>

namespace test {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class EditsWindowTest : public WindowTest {
protected:
    EditsWindowTest() { QGuiApplication::clipboard()->clear(); }

    void load(const Texts& order = {"1 A", "2 B", "3 C", "4 D"})
    {
        writeDictionary(builtIn("Synth"), orderFile(order));
        launch();
        find<>("cwinMainWindow")->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(find<>("cwinMainWindow")));
        select("Synth");
    }
    QWidget* pot(int number) const { return find<>(("kvRotaryBtn" + std::to_string(number)).c_str()); }
    void focusPot(int number)
    {
        find<>("parameterSearch")->setFocus();
        pot(number)->setFocus(Qt::TabFocusReason);
        ASSERT_EQ(QApplication::focusWidget(), pot(number));
    }
    void focusTile()
    {
        find<>("pageOverview")->setFocus();
        ASSERT_EQ(QApplication::focusWidget(), find<>("pageOverview"));
    }
    /// As from a keyboard: to whoever has the focus.
    static void key(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier)
    {
        QTest::keyClick(QApplication::focusWidget(), key, modifiers);
    }
    void clickPot(int number, Qt::KeyboardModifiers modifiers)
    {
        QTest::mouseClick(pot(number), Qt::LeftButton, modifiers);
    }
    void trigger(const char* item)
    {
        ASSERT_TRUE(find<QAction>(item)->isEnabled()) << item;
        find<QAction>(item)->trigger();
    }
    bool canDo(const char* item) const { return find<QAction>(item)->isEnabled(); }
    std::vector<std::int32_t> chosen() { return controller().potChoice.get().pots; }
    std::string undoText() const { return find<QAction>("undo")->text().toStdString(); }
    /// The names of all pots, a blank between them, '|' between pages.
    std::string pots() const
    {
        std::string names;
        for (std::int32_t position = 0; position < mapping::totalPages * 8; ++position) {
            if (position > 0 && position % 8 == 0)
                names += "|";
            names += std::string(mapping::nameAt(mapping::plistBuild, position)) + ' ';
        }
        while (names.ends_with("- "))
            names.resize(names.size() - 2);
        return names;
    }
    static void putOnClipboard(const QByteArray& own)
    {
        auto* content = new QMimeData;
        content->setData(QLatin1String(platform::qt::SystemClipboard::kOwnType), own);
        QGuiApplication::clipboard()->setMimeData(content);
    }

    QMenu* menuOver(QWidget* widget, const QPoint& at, QContextMenuEvent::Reason reason)
    {
        QContextMenuEvent event(reason, at, widget->mapToGlobal(at));
        QApplication::sendEvent(widget, &event);
        auto* menu = qobject_cast<QMenu*>(QApplication::activePopupWidget());
        return menu;
    }
    static std::vector<std::string> itemsOf(const QMenu& menu)
    {
        std::vector<std::string> items;
        for (const QAction* item : menu.actions())
            items.push_back(item->isSeparator() ? "-" : item->objectName().toStdString());
        return items;
    }
};

TEST_F(EditsWindowTest, DeleteAndBackspaceClearTheFocusedPotAndLeaveTheListAlone)
{
    load();
    chooseParameter("D");
    focusPot(2);
    key(Qt::Key_Delete);
    EXPECT_EQ(pots(), "A - C D ");
    EXPECT_EQ(undoText(), "Undo Clear Pot");
    EXPECT_EQ(controller().arrayControllerPlistSelected()->selectionText(mapping::kParameter), "D");
    EXPECT_EQ(QApplication::focusWidget(), pot(2));
    key(Qt::Key_Right);
    key(Qt::Key_Backspace);
    EXPECT_EQ(pots(), "A - - D ");
    find<>("parameterSearch")->setFocus();
    EXPECT_FALSE(canDo("clearPot"));
    find<>("tablePlistOfSelectedPlugin")->setFocus();
    key(Qt::Key_Delete);
    EXPECT_EQ(pots(), "A - - D ");
    focusTile();
    key(Qt::Key_Delete);
    EXPECT_EQ(pots(), "");
    EXPECT_EQ(undoText(), "Undo Clear Page");
}

TEST_F(EditsWindowTest, ShiftWithTheArrowsChoosesPots)
{
    load();
    focusPot(2);
    EXPECT_THAT(chosen(), ElementsAre(1));
    EXPECT_THAT(pot(2)->accessibleName().toStdString(), Not(HasSubstr("chosen")));
    key(Qt::Key_Right, Qt::ShiftModifier);
    key(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_THAT(chosen(), ElementsAre(1, 2, 3));
    EXPECT_EQ(controller().potChoice.get().focusedPot, 3);
    EXPECT_EQ(pot(2)->accessibleName(), QStringLiteral("Pot 2, B, page 1 of 1, chosen"));
    EXPECT_EQ(pot(1)->accessibleName(), QStringLiteral("Pot 1, A, page 1 of 1"));
    key(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_THAT(chosen(), ElementsAre(1, 2));
    for (int i = 0; i < 3; ++i)
        key(Qt::Key_Left, Qt::ShiftModifier); // back over where it began
    EXPECT_THAT(chosen(), ElementsAre(0, 1));
    key(Qt::Key_Delete);
    EXPECT_EQ(pots(), "- - C D ");
    EXPECT_EQ(undoText(), "Undo Clear Pots");
    key(Qt::Key_Escape);
    EXPECT_THAT(chosen(), ElementsAre(0));
    EXPECT_THAT(pot(1)->accessibleName().toStdString(), Not(HasSubstr("chosen")));
    key(Qt::Key_A, Qt::ControlModifier);
    EXPECT_EQ(chosen().size(), 8u);
    key(Qt::Key_Right);
    EXPECT_THAT(chosen(), ElementsAre(1));
}

TEST_F(EditsWindowTest, ClicksWithShiftAndCtrlChooseAndPressNothing)
{
    load();
    chooseParameter("D");
    clickPot(3, Qt::ControlModifier);
    EXPECT_THAT(chosen(), ElementsAre(2));
    EXPECT_EQ(QApplication::focusWidget(), pot(3));
    clickPot(6, Qt::ControlModifier);
    EXPECT_THAT(chosen(), ElementsAre(2, 5));
    clickPot(3, Qt::ControlModifier);
    EXPECT_THAT(chosen(), ElementsAre(5));
    clickPot(6, Qt::NoModifier); // a plain one presses
    EXPECT_THAT(chosen(), ElementsAre(5));
    EXPECT_EQ(pots(), "A B C D - D ");
    EXPECT_THAT(pot(6)->accessibleName().toStdString(), Not(HasSubstr("chosen")));
    clickPot(4, Qt::ShiftModifier); // from where the last one was
    EXPECT_THAT(chosen(), ElementsAre(3, 4, 5));
    clickPot(8, Qt::ShiftModifier);
    EXPECT_THAT(chosen(), ElementsAre(5, 6, 7));
    clickPot(1, Qt::NoModifier);
    EXPECT_THAT(chosen(), ElementsAre(0));
    EXPECT_EQ(potLabel(1), "D");
}

TEST_F(EditsWindowTest, AnotherPageAndAnotherPlaceGiveTheChoiceUp)
{
    load(numbered(16));
    focusPot(1);
    key(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_THAT(chosen(), ElementsAre(0, 1));
    key(Qt::Key_PageDown);
    EXPECT_THAT(chosen(), ElementsAre(1));
    key(Qt::Key_Right, Qt::ShiftModifier);
    EXPECT_THAT(chosen(), ElementsAre(1, 2));
    find<>("parameterSearch")->setFocus();
    EXPECT_THAT(chosen(), ElementsAre());
    EXPECT_THAT(pot(2)->accessibleName().toStdString(), Not(HasSubstr("chosen")));
    clickPot(7, Qt::ControlModifier); // nothing is left of it
    EXPECT_THAT(chosen(), ElementsAre(6));
}

TEST_F(EditsWindowTest, ChosenPotsLookDifferent)
{
    load();
    focusPot(2);
    const QImage focused = pot(2)->grab().toImage();
    const QImage plain = pot(1)->grab().toImage();
    key(Qt::Key_Left, Qt::ShiftModifier);
    EXPECT_NE(pot(2)->grab().toImage(), focused);
    EXPECT_NE(pot(1)->grab().toImage(), plain);
    key(Qt::Key_Escape);
    focusPot(2);
    EXPECT_EQ(pot(2)->grab().toImage(), focused);
    EXPECT_EQ(pot(1)->grab().toImage(), plain);
}

TEST_F(EditsWindowTest, AfterARescanNothingIsMeantThatWasNotBefore)
{
    load();
    focusPot(2);
    find<QAction>("btnRunCheck")->trigger();
    EXPECT_EQ(QApplication::focusWidget(), find<>("pluginTableView"));
    EXPECT_FALSE(controller().potChoice.get().isPage);
    key(Qt::Key_Backspace);
    EXPECT_EQ(pots(), "A B C D ");
    EXPECT_FALSE(canDo("cutSlots"));
}

TEST_F(EditsWindowTest, AnAlertLeavesTheChoice)
{
    load();
    focusPot(1);
    key(Qt::Key_Right, Qt::ShiftModifier);
    std::vector<std::int32_t> meanwhile;
    QTimer::singleShot(0, &*find<>("cwinMainWindow"), [&] { meanwhile = chosen(); });
    alertsOf([this] { find<QAction>("kvExportToPlist")->trigger(); });
    EXPECT_THAT(meanwhile, ElementsAre(0, 1));
    EXPECT_THAT(chosen(), ElementsAre(0, 1));
}

TEST_F(EditsWindowTest, WhatCouldDoNothingIsOff)
{
    load({"1 A", "2 B", "-1", "4 D"});
    focusPot(3);
    EXPECT_FALSE(canDo("findInList")) << "the pot is empty";
    EXPECT_FALSE(canDo("fillFromPot")) << "the blank entry is selected";
    EXPECT_FALSE(canDo("mapUnmapped")) << "all are mapped";
    focusPot(2);
    EXPECT_TRUE(canDo("findInList"));
    chooseParameter("D");
    EXPECT_TRUE(canDo("fillFromPot"));
    focusPot(2);
    trigger("clearPot");
    EXPECT_TRUE(canDo("mapUnmapped"));
}

TEST_F(EditsWindowTest, AMenuOnAPotFocusesItWithoutPressing)
{
    load();
    chooseParameter("D");
    for (const auto reason : {QContextMenuEvent::Mouse, QContextMenuEvent::Keyboard}) {
        const QMenu* menu = menuOver(pot(2), pot(2)->rect().center(), reason);
        ASSERT_TRUE(menu);
        EXPECT_EQ(menu, find<QMenu>("potMenu"));
        EXPECT_THAT(itemsOf(*menu), ElementsAre("cutSlots", "copySlots", "pasteSlots", "clearPot", "-", "insertPot",
                                                "removePot", "-", "findInList", "-", "fillFromPot", "-", "takePot"));
        EXPECT_EQ(find<>("cwinMainWindow")->focusWidget(), pot(2));
        EXPECT_THAT(chosen(), ElementsAre(1));
        EXPECT_TRUE(canDo("clearPot"));
        EXPECT_EQ(pots(), "A B C D ");
        find<QMenu>("potMenu")->close();
    }
    trigger("clearPot");
    EXPECT_EQ(pots(), "A - C D ");
}

TEST_F(EditsWindowTest, AMenuOnAChosenPotMeansAllThatAreChosen)
{
    load();
    focusPot(1);
    key(Qt::Key_Right, Qt::ShiftModifier);
    menuOver(pot(1), {5, 5}, QContextMenuEvent::Mouse);
    EXPECT_THAT(chosen(), ElementsAre(0, 1));
    find<QMenu>("potMenu")->close();
    menuOver(pot(4), {5, 5}, QContextMenuEvent::Mouse);
    EXPECT_THAT(chosen(), ElementsAre(3));
    find<QMenu>("potMenu")->close();
}

TEST_F(EditsWindowTest, AMenuOnATileShowsItsPage)
{
    load(numbered(24));
    auto* tiles = find<QListView>("pageOverview");
    const QPoint third = tiles->visualRect(tiles->model()->index(2, 0)).center();
    const QMenu* menu = menuOver(tiles->viewport(), third, QContextMenuEvent::Mouse);
    ASSERT_EQ(menu, find<QMenu>("tileMenu"));
    EXPECT_THAT(itemsOf(*menu),
                ElementsAre("cutSlots", "copySlots", "pasteSlots", "-", "kvMovePage_First", "kvMovePage_Prev",
                            "kvMovePage_Next", "kvMovePage_Last", "-", "insertPage", "duplicatePage", "-",
                            "deletePageButtonPressed", "clearPage", "-", "takePage"));
    EXPECT_EQ(mapping::curPage, 3);
    EXPECT_TRUE(canDo("cutSlots"));
    find<QMenu>("tileMenu")->close();
    EXPECT_EQ(menuOver(tiles->viewport(), {tiles->viewport()->width() - 1, 5}, QContextMenuEvent::Mouse), nullptr);
    EXPECT_EQ(menuOver(tiles, {}, QContextMenuEvent::Keyboard), find<QMenu>("tileMenu"));
    EXPECT_EQ(mapping::curPage, 3);
    find<QMenu>("tileMenu")->close();
}

TEST_F(EditsWindowTest, AMenuOnAParameterSelectsIt)
{
    load();
    auto* list = find<QAbstractItemView>("tablePlistOfSelectedPlugin");
    const QPoint third = list->visualRect(list->model()->index(3, 0)).center();
    const QMenu* menu = menuOver(list->viewport(), third, QContextMenuEvent::Mouse);
    ASSERT_EQ(menu, find<QMenu>("parameterMenu"));
    EXPECT_THAT(itemsOf(*menu), testing::IsSupersetOf({"kvRotBtn1_Pressed", "kvRotBtn8_Pressed", "mapUnmapped"}));
    EXPECT_EQ(controller().arrayControllerPlistSelected()->selectionText(mapping::kParameter), "C");
    find<QMenu>("parameterMenu")->close();
    trigger("kvRotBtn8_Pressed");
    EXPECT_EQ(potLabel(8), "C");
    EXPECT_EQ(menuOver(list->viewport(), {5, list->viewport()->height() - 2}, QContextMenuEvent::Mouse), nullptr);
}

TEST_F(EditsWindowTest, PotsAreCopiedAsTextAndPastedOnTheFocusedOneAndTheFollowing)
{
    load({"1 A", "2 B", "-1", "4 D", "5 E", "6 F", "7 G", "8 H", "9 I"});
    EXPECT_FALSE(canDo("copySlots"));
    focusPot(2);
    EXPECT_FALSE(canDo("pasteSlots"));
    clickPot(4, Qt::ShiftModifier);
    key(Qt::Key_C, Qt::ControlModifier);
    EXPECT_EQ(QGuiApplication::clipboard()->text().toStdString(),
              "Page 1, Pot 2: 2 B\nPage 1, Pot 3: -\nPage 1, Pot 4: 4 D");
    EXPECT_FALSE(controller().history().canUndo());
    key(Qt::Key_PageDown);
    focusPot(8);
    EXPECT_TRUE(canDo("pasteSlots"));
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(pots(), "A B - D E F G H |I - - - - - - B |- D ");
    EXPECT_EQ(mapping::curPage, 2);
    EXPECT_EQ(undoText(), "Undo Paste");
    EXPECT_FALSE(find<>("placedHint")->isVisible());
    focusTile();
    trigger("pasteSlots");
    EXPECT_EQ(pots(), "A B - D E F G H |B - D - - - - B |- D ");
}

TEST_F(EditsWindowTest, CutEmptiesPotsAndTakesOutPages)
{
    load(numbered(24, "K"));
    focusPot(1);
    clickPot(2, Qt::ShiftModifier);
    key(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(potLabels(), (Texts{"-", "-", "K 3", "K 4", "K 5", "K 6", "K 7", "K 8"}));
    EXPECT_EQ(undoText(), "Undo Cut");
    trigger("undo");
    focusTile();
    key(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 1 of 2");
    EXPECT_EQ(potLabel(1), "K 9");
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 2 of 3");
    EXPECT_EQ(potLabel(1), "K 1");
    EXPECT_EQ(mapping::nameAt(mapping::plistBuild, 0), "K 9");
    EXPECT_EQ(mapping::nameAt(mapping::plistBuild, 16), "K 17");
}

TEST_F(EditsWindowTest, AnotherPluginIsPastedWhatItOffersAndToldTheRest)
{
    writeDictionary(builtIn("Verb"), orderFile({"1 Mix",
                                                "2 d\xC3\xA9"
                                                "cay",
                                                "3 Size"}));
    load({"9 DECAY", "1 Mix", "3 <b>Air</b>", "4 %1 Drift", "-1", "5 Mix"});
    focusTile();
    trigger("copySlots");
    select("Verb");
    focusPot(3);
    trigger("pasteSlots"); // a page, so it comes behind
    EXPECT_EQ(pots(), "Mix d\xC3\xA9"
                      "cay Size - - - - - |d\xC3\xA9"
                      "cay Mix - - - Mix ");
    EXPECT_EQ(mapping::plistBuild[8].text(mapping::kParamNum), "2");
    EXPECT_TRUE(find<>("placedHint")->isVisible());
    EXPECT_EQ(text("placedHint"), "3 of 5 placed; not offered here: <b>Air</b>, %1 Drift");
    EXPECT_EQ(toolTip("placedHint"), text("placedHint"));
    trigger("prevPageButtonPressed");
    EXPECT_TRUE(find<>("placedHint")->isVisible());
    const auto paste = [this] {
        focusPot(1);
        trigger("pasteSlots");
        EXPECT_TRUE(find<>("placedHint")->isVisible());
    };
    trigger("undo");
    EXPECT_FALSE(find<>("placedHint")->isVisible());
    paste();
    trigger("clearPot");
    EXPECT_FALSE(find<>("placedHint")->isVisible());
    paste();
    select("Synth");
    EXPECT_FALSE(find<>("placedHint")->isVisible());
    select("Verb");
    paste();
    trigger("btnRunCheck");
    EXPECT_FALSE(find<>("placedHint")->isVisible());
    EXPECT_EQ(text("placedHint"), "");
}

TEST_F(EditsWindowTest, WithAListFocusedItIsPastedOnTheShownPage)
{
    writeDictionary(builtIn("Verb"), orderFile({"1 Mix"}));
    load();
    select("Verb");
    ASSERT_EQ(QApplication::focusWidget(), find<>("pluginTableView"));
    putOnClipboard(QByteArray::fromStdString(panel::bytesOf({"/another", false, {{"1", "Mix"}, {"1", "Mix"}}})));
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(pots(), "Mix Mix ");
    panel::CopiedSlots page{"/another", true,
                            std::vector<panel::SlotContent>(8, {mapping::kEmptyNumber, mapping::kEmptyName})};
    page.contents[2] = {"1", "Mix"};
    putOnClipboard(QByteArray::fromStdString(panel::bytesOf(page)));
    find<>("tablePlistOfSelectedPlugin")->setFocus();
    key(Qt::Key_V, Qt::ControlModifier);
    EXPECT_EQ(pots(), "Mix Mix - - - - - - |- - Mix ");
}

TEST_F(EditsWindowTest, WhatIsNotOfferedLeavesItsPotAsItIs)
{
    writeDictionary(builtIn("Verb"), orderFile({"1 Mix", "2 Decay", "3 Size"}));
    load({"1 Mix", "2 Air", "3 Size"});
    focusPot(1);
    clickPot(3, Qt::ShiftModifier);
    trigger("copySlots");
    select("Verb");
    focusPot(1);
    trigger("pasteSlots");
    EXPECT_EQ(pots(), "Mix Decay Size ");
    EXPECT_EQ(text("placedHint"), "2 of 3 placed; not offered here: Air");
}

TEST_F(EditsWindowTest, WithinThePluginItIsPastedWhatItsListDoesNotOffer)
{
    load();
    mapping::plistBuild[0] = mapping::entryFromElement("77 Alien", 1, 0);
    focusPot(1);
    trigger("cutSlots");
    focusPot(5);
    trigger("pasteSlots");
    EXPECT_EQ(pots(), "- B C D Alien ");
    EXPECT_EQ(text("placedHint"), "");
}

TEST_F(EditsWindowTest, HostileClipboardsAreIgnored)
{
    load();
    focusPot(1);
    QGuiApplication::clipboard()->setText(QStringLiteral("Page 1, Pot 1: 2 B"));
    EXPECT_FALSE(canDo("pasteSlots"));
    for (const QByteArray& own :
         {QByteArray("x"), QByteArray(), QByteArray("<plist"), QByteArray("{Slots=(7);}"), QByteArray(20000, '(')}) {
        putOnClipboard(own);
        controller().pasteSlots();
        EXPECT_EQ(pots(), "A B C D ");
        EXPECT_FALSE(controller().history().canUndo());
    }
    putOnClipboard(QByteArray::fromStdString(panel::bytesOf({"/another", false, {{"2", "B"}}})));
    EXPECT_TRUE(canDo("pasteSlots"));
    trigger("pasteSlots");
    EXPECT_EQ(pots(), "B B C D ");
}

TEST_F(EditsWindowTest, TextFieldsKeepTheirKeys)
{
    load();
    focusPot(1);
    trigger("copySlots");
    auto* search = find<QLineEdit>("parameterSearch");
    typeInto("parameterSearch", "cut");
    search->selectAll();
    for (const char* item : {"cutSlots", "copySlots", "pasteSlots", "clearPot"})
        EXPECT_FALSE(canDo(item)) << item;
    key(Qt::Key_X, Qt::ControlModifier);
    EXPECT_EQ(search->text(), QString());
    EXPECT_EQ(QGuiApplication::clipboard()->text(), QStringLiteral("cut"));
    key(Qt::Key_V, Qt::ControlModifier);
    key(Qt::Key_Backspace);
    EXPECT_EQ(search->text(), QStringLiteral("cu"));
    EXPECT_EQ(pots(), "A B C D ");
}

TEST_F(EditsWindowTest, PotsAndPagesAreInsertedAndTakenOut)
{
    load();
    focusPot(2);
    key(Qt::Key_I, Qt::ControlModifier);
    EXPECT_EQ(pots(), "A - B C D ");
    EXPECT_EQ(undoText(), "Undo Insert Pot");
    key(Qt::Key_Backspace, Qt::ControlModifier);
    EXPECT_EQ(pots(), "A B C D ");
    EXPECT_EQ(undoText(), "Undo Remove Pot");
    trigger("insertPage");
    EXPECT_EQ(pots(), "- - - - - - - - |A B C D ");
    EXPECT_EQ(mapping::curPage, 1);
    EXPECT_EQ(undoText(), "Undo Insert Page");
    trigger("lastPageButtonPressed");
    trigger("duplicatePage");
    EXPECT_EQ(pots(), "- - - - - - - - |A B C D - - - - |A B C D ");
    EXPECT_EQ(mapping::curPage, 3);
    EXPECT_EQ(undoText(), "Undo Duplicate Page");
    trigger("tidyUp");
    EXPECT_EQ(pots(), "A B C D A B C D ");
    EXPECT_EQ(mapping::totalPages, 1);
    EXPECT_EQ(undoText(), "Undo Tidy Up");
}

TEST_F(EditsWindowTest, AllThatIsOnNoPotIsMappedInOneStepWhateverTheListShows)
{
    load(numbered(20, "K"));
    trigger("startFromScratch");
    chooseParameter("K 12");
    pressPot(3);
    fill("parameterSearch", "K 7");
    trigger("mapUnmapped");
    EXPECT_EQ(undoText(), "Undo Map Unmapped");
    EXPECT_EQ(potLabels(), (Texts{"-", "-", "K 12", "K 1", "K 2", "K 3", "K 4", "K 5"}));
    EXPECT_EQ(text("mappedReadOut"), "20 of 20 mapped");
    EXPECT_EQ(mapping::totalPages, 3);
    trigger("undo");
    EXPECT_EQ(text("mappedReadOut"), "1 of 20 mapped");
}

} // namespace test
