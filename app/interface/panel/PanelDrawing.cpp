#include "app/interface/panel/PanelDrawing.h"

#include "app/interface/Fonts.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>
#include <initializer_list>
#include <utility>

namespace interface {

namespace {

constexpr double kPi = 3.14159265358979323846;

QLinearGradient downwards(const QRectF& rect, std::initializer_list<std::pair<double, QColor>> stops)
{
    QLinearGradient gradient(rect.topLeft(), rect.bottomLeft());
    for (const auto& [at, colour] : stops)
        gradient.setColorAt(at, colour);
    return gradient;
}

/// The same marks on every run, so that the metal does not flicker from one repaint to the next.
int markAt(int line)
{
    const auto hash = static_cast<unsigned>(line) * 2654435761U;
    return static_cast<int>((hash >> 16U) % 100U);
}

/// Brushed metal with two soft lights above the bench.
void drawFace(QPainter& painter, const QRectF& face, const PanelColours& c)
{
    // Under the cheeks' edges, too: where a point is no whole number of pixels something would shine through between.
    const QRectF metal = face.adjusted(-1, 0, 1, 0);
    painter.fillRect(metal, downwards(face, {{0, c.faceTop}, {0.45, c.faceMiddle}, {1, c.faceBottom}}));
    for (int line = 0; line < face.height(); ++line)
        painter.fillRect(QRectF(metal.left(), face.top() + line, metal.width(), 1),
                         faded(c.faceBrush, c.faceBrush.alpha() * markAt(line) / 60));
    QLinearGradient lights(face.topLeft(), face.topRight());
    for (const double at : {0.22, 0.74}) {
        lights.setColorAt(at - 0.17, QColor(255, 255, 255, 0));
        lights.setColorAt(at, QColor(255, 255, 255, 26));
        lights.setColorAt(at + 0.17, QColor(255, 255, 255, 0));
    }
    painter.fillRect(face, lights);
    painter.fillRect(QRectF(face.left(), face.top() + 1, face.width(), 1), faded(c.edgeLight, 160));
    painter.fillRect(QRectF(face.left(), face.bottom() - 2, face.width(), 1), faded(c.edgeDark, 110));
}

/// The left cheek, and its shadow on the face.
void drawCheek(QPainter& painter, const QRectF& cheek, const PanelColours& c)
{
    QLinearGradient wood(cheek.topLeft(), cheek.topRight());
    wood.setColorAt(0, c.cheekDark);
    wood.setColorAt(0.35, c.cheekLight);
    wood.setColorAt(0.7, c.cheekLight.darker(112));
    wood.setColorAt(1, c.cheekDark);
    painter.fillRect(cheek, wood);
    for (int grain = 0; grain < 4; ++grain) {
        const double sway = 0.05 + 0.001 * markAt(grain);
        QPolygonF line;
        for (double down = 0; down < 1.05; down += 0.05) {
            const double across = 0.2 + 0.2 * grain + sway * std::sin(down * 5 + grain);
            line << cheek.topLeft() + QPointF(across * cheek.width(), down * cheek.height());
        }
        painter.setPen(QPen(c.cheekGrain, 0.8 + 0.01 * markAt(grain + 7)));
        painter.drawPolyline(line);
    }
    painter.fillRect(cheek, downwards(cheek, {{0, QColor(255, 255, 255, 40)},
                                              {0.12, QColor(255, 255, 255, 0)},
                                              {0.8, QColor(0, 0, 0, 0)},
                                              {1, QColor(0, 0, 0, 90)}}));
    const QRectF shade(cheek.right(), cheek.top(), 5, cheek.height());
    QLinearGradient shadow(shade.topLeft(), shade.topRight());
    shadow.setColorAt(0, QColor(0, 0, 0, 110));
    shadow.setColorAt(1, QColor(0, 0, 0, 0));
    painter.fillRect(shade, shadow);
}

/// Face and cheeks in their outline, whose corners are round.
void drawBody(QPainter& painter, const PanelLayout& layout, const PanelColours& c)
{
    const QRectF& body = layout.body;
    const double radius = 7 * layout.scale;
    QPainterPath outline;
    outline.addRoundedRect(body, radius, radius);
    drawFace(painter, layout.face, c); // with edges on whole pixels, or the lines of the brushing would blur
    painter.setRenderHint(QPainter::Antialiasing);
    painter.save();
    painter.setClipPath(outline);
    const QRectF cheek(body.topLeft(), layout.face.bottomLeft());
    drawCheek(painter, cheek, c);
    painter.translate(2 * body.center().x(), 0);
    painter.scale(-1, 1);
    drawCheek(painter, cheek, c); // both are cut from the same piece
    painter.restore();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(faded(c.edgeDark, 200));
    painter.drawRoundedRect(body.adjusted(0.5, 0.5, -0.5, -0.5), radius - 0.5, radius - 0.5);
}

void drawScrew(QPainter& painter, const QPointF& centre, double radius, double turn, const PanelColours& c)
{
    painter.setPen(Qt::NoPen);
    QRadialGradient well(centre, radius * 1.35);
    well.setColorAt(0.7, QColor(0, 0, 0, 130));
    well.setColorAt(1, QColor(0, 0, 0, 0));
    painter.setBrush(well);
    painter.drawEllipse(centre, radius * 1.35, radius * 1.35);
    QLinearGradient head(centre - QPointF(radius, radius), centre + QPointF(radius, radius));
    head.setColorAt(0, c.screwLight);
    head.setColorAt(1, c.screwDark);
    painter.setBrush(head);
    painter.drawEllipse(centre, radius, radius);
    painter.setBrush(QColor(12, 13, 15, 210));
    QPolygonF socket;
    for (int corner = 0; corner < 6; ++corner) {
        const double angle = turn + corner * kPi / 3;
        socket << centre + QPointF(std::cos(angle), std::sin(angle)) * radius * 0.55;
    }
    painter.drawPolygon(socket);
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor(255, 255, 255, 70), 0.8));
    painter.drawArc(QRectF(centre - QPointF(radius, radius) * 0.9, QSizeF(radius, radius) * 1.8), 60 * 16, 130 * 16);
}

