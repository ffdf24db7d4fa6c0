// Drags in the real window, from the list, the panel and the strip to the panel and the strip.

#include "tests/support/WindowTest.h"

#include "app/interface/panel/FrontPanel.h"
#include "app/interface/panel/PageOverview.h"
#include "mapping/EditingState.h"
#include "mapping/ParameterOrder.h"
#include "platform/qt/RecordListView.h"
#include "tests/support/Dragged.h"

#include <QAbstractItemView>
#include <QAction>
#include <QTest>

#include <functional>
#include <utility>

namespace test {

using testing::ElementsAre;

class DragsTest : public WindowTest {
protected:
    void load(int parameters = 24)
    {
        writeDictionary(builtIn("Synth"), orderFile(numbered(parameters)));
        launch();
        select("Synth");
    }
    platform::ArrayController& rows() { return *controller().arrayControllerPlistSelected(); }
    quint64 state() { return controller().historyRevision() + rows().contentRevision(); }
    Dragged pot(int page, int number) { return Dragged(draggedPot(page, number, state())); }
    Dragged parameters(int count = 1) { return Dragged(draggedParameters(count, state())); }
    Dragged page(int number) { return Dragged(draggedPage(number, state())); }
    QWidget& strip() const { return *overview()->viewport(); }
    QAbstractItemView* overview() const { return find<QAbstractItemView>("pageOverview"); }
    QRect tile(int number) const { return overview()->visualRect(overview()->model()->index(number - 1, 0)); }
    bool dropOnTile(Dragged&& dragged, int number) { return dragged.dropOn(strip(), tile(number).center()); }
    bool dropOnPot(Dragged&& dragged, int number)
    {
        QWidget* onto = find<>(("kvRotaryBtn" + std::to_string(number)).c_str());
        return dragged.dropOn(*find<>("frontPanel"), onto->geometry().center());
    }
    void rest() { runFor(600); }
    std::string shownPage() const { return text("lab_PageCurrentlyDisplayed"); }
    std::string undoText() const { return find<QAction>("undo")->text().toStdString(); }
    static std::string at(int page, int pot)
    {
        return std::string(mapping::nameAt(mapping::plistBuild, (page - 1) * 8 + pot - 1));
    }
};

// Onto pots

TEST_F(DragsTest, AParameterDroppedOnAPotIsPutThereAsByAPress)
{
    load();
    rows().setSelectionIndex(9);
    EXPECT_TRUE(dropOnPot(parameters(), 3));
    EXPECT_EQ(potLabel(3), "Knob 9");
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 10);
    EXPECT_EQ(undoText(), "Undo Assign Parameter");
    rows().setSelectionIndex(0);
    EXPECT_TRUE(dropOnPot(parameters(0), 8));
    EXPECT_EQ(potLabel(8), "-");
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 0);
    EXPECT_EQ(undoText(), "Undo Clear Pot");
}

TEST_F(DragsTest, SeveralParametersDroppedOnAPotFillItAndTheFollowing)
{
    load();
    rows().setSelectedRows({0, 9, 11, 12}, 11);
    EXPECT_TRUE(dropOnPot(parameters(3), 7));
    EXPECT_EQ(potLabel(7), "Knob 9");
    EXPECT_EQ(potLabel(8), "Knob 11");
    EXPECT_EQ(at(2, 1), "Knob 12");
    EXPECT_EQ(at(2, 2), "Knob 10");
    EXPECT_THAT(rows().selectedRows(), ElementsAre(0, 9, 11, 12));
    EXPECT_EQ(undoText(), "Undo Fill Pots");
    click("undoButton");
    EXPECT_EQ(at(2, 1), "Knob 9");
    EXPECT_EQ(potLabel(7), "Knob 7");
}

TEST_F(DragsTest, APotDroppedOnAnotherExchangesTheTwo)
{
    load();
    click("nextPageButtonPressed");
    rows().setSelectionIndex(5);
    EXPECT_TRUE(dropOnPot(pot(2, 2), 7));
    EXPECT_EQ(potLabel(2), "Knob 15");
    EXPECT_EQ(potLabel(7), "Knob 10");
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 5);
    EXPECT_EQ(undoText(), "Undo Exchange Pots");
    click("undoButton");
    EXPECT_EQ(potLabel(2), "Knob 10");
    EXPECT_EQ(potLabel(7), "Knob 15");
}

TEST_F(DragsTest, APotGoesToAnotherPageByRestingOnItsTile)
{
    load();
    Dragged dragged = pot(1, 3);
    dragged.enter(strip(), tile(2).center());
    rest();
    EXPECT_EQ(shownPage(), "Page 2 of 3");
    Dragged::leave(strip());
    EXPECT_TRUE(dropOnPot(std::move(dragged), 3));
    EXPECT_EQ(potLabel(3), "Knob 3");
    EXPECT_EQ(at(1, 3), "Knob 11");
    EXPECT_EQ(shownPage(), "Page 2 of 3");
    EXPECT_EQ(undoText(), "Undo Exchange Pots");
    click("undoButton");
    EXPECT_EQ(at(1, 3), "Knob 3");
    EXPECT_FALSE(find<QAction>("undo")->isEnabled()) << "one step";
}

