#pragma once
// The objects being worked on: a copy of what the store holds, changed here and written back by `save`. Every change
// can be undone. One context at a time works on a store, on the main thread.

#include "platform/Error.h"
#include "platform/UndoManager.h"
#include "platform/controls/Signal.h"
#include "platform/store/ManagedObject.h"

#include <functional>
#include <memory>
#include <optional>

namespace platform::store {

class PersistentStoreCoordinator;

class ManagedObjectContext {
public:
    /// The coordinator must outlive the context.
    ManagedObjectContext(PersistentStoreCoordinator& coordinator, std::unique_ptr<UndoManager> undoManager);
    ManagedObjectContext(const ManagedObjectContext&) = delete;
    ManagedObjectContext& operator=(const ManagedObjectContext&) = delete;

    const ObjectGraph& objects() const { return objects_; }

    /// Adds an object; false when the model has no such entity.
    bool insert(const ManagedObject& object);
    /// Whether the objects differ from those in the store.
    bool hasChanges() const;
    /// Writes the objects if they differ. The error offers the user to try again.
    std::optional<Error> save();

    /// Registers the editor of a bound control as long as the connection lives. `commit` hands what is typed to its
    /// object and answers false when it refuses to.
    [[nodiscard]] Connection registerEditor(std::function<bool()> commit);
    /// Asks the editors until one refuses, and answers whether none did.
    bool commitEditing();

    UndoManager& undoManager() { return *undoManager_; }

private:
    PersistentStoreCoordinator& coordinator_;
    ObjectGraph objects_;
    Signal<bool&> editors_;
    std::unique_ptr<UndoManager> undoManager_;
};

} // namespace platform::store
