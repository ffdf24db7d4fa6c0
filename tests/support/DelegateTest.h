#pragma once
// The delegate with its data store in a data folder of the test's own, behind the real windows. Its model is the
// test's, so that there is something to store.

#include "app/AppDelegate.h"
#include "app/interface/Lifecycle.h"
#include "tests/support/Obstacles.h"
#include "tests/support/StoreModel.h"
#include "tests/support/WindowTest.h"

#include <optional>

namespace test {

/// The user's folders, with resources from another place.
class FoldersWithResources final : public platform::Folders {
public:
    explicit FoldersWithResources(Path resources) : resources_(std::move(resources)) {}

    Path home() const override { return user_.home(); }
    Path localApplicationSupport() const override { return user_.localApplicationSupport(); }
    Path userApplicationSupport() const override { return user_.userApplicationSupport(); }
    Path drafts() const override { return user_.drafts(); }
    Path resources() const override { return resources_; }

private:
    platform::qt::UserFolders user_;
    Path resources_;
};

/// Presents errors as they are and remembers them.
class RecordingErrors final : public platform::ErrorPresentation {
public:
    explicit RecordingErrors(platform::ErrorPresentation& real) : real_(real) {}

    bool presentError(const platform::Error& error) override
    {
        presented.push_back(error);
        return real_.presentError(error);
    }

    std::vector<platform::Error> presented;

private:
    platform::ErrorPresentation& real_;
};

class DelegateTest : public WindowTest {
protected:
    DelegateTest() { writeStoreModel(model_); }
    ~DelegateTest() override { lifecycle_.reset(); }

    /// Loads the interface and lets the delegate decide about it.
    void launchWithDelegate()
    {
        lifecycle_.reset();
        launch();
        lifecycle_.emplace(delegate_, loaded());
    }

    AppDelegate& delegate() { return delegate_; }
    /// Inserts an object, so that the context has changes. A large one does not fit on a full disk.
    void change(std::size_t size = 5)
    {
        auto* context = delegate_.managedObjectContext();
        ASSERT_TRUE(context);
        ASSERT_TRUE(context->insert({"Note", {{"title", std::string(size, 'x')}}}));
    }
    /// How many objects a fresh coordinator finds in the store's file.
    std::size_t storedObjects() const
    {
        platform::store::PersistentStoreCoordinator coordinator(platform::store::ManagedObjectModel::load(model_));
        EXPECT_FALSE(coordinator.addStore(store_));
        return coordinator.objects().size();
    }

    const std::vector<platform::Error>& presentedErrors() const { return errors_.presented; }

    static constexpr std::size_t kLarge = 20000;
    static constexpr rlim_t kSmallDisk = 10000;

    Path data_ = dataBelow(home_.path()) / KV_BUNDLE_IDENTIFIER;
    Path store_ = data_ / "OSXCoreDataObjC.storedata";
    Path model_ = home_ / "resources/kvOrvantaLogic_Tool.momd";

private:
    FoldersWithResources folders_{home_ / "resources"};
    RecordingErrors errors_{platform().errors};
    platform::qt::SystemPlatform effects_{kPreferences, {nullptr, &workspace_, &folders_, &log_, &errors_}};
    AppDelegate delegate_{effects_.platform};
    std::optional<interface::Lifecycle> lifecycle_;
};

} // namespace test
