#include "tests/support/Obstacles.h"
#include "tests/support/WindowlessTest.h"

namespace {

using test::Path;
using test::read;
using test::ShownAlert;
using test::Texts;
using test::write;
using testing::ElementsAre;
using testing::IsEmpty;

class SavingAndRecall : public test::WindowlessTest {
protected:
    const ShownAlert noBackup_ = {"Recall file does not exist",
                                  "Please Note: Original, and Previous backup files will only exist once a mapping has "
                                  "been saved, simply reselect "
                                  "plugin on left menu to reload the default file again."};
    const ShownAlert recalled_ = {"Recalled mapping has been applied", "Now saved as this plugins default"};

    static ShownAlert savedTo(const Path& file)
    {
        return {"New Mapping has been saved",
                "Please remember to close and re-open plugin within Logic so that changes are updated\n\n\nBackup of "
                "previous plist file has been saved here:\n\n" +
                    file.native() + ".prev"};
    }
};

TEST_F(SavingAndRecall, ASaveTellsWhereThePreviousFileWent)
{
    const Path file = edit({"1 A"});
    controller_.kvExportToPlist();
    EXPECT_THAT(alerts_, ElementsAre(savedTo(file)));
}

TEST_F(SavingAndRecall, ASaveTellsOfSuccessEvenWhereTheFileIsGone)
{
    const Path file = edit({"1 A"});
    std::filesystem::remove(file);
    controller_.kvExportToPlist();
    EXPECT_THAT(alerts_, ElementsAre(savedTo(file)));
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST_F(SavingAndRecall, WhatCouldNotBeWrittenIsToldAsAlwaysAndStaysUnsaved)
{
    const Path file = edit({"1 A", "2 B"});
    selectParameter(2);
    controller_.kvRotBtn1_Pressed();
    {
        const test::FullDisk disk(10);
        controller_.kvExportToPlist();
    }
    EXPECT_THAT(alerts_, ElementsAre(savedTo(file)));
    EXPECT_TRUE(controller_.hasUnsavedChanges());
    EXPECT_EQ(controller_.changedPots(), 1U);

    const std::string before = read(file);
    write(file, "no property list");
    controller_.kvExportToPlist();
    EXPECT_TRUE(controller_.hasUnsavedChanges()) << "it is gone";
    EXPECT_EQ(read(file.native() + ".unreadable"), "no property list");
    controller_.kvExportToPlist();
    EXPECT_TRUE(controller_.hasUnsavedChanges()) << "there is none";
    EXPECT_THAT(alerts_, ElementsAre(savedTo(file), savedTo(file), savedTo(file)));

    write(file, before);
    controller_.kvExportToPlist();
    EXPECT_FALSE(controller_.hasUnsavedChanges());
}

TEST_F(SavingAndRecall, ARecallThatFailsIsToldAsAlwaysAndKeepsTheFile)
{
    const Path file = edit({"1 A", "2 B"});
    selectParameter(2);
    controller_.kvRotBtn1_Pressed();
    controller_.kvExportToPlist();
    const std::string saved = read(file);
    alerts_.clear();
    {
        const test::FullDisk disk(10);
        controller_.kvRecallPreviousMapping();
    }
    EXPECT_THAT(alerts_, ElementsAre(recalled_));
    EXPECT_EQ(read(file), saved);
    EXPECT_EQ(pots().front(), "B");
}

TEST_F(SavingAndRecall, AModeThatWasSavedIsTheOneThePluginOpensIn)
{
    const Path file = edit({"1 Cutoff"});
    ASSERT_EQ(mapping::plugin_Mode, 0);
    controller_.kvPluginMode()->selectCell(0);
    controller_.kvPluginMode_Changed(controller_.kvPluginMode());
    controller_.kvExportToPlist();
    EXPECT_THAT(test::textsAt(file, test::kMode), ElementsAre("1"));
    mapping::plugin_Mode = 0;
    select("EQ One");
    EXPECT_EQ(mapping::plugin_Mode, 1);
    EXPECT_EQ(controller_.kvPluginMode()->selectedTag.get(), 1);
}

TEST_F(SavingAndRecall, RecallBeforeAnySaveSaysSoAndLeavesTheFile)
{
    const Path file = edit({"1 A"});
    const std::string before = read(file);
    controller_.kvRecallPreviousMapping();
    controller_.kvRecallOriginalMapping();
    EXPECT_THAT(alerts_, ElementsAre(noBackup_, noBackup_));
    EXPECT_EQ(read(file), before);
}

TEST_F(SavingAndRecall, RecallLoadsTheBackupAndShowsItsFirstPage)
{
    const Path file = edit(test::numbered(9));
    const std::string marked = read(file);
    controller_.clearAllPages();
    controller_.addControlsPage();
    controller_.kvExportToPlist();
    alerts_.clear();
    controller_.kvRecallOriginalMapping();
    EXPECT_THAT(alerts_, ElementsAre(recalled_));
    EXPECT_EQ(read(file), marked);
    EXPECT_THAT(readOuts(), ElementsAre("Page 1 of 2", "2 Pages"));
    EXPECT_EQ(pots().front(), "Knob 1");
    EXPECT_EQ(selectedParameter(), 0);
}

TEST_F(SavingAndRecall, RecallTakesTheModeThatTheBackupRecords)
{
    edit({"4 Level"});
    for (const std::int32_t cell : {0, 1}) {
        controller_.kvPluginMode()->selectCell(cell);
        controller_.kvPluginMode_Changed(controller_.kvPluginMode());
        controller_.kvExportToPlist();
    }
    ASSERT_EQ(mapping::plugin_Mode, 0);
    controller_.kvRecallPreviousMapping();
    EXPECT_EQ(mapping::plugin_Mode, 1);
    EXPECT_EQ(controller_.mainTitle_Sub()->stringValue.get(), "Logic Pro Instrument Mapper");
}

TEST_F(SavingAndRecall, RecallOfThePreviousTakesBackTheLatestSaveOnly)
{
    const Path file = edit({"1 A", "2 B"});
    selectParameter(2);
    controller_.kvRotBtn1_Pressed();
    controller_.kvExportToPlist();
    selectParameter(0);
    controller_.kvRotBtn1_Pressed();
    controller_.kvExportToPlist();
    controller_.kvRecallPreviousMapping();
    EXPECT_THAT(pots(), ElementsAre("B", "B", "-", "-", "-", "-", "-", "-"));
    EXPECT_EQ(test::textsAt(file, test::kOrder).front(), "2 B");
    controller_.kvRecallOriginalMapping();
    EXPECT_THAT(pots(), ElementsAre("A", "B", "-", "-", "-", "-", "-", "-"));
}

} // namespace
