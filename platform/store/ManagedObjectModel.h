#pragma once
// Which entities a store can hold and which attributes they have.
// A model is a resource folder with one property list, Model.plist: under "entities" a dictionary of entity names, each
// with a dictionary of attribute names and their types, "string", "integer", "real", "boolean" or "data".

#include "platform/store/ManagedObject.h"

#include <filesystem>
#include <memory>

namespace platform::store {

class ManagedObjectModel {
public:
    /// None when the folder holds no model that can be read.
    static std::shared_ptr<const ManagedObjectModel> load(const std::filesystem::path& folder);

    bool hasEntity(const std::string& entity) const { return entities_.contains(entity); }
    /// Whether the entity has that attribute and the value is of its type.
    bool accepts(const std::string& entity, const std::string& attribute, const plist::Value& value) const;
    /// Whether the object's entity exists and all its attributes are accepted.
    bool describes(const ManagedObject& object) const;

private:
    using TypeCheck = bool (*)(const plist::Value&);
    using Attributes = std::map<std::string, TypeCheck>;

    static TypeCheck checkFor(const plist::Value& type);
    bool readEntity(const std::string& name, const plist::Value& description);

    std::map<std::string, Attributes> entities_;
};

} // namespace platform::store
