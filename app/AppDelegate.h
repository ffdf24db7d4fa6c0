#pragma once
// The application's delegate: what happens at launch and whether quitting may go ahead. Takes no part in editing.

class AppDelegate {
public:
    enum class TerminateReply { cancel = 0, now = 1 };

    void applicationDidFinishLaunching() {}
    bool applicationShouldTerminateAfterLastWindowClosed() const { return true; }
    TerminateReply applicationShouldTerminate();
    void applicationWillTerminate() {}
};
