// What becomes of unsaved edits that are left behind.

#include "mapping/Drafts.h"
#include "platform/files/Files.h"
#include "tests/support/FilesIn.h"
#include "tests/support/Obstacles.h"
#include "tests/support/WindowlessTest.h"

#include <algorithm>
#include <ctime>
#include <filesystem>
#include <functional>
#include <optional>

namespace {

using test::Path;
using test::Texts;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

namespace fs = std::filesystem;

class BringingBackTest : public test::WindowlessTest {
protected:
    BringingBackTest()
    {
        file_ = edit(test::numbered(24));
        test::writeDictionary(builtIn("Other"), test::orderFile(test::numbered(9)));
        controller_.btnRunCheck();
        select("EQ One");
        saved_ = order();
    }

    Path folder() const { return test::draftsBelow(home_.path()); }
    std::vector<Path> files() const { return test::filesIn(folder()); }
    /// Drafts that another run of the program would find.
    std::vector<Texts> ordersKept() const
    {
        std::vector<Texts> orders;
        const fs::path copy = home_.path() / "copy";
        fs::remove_all(copy);
        if (fs::exists(folder()))
            fs::copy(folder(), copy); // without the locks
        for (const auto& left : mapping::Drafts(copy).leftOf(file_.native()))
            orders.push_back(left.draft.order);
        std::sort(orders.begin(), orders.end());
        return orders;
    }
    /// Puts the parameter at a row of the list on a pot of the page shown.
    Texts put(std::int32_t row, std::int32_t pot)
    {
        selectParameter(row);
        controller_.clickControl(pot);
        return order();
    }
    /// Makes an edit and leaves it behind; answers the mapping with it.
    Texts leaveEdit(std::int32_t row = 20, std::int32_t pot = 0)
    {
        Texts edited = put(row, pot);
        select("Other");
        select("EQ One");
        return edited;
    }
    bool hasLeftDraft() const { return controller_.leftDraft().has_value(); }
    /// Lets the draft left have been made at another time.
    void date(std::time_t madeAt)
    {
        mapping::Draft draft = controller_.leftDraft().value().draft;
        fs::remove(controller_.leftDraft()->file);
        draft.madeAt = madeAt;
        mapping::Drafts(folder()).keep(draft);
        select("EQ One");
        ASSERT_EQ(controller_.leftDraft().value().draft.madeAt, madeAt);
    }

