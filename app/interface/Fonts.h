#pragma once
// The fonts of the windows, all derived from the desktop's. `scale` is the front panel's. Each font more costs the
// start a few tenths of a millisecond, so there are few.

#include <QFont>

class QPainter;

namespace interface {

QFont boldFont(QFont font);
/// Works for a font of either kind, in points or in pixels.
QFont scaledFont(QFont font, double factor);
QFont titleFont(const QFont& font, double scale);

/// One of the other fonts, painted this many times as large.
struct EnlargedFont {
    QFont font;
    double factor;
};

EnlargedFont makerFont(const QFont& font, double scale);
EnlargedFont legendFont(const QFont& font, double scale);
/// The number of a pot, about so many pixels high.
EnlargedFont numberFont(const QFont& font, double pixels);

/// As QPainter::drawText.
void drawText(QPainter& painter, const EnlargedFont& font, const QRectF& rect, int flags, const QString& text);

} // namespace interface
