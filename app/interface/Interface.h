#pragma once
// The loaded interface: the four windows, their controls, and the wiring of outlets and actions by object name. Keeps
// the windows and the wiring alive; the controller must outlive it.

#include "platform/Controls.h"

#include <QWidget>

#include <memory>
#include <vector>

class QAction;
class ViewController;

namespace platform {
class Record;
}

namespace interface {

class EditingView;

class Interface {
public:
    /// Makes the windows, sets every outlet of the controller and connects every action. Shows nothing yet.
    explicit Interface(ViewController& controller);
    Interface(const Interface&) = delete;
    Interface& operator=(const Interface&) = delete;
    ~Interface();

    QWidget* mainWindow() const { return windows_.front().get(); }
    /// A tool tip with the shortcut of the menu item that does the same.
    static QString withShortcut(const QString& toolTip, const QAction& item);
    /// The object of that name and type in any of the windows, or null.
    template <typename T>
    T* find(const char* name) const
    {
        for (const auto& window : windows_) {
            if (window->objectName() == QLatin1String(name)) {
                if (auto* self = qobject_cast<T*>(window.get()))
                    return self;
            }
            if (auto* child = window->findChild<T*>(QLatin1String(name)))
                return child;
        }
        return nullptr;
    }

private:
    void connectTextFields();
    void connectButtons();
    void connectWindows();
    void connectModeSwitch();
    void connectLists();
    void connectActions();
    void connectPanel();
    void tellShortcuts();
    /// What the list says of where a parameter stands.
    QString potsOf(const platform::Record& parameter) const;

    ViewController& controller_;
    std::vector<std::unique_ptr<QWidget>> windows_;
    /// The label that the controller refers to without owning it.
    std::shared_ptr<platform::TextField> loggedInAs_;
    std::vector<platform::Connection> connections_;
    std::unique_ptr<EditingView> editing_; // goes first: it follows the others
};

} // namespace interface
