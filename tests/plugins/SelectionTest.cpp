#include "tests/support/WindowlessTest.h"

namespace {

using platform::plist::Array;
using test::Texts;
using testing::ElementsAre;

class Selection : public test::WindowlessTest {
protected:
    test::Path editWithMode(const char* mode, const Texts& order)
    {
        auto file = test::orderFile(order);
        file.set(test::kMode, Array{mode});
        test::writeDictionary(builtIn("EQ One"), file);
        controller_.btnRunCheck();
        select("EQ One");
        return builtIn("EQ One");
    }
    std::string title() const { return controller_.labKOScreen_Title()->stringValue.get(); }
    std::string subtitle() const { return controller_.mainTitle_Sub()->stringValue.get(); }
    std::string help() const { return controller_.labelHelperDisplay()->stringValue.get(); }
    void choose(std::int32_t tag)
    {
        controller_.kvPluginMode()->selectedTag.set(tag);
        controller_.kvPluginMode_Changed(controller_.kvPluginMode());
    }
};

TEST_F(Selection, ShowsThePluginItsTypeItsFileAndItsFirstPage)
{
    mapping::curPage = 7;
    const test::Path file = edit(test::numbered(9));
    EXPECT_EQ(title(), "EQ One (Logic Built-In)");
    EXPECT_EQ(controller_.labPluginPlistLocation()->stringValue.get(), file.native());
    EXPECT_THAT(readOuts(), ElementsAre("Page 1 of 2", "2 Pages"));
    EXPECT_EQ(pots().front(), "Knob 1");
    EXPECT_EQ(selectedParameter(), 0);
    EXPECT_EQ(controller_.arrayControllerPlistSelected()->arrangedCount(), 10);
}

TEST_F(Selection, OfAnEffectShowsTheInsertEffectModeEvenIfAParameterSpeaksOfAVolume)
{
    editWithMode("0", {"7 Master Volume"});
    EXPECT_EQ(subtitle(), "Logic Pro Insert/Effect Mapper");
    EXPECT_EQ(help(), "Editing EQ One in Insert/Effect Mode");
    EXPECT_EQ(controller_.kvPluginMode()->selectedTag.get(), 0);
}

TEST_F(Selection, OfAnInstrumentShowsTheInstrumentModeEvenIfNoParameterSpeaksOfAVolume)
{
    editWithMode("1", {"7 Cutoff"});
    EXPECT_EQ(subtitle(), "Logic Pro Instrument Mapper");
    EXPECT_EQ(help(), "Editing EQ One using Instrument Mode");
    EXPECT_EQ(controller_.kvPluginMode()->selectedTag.get(), 1);
}

TEST_F(Selection, WithoutARecordedModeGuessesFromTheCatalogue)
{
    edit({"7 Master Volume"});
    EXPECT_EQ(mapping::plugin_Mode, 1);
    edit({"7 Cutoff"}, "EQ Two");
    EXPECT_EQ(mapping::plugin_Mode, 0);
}

TEST_F(Selection, ClosesTheCommunityWindowsFirst)
{
    edit({"1 A"});
    controller_.cwinUploadWindow()->visible.set(true);
    controller_.cwinDownloadWindow()->visible.set(true);
    controller_.cwinCloudWindow()->visible.set(true);
    select("EQ One");
    EXPECT_FALSE(controller_.cwinUploadWindow()->visible.get());
    EXPECT_FALSE(controller_.cwinDownloadWindow()->visible.get());
    EXPECT_FALSE(controller_.cwinCloudWindow()->visible.get());
}

TEST_F(Selection, OfAFileThatCannotBeReadShowsAnEmptyPageAndDeletesTheFile)
{
    test::write(builtIn("Broken"), "no property list");
    controller_.btnRunCheck();
    select("Broken");
    EXPECT_FALSE(std::filesystem::exists(builtIn("Broken")));
    EXPECT_EQ(pots(), Texts(8, "-"));
    EXPECT_THAT(readOuts(), ElementsAre("Page 1 of 1", "1 Page"));
    EXPECT_EQ(controller_.arrayControllerPlistSelected()->arrangedCount(), 1);
    EXPECT_EQ(mapping::plugin_Mode, 0);
}

TEST_F(Selection, DiscardsThePreviousPluginsMapping)
{
    edit(test::numbered(17));
    edit({"1 A"}, "EQ Two");
    EXPECT_THAT(pots(), ElementsAre("A", "-", "-", "-", "-", "-", "-", "-"));
    EXPECT_EQ(mapping::plistBuild.size(), 8u);
    EXPECT_EQ(mapping::totalPages, 1);
}

TEST_F(Selection, SwitchingTheModeRevertsAssignmentsAndKeepsTheModeChosen)
{
    const test::Path file = editWithMode("0", {"1 A", "2 B"});
    const std::string before = test::read(file);
    selectParameter(2);
    controller_.kvRotBtn1_Pressed();
    controller_.addControlsPage();
    Texts lines;
    const auto watching =
        controller_.labelHelperDisplay()->stringValue.onChange([&](const std::string& line) { lines.push_back(line); });
    choose(1);
    EXPECT_THAT(lines, ElementsAre("Reading Parameters... Please Wait...", "Editing EQ One using Instrument Mode"));
    EXPECT_THAT(pots(), ElementsAre("A", "B", "-", "-", "-", "-", "-", "-"));
    EXPECT_THAT(readOuts(), ElementsAre("Page 1 of 1", "1 Page"));
    EXPECT_EQ(mapping::plugin_Mode, 1);
    EXPECT_EQ(subtitle(), "Logic Pro Instrument Mapper");
    EXPECT_EQ(help(), "Editing EQ One using Instrument Mode");
    EXPECT_EQ(selectedParameter(), 0);
    EXPECT_EQ(test::read(file), before);
}

TEST_F(Selection, AnyModeButNoughtIsInstrument)
{
    edit({"1 A"});
    for (const std::int32_t mode : {1, 2, -1}) {
        controller_.changePlugInModeAndReadPlist(mode, 0);
        EXPECT_EQ(subtitle(), "Logic Pro Instrument Mapper") << mode;
        EXPECT_EQ(controller_.kvPluginMode()->selectedTag.get(), 1) << mode;
    }
    controller_.changePlugInModeAndReadPlist(0, 0);
    EXPECT_EQ(subtitle(), "Logic Pro Insert/Effect Mapper");
}

} // namespace
