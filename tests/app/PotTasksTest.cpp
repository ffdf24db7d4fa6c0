// What a pot's tool tip says that a press would do, and what the press does then.

#include "tests/support/WindowTest.h"

#include "platform/controls/ArrayController.h"

#include <string>

namespace test {

using testing::HasSubstr;

class PotTasksTest : public WindowTest {
protected:
    void load(const Texts& order = numbered(12))
    {
        writeDictionary(builtIn("Synth"), orderFile(order));
        launch();
        select("Synth");
    }
    platform::ArrayController& rows() { return *controller().arrayControllerPlistSelected(); }
    std::string tip(int pot) const { return toolTip(("kvRotaryBtn" + std::to_string(pot)).c_str()); }
};

TEST_F(PotTasksTest, SaysWhatToDoFirstWhereAPressDoesNothing)
{
    writeDictionary(builtIn("Synth"), orderFile(numbered(12)));
    launch();
    EXPECT_EQ(tip(3), "Choose a plug-in to put its parameters on pot 3");
    select("Synth");
    rows().setSelectionIndex(platform::ArrayController::kNoSelection);
    EXPECT_EQ(tip(3), "Select a parameter to put it on pot 3");
    pressPot(3);
    EXPECT_EQ(potLabel(3), "Knob 3");
    rows().setSelectionIndex(4);
    click("btnRunCheck"); // no plug-in is chosen then
    EXPECT_EQ(tip(3), "Choose a plug-in to put its parameters on pot 3");
}

TEST_F(PotTasksTest, NamesWhatAPressPutsThere)
{
    load();
    EXPECT_EQ(tip(3), "Clear pot 3 (Ctrl+3)") << "the blank entry is selected at first";
    pressPot(3);
    EXPECT_EQ(potLabel(3), "-");
    chooseParameter("Knob 7");
    for (int pot = 1; pot <= 8; ++pot)
        EXPECT_EQ(tip(pot), "Put Knob 7 on pot " + std::to_string(pot) + " (Ctrl+" + std::to_string(pot) + ")");
    pressPot(1);
    EXPECT_EQ(potLabel(1), "Knob 7");
    EXPECT_EQ(tip(1), "Put Knob 8 on pot 1 (Ctrl+1)") << "the selection has stepped on";
    pressPot(1);
    EXPECT_EQ(potLabel(1), "Knob 8");
    rows().setSelectedRows({2, 5, 9}, 5);
    EXPECT_EQ(tip(8), "Put Knob 5 on pot 8 (Ctrl+8)");
    pressPot(8);
    EXPECT_EQ(potLabel(8), "Knob 5");
    typeInto("parameterSearch", "knob 12");
    EXPECT_EQ(tip(2), "Put Knob 12 on pot 2 (Ctrl+2)") << "what was found is selected";
}

TEST_F(PotTasksTest, IsToldByAScreenReaderBehindWhatIsSpecialAboutThePot)
{
    load();
    const auto told = [this](const char* pot) { return find<>(pot)->accessibleDescription().toStdString(); };
    chooseParameter("Knob 2");
    EXPECT_EQ(told("kvRotaryBtn1"), "Put Knob 2 on pot 1 (Ctrl+1)");
    EXPECT_EQ(told("kvRotaryBtn2"), "Holds the selected parameter; Put Knob 2 on pot 2 (Ctrl+2)");
}

TEST_F(PotTasksTest, TakesANameAsItIsAndNotTooMuchOfIt)
{
    const std::string endless(5000, 'W');
    load(Texts{"1 100 %2 %1 <b>", "2 " + endless});
    rows().setSelectionIndex(1);
    EXPECT_EQ(tip(4), "Put 100 %2 %1 <b> on pot 4 (Ctrl+4)");
    rows().setSelectionIndex(2);
    EXPECT_THAT(tip(4), HasSubstr("WW\u2026 on pot 4"));
    EXPECT_LT(tip(4).size(), 200u);
}

} // namespace test
