#include "platform/store/ManagedObjectModel.h"

#include "platform/files/Files.h"

#include <algorithm>
#include <variant>

namespace platform::store {

namespace {

template <typename T>
bool is(const plist::Value& value)
{
    return std::holds_alternative<T>(value.held);
}

bool isReal(const plist::Value& value)
{
    const auto* real = std::get_if<plist::Real>(&value.held);
    return real && !real->single; // XML keeps one width only
}

} // namespace

std::shared_ptr<const ManagedObjectModel> ManagedObjectModel::load(const std::filesystem::path& folder)
{
    const auto bytes = files::read(folder / "Model.plist");
    const auto document = bytes ? plist::parse(*bytes) : std::nullopt;
    const auto* root = document ? document->root.asDictionary() : nullptr;
    const auto* entities = root ? root->find("entities") : nullptr;
    if (!entities || !entities->asDictionary())
        return nullptr;
    auto model = std::make_shared<ManagedObjectModel>();
    for (const auto& [name, description] : entities->asDictionary()->entries) {
        if (!model->readEntity(name, description))
            return nullptr;
    }
    return model;
}

bool ManagedObjectModel::accepts(const std::string& entity, const std::string& attribute,
                                 const plist::Value& value) const
{
    const auto attributes = entities_.find(entity);
    if (attributes == entities_.end())
        return false;
    const auto check = attributes->second.find(attribute);
    return check != attributes->second.end() && check->second(value);
}

bool ManagedObjectModel::describes(const ManagedObject& object) const
{
    return hasEntity(object.entity) && std::ranges::all_of(object.attributes, [&](const auto& attribute) {
               return accepts(object.entity, attribute.first, attribute.second);
           });
}

ManagedObjectModel::TypeCheck ManagedObjectModel::checkFor(const plist::Value& type)
{
    static const std::map<std::string, TypeCheck> kChecks = {
        {"string", is<std::string>}, {"integer", is<plist::Integer>}, {"real", isReal},
        {"boolean", is<bool>},       {"data", is<plist::Data>},
    };
    const auto* name = type.asString();
    const auto check = name ? kChecks.find(*name) : kChecks.end();
    return check == kChecks.end() ? nullptr : check->second;
}

bool ManagedObjectModel::readEntity(const std::string& name, const plist::Value& description)
{
    const auto* attributes = description.asDictionary();
    if (!attributes)
        return false;
    for (const auto& [attribute, type] : attributes->entries) {
        if (!(entities_[name][attribute] = checkFor(type)))
            return false;
    }
    entities_[name]; // an entity may have no attributes
    return true;
}

} // namespace platform::store
