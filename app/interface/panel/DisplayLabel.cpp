#include "app/interface/panel/DisplayLabel.h"

#include "platform/qt/PlainToolTips.h"

#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QTextLayout>

#include <algorithm>
#include <cmath>

namespace interface {

namespace {

/// More than any display can show. Names come from files and may have any length.
constexpr qsizetype kLongest = 500;

} // namespace

DisplayLabel::DisplayLabel(const char* name, int mostLines, QWidget* parent) : QLabel(parent), mostLines_(mostLines)
{
    setObjectName(QString::fromLatin1(name));
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

QStringList DisplayLabel::shownLines() const
{
    const int width = contentsRect().width();
    const QString line = singleLine();
    if (line.isEmpty() || width <= 0)
        return {};
    const QFontMetrics metrics = fontMetrics();
    const int room = std::min(mostLines_, contentsRect().height() / metrics.lineSpacing());
    if (room < 2 || metrics.horizontalAdvance(line) <= width)
        return {metrics.elidedText(line, Qt::ElideRight, width)};

    QTextLayout layout(line, font());
    QTextOption option;
    option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
    layout.setTextOption(option);
    layout.beginLayout();
    QTextLine first = layout.createLine();
    first.setLineWidth(width);
    layout.endLayout();
    const QString rest = line.mid(first.textLength()).trimmed();
    QStringList lines{metrics.elidedText(line.left(first.textLength()).trimmed(), Qt::ElideRight, width)};
    if (!rest.isEmpty())
        lines << metrics.elidedText(rest, Qt::ElideRight, width);
    return lines;
}

bool DisplayLabel::isShortened() const
{
    const QStringList lines = shownLines();
    return !lines.isEmpty() && lines.back().endsWith(QChar(0x2026)) && !text().endsWith(QChar(0x2026));
}

QSize DisplayLabel::sizeHint() const
{
    const QFontMetrics metrics = fontMetrics();
    return {metrics.horizontalAdvance(singleLine()), metrics.lineSpacing() * mostLines_};
}

QSize DisplayLabel::minimumSizeHint() const
{
    return {fontMetrics().averageCharWidth() * 3, fontMetrics().lineSpacing()};
}

bool DisplayLabel::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty() && isShortened()) {
        platform::qt::showPlainToolTip(static_cast<QHelpEvent*>(event)->globalPos(), text(), this);
        return true;
    }
    return QLabel::event(event);
}

void DisplayLabel::paintEvent(QPaintEvent*)
{
    const QStringList lines = shownLines();
    const QRect area = contentsRect();
    const int spacing = fontMetrics().lineSpacing();
    int top = area.top() + (area.height() - spacing * static_cast<int>(lines.size())) / 2;
    // Both lines run the way the whole name does, even when the second begins with a foreign word.
    const int direction = text().isRightToLeft() ? Qt::TextForceRightToLeft : Qt::TextForceLeftToRight;
    const Qt::Alignment sideways =
        QStyle::visualAlignment(layoutDirection(), alignment()) & Qt::AlignHorizontal_Mask & ~Qt::AlignAbsolute;
    const int flags =
        static_cast<int>(sideways) | Qt::AlignAbsolute | Qt::AlignVCenter | Qt::TextSingleLine | direction;
    QPainter painter(this);
    painter.setPen(palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::WindowText));
    for (const QString& line : lines) {
        painter.drawText(QRect(area.left(), top, area.width(), spacing), flags, line);
        top += spacing;
    }
}

QString DisplayLabel::singleLine() const
{
    QString line = text().left(kLongest);
    for (QChar& c : line) {
        if (c.category() == QChar::Other_Control || c == QChar::LineSeparator || c == QChar::ParagraphSeparator)
            c = QLatin1Char(' ');
    }
    return line;
}

} // namespace interface
