#include "platform/qt/UndoStack.h"

#include "platform/qt/Text.h"

#include <utility>

namespace platform::qt {

namespace {

class Command final : public QUndoCommand {
public:
    Command(const QString& name, UndoManager::Change change, UndoManager::Change takeBack)
        : QUndoCommand(name), change_(std::move(change)), takeBack_(std::move(takeBack))
    {}

    void redo() override
    {
        if (!std::exchange(isMade_, false))
            change_();
    }
    void undo() override { takeBack_(); }

private:
    bool isMade_ = true; ///< when pushed, so that pushing, which calls redo, does not make the change twice
    UndoManager::Change change_;
    UndoManager::Change takeBack_;
};

} // namespace

void UndoStack::remember(const std::string& name, Change change, Change takeBack)
{
    stack_.push(new Command(toQt(name), std::move(change), std::move(takeBack)));
}

std::string UndoStack::undoName() const
{
    return fromQt(stack_.undoText());
}

std::string UndoStack::redoName() const
{
    return fromQt(stack_.redoText());
}

} // namespace platform::qt
