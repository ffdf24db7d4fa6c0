// The page buttons on screen, each wired to what it names.

#include "tests/support/WindowTest.h"

namespace test {

using testing::ElementsAre;

class PagesWindowTest : public WindowTest {
protected:
    PagesWindowTest()
    {
        writeDictionary(builtIn("Synth"), orderFile(numbered(32)));
        launch();
        select("Synth");
    }
};

TEST_F(PagesWindowTest, EveryButtonDoesWhatItSays)
{
    const struct {
        const char* button;
        const char* page;
        const char* firstPot;
    } steps[] = {
        {"nextPageButtonPressed", "Page 2 of 4", "Knob 9"},  {"lastPageButtonPressed", "Page 4 of 4", "Knob 25"},
        {"prevPageButtonPressed", "Page 3 of 4", "Knob 17"}, {"firstPageButtonPressed", "Page 1 of 4", "Knob 1"},
        {"kvMovePage_Next", "Page 2 of 4", "Knob 1"},        {"kvMovePage_Last", "Page 4 of 4", "Knob 1"},
        {"kvMovePage_Prev", "Page 3 of 4", "Knob 1"},        {"kvMovePage_First", "Page 1 of 4", "Knob 1"},
        {"newPageButtonPressed", "Page 5 of 5", "-"},        {"deletePageButtonPressed", "Page 4 of 4", "Knob 17"},
        {"clearAllPagesButtonPressed", "Page 1 of 1", "-"},
    };
    const auto alerts = alertsOf([&] {
        for (const auto& [button, page, firstPot] : steps) {
            click(button);
            EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), page) << button;
            EXPECT_EQ(potLabel(1), firstPot) << button;
            EXPECT_EQ(toolTip("kvControl1"), firstPot) << button;
        }
    });
    EXPECT_THAT(alerts, ElementsAre());
    EXPECT_EQ(text("labTotalPagesIndicator"), "1 Page");
}

TEST_F(PagesWindowTest, WhatIsNotPossibleIsToldOnScreen)
{
    EXPECT_THAT(alertsOf([this] {
                    click("deletePageButtonPressed");
                    click("kvMovePage_Prev");
                }),
                ElementsAre(ShownAlert{"Cannot delete first page", "Sorry!"},
                            ShownAlert{"Sorry not possible", "Page 0 does not exist, cannot move page!"}));
}

} // namespace test