    Path file_;
    Texts saved_;
};

TEST_F(BringingBackTest, NothingIsKeptWithoutAnEdit)
{
    EXPECT_TRUE(controller_.keepDraft());
    controller_.showPage(2);
    EXPECT_TRUE(controller_.keepDraft());
    select("Other");
    controller_.btnRunCheck();
    EXPECT_THAT(files(), IsEmpty());
    EXPECT_FALSE(hasLeftDraft());
    EXPECT_EQ(controller_.potsInLeftDraft(), std::nullopt);
}

TEST_F(BringingBackTest, KeepsMappingModeAndPage)
{
    const auto lastEdit = std::time(nullptr);
    controller_.addControlsPage();
    const Texts edited = put(20, 3);
    controller_.kvPluginMode()->selectedTag.set(1);
    controller_.changePlugInModeAndReadPlist(1, 0);
    controller_.showPage(3);
    EXPECT_TRUE(controller_.keepDraft());
    select("EQ One");
    ASSERT_TRUE(hasLeftDraft());
    const mapping::Draft& draft = controller_.leftDraft()->draft;
    EXPECT_EQ(draft.order, edited);
    EXPECT_EQ(draft.totalPages, 4);
    EXPECT_EQ(draft.curPage, 3);
    EXPECT_EQ(draft.mode, 1);
    EXPECT_EQ(draft.plugin, file_.native());
    EXPECT_GE(draft.madeAt, lastEdit);
    EXPECT_LE(draft.madeAt, std::time(nullptr));
    EXPECT_EQ(order(), saved_) << "the file is loaded all the same";
}

TEST_F(BringingBackTest, IsRemovedWhenSavedOrUndoneToTheSavedState)
{
    put(20, 0);
    EXPECT_TRUE(controller_.keepDraft());
    EXPECT_THAT(files(), SizeIs(1));
    controller_.undo();
    EXPECT_TRUE(controller_.keepDraft());
    EXPECT_THAT(files(), IsEmpty());
    controller_.redo();
    EXPECT_TRUE(controller_.keepDraft());
    EXPECT_THAT(files(), SizeIs(1));
    controller_.exportToPlist();
    EXPECT_THAT(files(), IsEmpty());
    controller_.undo();
    EXPECT_TRUE(controller_.keepDraft());
    EXPECT_THAT(ordersKept(), ElementsAre(saved_)) << "now that differs from the file";
}

TEST_F(BringingBackTest, ASaveThatFailsKeepsIt)
{
    const Texts edited = put(20, 0);
    EXPECT_TRUE(controller_.keepDraft());
    {
        const test::Forbidden forbidden(file_.parent_path(), fs::perms::owner_read | fs::perms::owner_exec |
                                                                 fs::perms::others_read | fs::perms::others_exec);
        controller_.exportToPlist();
    }
    EXPECT_THAT(ordersKept(), ElementsAre(edited));
}

TEST_F(BringingBackTest, EditsOutlastWhateverReplacesTheMapping)
{
    controller_.exportToPlist(); // there is a backup
    const auto chooseMode = [this] {
        controller_.kvPluginMode()->selectedTag.set(1 - mapping::plugin_Mode);
        controller_.kvPluginMode_Changed(controller_.kvPluginMode());
    };
    const auto download = [this] {
        test::writeDictionary(file_.native() + ".downloaded", test::orderFile({"7 Shared"}));
        controller_.downloadDidFinish();
    };
    const std::pair<const char*, std::function<void()>> ways[] = {
        {"another plug-in", [this] { select("Other"), select("EQ One"); }},
        {"the same one again", [this] { select("EQ One"); }},
        {"recall", [this] { controller_.kvRecallPreviousMapping(); }},
        {"mode", chooseMode},
        {"download", download},
        {"rescan", [this] { controller_.btnRunCheck(), select("Other"), select("EQ One"); }},
    };
    for (const auto& [name, leave] : ways) {
        SCOPED_TRACE(name);
        const Texts edited = put(20, 0);
        leave();
        ASSERT_NE(order(), edited);
        ASSERT_TRUE(hasLeftDraft());
        EXPECT_EQ(controller_.leftDraft()->draft.order, edited);
        EXPECT_EQ(controller_.potsInLeftDraft(), 1);
        controller_.discardDraft();
        select("EQ One");
        controller_.discardDraft();
        if (controller_.leftDraft())
            controller_.discardDraft(); // what was downloaded
        EXPECT_THAT(files(), IsEmpty());
    }
}

TEST_F(BringingBackTest, IsOneStepWithANameThatGoesBothWays)
{
    controller_.addControlsPage();
    controller_.showPage(4);
    const Texts edited = put(20, 3);
    controller_.changePlugInModeAndReadPlist(1, 0);
    controller_.showPage(4);
    select("EQ One");
    select("Other");
    select("EQ One");
    ASSERT_EQ(controller_.history().undoName(), "");

    controller_.bringBackDraft();
    const auto expectBroughtBack = [&] {
        EXPECT_EQ(order(), edited);
        EXPECT_EQ(mapping::plugin_Mode, 1);
        EXPECT_EQ(controller_.kvPluginMode()->selectedTag.get(), 1);
        EXPECT_EQ(controller_.mainTitle_Sub()->stringValue.get(), "Logic Pro Instrument Mapper");
        EXPECT_THAT(readOuts(), ElementsAre("Page 4 of 4", "4 Pages"));
        EXPECT_EQ(pots().at(3), "Knob 20");
        EXPECT_TRUE(controller_.hasUnsavedChanges());
        EXPECT_FALSE(hasLeftDraft());
        EXPECT_THAT(ordersKept(), ElementsAre(edited));
        EXPECT_EQ(controller_.history().undoName(), "Bring Back Draft");
    };
    expectBroughtBack();

    controller_.undo();
    EXPECT_EQ(order(), saved_);
    EXPECT_EQ(mapping::plugin_Mode, 0);
    EXPECT_THAT(readOuts(), ElementsAre("Page 1 of 3", "3 Pages"));
    EXPECT_EQ(controller_.history().undoName(), "");
    ASSERT_TRUE(hasLeftDraft()) << "it can be brought back again";
    EXPECT_THAT(ordersKept(), ElementsAre(edited));
    EXPECT_TRUE(controller_.keepDraft());
    EXPECT_THAT(ordersKept(), ElementsAre(edited));

    controller_.redo();
    expectBroughtBack();
}

TEST_F(BringingBackTest, EditsMadeMeanwhileAreADraftOfTheirOwn)
{
    const Texts left = leaveEdit(20, 0);
    const Texts meanwhile = put(10, 5);
    controller_.bringBackDraft();
    EXPECT_EQ(order(), left);
    ASSERT_TRUE(hasLeftDraft());
    EXPECT_EQ(controller_.leftDraft()->draft.order, meanwhile);
    EXPECT_EQ(ordersKept().size(), 2U);

    controller_.undo();
    EXPECT_EQ(order(), meanwhile);
    ASSERT_TRUE(hasLeftDraft());
    EXPECT_EQ(controller_.leftDraft()->draft.order, left);
    EXPECT_EQ(ordersKept().size(), 2U);
    controller_.undo();
    EXPECT_TRUE(controller_.keepDraft());
    EXPECT_EQ(order(), saved_);
    EXPECT_THAT(ordersKept(), ElementsAre(left));

    controller_.redo();
    controller_.redo();
    EXPECT_EQ(order(), left);
    EXPECT_EQ(controller_.leftDraft().value().draft.order, meanwhile);
    controller_.bringBackDraft();
    EXPECT_EQ(order(), meanwhile);
    EXPECT_EQ(controller_.leftDraft().value().draft.order, left);
    controller_.exportToPlist();
    EXPECT_FALSE(hasLeftDraft());
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(BringingBackTest, ItIsAsOldAsItsLastEdit)
{
    leaveEdit();
    date(86'400);
    controller_.bringBackDraft();
    controller_.undo();
    EXPECT_EQ(controller_.leftDraft().value().draft.madeAt, 86'400);
    controller_.redo();
    controller_.showPage(2); // is no edit
    select("EQ One");
    EXPECT_EQ(controller_.leftDraft().value().draft.madeAt, 86'400);
    controller_.bringBackDraft();
    put(3, 3);
    select("EQ One");
    EXPECT_GT(controller_.leftDraft().value().draft.madeAt, 86'400);
}

TEST_F(BringingBackTest, UndoOfWhatLeftTheEditsLeavesNoDraftOfThem)
{
    controller_.exportToPlist();
    const Texts edited = put(20, 0);
    controller_.kvRecallPreviousMapping();
    ASSERT_TRUE(hasLeftDraft());
    controller_.undo();
    EXPECT_EQ(order(), edited);
    EXPECT_FALSE(hasLeftDraft()) << "they are being edited";
    EXPECT_THAT(ordersKept(), ElementsAre(edited));
    controller_.redo();
    ASSERT_TRUE(hasLeftDraft());
    EXPECT_THAT(ordersKept(), ElementsAre(edited));

    controller_.undo();
    controller_.kvPluginMode()->selectedTag.set(1);
    controller_.kvPluginMode_Changed(controller_.kvPluginMode());
    EXPECT_TRUE(hasLeftDraft());
    controller_.undo();
    EXPECT_FALSE(hasLeftDraft()) << "neither the edits nor the mode are left";
}

TEST_F(BringingBackTest, MakingTheSameEditByHandLeavesTheDraftAlone)
{
    const Texts left = leaveEdit(20, 0);
    EXPECT_EQ(put(20, 0), left);
    EXPECT_TRUE(controller_.keepDraft());
    controller_.undo();
    EXPECT_TRUE(controller_.keepDraft());
    EXPECT_TRUE(hasLeftDraft());
    EXPECT_THAT(ordersKept(), ElementsAre(left));
}

TEST_F(BringingBackTest, ModeAloneIsKeptToo)
{
    controller_.kvPluginMode()->selectedTag.set(1);
    controller_.kvPluginMode_Changed(controller_.kvPluginMode());
    select("EQ One");
    EXPECT_EQ(controller_.potsInLeftDraft(), 0);
    controller_.bringBackDraft();
    EXPECT_EQ(mapping::plugin_Mode, 1);
    EXPECT_TRUE(controller_.hasUnsavedMode());
}

TEST_F(BringingBackTest, IsComparedWithTheFileAsItIsNow)
{
    const Texts left = leaveEdit(20, 0);
    EXPECT_EQ(controller_.potsInLeftDraft(), 1);
    test::writeDictionary(file_, test::orderFile(test::numbered(8)));
    select("EQ One");
    EXPECT_EQ(controller_.potsInLeftDraft(), 17);
    test::writeDictionary(file_, test::orderFile(left));
    select("EQ One");
    EXPECT_FALSE(hasLeftDraft()) << "the file has it";
    EXPECT_THAT(files(), IsEmpty());
}

TEST_F(BringingBackTest, WorksAfterARescanAsUndoDoes)
{
    const Texts left = leaveEdit(20, 0);
    controller_.btnRunCheck();
    EXPECT_TRUE(hasLeftDraft());
    controller_.bringBackDraft();
    EXPECT_EQ(order(), left);
    controller_.undo();
    EXPECT_EQ(order(), saved_);
}

TEST_F(BringingBackTest, DiscardingShowsTheOneBefore)
{
    const Texts first = leaveEdit(20, 0);
    const Texts second = leaveEdit(10, 1);
    int told = 0;
    const auto connection = controller_.draftsChanged.connect([&] { ++told; });
    ASSERT_EQ(ordersKept().size(), 2U);
    const Texts shown = controller_.leftDraft().value().draft.order;
    controller_.discardDraft();
    EXPECT_NE(controller_.leftDraft().value().draft.order, shown);
    controller_.discardDraft();
    EXPECT_FALSE(hasLeftDraft());
    EXPECT_THAT(files(), IsEmpty());
    EXPECT_EQ(told, 2);
    controller_.discardDraft();
    controller_.bringBackDraft();
    EXPECT_EQ(order(), saved_);
    EXPECT_EQ(told, 2);
}

TEST_F(BringingBackTest, TellsOfWhichPluginsDraftsAreLeft)
{
    put(20, 0);
    select("Other");
    EXPECT_TRUE(controller_.isDraftLeftOf(file_.native()));
    EXPECT_FALSE(controller_.isDraftLeftOf(builtIn("Other").native()));
    test::Windowless later;
    later.controller.btnRunCheck();
    EXPECT_TRUE(later.controller.isDraftLeftOf(file_.native()));
}

TEST_F(BringingBackTest, IsKeptBeforeAServerIsWaitedFor)
{
    const Texts edited = put(20, 0);
    controller_.checkForDownloads("EQ One");
    EXPECT_THAT(ordersKept(), ElementsAre(edited));
    const Texts more = put(10, 1);
    controller_.uploadFileToServerAndComments(file_.native(), "");
    EXPECT_THAT(ordersKept(), ElementsAre(more));
}

TEST_F(BringingBackTest, WhenItCannotBeWrittenThatIsLoggedAndTriedAgain)
{
    const Texts edited = put(20, 0);
    {
        const test::FullDisk disk(10);
        EXPECT_FALSE(controller_.keepDraft());
    }
    EXPECT_THAT(logLines_.back(), HasSubstr("could not be kept"));
    EXPECT_TRUE(controller_.keepDraft());
    EXPECT_THAT(ordersKept(), ElementsAre(edited));
}

TEST_F(BringingBackTest, ADraftThatCannotBeReplacedByTheOneBroughtBackStays)
{
    const Texts left = leaveEdit(20, 0);
    {
        const test::FullDisk disk(10);
        controller_.bringBackDraft();
    }
    EXPECT_EQ(order(), left);
    EXPECT_THAT(ordersKept(), ElementsAre(left));
}

TEST_F(BringingBackTest, EditsLeftThatCouldNotBeWrittenAreKeptInMemoryUntilTheyCan)
{
    Texts edited;
    {
        const test::FullDisk disk(10);
        edited = put(20, 0);
        select("Other");
        EXPECT_TRUE(controller_.isDraftLeftOf(file_.native()));
        EXPECT_FALSE(controller_.keepDraft());
        EXPECT_THAT(ordersKept(), IsEmpty());
        select("EQ One");
        ASSERT_TRUE(hasLeftDraft());
        EXPECT_EQ(controller_.leftDraft()->draft.order, edited);
    }
    select("Other");
    EXPECT_TRUE(controller_.keepDraft());
    EXPECT_THAT(ordersKept(), ElementsAre(edited));
    select("EQ One");
    controller_.bringBackDraft();
    EXPECT_EQ(order(), edited);
    EXPECT_THAT(ordersKept(), ElementsAre(edited));
}

TEST_F(BringingBackTest, WhatCouldNotBeWrittenCanBeDiscarded)
{
    const test::FullDisk disk(10);
    leaveEdit();
    ASSERT_TRUE(hasLeftDraft());
    controller_.discardDraft();
    EXPECT_FALSE(hasLeftDraft());
    EXPECT_FALSE(controller_.isDraftLeftOf(file_.native()));
    EXPECT_TRUE(controller_.keepDraft());
}

} // namespace
