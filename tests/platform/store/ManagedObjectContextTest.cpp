#include "platform/store/ManagedObjectContext.h"
#include "platform/qt/UndoStack.h"
#include "platform/store/ManagedObjectModel.h"
#include "platform/store/PersistentStoreCoordinator.h"
#include "tests/support/StoreModel.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

using namespace platform::store;
using testing::ElementsAre;

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

    TemporaryFolder folder_;
    Path file_ = folder_ / "some.storedata";
    std::unique_ptr<PersistentStoreCoordinator> coordinator_;
    std::unique_ptr<ManagedObjectContext> context_;
};

} // namespace

TEST_F(ManagedObjectContextTest, SavedObjectsAreFoundWhenTheStoreIsOpenedAgain)
{
    ASSERT_TRUE(context_->insert(note("first")));
    ASSERT_TRUE(context_->insert(note("second")));
    EXPECT_FALSE(context_->save());
    reopen();
    EXPECT_THAT(context_->objects(), ElementsAre(note("first"), note("second")));
    EXPECT_FALSE(context_->hasChanges());
}

TEST_F(ManagedObjectContextTest, OnlyWhatTheModelKnowsCanBeInserted)
{
    EXPECT_FALSE(context_->insert({"Letter", {}}));
    EXPECT_FALSE(context_->hasChanges());
    PersistentStoreCoordinator coordinator(nullptr);
    ASSERT_FALSE(coordinator.addStore(file_));
    EXPECT_FALSE(ManagedObjectContext(coordinator, std::make_unique<platform::qt::UndoStack>()).insert(note("x")));
}

TEST_F(ManagedObjectContextTest, UndoAndRedoMoveTheObjectsAndHasChangesWithThem)
{
    auto& undo = context_->undoManager();
    EXPECT_FALSE(undo.canUndo());
    ASSERT_TRUE(context_->insert(note("first")));
    ASSERT_TRUE(context_->insert(note("second")));
    undo.undo();
    EXPECT_THAT(context_->objects(), ElementsAre(note("first")));
    EXPECT_TRUE(context_->hasChanges());
    undo.undo();
    EXPECT_THAT(context_->objects(), ElementsAre());
    EXPECT_FALSE(context_->hasChanges());
    undo.redo();
    undo.redo();
    EXPECT_THAT(context_->objects(), ElementsAre(note("first"), note("second")));
    EXPECT_TRUE(context_->hasChanges());
}

TEST_F(ManagedObjectContextTest, UndoReachesBackBeyondASave)
{
    ASSERT_TRUE(context_->insert(note("first")));
    ASSERT_FALSE(context_->save());
    EXPECT_FALSE(context_->hasChanges());
    context_->undoManager().undo();
    EXPECT_THAT(context_->objects(), ElementsAre());
    EXPECT_TRUE(context_->hasChanges());
    context_->undoManager().redo();
    EXPECT_FALSE(context_->hasChanges());
}

TEST_F(ManagedObjectContextTest, EditorsCommitUntilOneRefuses)
{
    EXPECT_TRUE(context_->commitEditing());
    bool refuses = false;
    int askedLast = 0;
    const auto first = context_->registerEditor([&] { return context_->insert(note("typed")); });
    auto second = context_->registerEditor([&] { return !refuses; });
    const auto last = context_->registerEditor([&] { return ++askedLast > 0; });
    EXPECT_TRUE(context_->commitEditing());
    EXPECT_THAT(context_->objects(), ElementsAre(note("typed")));
    refuses = true;
    EXPECT_FALSE(context_->commitEditing());
    EXPECT_EQ(askedLast, 1);
    second.disconnect();
    EXPECT_TRUE(context_->commitEditing());
}

} // namespace test
