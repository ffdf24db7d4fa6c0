#include "mapping/Comparison.h"
#include "mapping/MappingStore.h"
#include "mapping/ParameterOrder.h"
#include "tests/support/OrderFiles.h"
#include "tests/support/WindowlessTest.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace test {

using mapping::ComparedWith;
using testing::ElementsAre;
using testing::IsEmpty;
using Positions = std::vector<std::int32_t>;

namespace {

Positions differing(const std::vector<platform::Record>& one, std::vector<platform::Record> other)
{
    mapping::Differences differences(std::move(other));
    differences.follow(one);
    return differences.positions();
}

} // namespace

TEST(Comparison, FindsTheSlotsThatWouldBeWrittenDifferently)
{
    struct Case {
        const char* name;
        Texts one, other;
        Positions differing;
    };
    const Case cases[] = {
        {"the same", {"1 A", "-1", "2 B"}, {"1 A", "-1", "2 B"}, {}},
        {"another name", {"1 A", "2 B"}, {"1 A", "2 C"}, {1}},
        {"another number", {"1 A"}, {"3 A"}, {0}},
        {"empty on either side", {"1 A", "-1"}, {"-1", "2 B"}, {0, 1}},
        {"empty in other words", {"7 -", "5"}, {"-1", "-1"}, {}},
        {"an empty page more",
         numbered(8),
         [] {
             Texts t = numbered(8);
             t.resize(16, "-1");
             return t;
         }(),
         {}},
        {"a mapped page more", numbered(8), numbered(10), {8, 9}},
        {"a mapped page fewer", numbered(10), numbered(8), {8, 9}},
        {"moved by one", {"1 A", "2 B", "3 C"}, {"-1", "1 A", "2 B", "3 C"}, {0, 1, 2, 3}},
    };
    for (const Case& each : cases)
        EXPECT_EQ(differing(mapping::mappingOf(each.one), mapping::mappingOf(each.other)), each.differing) << each.name;
}

TEST(Comparison, KeepsUpWithEveryEdit)
{
    auto entries = mapping::mappingOf(numbered(24));
    const auto other = entries;
    mapping::Differences followed(other);
    const auto expectCurrent = [&](const char* edit) {
        followed.follow(entries);
        EXPECT_EQ(followed.positions(), differing(entries, other)) << edit;
    };
    expectCurrent("none");
    EXPECT_THAT(followed.positions(), IsEmpty());
    entries[3].set(mapping::kParameter, "Other");
    expectCurrent("a slot");
    EXPECT_THAT(followed.positions(), ElementsAre(3));
    entries.erase(entries.begin(), entries.begin() + 8);
    expectCurrent("a page fewer");
    entries.insert(entries.end(), 16, mapping::emptyEntry(9, 9));
    expectCurrent("pages more");
    entries = other;
    expectCurrent("taken back");
    EXPECT_THAT(followed.positions(), IsEmpty());
}

TEST(Comparison, GoesRoundTheDifferencesThatCanBeShown)
{
    const Positions positions = {2, 9, 17};
    struct Case {
        std::int32_t from, end;
        std::optional<std::int32_t> after, before;
    };
    const Case cases[] = {
        {-1, 24, 2, 17}, {2, 24, 9, 17}, {5, 24, 9, 2}, {9, 24, 17, 2},
        {17, 24, 2, 9},  {9, 16, 2, 2},  {2, 16, 9, 9}, {0, 2, std::nullopt, std::nullopt},
    };
    for (const Case& each : cases) {
        EXPECT_EQ(mapping::positionAfter(positions, each.from, each.end), each.after) << each.from;
        EXPECT_EQ(mapping::positionBefore(positions, each.from, each.end), each.before) << each.from;
    }
    EXPECT_FALSE(mapping::positionAfter({}, 0, 8));
    EXPECT_FALSE(mapping::positionBefore({}, 0, 8));
}

class Comparing : public WindowlessTest {
protected:
    Texts focus(std::int32_t pot)
    {
        controller_.potChoice.set({pot, {pot}, false});
        return pots();
    }
    const mapping::Comparison& found() const { return controller_.comparison(); }
};

