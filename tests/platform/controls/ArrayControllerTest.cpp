#include "platform/controls/ArrayController.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <set>
#include <string>
#include <vector>

namespace {

using platform::ArrayController;
using platform::Record;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int32_t kNone = ArrayController::kNoSelection;

std::vector<Record> records(const std::vector<std::string>& names)
{
    std::vector<Record> made;
    for (const std::string& name : names)
        made.push_back({{"Parameter", name}});
    return made;
}

/// The rows shown, top to bottom.
std::vector<std::string> rowsOf(const ArrayController& controller)
{
    std::vector<std::string> names;
    for (std::int32_t row = 0; row < controller.arrangedCount(); ++row)
        names.emplace_back(controller.arrangedObject(row)->text("Parameter"));
    return names;
}

/// Rows whose name contains the filter text, in content order.
std::vector<std::size_t> containingTheFilter(const ArrayController& controller)
{
    std::vector<std::size_t> rows;
    for (std::size_t position = 0; position < controller.content().size(); ++position) {
        const std::string_view name = controller.content()[position].text("Parameter");
        if (name.find(controller.filterText.get()) != std::string::npos)
            rows.push_back(position);
    }
    return rows;
}

class ArrayControllerTest : public testing::Test {
protected:
    std::string selected() const { return controller.selectionText("Parameter"); }

