#include "platform/qt/UndoStack.h"

#include <utility>

namespace platform::qt {

namespace {

class Command final : public QUndoCommand {
public:
    Command(UndoManager::Change change, UndoManager::Change takeBack)
        : change_(std::move(change)), takeBack_(std::move(takeBack))
    {}

    void redo() override { change_(); }
    void undo() override { takeBack_(); }

private:
    UndoManager::Change change_;
    UndoManager::Change takeBack_;
};

} // namespace

void UndoStack::perform(Change change, Change takeBack)
{
    stack_.push(new Command(std::move(change), std::move(takeBack))); // pushing makes the change
}

} // namespace platform::qt
