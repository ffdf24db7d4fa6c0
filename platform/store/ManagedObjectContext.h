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
#include <string>

namespace platform::store {

class PersistentStoreCoordinator;

class ManagedObjectContext {
public:
    /// The coordinator must outlive the context.
    ManagedObjectContext(PersistentStoreCoordinator& coordinator, std::unique_ptr<UndoManager> undoManager);
    ManagedObjectContext(const ManagedObjectContext&) = delete;
    ManagedObjectContext& operator=(const ManagedObjectContext&) = delete;

    const ObjectGraph& objects() const { return objects_; }

    /// A new object without attributes; none when the model has no such entity.
    std::optional<ObjectId> insert(const std::string& entity);
    /// False when there is no such object, or the model does not have that attribute with that type.
    bool setValue(ObjectId id, const std::string& attribute, plist::Value value);
    /// False when there is no such object.
    bool remove(ObjectId id);

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
    /// Puts the object in its place as an undoable change, or takes it away when there is none.
    void change(ObjectId id, std::optional<ManagedObject> object);
    void put(ObjectId id, const std::optional<ManagedObject>& object);

    PersistentStoreCoordinator& coordinator_;
    ObjectGraph objects_;
    Signal<bool&> editors_;
    std::unique_ptr<UndoManager> undoManager_;
};

} // namespace platform::store
