#include "tests/support/WindowTest.h"

#include "mapping/EditingState.h"

#include <QTest>

using testing::ElementsAre;

namespace test {

namespace plist = platform::plist;

class SavingTest : public WindowTest {
protected:
    void load(const plist::Dictionary& file, plist::Form form = plist::Form::xml)
    {
        writeDictionary(path(), file, form);
        launch();
        select("Synth");
    }

    std::vector<SeenAlert> save()
    {
        return alertsOf([this] { click("kvExportToPlist"); });
    }

    Path path() const { return builtIn("Synth"); }
    Path original() const { return path().native() + ".original"; }
    Path previous() const { return path().native() + ".prev"; }
};

TEST_F(SavingTest, SavingTellsWhereTheBackupIs)
{
    load(orderFile(numbered(3)));
    EXPECT_THAT(save(), ElementsAre(SeenAlert{
                            "New Mapping has been saved",
                            "Please remember to close and re-open plugin within Logic so that changes are updated\n\n\n"
                            "Backup of previous plist file has been saved here:\n\n" +
                                previous().native(),
                            {"OK"}}));
}

TEST_F(SavingTest, TheFirstSaveMakesBothBackupsAndTheSecondReplacesOne)
{
    load(orderFile(numbered(3)));
    const std::string before = read(path());
    pressPot(1);
    save();
    EXPECT_EQ(read(original()), before);
    EXPECT_EQ(read(previous()), before);
    const std::string first = read(path());
    EXPECT_NE(first, before);
    pressPot(2);
    save();
    EXPECT_EQ(read(original()), before);
    EXPECT_EQ(read(previous()), first);
    EXPECT_THAT(textsAt(path(), kOrder), ElementsAre("-1", "-1", "3 Knob 3", "-1", "-1", "-1", "-1", "-1"));
}

TEST_F(SavingTest, EverySlotIsWritten)
{
    load(orderFile({"4 Level"}));
    click("newPageButtonPressed");
    save();
    Texts expected(16, "-1");
    expected[0] = "4 Level";
    EXPECT_EQ(textsAt(path(), kOrder), expected);
}

TEST_F(SavingTest, TheModeIsSavedAndOpensThePluginNextTime)
{
    load(orderFile({"4 Level"}));
    QTest::mouseClick(find("kvPluginMode_1"), Qt::LeftButton, Qt::NoModifier, QPoint(8, 8));
    save();
    EXPECT_THAT(textsAt(path(), kMode), ElementsAre("1"));
    launch();
    select("Synth");
    EXPECT_EQ(text("mainTitle_Sub"), "Logic Pro Instrument Mapper");
}

TEST_F(SavingTest, WhatIsNotOursStaysInItsPlaceAndForm)
{
    plist::Dictionary file;
    file.set("Before", plist::Value(plist::Real(-0.0)));
    file.set(kOrder, plist::Array{"1 One", "blankless", "2  Two "});
    file.set("After", plist::Dictionary{{"bytes", plist::Data{std::string("\0\xff", 2)}}});
    for (const plist::Form form : {plist::Form::xml, plist::Form::binary}) {
        load(file, form);
        save();
        const auto saved = plist::parse(read(path()));
        ASSERT_TRUE(saved);
        EXPECT_EQ(saved->form, form);
        plist::Dictionary expected = file;
        expected.set(kOrder, plist::Array{"1 One", "-1", "2  Two ", "-1", "-1", "-1", "-1", "-1"});
        expected.set(kCatalogue, plist::Array{"-1", "1 One", "blankless", "2  Two "});
        expected.set(kMode, plist::Array{"0"});
        EXPECT_EQ(plist::write({saved->root, plist::Form::xml}),
                  plist::write({plist::Value(expected), plist::Form::xml}));
        EXPECT_TRUE(saved->root == plist::Value(expected));
    }
}

TEST_F(SavingTest, TheSavedFileToTheByte)
{
    write(path(), "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<plist version=\"1.0\"><dict>"
                  "<key>Version</key><integer>3</integer>"
                  "<key>ControlSurfaceParameterOrder</key><array><string>1 A &amp; B</string></array>"
                  "</dict></plist>");
    launch();
    select("Synth");
    save();
    std::string expected = R"(<?xml version="1.0" encoding="UTF-8"?>
<!DOCTYPE plist PUBLIC "-//Apple//DTD PLIST 1.0//EN" "http://www.apple.com/DTDs/PropertyList-1.0.dtd">
<plist version="1.0">
<dict>
	<key>Version</key>
	<integer>3</integer>
	<key>ControlSurfaceParameterOrder</key>
	<array>
		<string>1 A &amp; B</string>
)";
    for (int slot = 2; slot <= 8; ++slot)
        expected += "\t\t<string>-1</string>\n";
    expected += R"(	</array>
	<key>KorvelCSUnique</key>
	<array>
		<string>-1</string>
		<string>1 A &amp; B</string>
	</array>
	<key>KorvelCSMode</key>
	<array>
		<string>0</string>
	</array>
</dict>
</plist>
)";
    EXPECT_EQ(read(path()), expected);
}

