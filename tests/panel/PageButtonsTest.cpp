// The page buttons: stepping, adding, deleting, clearing and exchanging pages.

#include "tests/support/WindowlessTest.h"

namespace {

using test::numbered;
using test::ShownAlert;
using test::Texts;
using testing::ElementsAre;
using testing::IsEmpty;

class PageButtons : public test::WindowlessTest {
protected:
    void show(std::int32_t page) { controller_.populateKnobLabels(page); }

    /// The elements of pages, one after the other, of a mapping of `count` numbered ones.
    static Texts pagesOf(int count, const std::vector<int>& pages)
    {
        const Texts all = mapping::orderOf(mapping::mappingOf(numbered(count)));
        Texts texts;
        for (const int page : pages)
            texts.insert(texts.end(), all.begin() + (page - 1) * 8, all.begin() + page * 8);
        return texts;
    }

    static ShownAlert noSuchPage(int page)
    {
        return {"Sorry not possible", "Page " + std::to_string(page) + " does not exist, cannot move page!"};
    }
};

TEST_F(PageButtons, StepBetweenTheFirstPageAndTheLast)
{
    edit(numbered(24));
    using Action = void (ViewController::*)(ViewController::Sender);
    struct Row {
        Action action;
        std::int32_t from;
        std::int32_t to;
    };
    const Row rows[] = {
        {&ViewController::nextPageButtonPressed, 1, 2},  {&ViewController::nextPageButtonPressed, 3, 3},
        {&ViewController::prevPageButtonPressed, 3, 2},  {&ViewController::prevPageButtonPressed, 1, 1},
        {&ViewController::firstPageButtonPressed, 3, 1}, {&ViewController::firstPageButtonPressed, 1, 1},
        {&ViewController::lastPageButtonPressed, 1, 3},  {&ViewController::lastPageButtonPressed, 3, 3},
    };
    for (const Row& row : rows) {
        show(row.from);
        (controller_.*row.action)(nullptr);
        EXPECT_EQ(mapping::curPage, row.to);
        EXPECT_THAT(readOuts(), ElementsAre("Page " + std::to_string(row.to) + " of 3", "3 Pages"));
        EXPECT_EQ(pots().front(), "Knob " + std::to_string(row.to * 8 - 7));
    }
}

TEST_F(PageButtons, OnAOnePageMappingNextLastAndPreviousKeepPageOne)
{
    edit(numbered(8));
    controller_.nextPageButtonPressed();
    EXPECT_EQ(mapping::curPage, 1);
    controller_.lastPageButtonPressed();
    EXPECT_EQ(mapping::curPage, 1);
    controller_.prevPageButtonPressed();
    EXPECT_EQ(mapping::curPage, 1);
}

TEST_F(PageButtons, AddingAPageToTwoAppendsEmptyEntriesAndShowsPageThree)
{
    edit(numbered(16));
    controller_.newPageButtonPressed();
    ASSERT_EQ(mapping::plistBuild.size(), 24u);
    for (std::int32_t position = 16; position < 24; ++position)
        EXPECT_EQ(mapping::plistBuild[static_cast<std::size_t>(position)], mapping::emptyEntry(3, position));
    EXPECT_THAT(readOuts(), ElementsAre("Page 3 of 3", "3 Pages"));
    EXPECT_EQ(pots(), Texts(8, "-"));
}

TEST_F(PageButtons, DeletingPageTwoOfThreeShowsPageOneAndBringsPageThreeForward)
{
    edit(numbered(24));
    const auto third = mapping::plistBuild[16];
    show(2);
    controller_.deletePageButtonPressed();
    EXPECT_EQ(order(), pagesOf(24, {1, 3}));
    EXPECT_EQ(mapping::plistBuild[8], third); // not renumbered
    EXPECT_THAT(readOuts(), ElementsAre("Page 1 of 2", "2 Pages"));
    EXPECT_EQ(pots().front(), "Knob 1");
}

TEST_F(PageButtons, TheFirstPageIsNeverDeleted)
{
    edit(numbered(24));
    controller_.deletePageButtonPressed();
    EXPECT_THAT(alerts_, ElementsAre(ShownAlert{"Cannot delete first page", "Sorry!"}));
    EXPECT_EQ(order(), pagesOf(24, {1, 2, 3}));
    EXPECT_THAT(readOuts(), ElementsAre("Page 1 of 3", "3 Pages"));
}

TEST_F(PageButtons, ClearingThreePagesLeavesTwentyFourEntriesAndOneEmptyPage)
{
    edit(numbered(24));
    show(3);
    controller_.clearAllPagesButtonPressed();
    Texts expected(8, "-1");
    const Texts rest = pagesOf(24, {2, 3});
    expected.insert(expected.end(), rest.begin(), rest.end());
    EXPECT_EQ(order(), expected);
    EXPECT_THAT(readOuts(), ElementsAre("Page 1 of 1", "1 Page"));
    EXPECT_EQ(pots(), Texts(8, "-"));
}

TEST_F(PageButtons, APageAddedAfterAClearShowsTheFormerPageTwo)
{
    edit(numbered(24));
    controller_.clearAllPagesButtonPressed();
    controller_.newPageButtonPressed();
    EXPECT_EQ(mapping::plistBuild.size(), 32u);
    EXPECT_THAT(readOuts(), ElementsAre("Page 2 of 2", "2 Pages"));
    EXPECT_THAT(pots(),
                ElementsAre("Knob 9", "Knob 10", "Knob 11", "Knob 12", "Knob 13", "Knob 14", "Knob 15", "Knob 16"));
}

TEST_F(PageButtons, StartingFromScratchLeavesOneEmptyPageAndNothingBehindIt)
{
    const test::Path file = edit(numbered(24));
    controller_.clearAllPagesButtonPressed();
    controller_.newPageButtonPressed();
    controller_.startFromScratch();
    EXPECT_EQ(order(), Texts(8, "-1"));
    EXPECT_THAT(readOuts(), ElementsAre("Page 1 of 1", "1 Page"));
    EXPECT_EQ(pots(), Texts(8, "-"));
    controller_.kvExportToPlist();
    EXPECT_EQ(test::textsAt(file, test::kOrder), Texts(8, "-1"));
}

TEST_F(PageButtons, ASaveAfterAClearStillWritesTheLaterEntries)
{
    const test::Path file = edit(numbered(24));
    controller_.clearAllPagesButtonPressed();
    controller_.newPageButtonPressed();
    controller_.kvExportToPlist();
    const Texts saved = test::textsAt(file, test::kOrder);
    ASSERT_EQ(saved.size(), 32u);
    EXPECT_EQ(saved[31], "-1");
    EXPECT_EQ(saved[7], "-1");
    EXPECT_EQ(saved[8], "9 Knob 9");
    EXPECT_EQ(saved[23], "24 Knob 24");
}

TEST_F(PageButtons, MovingPageThreeToPageOneExchangesTheTwo)
{
    edit(numbered(24));
    show(3);
    controller_.kvMovePage_First();
    EXPECT_EQ(order(), pagesOf(24, {3, 2, 1}));
    EXPECT_THAT(readOuts(), ElementsAre("Page 1 of 3", "3 Pages"));
    EXPECT_EQ(pots().front(), "Knob 17");
    EXPECT_THAT(alerts_, IsEmpty());
}

TEST_F(PageButtons, MovesExchangeAndShowThePageMovedTo)
{
    using Action = void (ViewController::*)(ViewController::Sender);
    struct Row {
        Action action;
        std::int32_t from;
        std::int32_t to;
        std::vector<int> pages;
    };
    const Row rows[] = {
        {&ViewController::kvMovePage_Next, 1, 2, {2, 1, 3, 4}},
        {&ViewController::kvMovePage_Prev, 4, 3, {1, 2, 4, 3}},
        {&ViewController::kvMovePage_Last, 2, 4, {1, 4, 3, 2}},
        {&ViewController::kvMovePage_First, 2, 1, {2, 1, 3, 4}},
        {&ViewController::kvMovePage_First, 1, 1, {1, 2, 3, 4}},
        {&ViewController::kvMovePage_Last, 4, 4, {1, 2, 3, 4}},
    };
    for (const Row& row : rows) {
        edit(numbered(32));
        show(row.from);
        (controller_.*row.action)(nullptr);
        EXPECT_EQ(order(), pagesOf(32, row.pages));
        EXPECT_EQ(mapping::curPage, row.to);
    }
    EXPECT_THAT(alerts_, IsEmpty());
}

TEST_F(PageButtons, MovingAPageLeavesEverySlotsOwnPageAndPosition)
{
    edit(numbered(16));
    controller_.kvMovePage_Next();
    for (std::int32_t position = 0; position < 16; ++position) {
        const auto& entry = mapping::plistBuild[static_cast<std::size_t>(position)];
        EXPECT_EQ(entry.number("KorvelPage"), position / 8 + 1);
        EXPECT_EQ(entry.number("KorvelControlNo"), position);
    }
}

TEST_F(PageButtons, MovingBeyondEitherEndNamesThePageThatDoesNotExist)
{
    edit(numbered(24));
    controller_.kvMovePage_Prev();
    show(3);
    controller_.kvMovePage_Next();
    EXPECT_THAT(alerts_, ElementsAre(noSuchPage(0), noSuchPage(4)));
    EXPECT_EQ(order(), pagesOf(24, {1, 2, 3}));
    EXPECT_EQ(mapping::curPage, 3);
}

TEST_F(PageButtons, MovingTheFirstPageFirstDoesNothing)
{
    edit(numbered(16));
    selectParameter(3);
    controller_.kvMovePage_First();
    EXPECT_THAT(alerts_, IsEmpty());
    EXPECT_EQ(order(), pagesOf(16, {1, 2}));
    EXPECT_EQ(selectedParameter(), 3);
}

TEST_F(PageButtons, AMoveStepsTheListOnOncePerParameterMoved)
{
    edit({"1 A", "-1", "3 C", "-1", "-1", "-1", "-1", "-1", "9 I", "10 J", "11 K", "12 L"});
    selectParameter(1);
    controller_.kvMovePage_Next(); // two parameters leave page 1; what comes back in exchange does not count
    EXPECT_EQ(selectedParameter(), 3);
}

} // namespace
