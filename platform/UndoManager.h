#pragma once
// Undo and redo of changes, either made through the manager or made already and told to it.

#include <functional>
#include <memory>
#include <string>

namespace platform {

class UndoManager {
public:
    using Change = std::function<void()>;

    virtual ~UndoManager() = default;
    /// Makes a change and remembers how to take it back. What was undone before and not redone is forgotten. Neither
    /// function may call the manager.
    virtual void perform(Change change, Change takeBack) = 0;
    /// The same for a change that has been made already; `name` is what a menu says of it.
    virtual void remember(const std::string& name, Change change, Change takeBack) = 0;
    virtual bool canUndo() const = 0;
    virtual bool canRedo() const = 0;
    /// Name of the change that would be taken back, or made again; empty when there is none.
    virtual std::string undoName() const = 0;
    virtual std::string redoName() const = 0;
    /// Takes back the last change, or makes it again. Nothing happens when there is none.
    virtual void undo() = 0;
    virtual void redo() = 0;
    virtual void forgetAll() = 0;
};

class UndoManagers {
public:
    virtual ~UndoManagers() = default;
    virtual std::unique_ptr<UndoManager> make() = 0;
};

} // namespace platform
