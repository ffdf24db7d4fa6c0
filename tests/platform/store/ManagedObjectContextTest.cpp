#include "platform/store/ManagedObjectContext.h"
#include "platform/qt/UndoStack.h"
#include "platform/store/ManagedObjectModel.h"
#include "platform/store/PersistentStoreCoordinator.h"
#include "tests/support/Obstacles.h"
#include "tests/support/StoreModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace platform::store;
using testing::ElementsAre;
using testing::Pair;

namespace plist = platform::plist;

namespace test {

namespace {

ManagedObject note(const char* title)
{
    return {"Note", {{"title", title}}};
}

class ManagedObjectContextTest : public testing::Test {
protected:
    ManagedObjectContextTest()
    {
        writeStoreModel(folder_ / "model");
        reopen();
    }

    /// A new coordinator and a new context, as in the program's next run.
    void reopen()
    {
        context_.reset();
        coordinator_ = std::make_unique<PersistentStoreCoordinator>(ManagedObjectModel::load(folder_ / "model"));
        if (coordinator_->addStore(file_))
            throw std::runtime_error("the store cannot be opened");
        context_ = std::make_unique<ManagedObjectContext>(*coordinator_, std::make_unique<platform::qt::UndoStack>());
    }

    ObjectId insertNote(const char* title)
    {
        const ObjectId id = context_->insert("Note").value();
        EXPECT_TRUE(context_->setValue(id, "title", title));
        return id;
    }

    TemporaryFolder folder_;
    Path file_ = folder_ / "some.storedata";
    std::unique_ptr<PersistentStoreCoordinator> coordinator_;
    std::unique_ptr<ManagedObjectContext> context_;
};

} // namespace

TEST_F(ManagedObjectContextTest, SavedObjectsAreFoundWhenTheStoreIsOpenedAgain)
{
    insertNote("first");
    insertNote("second");
    EXPECT_FALSE(context_->save());
    reopen();
    EXPECT_THAT(context_->objects(), ElementsAre(Pair(1, note("first")), Pair(2, note("second"))));
    EXPECT_FALSE(context_->hasChanges());

    ASSERT_TRUE(context_->setValue(1, "title", "changed"));
    ASSERT_TRUE(context_->remove(2));
    EXPECT_EQ(context_->insert("Marker"), 3);
    EXPECT_FALSE(context_->save());
    reopen();
    EXPECT_THAT(context_->objects(), ElementsAre(Pair(1, note("changed")), Pair(2, ManagedObject{"Marker", {}})));
}

TEST_F(ManagedObjectContextTest, ChangesTheModelDoesNotAllowAreRefused)
{
    EXPECT_FALSE(context_->insert("Letter"));
    EXPECT_FALSE(context_->setValue(1, "title", "x"));
    EXPECT_FALSE(context_->remove(1));
    EXPECT_FALSE(context_->hasChanges());
    const ObjectId id = insertNote("x");
    EXPECT_FALSE(context_->setValue(id, "title", plist::Integer(1)));
    EXPECT_FALSE(context_->setValue(id, "colour", "red"));
    EXPECT_EQ(context_->objects().at(id), note("x"));
}

TEST_F(ManagedObjectContextTest, WithoutAModelNothingCanBeInserted)
{
    PersistentStoreCoordinator coordinator(nullptr);
    ASSERT_FALSE(coordinator.addStore(file_));
    ManagedObjectContext context(coordinator, std::make_unique<platform::qt::UndoStack>());
    EXPECT_FALSE(context.insert("Note"));
}

TEST_F(ManagedObjectContextTest, UndoAndRedoMoveTheObjectsAndHasChangesWithThem)
{
    auto& undo = context_->undoManager();
    EXPECT_FALSE(undo.canUndo());
    const ObjectId id = insertNote("first"); // two changes: inserted, titled
    undo.undo();
    EXPECT_THAT(context_->objects(), ElementsAre(Pair(id, ManagedObject{"Note", {}})));
    EXPECT_TRUE(context_->hasChanges());
    undo.undo();
    EXPECT_THAT(context_->objects(), ElementsAre());
    EXPECT_FALSE(context_->hasChanges());
    undo.redo();
    undo.redo();
    EXPECT_THAT(context_->objects(), ElementsAre(Pair(id, note("first"))));
    EXPECT_TRUE(context_->hasChanges());
}

TEST_F(ManagedObjectContextTest, UndoReachesBackBeyondASave)
{
    const ObjectId id = insertNote("first");
    ASSERT_FALSE(context_->save());
    EXPECT_FALSE(context_->hasChanges());
    ASSERT_TRUE(context_->remove(id));
    EXPECT_TRUE(context_->hasChanges());
    context_->undoManager().undo();
    EXPECT_THAT(context_->objects(), ElementsAre(Pair(id, note("first"))));
    EXPECT_FALSE(context_->hasChanges());
    context_->undoManager().undo();
    EXPECT_TRUE(context_->hasChanges());
    context_->undoManager().redo();
    EXPECT_FALSE(context_->hasChanges());
}

TEST_F(ManagedObjectContextTest, WithoutChangesNothingIsWritten)
{
    insertNote("first");
    ASSERT_FALSE(context_->save());
    std::filesystem::remove(file_);
    EXPECT_FALSE(context_->save());
    EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(ManagedObjectContextTest, AFailedSaveKeepsTheChangesAndCanBeTriedAgain)
{
    insertNote(std::string(5000, 'x').c_str());
    std::optional<platform::Error> error;
    {
        const FullDisk disk(1024);
        error = context_->save();
        ASSERT_TRUE(error && error->userInfo.recovery);
        EXPECT_EQ(error->userInfo.recovery->option, "Try Again");
        const auto still = error->userInfo.recovery->attempt();
        ASSERT_TRUE(still);
        EXPECT_EQ(still->code, error->code);
        EXPECT_TRUE(context_->hasChanges());
    }
    EXPECT_FALSE(error->userInfo.recovery->attempt());
    EXPECT_FALSE(context_->hasChanges());
}

TEST_F(ManagedObjectContextTest, EditorsCommitUntilOneRefuses)
{
    EXPECT_TRUE(context_->commitEditing());
    const ObjectId id = insertNote("before");
    bool refuses = false;
    int askedLast = 0;
    const auto first = context_->registerEditor([&] { return context_->setValue(id, "title", "typed"); });
    auto second = context_->registerEditor([&] { return !refuses; });
    const auto last = context_->registerEditor([&] { return ++askedLast > 0; });
    EXPECT_TRUE(context_->commitEditing());
    EXPECT_EQ(context_->objects().at(id), note("typed"));
    refuses = true;
    EXPECT_FALSE(context_->commitEditing());
    EXPECT_EQ(askedLast, 1);
    second.disconnect();
    EXPECT_TRUE(context_->commitEditing());
}

} // namespace test
