#include "app/interface/panel/PanelDrawing.h"

#include "app/interface/Fonts.h"
#include "platform/qt/ReadableColours.h"

#include <QImage>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>

namespace interface {

using platform::qt::mixed;

namespace {

constexpr double kPi = 3.14159265358979323846;
constexpr int kCheekShadow = 5; ///< in points

QLinearGradient downwards(const QRectF& rect, std::initializer_list<std::pair<double, QColor>> stops)
{
    QLinearGradient gradient(rect.topLeft(), rect.bottomLeft());
    for (const auto& [at, colour] : stops)
        gradient.setColorAt(at, colour);
    return gradient;
}

/// Of the whole panel.
QColor outlineOf(const PanelColours& c)
{
    return faded(c.edgeDark, 200);
}

/// The same marks on every run, so that the metal does not flicker from one repaint to the next.
int markAt(int line)
{
    const auto hash = static_cast<unsigned>(line) * 2654435761U;
    return static_cast<int>((hash >> 16U) % 100U);
}

/// Brushed metal, lighter above than below: each line of it has a colour of its own.
void drawMetal(QPainter& painter, const QRectF& face, const PanelColours& c)
{
    constexpr double kMiddle = 0.45;
    const int lines = static_cast<int>(std::ceil(face.height()));
    for (int line = 0; line < lines; ++line) {
        const double down = (line + 0.5) / lines;
        const QColor plain = down < kMiddle ? mixed(c.faceTop, c.faceMiddle, down / kMiddle)
                                            : mixed(c.faceMiddle, c.faceBottom, (down - kMiddle) / (1 - kMiddle));
        painter.fillRect(QRectF(face.left() - 1, face.top() + line, face.width() + 2, 1),
                         mixed(plain, c.faceBrush, c.faceBrush.alphaF() * static_cast<float>(markAt(line)) / 60));
    }
}

/// Two soft lights above the bench. Blended as a picture, a part of the height at a time: half as much work as
/// gradients.
void drawLights(QPainter& painter, const QRectF& face)
{
    constexpr int kHeight = 8;
    const double scale = painter.device()->devicePixelRatioF();
    const double width = std::round(face.width() * 0.34);
    QLinearGradient light(0, 0, width, 0);
    light.setColorAt(0, QColor(255, 255, 255, 0));
    light.setColorAt(0.5, QColor(255, 255, 255, 26));
    light.setColorAt(1, QColor(255, 255, 255, 0));
    QPixmap part((QSizeF(width, kHeight) * scale).toSize());
    if (part.isNull())
        return;
    part.setDevicePixelRatio(scale);
    part.fill(Qt::transparent);
    QPainter(&part).fillRect(QRectF(0, 0, width, kHeight), light);
    for (const double at : {0.22, 0.74}) {
        const double left = std::round(face.left() + face.width() * at - width / 2);
        // From one to the next by whole pixels, or they would overlap on screens with odd scales.
        for (double y = face.top(); y < face.bottom(); y += part.height() / scale)
            painter.drawPixmap(QPointF(left, y), part);
    }
}

/// Rectangles and a picture, with edges on whole pixels: smooth ones would be ten times the work. It reaches under the
/// cheeks, since with odd scales a point is no whole number of pixels.
void drawFace(QPainter& painter, const PanelLayout& layout, const PanelColours& c)
{
    const QRectF& face = layout.face;
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing, false);
    painter.setClipRect(face.adjusted(-1, 0, 1, 0), Qt::IntersectClip);
    drawMetal(painter, face, c);
    drawLights(painter, face);
    painter.fillRect(QRectF(face.left(), face.top() + 1, face.width(), 1), faded(c.edgeLight, 160));
    painter.fillRect(QRectF(face.left(), face.bottom() - 2, face.width(), 1), faded(c.edgeDark, 110));
    for (const double y : {face.top(), face.bottom() - 1})
        painter.fillRect(QRectF(face.left(), y, face.width(), 1), outlineOf(c));
    painter.restore();
}

QRgb over(QRgb below, QRgb colour, double share)
{
    const int part = static_cast<int>(256 * share);
    const auto mix = [part](int from, int to) { return from + (to - from) * part / 256; };
    return qRgb(mix(qRed(below), qRed(colour)), mix(qGreen(below), qGreen(colour)), mix(qBlue(below), qBlue(colour)));
}

/// A row of the wood: its grain, and the light above and the shadow below that show it to be rounded.
void grainRow(QRgb* row, int width, double scale, double down, const PanelColours& c)
{
    for (int grain = 0; grain < 4; ++grain) {
        const double sway = 0.05 + 0.001 * markAt(grain);
        const double middle = (0.2 + 0.2 * grain + sway * std::sin(down * 5 + grain)) * width;
        const double half = (0.4 + 0.005 * markAt(grain + 7)) * scale;
        const double from = std::max(0.0, middle - half), to = std::min<double>(width, middle + half);
        for (int x = static_cast<int>(from); x < to; ++x) {
            const double covered = std::min(x + 1.0, to) - std::max<double>(x, from);
            row[x] = over(row[x], c.cheekGrain.rgb(), c.cheekGrain.alphaF() * covered);
        }
    }
    const double light = 0.16 * (1 - down / 0.12);
    const double shadow = 0.35 * (down - 0.8) / 0.2;
    for (int x = 0; x < width && (light > 0 || shadow > 0); ++x)
        row[x] = light > 0 ? over(row[x], qRgb(255, 255, 255), light) : over(row[x], qRgb(0, 0, 0), shadow);
}

/// Of a pixel of the left cheek, so far in from the end and the side, in points: its part of the panel's outline, and
/// what of it is missing where the corner is round.
QRgb edged(QRgb wood, double fromEnd, double fromSide, double radius, double scale, const QColor& outline)
{
    const bool isCorner = fromEnd < radius && fromSide < radius;
    const double depth =
        isCorner ? radius - std::hypot(radius - fromEnd, radius - fromSide) : std::min(fromEnd, fromSide);
    const double outlined = std::clamp((1 - depth) * scale + 0.5, 0.0, 1.0);
    const double covered = std::clamp(depth * scale + 0.5, 0.0, 1.0);
    const QRgb edge = over(wood, outline.rgb(), outline.alphaF() * outlined);
    return qPremultiply(qRgba(qRed(edge), qGreen(edge), qBlue(edge), static_cast<int>(255 * covered)));
}

/// The left cheek, and its shadow on the face. Made pixel by pixel: shapes as long and thin as the grain are what a
/// painter is slowest at.
QImage cheekOf(const QSizeF& size, double radius, double scale, const PanelColours& c)
{
    QImage picture((QSizeF(size.width() + kCheekShadow, size.height()) * scale).toSize(),
                   QImage::Format_ARGB32_Premultiplied);
    if (picture.isNull())
        return picture;
    const int width = static_cast<int>(std::lround(size.width() * scale));
    QImage plain(picture.width(), 1, QImage::Format_ARGB32_Premultiplied);
    plain.fill(Qt::transparent);
    QLinearGradient wood(0, 0, width, 0);
    wood.setColorAt(0, c.cheekDark);
    wood.setColorAt(0.35, c.cheekLight);
    wood.setColorAt(0.7, c.cheekLight.darker(112));
    wood.setColorAt(1, c.cheekDark);
    QLinearGradient shadow(width, 0, plain.width(), 0);
    shadow.setColorAt(0, QColor(0, 0, 0, 110));
    shadow.setColorAt(1, QColor(0, 0, 0, 0));
    QPainter onPlain(&plain);
    onPlain.fillRect(0, 0, width, 1, wood);
    onPlain.fillRect(width, 0, plain.width() - width, 1, shadow);
    onPlain.end();

    const QColor outline = outlineOf(c);
    for (int y = 0; y < picture.height(); ++y) {
        auto* const row = reinterpret_cast<QRgb*>(picture.scanLine(y));
        std::copy_n(reinterpret_cast<const QRgb*>(plain.constScanLine(0)), plain.width(), row);
        grainRow(row, width, scale, (y + 0.5) / picture.height(), c);
        const double fromEnd = (std::min(y, picture.height() - 1 - y) + 0.5) / scale;
        const double reach = fromEnd < 1.5 ? size.width() : fromEnd < radius ? radius : 1.5; // of what edged() changes
        for (int x = 0; x < width && x < reach * scale; ++x)
            row[x] = edged(row[x], fromEnd, (x + 0.5) / scale, radius, scale, outline);
    }
    picture.setDevicePixelRatio(scale);
    return picture;
}

/// Both are cut from the same piece.
void drawCheeks(QPainter& painter, const PanelLayout& layout, const PanelColours& c)
{
    const QSizeF size(layout.face.left() - layout.body.left(), layout.body.height());
    const QImage left = cheekOf(size, 7 * layout.scale, painter.device()->devicePixelRatioF(), c);
    painter.drawImage(layout.body.topLeft(), left);
    painter.drawImage(QPointF(layout.face.right() - kCheekShadow, layout.body.top()), left.mirrored(true, false));
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

/// From the left end of a rectangle, in the middle of its height; returns how wide it is.
double drawEngraved(QPainter& painter, const QRectF& rect, const EnlargedFont& font, const char* text,
                    const PanelColours& c)
{
    const QString engraved = QString::fromLatin1(text);
    painter.setPen(c.engraving);
    drawText(painter, font, rect.translated(0, 1), Qt::AlignLeft | Qt::AlignVCenter, engraved);
    painter.setPen(c.legend);
    drawText(painter, font, rect, Qt::AlignLeft | Qt::AlignVCenter, engraved);
    return font.factor * QFontMetricsF(font.font).horizontalAdvance(engraved);
}

void drawName(QPainter& painter, const PanelLayout& layout, const PanelColours& c, const QFont& font)
{
    const double s = layout.nameScale;
    const double width = drawEngraved(painter, layout.name, makerFont(font, s), kMaker, c);
    const EnlargedFont legend = legendFont(font, s);
    const double line = legend.factor * QFontMetricsF(legend.font).height() * 0.92;
    const double middle = layout.name.center().y();
    const QRectF above(layout.name.left() + width + 15 * s, middle - line, layout.name.width() - width - 15 * s, line);
    painter.setPen(QPen(c.lit, 1.5 * s));
    painter.drawLine(QPointF(above.left() - 8 * s, middle - line * 0.85),
                     QPointF(above.left() - 8 * s, middle + line * 0.85));
    drawEngraved(painter, above, legend, kLegendAbove, c);
    drawEngraved(painter, above.translated(0, line), legend, kLegendBelow, c);
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
    painter.setLayoutDirection(Qt::LeftToRight); // what is printed on the hardware is so in every language
    const double s = layout.scale;
    drawFace(painter, layout, c);
    drawCheeks(painter, layout, c);

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
