#pragma once
// Qt's own style for desktops without one, with outlines of check boxes, radio buttons and text fields, and a frame
// around what has the focus, that stand out from the window: in dark colours the plain ones can hardly be seen.
// Buttons are flat, and what clears a text field or tells of more menus is one of our symbols.

#include <QProxyStyle>

namespace platform::qt {

class ReadableStyle final : public QProxyStyle {
    Q_OBJECT

public:
    ReadableStyle();

    void drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                       const QWidget* widget) const override;
    QIcon standardIcon(StandardPixmap icon, const QStyleOption* option, const QWidget* widget) const override;
};

} // namespace platform::qt
