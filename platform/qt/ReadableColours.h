#pragma once
// Makes texts stand out from what lies behind them where the desktop's own colours leave them too faint to read with
// weak eyes: selected rows and the hints in empty fields.

#include <QColor>
#include <QPalette>

namespace platform::qt {

/// At least this much is asked of a text.
inline constexpr double kReadableContrast = 4.5;

/// Contrast of two opaque colours as the Web's accessibility guidelines reckon it: from 1, the same, to 21.
double contrast(const QColor& one, const QColor& other);

/// Opaque: so much of the other in place of the one, from 0 to 1.
QColor mixed(const QColor& one, const QColor& other, double share);

/// The palette with its selection darker or lighter and its hints less transparent, each no more than needed. What is
/// readable, or disabled, stays as it is.
QPalette withReadableTexts(QPalette palette);

} // namespace platform::qt
