#include "tests/support/WindowTest.h"

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

    std::string selectedParameter() { return controller().arrayControllerPlistSelected()->selectionText("Parameter"); }
};

TEST_F(AssignmentTest, OneClickAPotLaysARunOfParameters)
{
    chooseParameter("Knob 11");
    for (int pot = 1; pot <= 8; ++pot)
        pressPot(pot);
    EXPECT_THAT(potLabels(),
                ElementsAre("Knob 11", "Knob 12", "Knob 13", "Knob 14", "Knob 15", "Knob 16", "Knob 17", "Knob 18"));
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), 19);
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
}

TEST_F(AssignmentTest, SearchingAimsAPressAtTheFirstParameterFound)
{
    select("Other");
    typeInto("parameterSearch", "f");
    EXPECT_EQ(selectedParameter(), "Cutoff Freq") << "from the blank entry, which a load selects";
    typeInto("parameterSearch", "requ");
    EXPECT_EQ(selectedParameter(), "Frequ\u00e9nce") << "from a parameter that is hidden now";
    find<QLineEdit>("parameterSearch")->clear();
    EXPECT_EQ(selectedParameter(), "Frequ\u00e9nce") << "still, when the field is emptied";
    typeInto("parameterSearch", "osc");
    QTest::keyClick(find("parameterSearch"), Qt::Key_Return);
    EXPECT_EQ(selectedParameter(), "Osc 1 Level");
    pressPot(2);
    EXPECT_EQ(potLabel(2), "Osc 1 Level");
}

TEST_F(AssignmentTest, WhereNothingIsFoundAPressIsIgnored)
{
    typeInto("parameterSearch", "24x");
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), -1);
    pressPot(1);
    EXPECT_EQ(potLabel(1), "Knob 1");
    EXPECT_FALSE(controller().history().canUndo());
    find<QLineEdit>("parameterSearch")->backspace();
    EXPECT_EQ(selectedParameter(), "Knob 24") << "found again";
    typeInto("parameterSearch", "x");
    find<QLineEdit>("parameterSearch")->clear();
    EXPECT_EQ(selectedRow("tablePlistOfSelectedPlugin"), -1) << "emptying the field aims at nothing, either";
}

TEST_F(AssignmentTest, AssigningAndSteppingCountInTheRowsShown)
{
    typeInto("parameterSearch", "2");
    chooseParameter("Knob 12");
    pressPot(1);
    pressPot(2);
    pressPot(3);
    EXPECT_THAT(std::vector({potLabel(1), potLabel(2), potLabel(3)}), ElementsAre("Knob 12", "Knob 20", "Knob 21"));
}

TEST_F(AssignmentTest, APotCanBeClearedWhileSearching)
{
    typeInto("parameterSearch", "2");
    chooseParameter("-");
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
