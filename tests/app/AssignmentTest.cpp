#include "tests/support/WindowTest.h"

#include "mapping/EditingState.h"
#include "platform/qt/RecordSort.h"

#include <QLineEdit>
#include <QTest>

using testing::ElementsAre;

namespace test {

class AssignmentTest : public WindowTest {
protected:
    void SetUp() override
    {
        writeDictionary(builtIn("Synth"), orderFile(numbered(24)));
        writeDictionary(builtIn("Other"),
                        orderFile({"3 Osc 1 Level", "12 Cutoff Freq", "13 Frequ\u00e9nce", "120 Gain"}));
        launch();
        select("Synth");
    }

    static std::string at(std::size_t position)
    {
        return std::string(mapping::plistBuild.at(position).text("Parameter"));
    }
};

TEST_F(AssignmentTest, PotsOfTheFirstPageWriteItsSlots)
{
    chooseParameter("Knob 20");
    pressPot(1);
    EXPECT_EQ(at(0), "Knob 20");
    EXPECT_EQ(mapping::plistBuild[0].text("ParamNum"), "20");
    pressPot(8);
    EXPECT_EQ(at(7), "Knob 21");
}

TEST_F(AssignmentTest, PotsOfTheThirdPageWriteItsSlots)
{
    click("lastPageButtonPressed");
    chooseParameter("Knob 1");
    pressPot(1);
    EXPECT_EQ(at(16), "Knob 1");
    pressPot(8);
    EXPECT_EQ(at(23), "Knob 2");
    EXPECT_EQ(potLabel(8), "Knob 2");
}

TEST_F(AssignmentTest, TheBlankEntryClearsAPotAndStaysSelected)
{
    ASSERT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 0);
    pressPot(3);
    EXPECT_EQ(mapping::plistBuild[2].text("ParamNum"), "0");
    EXPECT_EQ(mapping::plistBuild[2].text("Parameter"), "-");
    EXPECT_EQ(potLabel(3), "-");
    EXPECT_EQ(toolTip("kvControl3"), "-");
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 0);
    EXPECT_EQ(mapping::plistBuild[2].number("KorvelControlNo"), 2);
}

TEST_F(AssignmentTest, OneClickAPotLaysARunOfParameters)
{
    chooseParameter("Knob 11");
    for (int pot = 1; pot <= 8; ++pot)
        pressPot(pot);
    EXPECT_THAT(potLabels(),
                ElementsAre("Knob 11", "Knob 12", "Knob 13", "Knob 14", "Knob 15", "Knob 16", "Knob 17", "Knob 18"));
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 19);
}

TEST_F(AssignmentTest, AParameterMayStandOnTwoPots)
{
    chooseParameter("Knob 5");
    pressPot(1);
    EXPECT_EQ(at(0), "Knob 5");
    EXPECT_EQ(at(4), "Knob 5");
}

TEST_F(AssignmentTest, TheSelectionStaysAtTheLastRow)
{
    chooseParameter("Knob 24");
    pressPot(1);
    pressPot(2);
    EXPECT_EQ(at(0), "Knob 24");
    EXPECT_EQ(at(1), "Knob 24");
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 24);
}

TEST_F(AssignmentTest, ExchangingTwoSlotsLeavesTheirPagesAndPositions)
{
    controller().moveParameterPositionAndToMovePageMode(3, 11, 1);
    EXPECT_EQ(at(3), "Knob 12");
    EXPECT_EQ(mapping::plistBuild[3].text("ParamNum"), "12");
    EXPECT_EQ(mapping::plistBuild[3].number("KorvelPage"), 1);
    EXPECT_EQ(mapping::plistBuild[3].number("KorvelControlNo"), 3);
    EXPECT_EQ(at(11), "Knob 4");
    EXPECT_EQ(mapping::plistBuild[11].number("KorvelPage"), 2);
    EXPECT_EQ(mapping::plistBuild[11].number("KorvelControlNo"), 11);
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 1) << "an exchange steps the list on too";
}

