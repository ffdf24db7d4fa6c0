#pragma once
// The application's delegate: what happens at launch, the application's own data store, and whether quitting may go
// ahead. Takes no part in editing. Model, coordinator and context are made on first use and kept; what could not be
// made is tried again on the next use.

#include "platform/Effects.h"
#include "platform/store/ManagedObjectContext.h"
#include "platform/store/ManagedObjectModel.h"
#include "platform/store/PersistentStoreCoordinator.h"

#include <filesystem>
#include <memory>

class AppDelegate {
public:
    enum class TerminateReply { cancel = 0, now = 1 };

    explicit AppDelegate(platform::Platform& platform) : platform_(platform) {}

    void applicationDidFinishLaunching() {}
    bool applicationShouldTerminateAfterLastWindowClosed() const { return true; }
    /// Saves the store if it was used and has changes. Asks the user when that fails.
    TerminateReply applicationShouldTerminate();
    void applicationWillTerminate() {}

    /// The folder of the store's file; not created here.
    std::filesystem::path applicationDocumentsDirectory() const;
    /// None when the resource cannot be loaded.
    std::shared_ptr<const platform::store::ManagedObjectModel> managedObjectModel();
    /// Null when the folder or the store failed; the user has been told why then.
    platform::store::PersistentStoreCoordinator* persistentStoreCoordinator();
    /// Null when there is no coordinator.
    platform::store::ManagedObjectContext* managedObjectContext();

    void saveAction();
    /// Null when there is no context.
    platform::UndoManager* windowWillReturnUndoManager();

private:
    platform::Platform& platform_;
    std::shared_ptr<const platform::store::ManagedObjectModel> managedObjectModel_;
    std::unique_ptr<platform::store::PersistentStoreCoordinator> persistentStoreCoordinator_;
    std::unique_ptr<platform::store::ManagedObjectContext> managedObjectContext_;
};
