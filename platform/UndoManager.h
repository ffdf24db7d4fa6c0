#pragma once
// Undo and redo of changes that were made through the manager.

#include <functional>
#include <memory>

namespace platform {

class UndoManager {
public:
    using Change = std::function<void()>;

    virtual ~UndoManager() = default;
    /// Makes a change and remembers how to take it back. What was undone before and not redone is forgotten. Neither
    /// function may call the manager.
    virtual void perform(Change change, Change takeBack) = 0;
    virtual bool canUndo() const = 0;
    virtual bool canRedo() const = 0;
    /// Takes back the last change, or makes it again. Nothing happens when there is none.
    virtual void undo() = 0;
    virtual void redo() = 0;
};

class UndoManagers {
public:
    virtual ~UndoManagers() = default;
    virtual std::unique_ptr<UndoManager> make() = 0;
};

} // namespace platform
