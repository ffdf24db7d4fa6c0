#include "app/interface/Fonts.h"

#include <QFontInfo>
#include <QPainter>

#include <cmath>

namespace interface {

QFont boldFont(QFont font)
{
    font.setBold(true);
    return font;
}

QFont scaledFont(QFont font, double factor)
{
    if (font.pixelSize() > 0)
        font.setPixelSize(static_cast<int>(std::lround(font.pixelSize() * factor)));
    else
        font.setPointSizeF(font.pointSizeF() * factor);
    return font;
}

QFont titleFont(const QFont& font, double scale)
{
    return boldFont(scaledFont(font, 1.2 * scale));
}

EnlargedFont makerFont(const QFont& font, double scale)
{
    QFont maker = boldFont(font);
    maker.setLetterSpacing(QFont::PercentageSpacing, 122);
    return {maker, 1.55 * scale};
}

EnlargedFont legendFont(const QFont& font, double scale)
{
    QFont legend = font;
    legend.setLetterSpacing(QFont::PercentageSpacing, 118);
    return {legend, 0.72 * scale};
}

EnlargedFont numberFont(const QFont& font, double pixels)
{
    const QFont number = boldFont(font);
    const double factor = pixels / QFontInfo(number).pixelSize();
    // The font as it is, where it nearly fits, is the sharpest.
    return {number, std::abs(factor - 1) < 0.12 ? 1 : factor};
}

void drawText(QPainter& painter, const EnlargedFont& font, const QRectF& rect, int flags, const QString& text)
{
    painter.save();
    painter.setFont(font.font);
    painter.translate(rect.topLeft());
    painter.scale(font.factor, font.factor);
    painter.drawText(QRectF(QPointF(), rect.size() / font.factor), flags, text);
    painter.restore();
}

} // namespace interface