TEST_F(DragsTest, ParametersGoToAnotherPageByRestingOnItsTile)
{
    load();
    rows().setSelectionIndex(5);
    Dragged dragged = parameters();
    dragged.enter(strip(), tile(3).center());
    rest();
    Dragged::leave(strip());
    EXPECT_TRUE(dropOnPot(std::move(dragged), 8));
    EXPECT_EQ(at(3, 8), "Knob 5");
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 6);
}

// Onto tiles

TEST_F(DragsTest, DroppedOnATileAPotMovesToItsFirstEmptyPot)
{
    load(18);
    EXPECT_TRUE(dropOnTile(pot(1, 3), 3));
    EXPECT_EQ(at(3, 3), "Knob 3");
    EXPECT_EQ(potLabel(3), "-");
    EXPECT_EQ(shownPage(), "Page 1 of 3");
    EXPECT_EQ(undoText(), "Undo Move Pot");
    EXPECT_FALSE(dropOnTile(pot(1, 4), 2)) << "it is full";
    EXPECT_EQ(at(1, 4), "Knob 4");
    EXPECT_TRUE(dropOnTile(pot(2, 8), 1));
    EXPECT_EQ(potLabel(3), "Knob 16");
    EXPECT_EQ(at(2, 8), "-");
}

TEST_F(DragsTest, DroppedOnATileParametersTakeItsFirstEmptyPots)
{
    load(18);
    rows().setSelectionIndex(5);
    EXPECT_TRUE(dropOnTile(parameters(), 3));
    EXPECT_EQ(at(3, 3), "Knob 5");
    EXPECT_EQ(undoText(), "Undo Assign Parameter");
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 5);
    rows().setSelectedRows({0, 1, 2, 3, 4, 5, 6}, 0);
    EXPECT_TRUE(dropOnTile(parameters(6), 3));
    EXPECT_EQ(at(3, 8), "Knob 5");
    EXPECT_EQ(at(4, 1), "Knob 6");
    EXPECT_EQ(undoText(), "Undo Fill Pots");
    EXPECT_EQ(shownPage(), "Page 1 of 4");
    EXPECT_FALSE(dropOnTile(parameters(6), 1)) << "it is full";
    click("clearAllPagesButtonPressed");
    EXPECT_FALSE(dropOnTile(parameters(6), 3)) << "it is left over";
    EXPECT_EQ(undoText(), "Undo Clear All Pages");
}

TEST_F(DragsTest, WhatIsDraggedIsNotDroppedOnAnotherMapping)
{
    writeDictionary(builtIn("Another"), orderFile(numbered(12)));
    const std::pair<const char*, std::function<void()>> changes[] = {
        {"another plug-in", [this] { select("Another"); }}, {"the same anew", [this] { select("Synth"); }},
        {"a rescan", [this] { click("btnRunCheck"); }},     {"an edit", [this] { pressPot(8); }},
        {"undo", [this] { click("undoButton"); }},
    };
    for (const auto& [name, change] : changes) {
        load(18);
        rows().setSelectionIndex(5);
        pressPot(1);
        Dragged ofPot = pot(2, 8);
        Dragged ofRows = parameters();
        Dragged ofPage = page(1);
        change();
        const auto before = mapping::plistBuild;
        for (Dragged* dragged : {&ofPot, &ofRows, &ofPage}) {
            EXPECT_FALSE(dragged->dropOn(strip(), tile(2).center() + QPoint(20, 0))) << name;
            EXPECT_FALSE(dragged->dropOn(*find<>("frontPanel"), find<>("kvRotaryBtn4")->geometry().center())) << name;
        }
        EXPECT_EQ(mapping::plistBuild, before) << name;
    }
}

TEST_F(DragsTest, ADragThatIsGivenUpShowsThePageItBeganOn)
{
    load();
    click("nextPageButtonPressed");
    for (const auto& giveUp :
         {std::function<void()>([this] { Q_EMIT find<interface::FrontPanel>("frontPanel")->dragEnded(false); }),
          std::function<void()>(
              [this] { Q_EMIT find<platform::qt::RecordListView>("tablePlistOfSelectedPlugin")->dragEnded(false); })}) {
        for (const int number : {1, 3}) {
            pot(2, 1).enter(strip(), tile(number).center());
            rest();
            EXPECT_EQ(shownPage(), "Page " + std::to_string(number) + " of 3");
        }
        giveUp();
        EXPECT_EQ(shownPage(), "Page 2 of 3");
        EXPECT_FALSE(find<QAction>("undo")->isEnabled());
    }
}

// Tiles

TEST_F(DragsTest, ATileDroppedBetweenTwoMovesItsPageThere)
{
    load(32);
    EXPECT_TRUE(page(1).dropOn(strip(), tile(3).center() + QPoint(20, 0)));
    EXPECT_EQ(shownPage(), "Page 3 of 4");
    EXPECT_EQ(potLabel(1), "Knob 1");
    EXPECT_EQ(at(1, 1), "Knob 9");
    EXPECT_EQ(at(2, 1), "Knob 17");
    EXPECT_EQ(at(4, 1), "Knob 25");
    EXPECT_EQ(undoText(), "Undo Move Page");
    click("undoButton");
    EXPECT_EQ(shownPage(), "Page 1 of 4");
    EXPECT_EQ(at(3, 1), "Knob 17");
    EXPECT_TRUE(page(4).dropOn(strip(), tile(1).center() - QPoint(20, 0)));
    EXPECT_EQ(shownPage(), "Page 2 of 4") << "what was shown still is";
    EXPECT_EQ(potLabel(1), "Knob 1");
}

} // namespace test
