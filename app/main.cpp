// The program: composes the real effects, loads the interface and runs the event loop.

#include "app/AppDelegate.h"
#include "app/ViewController.h"
#include "app/interface/Interface.h"
#include "app/interface/Lifecycle.h"
#include "app/interface/WindowMemory.h"
#include "platform/ErrorAlerts.h"
#include "platform/StreamLog.h"
#include "platform/TerminationSignals.h"
#include "platform/UserPreferences.h"
#include "platform/files/Files.h"
#include "platform/qt/Application.h"
#include "platform/qt/CompletionGate.h"
#include "platform/qt/CurlHttp.h"
#include "platform/qt/QtJson.h"
#include "platform/qt/SystemEffects.h"
#include "platform/qt/UndoStack.h"

#include <unistd.h>

int main(int argc, char* argv[])
{
    platform::qt::Application application(argc, argv);
    platform::files::failBeyondSizeLimits();
    platform::StreamLog log(STDERR_FILENO);
    application.flushWhenIdle(log);
    application.endOnTerminationSignals();
    platform::qt::CompletionGate gate;
    platform::qt::MessageBoxAlerts alerts(gate);
    platform::qt::DesktopWorkspace workspace;
    platform::qt::UserFolders folders;
    platform::qt::CurlHttp http(gate, [] { return platform::terminationSignal() != 0; });
    platform::UserPreferences preferences(KV_BUNDLE_IDENTIFIER);
    platform::qt::QtJson json;
    platform::ErrorAlerts errors(alerts);
    platform::qt::TranslatedTexts localization;
    platform::qt::UndoStacks undoManagers;
    platform::Platform platform{alerts,      workspace, folders, log,          http,
                                preferences, json,      errors,  localization, undoManagers};

    AppDelegate delegate(platform);
    ViewController controller(platform);
    const interface::Interface loaded(controller);
    const interface::Lifecycle lifecycle(delegate, loaded);
    // In a file of its own: what is stored at every quit must not touch the log-in.
    platform::UserPreferences windowPreferences(KV_BUNDLE_IDENTIFIER ".window");
    const interface::WindowMemory memory(windowPreferences, loaded);

    controller.viewDidLoad();
    loaded.mainWindow()->show();
    delegate.applicationDidFinishLaunching();
    return application.run();
}
