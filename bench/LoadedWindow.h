#pragma once
// The real windows with the real controller in this process, as the program composes them, over a library below a
// temporary folder.

#include "app/ViewController.h"
#include "app/interface/Interface.h"
#include "platform/ErrorAlerts.h"
#include "platform/StreamLog.h"
#include "platform/UserPreferences.h"
#include "platform/qt/CompletionGate.h"
#include "platform/qt/CurlHttp.h"
#include "platform/qt/QtJson.h"
#include "platform/qt/SystemEffects.h"
#include "platform/qt/UndoStack.h"
#include "tests/support/TemporaryFolder.h"

#include <string>

namespace bench {

/// A folder that HOME and the other roots of the program point into while it lives.
class Home {
public:
    Home();

    std::filesystem::path builtIn() const;
    /// Writes the file of a built-in plug-in with "1 Knob 1", "2 Knob 2", ...; answers its path.
    std::filesystem::path writePlugin(const std::string& name, int parameters) const;
    std::filesystem::path path() const { return folder_.path(); }

private:
    test::TemporaryFolder folder_;
};

class LoadedWindow {
public:
    /// The log goes to the file.
    explicit LoadedWindow(const Home& home);
    LoadedWindow(const LoadedWindow&) = delete;
    LoadedWindow& operator=(const LoadedWindow&) = delete;
    ~LoadedWindow();

    ViewController& controller() { return *controller_; }
    template <typename T = QWidget>
    T* find(const char* name) const
    {
        return interface_->find<T>(name);
    }
    /// Chooses a plug-in by its row, as a click does, until all that follows is done and painted.
    void choose(const std::string& plugin);
    void flushLog() { log_.flush(); }

    /// Handles what is queued, painting included.
    static void settle();

private:
    int logDescriptor_;
    platform::qt::CompletionGate gate_;
    platform::qt::MessageBoxAlerts alerts_{gate_};
    platform::qt::DesktopWorkspace workspace_;
    platform::qt::UserFolders folders_;
    platform::StreamLog log_;
    platform::qt::CurlHttp http_{gate_};
    platform::UserPreferences preferences_{"org.example.kv-bench"};
    platform::qt::QtJson json_;
    platform::ErrorAlerts errors_{alerts_};
    platform::qt::TranslatedTexts localization_;
    platform::qt::UndoStacks undoManagers_;
    platform::Platform platform_;
    std::unique_ptr<ViewController> controller_;
    std::unique_ptr<interface::Interface> interface_;
};

} // namespace bench
