#include "tests/support/WindowTest.h"

#include "chart/ChartState.h"
#include "mapping/EditingState.h"

using mapping::curPage;
using mapping::plistBuild;
using mapping::totalPages;
using testing::ElementsAre;

namespace test {

class PagesWindowTest : public WindowTest {
protected:
    void load(int elements)
    {
        writeDictionary(builtIn("Synth"), orderFile(numbered(elements)));
        launch();
        select("Synth");
    }

    void show(int page)
    {
        click("firstPageButtonPressed");
        while (curPage < page)
            click("nextPageButtonPressed");
    }

    std::string readOut() const { return text("lab_PageCurrentlyDisplayed"); }

    static std::vector<std::string> names(std::size_t first, std::size_t last)
    {
        std::vector<std::string> found;
        for (std::size_t position = first; position <= last; ++position)
            found.emplace_back(plistBuild.at(position).text("Parameter"));
        return found;
    }

    static std::vector<std::string> knobs(int first, int last)
    {
        std::vector<std::string> expected;
        for (int n = first; n <= last; ++n)
            expected.push_back("Knob " + std::to_string(n));
        return expected;
    }

    static const std::vector<std::string> kEmptyPage;
};

const std::vector<std::string> PagesWindowTest::kEmptyPage(8, "-");

TEST_F(PagesWindowTest, StepsThroughThePages)
{
    load(24);
    EXPECT_EQ(readOut(), "Page 1 of 3");
    click("nextPageButtonPressed");
    EXPECT_EQ(readOut(), "Page 2 of 3");
    EXPECT_EQ(text("labTotalPagesIndicator"), "3 Pages");
    EXPECT_EQ(potLabels(), knobs(9, 16));
    EXPECT_EQ(toolTip("kvControl1"), "Knob 9");
    click("lastPageButtonPressed");
    EXPECT_EQ(readOut(), "Page 3 of 3");
    click("nextPageButtonPressed");
    EXPECT_EQ(readOut(), "Page 3 of 3");
    click("prevPageButtonPressed");
    EXPECT_EQ(readOut(), "Page 2 of 3");
    click("firstPageButtonPressed");
    EXPECT_EQ(readOut(), "Page 1 of 3");
    click("prevPageButtonPressed");
    EXPECT_EQ(readOut(), "Page 1 of 3");
}

TEST_F(PagesWindowTest, ASinglePageStays)
{
    load(3);
    for (const char* button : {"nextPageButtonPressed", "lastPageButtonPressed", "prevPageButtonPressed"}) {
        click(button);
        EXPECT_EQ(readOut(), "Page 1 of 1") << button;
    }
    EXPECT_EQ(text("labTotalPagesIndicator"), "1 Page");
    EXPECT_EQ(potLabel(4), "-");
    EXPECT_EQ(toolTip("kvControl4"), "-");
}

TEST_F(PagesWindowTest, ANewPageIsAppendedAndShown)
{
    load(16);
    click("newPageButtonPressed");
    EXPECT_EQ(readOut(), "Page 3 of 3");
    EXPECT_EQ(potLabels(), kEmptyPage);
    ASSERT_EQ(plistBuild.size(), 24U);
    for (std::size_t position = 16; position < 24; ++position) {
        EXPECT_EQ(plistBuild[position].text("ParamNum"), "0");
        EXPECT_EQ(plistBuild[position].number("KorvelPage"), 3);
        EXPECT_EQ(plistBuild[position].number("KorvelControlNo"), static_cast<int>(position));
    }
}

TEST_F(PagesWindowTest, DeletingAPageShowsTheOneBefore)
{
    load(24);
    show(2);
    click("deletePageButtonPressed");
    EXPECT_EQ(readOut(), "Page 1 of 2");
    EXPECT_EQ(names(8, 15), knobs(17, 24));
    EXPECT_EQ(plistBuild[8].number("KorvelPage"), 3) << "not renumbered";
    EXPECT_EQ(plistBuild[8].number("KorvelControlNo"), 16);
}

TEST_F(PagesWindowTest, TheFirstPageCannotBeDeleted)
{
    load(24);
    const auto alerts = alertsOf([this] { click("deletePageButtonPressed"); });
    EXPECT_THAT(alerts, ElementsAre(SeenAlert{"Cannot delete first page", "Sorry!", {"OK"}}));
    EXPECT_EQ(readOut(), "Page 1 of 3");
    EXPECT_EQ(plistBuild.size(), 24U);
}

TEST_F(PagesWindowTest, ClearAllLeavesTheLaterEntriesBehind)
{
    load(24);
    show(3);
    const auto alerts = alertsOf([this] { click("clearAllPagesButtonPressed"); });
    EXPECT_THAT(alerts, ElementsAre());
    EXPECT_EQ(readOut(), "Page 1 of 1");
    EXPECT_EQ(plistBuild.size(), 24U);
    EXPECT_EQ(names(0, 7), kEmptyPage);
    EXPECT_EQ(plistBuild[7].number("KorvelControlNo"), 7);

    click("newPageButtonPressed");
    EXPECT_EQ(readOut(), "Page 2 of 2");
    EXPECT_EQ(potLabels(), knobs(9, 16));
    EXPECT_EQ(plistBuild.size(), 32U);

    alertsOf([this] { click("kvExportToPlist"); });
    const Texts saved = textsAt(builtIn("Synth"), kOrder);
    ASSERT_EQ(saved.size(), 32U);
    EXPECT_EQ(saved[0], "-1");
    EXPECT_EQ(saved[8], "9 Knob 9");
    EXPECT_EQ(saved[23], "24 Knob 24");
    EXPECT_EQ(saved[31], "-1");
}

TEST_F(PagesWindowTest, MovingToTheFirstPageExchangesTheTwo)
{
    load(24);
    show(3);
    click("kvMovePage_First");
    EXPECT_EQ(readOut(), "Page 1 of 3");
    EXPECT_EQ(names(0, 7), knobs(17, 24));
    EXPECT_EQ(names(8, 15), knobs(9, 16));
    EXPECT_EQ(names(16, 23), knobs(1, 8));
    EXPECT_EQ(potLabels(), knobs(17, 24));
    EXPECT_EQ(plistBuild[0].number("KorvelPage"), 1);
}

TEST_F(PagesWindowTest, MovesGoToLastPreviousAndNext)
{
    load(32);
    click("kvMovePage_Last");
    EXPECT_EQ(readOut(), "Page 4 of 4");
    EXPECT_EQ(names(24, 31), knobs(1, 8));
    EXPECT_EQ(names(0, 7), knobs(25, 32));
    click("kvMovePage_Prev");
    EXPECT_EQ(readOut(), "Page 3 of 4");
    EXPECT_EQ(names(16, 23), knobs(1, 8));
    EXPECT_EQ(names(24, 31), knobs(17, 24));
    click("kvMovePage_Next");
    EXPECT_EQ(readOut(), "Page 4 of 4");
    EXPECT_EQ(names(24, 31), knobs(1, 8));
}

TEST_F(PagesWindowTest, AMoveStepsTheListOnForEveryParameterMoved)
{
    load(20); // page 3 holds four parameters and four empty slots
    show(3);
    click("kvMovePage_First");
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 4);
}

TEST_F(PagesWindowTest, MovingBeyondThePagesIsRefusedWithThePageAsked)
{
    load(16);
    auto alerts = alertsOf([this] { click("kvMovePage_Prev"); });
    EXPECT_THAT(alerts,
                ElementsAre(SeenAlert{"Sorry not possible", "Page 0 does not exist, cannot move page!", {"OK"}}));
    show(2);
    alerts = alertsOf([this] { click("kvMovePage_Next"); });
    EXPECT_THAT(alerts,
                ElementsAre(SeenAlert{"Sorry not possible", "Page 3 does not exist, cannot move page!", {"OK"}}));
    EXPECT_EQ(readOut(), "Page 2 of 2");
    EXPECT_EQ(names(0, 15), knobs(1, 16));
}

TEST_F(PagesWindowTest, MovingAPageToItselfDoesNothing)
{
    load(16);
    const auto alerts = alertsOf([this] {
        click("kvMovePage_First");
        show(2);
        click("kvMovePage_Last");
    });
    EXPECT_THAT(alerts, ElementsAre());
    EXPECT_EQ(names(0, 15), knobs(1, 16));
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 0);
}

} // namespace test
