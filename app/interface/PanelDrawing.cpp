#include "app/interface/PanelDrawing.h"

#include "app/interface/Fonts.h"

#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

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

QColor faded(QColor colour, int alpha)
{
    colour.setAlpha(alpha);
    return colour;
}

/// The same marks on every run, so that the metal does not flicker from one repaint to the next.
int markAt(int line)
{
    const auto mixed = static_cast<unsigned>(line) * 2654435761U;
    return static_cast<int>((mixed >> 16U) % 100U);
}

void drawBrushing(QPainter& painter, const QRectF& face, const QColor& colour)
{
    for (int y = 0; y < static_cast<int>(face.height()); ++y) {
        const int mark = markAt(y);
        painter.fillRect(QRectF(face.left(), face.top() + y, face.width(), 1),
                         faded(colour, colour.alpha() * mark / 60));
    }
}

void drawFace(QPainter& painter, const PanelLayout& layout, const PanelColours& c)
{
    const QRectF& face = layout.face;
    painter.save();
    painter.setClipRect(face, Qt::IntersectClip);
    painter.fillRect(face, downwards(face, {{0, c.faceTop}, {0.45, c.faceMiddle}, {1, c.faceBottom}}));
    drawBrushing(painter, face, c.faceBrush);
    // Two soft lights above the bench.
    QLinearGradient sheen(face.topLeft(), face.topRight());
    for (const double at : {0.22, 0.74}) {
        sheen.setColorAt(at - 0.2, QColor(255, 255, 255, 0));
        sheen.setColorAt(at, QColor(255, 255, 255, 26));
        sheen.setColorAt(at + 0.2, QColor(255, 255, 255, 0));
    }
    painter.fillRect(face, sheen);
    painter.fillRect(QRectF(face.left(), face.top(), face.width(), 1), faded(c.edgeLight, 200));
    painter.fillRect(QRectF(face.left(), face.bottom() - 1.5, face.width(), 1.5), faded(c.edgeDark, 150));
    painter.restore();
}

/// A line of the grain from top to bottom, as the shape between its two sides: a wide pen would be slower.
QPainterPath grainLine(double x, double sway, double height, double width)
{
    const double h = width / 2;
    QPainterPath line(QPointF(x - h, 0));
    line.cubicTo(x + sway - h, height * 0.3, x - sway - h, height * 0.6, x + sway / 2 - h, height);
    line.lineTo(x + sway / 2 + h, height);
    line.cubicTo(x - sway + h, height * 0.6, x + sway + h, height * 0.3, x + h, 0);
    return line;
}

QPixmap woodOf(const QSizeF& size, double scale, const PanelColours& c)
{
    QPixmap picture((size * scale).toSize());
    picture.setDevicePixelRatio(scale);
    const QRectF cheek(QPointF(), size);
    QLinearGradient wood(cheek.topLeft(), cheek.topRight());
    wood.setColorAt(0, c.cheekDark);
    wood.setColorAt(0.35, c.cheekLight);
    wood.setColorAt(0.7, c.cheekLight.darker(112));
    wood.setColorAt(1, c.cheekDark);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillRect(picture.rect(), wood);
    for (int grain = 0; grain < 4; ++grain) {
        const double x = cheek.width() * (0.18 + 0.21 * grain);
        const double sway = cheek.width() * (0.08 + 0.002 * markAt(grain));
        painter.fillPath(grainLine(x, sway, cheek.height(), 0.8 + 0.01 * markAt(grain + 7)), c.cheekGrain);
    }
    painter.fillRect(picture.rect(), downwards(cheek, {{0, QColor(255, 255, 255, 40)},
                                                       {0.12, QColor(255, 255, 255, 0)},
                                                       {0.8, QColor(0, 0, 0, 0)},
                                                       {1, QColor(0, 0, 0, 90)}}));
    return picture;
}

/// The gap between cheek and face, in shadow on the side of the face.
void drawJoint(QPainter& painter, const QRectF& face, bool left)
{
    const double width = 5;
    const QRectF shade = left ? QRectF(face.left(), face.top(), width, face.height())
                              : QRectF(face.right() - width, face.top(), width, face.height());
    QLinearGradient gradient(left ? shade.topLeft() : shade.topRight(), left ? shade.topRight() : shade.topLeft());
    gradient.setColorAt(0, QColor(0, 0, 0, 110));
    gradient.setColorAt(1, QColor(0, 0, 0, 0));
    painter.fillRect(shade, gradient);
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

void drawEngraved(QPainter& painter, const QRectF& rect, int flags, const char* text, const PanelColours& c)
{
    const QString engraved = QString::fromLatin1(text);
    painter.setPen(c.engraving);
    painter.drawText(rect.translated(0, 1), flags, engraved);
    painter.setPen(c.legend);
    painter.drawText(rect, flags, engraved);
}

void drawName(QPainter& painter, const PanelLayout& layout, const PanelColours& c, const QFont& font)
{
    const QRectF& room = layout.name;
    const QFont maker = makerFont(font, layout.nameScale);
    painter.setFont(maker);
    const double width = QFontMetricsF(maker).horizontalAdvance(QString::fromLatin1(kMaker));
    drawEngraved(painter, room, Qt::AlignLeft | Qt::AlignVCenter, kMaker, c);

    painter.setFont(legendFont(font, layout.nameScale));
    const double line = QFontMetricsF(painter.font()).height() * 0.92;
    const QRectF legend = room.adjusted(width + 15 * layout.nameScale, 0, 0, 0);
    const double middle = room.center().y();
    painter.setPen(QPen(c.lit, 1.5 * layout.nameScale));
    painter.drawLine(QPointF(legend.left() - 8 * layout.nameScale, middle - line * 0.85),
                     QPointF(legend.left() - 8 * layout.nameScale, middle + line * 0.85));
    drawEngraved(painter, QRectF(legend.left(), middle - line, legend.width(), line), Qt::AlignLeft | Qt::AlignVCenter,
                 kLegendAbove, c);
    drawEngraved(painter, QRectF(legend.left(), middle, legend.width(), line), Qt::AlignLeft | Qt::AlignVCenter,
                 kLegendBelow, c);
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
    painter.setRenderHint(QPainter::Antialiasing);
    const double s = layout.scale;
    QPainterPath body;
    body.addRoundedRect(layout.body, 7 * s, 7 * s);
    painter.save();
    painter.setClipPath(body, Qt::IntersectClip);
    drawFace(painter, layout, c);
    // Both cheeks are cut from the same piece.
    const QSizeF cheek(layout.face.left() - layout.body.left(), layout.body.height());
    const QPixmap wood = woodOf(cheek, painter.device()->devicePixelRatioF(), c);
    painter.drawPixmap(layout.body.topLeft(), wood);
    painter.drawPixmap(QPointF(layout.face.right(), layout.body.top()), wood);
    drawJoint(painter, layout.face, true);
    drawJoint(painter, layout.face, false);
    painter.restore();
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(faded(c.edgeDark, 220), 1));
    painter.drawPath(body);

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
