#include "platform/qt/SymbolIcon.h"

#include <gtest/gtest.h>

#include <QApplication>
#include <QImage>
#include <QPainter>
#include <QPalette>

#include <algorithm>

using platform::qt::symbolIcon;

namespace {

/// The symbols that the windows ask for.
constexpr const char* kSymbols[] = {"account",
                                    "bring-back",
                                    "browse",
                                    "chart",
                                    "clear",
                                    "clear-all",
                                    "copy",
                                    "cut",
                                    "difference-next",
                                    "difference-previous",
                                    "fill",
                                    "find-in-list",
                                    "folder-empty",
                                    "help",
                                    "load",
                                    "log-in",
                                    "map-all",
                                    "more",
                                    "move-first",
                                    "move-last",
                                    "move-next",
                                    "move-previous",
                                    "new-account",
                                    "page-delete",
                                    "page-duplicate",
                                    "page-first",
                                    "page-go-to",
                                    "page-insert",
                                    "page-last",
                                    "page-new",
                                    "page-next",
                                    "page-previous",
                                    "paste",
                                    "pot-insert",
                                    "pot-remove",
                                    "print",
                                    "recall-original",
                                    "recall-previous",
                                    "redo",
                                    "save",
                                    "scan",
                                    "search",
                                    "share",
                                    "show-on-panel",
                                    "start-over",
                                    "take-page",
                                    "take-pot",
                                    "tidy-up",
                                    "undo",
                                    "unmapped",
                                    "unsaved",
                                    "upload"};

QIcon symbol(const char* name)
{
    return symbolIcon(QString::fromLatin1(name));
}

/// Colours that no palette has by chance.
const QColor kInk(12, 200, 34);
const QColor kOtherInk(210, 20, 120);
const QColor kFaint(90, 80, 250);

/// A palette for the length of a test.
class SymbolIconTest : public testing::Test {
protected:
    SymbolIconTest() : before_(QApplication::palette()) { useInk(kInk); }
    ~SymbolIconTest() override { QApplication::setPalette(before_); }

    static void useInk(const QColor& ink)
    {
        QPalette palette;
        palette.setColor(QPalette::ButtonText, ink);
        palette.setColor(QPalette::Disabled, QPalette::ButtonText, kFaint);
        palette.setColor(QPalette::HighlightedText, Qt::white);
        QApplication::setPalette(palette);
    }

private:
    QPalette before_;
};

QImage picture(const QIcon& icon, int size, qreal scale = 1, QIcon::Mode mode = QIcon::Normal)
{
    return icon.pixmap(QSize(size, size), scale, mode).toImage();
}

/// The share of the area that is covered, from 0 to 1.
double coverage(const QImage& image)
{
    double sum = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            sum += qAlpha(image.pixel(x, y)) / 255.0;
    return sum / (image.width() * image.height());
}

/// The part of the picture that is drawn on.
QRect drawnArea(const QImage& image)
{
    QRect area;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qAlpha(image.pixel(x, y)) > 0)
                area |= QRect(x, y, 1, 1);
    return area;
}

/// The colour of what is covered wholly; invalid when there is none or more than one.
QColor colourOf(const QImage& image)
{
    QColor found;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x) {
            const QColor here = image.pixelColor(x, y);
            if (here.alpha() < 255)
                continue;
            if (found.isValid() && found.rgb() != here.rgb())
                return {};
            found = here;
        }
    return found;
}

} // namespace

