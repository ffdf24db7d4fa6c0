#include "platform/qt/ReadableStyle.h"

#include "platform/qt/ReadableColours.h"
#include "platform/qt/SymbolIcon.h"
#include "tests/support/Pictures.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QPainter>
#include <QRadioButton>
#include <QStyleOption>

#include <algorithm>
#include <cstdlib>
#include <memory>

namespace platform::qt {
namespace {

/// The outline of a control of itself stands out: 3 to 1 against the window it lies on.
double outlineContrast(QWidget& control, const QRect& indicator)
{
    QImage image(control.size(), QImage::Format_RGB32);
    image.fill(control.palette().color(QPalette::Window));
    control.render(&image);
    double best = 0;
    const int middle = indicator.center().y();
    for (int x = indicator.left(); x < indicator.left() + 4; ++x)
        best = std::max(best, contrast(image.pixelColor(x, middle), control.palette().color(QPalette::Window)));
    return best;
}

class ReadableStyleTest : public testing::TestWithParam<bool> {};

TEST_P(ReadableStyleTest, OutlinesStandOutFromTheWindow)
{
    const test::FixedLook look(GetParam() ? test::darkPalette() : test::lightPalette());
    QCheckBox box;
    QRadioButton radio;
    QLineEdit line;
    for (QWidget* control : std::initializer_list<QWidget*>{&box, &radio, &line}) {
        control->resize(control->sizeHint());
        QStyleOptionButton option;
        option.initFrom(control);
        const bool isRadio = control == &radio;
        const QRect rect = control == &line ? line.rect()
                                            : control->style()->subElementRect(isRadio ? QStyle::SE_RadioButtonIndicator
                                                                                       : QStyle::SE_CheckBoxIndicator,
                                                                               &option, control);
        EXPECT_GE(outlineContrast(*control, rect), 3.0) << control->metaObject()->className();
    }
}

TEST_P(ReadableStyleTest, TheFocusStandsOutFromTheWindow)
{
    const test::FixedLook look(GetParam() ? test::darkPalette() : test::lightPalette());
    for (const auto element : {QStyle::PE_PanelButtonCommand, QStyle::PE_FrameLineEdit, QStyle::PE_FrameFocusRect}) {
        QStyleOptionButton option;
        option.palette = QApplication::palette();
        option.rect = QRect(0, 0, 80, 30);
        option.state = QStyle::State_Enabled | QStyle::State_HasFocus | QStyle::State_KeyboardFocusChange;
        const QColor ground = option.palette.color(QPalette::Window);
        QImage image(option.rect.size(), QImage::Format_RGB32);
        image.fill(ground);
        QPainter painter(&image);
        QApplication::style()->drawPrimitive(element, &option, &painter);
        painter.end();
        for (const QPoint edge : {QPoint(0, 15), QPoint(79, 15), QPoint(40, 0), QPoint(40, 29)})
            EXPECT_GE(contrast(image.pixelColor(edge), ground), 3.0) << element << " " << edge.x() << " " << edge.y();
    }
}

/// A button's panel as it is drawn in a state.
QImage buttonPanel(QStyle::State state, bool isDefault = false)
{
    QStyleOptionButton option;
    option.palette = QApplication::palette();
    option.palette.setCurrentColorGroup(state & QStyle::State_Enabled ? QPalette::Active : QPalette::Disabled);
    option.rect = QRect(0, 0, 80, 30);
    option.state = state;
    option.features.setFlag(QStyleOptionButton::DefaultButton, isDefault);
    QImage image(option.rect.size(), QImage::Format_RGB32);
    image.fill(option.palette.color(QPalette::Window));
    QPainter painter(&image);
    QApplication::style()->drawPrimitive(QStyle::PE_PanelButtonCommand, &option, &painter);
    return image;
}

/// The most by which a channel of a pixel differs.
int difference(const QImage& one, const QImage& other)
{
    int most = 0;
    for (int y = 0; y < one.height(); ++y) {
        for (int x = 0; x < one.width(); ++x) {
            const QRgb a = one.pixel(x, y), b = other.pixel(x, y);
            most = std::max(
                {most, std::abs(qRed(a) - qRed(b)), std::abs(qGreen(a) - qGreen(b)), std::abs(qBlue(a) - qBlue(b))});
        }
    }
    return most;
}

TEST_P(ReadableStyleTest, AButtonShowsWhatItIsAndItsTextCanBeRead)
{
    const test::FixedLook look(GetParam() ? test::darkPalette() : test::lightPalette());
    const QStyle::State on = QStyle::State_Enabled;
    const QStyle::State hovered = on | QStyle::State_MouseOver;
    const QStyle::State pressed = on | QStyle::State_Sunken;
    const QImage panels[] = {buttonPanel(on),           buttonPanel(hovered),  buttonPanel(pressed),
                             buttonPanel({}),           buttonPanel(on, true), buttonPanel(hovered, true),
                             buttonPanel(pressed, true)};
    const QColor text = QApplication::palette().color(QPalette::Active, QPalette::ButtonText);
    for (const QImage& panel : panels) {
        for (const QImage& other : panels) {
            if (&panel == &other)
                continue;
            EXPECT_GE(difference(panel, other), 8) << &panel - panels << " " << &other - panels;
        }
        if (panel == buttonPanel({}))
            continue;
        EXPECT_GE(contrast(panel.pixelColor(40, 15), text), 4.5) << &panel - panels;
    }
    EXPECT_EQ(buttonPanel(on | QStyle::State_On), buttonPanel(pressed)) << "held down";
}

TEST(ReadableStyleIcons, OnlyWhatTheWindowsShowIsOurs)
{
    const ReadableStyle style;
    EXPECT_EQ(style.standardIcon(QStyle::SP_LineEditClearButton, nullptr, nullptr).name(), QLatin1String("clear"));
    EXPECT_EQ(style.standardIcon(QStyle::SP_ToolBarHorizontalExtensionButton, nullptr, nullptr).name(),
              QLatin1String("more"));
    const QIcon other = style.standardIcon(QStyle::SP_MessageBoxWarning, nullptr, nullptr);
    EXPECT_FALSE(other.isNull());
    EXPECT_TRUE(symbolIcon(other.name()).isNull());
}

INSTANTIATE_TEST_SUITE_P(Schemes, ReadableStyleTest, testing::Bool(),
                         [](const auto& dark) { return dark.param ? "Dark" : "Light"; });

} // namespace
} // namespace platform::qt
