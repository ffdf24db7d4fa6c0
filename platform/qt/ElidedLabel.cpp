#include "platform/qt/ElidedLabel.h"

#include "platform/qt/PlainToolTips.h"

#include <QFontMetricsF>
#include <QHelpEvent>
#include <QPainter>
#include <QStyle>
#include <QTextLayout>
#include <QtMath>

#include <algorithm>

namespace platform::qt {

namespace {

/// More than any screen can show, and than any path has. Names come from files and may have any length.
constexpr qsizetype kLongest = 5000;

} // namespace

ElidedLabel::ElidedLabel(int mostLines, QWidget* parent) : QLabel(parent), mostLines_(mostLines)
{
    setTextFormat(Qt::PlainText);
    setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
}

void ElidedLabel::setElideMode(Qt::TextElideMode mode)
{
    mode_ = mode;
    update();
}

QStringList ElidedLabel::shownLines() const
{
    const int width = contentsRect().width();
    const QString line = singleLine();
    if (line.isEmpty() || width <= 0)
        return {};
    const QFontMetrics metrics = fontMetrics();
    const int room = std::min(mostLines_, contentsRect().height() / metrics.lineSpacing());
    if (room < 2 || metrics.horizontalAdvance(line) <= width)
        return {metrics.elidedText(line, mode_, width)};

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

bool ElidedLabel::isShortened() const
{
    // Where a line ends, blanks go.
    const auto withoutBlanks = [](QString text) { return text.removeIf([](QChar c) { return c.isSpace(); }); };
    return withoutBlanks(shownLines().join(QString())) != withoutBlanks(singleLine());
}

QSize ElidedLabel::sizeHint() const
{
    // Rounded up: it is shortened where a fraction is missing.
    const int width = qCeil(QFontMetricsF(font()).horizontalAdvance(singleLine()));
    const QSize text(width, fontMetrics().height() * mostLines_);
    return text.grownBy(contentsMargins());
}

QSize ElidedLabel::minimumSizeHint() const
{
    return {fontMetrics().averageCharWidth() * 3, sizeHint().height()};
}

bool ElidedLabel::event(QEvent* event)
{
    if (event->type() == QEvent::ToolTip && toolTip().isEmpty() && isShortened()) {
        showPlainToolTip(static_cast<QHelpEvent*>(event)->globalPos(), text(), this);
        return true;
    }
    return QLabel::event(event);
}

void ElidedLabel::paintEvent(QPaintEvent*)
{
    const QStringList lines = shownLines();
    const QRect area = contentsRect();
    const int spacing = fontMetrics().lineSpacing();
    int top = area.top() + (area.height() - spacing * static_cast<int>(lines.size())) / 2;
    // Both lines run the way the whole text does, even when the second begins with a foreign word.
    const int direction = text().isRightToLeft() ? Qt::TextForceRightToLeft : Qt::TextForceLeftToRight;
    const Qt::Alignment sideways =
        QStyle::visualAlignment(layoutDirection(), alignment()) & Qt::AlignHorizontal_Mask & ~Qt::AlignAbsolute;
    const int flags =
        static_cast<int>(sideways) | Qt::AlignAbsolute | Qt::AlignVCenter | Qt::TextSingleLine | direction;
    QPainter painter(this);
    painter.setPen(palette().color(foregroundRole()));
    for (const QString& line : lines) {
        painter.drawText(QRect(area.left(), top, area.width(), spacing), flags, line);
        top += spacing;
    }
}

QString ElidedLabel::singleLine() const
{
    QString line = text().left(kLongest);
    for (QChar& c : line) {
        if (c.category() == QChar::Other_Control || c == QChar::LineSeparator || c == QChar::ParagraphSeparator)
            c = QLatin1Char(' ');
    }
    return line;
}

} // namespace platform::qt