TEST_F(Comparing, WithTheSavedFileIsWhatTheUnsavedCountSays)
{
    const Path file = edit(numbered(10));
    controller_.compareWithSaved();
    EXPECT_EQ(found().side, ComparedWith::saved);
    EXPECT_THAT(found().positions, IsEmpty());
    selectParameter(5);
    controller_.clickControl(0);
    EXPECT_THAT(found().positions, ElementsAre(0));
    EXPECT_EQ(controller_.changedPots(), 1u);
    controller_.undo();
    EXPECT_THAT(found().positions, IsEmpty());
    controller_.redo();
    controller_.newPageButtonPressed();
    EXPECT_EQ(found().morePages, -1);
    controller_.exportToPlist();
    EXPECT_EQ(found().side, ComparedWith::saved);
    EXPECT_THAT(found().positions, IsEmpty());
    EXPECT_EQ(found().morePages, 0);
    controller_.changePlugInModeAndReadPlist(1, 1);
    EXPECT_EQ(found().otherMode, mapping::kModeInsertEffect);
}

TEST_F(Comparing, ReadsTheFileWhenChosenAndAfterASaveOrARecall)
{
    const Path file = edit(numbered(8));
    write(file.native() + ".prev", orderBytes({"9 Former"}));
    write(file.native() + ".original", orderBytes({"1 Knob 1", "9 First"}));
    controller_.compareWithPrevious();
    EXPECT_EQ(found().positions.size(), 8u);
    write(file.native() + ".prev", orderBytes(numbered(8)));
    selectParameter(2);
    controller_.clickControl(0); // does not read it
    EXPECT_EQ(found().positions.size(), 8u);
    controller_.exportToPlist(); // puts the file as it was in its place
    EXPECT_THAT(found().positions, ElementsAre(0));
    controller_.recallOriginalMapping("prev");
    EXPECT_EQ(found().side, ComparedWith::previous);
    EXPECT_THAT(found().positions, IsEmpty());
}

TEST_F(Comparing, ChangesNoFile)
{
    const Path file = edit(numbered(8));
    const Path original = file.native() + ".original";
    write(original, orderBytes({"9 First"})); // without a catalogue
    const std::string before = read(file);
    controller_.compareWithOriginal();
    controller_.nextDifference();
    focus(0);
    controller_.takePot();
    controller_.compareWithNothing();
    EXPECT_EQ(read(original), orderBytes({"9 First"}));
    EXPECT_EQ(read(file), before);
    EXPECT_FALSE(std::filesystem::exists(file.native() + ".prev"));
}

TEST_F(Comparing, AnotherPluginEndsIt)
{
    writeDictionary(builtIn("Other"), orderFile({"1 A"}));
    edit(numbered(8));
    controller_.compareWithSaved();
    select("EQ One"); // the same one again keeps it
    EXPECT_EQ(found().side, ComparedWith::saved);
    select("Other");
    EXPECT_EQ(found().side, ComparedWith::nothing);
    EXPECT_THAT(found().positions, IsEmpty());
}

TEST_F(Comparing, AFileThatCannotBeReadIsNamedAndNothingCompared)
{
    const Path file = edit(numbered(8));
    write(file.native() + ".original", "no property list");
    controller_.compareWithSaved();
    controller_.compareWithOriginal();
    EXPECT_EQ(found().side, ComparedWith::nothing);
    EXPECT_EQ(controller_.unreadableSide(), ComparedWith::original);
    EXPECT_EQ(read(file.native() + ".original"), "no property list");
    controller_.compareWithDownloaded(); // there is none
    EXPECT_EQ(controller_.unreadableSide(), ComparedWith::downloaded);
    controller_.compareWithNothing();
    EXPECT_EQ(controller_.unreadableSide(), ComparedWith::nothing);
    EXPECT_TRUE(alerts_.empty());
}

TEST_F(Comparing, ASideThatASaveMakesReadableIsComparedWith)
{
    const Path file = edit(numbered(8));
    write(file.native() + ".prev", "no property list");
    controller_.compareWithPrevious();
    ASSERT_EQ(controller_.unreadableSide(), ComparedWith::previous);
    controller_.clearPage();
    controller_.exportToPlist();
    EXPECT_EQ(controller_.unreadableSide(), ComparedWith::nothing);
    EXPECT_EQ(found().side, ComparedWith::previous);
    EXPECT_EQ(found().positions.size(), 8U);
}

