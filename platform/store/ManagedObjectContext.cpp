#include "platform/store/ManagedObjectContext.h"

#include "platform/store/ManagedObjectModel.h"
#include "platform/store/PersistentStoreCoordinator.h"

#include <utility>

namespace platform::store {

ManagedObjectContext::ManagedObjectContext(PersistentStoreCoordinator& coordinator,
                                           std::unique_ptr<UndoManager> undoManager)
    : coordinator_(coordinator), objects_(coordinator.objects()), undoManager_(std::move(undoManager))
{}

bool ManagedObjectContext::insert(const ManagedObject& object)
{
    const ManagedObjectModel* model = coordinator_.model();
    if (!model || !model->entities.contains(object.entity))
        return false;
    objects_.push_back(object);
    undoManager_->remember(
        {}, [this, object] { objects_.push_back(object); }, [this] { objects_.pop_back(); });
    return true;
}

bool ManagedObjectContext::hasChanges() const
{
    return objects_ != coordinator_.objects();
}

std::optional<Error> ManagedObjectContext::save()
{
    if (!hasChanges())
        return std::nullopt;
    auto error = coordinator_.save(objects_);
    if (error)
        error->userInfo.recovery = Recovery{"Try Again", [this] { return coordinator_.save(objects_); }};
    return error;
}

Connection ManagedObjectContext::registerEditor(std::function<bool()> commit)
{
    return editors_.connect([commit = std::move(commit)](bool& committed) { committed = committed && commit(); });
}

bool ManagedObjectContext::commitEditing()
{
    bool committed = true;
    editors_.emit(committed);
    return committed;
}

} // namespace platform::store