/// From the left end of a rectangle, in the middle of its height.
void drawEngraved(QPainter& painter, const QRectF& rect, const char* text, const PanelColours& c)
{
    const QString engraved = QString::fromLatin1(text);
    painter.setPen(c.engraving);
    painter.drawText(rect.translated(0, 1), Qt::AlignLeft | Qt::AlignVCenter, engraved);
    painter.setPen(c.legend);
    painter.drawText(rect, Qt::AlignLeft | Qt::AlignVCenter, engraved);
}

void drawName(QPainter& painter, const PanelLayout& layout, const PanelColours& c, const QFont& font)
{
    const double s = layout.nameScale;
    painter.setFont(makerFont(font, s));
    drawEngraved(painter, layout.name, kMaker, c);
    const double width = QFontMetricsF(painter.font()).horizontalAdvance(QString::fromLatin1(kMaker));
    painter.setFont(legendFont(font, s));
    const double line = QFontMetricsF(painter.font()).height() * 0.92;
    const double middle = layout.name.center().y();
    const QRectF above(layout.name.left() + width + 15 * s, middle - line, layout.name.width() - width - 15 * s, line);
    painter.setPen(QPen(c.lit, 1.5 * s));
    painter.drawLine(QPointF(above.left() - 8 * s, middle - line * 0.85),
                     QPointF(above.left() - 8 * s, middle + line * 0.85));
    drawEngraved(painter, above, kLegendAbove, c);
    drawEngraved(painter, above.translated(0, line), kLegendBelow, c);
}

void drawDisplay(QPainter& painter, const QRectF& display, double radius, const PanelColours& c)
{
    // The cut-out's lower lip catches the light.
    painter.setPen(Qt::NoPen);
    painter.setBrush(faded(c.edgeLight, 120));
    painter.drawRoundedRect(display.translated(0, 1), radius, radius);
    painter.setBrush(c.screenEdge);
    painter.drawRoundedRect(display, radius, radius);
    const QRectF glass = display.adjusted(1.5, 1.5, -1.5, -1.5);
    painter.setBrush(downwards(glass, {{0, c.screenTop}, {1, c.screenBottom}}));
    painter.drawRoundedRect(glass, radius - 1, radius - 1);
    painter.save();
    QPainterPath shape;
    shape.addRoundedRect(glass, radius - 1, radius - 1);
    painter.setClipPath(shape, Qt::IntersectClip);
    painter.fillRect(QRectF(glass.left(), glass.top(), glass.width(), glass.height() * 0.42), QColor(255, 255, 255, 9));
    painter.restore();
}

void drawRule(QPainter& painter, double x, const QRectF& display, const PanelColours& c)
{
    const double inset = display.height() * 0.2;
    painter.fillRect(QRectF(x - 0.5, display.top() + inset, 1, display.height() - 2 * inset), c.screenRule);
}

} // namespace

void drawPanel(QPainter& painter, const PanelLayout& layout, const PanelColours& c, const QFont& font)
{
    const double s = layout.scale;
    drawBody(painter, layout, c);
    double turn = 0.2;
    for (const QPointF& screw : layout.screws)
        drawScrew(painter, screw, 5 * s, turn += 0.9, c);
    drawName(painter, layout, c, font);
    drawDisplay(painter, layout.display, 4 * s, c);
    drawRule(painter, layout.page.left() - 6 * s, layout.display, c);
    drawRule(painter, layout.total.left() - 6 * s, layout.display, c);
    drawDisplay(painter, layout.strip, 4 * s, c);
    for (int pot = 1; pot < PanelLayout::kPots; ++pot)
        drawRule(painter, layout.strip.left() + layout.strip.width() * pot / PanelLayout::kPots, layout.strip, c);
}

void drawDropField(QPainter& painter, const PanelLayout& layout, int pot, const PanelColours& c)
{
    const double width = layout.strip.width() / PanelLayout::kPots;
    const QRectF field(layout.strip.left() + width * (pot - 1), layout.strip.top(), width, layout.strip.height());
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setBrush(faded(c.lit, 50));
    painter.setPen(QPen(c.lit, 2, Qt::DashLine));
    painter.drawRoundedRect(field.adjusted(3, 3, -3, -3), 3, 3);
}

} // namespace interface
