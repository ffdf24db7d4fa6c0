#pragma once
// Undo and redo of changes that have been made already and are told to the manager.

#include <functional>
#include <memory>
#include <string>

namespace platform {

class UndoManager {
public:
    using Change = std::function<void()>;

    virtual ~UndoManager() = default;
    /// Remembers how to make a change again and how to take it back; `name` is what a menu says of it. What was undone
    /// before and not redone is forgotten. Neither function may call the manager.
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