TEST_F(AssignmentTest, APressWithoutASelectedParameterIsIgnored)
{
    controller().arrayControllerPlistSelected()->setSelectionIndex(-1);
    pressPot(1);
    EXPECT_EQ(at(0), "Knob 1");
}

TEST_F(AssignmentTest, SearchingNarrowsByAnyPartOfNameOrNumber)
{
    select("Other");
    const auto found = [this](const std::string& search) {
        find<QLineEdit>("parameterSearch")->clear();
        typeInto("parameterSearch", search);
        return columnOf("tablePlistOfSelectedPlugin", 1);
    };
    EXPECT_THAT(found("osc"), ElementsAre("-", "Osc 1 Level"));
    EXPECT_THAT(found("LEVEL"), ElementsAre("-", "Osc 1 Level"));
    EXPECT_THAT(found("12"), ElementsAre("-", "Cutoff Freq", "Gain"));
    EXPECT_THAT(found("frequence"), ElementsAre("-", "Frequ\u00e9nce"));
    EXPECT_THAT(found("FREQU\u00c9"), ElementsAre("-", "Frequ\u00e9nce"));
    EXPECT_THAT(found("nothing like it"), ElementsAre("-"));
    EXPECT_THAT(found(""), ElementsAre("-", "Osc 1 Level", "Cutoff Freq", "Frequ\u00e9nce", "Gain"));
}

TEST_F(AssignmentTest, SearchingIgnoresCaseAndAccentsOfEveryKind)
{
    using platform::qt::foldedForSearch;
    const std::pair<const char16_t*, const char16_t*> cases[] = {
        {u"G\u0142\u0119bia", u"glebia"},   {u"\u00d8RE", u"ore"},
        {u"Stra\u00dfe", u"strasse"},       {u"\u00c6ther", u"aether"},
        {u"e\u0301cho", u"echo"},           {u"\uff23utoff", u"cutoff"},
        {u"\u0416\u0401", u"\u0436\u0435"}, {u"\u97f3\u91cf", u"\u97f3\u91cf"},
    };
    for (const auto& [text, folded] : cases)
        EXPECT_EQ(foldedForSearch(QString::fromUtf16(text)), QString::fromUtf16(folded));
}

TEST_F(AssignmentTest, ASelectedRowThatIsStillShownStaysSelected)
{
    select("Other");
    chooseParameter("Gain");
    typeInto("parameterSearch", "1");
    EXPECT_THAT(columnOf("tablePlistOfSelectedPlugin", 1),
                ElementsAre("-", "Osc 1 Level", "Cutoff Freq", "Frequ\u00e9nce", "Gain"));
    typeInto("parameterSearch", "2");
    EXPECT_THAT(columnOf("tablePlistOfSelectedPlugin", 1), ElementsAre("-", "Cutoff Freq", "Gain"));
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 2);
    find<QLineEdit>("parameterSearch")->clear();
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 4);
    typeInto("parameterSearch", "osc");
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 0) << "the blank entry, when the row is hidden";
}

TEST_F(AssignmentTest, AssigningAndSteppingCountInTheRowsShown)
{
    typeInto("parameterSearch", "2");
    chooseParameter("Knob 12");
    pressPot(1);
    pressPot(2);
    pressPot(3);
    EXPECT_THAT(std::vector({at(0), at(1), at(2)}), ElementsAre("Knob 12", "Knob 20", "Knob 21"));
}

TEST_F(AssignmentTest, APotCanBeClearedWhileSearching)
{
    typeInto("parameterSearch", "nothing like it");
    pressPot(1);
    EXPECT_EQ(potLabel(1), "-");
}

TEST_F(AssignmentTest, ALoadEmptiesTheSearchField)
{
    typeInto("parameterSearch", "osc");
    select("Other");
    EXPECT_EQ(find<QLineEdit>("parameterSearch")->text(), QString());
    EXPECT_EQ(columnOf("tablePlistOfSelectedPlugin", 1).size(), 5U);
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 0);
}

} // namespace test
