#include "platform/store/PersistentStoreCoordinator.h"

#include "platform/files/Files.h"
#include "platform/store/ManagedObjectModel.h"

#include <algorithm>
#include <system_error>

namespace platform::store {

namespace {

constexpr const char* kObjects = "objects";
constexpr const char* kEntity = "entity";
constexpr const char* kAttributes = "attributes";

Error storeError(StoreErrorCode code, const char* failure, const std::filesystem::path& file, std::string reason)
{
    return {std::string(kStoreErrorDomain),
            code,
            {"The store “" + file.native() + "” could not be " + failure + ".", std::move(reason)}};
}

std::string toXml(const ObjectGraph& objects)
{
    plist::Array list;
    for (const ManagedObject& object : objects)
        list.emplace_back(plist::Dictionary{{kEntity, object.entity}, {kAttributes, object.attributes}});
    return plist::write({plist::Dictionary{{kObjects, std::move(list)}}, plist::Form::xml});
}

std::optional<ManagedObject> objectFrom(const plist::Value& value)
{
    const auto* entry = value.asDictionary();
    const auto* entity = entry ? entry->find(kEntity) : nullptr;
    const auto* attributes = entry ? entry->find(kAttributes) : nullptr;
    if (!entity || !entity->asString() || !attributes || !attributes->asDictionary())
        return std::nullopt;
    return ManagedObject{*entity->asString(), *attributes->asDictionary()};
}

std::optional<ObjectGraph> fromXml(std::string_view bytes)
{
    const auto document = plist::parse(bytes);
    const auto* root = document && document->form == plist::Form::xml ? document->root.asDictionary() : nullptr;
    const auto* list = root ? root->find(kObjects) : nullptr;
    if (!list || !list->asArray())
        return std::nullopt;
    ObjectGraph objects;
    for (const plist::Value& value : *list->asArray()) {
        auto object = objectFrom(value);
        if (!object)
            return std::nullopt;
        objects.push_back(std::move(*object));
    }
    return objects;
}

} // namespace

PersistentStoreCoordinator::PersistentStoreCoordinator(std::shared_ptr<const ManagedObjectModel> model)
    : model_(std::move(model))
{}

std::optional<Error> PersistentStoreCoordinator::addStore(const std::filesystem::path& file)
{
    std::error_code error;
    const auto status = std::filesystem::symlink_status(file, error);
    if (status.type() == std::filesystem::file_type::not_found) {
        file_ = file;
        return save({});
    }
    // A save must not put a file in the place of a link.
    const auto target = std::filesystem::is_symlink(status) ? std::filesystem::canonical(file, error) : file;
    file_ = target.empty() ? file : target;
    return open();
}

std::optional<Error> PersistentStoreCoordinator::save(const ObjectGraph& objects)
{
    const std::string bytes = toXml(objects);
    if (fromXml(bytes) != objects)
        return storeError(kStoreUnsuitable, "written", file_, "It was given a value that its format cannot keep.");
    if (!files::writeAtomically(file_, bytes))
        return storeError(kStoreUnwritable, "written", file_,
                          "The disk may be full, or the folder may not be yours to write in.");
    saved_ = objects;
    return std::nullopt;
}

std::optional<Error> PersistentStoreCoordinator::open()
{
    const auto bytes = files::read(file_);
    if (!bytes)
        return storeError(kStoreUnreadable, "opened", file_, "The file cannot be read.");
    auto objects = fromXml(*bytes);
    if (!objects)
        return storeError(kStoreMalformed, "opened", file_, "The file is damaged or is no store.");
    const auto isUnknown = [this](const ManagedObject& object) {
        return !model_ || !model_->entities.contains(object.entity);
    };
    if (std::any_of(objects->begin(), objects->end(), isUnknown))
        return storeError(kStoreNotDescribed, "opened", file_,
                          "It holds objects that this version of the program does not know.");
    saved_ = std::move(*objects);
    return std::nullopt;
}

} // namespace platform::store
