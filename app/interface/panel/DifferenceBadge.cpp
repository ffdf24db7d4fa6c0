#include "app/interface/panel/DifferenceBadge.h"

#include <QPainter>

namespace interface {

void drawDifferenceBadge(QPainter& painter, const QPointF& centre, double radius, const PanelColours& colours)
{
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(colours.differs);
    painter.drawEllipse(centre, radius, radius);
    painter.setPen(QPen(colours.differsSign, radius * 0.24, Qt::SolidLine, Qt::FlatCap));
    for (const double height : {-0.22, 0.22})
        painter.drawLine(centre + QPointF(-0.55, height) * radius, centre + QPointF(0.55, height) * radius);
    painter.drawLine(centre + QPointF(-0.27, 0.6) * radius, centre + QPointF(0.27, -0.6) * radius);
    painter.restore();
}

} // namespace interface