TEST_F(SymbolIconTest, EverySymbolShowsAtEverySizeInThePalettesColour)
{
    for (const char* name : kSymbols) {
        SCOPED_TRACE(name);
        const QIcon icon = symbol(name);
        ASSERT_FALSE(icon.isNull());
        EXPECT_EQ(icon.name(), QLatin1String(name));
        for (const int size : {16, 18, 20, 48, 80}) {
            const QImage image = picture(icon, size);
            EXPECT_EQ(image.size(), QSize(size, size));
            // Neither a dot nor a block, and not cut at an edge.
            EXPECT_GT(coverage(image), 0.08);
            EXPECT_LT(coverage(image), 0.5);
        }
        const QImage large = picture(icon, 48);
        EXPECT_TRUE(QRect(1, 1, 46, 46).contains(drawnArea(large)));
        EXPECT_GT(drawnArea(large).width(), 30);
        EXPECT_EQ(colourOf(large), kInk);
        EXPECT_EQ(colourOf(picture(icon, 48, 1, QIcon::Active)), kInk);
        EXPECT_EQ(colourOf(picture(icon, 48, 1, QIcon::Selected)), QColor(Qt::white));
        EXPECT_EQ(colourOf(picture(icon, 48, 1, QIcon::Disabled)), kFaint);
    }
}

TEST_F(SymbolIconTest, NoTwoSymbolsLookAlike)
{
    QList<QImage> seen;
    for (const char* name : kSymbols) {
        const QImage image = picture(symbol(name), 16);
        EXPECT_FALSE(seen.contains(image)) << name;
        seen.append(image);
    }
}

TEST_F(SymbolIconTest, FollowsThePaletteWithoutBeingMadeAnew)
{
    const QIcon icon = symbol("save");
    ASSERT_EQ(colourOf(picture(icon, 48)), kInk);
    useInk(kOtherInk);
    EXPECT_EQ(colourOf(picture(icon, 48)), kOtherInk);
    const QIcon copy = icon;
    EXPECT_EQ(colourOf(picture(copy, 48)), kOtherInk);
}

TEST_F(SymbolIconTest, StrokesThatCrossDoNotShowThroughATranslucentColour)
{
    useInk(QColor(0, 0, 0, 100));
    const QImage image = picture(symbol("page-new"), 48);
    int most = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            most = std::max(most, qAlpha(image.pixel(x, y)));
    EXPECT_EQ(most, 100);
}

TEST_F(SymbolIconTest, HasTheSharpnessOfTheScreen)
{
    const QIcon icon = symbol("chart");
    const QPixmap pixmap = icon.pixmap(QSize(20, 20), 2.0);
    EXPECT_EQ(pixmap.size(), QSize(40, 40));
    EXPECT_EQ(pixmap.devicePixelRatio(), 2.0);
    // Not the small picture blown up.
    EXPECT_NE(pixmap.toImage().convertToFormat(QImage::Format_ARGB32),
              picture(icon, 20).scaled(40, 40).convertToFormat(QImage::Format_ARGB32));

    QImage screen(60, 60, QImage::Format_ARGB32_Premultiplied);
    screen.setDevicePixelRatio(3);
    screen.fill(Qt::transparent);
    QPainter painter(&screen);
    icon.paint(&painter, QRect(0, 0, 20, 20));
    painter.end();
    const QImage sharp = picture(icon, 60);
    screen.setDevicePixelRatio(1);
    EXPECT_EQ(screen, sharp);
}

TEST_F(SymbolIconTest, OddRequestsGiveNothingAndNoHarm)
{
    EXPECT_TRUE(symbol("no-such-symbol").isNull());
    EXPECT_TRUE(symbolIcon(QString()).isNull());
    EXPECT_TRUE(symbol("save").pixmap(QSize(0, 0)).isNull());
}

TEST_F(SymbolIconTest, KeepsItsShapeInARectangle)
{
    const QImage wide = symbol("search").pixmap(QSize(96, 48), 1.0).toImage();
    const QRect area = drawnArea(wide);
    EXPECT_NEAR(area.width(), area.height(), 2);
}

TEST(ApplicationIcon, StandsOnEveryWindowInEverySize)
{
    for (const int size : {16, 20, 32, 40, 48, 96, 130}) {
        const QImage image = picture(QApplication::windowIcon(), size);
        EXPECT_EQ(image.size(), QSize(size, size));
        EXPECT_GT(coverage(image), 0.5);
    }
}
