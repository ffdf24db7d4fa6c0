#pragma once
// What hangs at the mouse pointer while a parameter or a pot is dragged.

#include <QPixmap>

class QString;
class QWidget;

namespace interface {

/// A chip with a text in the colours of the panel's displays and the widget's font, shortened where it is long.
QPixmap dragPicture(const QString& text, const QWidget* widget);

} // namespace interface
