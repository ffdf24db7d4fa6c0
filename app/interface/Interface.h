#pragma once
// The loaded interface: the four windows, their controls, and the wiring of outlets and actions by object name. Keeps
// the windows and the wiring alive; the controller must outlive it.

#include "platform/controls/Controls.h"

#include <QWidget>

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

class QAction;
class ViewController;

namespace interface {

class ContextMenus;
class ComparisonView;
class EditingView;
class ListsView;
class PageOverview;
class PreviewView;
struct Action;

class Interface {
public:
    /// Makes the windows, sets every outlet of the controller and connects every action. Shows nothing yet.
    explicit Interface(ViewController& controller);
    Interface(const Interface&) = delete;
    Interface& operator=(const Interface&) = delete;
    ~Interface();

    QWidget* mainWindow() const { return windows_.front().get(); }
    /// The object of that name and type in any of the windows, or null: of what the windows were made with and keep.
    /// Names may come twice in different types.
    template <typename T>
    T* find(const char* name) const
    {
        const auto [first, last] = named_.equal_range(name);
        for (auto entry = first; entry != last; ++entry) {
            if (auto* object = qobject_cast<T*>(entry->second))
                return object;
        }
        return nullptr;
    }

private:
    void nameObjects();
    void connectTextFields();
    void connectWindows();
    void connectModeSwitch();
    void connectLists();
    void connectActions();
    void connectCall(const Action& action, QAction* item);
    void connectPanel();
    /// What operations that need a pot or a page mean while this has the focus.
    void choosePots(const QWidget* focused);
    void connectPages(PageOverview& overview);

    ViewController& controller_;
    std::vector<std::unique_ptr<QWidget>> windows_;
    /// Windows and all that was made with them. A walk through the windows for each of the hundred names would take
    /// longer than making what they name.
    std::multimap<std::string, QObject*, std::less<>> named_;
    /// The label that the controller refers to without owning it.
    std::shared_ptr<platform::TextField> loggedInAs_;
    std::vector<platform::Connection> connections_;
    std::unique_ptr<ContextMenus> contextMenus_;
    std::unique_ptr<ListsView> lists_; // these go first: they follow the others
    std::unique_ptr<EditingView> editing_;
    std::unique_ptr<ComparisonView> comparison_;
    std::unique_ptr<PreviewView> preview_;
};

} // namespace interface
