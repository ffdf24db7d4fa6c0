// The program: composes the real effects, loads the interface and runs the event loop.

#include "app/AppDelegate.h"
#include "app/CommandLine.h"
#include "app/ViewController.h"
#include "app/interface/Interface.h"
#include "app/interface/Lifecycle.h"
#include "app/interface/WindowMemory.h"
#include "platform/files/Files.h"
#include "platform/qt/Application.h"
#include "platform/qt/SystemPlatform.h"

#include <cstddef>
#include <cstdlib>
#include <iostream>

int main(int argc, char* argv[])
{
    // Before there is an application, which would want a screen.
    if (const auto answer = answerTo({argv, static_cast<std::size_t>(argc)})) {
        std::cout << *answer << std::flush;
        return std::cout ? EXIT_SUCCESS : EXIT_FAILURE;
    }

    platform::qt::Application application(argc, argv);
    platform::files::failBeyondSizeLimits();
    platform::qt::SystemPlatform system(KV_BUNDLE_IDENTIFIER);
    application.flushWhenIdle(*system.log);
    application.endOnTerminationSignals();

    AppDelegate delegate(system.platform);
    ViewController controller(system.platform);
    const interface::Interface loaded(controller);
    const interface::Lifecycle lifecycle(delegate, loaded);
    // In a file of its own: what is stored at every quit must not touch the log-in.
    platform::UserPreferences windowPreferences(KV_BUNDLE_IDENTIFIER ".window");
    const interface::WindowMemory memory(windowPreferences, loaded);

    controller.viewDidLoad();
    loaded.mainWindow()->show();
    delegate.applicationDidFinishLaunching();
    const int status = application.run();
    controller.keepDraft(); // whatever ended the program
    return status;
}
