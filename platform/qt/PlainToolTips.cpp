#include "platform/qt/PlainToolTips.h"

#include <QAbstractItemView>
#include <QHelpEvent>
#include <QTextDocument>
#include <QToolTip>
#include <QWidget>

namespace platform::qt {

namespace {

/// What is longer than a line is wrapped, and what would fill the screen is cut.
constexpr qsizetype kOneLine = 80;
constexpr qsizetype kLongest = 1000;

/// The item view whose viewport the widget is, or null.
QAbstractItemView* viewOf(QWidget* widget)
{
    auto* view = qobject_cast<QAbstractItemView*>(widget->parentWidget());
    return view && view->viewport() == widget ? view : nullptr;
}

QString toolTipAt(QWidget* widget, const QPoint& position)
{
    if (const QAbstractItemView* view = viewOf(widget))
        return view->indexAt(position).data(Qt::ToolTipRole).toString();
    return widget->toolTip();
}

} // namespace

void showPlainToolTip(const QPoint& globalPosition, const QString& text, QWidget* widget)
{
    const QString shown = text.size() <= kLongest ? text : text.left(kLongest) + QChar(0x2026);
    const QString asWritten = QStringLiteral("<p style='white-space:pre-wrap'>%1</p>").arg(shown.toHtmlEscaped());
    QToolTip::showText(globalPosition, asWritten, widget);
}

bool PlainToolTips::eventFilter(QObject* watched, QEvent* event)
{
    auto* widget = event->type() == QEvent::ToolTip ? qobject_cast<QWidget*>(watched) : nullptr;
    if (!widget)
        return false;
    const auto* help = static_cast<QHelpEvent*>(event);
    const QString text = toolTipAt(widget, help->pos());
    if (text.size() <= kOneLine && !Qt::mightBeRichText(text))
        return false;
    showPlainToolTip(help->globalPos(), text, widget);
    return true;
}

} // namespace platform::qt
