#pragma once
// Which entities a store can hold.
// A model is a resource folder with one property list, Model.plist: under "entities" a dictionary whose keys are their
// names.

#include <filesystem>
#include <memory>
#include <set>
#include <string>

namespace platform::store {

struct ManagedObjectModel {
    /// None when the folder holds no model that can be read.
    static std::shared_ptr<const ManagedObjectModel> load(const std::filesystem::path& folder);

    std::set<std::string> entities;
};

} // namespace platform::store
