#pragma once
// Undo managers over Qt's undo framework.

#include "platform/UndoManager.h"

#include <QUndoStack>

namespace platform::qt {

class UndoStack final : public UndoManager {
public:
    void remember(const std::string& name, Change change, Change takeBack) override;
    bool canUndo() const override { return stack_.canUndo(); }
    bool canRedo() const override { return stack_.canRedo(); }
    std::string undoName() const override;
    std::string redoName() const override;
    void undo() override { stack_.undo(); }
    void redo() override { stack_.redo(); }
    void forgetAll() override { stack_.clear(); }

private:
    QUndoStack stack_;
};

class UndoStacks final : public UndoManagers {
public:
    std::unique_ptr<UndoManager> make() override { return std::make_unique<UndoStack>(); }
};

} // namespace platform::qt
