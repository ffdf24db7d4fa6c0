#include "platform/qt/ElidedLabel.h"

#include "platform/qt/PlainToolTips.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QStyleOption>

namespace platform::qt {

ElidedLabel::ElidedLabel(QWidget* parent) : QLabel(parent)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void ElidedLabel::setElideMode(Qt::TextElideMode mode)
{
    mode_ = mode;
    update();
}

QSize ElidedLabel::sizeHint() const
{
    const QMargins margins = contentsMargins();
    const QSize text(fontMetrics().horizontalAdvance(singleLine()), fontMetrics().height());
    return text.grownBy(margins) + QSize(2 * margin(), 2 * margin());
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {fontMetrics().averageCharWidth() * 3, sizeHint().height()};
}

bool ElidedLabel::event(QEvent* event)
{
    const bool isShortened = fontMetrics().horizontalAdvance(singleLine()) > textArea().width();
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty() && isShortened) {
        showPlainToolTip(static_cast<QHelpEvent*>(event)->globalPos(), text(), this);
        return true;
    }
    return QLabel::event(event);
}

void ElidedLabel::paintEvent(QPaintEvent*)
{
    QPainter painter(this);
    QStyleOption option;
    option.initFrom(this);
    style()->drawPrimitive(QStyle::PE_Widget, &option, &painter, this);
    const QRect area = textArea();
    const QString shown = fontMetrics().elidedText(singleLine(), mode_, area.width());
    const auto aligned = QStyle::visualAlignment(layoutDirection(), alignment());
    style()->drawItemText(&painter, area, static_cast<int>(aligned) | Qt::TextSingleLine, palette(), isEnabled(), shown,
                          foregroundRole());
}

QRect ElidedLabel::textArea() const
{
    return contentsRect().adjusted(margin(), margin(), -margin(), -margin());
}

QString ElidedLabel::singleLine() const
{
    QString line = text();
    line.replace(QLatin1Char('\n'), QLatin1Char(' '));
    return line;
}

} // namespace platform::qt