TEST_F(SavingTest, AFileThatCannotBeReadAnyMoreIsBackedUpAndGone)
{
    load(orderFile(numbered(3)));
    write(path(), "damaged meanwhile");
    const auto alerts = save();
    ASSERT_EQ(alerts.size(), 1U);
    EXPECT_EQ(alerts[0].message, "New Mapping has been saved");
    EXPECT_FALSE(std::filesystem::exists(path()));
    EXPECT_EQ(read(previous()), "damaged meanwhile");
    EXPECT_EQ(read(original()), "damaged meanwhile");
}

TEST_F(SavingTest, RecallBeforeAnySaveIsRefused)
{
    load(orderFile(numbered(3)));
    const std::string before = read(path());
    const SeenAlert refused{
        "Recall file does not exist",
        "Please Note: Original, and Previous backup files will only exist once a mapping has been saved, simply "
        "reselect plugin on left menu to reload the default file again.",
        {"OK"}};
    EXPECT_THAT(alertsOf([this] { click("kvRecallPreviousMapping"); }), ElementsAre(refused));
    EXPECT_THAT(alertsOf([this] { click("kvRecallOriginalMapping"); }), ElementsAre(refused));
    EXPECT_EQ(read(path()), before);
}

TEST_F(SavingTest, RecallPutsTheBackupBackAndLoadsIt)
{
    load(orderFile(numbered(10)));
    const std::string marked = read(path());
    pressPot(1);
    save();
    const std::string saved = read(path());
    pressPot(2);
    save();
    click("nextPageButtonPressed");

    const SeenAlert applied{"Recalled mapping has been applied", "Now saved as this plugins default", {"OK"}};
    EXPECT_THAT(alertsOf([this] { click("kvRecallPreviousMapping"); }), ElementsAre(applied));
    EXPECT_EQ(read(path()), saved);
    EXPECT_EQ(read(previous()), saved) << "the backup stays";
    EXPECT_EQ(text("lab_PageCurrentlyDisplayed"), "Page 1 of 2");
    EXPECT_EQ(potLabel(1), "-");
    EXPECT_EQ(potLabel(2), "Knob 2");

    EXPECT_THAT(alertsOf([this] { click("kvRecallOriginalMapping"); }), ElementsAre(applied));
    EXPECT_EQ(read(path()), marked);
    EXPECT_EQ(potLabel(1), "Knob 1");
}

TEST_F(SavingTest, RecallTakesTheModeThatTheBackupRecords)
{
    load(orderFile({"4 Level"}));
    QTest::mouseClick(find("kvPluginMode_1"), Qt::LeftButton, Qt::NoModifier, QPoint(8, 8));
    save();
    QTest::mouseClick(find("kvPluginMode_0"), Qt::LeftButton, Qt::NoModifier, QPoint(8, 8));
    save();
    alertsOf([this] { click("kvRecallPreviousMapping"); });
    EXPECT_EQ(mapping::plugin_Mode, 1);
    EXPECT_EQ(text("mainTitle_Sub"), "Logic Pro Instrument Mapper");
}

TEST_F(SavingTest, RecallingAndSavingMovesTheRecalledStateIntoPrev)
{
    load(orderFile(numbered(3)));
    pressPot(1);
    save();
    alertsOf([this] { click("kvRecallPreviousMapping"); });
    const std::string recalled = read(path());
    save();
    EXPECT_EQ(read(previous()), recalled);
}

} // namespace test
