#include "platform/store/ManagedObjectModel.h"

#include "platform/files/Files.h"
#include "platform/plist/PropertyList.h"

namespace platform::store {

std::shared_ptr<const ManagedObjectModel> ManagedObjectModel::load(const std::filesystem::path& folder)
{
    const auto bytes = files::read(folder / "Model.plist");
    const auto document = bytes ? plist::parse(*bytes) : std::nullopt;
    const auto* root = document ? document->root.asDictionary() : nullptr;
    const auto* entities = root ? root->find("entities") : nullptr;
    if (!entities || !entities->asDictionary())
        return nullptr;
    auto model = std::make_shared<ManagedObjectModel>();
    for (const auto& [name, description] : entities->asDictionary()->entries)
        model->entities.insert(name);
    return model;
}

} // namespace platform::store
