#pragma once
// Stands between a context and the store's file. The file is an XML property list with every object; it is replaced
// as a whole, so that a failed save leaves it as it was.

#include "platform/Error.h"
#include "platform/store/ManagedObject.h"

#include <filesystem>
#include <memory>
#include <optional>
#include <string_view>

namespace platform::store {

struct ManagedObjectModel;

inline constexpr std::string_view kStoreErrorDomain = "StoreErrorDomain";
enum StoreErrorCode { kStoreUnreadable = 1, kStoreMalformed, kStoreNotDescribed, kStoreUnwritable, kStoreUnsuitable };

class PersistentStoreCoordinator {
public:
    /// Without a model there are no entities, so the store has to be empty.
    explicit PersistentStoreCoordinator(std::shared_ptr<const ManagedObjectModel> model);

    const ManagedObjectModel* model() const { return model_.get(); }

    /// Opens the store, or makes an empty one where there is no file. Not to be used further when that fails.
    std::optional<Error> addStore(const std::filesystem::path& file);

    /// The objects as the store's file has them.
    const ObjectGraph& objects() const { return saved_; }

    /// Replaces the store's content. Refused is also what would not be read back as it is: a text with a control
    /// character or no UTF-8, more than a property list may hold.
    std::optional<Error> save(const ObjectGraph& objects);

private:
    std::optional<Error> open();

    std::shared_ptr<const ManagedObjectModel> model_;
    std::filesystem::path file_;
    ObjectGraph saved_;
};

} // namespace platform::store
