#include "platform/qt/Hover.h"

#include <QCoreApplication>
#include <QHoverEvent>
#include <QWidget>

namespace platform::qt {

void endHover(QWidget& dragged)
{
    constexpr QPointF kOutside(-1, -1);
    QCoreApplication::postEvent(&dragged, new QHoverEvent(QEvent::HoverLeave, kOutside, kOutside, kOutside));
}

} // namespace platform::qt