    ArrayController controller;
};

TEST_F(ArrayControllerTest, StartsEmptyWithoutASelection)
{
    EXPECT_THAT(rowsOf(controller), IsEmpty());
    EXPECT_EQ(controller.selectionIndex(), kNone);
    EXPECT_EQ(controller.selection(), nullptr);
    EXPECT_EQ(controller.selectionText("Parameter"), "");
    EXPECT_EQ(controller.contentRevision(), 0u);
}

TEST_F(ArrayControllerTest, ShowsTheContentInItsOwnOrderWithoutAnArrangement)
{
    controller.setContent(records({"b", "a", "c"}));
    EXPECT_THAT(rowsOf(controller), ElementsAre("b", "a", "c"));
    EXPECT_EQ(controller.content(), records({"b", "a", "c"}));
}

TEST_F(ArrayControllerTest, NewContentLeavesNothingSelected)
{
    controller.setContent(records({"a", "b"}));
    controller.setSelectionIndex(1);
    controller.setContent(records({"a", "b"}));
    EXPECT_EQ(controller.selectionIndex(), kNone);
    EXPECT_EQ(controller.selection(), nullptr);
}

TEST_F(ArrayControllerTest, SelectsARowOrNone)
{
    controller.setContent(records({"a", "b", "c"}));
    struct Row {
        std::int32_t asked;
        std::int32_t index;
        const char* name;
    };
    for (const Row& row : {Row{0, 0, "a"}, Row{2, 2, "c"}, Row{3, kNone, ""}, Row{1, 1, "b"}, Row{-1, kNone, ""},
                           Row{2147483647, kNone, ""}, Row{-2147483647 - 1, kNone, ""}}) {
        controller.setSelectionIndex(row.asked);
        EXPECT_EQ(controller.selectionIndex(), row.index) << row.asked;
        EXPECT_EQ(selected(), row.name) << row.asked;
    }
}

TEST_F(ArrayControllerTest, SelectsNothingInAnEmptyList)
{
    controller.setSelectionIndex(0);
    EXPECT_EQ(controller.selectionIndex(), kNone);
}

TEST_F(ArrayControllerTest, AnArrangedObjectOutsideTheRowsIsNone)
{
    controller.setContent(records({"a"}));
    EXPECT_EQ(controller.arrangedObject(-1), nullptr);
    EXPECT_EQ(controller.arrangedObject(1), nullptr);
    ASSERT_NE(controller.arrangedObject(0), nullptr);
    EXPECT_EQ(controller.arrangedObject(0)->text("Parameter"), "a");
}

TEST_F(ArrayControllerTest, SelectNextStepsOnAndStaysAtTheLastRow)
{
    controller.setContent(records({"a", "b", "c"}));
    controller.setSelectionIndex(0);
    std::vector<std::string> seen;
    for (int step = 0; step < 4; ++step) {
        controller.selectNext();
        seen.push_back(selected());
    }
    EXPECT_THAT(seen, ElementsAre("b", "c", "c", "c"));
}

TEST_F(ArrayControllerTest, SelectNextWithoutASelectionSelectsNothing)
{
    controller.setContent(records({"a", "b"}));
    controller.selectNext();
    EXPECT_EQ(controller.selectionIndex(), kNone);
}

TEST_F(ArrayControllerTest, SelectNextCountsInRowsShown)
{
    controller.setArrangement(containingTheFilter);
    controller.setContent(records({"-", "Level 1", "Cutoff", "Level 2", "Mix"}));
    controller.filterText.set("Level");
    controller.setSelectionIndex(0);
    EXPECT_EQ(selected(), "Level 1");
    controller.selectNext();
    EXPECT_EQ(selected(), "Level 2");
    EXPECT_EQ(controller.selectionIndex(), 1);
    controller.selectNext();
    EXPECT_EQ(selected(), "Level 2");
}

TEST_F(ArrayControllerTest, AddedObjectsComeLastAndKeepTheSelection)
{
    controller.setContent(records({"a", "b"}));
    controller.setSelectionIndex(1);
    controller.addObjects(records({"c", "d"}));
    EXPECT_THAT(rowsOf(controller), ElementsAre("a", "b", "c", "d"));
    EXPECT_EQ(controller.selectionIndex(), 1);
    EXPECT_EQ(selected(), "b");
}

TEST_F(ArrayControllerTest, AddedObjectsSelectNothingByThemselves)
{
    controller.addObjects(records({"a", "b"}));
    EXPECT_EQ(controller.selectionIndex(), kNone);
}

TEST_F(ArrayControllerTest, AddedObjectsKeepTheSelectedRecordWhereRowsShift)
{
    controller.setArrangement([](const ArrayController& self) { // newest first
        std::vector<std::size_t> rows;
        for (std::size_t position = self.content().size(); position-- > 0;)
            rows.push_back(position);
        return rows;
    });
    controller.setContent(records({"a", "b"}));
    controller.setSelectionIndex(0);
    ASSERT_EQ(selected(), "b");
    controller.addObjects(records({"c"}));
    EXPECT_THAT(rowsOf(controller), ElementsAre("c", "b", "a"));
    EXPECT_EQ(selected(), "b");
    EXPECT_EQ(controller.selectionIndex(), 1);
}

TEST_F(ArrayControllerTest, AFilterKeepsTheSelectedRowWhileItIsShown)
{
    controller.setArrangement(containingTheFilter);
    controller.setContent(records({"-", "Cutoff", "Level", "Mix"}));
    controller.setSelectionIndex(2);
    controller.filterText.set("e");
    EXPECT_THAT(rowsOf(controller), ElementsAre("Level"));
    EXPECT_EQ(controller.selectionIndex(), 0);
    EXPECT_EQ(selected(), "Level");
    controller.filterText.set("");
    EXPECT_EQ(controller.selectionIndex(), 2);
    EXPECT_EQ(selected(), "Level");
}

TEST_F(ArrayControllerTest, AFilterThatHidesTheSelectedRowSelectsNone)
{
    controller.setArrangement(containingTheFilter);
    controller.setContent(records({"-", "Cutoff", "Level 1", "Level 2"}));
    for (const char* filter : {"Level", "nothing has this"}) {
        controller.setSelectionIndex(1);
        controller.filterText.set(filter);
        EXPECT_EQ(controller.selectionIndex(), kNone) << filter;
        controller.filterText.set("");
        EXPECT_EQ(controller.selectionIndex(), kNone) << filter;
        EXPECT_EQ(controller.arrangedCount(), 4);
    }
}

TEST_F(ArrayControllerTest, AFilterSelectsNothingByItself)
{
    controller.setArrangement(containingTheFilter);
    controller.setContent(records({"-", "Cutoff"}));
    controller.filterText.set("Cut");
    EXPECT_EQ(controller.selectionIndex(), kNone);
}

TEST_F(ArrayControllerTest, ANewArrangementKeepsTheSelectedRecord)
{
    controller.setContent(records({"c", "a", "b"}));
    controller.setSelectionIndex(0);
    controller.setArrangement([](const ArrayController&) { return std::vector<std::size_t>{1, 2, 0}; });
    EXPECT_THAT(rowsOf(controller), ElementsAre("a", "b", "c"));
    EXPECT_EQ(controller.selectionIndex(), 2);
    EXPECT_EQ(selected(), "c");
    controller.setArrangement(nullptr);
    EXPECT_THAT(rowsOf(controller), ElementsAre("c", "a", "b"));
    EXPECT_EQ(controller.selectionIndex(), 0);
}

TEST_F(ArrayControllerTest, EveryContentHasARevisionOfItsOwn)
{
    std::set<std::uint64_t> revisions = {controller.contentRevision()};
    const auto isNew = [&] { return revisions.insert(controller.contentRevision()).second; };
    controller.setContent(records({"a"}));
    EXPECT_TRUE(isNew());
    controller.setContent(records({"a"}));
    EXPECT_TRUE(isNew());
    controller.addObjects(records({"b"}));
    EXPECT_TRUE(isNew());
    controller.setContent({});
    EXPECT_TRUE(isNew());
}

TEST_F(ArrayControllerTest, FilteringAndSelectingAreNoNewContent)
{
    controller.setArrangement(containingTheFilter);
    controller.setContent(records({"a", "b"}));
    const auto before = controller.contentRevision();
    controller.filterText.set("a");
    controller.setSelectionIndex(0);
    controller.selectNext();
    controller.rearrange();
    EXPECT_EQ(controller.contentRevision(), before);
}

TEST_F(ArrayControllerTest, TellsOfASelectionOnlyWhenItMoves)
{
    controller.setContent(records({"a", "b"}));
    std::vector<std::int32_t> told;
    const auto connection = controller.selectionChanged.connect([&] { told.push_back(controller.selectionIndex()); });
    controller.setSelectionIndex(0);
    controller.setSelectionIndex(0);
    controller.selectNext();
    controller.selectNext();
    controller.setSelectionIndex(5);
    EXPECT_THAT(told, ElementsAre(0, 1, kNone));
}

TEST_F(ArrayControllerTest, TheSelectionIsAdjustedWhenItTellsOfOtherRows)
{
    controller.setArrangement(containingTheFilter);
    controller.setContent(records({"a", "b", "ab"}));
    controller.setSelectionIndex(2);
    std::vector<std::string> told;
    const auto connection = controller.arrangedChanged.connect(
        [&] { told.push_back(std::to_string(controller.arrangedCount()) + " rows, " + selected()); });
    controller.filterText.set("b");
    controller.filterText.set("a");
    controller.addObjects(records({"aa"}));
    controller.setContent(records({"a"}));
    EXPECT_THAT(told, ElementsAre("2 rows, ab", "2 rows, ab", "3 rows, ab", "1 rows, "));
}

// Several rows

TEST_F(ArrayControllerTest, SeveralRowsAreSelectedRoundOneThatIsActedOn)
{
    controller.setContent(records({"a", "b", "c", "d", "e"}));
    struct Case {
        std::vector<std::int32_t> rows;
        std::int32_t current;
        std::int32_t index;
    };
    controller.setSelectionIndex(3);
    for (const Case& each : {Case{{1, 3, 4}, 1, 1}, Case{{1, 4}, 2, 1}, Case{{0, 4}, 2, 4}, Case{{0, 2}, 4, 2},
                             Case{{2, 3}, kNone, 2}, Case{{}, 1, kNone}}) {
        controller.setSelectedRows(each.rows, each.current);
        EXPECT_EQ(controller.selectedRows(), each.rows);
        EXPECT_EQ(controller.selectionIndex(), each.index);
        EXPECT_EQ(controller.selectedObjects().size(), each.rows.size());
    }
}

TEST_F(ArrayControllerTest, SelectingARowAndSteppingOnLeaveThatAlone)
{
    controller.setContent(records({"a", "b", "c", "d"}));
    controller.setSelectedRows({0, 1, 3}, 1);
    controller.selectNext();
    EXPECT_THAT(controller.selectedRows(), ElementsAre(2));
    controller.setSelectedRows({0, 1, 3}, 3);
    controller.selectNext(); // there is none
    EXPECT_THAT(controller.selectedRows(), ElementsAre(0, 1, 3));
    controller.setSelectionIndex(3);
    EXPECT_THAT(controller.selectedRows(), ElementsAre(3));
    controller.setSelectionIndex(kNone);
    EXPECT_THAT(controller.selectedRows(), IsEmpty());
    controller.setSelectionIndex(0);
    controller.setContent(records({"a"}));
    EXPECT_THAT(controller.selectedRows(), IsEmpty());
}

TEST_F(ArrayControllerTest, SelectedRowsFollowTheirRecordsWhereverTheyAreShown)
{
    controller.setArrangement(containingTheFilter);
    controller.setContent(records({"-", "Level 1", "Cutoff", "Level 2", "Mix"}));
    controller.setSelectedRows({1, 2, 3}, 2);
    controller.filterText.set("Level");
    EXPECT_THAT(controller.selectedRows(), ElementsAre(0, 1));
    EXPECT_EQ(selected(), "Level 1"); // what was acted on is out of sight
    controller.filterText.set("");
    EXPECT_THAT(controller.selectedRows(), ElementsAre(1, 3));
    controller.setSelectedRows({1, 3}, 3);
    controller.setArrangement([](const ArrayController&) { return std::vector<std::size_t>{4, 3, 2, 1, 0}; });
    EXPECT_THAT(controller.selectedRows(), ElementsAre(1, 3));
    EXPECT_EQ(selected(), "Level 2");
    EXPECT_EQ(controller.selectedObjects().back()->text("Parameter"), "Level 1");
    controller.filterText.set("nothing has this");
    controller.setArrangement(containingTheFilter);
    EXPECT_THAT(controller.selectedRows(), IsEmpty());
    EXPECT_EQ(controller.selectionIndex(), kNone);
}

TEST_F(ArrayControllerTest, TellsOfOtherRowsSelectedRoundTheSameOne)
{
    controller.setContent(records({"a", "b", "c"}));
    controller.setSelectionIndex(1);
    int told = 0;
    const auto connection = controller.selectionChanged.connect([&] { ++told; });
    controller.setSelectedRows({1, 2}, 1);
    controller.setSelectedRows({1, 2}, 1);
    EXPECT_EQ(told, 1);
    controller.setSelectionIndex(1);
    EXPECT_EQ(told, 2);
}

} // namespace
