#include "app/interface/panel/PanelLayout.h"

#include "app/interface/Fonts.h"

#include <QFontInfo>
#include <QFontMetricsF>

#include <algorithm>
#include <cmath>

namespace interface {

namespace {

constexpr int kSmallestPot = 64; // of the square, ring of ticks included; the cap is about 0.68 of it
constexpr int kSmallPot = 80;    // no smaller while the letters can give way
constexpr int kPreferredPot = 122;
constexpr int kLargestPot = 232;
constexpr int kSmallestLetters = 10; // in pixels, to be read
constexpr double kSmallestScale = 0.7;
constexpr double kLargestScale = 1.9;
constexpr int kPreferredWidth = 1180;

constexpr double kCheek = 13;
constexpr double kSide = 30; // from cheek to content; the screws lie in it
constexpr double kEdge = 11; // from the upper and lower end to content
constexpr double kGap = 5;
constexpr double kFieldPadding = 6;
constexpr double kNameShare = 0.32; // large letters leave the display more than the maker's name

double fieldHeight(const QFont& font, double scale)
{
    return std::ceil(2 * QFontMetricsF(scaledFont(font, scale)).lineSpacing() + 10 * scale);
}

double displayHeight(const QFont& font, double scale)
{
    return std::ceil(QFontMetricsF(titleFont(font, scale)).height() + 12 * scale);
}

double heightAround(const QFont& font, double scale)
{
    return 2 * kEdge * scale + displayHeight(font, scale) + 2 * kGap * scale + fieldHeight(font, scale);
}

double widthOf(const QFont& font, const char* text)
{
    return std::ceil(QFontMetricsF(font).horizontalAdvance(QString::fromLatin1(text)));
}

double smallestScale(const QFont& font)
{
    return std::clamp(double(kSmallestLetters) / QFontInfo(font).pixelSize(), kSmallestScale, 1.0);
}

double scaleFor(const QSize& size, const QFont& font)
{
    const QSize preferred = preferredPanelSize(font);
    const double fits = std::min(double(size.height()) / preferred.height(), double(size.width()) / preferred.width());
    if (fits >= 1)
        return std::min(fits, kLargestScale);
    // In a lower panel the pots get smaller first.
    return std::clamp((size.height() - kSmallPot) / heightAround(font, 1), smallestScale(font), 1.0);
}

/// Title and read-outs, from the left end of the display to the right.
void layOutDisplay(PanelLayout& layout, const QFont& font)
{
    const double s = layout.scale;
    const QFont readOut = scaledFont(font, s);
    const QRectF inner = layout.display.adjusted(12 * s, 2, -12 * s, -2);
    // The title keeps a third whatever the font.
    const double total = std::min(widthOf(readOut, "00000 Pages"), inner.width() * 0.28);
    const double page = std::min(widthOf(readOut, "Page 00000 of 00000"), inner.width() * 0.36);
    const auto part = [&inner](double left, double width) {
        return QRectF(left, inner.top(), width, inner.height()).toRect();
    };
    const double gap = 12 * s;
    layout.total = part(inner.right() - total, total);
    layout.page = part(inner.right() - total - gap - page, page);
    layout.title = part(inner.left(), inner.width() - total - page - 2 * gap);
}

void layOutPots(PanelLayout& layout, const QRectF& room)
{
    const double column = room.width() / PanelLayout::kPots;
    const int side = static_cast<int>(std::min({column, room.height(), kLargestPot * 1.0}));
    for (int i = 0; i < PanelLayout::kPots; ++i) {
        const double centre = room.left() + column * (i + 0.5);
        const auto at = static_cast<std::size_t>(i);
        layout.pots[at] = QRect(static_cast<int>(std::lround(centre - side / 2.0)),
                                static_cast<int>(std::lround(room.center().y() - side / 2.0)), side, side);
        const double padding = kFieldPadding;
        layout.fields[at] = QRectF(room.left() + column * i + padding, layout.strip.top() + 2, column - 2 * padding,
                                   layout.strip.height() - 4)
                                .toRect();
    }
}

} // namespace

PanelLayout layOutPanel(const QSize& size, const QFont& font)
{
    PanelLayout layout;
    const double s = layout.scale = scaleFor(size, font);
    layout.body = QRectF(QPointF(), size).adjusted(1, 1, -1, -2);
    layout.face = layout.body.adjusted(kCheek * s, 0, -kCheek * s, 0);
    const double in = kSide * s / 2;
    layout.screws = {layout.face.topLeft() + QPointF(in, in), layout.face.topRight() + QPointF(-in, in),
                     layout.face.bottomLeft() + QPointF(in, -in), layout.face.bottomRight() + QPointF(-in, -in)};

    const QRectF content = layout.face.adjusted(kSide * s, kEdge * s, -kSide * s, -kEdge * s);
    const double wanted = widthOf(makerFont(font, s), kMaker) + widthOf(legendFont(font, s), kLegendBelow) + 35 * s;
    const double nameWidth = std::min(wanted, kNameShare * content.width());
    layout.nameScale = s * nameWidth / wanted;
    const double top = displayHeight(font, s);
    layout.name = QRectF(content.left(), content.top(), nameWidth, top);
    layout.display = QRectF(content.left() + nameWidth, content.top(), content.width() - nameWidth, top);
    layOutDisplay(layout, font);

    const double field = fieldHeight(font, s);
    layout.strip = QRectF(content.left(), content.bottom() - field, content.width(), field);
    layOutPots(layout, QRectF(QPointF(content.left(), layout.display.bottom() + kGap * s),
                              QPointF(content.right(), layout.strip.top() - kGap * s)));
    return layout;
}

QSize preferredPanelSize(const QFont& font)
{
    return {kPreferredWidth, static_cast<int>(heightAround(font, 1)) + kPreferredPot};
}

int panelHeightFor(int width, const QFont& font)
{
    const double scale = std::clamp(double(width) / kPreferredWidth, 1.0, kLargestScale);
    return static_cast<int>(heightAround(font, scale) + kPreferredPot * scale);
}

QSize smallestPanelSize(const QFont& font)
{
    const double width = 2 * (kCheek + kSide) + PanelLayout::kPots * kSmallPot;
    return {static_cast<int>(width) + 2, static_cast<int>(heightAround(font, smallestScale(font))) + kSmallestPot + 3};
}

} // namespace interface
