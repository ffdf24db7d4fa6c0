#include "platform/qt/ReadableStyle.h"

#include "platform/qt/ReadableColours.h"
#include "tests/support/Pictures.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QCheckBox>
#include <QLineEdit>
#include <QRadioButton>

#include <algorithm>
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
    const support::FixedLook look(GetParam() ? support::darkPalette() : support::lightPalette());
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

INSTANTIATE_TEST_SUITE_P(Schemes, ReadableStyleTest, testing::Bool(),
                         [](const auto& dark) { return dark.param ? "Dark" : "Light"; });

} // namespace
} // namespace platform::qt
