#include "platform/qt/ReadableStyle.h"

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

} // namespace

ReadableStyle::ReadableStyle() : QProxyStyle(QStringLiteral("fusion")) {}

void ReadableStyle::drawPrimitive(PrimitiveElement element, const QStyleOption* option, QPainter* painter,
                                  const QWidget* widget) const
{
    QProxyStyle::drawPrimitive(element, option, painter, widget);
    const bool isRound = element == PE_IndicatorRadioButton;
    const bool isOutlined = isRound || element == PE_IndicatorCheckBox || element == PE_FrameLineEdit;
    // The colour of the focus is there already.
    const bool hasFocus = element == PE_FrameLineEdit && option->state.testFlag(State_HasFocus);
    if (!isOutlined || hasFocus || !option->state.testFlag(State_Enabled))
        return;
    painter->save();
    painter->setRenderHint(QPainter::Antialiasing);
    painter->setPen(QPen(outlineColour(*option), 1.2));
    painter->setBrush(Qt::NoBrush);
    const QRectF outline = QRectF(option->rect).adjusted(0.6, 0.6, -0.6, -0.6);
    if (isRound)
        painter->drawEllipse(outline);
    else
        painter->drawRoundedRect(outline, 2, 2);
    painter->restore();
}

} // namespace platform::qt
