#include "app/interface/panel/PotDrawing.h"

#include "app/interface/Fonts.h"
#include "app/interface/panel/DifferenceBadge.h"
#include "platform/qt/ReadableColours.h"

#include <QPainter>
#include <QPainterPath>
#include <QPixmap>
#include <QPixmapCache>

#include <algorithm>
#include <cmath>
#include <utility>

namespace interface {

using platform::qt::mixed;

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr int kRidges = 44;

// Radii, as shares of half the square.
constexpr double kFocusRing = 0.965;
constexpr double kNumber = 0.875;
constexpr double kGroove = 0.745;
constexpr double kSkirt = 0.68;
constexpr double kWhere = 0.635; // on the dark skirt, apart from the rings round the pot
constexpr double kCap = 0.53;
constexpr double kDull = 0.72; // of the cap of an empty pot, which is dark
constexpr double kBadge = 0.2;
constexpr double kBadgeCentre = 0.79; // along both axes

struct Drawing {
    QPainter& painter;
    QPointF centre;
    double radius; ///< half the square
    const PotLook& look;
    const PanelColours& c;

    double at(double share) const { return radius * share; }
    QRectF circle(double share) const
    {
        return {centre.x() - at(share), centre.y() - at(share), 2 * at(share), 2 * at(share)};
    }
};

/// A point at an angle in degrees, clockwise from the top.
QPointF onCircle(const QPointF& centre, double radius, double degrees)
{
    const double angle = degrees * kPi / 180;
    return centre + QPointF(std::sin(angle), -std::cos(angle)) * radius;
}

/// A closed ring, since it says whether there is a parameter and nothing of its value.
void drawRing(const Drawing& d)
{
    const double width = d.at(0.062);
    d.painter.setBrush(Qt::NoBrush);
    const auto draw = [&d](const QColor& colour, double ringWidth) {
        d.painter.setPen(QPen(colour, ringWidth));
        d.painter.drawEllipse(d.circle(kGroove));
    };
    draw(d.c.groove, width);
    if (!d.look.isMapped)
        return;
    const QColor light = d.look.isEnabled ? d.c.lit : mixed(d.c.lit, d.c.groove, 0.45);
    if (d.look.isEnabled)
        draw(faded(light, 60), width * 2.1);
    draw(light, width * 0.72);
    if (d.look.isEnabled)
        draw(faded(light.lighter(150), 200), width * 0.22);
}

void drawShadow(const Drawing& d)
{
    const QColor dark = faded(d.c.shadow, d.c.shadow.alpha() * (d.look.isEnabled ? 3 : 2) / 3);
    // A pressed cap lies nearer to the face.
    const double drop = d.at(d.look.isPressed ? 0.05 : 0.13);
    const QPointF centre = d.centre + QPointF(drop * 0.35, drop);
    const double reach = d.at(d.look.isPressed ? 0.74 : 0.86);
    QRadialGradient shade(centre, reach);
    shade.setColorAt(0, dark);
    shade.setColorAt(0.72, dark);
    shade.setColorAt(0.86, faded(dark, dark.alpha() * 2 / 5));
    shade.setColorAt(1, faded(dark, 0));
    d.painter.setPen(Qt::NoPen);
    d.painter.setBrush(shade);
    d.painter.drawEllipse(centre, reach, reach);
}

/// The outline of a grip with ridges.
QPainterPath knurled(const QPointF& centre, double radius)
{
    constexpr int kSteps = kRidges * 6;
    QPolygonF outline;
    for (int step = 0; step < kSteps; ++step) {
        const double degrees = 360.0 * step / kSteps;
        const double wave = std::cos(degrees * kRidges * kPi / 180);
        outline << onCircle(centre, radius * (0.985 + 0.018 * wave), degrees);
    }
    QPainterPath path;
    path.addPolygon(outline);
    path.closeSubpath();
    return path;
}

void drawSkirt(const Drawing& d)
{
    const double radius = d.at(kSkirt);
    const QPainterPath outline = knurled(d.centre, radius);
    QLinearGradient rubber(d.centre - QPointF(radius * 0.5, radius), d.centre + QPointF(radius * 0.5, radius));
    rubber.setColorAt(0, d.c.skirtLight);
    rubber.setColorAt(0.55, mixed(d.c.skirtLight, d.c.skirtDark, 0.7));
    rubber.setColorAt(1, d.c.skirtDark);
    d.painter.setPen(QPen(QColor(0, 0, 0, 150), d.at(0.012)));
    d.painter.setBrush(rubber);
    d.painter.drawPath(outline);
    for (int ridge = 0; ridge < kRidges; ++ridge) {
        const double degrees = 360.0 * ridge / kRidges;
        const double towardsLight = 0.5 + 0.5 * std::cos((degrees + 28) * kPi / 180);
        const int alpha = static_cast<int>(d.c.skirtRidge.alpha() * (0.25 + 1.3 * towardsLight));
        d.painter.setPen(QPen(faded(d.c.skirtRidge, std::min(alpha, 255)), d.at(0.018), Qt::SolidLine, Qt::FlatCap));
        d.painter.drawLine(onCircle(d.centre, radius * 0.83, degrees), onCircle(d.centre, radius * 0.985, degrees));
    }
}

/// A turned metal face throws the light back in two wedges.
QConicalGradient turnedMetal(const Drawing& d)
{
    const double lift = d.look.isHovered && !d.look.isPressed ? 0.22 : 0;
    const double sink = d.look.isPressed ? 0.3 : 0;
    const auto tone = [&](const QColor& colour) {
        const QColor metal = d.look.isMapped ? colour : mixed(colour, d.c.skirtDark, kDull);
        return mixed(mixed(metal, Qt::white, lift), Qt::black, sink);
    };
    const QColor light = tone(d.c.capLight);
    const QColor middle = tone(d.c.capMiddle);
    const QColor dark = tone(d.c.capDark);
    QConicalGradient metal(d.centre, 118);
    const std::pair<double, QColor> stops[] = {{0.00, light},  {0.10, middle}, {0.24, dark},
                                               {0.38, middle}, {0.50, light},  {0.62, middle},
                                               {0.76, dark},   {0.90, middle}, {1.00, light}};
    for (const auto& [at, colour] : stops)
        metal.setColorAt(at, colour);
    return metal;
}

void drawCap(const Drawing& d)
{
    const double cap = d.look.isPressed ? kCap * 0.965 : kCap;
    QLinearGradient bevel(d.circle(cap + 0.055).topLeft(), d.circle(cap + 0.055).bottomRight());
    bevel.setColorAt(0, d.look.isPressed ? d.c.skirtDark : d.c.capRim);
    bevel.setColorAt(0.5, d.c.capDark);
    bevel.setColorAt(1, d.look.isPressed ? d.c.capMiddle : d.c.skirtDark);
    d.painter.setPen(QPen(QColor(0, 0, 0, 170), d.at(0.014)));
    d.painter.setBrush(bevel);
    d.painter.drawEllipse(d.circle(cap + 0.045));
    d.painter.setPen(Qt::NoPen);
    d.painter.setBrush(turnedMetal(d));
    d.painter.drawEllipse(d.circle(cap));
    // The marks of the lathe, which can't be seen on a faint pot.
    for (double ring = 0.12; d.look.isEnabled && d.look.isMapped && ring < cap - 0.03; ring += 0.055) {
        d.painter.setBrush(Qt::NoBrush);
        d.painter.setPen(QPen(QColor(0, 0, 0, 18), d.at(0.014)));
        d.painter.drawEllipse(d.circle(ring));
    }
    QRadialGradient dish(d.centre + QPointF(0, d.at(0.18)), d.at(cap * 1.25));
    dish.setColorAt(0, QColor(255, 255, 255, d.look.isPressed ? 6 : 22));
    dish.setColorAt(0.6, QColor(0, 0, 0, 0));
    dish.setColorAt(1, QColor(0, 0, 0, d.look.isPressed ? 110 : 60));
    d.painter.setPen(Qt::NoPen);
    d.painter.setBrush(dish);
    d.painter.drawEllipse(d.circle(cap));
}

/// At the same place on every pot.
void drawPointer(const Drawing& d)
{
    const QPointF inner = onCircle(d.centre, d.at(0.25), 0);
    const QPointF outer = onCircle(d.centre, d.at(kSkirt * 0.965), 0);
    d.painter.setPen(QPen(QColor(0, 0, 0, 190), d.at(0.105), Qt::SolidLine, Qt::RoundCap));
    d.painter.drawLine(inner, outer);
    d.painter.setPen(QPen(d.look.isEnabled ? d.c.pointer : d.c.pointerOff, d.at(0.06), Qt::SolidLine, Qt::RoundCap));
    d.painter.drawLine(inner, outer);
}

void drawNumber(const Drawing& d, const QFont& desktopFont)
{
    QFont font = boldFont(desktopFont);
    font.setPixelSize(std::max(9, static_cast<int>(std::lround(d.at(0.19)))));
    d.painter.setFont(font);
    d.painter.setPen(d.look.isEnabled ? d.c.legend : d.c.legendOff);
    const QPointF centre(d.centre.x(), d.centre.y() + d.at(kNumber));
    const double half = font.pixelSize();
    d.painter.drawText(QRectF(centre, centre).adjusted(-half, -half, half, half), Qt::AlignCenter,
                       QString::number(d.look.number));
}

void drawMarks(const Drawing& d)
{
    d.painter.setBrush(Qt::NoBrush);
    const double width = std::max(2.0, d.at(0.04));
    if (d.look.holdsSelected) {
        d.painter.setPen(QPen(d.c.whereOnPot, std::max(2.0, d.at(0.065))));
        d.painter.drawEllipse(d.circle(kWhere));
    }
    if (d.look.isDropTarget) {
        d.painter.setPen(QPen(d.c.target, width * 1.3, Qt::DashLine, Qt::FlatCap));
        d.painter.drawEllipse(d.circle(kFocusRing));
    } else if (d.look.hasFocus) {
        d.painter.setPen(QPen(d.c.focus, width));
        d.painter.drawEllipse(d.circle(kFocusRing));
    }
    if (d.look.differs) // in the corner that the circle leaves free
        drawDifferenceBadge(d.painter, d.centre + QPointF(d.at(kBadgeCentre), -d.at(kBadgeCentre)), d.at(kBadge), d.c);
}

/// Under the pot a plate, so that chosen ones are seen to belong together.
void drawPlate(const Drawing& d)
{
    const QRectF plate = d.circle(0.985);
    d.painter.setPen(QPen(d.c.focus, std::max(1.0, d.at(0.02))));
    d.painter.setBrush(faded(d.c.focus, 56));
    d.painter.drawRoundedRect(plate, d.at(0.16), d.at(0.16));
}

/// A tick in a disc, in the corner that nothing else needs.
void drawTick(const Drawing& d)
{
    const double radius = std::max(6.0, d.at(0.17));
    const QPointF centre = d.centre + QPointF(d.at(0.94) - radius, radius - d.at(0.94));
    const auto at = [&](double x, double y) { return centre + QPointF(x, y) * radius; };
    d.painter.setPen(QPen(d.c.faceTop, radius * 0.14));
    d.painter.setBrush(d.c.focus);
    d.painter.drawEllipse(centre, radius, radius);
    d.painter.setPen(QPen(d.c.faceTop, radius * 0.26, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin));
    d.painter.drawPolyline(QPolygonF{at(-0.45, 0.05), at(-0.12, 0.4), at(0.48, -0.38)});
}

void drawBody(const Drawing& d)
{
    drawShadow(d);
    drawRing(d);
    d.painter.setOpacity(d.look.isEnabled ? 1 : 0.6);
    drawSkirt(d);
    drawCap(d);
    d.painter.setOpacity(1);
    drawPointer(d);
}

/// All but number and marks: pots that look alike share it.
QPixmap bodyOf(const QSizeF& size, double scale, const PotLook& look, const PanelColours& colours)
{
    const QString key = QStringLiteral("kvPot %1 %2 %3 %4%5%6%7 %8")
                            .arg(size.width())
                            .arg(size.height())
                            .arg(scale)
                            .arg(look.isMapped)
                            .arg(look.isEnabled)
                            .arg(look.isHovered)
                            .arg(look.isPressed)
                            .arg(colours.skirtDark.rgba());
    QPixmap picture;
    if (QPixmapCache::find(key, &picture))
        return picture;
    picture = QPixmap((size * scale).toSize());
    if (picture.isNull())
        return picture;
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF square(QPointF(), size);
    drawBody({painter, square.center(), std::min(size.width(), size.height()) / 2, look, colours});
    painter.end();
    QPixmapCache::insert(key, picture);
    return picture;
}

} // namespace

void drawPot(QPainter& painter, const QRectF& square, const PotLook& look, const PanelColours& colours,
             const QFont& font)
{
    painter.setRenderHint(QPainter::Antialiasing);
    const Drawing d{painter, square.center(), std::min(square.width(), square.height()) / 2, look, colours};
    if (look.isChosen)
        drawPlate(d);
    painter.drawPixmap(square.topLeft(), bodyOf(square.size(), painter.deviceTransform().m11(), look, colours));
    drawNumber(d, font);
    drawMarks(d);
    if (look.isChosen)
        drawTick(d);
}

} // namespace interface
