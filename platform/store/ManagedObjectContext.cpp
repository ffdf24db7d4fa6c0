#include "platform/store/ManagedObjectContext.h"

#include "platform/store/ManagedObjectModel.h"
#include "platform/store/PersistentStoreCoordinator.h"

#include <utility>

namespace platform::store {

ManagedObjectContext::ManagedObjectContext(PersistentStoreCoordinator& coordinator,
                                           std::unique_ptr<UndoManager> undoManager)
    : coordinator_(coordinator), objects_(coordinator.objects()), undoManager_(std::move(undoManager))
{}

std::optional<ObjectId> ManagedObjectContext::insert(const std::string& entity)
{
    const ManagedObjectModel* model = coordinator_.model();
    if (!model || !model->hasEntity(entity))
        return std::nullopt;
    const ObjectId id = coordinator_.newObjectId();
    change(id, ManagedObject{entity, {}});
    return id;
}

bool ManagedObjectContext::setValue(ObjectId id, const std::string& attribute, plist::Value value)
{
    const auto found = objects_.find(id);
    // Where there is an object, there is a model.
    if (found == objects_.end() || !coordinator_.model()->accepts(found->second.entity, attribute, value))
        return false;
    ManagedObject object = found->second;
    object.attributes[attribute] = std::move(value);
    change(id, std::move(object));
    return true;
}

bool ManagedObjectContext::remove(ObjectId id)
{
    if (!objects_.contains(id))
        return false;
    change(id, std::nullopt);
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

void ManagedObjectContext::change(ObjectId id, std::optional<ManagedObject> object)
{
    const auto found = objects_.find(id);
    auto before = found == objects_.end() ? std::nullopt : std::optional(found->second);
    undoManager_->perform([this, id, after = std::move(object)] { put(id, after); },
                          [this, id, before = std::move(before)] { put(id, before); });
}

void ManagedObjectContext::put(ObjectId id, const std::optional<ManagedObject>& object)
{
    if (object)
        objects_.insert_or_assign(id, *object);
    else
        objects_.erase(id);
}

} // namespace platform::store
