#pragma once
// Drags over a widget as they come from elsewhere in the program.

#include "app/interface/DragData.h"

#include <QApplication>
#include <QDragEnterEvent>
#include <QMimeData>
#include <QWidget>

namespace test {

class Dragged {
public:
    Dragged(const char* type, const QByteArray& content) { mime_.setData(QString::fromLatin1(type), content); }
    explicit Dragged(const interface::DragData& drag) : Dragged(drag.type(), drag.content()) {}
    /// What a widget pulls.
    explicit Dragged(const QMimeData& pulled)
    {
        for (const QString& format : pulled.formats())
            mime_.setData(format, pulled.data(format));
    }

    bool enter(QWidget& widget, QPoint at)
    {
        QDragEnterEvent event(at, kActions, &mime_, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&widget, &event);
        return event.isAccepted();
    }
    bool move(QWidget& widget, QPoint at)
    {
        QDragMoveEvent event(at, kActions, &mime_, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&widget, &event);
        return event.isAccepted();
    }
    bool drop(QWidget& widget, QPoint at)
    {
        QDropEvent event(QPointF(at), kActions, &mime_, Qt::LeftButton, Qt::NoModifier);
        QApplication::sendEvent(&widget, &event);
        return event.isAccepted();
    }
    static void leave(QWidget& widget)
    {
        QDragLeaveEvent event;
        QApplication::sendEvent(&widget, &event);
    }
    /// Enters, moves and drops there; whether it could be dropped.
    bool dropOn(QWidget& widget, QPoint at)
    {
        enter(widget, at);
        const bool isWanted = move(widget, at);
        return drop(widget, at) && isWanted;
    }
    bool dropOn(QWidget& widget) { return dropOn(widget, widget.rect().center()); }

private:
    static constexpr Qt::DropActions kActions = Qt::CopyAction | Qt::MoveAction;
    QMimeData mime_;
};

inline interface::DragData draggedParameters(int count, quint64 state = 0)
{
    return {.kind = interface::DragData::Kind::parameters, .state = state, .parameters = count};
}

inline interface::DragData draggedPot(int page, int pot, quint64 state = 0)
{
    return {.kind = interface::DragData::Kind::pot, .state = state, .page = page, .pot = pot};
}

inline interface::DragData draggedPage(int page, quint64 state = 0)
{
    return {.kind = interface::DragData::Kind::page, .state = state, .page = page};
}

} // namespace test
