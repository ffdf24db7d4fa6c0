// Saving, recalling and the chart from the buttons on screen.

#include "tests/support/WindowTest.h"

using testing::ElementsAre;

namespace test {

TEST_F(WindowTest, SaveRecallAndChartAreButtonsThatTellWhatTheyDid)
{
    const Path file = builtIn("Synth");
    writeDictionary(file, orderFile(numbered(10)));
    launch();
    select("Synth");
    const std::string marked = read(file);
    pressPot(1);
    EXPECT_THAT(alertsOf([this] { click("kvExportToPlist"); }),
                ElementsAre(ShownAlert{
                    "New Mapping has been saved",
                    "Please remember to close and re-open plugin within Logic so that changes are updated\n\n\n"
                    "Backup of previous plist file has been saved here:\n\n" +
                        file.native() + ".prev"}));
    const std::string saved = read(file);
    pressPot(2);
    alertsOf([this] { click("kvExportToPlist"); });
    click("nextPageButtonPressed");

    const ShownAlert applied{"Recalled mapping has been applied", "Now saved as this plugins default"};
    EXPECT_THAT(alertsOf([this] { click("kvRecallPreviousMapping"); }), ElementsAre(applied));
    EXPECT_EQ(read(file), saved);
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 1 of 2");
    EXPECT_EQ(potLabel(1), "-");
    EXPECT_EQ(potLabel(2), "Knob 2");
    EXPECT_THAT(alertsOf([this] { click("kvRecallOriginalMapping"); }), ElementsAre(applied));
    EXPECT_EQ(read(file), marked);
    EXPECT_EQ(potLabel(1), "Knob 1");

    EXPECT_THAT(alertsOf([this] { click("kvCreateChart"); }), ElementsAre());
    EXPECT_THAT(workspace_.opened, ElementsAre(Path(file.native() + ".html")));
}

} // namespace test
