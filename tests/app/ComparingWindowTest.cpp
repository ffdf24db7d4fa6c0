// Comparing in the real window: what is marked, told and enabled, by names and keys.

#include "app/interface/panel/PageModel.h"
#include "tests/support/Pictures.h"
#include "tests/support/WindowTest.h"

#include <QAbstractItemView>
#include <QAction>
#include <QLabel>
#include <QTest>

namespace test {

using interface::PageModel;
using testing::HasSubstr;
using testing::StartsWith;

class ComparingWindow : public WindowTest {
protected:
    void open(const Texts& original)
    {
        file_ = builtIn("Lead");
        writeDictionary(file_, orderFile(numbered(20)));
        write(file_.native() + ".original", orderBytes(original));
        launch();
        select("Lead");
        find<>("cwinMainWindow")->activateWindow();
        ASSERT_TRUE(QTest::qWaitForWindowActive(find<>("cwinMainWindow")));
    }
    void trigger(const char* item) { find<QAction>(item)->trigger(); }
    bool canBeDone(const char* item) const { return find<QAction>(item)->isEnabled(); }
    bool isChosen(const char* item) const { return find<QAction>(item)->isChecked(); }
    std::string hint() const { return find<>("differenceHint")->isVisible() ? text("differenceHint") : ""; }
    QVariant tile(int page, int role) const
    {
        return find<QAbstractItemView>("pageOverview")->model()->index(page - 1, 0).data(role);
    }
    static Texts without(Texts order, const std::vector<std::size_t>& positions)
    {
        for (const std::size_t position : positions)
            order.at(position) = "-1";
        return order;
    }

