#pragma once
// The fonts of the windows, all derived from the desktop's. `scale` is the front panel's.

#include <QFont>

namespace interface {

QFont boldFont(QFont font);
/// Works for a font of either kind, in points or in pixels.
QFont scaledFont(QFont font, double factor);
QFont titleFont(const QFont& font, double scale);
QFont makerFont(const QFont& font, double scale);
QFont legendFont(const QFont& font, double scale);

} // namespace interface
