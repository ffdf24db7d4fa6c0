// Laying parameters onto pots.

#include "tests/support/WindowlessTest.h"

namespace {

using test::numbered;
using test::Texts;
using testing::ElementsAre;

class Assignment : public test::WindowlessTest {
protected:
    void press(int pot)
    {
        switch (pot) {
        case 1: return controller_.kvRotBtn1_Pressed();
        case 2: return controller_.kvRotBtn2_Pressed();
        case 3: return controller_.kvRotBtn3_Pressed();
        case 4: return controller_.kvRotBtn4_Pressed();
        case 5: return controller_.kvRotBtn5_Pressed();
        case 6: return controller_.kvRotBtn6_Pressed();
        case 7: return controller_.kvRotBtn7_Pressed();
        default: return controller_.kvRotBtn8_Pressed();
        }
    }
};

TEST_F(Assignment, EveryPotWritesItsOwnSlotOfThePageShown)
{
    for (const std::int32_t page : {1, 2, 3}) {
        for (int pot = 1; pot <= 8; ++pot) {
            edit(numbered(24));
            controller_.populateKnobLabels(page);
            selectParameter(5);
            Texts expected = order();
            press(pot);
            expected[static_cast<std::size_t>((page - 1) * 8 + pot - 1)] = "5 Knob 5";
            EXPECT_EQ(order(), expected) << "page " << page << ", pot " << pot;
            EXPECT_EQ(pots()[static_cast<std::size_t>(pot - 1)], "Knob 5");
            EXPECT_EQ(mapping::curPage, page);
        }
    }
}

TEST_F(Assignment, TheBlankEntryClearsAPotAndLeavesTheSelection)
{
    edit(numbered(8));
    selectParameter(0);
    press(3);
    EXPECT_EQ(mapping::plistBuild[2], mapping::emptyEntry(1, 2));
    EXPECT_EQ(pots()[2], "-");
    EXPECT_EQ(selectedParameter(), 0);
}

TEST_F(Assignment, PressingPotsInTurnLaysTheRowsOfTheListOntoThem)
{
    edit(numbered(20));
    selectParameter(11);
    for (int pot = 1; pot <= 8; ++pot)
        press(pot);
    EXPECT_THAT(pots(),
                ElementsAre("Knob 11", "Knob 12", "Knob 13", "Knob 14", "Knob 15", "Knob 16", "Knob 17", "Knob 18"));
    EXPECT_EQ(selectedParameter(), 19);
}

TEST_F(Assignment, AtTheLastRowTheSelectionStays)
{
    edit(numbered(4));
    selectParameter(4);
    press(1);
    press(2);
    EXPECT_EQ(selectedParameter(), 4);
    EXPECT_THAT(pots(), ElementsAre("Knob 4", "Knob 4", "Knob 3", "Knob 4", "-", "-", "-", "-"));
}

TEST_F(Assignment, AParameterMayStandOnSeveralPots)
{
    edit(numbered(8));
    selectParameter(8);
    press(1);
    EXPECT_EQ(pots().front(), "Knob 8");
    EXPECT_EQ(pots().back(), "Knob 8");
    EXPECT_EQ(controller_.arrayControllerPlistSelected()->arrangedCount(), 9);
}

TEST_F(Assignment, RowsAreCountedAsShown)
{
    edit({"1 Cutoff", "2 Level", "3 Mix", "4 Level 2"});
    const auto list = controller_.arrayControllerPlistSelected();
    list->setArrangement([](const platform::ArrayController&) { return std::vector<std::size_t>{4, 2}; });
    list->setSelectionIndex(0);
    press(1);
    press(2);
    EXPECT_THAT(pots(), ElementsAre("Level 2", "Level", "Mix", "Level 2", "-", "-", "-", "-"));
}

TEST_F(Assignment, APotPressedWithoutASelectionIsIgnored)
{
    edit(numbered(8));
    const Texts before = order();
    selectParameter(platform::ArrayController::kNoSelection);
    press(1);
    EXPECT_EQ(order(), before);
}

TEST_F(Assignment, AnExchangeSwapsTheContentsAndLeavesEachSlotsPlace)
{
    edit(numbered(16));
    controller_.moveParameterPositionAndToMovePageMode(3, 11, 1);
    EXPECT_EQ(selectedParameter(), 1); // it steps the list on, too
    using platform::Record;
    EXPECT_EQ(mapping::plistBuild[3], (Record{{"ParamNum", "12"},
                                              {"Parameter", "Knob 12"},
                                              {"KorvelPage", std::int32_t{1}},
                                              {"KorvelControlNo", std::int32_t{3}}}));
    EXPECT_EQ(mapping::plistBuild[11], (Record{{"ParamNum", "4"},
                                               {"Parameter", "Knob 4"},
                                               {"KorvelPage", std::int32_t{2}},
                                               {"KorvelControlNo", std::int32_t{11}}}));
    EXPECT_EQ(pots()[3], "Knob 12");
}

TEST_F(Assignment, AnyModeButOneCopiesFromTheList)
{
    for (const std::int32_t mode : {0, 2, -1}) {
        edit(numbered(9));
        controller_.moveParameterPositionAndToMovePageMode(9, 0, mode);
        EXPECT_EQ(order().front(), "9 Knob 9") << mode;
        EXPECT_EQ(order()[8], "9 Knob 9") << mode;
    }
}

} // namespace
