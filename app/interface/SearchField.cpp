#include "app/interface/SearchField.h"

#include "platform/qt/Bindings.h"
#include "platform/qt/RecordListView.h"

#include <QAbstractButton>
#include <QApplication>
#include <QKeyEvent>

namespace interface {

SearchField::SearchField(QWidget* parent) : QLineEdit(parent)
{
    setClearButtonEnabled(true);
    connect(this, &QLineEdit::textEdited, this, [this] { wasTypedInto_ = true; });
}

void SearchField::setList(platform::qt::RecordListView* list, const QString& words)
{
    list_ = list;
    setPlaceholderText(words);
    setAccessibleName(words);
    if (auto* clearButton = findChild<QAbstractButton*>())
        clearButton->setAccessibleName(tr("Clear: %1").arg(words));
    platform::qt::bindFilter(list->rows(), this);
}

bool SearchField::event(QEvent* event)
{
    if (event->type() == QEvent::ShortcutOverride) {
        const auto* key = static_cast<QKeyEvent*>(event);
        const bool undoes = key->matches(QKeySequence::Undo);
        const bool redoes = key->matches(QKeySequence::Redo);
        const bool isOwn = wasTypedInto_ && (undoes ? isUndoAvailable() : isRedoAvailable());
        if ((undoes || redoes) && !isOwn) {
            event->ignore();
            return false;
        }
    }
    return QLineEdit::event(event);
}

void SearchField::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Up:
    case Qt::Key_Down:
        if (list_ && !leadsIntoList_)
            QApplication::sendEvent(list_, event);
        else if (list_ && event->key() == Qt::Key_Down)
            list_->enterFromSearch();
        return;
    case Qt::Key_Escape:
        if (!text().isEmpty())
            clear();
        else if (list_)
            list_->setFocus(Qt::ShortcutFocusReason);
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (list_ && leadsIntoList_)
            list_->enterFromSearch();
        else if (list_)
            list_->setFocus(Qt::ShortcutFocusReason);
        return;
    default: QLineEdit::keyPressEvent(event);
    }
}

} // namespace interface
