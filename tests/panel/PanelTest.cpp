// What the panel shows of the mapping.

#include "tests/support/WindowlessTest.h"

#include <filesystem>

namespace {

using test::numbered;
using test::Texts;
using testing::ElementsAre;

class Panel : public test::WindowlessTest {
protected:
    int chartRows() const
    {
        int rows = 0;
        for (std::size_t at = 0; (at = chart::bHTML.find(" Encoders</th>", at)) != std::string::npos; ++at)
            ++rows;
        return rows;
    }
};

TEST_F(Panel, UntilAPluginIsLoadedNothingIsReadOrWritten)
{
    test::write(builtIn("EQ One"), "untouched");
    controller_.btnRunCheck();
    const auto files = [this] {
        Texts paths;
        for (const auto& file : std::filesystem::recursive_directory_iterator(home_.path()))
            paths.push_back(file.path().native());
        for (const auto& file : std::filesystem::directory_iterator("."))
            paths.push_back(file.path().native());
        return paths;
    };
    const Texts before = files();
    using Action = void (ViewController::*)(ViewController::Sender);
    for (const Action action :
         {&ViewController::kvExportToPlist, &ViewController::kvRecallOriginalMapping,
          &ViewController::kvRecallPreviousMapping, &ViewController::kvCreateChart,
          &ViewController::newPageButtonPressed, &ViewController::deletePageButtonPressed,
          &ViewController::clearAllPagesButtonPressed, &ViewController::nextPageButtonPressed,
          &ViewController::prevPageButtonPressed, &ViewController::firstPageButtonPressed,
          &ViewController::lastPageButtonPressed, &ViewController::kvMovePage_First, &ViewController::kvMovePage_Last,
          &ViewController::kvMovePage_Prev, &ViewController::kvMovePage_Next})
        (controller_.*action)(nullptr);
    controller_.kvRotBtn1_Pressed();
    controller_.kvRotBtn8_Pressed();
    controller_.kvPluginMode_Changed(controller_.kvPluginMode());
    EXPECT_THAT(alerts_, testing::IsEmpty());
    EXPECT_THAT(opened_, testing::IsEmpty());
    EXPECT_EQ(files(), before);
    EXPECT_EQ(test::read(builtIn("EQ One")), "untouched");
    EXPECT_THAT(mapping::plistBuild, testing::IsEmpty());
    EXPECT_EQ(mapping::totalPages, 1);
    EXPECT_EQ(mapping::curPage, 1);
    EXPECT_EQ(chart::bHTML, "");
    EXPECT_EQ(controller_.labKOScreen_Title()->stringValue.get(), "Please Select a plugin");
}

TEST_F(Panel, OfAThreePageMappingOnPageTwoShowsPageTwoOfThree)
{
    edit(numbered(17));
    controller_.populateKnobLabels(2);
    EXPECT_THAT(readOuts(), ElementsAre("Page 2 of 3", "3 Pages"));
    EXPECT_EQ(mapping::curPage, 2);
}

TEST_F(Panel, ShowsTheEightEntriesOfItsPage)
{
    edit(numbered(17));
    controller_.populateKnobLabels(2);
    EXPECT_THAT(pots(),
                ElementsAre("Knob 9", "Knob 10", "Knob 11", "Knob 12", "Knob 13", "Knob 14", "Knob 15", "Knob 16"));
    controller_.populateKnobLabels(3);
    EXPECT_THAT(pots(), ElementsAre("Knob 17", "-", "-", "-", "-", "-", "-", "-"));
}

TEST_F(Panel, AToolTipHoldsTheSameTextAsItsLabel)
{
    edit({"1 Osc <b>1</b> & Co", "-1"});
    EXPECT_EQ(controller_.kvControl1()->stringValue.get(), "Osc <b>1</b> & Co");
    EXPECT_EQ(controller_.kvControl1()->toolTip.get(), "Osc <b>1</b> & Co");
    EXPECT_EQ(controller_.kvControl2()->stringValue.get(), "-");
    EXPECT_EQ(controller_.kvControl2()->toolTip.get(), "-");
}

TEST_F(Panel, LabelWriterCountsFromNoughtChartRowsFromOne)
{
    edit(numbered(16));
    controller_.writeKnobLabelAndRowEndAndLabelPre(8, 15, "kvControl");
    EXPECT_THAT(pots(),
                ElementsAre("Knob 9", "Knob 10", "Knob 11", "Knob 12", "Knob 13", "Knob 14", "Knob 15", "Knob 16"));
    chart::bHTML.clear();
    controller_.writebHTMLDataAndRowEndAndLabelPre(8, 9, "title");
    EXPECT_EQ(chart::bHTML, "<tr><th>title</th><td>Knob 8</td><td>Knob 9</td></tr>");
}

TEST_F(Panel, TheHelpLineShowsWhatItIsGiven)
{
    controller_.updateHelperDisplay("Reading Parameters... Please Wait...");
    EXPECT_EQ(controller_.labelHelperDisplay()->stringValue.get(), "Reading Parameters... Please Wait...");
}

TEST_F(Panel, NothingWritesThePageLimitWarning)
{
    controller_.pageLimitWarning()->stringValue.set("as laid out");
    edit(numbered(17));
    controller_.addControlsPage();
    controller_.clearAllPages();
    EXPECT_EQ(controller_.pageLimitWarning()->stringValue.get(), "as laid out");
}

} // namespace
