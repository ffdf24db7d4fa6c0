#pragma once
// The real windows with the real controller in this process, as the program composes them, over a library below a
// temporary folder.

#include "app/ViewController.h"
#include "app/interface/Interface.h"
#include "platform/StreamLog.h"
#include "platform/qt/SystemPlatform.h"
#include "tests/support/TemporaryHome.h"

#include <memory>
#include <string>

namespace bench {

class Home : public test::TemporaryHome {
public:
    Home();

    std::filesystem::path builtIn() const;
    /// Writes the file of a built-in plug-in with "1 Knob 1", "2 Knob 2", ...; answers its path.
    std::filesystem::path writePlugin(const std::string& name, int parameters) const;
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
    platform::StreamLog log_;
    platform::qt::SystemPlatform system_;
    std::unique_ptr<ViewController> controller_;
    std::unique_ptr<interface::Interface> interface_;
};

} // namespace bench
