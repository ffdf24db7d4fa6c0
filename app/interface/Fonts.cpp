#include "app/interface/Fonts.h"

#include <algorithm>
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
        font.setPixelSize(std::max(1, static_cast<int>(std::lround(font.pixelSize() * factor))));
    else
        font.setPointSizeF(font.pointSizeF() * factor);
    return font;
}

QFont titleFont(const QFont& font, double scale)
{
    return boldFont(scaledFont(font, 1.2 * scale));
}

QFont makerFont(const QFont& font, double scale)
{
    QFont maker = boldFont(scaledFont(font, 1.55 * scale));
    maker.setLetterSpacing(QFont::PercentageSpacing, 122);
    return maker;
}

QFont legendFont(const QFont& font, double scale)
{
    QFont legend = scaledFont(font, 0.72 * scale);
    legend.setLetterSpacing(QFont::PercentageSpacing, 118);
    return legend;
}

} // namespace interface