TEST_F(Comparing, TakesAPotAndAPageAsOneStepEach)
{
    const Path file = edit(numbered(20));
    Texts other = numbered(12, "Dial");
    other[1] = "-1";
    write(file.native() + ".original", orderBytes(other));
    controller_.compareWithOriginal();
    selectParameter(4);
    focus(1);
    controller_.takePot();
    EXPECT_EQ(order()[1], "-1");
    EXPECT_EQ(order()[2], "3 Knob 3");
    EXPECT_EQ(selectedParameter(), 4);
    EXPECT_EQ(controller_.history().undoName(), "Take Pot");
    controller_.showPage(2);
    controller_.takePage();
    EXPECT_EQ(controller_.history().undoName(), "Take Page");
    const Texts taken = order();
    EXPECT_EQ(Texts(taken.begin() + 8, taken.begin() + 13),
              (Texts{"9 Dial 9", "10 Dial 10", "11 Dial 11", "12 Dial 12", "-1"}));
    EXPECT_EQ(order()[16], "17 Knob 17");
    controller_.showPage(3);
    controller_.takePage(); // the other side has no such page
    EXPECT_EQ(pots(), Texts(8, "-"));
    EXPECT_EQ(readOuts()[1], "3 Pages");
    for (int step = 0; step < 3; ++step)
        controller_.undo();
    EXPECT_EQ(order()[1], "2 Knob 2");
    EXPECT_EQ(order()[8], "9 Knob 9");
    EXPECT_EQ(order()[16], "17 Knob 17");
    EXPECT_FALSE(controller_.history().canUndo());
}

TEST_F(Comparing, NothingIsTakenWithoutAComparison)
{
    edit(numbered(8));
    focus(0);
    controller_.takePot();
    controller_.takePage();
    controller_.nextDifference();
    EXPECT_EQ(order(), numbered(8));
    EXPECT_FALSE(controller_.history().canUndo());
}

TEST_F(Comparing, GoesFromPotToPotAndRoundTheEnds)
{
    const Path file = edit(numbered(24));
    Texts other = numbered(24);
    for (const std::size_t position : {2u, 3u, 20u})
        other[position] = "-1";
    write(file.native() + ".original", orderBytes(other));
    controller_.compareWithOriginal();
    Positions gone;
    const auto noted =
        controller_.potGoneTo.connect([&](std::int32_t pot) { gone.push_back((mapping::curPage - 1) * 8 + pot); });
    for (int i = 0; i < 4; ++i)
        controller_.nextDifference();
    EXPECT_THAT(gone, ElementsAre(2, 3, 20, 2));
    gone.clear();
    for (int i = 0; i < 4; ++i)
        controller_.previousDifference();
    EXPECT_THAT(gone, ElementsAre(20, 3, 2, 20));
    gone.clear();
    controller_.potChoice.set({}); // without a pot, from the shown page on
    controller_.showPage(2);
    controller_.nextDifference();
    controller_.potChoice.set({});
    controller_.showPage(2);
    controller_.previousDifference();
    EXPECT_THAT(gone, ElementsAre(20, 3));
}

TEST_F(Comparing, WhatIsLeftBehindCountsAndCannotBeGoneTo)
{
    edit(numbered(16));
    controller_.clearAllPages();
    controller_.compareWithSaved();
    EXPECT_EQ(found().positions.size(), 8u); // those of the first page; the second is still written
    EXPECT_EQ(found().morePages, 0);
    controller_.undo();
    controller_.startFromScratch();
    EXPECT_EQ(found().positions.size(), 16u);
    EXPECT_EQ(found().morePages, 1);
    for (int i = 0; i < 9; ++i)
        controller_.nextDifference();
    EXPECT_EQ(readOuts(), (Texts{"Page 1 of 1", "1 Page"}));
    EXPECT_EQ(controller_.potChoice.get().focusedPot, 0);
}

TEST_F(Comparing, FollowsADownloadedMapping)
{
    const Path file = edit(numbered(8));
    EXPECT_FALSE(controller_.canCompareWith(ComparedWith::downloaded));
    write(file.native() + ".downloaded", orderBytes({"1 A"}));
    EXPECT_TRUE(controller_.canCompareWith(ComparedWith::downloaded));
    controller_.compareWithDownloaded();
    EXPECT_EQ(found().positions.size(), 8u);
    write(file.native() + ".downloaded", orderBytes({"1 B"}));
    controller_.downloadDidFinish();
    EXPECT_EQ(found().side, ComparedWith::downloaded);
    EXPECT_THAT(found().positions, IsEmpty());
}

} // namespace test
