#pragma once
// Keeps the main window's place, size and splits from run to run.

#include <string>

class QWidget;

namespace platform {
class Preferences;
}

namespace interface {

class Interface;

class WindowMemory {
public:
    /// Puts the window where it was last time; both must outlive it.
    WindowMemory(platform::Preferences& preferences, const Interface& loaded);
    WindowMemory(const WindowMemory&) = delete;
    WindowMemory& operator=(const WindowMemory&) = delete;
    /// Stores where the window is now, unless nothing is different.
    ~WindowMemory();

private:
    std::string state() const;

    platform::Preferences& preferences_;
    const Interface& loaded_;
    std::string before_;
};

} // namespace interface
