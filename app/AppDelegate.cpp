#include "app/AppDelegate.h"

#include "platform/Error.h"
#include "platform/files/Directory.h"

#include <utility>

using platform::Error;
using platform::store::ManagedObjectContext;
using platform::store::ManagedObjectModel;
using platform::store::PersistentStoreCoordinator;

namespace {

struct StoreFailure {
    std::string reason = "There was an error creating or loading the application's saved data.";
    std::shared_ptr<const Error> underlying;
};

std::optional<StoreFailure> failureFrom(std::optional<Error> error)
{
    if (!error)
        return std::nullopt;
    StoreFailure failure;
    failure.underlying = std::make_shared<const Error>(*std::move(error));
    return failure;
}

/// Sees to it that the folder stands there.
std::optional<StoreFailure> prepareFolder(const std::filesystem::path& folder)
{
    const auto found = platform::files::isDirectory(folder);
    if (const bool* isDirectory = std::get_if<bool>(&found)) {
        if (*isDirectory)
            return std::nullopt;
        return StoreFailure{"Expected a folder to store application data, found a file (" + folder.native() + ").", {}};
    }
    const Error& error = std::get<Error>(found);
    return failureFrom(error.code == platform::kNoSuchFile ? platform::files::createDirectories(folder)
                                                           : std::optional(error));
}

} // namespace

AppDelegate::TerminateReply AppDelegate::applicationShouldTerminate()
{
    if (!managedObjectContext_)
        return TerminateReply::now; // quitting never creates the store
    if (!managedObjectContext_->commitEditing()) {
        platform_.log.write("AppDelegate:applicationShouldTerminate: unable to commit editing to terminate");
        return TerminateReply::cancel;
    }
    const auto error = managedObjectContext_->save();
    if (!error)
        return TerminateReply::now;
    if (platform_.errors.presentError(*error))
        return TerminateReply::cancel;

    const auto localized = [this](const char* english) { return platform_.localization.localizedString(english); };
    const int pressed = platform_.alerts.runModal(
        {localized("Could not save changes while quitting. Quit anyway?"),
         localized("Quitting now will lose any changes you have made since the last successful save"),
         {localized("Quit anyway"), localized("Cancel")}});
    // Meant: each button answers the opposite of its title, and that is relied on.
    return pressed == platform::Alerts::kFirstButton ? TerminateReply::cancel : TerminateReply::now;
}

std::filesystem::path AppDelegate::applicationDocumentsDirectory() const
{
    return platform_.folders.userApplicationSupport() / KV_BUNDLE_IDENTIFIER;
}

std::shared_ptr<const ManagedObjectModel> AppDelegate::managedObjectModel()
{
    if (!managedObjectModel_)
        managedObjectModel_ = ManagedObjectModel::load(platform_.folders.resources() / "kvOrvantaLogic_Tool.momd");
    return managedObjectModel_;
}

PersistentStoreCoordinator* AppDelegate::persistentStoreCoordinator()
{
    if (persistentStoreCoordinator_)
        return persistentStoreCoordinator_.get();

    const auto folder = applicationDocumentsDirectory();
    auto failure = prepareFolder(folder);
    if (!failure) {
        auto coordinator = std::make_unique<PersistentStoreCoordinator>(managedObjectModel());
        failure = failureFrom(coordinator->addStore(folder / "OSXCoreDataObjC.storedata"));
        if (!failure)
            persistentStoreCoordinator_ = std::move(coordinator);
    }
    if (failure) {
        platform_.errors.presentError(
            {"YOUR_ERROR_DOMAIN",
             9999,
             {"Failed to initialize the application's saved data", failure->reason, failure->underlying}});
    }
    return persistentStoreCoordinator_.get();
}

ManagedObjectContext* AppDelegate::managedObjectContext()
{
    if (!managedObjectContext_) {
        if (PersistentStoreCoordinator* coordinator = persistentStoreCoordinator())
            managedObjectContext_ = std::make_unique<ManagedObjectContext>(*coordinator, platform_.undoManagers.make());
    }
    return managedObjectContext_.get();
}

void AppDelegate::saveAction()
{
    ManagedObjectContext* context = managedObjectContext();
    if (!context || !context->commitEditing())
        platform_.log.write("AppDelegate:saveAction: unable to commit editing before saving");
    if (!context)
        return;
    if (const auto error = context->save())
        platform_.errors.presentError(*error);
}

platform::UndoManager* AppDelegate::windowWillReturnUndoManager()
{
    ManagedObjectContext* context = managedObjectContext();
    return context ? &context->undoManager() : nullptr;
}
