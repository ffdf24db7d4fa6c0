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
    constexpr double kShareOfText = 0.6;
    const QColor text = option.palette.color(QPalette::WindowText);
    const QColor ground = option.palette.color(QPalette::Window);
    const auto mixed = [](int a, int b) { return qRound(a * kShareOfText + b * (1 - kShareOfText)); };
    return {mixed(text.red(), ground.red()), mixed(text.green(), ground.green()), mixed(text.blue(), ground.blue())};
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

} // namespace

ReadableStyle::ReadableStyle() : QProxyStyle(QStringLiteral("fusion")) {}

void ReadableStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                  const QWidget* widget) const
{
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
    return icon == SP_LineEditClearButton ? symbolIcon(QStringLiteral("clear"))
                                          : QProxyStyle::standardIcon(icon, option, widget);
}

} // namespace platform::qt
