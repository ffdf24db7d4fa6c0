#include "app/interface/panel/Pot.h"

#include "app/interface/panel/PotDrawing.h"

#include <QApplication>
#include <QFocusEvent>
#include <QHoverEvent>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

#include <algorithm>

namespace interface {

Pot::Pot(int number, QWidget* parent) : QPushButton(QString::number(number), parent), number_(number)
{
    setObjectName(QStringLiteral("kvRotaryBtn%1").arg(number));
    setAutoDefault(false);
    setFocusPolicy(Qt::StrongFocus); // macOS would leave buttons out of the tab order
    setAttribute(Qt::WA_Hover);
}

void Pot::setMapped(bool isMapped)
{
    if (isMapped == isMapped_)
        return;
    isMapped_ = isMapped;
    update();
}

void Pot::setTask(const QString& task)
{
    if (task == task_)
        return;
    task_ = task;
    describe();
}

void Pot::setDifference(const QString& difference)
{
    if (difference == difference_)
        return;
    difference_ = difference;
    describe();
    update();
}

void Pot::setHoldsSelected(bool holdsSelected)
{
    if (holdsSelected == holdsSelected_)
        return;
    holdsSelected_ = holdsSelected;
    describe();
    update();
}

void Pot::describe()
{
    QStringList words;
    if (holdsSelected_)
        words += tr("Holds the selected parameter");
    for (const QString& more : {difference_, task_}) {
        if (!more.isEmpty())
            words += more;
    }
    setAccessibleDescription(words.join(QLatin1String("; ")));
    setToolTip(differs() ? difference_ + QLatin1Char('\n') + task_ : task_);
}

void Pot::setDropTarget(bool isTarget)
{
    if (isTarget == isDropTarget_)
        return;
    isDropTarget_ = isTarget;
    update();
}

void Pot::setChosen(bool isChosen)
{
    if (isChosen == isChosen_)
        return;
    isChosen_ = isChosen;
    update();
}

bool Pot::hitButton(const QPoint& position) const
{
    if (isDown() && !isFar(position)) // a hand that slips over the edge still presses
        return true;
    const QPointF off = QPointF(position) - QRectF(rect()).center();
    const double radius = std::min(width(), height()) / 2.0;
    return QPointF::dotProduct(off, off) <= radius * radius;
}

bool Pot::isFar(const QPoint& position) const
{
    return (position - pressedAt_).manhattanLength() > QApplication::startDragDistance();
}

bool Pot::event(QEvent* event)
{
    if (event->type() == QEvent::HoverEnter || event->type() == QEvent::HoverMove)
        setHovered(hitButton(static_cast<QHoverEvent*>(event)->position().toPoint()));
    else if (event->type() == QEvent::HoverLeave)
        setHovered(false);
    return QPushButton::event(event);
}

void Pot::setHovered(bool isHovered)
{
    if (isHovered == isHovered_)
        return;
    isHovered_ = isHovered;
    update();
}

PotLook Pot::look() const
{
    PotLook look;
    look.number = number_;
    look.isMapped = isMapped_;
    look.isEnabled = isEnabled();
    look.isHovered = isHovered_ && isEnabled();
    look.isPressed = isDown();
    look.hasFocus = hasFocus();
    look.isDropTarget = isDropTarget_;
    look.isChosen = isChosen_;
    look.differs = differs();
    look.holdsSelected = holdsSelected_;
    return look;
}

void Pot::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    drawPot(painter, QRectF(rect()), look(), panelColours(palette()), font());
}

void Pot::focusInEvent(QFocusEvent* event)
{
    QPushButton::focusInEvent(event);
    switch (event->reason()) {
    case Qt::TabFocusReason:
    case Qt::BacktabFocusReason:
    case Qt::ShortcutFocusReason:
    case Qt::OtherFocusReason: Q_EMIT reached(); return;
    default: return; // a click tells by itself what it means; from a menu or another window it comes back
    }
}

void Pot::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
        if (!event->isAutoRepeat()) // a key held down does not lay parameter after parameter
            click();
        return;
    case Qt::Key_Left:
    case Qt::Key_Right:
    case Qt::Key_Up:
    case Qt::Key_Down: event->ignore(); return; // the panel knows the pots beside this one
    default: QPushButton::keyPressEvent(event);
    }
}

void Pot::mousePressEvent(QMouseEvent* event)
{
    pressedAt_ = event->pos();
    const bool chooses = event->modifiers() & (Qt::ShiftModifier | Qt::ControlModifier);
    isPulled_ = chooses && event->button() == Qt::LeftButton && hitButton(pressedAt_);
    if (isPulled_) {
        Q_EMIT clickedToChoose(event->modifiers());
        return;
    }
    QPushButton::mousePressEvent(event);
}

void Pot::mouseMoveEvent(QMouseEvent* event)
{
    if (isPulled_)
        return;
    if (!isFar(event->pos()) || !(event->buttons() & Qt::LeftButton) || !hitButton(pressedAt_)) {
        QPushButton::mouseMoveEvent(event);
        return;
    }
    isPulled_ = true;
    setDown(false);
    setHovered(false);
    Q_EMIT pulled();
}

void Pot::mouseReleaseEvent(QMouseEvent* event)
{
    if (isPulled_)
        setDown(false);
    QPushButton::mouseReleaseEvent(event);
}

} // namespace interface