    Path file_;
};

TEST_F(ComparingWindow, OffersWhatIsThere)
{
    writeDictionary(builtIn("Lead"), orderFile(numbered(20)));
    launch();
    for (const char* item : {"compareWithNothing", "compareWithSaved", "compareWithOriginal", "nextDifference",
                             "previousDifference", "takePot", "takePage"})
        EXPECT_FALSE(canBeDone(item)) << item;
    select("Lead");
    EXPECT_TRUE(isChosen("compareWithNothing"));
    EXPECT_TRUE(canBeDone("compareWithSaved"));
    for (const char* item : {"compareWithPrevious", "compareWithOriginal", "compareWithDownloaded"})
        EXPECT_FALSE(canBeDone(item)) << item;
    alertsOf([this] { click("kvExportToPlist"); });
    EXPECT_TRUE(canBeDone("compareWithPrevious"));
    EXPECT_TRUE(canBeDone("compareWithOriginal"));
    EXPECT_FALSE(canBeDone("compareWithDownloaded"));
    EXPECT_EQ(hint(), "");
}

TEST_F(ComparingWindow, MarksPotsAndPagesAndTellsBothNames)
{
    open(without(numbered(20), {2, 17}));
    const std::string usual = toolTip("kvRotaryBtn3");
    trigger("compareWithOriginal");
    EXPECT_TRUE(isChosen("compareWithOriginal"));
    EXPECT_FALSE(isChosen("compareWithNothing"));
    EXPECT_EQ(hint(), "2 pots differ from the original backup");
    const std::string difference = "Knob 3; in the original backup: empty";
    EXPECT_EQ(toolTip("kvRotaryBtn3"), difference + "\n" + usual);
    EXPECT_EQ(toolTip("kvControl3"), difference);
    EXPECT_EQ(find<>("kvRotaryBtn3")->accessibleDescription().toStdString(), difference + "; " + usual);
    EXPECT_EQ(find<>("kvRotaryBtn4")->accessibleDescription().toStdString(), toolTip("kvRotaryBtn4"));
    EXPECT_EQ(tile(1, PageModel::DifferingPots).toUInt(), 4u);
    EXPECT_EQ(tile(2, PageModel::DifferingPots).toUInt(), 0u);
    EXPECT_EQ(tile(3, PageModel::DifferingPots).toUInt(), 2u);
    EXPECT_EQ(tile(3, Qt::AccessibleTextRole).toString().toStdString(),
              "Page 3 of 3, Knob, 4 of 8 pots mapped, 1 pot differs");
    EXPECT_THAT(tile(1, Qt::ToolTipRole).toString().toStdString(), HasSubstr("\n3  " + difference + "\n"));

    click("nextPageButtonPressed");
    EXPECT_EQ(toolTip("kvRotaryBtn3"), usual);
    EXPECT_EQ(toolTip("kvControl3"), "Knob 11");
    click("lastPageButtonPressed");
    EXPECT_THAT(toolTip("kvRotaryBtn2"), StartsWith("Knob 18; in the original backup: empty"));
    trigger("compareWithNothing");
    EXPECT_EQ(hint(), "");
    EXPECT_EQ(tile(3, PageModel::DifferingPots).toUInt(), 0u);
    EXPECT_EQ(find<>("kvRotaryBtn2")->accessibleDescription().toStdString(), toolTip("kvRotaryBtn2"));
}

TEST_F(ComparingWindow, NumbersTellNamesApartThatAreTheSame)
{
    Texts original = numbered(20);
    original[0] = "77 Knob 1";
    open(original);
    trigger("compareWithOriginal");
    EXPECT_EQ(hint(), "1 pot differs from the original backup");
    EXPECT_THAT(toolTip("kvRotaryBtn1"), StartsWith("1 Knob 1; in the original backup: 77 Knob 1\n"));
}

TEST_F(ComparingWindow, TheHintSaysWhatDiffers)
{
    open(numbered(20));
    write(file_.native() + ".prev", orderBytes(numbered(33)));
    write(file_.native() + ".downloaded", "no mapping");
    trigger("compareWithSaved");
    EXPECT_EQ(hint(), "Nothing differs from the saved file");
    trigger("compareWithOriginal");
    EXPECT_EQ(hint(), "Nothing differs from the original backup");
    click("newPageButtonPressed");
    EXPECT_EQ(hint(), "No pot differs from the original backup, which has 1 page fewer");
    trigger("undo");
    click("kvPluginMode_1");
    EXPECT_EQ(hint(), "No pot differs from the original backup; its mode is Insert/Effect");
    click("kvPluginMode_0");
    trigger("compareWithPrevious");
    EXPECT_EQ(hint(), "13 pots differ from the previous backup, which has 2 pages more");
    controller().editingChanged.emit(); // the file was not there when the menu was last made
    trigger("compareWithDownloaded");
    EXPECT_EQ(hint(), "Nothing is compared: the downloaded mapping cannot be read");
    EXPECT_TRUE(isChosen("compareWithNothing"));
    EXPECT_EQ(tile(1, PageModel::DifferingPots).toUInt(), 0u);
}

TEST_F(ComparingWindow, NoDifferenceIsGoneToWhileNoPotTakesTheFocus)
{
    open(without(numbered(20), {2, 17}));
    trigger("compareWithOriginal");
    click("btnRunCheck");
    EXPECT_FALSE(canBeDone("nextDifference"));
    EXPECT_FALSE(canBeDone("previousDifference"));
    select("Lead");
    trigger("compareWithOriginal");
    EXPECT_TRUE(canBeDone("nextDifference"));
}

TEST_F(ComparingWindow, KeysGoFromDifferenceToDifferenceAndTakeThem)
{
    open(without(numbered(20), {2, 17}));
    trigger("compareWithOriginal");
    auto* window = find<>("cwinMainWindow");
    const auto focused = [&] {
        return QApplication::focusWidget() ? QApplication::focusWidget()->objectName().toStdString() : "";
    };
    EXPECT_FALSE(canBeDone("takePot")); // none has the focus
    EXPECT_TRUE(canBeDone("takePage"));
    QTest::keyClick(window, Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(focused(), "kvRotaryBtn3");
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 1 of 3");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(focused(), "kvRotaryBtn2");
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 3 of 3");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Down, Qt::AltModifier);
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 1 of 3");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_Up, Qt::AltModifier);
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 3 of 3");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_T, Qt::ControlModifier);
    EXPECT_EQ(potLabel(2), "-");
    EXPECT_EQ(hint(), "1 pot differs from the original backup");
    EXPECT_FALSE(canBeDone("takePot"));
    EXPECT_FALSE(canBeDone("takePage"));
    EXPECT_EQ(find<QAction>("undo")->text().toStdString(), "Undo Take Pot");
    trigger("undo");
    EXPECT_EQ(potLabel(2), "Knob 18");
    EXPECT_EQ(hint(), "2 pots differ from the original backup");
    QTest::keyClick(QApplication::focusWidget(), Qt::Key_T, Qt::ControlModifier | Qt::ShiftModifier);
    EXPECT_EQ(potLabel(2), "-");
    EXPECT_EQ(find<QAction>("undo")->text().toStdString(), "Undo Take Page");
}

TEST_F(ComparingWindow, OnlyWhatLiesBehindTheLastPageCannotBeGoneTo)
{
    open(numbered(24));
    trigger("compareWithOriginal");
    EXPECT_TRUE(canBeDone("nextDifference"));
    trigger("compareWithNothing");
    write(file_.native() + ".original", orderBytes(numbered(32)));
    click("lastPageButtonPressed");
    trigger("compareWithOriginal");
    trigger("takePage");
    EXPECT_EQ(hint(), "8 pots differ from the original backup, which has 1 page more");
    EXPECT_FALSE(canBeDone("nextDifference"));
    EXPECT_FALSE(canBeDone("previousDifference"));
}

TEST_F(ComparingWindow, TheMarkIsDrawnOnPotsAndTiles)
{
    open(without(numbered(20), {2}));
    for (const bool isDark : {false, true}) {
        const FixedLook look(isDark ? darkPalette() : lightPalette());
        const auto pictures = [&] {
            QApplication::processEvents();
            auto* strip = find<QAbstractItemView>("pageOverview");
            const QRect tile = strip->visualRect(strip->model()->index(0, 0));
            return std::pair(find<>("kvRotaryBtn3")->grab().toImage(), strip->viewport()->grab(tile).toImage());
        };
        trigger("compareWithNothing");
        const auto before = pictures();
        trigger("compareWithOriginal");
        const auto after = pictures();
        EXPECT_NE(before.first, after.first);
        EXPECT_NE(before.second, after.second);
    }
}

} // namespace test
