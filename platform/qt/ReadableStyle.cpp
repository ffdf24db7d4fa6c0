#include "platform/qt/ReadableStyle.h"

#include "platform/qt/ReadableColours.h"
#include "platform/qt/SymbolIcon.h"

#include <QAbstractScrollArea>
#include <QPainter>
#include <QStyleOption>

namespace platform::qt {

namespace {

/// Well over the contrast of 3 to 1 that the outline of a control needs, in light and dark colours alike.
QColor outlineColour(const QStyleOption& option)
{
    return mixed(option.palette.color(QPalette::Window), option.palette.color(QPalette::WindowText), 0.6);
}

/// The selection's colour where it stands out from the window, else the text's.
QColor focusColour(const QStyleOption& option)
{
    constexpr double kVisible = 3;
    const QColor ground = option.palette.color(QPalette::Window);
    const QColor selection = option.palette.color(QPalette::Active, QPalette::Highlight);
    return contrast(selection, ground) >= kVisible ? selection : option.palette.color(QPalette::WindowText);
}

void drawOutline(QPainter& painter, const QRect& rect, const QPen& pen, bool isRound)
{
    const double inset = pen.widthF() / 2;
    const QRectF outline = QRectF(rect).adjusted(inset, inset, -inset, -inset);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    if (isRound)
        painter.drawEllipse(outline);
    else
        painter.drawRoundedRect(outline, 2, 2);
    painter.restore();
}

/// A flat button, as what Return presses outlined like what has the focus.
void drawButton(QPainter& painter, const QStyleOption& option, bool isDefault)
{
    const QPalette& palette = option.palette;
    const QColor ground = palette.color(QPalette::Window);
    const bool isEnabled = option.state.testFlag(QStyle::State_Enabled);
    const bool isDown = option.state.testFlag(QStyle::State_Sunken) || option.state.testFlag(QStyle::State_On);
    const bool isHovered = option.state.testFlag(QStyle::State_MouseOver);
    // Raised towards the light, pressed towards the dark, whatever the colours of the desktop.
    QColor face = mixed(palette.color(QPalette::Button), Qt::white, ground.lightness() < 128 ? 0.09 : 0.55);
    if (isDefault)
        face = mixed(face, palette.color(QPalette::Highlight), 0.22);
    if (!isEnabled)
        face = mixed(face, ground, 0.6);
    else if (isDown)
        face = mixed(palette.color(QPalette::Button), Qt::black, 0.14);
    else if (isHovered)
        face = mixed(face, palette.color(QPalette::Highlight), 0.1);
    const double strength = !isEnabled ? 0.14 : isHovered ? 0.45 : 0.3;
    const QRectF rect(option.rect);
    painter.save();
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(Qt::NoPen);
    painter.setBrush(isDefault && isEnabled
                         ? focusColour(option)
                         : mixed(ground, palette.color(QPalette::Active, QPalette::WindowText), strength));
    painter.drawRoundedRect(rect, 3, 3);
    painter.setBrush(face);
    painter.drawRoundedRect(rect.adjusted(1, 1, -1, -1), 2, 2);
    painter.restore();
}

} // namespace

ReadableStyle::ReadableStyle() : QProxyStyle(QStringLiteral("fusion")) {}

void ReadableStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                  const QWidget* widget) const
{
    const auto* button = qstyleoption_cast<const QStyleOptionButton*>(option);
    if (element == PE_PanelButtonCommand && button && !button->features.testFlag(QStyleOptionButton::Flat))
        drawButton(*painter, *option, button->features.testFlag(QStyleOptionButton::DefaultButton));
    else
        QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool isRound = element == PE_IndicatorRadioButton;
    const bool isField = element == PE_FrameLineEdit;
    const bool isOutlined = isRound || isField || element == PE_IndicatorCheckBox;
    const bool takesFocus = isField || element == PE_PanelButtonCommand || element == PE_FrameFocusRect;
    const bool isList = element == PE_Frame && qobject_cast<const QAbstractScrollArea*>(widget);
    if (!option->state.testFlag(State_Enabled))
        return;
    if ((takesFocus || isList) && option->state.testFlag(State_HasFocus))
        drawOutline(*painter, option->rect, QPen(focusColour(*option), 2), false);
    else if (isOutlined)
        drawOutline(*painter, option->rect, QPen(outlineColour(*option), 1.2), isRound);
}

QIcon ReadableStyle::standardIcon(StandardPixmap icon, const QStyleOption* option, const QWidget* widget) const
{
    switch (icon) {
    case SP_LineEditClearButton: return symbolIcon(QStringLiteral("clear"));
    case SP_ToolBarHorizontalExtensionButton: return symbolIcon(QStringLiteral("more")); // of a menu bar too narrow
    default: return QProxyStyle::standardIcon(icon, option, widget);
    }
}

} // namespace platform::qt
