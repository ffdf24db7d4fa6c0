#include "app/interface/DragPicture.h"

#include "app/interface/panel/PanelColours.h"

#include <QFontMetrics>
#include <QPainter>
#include <QString>
#include <QWidget>

namespace interface {

QPixmap dragPicture(const QString& text, const QWidget* widget)
{
    const QFontMetrics metrics = widget->fontMetrics();
    const QString shown = metrics.elidedText(text.left(200), Qt::ElideRight, 20 * metrics.averageCharWidth());
    const QSize size(metrics.horizontalAdvance(shown) + 16, metrics.height() + 8);
    QPixmap picture(size * widget->devicePixelRatioF());
    picture.setDevicePixelRatio(widget->devicePixelRatioF());
    picture.fill(Qt::transparent);
    const PanelColours& colours = panelColours(widget->palette());
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setFont(widget->font());
    painter.setPen(QPen(colours.lit, 1.5));
    painter.setBrush(colours.screenBottom);
    painter.drawRoundedRect(QRectF(QPointF(), size).adjusted(1, 1, -1, -1), 4, 4);
    painter.setPen(colours.screenText);
    painter.drawText(QRect(QPoint(), size), Qt::AlignCenter | Qt::TextSingleLine, shown);
    return picture;
}

} // namespace interface
