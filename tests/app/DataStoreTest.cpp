#include "tests/support/DelegateTest.h"

#include <QAction>

#include <sys/stat.h>

using std::filesystem::perms;
using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::Field;
using testing::HasSubstr;
using testing::SizeIs;
using testing::StartsWith;

namespace test {

namespace {

constexpr const char* kDescription = "Failed to initialize the application's saved data";
constexpr const char* kReason = "There was an error creating or loading the application's saved data.";

constexpr auto kReadOnly = perms{0555};

class DataStoreTest : public DelegateTest {
protected:
    std::vector<ShownAlert> useStore()
    {
        return alertsOf([this] { EXPECT_EQ(delegate().managedObjectContext(), nullptr); });
    }
    /// A failure whose underlying error says that.
    static auto failureBeneath(const std::string& underlying)
    {
        return ElementsAre(AllOf(
            Field(&ShownAlert::text, kDescription),
            Field(&ShownAlert::informativeText, AllOf(StartsWith(std::string(kReason) + "\n\n"), EndsWith(underlying))),
            Field(&ShownAlert::buttons, ElementsAre("OK"))));
    }
};

/// Every write replaces the file, so that its number tells whether it was written.
ino_t numberOf(const Path& file)
{
    struct stat status = {};
    EXPECT_EQ(::stat(file.c_str(), &status), 0);
    return status.st_ino;
}

} // namespace

TEST_F(DataStoreTest, DataFolderIsNamedAfterTheBundleInApplicationSupport)
{
    EXPECT_EQ(delegate().applicationDocumentsDirectory(), dataBelow(home_.path()) / KV_BUNDLE_IDENTIFIER);
}

#ifndef __APPLE__
TEST_F(DataStoreTest, DataFolderLiesInTheHomeWithoutOneOfItsOwn)
{
    ::setenv("XDG_DATA_HOME", "relative", 1);
    EXPECT_EQ(delegate().applicationDocumentsDirectory(), home_ / "home/.local/share" / KV_BUNDLE_IDENTIFIER);
    ::unsetenv("XDG_DATA_HOME");
    EXPECT_EQ(delegate().applicationDocumentsDirectory(), home_ / "home/.local/share" / KV_BUNDLE_IDENTIFIER);
    EXPECT_FALSE(std::filesystem::exists(home_ / "home/.local"));
}
#endif

TEST_F(DataStoreTest, FirstUseMakesTheFolderWithItsParentsAndTheStore)
{
    EXPECT_FALSE(std::filesystem::exists(dataBelow(home_.path())));
    const auto alerts = alertsOf([this] { EXPECT_NE(delegate().persistentStoreCoordinator(), nullptr); });
    EXPECT_THAT(alerts, ElementsAre());
    EXPECT_THAT(read(store_), StartsWith("<?xml"));
    EXPECT_EQ(storedObjects(), 0U);
}

TEST_F(DataStoreTest, WhatWasMadeIsKept)
{
    const auto model = delegate().managedObjectModel();
    auto* coordinator = delegate().persistentStoreCoordinator();
    auto* context = delegate().managedObjectContext();
    ASSERT_TRUE(model && coordinator && context);
    EXPECT_EQ(coordinator->model(), model.get());
    EXPECT_EQ(delegate().managedObjectModel(), model);
    EXPECT_EQ(delegate().persistentStoreCoordinator(), coordinator);
    EXPECT_EQ(delegate().managedObjectContext(), context);
}

TEST_F(DataStoreTest, TheProgramsOwnModelIsFound)
{
    AppDelegate installed(platform());
    EXPECT_TRUE(installed.managedObjectModel());
    EXPECT_NE(installed.managedObjectContext(), nullptr);
}

TEST_F(DataStoreTest, AMissingModelIsLookedForAgain)
{
    std::filesystem::remove_all(model_);
    EXPECT_FALSE(delegate().managedObjectModel());
    ASSERT_NE(delegate().persistentStoreCoordinator(), nullptr);
    EXPECT_EQ(delegate().persistentStoreCoordinator()->model(), nullptr);
    writeStoreModel(model_);
    EXPECT_TRUE(delegate().managedObjectModel());
}

TEST_F(DataStoreTest, AFileWhereTheFolderShouldBeIsToldOnEveryUse)
{
    write(data_, "in the way");
    const ShownAlert told{kDescription,
                          "Expected a folder to store application data, found a file (" + data_.native() + ")."};
    EXPECT_THAT(useStore(), ElementsAre(told));
    EXPECT_THAT(useStore(), ElementsAre(told));
    const auto alerts = alertsOf([this] { EXPECT_EQ(delegate().persistentStoreCoordinator(), nullptr); });
    EXPECT_THAT(alerts, ElementsAre(told));
    EXPECT_EQ(read(data_), "in the way");
    ASSERT_THAT(presentedErrors(), SizeIs(3));
    for (const platform::Error& error : presentedErrors()) {
        EXPECT_EQ(error.domain, "YOUR_ERROR_DOMAIN");
        EXPECT_EQ(error.code, 9999);
        EXPECT_FALSE(error.userInfo.underlyingError);
    }
}

TEST_F(DataStoreTest, AFolderThatCannotBeMadeIsTold)
{
    std::filesystem::permissions(home_.path(), perms::all);
    std::filesystem::create_directories(dataBelow(home_.path()));
    const Forbidden folder(dataBelow(home_.path()), kReadOnly);
    EXPECT_THAT(useStore(), failureBeneath("Could not create the folder “" + data_.native() + "”.\nPermission denied"));
}

TEST_F(DataStoreTest, AFolderThatCannotBeExaminedIsTold)
{
    std::filesystem::create_directories(data_);
    {
        const Forbidden folder(dataBelow(home_.path()), perms::none);
        EXPECT_THAT(useStore(), failureBeneath("Could not examine “" + data_.native() + "”.\nPermission denied"));
    }
    EXPECT_NE(delegate().managedObjectContext(), nullptr);
}

TEST_F(DataStoreTest, AFileAboveTheFolderIsToldAndNothingIsMade)
{
    write(dataBelow(home_.path()), "in the way");
    EXPECT_THAT(useStore(), failureBeneath("Could not examine “" + data_.native() + "”.\nNot a directory"));
    EXPECT_EQ(read(dataBelow(home_.path())), "in the way");
}

TEST_F(DataStoreTest, AStoreThatCannotBeReadIsTold)
{
    std::filesystem::permissions(home_.path(), perms::all);
    write(store_, "<plist><dict><key>objects</key><array/></dict></plist>");
    {
        const Forbidden file(store_, perms::none);
        EXPECT_THAT(useStore(), failureBeneath("The store “" + store_.native() +
                                               "” could not be opened.\nThe file cannot be read."));
    }
    EXPECT_NE(delegate().managedObjectContext(), nullptr);
}

TEST_F(DataStoreTest, ADamagedStoreIsToldAndLeftAlone)
{
    write(store_, "<plist><dict>");
    EXPECT_THAT(useStore(), failureBeneath("The store “" + store_.native() +
                                           "” could not be opened.\nThe file is damaged or is no store."));
    EXPECT_EQ(read(store_), "<plist><dict>");
    ASSERT_THAT(presentedErrors(), SizeIs(1));
    EXPECT_EQ(presentedErrors()[0].domain, "YOUR_ERROR_DOMAIN");
    EXPECT_EQ(presentedErrors()[0].code, 9999);
    ASSERT_TRUE(presentedErrors()[0].userInfo.underlyingError);
    EXPECT_EQ(presentedErrors()[0].userInfo.underlyingError->domain, "StoreErrorDomain");
    std::filesystem::remove(store_);
    EXPECT_NE(delegate().managedObjectContext(), nullptr);
}

TEST_F(DataStoreTest, AStoreThatCannotBeMadeIsTold)
{
    std::filesystem::permissions(home_.path(), perms::all);
    std::filesystem::create_directories(data_);
    const Forbidden folder(data_, kReadOnly);
    EXPECT_THAT(useStore(), failureBeneath("The store “" + store_.native() +
                                           "” could not be written.\nThe disk may be full, or the folder may not be "
                                           "yours to write in."));
}

TEST_F(DataStoreTest, SavingWithoutAStoreWritesALogLineAndNothingElse)
{
    write(data_, "in the way");
    const auto alerts = alertsOf([this] { delegate().saveAction(); });
    EXPECT_THAT(alerts, SizeIs(1)); // that there is no store
    EXPECT_EQ(logText(), "AppDelegate:saveAction: unable to commit editing before saving\n");
    EXPECT_EQ(read(data_), "in the way");
}

TEST_F(DataStoreTest, TheMenuItemSaves)
{
    launchWithDelegate();
    EXPECT_EQ(find<QAction>("saveAction")->text(), QLatin1String("Save Application Data"));
    change();
    EXPECT_EQ(storedObjects(), 0U);
    find<QAction>("saveAction")->trigger();
    EXPECT_EQ(storedObjects(), 1U);
    EXPECT_FALSE(delegate().managedObjectContext()->hasChanges());
    EXPECT_THAT(logText(), Not(HasSubstr("unable")));
}

TEST_F(DataStoreTest, WithoutChangesNothingIsWritten)
{
    ASSERT_NE(delegate().managedObjectContext(), nullptr);
    const ino_t before = numberOf(store_);
    delegate().saveAction();
    EXPECT_EQ(numberOf(store_), before);
    change();
    delegate().saveAction();
    EXPECT_NE(numberOf(store_), before);
}

TEST_F(DataStoreTest, AnEditorThatRefusesIsLoggedAndTheRestIsSaved)
{
    change();
    const auto editor = delegate().managedObjectContext()->registerEditor([] { return false; });
    const auto alerts = alertsOf([this] { delegate().saveAction(); });
    EXPECT_THAT(alerts, ElementsAre());
    EXPECT_EQ(logText(), "AppDelegate:saveAction: unable to commit editing before saving\n");
    EXPECT_EQ(storedObjects(), 1U);
}

TEST_F(DataStoreTest, AnEditorCommitsBeforeTheSave)
{
    ASSERT_NE(delegate().managedObjectContext(), nullptr);
    const auto editor = delegate().managedObjectContext()->registerEditor([this] {
        change();
        return true;
    });
    delegate().saveAction();
    EXPECT_EQ(storedObjects(), 1U);
    EXPECT_EQ(logText(), "");
}

TEST_F(DataStoreTest, AFullDiskIsToldAndTheChangesStay)
{
    change(kLarge);
    {
        const FullDisk disk(kSmallDisk);
        const auto alerts = alertsOf([this] { delegate().saveAction(); }, {"Cancel"});
        EXPECT_THAT(alerts, ElementsAre(ShownAlert{"The store “" + store_.native() + "” could not be written.",
                                                   "The disk may be full, or the folder may not be yours to write in.",
                                                   {"Try Again", "Cancel"}}));
    }
    EXPECT_TRUE(delegate().managedObjectContext()->hasChanges());
    EXPECT_EQ(storedObjects(), 0U);
    delegate().saveAction();
    EXPECT_EQ(storedObjects(), 1U);
}

TEST_F(DataStoreTest, UndoOfAWindowActsOnTheStoresChanges)
{
    auto* undo = delegate().windowWillReturnUndoManager();
    ASSERT_NE(undo, nullptr);
    EXPECT_TRUE(std::filesystem::exists(store_));
    change();
    EXPECT_TRUE(delegate().managedObjectContext()->hasChanges());
    while (undo->canUndo())
        undo->undo();
    EXPECT_THAT(delegate().managedObjectContext()->objects(), ElementsAre());
    EXPECT_FALSE(delegate().managedObjectContext()->hasChanges());
    undo->redo();
    EXPECT_THAT(delegate().managedObjectContext()->objects(), SizeIs(1));
}

TEST_F(DataStoreTest, WithoutAStoreAWindowHasNoUndoManager)
{
    write(data_, "in the way");
    const auto alerts = alertsOf([this] { EXPECT_EQ(delegate().windowWillReturnUndoManager(), nullptr); });
    EXPECT_THAT(alerts, SizeIs(1));
}

} // namespace test
